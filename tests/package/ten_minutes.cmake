# The guide for newcomers, done as it says, against what is installed.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(ENV{CXX} ${CXX})
run(${PYTHON} ${CMAKE_CURRENT_LIST_DIR}/ten_minutes.py ${SOURCE_DIR}/docs/ten_minutes.md ${prefix} ${WORK_DIR}/ten_minutes
    "${CXX_FLAGS}")
message(STATUS "${output}")
