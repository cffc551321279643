# velmar_add_schema of the installed package: the example, several schemas in a project, and wrong arguments.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(work "${WORK_DIR}/add schema")  # with a space: paths may have them
file(REMOVE_RECURSE ${work})
set(settings
  -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_BUILD_TYPE=Debug
)
set(generating "Generating the classes of tool_store.exp")

set(generators Ninja "Unix Makefiles")
find_program(ninja NAMES ninja)
find_program(make NAMES make)
if(NOT ninja)
  list(REMOVE_ITEM generators Ninja)
  message(STATUS "left out: there is no ninja")
endif()
if(NOT make)
  list(REMOVE_ITEM generators "Unix Makefiles")
  message(STATUS "left out: there is no make")
endif()

# Gives a file another text. Time stamps of files may be as coarse as some milliseconds, so it waits for a new one.
function(change file text)
  run(${CMAKE_COMMAND} -E sleep 0.1)
  file(WRITE ${file} "${text}")
endfunction()

# The example, with each generator and each kind of library.
foreach(generator IN LISTS generators)
  file(COPY ${SOURCE_DIR}/examples/own_schema DESTINATION ${work}/${generator})
  set(example ${work}/${generator}/own_schema)
  foreach(shared IN ITEMS ON OFF)
    set(build "${work}/${generator}/shared ${shared}")
    run(${CMAKE_COMMAND} -S ${example} -B ${build} -G ${generator} ${settings} -DCMAKE_CXX_FLAGS=${CXX_FLAGS}
        -DBUILD_SHARED_LIBS=${shared})
    run(${CMAKE_COMMAND} --build ${build} -j 2)
    expect_substring("${output}" "${generating}")
    run(${build}/list_tools ${example}/tools.stp)
    expect_equal("${output}" [[
D-6.8: 6.8 mm, coating TITANIUM_NITRIDE, in A1, left
D-5.0: 5 mm, coating NONE, in A1, left
S-12.4: 12.4 mm, in A2
D-1.2: 1.2 mm, coating DIAMOND, not put away
]])
    file(GLOB libraries ${build}/libtool_store.*)
    cmake_path(GET libraries EXTENSION extension)
    if(shared)
      expect_equal("${extension}" ".so")
    else()
      expect_equal("${extension}" ".a")
    endif()

    # A second time nothing is to be done, nor for a text that is not read.
    run(${CMAKE_COMMAND} --build ${build})
    expect_no_substring("${output}" "${generating}")
    change(${example}/measures/unused.exp "SCHEMA unused; END_SCHEMA;\n")
    run(${CMAKE_COMMAND} --build ${build})
    expect_no_substring("${output}" "${generating}")

    # A change of the interfaced text that changes nothing in the classes, so that nothing is compiled; and one that does.
    file(READ ${example}/measures/measures.exp measures)
    string(REPLACE "millimetres = REAL" "millimetres = NUMBER" changed "${measures}")
    change(${example}/measures/measures.exp "${changed}")
    run(${CMAKE_COMMAND} --build ${build})
    expect_substring("${output}" "${generating}")
    expect_no_substring("${output}" "Building CXX")
    string(REPLACE "millimetres = REAL" "millimetres = STRING" changed "${measures}")
    change(${example}/measures/measures.exp "${changed}")
    run(${CMAKE_COMMAND} --build ${build})
    expect_substring("${output}" "${generating}")
    expect_substring("${output}" "main.cpp.o")
    file(READ ${build}/tool_store_classes/ToolStore.h header)
    expect_substring("${header}" "ExpString& Diameter()")

    # An error in a schema ends the build with its place; mended, the build goes on.
    change(${example}/measures/measures.exp "SCHEMA measures; END_SCHEMA;\n")
    expect_failure("tool_store.exp:3:20: error: " ${CMAKE_COMMAND} --build ${build})
    change(${example}/measures/measures.exp "${measures}")
    run(${CMAKE_COMMAND} --build ${build} -j 2)
    run(${build}/list_tools ${example}/tools.stp)
    expect_substring("${output}" "D-6.8: 6.8 mm")
  endforeach()
endforeach()

