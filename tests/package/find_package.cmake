# The examples as a project of their own.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(build ${WORK_DIR}/examples)
file(REMOVE_RECURSE ${build})
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples -B ${build} -G ${GENERATOR} -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_FLAGS=${CXX_FLAGS} -DCMAKE_BUILD_TYPE=Debug)
run(${CMAKE_COMMAND} --build ${build} -j 2)
run(${build}/read_and_list ${sample})
expect_substring("${output}" "#16 VB-110 Winkel für Träger\n")
run(${build}/late_binding ${prefix}/share/velmar/schemas/automotive_design.exp ${sample})
expect_substring("${output}" "#16 PRODUCT\n  id = 'VB-110'\n")
run(${build}/walk_faces ${sample})
expect_substring("${output}" "#248 fillet: cylinder of radius 6, bounds: 1\n")
run(${build}/build_from_nothing ${WORK_DIR}/triangle.stp)
expect_substring("${output}" "#4 = POLYLINE('triangle', (#1, #2, #3, #1));\n")

# A version that is not there, and a component that does not exist, are refused.
foreach(package IN ITEMS
    "Velmar 3.2 REQUIRED"
    "Velmar 4.0 REQUIRED"
    "Velmar 3.1 REQUIRED COMPONENTS NoSuchSchema"
  )
  file(WRITE ${WORK_DIR}/refused/CMakeLists.txt
       "cmake_minimum_required(VERSION 3.25)\nproject(Refused LANGUAGES CXX)\nfind_package(${package})\n")
  execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${WORK_DIR}/refused -B ${WORK_DIR}/refused/build -G ${GENERATOR}
            -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX}
    RESULT_VARIABLE status OUTPUT_QUIET ERROR_VARIABLE err
  )
  if(status EQUAL 0)
    message(FATAL_ERROR "find_package(${package}) was accepted")
  endif()
  expect_substring("${err}" "Velmar")
endforeach()
