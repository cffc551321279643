# Installs under one prefix and moves it to another: nothing may remember where it was.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --config ${CONFIG} --prefix ${WORK_DIR}/installed)
file(RENAME ${WORK_DIR}/installed ${prefix})

set(files
  bin/velmar-express
  share/man/man1/velmar-express.1
  share/bash-completion/completions/velmar-express
  share/doc/velmar/README.md
  include/velmar/ExpFile.h
  ${LIBDIR}/libVelmar_3.1.so
  ${LIBDIR}/cmake/Velmar/VelmarConfig.cmake
  ${LIBDIR}/cmake/Velmar/VelmarSchema.cmake
  ${LIBDIR}/pkgconfig/velmar.pc
  ${LIBDIR}/pkgconfig/velmar-late-bound.pc
  include/velmar/LateBoundFile.h
)
if(HAS_PROGRAM)
  list(APPEND files bin/velmar share/man/man1/velmar.1 share/bash-completion/completions/velmar)
endif()
foreach(component IN LISTS COMPONENTS)
  list(APPEND files ${LIBDIR}/libVelmar${component}_3.1.so)
  if(NOT component STREQUAL LateBound)
    list(APPEND files include/velmar/${component}.h)
  endif()
endforeach()
if("AutomotiveDesign" IN_LIST COMPONENTS)
  list(APPEND files ${LIBDIR}/pkgconfig/velmar-automotive-design.pc share/velmar/schemas/automotive_design.exp)
endif()
foreach(file IN LISTS files)
  if(NOT EXISTS ${prefix}/${file})
    message(FATAL_ERROR "${file} was not installed")
  endif()
endforeach()

# Texts and run paths name no folder of this machine.
file(GLOB_RECURSE texts ${prefix}/*.h ${prefix}/*.cmake ${prefix}/*.pc)
foreach(file IN LISTS texts)
  file(READ ${file} text)
  foreach(folder IN ITEMS ${BUILD_DIR} ${SOURCE_DIR})
    # As the beginning of a path: a folder /velmar is not named by ${_IMPORT_PREFIX}/include/velmar.
    foreach(before IN ITEMS "\"" " " "=" "," "I" "L" "\;" "\n")
      string(FIND "${text}" "${before}${folder}" at)
      if(NOT at EQUAL -1)
        message(FATAL_ERROR "${file} names ${folder}")
      endif()
    endforeach()
  endforeach()
endforeach()
file(GLOB binaries ${prefix}/bin/* ${prefix}/${LIBDIR}/*.so)
foreach(file IN LISTS binaries)
  run(readelf -d ${file})
  string(FIND "${output}" "${BUILD_DIR}" at)
  if(NOT at EQUAL -1)
    message(FATAL_ERROR "the run path of ${file} leads to ${BUILD_DIR}\n${output}")
  endif()
endforeach()
