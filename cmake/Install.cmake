# What `cmake --install` puts where: the libraries, their headers, the programs, the CMake package and the pkg-config
# files. All of it can be moved together: nothing in it names the prefix.
include(CMakePackageConfigHelpers)

install(TARGETS Velmar EXPORT VelmarTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velmar FILES_MATCHING PATTERN "*.h")
if(TARGET velmar)
  install(TARGETS velmar RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# An installed library finds its neighbours beside it. Users link Velmar::Velmar and Velmar::AutomotiveDesign.
set(velmar_components "")
foreach(schema IN ITEMS AutomotiveDesign)
  if(TARGET Velmar${schema})
    set_target_properties(Velmar${schema} PROPERTIES EXPORT_NAME ${schema} INSTALL_RPATH "\$ORIGIN")
    add_library(Velmar::${schema} ALIAS Velmar${schema})
    list(APPEND velmar_components ${schema})
  endif()
endforeach()

set(velmar_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Velmar)
install(EXPORT VelmarTargets NAMESPACE Velmar:: DESTINATION ${velmar_package_dir})
configure_package_config_file(
  cmake/VelmarConfig.cmake.in ${CMAKE_BINARY_DIR}/VelmarConfig.cmake
  INSTALL_DESTINATION ${velmar_package_dir}
  NO_SET_AND_CHECK_MACRO
)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/VelmarConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(
  FILES ${CMAKE_BINARY_DIR}/VelmarConfig.cmake ${CMAKE_BINARY_DIR}/VelmarConfigVersion.cmake
  DESTINATION ${velmar_package_dir}
)

# pkg-config: velmar for the library, velmar-<schema> for each schema library.
file(RELATIVE_PATH velmar_pc_to_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
function(velmar_install_pc name description requires library)
  set(file ${CMAKE_BINARY_DIR}/${name}.pc)
  configure_file(cmake/velmar.pc.in ${file} @ONLY)
  install(FILES ${file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
velmar_install_pc(velmar "${PROJECT_DESCRIPTION}" "" Velmar_3.1)
if(TARGET VelmarAutomotiveDesign)
  velmar_install_pc(velmar-automotive-design "The AP214 schema for Velmar" velmar VelmarAutomotiveDesign_3.1)
endif()
