# What `cmake --install` puts where: the libraries, their headers, the programs, the CMake package and the pkg-config
# files. All of it can be moved together: nothing in it names the prefix.
include(CMakePackageConfigHelpers)

install(TARGETS Velmar EXPORT VelmarTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velmar COMPONENT development FILES_MATCHING PATTERN "*.h")
if(TARGET velmar)
  install(TARGETS velmar RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velmar)
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velmar)

# Users link Velmar::Velmar and, say, Velmar::AutomotiveDesign.
set(velmar_components "")
foreach(component IN ITEMS LateBound ${VELMAR_SCHEMAS})
  if(TARGET Velmar${component})
    list(APPEND velmar_components ${component})
  endif()
endforeach()

set(velmar_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Velmar)
install(EXPORT VelmarTargets NAMESPACE Velmar:: DESTINATION ${velmar_package_dir} COMPONENT development)
configure_package_config_file(
  cmake/VelmarConfig.cmake.in ${CMAKE_BINARY_DIR}/VelmarConfig.cmake
  INSTALL_DESTINATION ${velmar_package_dir}
  NO_SET_AND_CHECK_MACRO
)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/VelmarConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(
  FILES
    ${CMAKE_BINARY_DIR}/VelmarConfig.cmake ${CMAKE_BINARY_DIR}/VelmarConfigVersion.cmake
    cmake/VelmarSchema.cmake cmake/SchemaLibrary.map
  DESTINATION ${velmar_package_dir} COMPONENT development
)

# pkg-config: velmar for the library, velmar-<schema> for each schema library, velmar-late-bound.
file(RELATIVE_PATH velmar_pc_to_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
function(velmar_install_pc name description requires library)
  set(file ${CMAKE_BINARY_DIR}/${name}.pc)
  configure_file(cmake/velmar.pc.in ${file} @ONLY)
  install(FILES ${file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()
function(velmar_install_schema_pc schema name description)
  if(TARGET Velmar${schema})
    velmar_install_pc(${name} "${description}" velmar Velmar${schema}_3.1)
  endif()
endfunction()
velmar_install_pc(velmar "${PROJECT_DESCRIPTION}" "" Velmar_3.1)
if(TARGET VelmarLateBound)
  velmar_install_pc(velmar-late-bound "EXPRESS schemas at run time for Velmar" velmar VelmarLateBound_3.1)
endif()
velmar_install_schema_pc(ConfigControlDesign velmar-config-control-design "The AP203 schema for Velmar")
velmar_install_schema_pc(Ap203E2 velmar-ap203-e2 "The AP203 edition 2 schema for Velmar")
velmar_install_schema_pc(AutomotiveDesign velmar-automotive-design "The AP214 schema for Velmar")
velmar_install_schema_pc(Ap242 velmar-ap242 "The AP242 schema for Velmar")
velmar_install_schema_pc(Iso1358425Iec613605LibraryImplicitSchema velmar-plib "The PLIB schema for Velmar")
if(TARGET VelmarStepIrAic)
  velmar_install_pc(velmar-step-ir-aic "The fallback schema STEP_IR_AIC for Velmar" "velmar velmar-ap242" VelmarStepIrAic_3.1)
endif()
