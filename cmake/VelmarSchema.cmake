# velmar_add_schema: the library of C++ classes of an EXPRESS schema, made while building.
#
#   velmar_add_schema(
#     NAME <target>             the target; link it with target_link_libraries(app PRIVATE <target>)
#     EXPRESS <file.exp>        the file that declares the schema
#     [SCHEMA <schema>]         which of the schemas in the file; needed where it declares several
#     [REGISTRY_NAME <name>]    the schema name that the types are registered under; default: the schema's name in capitals
#     [PARTS <n>]               into how many .cpp files the classes go; default: 1 to 8, by the size of the file
#     [INCLUDE_DIRS <dir>...]   where NAME.exp of schemas is looked for that are interfaced and not in the file
#     [STATIC | SHARED])        default: SHARED, unless BUILD_SHARED_LIBS is set and off
#
# REGISTRY_NAME in camel case (MY_SCHEMA: MySchema) names the C++ namespace, VELMAR::MySchema, and the header, MySchema.h, which
# is in the file set HEADERS of the target. The target brings Velmar::Velmar. The classes are made again when a text that they
# come from has changed.
#
# A program that links the target has the types registered when it starts, whether it uses a class of the library or not: the
# link options of the target see to it that a shared library is kept, and that of a static one the object that registers the
# types is taken. Programs that are linked otherwise call VELMAR::MySchema::Load() for a static library.
include_guard()
cmake_policy(PUSH)
cmake_policy(VERSION 3.25)

