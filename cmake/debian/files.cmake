# What Debian's packages have beside what is installed; CPack runs it on the files of each package before they are packed.
find_program(gzip NAMES gzip REQUIRED)

# compress(<file>): puts <file>.gz in its place, the same in every build.
function(compress file)
  execute_process(COMMAND ${gzip} -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # SOURCE_DATE_EPOCH, where it is set
set(changelog "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * What has changed is in CHANGELOG.md of the package velmar.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")

foreach(package IN ITEMS runtime:velmar development:velmar-dev)
  string(REPLACE ":" ";" package ${package})
  list(GET package 0 component)
  list(GET package 1 name)
  set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr/share)

  file(GLOB pages ${share}/man/man1/*.1)
  foreach(page IN LISTS pages)
    compress(${page})
  endforeach()
  configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${share}/doc/${name}/copyright COPYONLY)
  file(WRITE ${share}/doc/${name}/changelog "${changelog}")
  compress(${share}/doc/${name}/changelog)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${name}.lintian-overrides ${share}/lintian/overrides/${name} COPYONLY)
endforeach()
