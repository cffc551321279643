# Every choice of parts can be configured, with tests, examples and, where this build has them, benchmarks; tests that need a part
# which is left out are skipped visibly.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

# expect_skipped(<program> <libraries> <schemas> <tests>): configured with VELMAR_BUILD_TOOLS, VELMAR_BUILD_SCHEMAS and
# VELMAR_SCHEMAS of these values, the build has these tests in place of those that are left out.
function(expect_skipped program libraries schemas tests)
  set(build ${WORK_DIR}/options)
  file(REMOVE_RECURSE ${build})
  string(REPLACE ";" "\\;" schemas "${schemas}")
  run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${build} -G ${GENERATOR} -DCMAKE_CXX_COMPILER=${CXX} -DVELMAR_BUILD_TESTS=ON
      -DVELMAR_BUILD_EXAMPLES=ON -DVELMAR_BUILD_BENCH=${HAS_BENCH} -DVELMAR_BUILD_TOOLS=${program}
      -DVELMAR_BUILD_SCHEMAS=${libraries} "-DVELMAR_SCHEMAS=${schemas}")
  run(${CMAKE_CTEST_COMMAND} --test-dir ${build} -N)
  string(REGEX MATCHALL ": (corpus|examples|tools[A-Za-z.]*)\n" found "${output}")
  list(TRANSFORM found REPLACE "[: \n]" "")
  expect_equal("${found}" "${tests}")
endfunction()

set(all "ConfigControlDesign;Ap203E2;AutomotiveDesign;Ap242;Iso1358425Iec613605LibraryImplicitSchema;StepIrAic")
expect_skipped(ON ON "${all}" "")
expect_skipped(ON OFF "${all}" "corpus;tools.ConvertInfoAndProgram;examples")
expect_skipped(OFF OFF "${all}" "corpus;tools;examples")
expect_skipped(OFF ON "${all}" "corpus;tools")
expect_skipped(ON ON "" "corpus;tools.ConvertInfoAndProgram;examples")
expect_skipped(OFF ON "Ap203E2" "corpus;tools;examples")
expect_skipped(ON ON "ConfigControlDesign" "corpus;tools.ConvertInfoAndProgram;examples")
expect_skipped(ON ON "AutomotiveDesign" "")
expect_skipped(ON ON "Ap242;StepIrAic" "corpus;tools.ConvertInfoAndProgram;examples")
