# One example with the compiler and pkg-config alone.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
run(${PKG_CONFIG} --modversion velmar)
expect_substring("${output}" "3.1.")
run(${PKG_CONFIG} --cflags --libs velmar velmar-automotive-design)
separate_arguments(package_flags UNIX_COMMAND "${output}")
separate_arguments(flags UNIX_COMMAND "${CXX_FLAGS}")
set(program ${WORK_DIR}/with_pkg_config)
run(${CXX} ${flags} -std=c++17 ${SOURCE_DIR}/examples/read_and_list.cpp -o ${program} ${package_flags})
set(ENV{LD_LIBRARY_PATH} ${prefix}/${LIBDIR})
run(${program} ${sample})
expect_substring("${output}" "#16 VB-110 Winkel für Träger\n")

# The same without a schema library.
run(${PKG_CONFIG} --cflags --libs velmar-late-bound)
separate_arguments(package_flags UNIX_COMMAND "${output}")
run(${CXX} ${flags} -std=c++17 ${SOURCE_DIR}/examples/late_binding.cpp -o ${program} ${package_flags})
run(${program} ${prefix}/share/velmar/schemas/automotive_design.exp ${sample})
expect_substring("${output}" "#16 PRODUCT\n  id = 'VB-110'\n")

# The library alone.
run(${PKG_CONFIG} --libs velmar)
string(FIND "${output}" "AutomotiveDesign" at)
if(NOT at EQUAL -1)
  message(FATAL_ERROR "velmar.pc names a schema library: ${output}")
endif()