# Several schemas in a project, shared and static, by programs that use none of their symbols: registered all the same. The
# compiler's warnings are errors for the classes, too.
list(GET generators 0 generator)
set(project ${CMAKE_CURRENT_LIST_DIR}/schemas_of_a_project)
set(build ${work}/project)
set(strict "${CXX_FLAGS} -Wall -Wextra -Wpedantic -Werror")
run(${CMAKE_COMMAND} -S ${project} -B ${build} -G ${generator} ${settings} -DCMAKE_CXX_FLAGS=${strict}
    "-DCMAKE_EXE_LINKER_FLAGS=-Wl,--as-needed" "-DCMAKE_SHARED_LINKER_FLAGS=-Wl,--as-needed")
run(${CMAKE_COMMAND} --build ${build} -j 2)
foreach(program IN ITEMS registered registered_through_a_library)
  run(${build}/${program} FIRST THE_SECOND)
  expect_equal("${output}" "FIRST is registered\nTHE_SECOND is registered\n")
endforeach()
run(${build}/not_linked FIRST THE_SECOND)
expect_equal("${output}" "FIRST is not registered\nTHE_SECOND is not registered\n")

# A folder with a blank in its name within a project.
foreach(generator IN LISTS generators)
  set(project_of_two ${work}/${generator}/two)
  set(text "SCHEMA alone;\nUSE FROM other;\nEND_SCHEMA;\n")
  file(WRITE "${project_of_two}/a folder/alone.exp" "${text}")
  file(WRITE "${project_of_two}/a folder/texts/other.EXP" "SCHEMA other;\nENTITY a;\nEND_ENTITY;\nEND_SCHEMA;\n")
  file(WRITE "${project_of_two}/a folder/CMakeLists.txt"
       "velmar_add_schema(NAME alone EXPRESS alone.exp INCLUDE_DIRS texts)\n"
       "velmar_add_schema(NAME other EXPRESS texts/other.EXP)\n")
  file(WRITE "${project_of_two}/CMakeLists.txt"
       "cmake_minimum_required(VERSION 3.25)\nproject(Two LANGUAGES CXX)\nfind_package(Velmar 3.1 REQUIRED)\n"
       "add_subdirectory(\"a folder\")\n")
  set(build ${project_of_two}/build)
  run(${CMAKE_COMMAND} -S ${project_of_two} -B ${build} -G ${generator} ${settings} -DCMAKE_CXX_FLAGS=${CXX_FLAGS})
  run(${CMAKE_COMMAND} --build ${build} --target alone_generate other_generate)
  run(${CMAKE_COMMAND} --build ${build} --target alone_generate other_generate)
  expect_no_substring("${output}" "Generating the classes")
  change("${project_of_two}/a folder/texts/other.EXP" "SCHEMA other;\nENTITY b;\nEND_ENTITY;\nEND_SCHEMA;\n")
  run(${CMAKE_COMMAND} --build ${build} --target alone_generate other_generate)
  expect_substring("${output}" "Generating the classes of alone.exp")
  expect_substring("${output}" "Generating the classes of other.EXP")
  file(READ "${build}/a folder/alone_classes/Alone.h" header)
  expect_substring("${header}" "class VELMAR_API B :")
endforeach()

# Installed and exported by the project, moved, and used by another.
run(${CMAKE_COMMAND} --install ${work}/project --prefix ${work}/first)
file(RENAME ${work}/first ${work}/moved)
set(build ${work}/user)
run(${CMAKE_COMMAND} -S ${project}/user -B ${build} -G ${generator} ${settings} -DCMAKE_CXX_FLAGS=${strict}
    "-DSchemasOfAProject_DIR=${work}/moved/lib/cmake/SchemasOfAProject" "-DCMAKE_EXE_LINKER_FLAGS=-Wl,--as-needed")
run(${CMAKE_COMMAND} --build ${build} -j 2)
run(${build}/registered FIRST THE_SECOND)
expect_equal("${output}" "FIRST is registered\nTHE_SECOND is registered\n")

