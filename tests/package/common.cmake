# What the steps share.
cmake_policy(VERSION 3.25)
set(prefix ${WORK_DIR}/moved)  # where the installed files are in the end
set(sample ${SOURCE_DIR}/examples/bracket.stp)

# run(<command>...): the command must succeed; `output` is its standard output then.
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT status EQUAL 0)
    list(JOIN ARGV " " command)
    message(FATAL_ERROR "'${command}' ended with ${status}\n${out}\n${err}")
  endif()
  set(output "${out}" PARENT_SCOPE)
endfunction()

function(expect_substring text part)
  string(FIND "${text}" "${part}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "expected to find '${part}' in:\n${text}")
  endif()
endfunction()

function(expect_no_substring text part)
  string(FIND "${text}" "${part}" at)
  if(NOT at EQUAL -1)
    message(FATAL_ERROR "expected not to find '${part}' in:\n${text}")
  endif()
endfunction()

function(expect_equal text expected)
  if(NOT text STREQUAL expected)
    message(FATAL_ERROR "expected:\n${expected}\nbut it is:\n${text}")
  endif()
endfunction()

# expect_failure(<part> <command>...): the command must fail and say `part`; `output` is all that it says.
function(expect_failure part)
  list(SUBLIST ARGV 1 -1 command)
  execute_process(COMMAND ${command} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(status EQUAL 0)
    list(JOIN command " " command)
    message(FATAL_ERROR "'${command}' did not fail\n${out}\n${err}")
  endif()
  expect_substring("${out}${err}" "${part}")
  set(output "${out}${err}" PARENT_SCOPE)
endfunction()