function(velmar_add_schema)
  cmake_parse_arguments(PARSE_ARGV 0 arg "STATIC;SHARED" "NAME;EXPRESS;SCHEMA;REGISTRY_NAME;PARTS" "INCLUDE_DIRS")
  velmar_check_schema_arguments()

  cmake_path(ABSOLUTE_PATH arg_EXPRESS BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE)
  if(NOT EXISTS "${arg_EXPRESS}" OR IS_DIRECTORY "${arg_EXPRESS}")
    message(FATAL_ERROR "velmar_add_schema(${arg_NAME}): there is no file ${arg_EXPRESS}")
  endif()
  set(options "")
  set(globs "")
  foreach(directory IN LISTS arg_INCLUDE_DIRS)
    cmake_path(ABSOLUTE_PATH directory BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE)
    if(NOT IS_DIRECTORY "${directory}")
      message(FATAL_ERROR "velmar_add_schema(${arg_NAME}): there is no folder ${directory}")
    endif()
    list(APPEND options -I ${directory})
    list(APPEND globs ${directory}/*.[eE][xX][pP])
  endforeach()

  if(NOT DEFINED arg_SCHEMA AND NOT DEFINED arg_REGISTRY_NAME)
    velmar_find_schema(arg_SCHEMA)
  endif()
  if(DEFINED arg_SCHEMA)
    list(APPEND options --schema ${arg_SCHEMA})
  endif()
  if(NOT DEFINED arg_REGISTRY_NAME)
    set(arg_REGISTRY_NAME ${arg_SCHEMA})
  endif()
  string(TOUPPER ${arg_REGISTRY_NAME} arg_REGISTRY_NAME)
  velmar_camel_case(${arg_REGISTRY_NAME} namespace)

  if(NOT DEFINED arg_PARTS)
    file(SIZE ${arg_EXPRESS} size)
    math(EXPR arg_PARTS "${size} / 30000 + 1")
    if(arg_PARTS GREATER 8)
      set(arg_PARTS 8)
    endif()
  endif()

  set(type SHARED)
  if(arg_STATIC OR (NOT arg_SHARED AND DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS))
    set(type STATIC)
  endif()

  set(directory ${CMAKE_CURRENT_BINARY_DIR}/${arg_NAME}_classes)
  set(header ${directory}/${namespace}.h)
  set(sources ${directory}/${namespace}.cpp)
  foreach(part RANGE 1 ${arg_PARTS})
    list(APPEND sources ${directory}/${namespace}_${part}.cpp)
  endforeach()
  # Files that would not change are left alone; the stamp says when they were last looked at.
  set(stamp ${directory}.stamp)
  # Which texts were read, velmar-express says. In a folder with a blank in its name, seen from the top, CMake writes a makefile
  # that cannot use this: there, all texts count that might have been read.
  set(texts DEPFILE ${stamp}.d)
  cmake_path(RELATIVE_PATH CMAKE_CURRENT_BINARY_DIR BASE_DIRECTORY ${CMAKE_BINARY_DIR} OUTPUT_VARIABLE folder)
  if(CMAKE_GENERATOR MATCHES "Makefiles" AND folder MATCHES " ")
    set(texts "")
    if(globs)
      file(GLOB texts CONFIGURE_DEPENDS ${globs})
      list(PREPEND texts DEPENDS)
    endif()
  endif()
  cmake_path(GET arg_EXPRESS FILENAME name)
  add_custom_command(
    OUTPUT ${stamp}
    BYPRODUCTS ${header} ${sources}
    COMMAND Velmar::velmar-express generate ${arg_EXPRESS} ${options} --output-dir ${directory}
            --registry-name ${arg_REGISTRY_NAME} --parts ${arg_PARTS} --depfile ${stamp}.d --depfile-target ${stamp}
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${arg_EXPRESS} Velmar::velmar-express
    ${texts}
    COMMENT "Generating the classes of ${name}"
    VERBATIM
  )
  add_custom_target(${arg_NAME}_generate DEPENDS ${stamp})
  add_library(${arg_NAME} ${type} ${sources})
  add_dependencies(${arg_NAME} ${arg_NAME}_generate)
  target_sources(${arg_NAME} PUBLIC FILE_SET HEADERS BASE_DIRS ${directory} FILES ${header})
  target_link_libraries(${arg_NAME} PUBLIC Velmar::Velmar)
  set_target_properties(${arg_NAME} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON
  )
  velmar_register_when_linked(${arg_NAME} ${namespace})
  if(type STREQUAL SHARED)
    # The tables of virtual functions refer to the library's own functions by the thousand; -Bsymbolic settles these
    # references while linking instead of looking each up by name while loading.
    set(map ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/SchemaLibrary.map)
    target_link_options(${arg_NAME} PRIVATE "LINKER:--version-script=${map}" LINKER:-Bsymbolic)
    set_property(TARGET ${arg_NAME} APPEND PROPERTY LINK_DEPENDS ${map})
  endif()
endfunction()

# Ends with a message where the arguments of velmar_add_schema cannot be right.
macro(velmar_check_schema_arguments)
  if(NOT DEFINED arg_NAME)
    message(FATAL_ERROR "velmar_add_schema: NAME <target> is missing")
  endif()
  if(DEFINED arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "velmar_add_schema(${arg_NAME}): there is no argument '${arg_UNPARSED_ARGUMENTS}'; there are "
                        "NAME, EXPRESS, SCHEMA, REGISTRY_NAME, PARTS, INCLUDE_DIRS, STATIC and SHARED")
  endif()
  if(DEFINED arg_KEYWORDS_MISSING_VALUES)
    message(FATAL_ERROR "velmar_add_schema(${arg_NAME}): nothing follows ${arg_KEYWORDS_MISSING_VALUES}")
  endif()
  if(NOT DEFINED arg_EXPRESS)
    message(FATAL_ERROR "velmar_add_schema(${arg_NAME}): EXPRESS <file.exp> is missing")
  endif()
  if(arg_STATIC AND arg_SHARED)
    message(FATAL_ERROR "velmar_add_schema(${arg_NAME}): a library is STATIC or SHARED, not both")
  endif()
  if(DEFINED arg_PARTS AND NOT arg_PARTS MATCHES "^[1-9][0-9]?[0-9]?$")
    message(FATAL_ERROR "velmar_add_schema(${arg_NAME}): PARTS is a number from 1 to 999, not '${arg_PARTS}'")
  endif()
  foreach(keyword IN ITEMS SCHEMA REGISTRY_NAME)
    if(DEFINED arg_${keyword} AND NOT arg_${keyword} MATCHES "^[A-Za-z][A-Za-z0-9_]*$")
      message(FATAL_ERROR "velmar_add_schema(${arg_NAME}): ${keyword} is made of letters, digits and '_', a letter first, "
                          "not '${arg_${keyword}}'")
    endif()
  endforeach()
  foreach(target IN ITEMS ${arg_NAME} ${arg_NAME}_generate)
    if(TARGET ${target})
      message(FATAL_ERROR "velmar_add_schema(${arg_NAME}): there is a target ${target} already")
    endif()
  endforeach()
  if(NOT TARGET Velmar::velmar-express)
    message(FATAL_ERROR "velmar_add_schema(${arg_NAME}): this Velmar was built without velmar-express")
  endif()
endmacro()

# Sets `result` to the schema that arg_EXPRESS declares. A declaration is found where it begins a line; a remark may hold what
# looks like one. So the file has to have one such line, and velmar-express is told by name which schema is meant.
function(velmar_find_schema result)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${arg_EXPRESS})
  set(declaration "^[ \t]*[Ss][Cc][Hh][Ee][Mm][Aa][ \t]+([A-Za-z][A-Za-z0-9_]*)[ \t]*[;'\"]")
  file(STRINGS ${arg_EXPRESS} lines REGEX "${declaration}")
  set(schemas "")
  foreach(line IN LISTS lines)
    string(REGEX MATCH "${declaration}" line "${line}")
    list(APPEND schemas ${CMAKE_MATCH_1})
  endforeach()
  list(LENGTH schemas count)
  if(count EQUAL 0)
    message(FATAL_ERROR "velmar_add_schema(${arg_NAME}): no line of ${arg_EXPRESS} begins with SCHEMA and a name; "
                        "name the schema with SCHEMA <schema>")
  elseif(count GREATER 1)
    list(JOIN schemas ", " schemas)
    message(FATAL_ERROR "velmar_add_schema(${arg_NAME}): ${arg_EXPRESS} declares several schemas; "
                        "choose one with SCHEMA <schema>: ${schemas}")
  endif()
  set(${result} ${schemas} PARENT_SCOPE)
endfunction()

# Sets `result` to the name in camel case, as velmar-express makes it of a registry name: MY_SCHEMA, MySchema.
function(velmar_camel_case name result)
  string(TOLOWER ${name} name)
  string(REPLACE "_" ";" words "${name}")
  set(camel "")
  foreach(word IN LISTS words)
    if(NOT word STREQUAL "")
      string(SUBSTRING ${word} 0 1 first)
      string(TOUPPER ${first} first)
      string(SUBSTRING ${word} 1 -1 rest)
      string(APPEND camel ${first}${rest})
    endif()
  endforeach()
  set(${result} ${camel} PARENT_SCOPE)
endfunction()

# Has what links the library keep it, although it may use none of its symbols: VELMAR::<namespace>::Load registers the types
# when the library is loaded.
function(velmar_register_when_linked target namespace)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL SHARED_LIBRARY)
    set(file "$<TARGET_LINKER_FILE:$<TARGET_NAME:${target}>>")
    target_link_options(${target} INTERFACE "SHELL:-Wl,--push-state,--no-as-needed \"${file}\" -Wl,--pop-state")
  else()
    string(LENGTH ${namespace} length)
    target_link_options(${target} INTERFACE LINKER:--undefined=_ZN6VELMAR${length}${namespace}4LoadEv)
  endif()
endfunction()

cmake_policy(POP)