# Wrong arguments.
file(WRITE ${work}/wrong/one.exp "(* SCHEMA remark *)\n  Schema one ; END_SCHEMA;\n")
file(WRITE ${work}/wrong/two.exp "SCHEMA two;\nEND_SCHEMA;\nSCHEMA three '{1 0}';\nEND_SCHEMA;\n")
file(WRITE ${work}/wrong/none.exp "-- nothing\n")
function(expect_refusal arguments message)
  file(WRITE ${work}/wrong/CMakeLists.txt
       "cmake_minimum_required(VERSION 3.25)\nproject(Wrong LANGUAGES NONE)\nfind_package(Velmar 3.1 REQUIRED)\n"
       "add_custom_target(taken)\nadd_custom_target(half_generate)\nvelmar_add_schema(${arguments})\n")
  execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${work}/wrong -B ${work}/wrong/build -G ${generator} ${settings}
    RESULT_VARIABLE status OUTPUT_QUIET ERROR_VARIABLE err
  )
  if(status EQUAL 0)
    message(FATAL_ERROR "velmar_add_schema(${arguments}) was accepted")
  endif()
  string(REGEX REPLACE "[ \n]+" " " err "${err}")  # CMake breaks long lines
  expect_substring("${err}" "velmar_add_schema${message} ")
endfunction()
expect_refusal("" ": NAME <target> is missing")
expect_refusal("one.exp" ": NAME <target> is missing")
expect_refusal("NAME one" "(one): EXPRESS <file.exp> is missing")
expect_refusal("NAME one EXPRESS" "(one): nothing follows EXPRESS")
expect_refusal("NAME one EXPRESS one.exp NAMESPACE One"
               "(one): there is no argument 'NAMESPACE;One'; there are NAME, EXPRESS, SCHEMA, REGISTRY_NAME, PARTS, INCLUDE_DIRS, STATIC and SHARED")
expect_refusal("NAME one EXPRESS one.exp STATIC SHARED" "(one): a library is STATIC or SHARED, not both")
expect_refusal("NAME one EXPRESS one.exp PARTS 0" "(one): PARTS is a number from 1 to 999, not '0'")
expect_refusal("NAME one EXPRESS one.exp PARTS 1000" "(one): PARTS is a number from 1 to 999, not '1000'")
expect_refusal("NAME one EXPRESS one.exp PARTS many" "(one): PARTS is a number from 1 to 999, not 'many'")
expect_refusal("NAME one EXPRESS one.exp REGISTRY_NAME 1st"
               "(one): REGISTRY_NAME is made of letters, digits and '_', a letter first, not '1st'")
expect_refusal("NAME one EXPRESS one.exp SCHEMA o-ne"
               "(one): SCHEMA is made of letters, digits and '_', a letter first, not 'o-ne'")
expect_refusal("NAME taken EXPRESS one.exp" "(taken): there is a target taken already")
expect_refusal("NAME half EXPRESS one.exp" "(half): there is a target half_generate already")
expect_refusal("NAME one EXPRESS missing.exp" "(one): there is no file ${work}/wrong/missing.exp")
expect_refusal("NAME one EXPRESS ." "(one): there is no file ${work}/wrong/")
expect_refusal("NAME one EXPRESS one.exp INCLUDE_DIRS missing" "(one): there is no folder ${work}/wrong/missing")
expect_refusal("NAME two EXPRESS two.exp"
               "(two): ${work}/wrong/two.exp declares several schemas; choose one with SCHEMA <schema>: two, three")
expect_refusal("NAME none EXPRESS none.exp"
               "(none): no line of ${work}/wrong/none.exp begins with SCHEMA and a name; name the schema with SCHEMA <schema>")

# A schema that the file does not declare is found out when building.
file(WRITE ${work}/other/one.exp "SCHEMA one;\nEND_SCHEMA;\n")
file(WRITE ${work}/other/CMakeLists.txt
     "cmake_minimum_required(VERSION 3.25)\nproject(Other LANGUAGES CXX)\nfind_package(Velmar 3.1 REQUIRED)\n"
     "velmar_add_schema(NAME one EXPRESS one.exp SCHEMA other)\n")
run(${CMAKE_COMMAND} -S ${work}/other -B ${work}/other/build -G ${generator} ${settings})
expect_failure("velmar-express: the files declare no schema 'other'" ${CMAKE_COMMAND} --build ${work}/other/build)
