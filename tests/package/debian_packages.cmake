# The packages that cpack makes of this build, unpacked into an empty root: what is in them, whether they go together, the program
# in them, and a project built against them.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
foreach(tool IN ITEMS dpkg-deb dpkg-shlibdeps gzip)
  find_program(${tool} NAMES ${tool})
  if(NOT ${tool})
    message(STATUS "skipped: built without ${tool}")  # as velmar_add_skipped_test says it
    return()
  endif()
endforeach()

set(work ${WORK_DIR}/debian)
file(REMOVE_RECURSE ${work})
run(${CPACK} -G DEB --config ${BUILD_DIR}/CPackConfig.cmake -C ${CONFIG} -B ${work} -D CPACK_DEBIAN_COMPRESSION_TYPE=gzip)
file(GLOB program_package ${work}/velmar_*.deb)
file(GLOB library_package ${work}/velmar-dev_*.deb)

# What they say of themselves.
run(dpkg-deb --field ${program_package} Depends)
foreach(library IN ITEMS libc6 libstdc++6 libfmt)
  expect_substring("${output}" "${library}")
endforeach()
run(dpkg-deb --field ${program_package} Version)
string(STRIP "${output}" version)
run(dpkg-deb --field ${library_package} Depends)
expect_substring("${output}" "velmar (= ${version})")
foreach(package IN ITEMS ${program_package} ${library_package})
  run(dpkg-deb --field ${package} Description)
  expect_substring("${output}" "STEP data")
endforeach()

# No file is in both.
run(dpkg-deb --contents ${program_package})
string(REGEX MATCHALL "\\./[^\n]*[^/\n]\n" in_program_package "${output}")
run(dpkg-deb --contents ${library_package})
foreach(file IN LISTS in_program_package)
  string(FIND "${output}" " ${file}" at)
  if(NOT at EQUAL -1)
    message(FATAL_ERROR "both packages have ${file}")
  endif()
endforeach()

# The program with its manual page and completion.
run(dpkg-deb --extract ${program_package} ${work}/root)
set(usr ${work}/root/usr)
run(${usr}/bin/velmar --version)
expect_substring("${output}" "velmar ${version}")
run(${usr}/bin/velmar check ${usr}/share/doc/velmar/examples/bracket.stp)
foreach(file IN ITEMS man/man1/velmar.1.gz doc/velmar/copyright doc/velmar/changelog.gz doc/velmar/README.md doc/velmar/docs/guide.md
                      bash-completion/completions/velmar)
  if(NOT EXISTS ${usr}/share/${file})
    message(FATAL_ERROR "${program_package} has no share/${file}")
  endif()
endforeach()
run(gzip -dc ${usr}/share/man/man1/velmar.1.gz)
expect_substring("${output}" ".TH VELMAR 1")

# A project with CMake, and one example with pkg-config.
run(dpkg-deb --extract ${library_package} ${work}/root)
file(WRITE ${work}/project/CMakeLists.txt [[
cmake_minimum_required(VERSION 3.25)
project(Reader LANGUAGES CXX)
find_package(Velmar 3.1 REQUIRED COMPONENTS AutomotiveDesign)
add_executable(reader reader.cpp)
target_link_libraries(reader PRIVATE Velmar::Velmar Velmar::AutomotiveDesign)
]])
configure_file(${SOURCE_DIR}/examples/read_and_list.cpp ${work}/project/reader.cpp COPYONLY)
run(${CMAKE_COMMAND} -S ${work}/project -B ${work}/build -G ${GENERATOR} -DCMAKE_PREFIX_PATH=${usr} -DCMAKE_CXX_COMPILER=${CXX}
    -DCMAKE_CXX_FLAGS=${CXX_FLAGS})
run(${CMAKE_COMMAND} --build ${work}/build)
run(${work}/build/reader ${sample})
expect_substring("${output}" "#16 VB-110 Winkel für Träger\n")

file(GLOB_RECURSE pc ${usr}/lib/*velmar.pc)
cmake_path(GET pc PARENT_PATH folder)
set(ENV{PKG_CONFIG_PATH} ${folder})
run(${PKG_CONFIG} --define-prefix --cflags --libs velmar velmar-late-bound)
separate_arguments(package_flags UNIX_COMMAND "${output}")
separate_arguments(flags UNIX_COMMAND "${CXX_FLAGS}")
run(${CXX} ${flags} -std=c++17 ${SOURCE_DIR}/examples/late_binding.cpp -o ${work}/late_binding ${package_flags})
cmake_path(GET folder PARENT_PATH libraries)
set(ENV{LD_LIBRARY_PATH} ${libraries})
run(${work}/late_binding ${usr}/share/velmar/schemas/automotive_design.exp ${sample})
expect_substring("${output}" "#16 PRODUCT\n  id = 'VB-110'\n")
unset(ENV{LD_LIBRARY_PATH})

# What Debian's own checker finds is an error.
find_program(lintian NAMES lintian)
if(lintian)
  run(${lintian} --allow-root --fail-on error,warning ${program_package} ${library_package})
  expect_equal("${output}" "")
else()
  message(STATUS "left out: there is no lintian")
endif()
