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
