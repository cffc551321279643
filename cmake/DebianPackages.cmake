# `cpack -G DEB` in a build folder: velmar, with the program, the libraries and what they need to run, and velmar-dev, with what a
# program of one's own is built with.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velmar)
set(CPACK_PACKAGE_CONTACT "The Velmar developers <velmar@localhost>" CACHE STRING "The maintainer that the packages name")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/files.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME velmar)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
"The program velmar looks at STEP files (ISO 10303-21), checks them against
their schemas, and converts them. The libraries read, edit and write such
files, with a class for each entity type of the schemas that come along.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME velmar-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "velmar (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"Headers, CMake and pkg-config files of the libraries of Velmar, and
velmar-express, which checks EXPRESS schemas (ISO 10303-11) and makes C++
classes of them.")

include(CPack)
