# The installed program finds its libraries.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
run(${prefix}/bin/velmar --version)
expect_substring("${output}" "velmar 3.1.")
run(${prefix}/bin/velmar convert ${sample} -o ${WORK_DIR}/copy.stp)
expect_substring("${output}" "383 instances")
run(${prefix}/bin/velmar show ${sample} 20)
expect_substring("${output}" "'Pin 10 x 25'")
run(${prefix}/bin/velmar-express --help)
