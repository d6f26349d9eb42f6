# What is installed beside the program itself, and the Debian package made of all of it by cpack.
include(GNUInstallDirs)
set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(packaged ${PROJECT_BINARY_DIR}/packaging)
set(docdir ${CMAKE_INSTALL_DATADIR}/doc/velomind)

# The changelog of the package has the last word about its revision and date.
file(STRINGS ${packaging}/changelog changelog)
if(NOT changelog MATCHES "^velomind \\(${VELOMIND_RELEASE}-([^)]+)\\)")
  message(FATAL_ERROR "packaging/changelog does not begin with version ${VELOMIND_RELEASE}")
endif()
set(revision ${CMAKE_MATCH_1})
string(REGEX MATCH " -- [^<]+<[^>]+>  [A-Za-z]+, ([0-9]+ [A-Za-z]+ [0-9]+)" signature "${changelog}")
set(PACKAGE_DATE ${CMAKE_MATCH_1})
string(REGEX REPLACE "^ -- ([^<]+<[^>]+>).*" "\\1" maintainer "${signature}")

# velomind_compress(SOURCE TARGET DIRECTORY): installs the file compressed, as Debian wants its texts.
find_program(GZIP gzip REQUIRED)
set(compressed "")
function(velomind_compress source name directory)
  set(target ${packaged}/${name}.gz)
  add_custom_command(OUTPUT ${target}
    COMMAND sh -c "mkdir -p '$(dirname ${target})' && ${GZIP} -9nc '${source}' >'${target}'"
    DEPENDS ${source} VERBATIM)
  set(compressed ${compressed} ${target} PARENT_SCOPE)
  install(FILES ${target} DESTINATION ${directory})
endfunction()

foreach(program velomind velomind-cards)
  configure_file(${packaging}/${program}.1.in ${packaged}/${program}.1 @ONLY)
  velomind_compress(${packaged}/${program}.1 ${program}.1 ${CMAKE_INSTALL_MANDIR}/man1)
  foreach(language de ja)
    configure_file(${packaging}/${program}.${language}.1.in ${packaged}/${language}/${program}.1 @ONLY)
    velomind_compress(${packaged}/${language}/${program}.1 ${language}/${program}.1
      ${CMAKE_INSTALL_MANDIR}/${language}/man1)
  endforeach()
endforeach()
velomind_compress(${packaging}/changelog changelog.Debian ${docdir})
velomind_compress(${PROJECT_SOURCE_DIR}/CHANGELOG.md changelog ${docdir})
add_custom_target(velomind_package_data ALL DEPENDS ${compressed})

# The licence stands once, in LICENSE; here it is indented as a field of the copyright file.
file(READ ${PROJECT_SOURCE_DIR}/LICENSE license)
string(REGEX REPLACE "^.*\n(Permission is)" "\\1" license "${license}")
string(REGEX REPLACE "\n\n" "\n.\n" license "${license}")
string(REGEX REPLACE "\n(.)" "\n \\1" PACKAGE_LICENSE "\n${license}")
configure_file(${packaging}/copyright.in ${packaged}/copyright @ONLY)

install(FILES ${packaged}/copyright DESTINATION ${docdir})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/samples/ DESTINATION ${docdir}/examples)
install(FILES ${packaging}/lintian-overrides
  DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME velomind)
install(FILES ${packaging}/velomind-cards.bash-completion
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME velomind-cards)
install(FILES ${packaging}/velomind.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${packaging}/org.example.velomind.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${packaging}/velomind-mime.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages RENAME velomind.xml)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velomind)
set(CPACK_PACKAGE_VERSION ${VELOMIND_RELEASE})
set(CPACK_PACKAGE_CONTACT ${maintainer})
set(CPACK_PACKAGE_DIRECTORY ${packaged})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
execute_process(COMMAND dpkg --print-architecture
  OUTPUT_VARIABLE architecture OUTPUT_STRIP_TRAILING_WHITESPACE)
set(VELOMIND_PACKAGE_FILE velomind_${VELOMIND_RELEASE}-${revision}_${architecture}.deb)
set(CPACK_DEBIAN_FILE_NAME ${VELOMIND_PACKAGE_FILE})
set(CPACK_DEBIAN_PACKAGE_RELEASE ${revision})
set(CPACK_DEBIAN_PACKAGE_SECTION education)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://www.example.org)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The windowing library's own texts in other languages, and what opens the user guide.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "wx3.2-i18n, xdg-utils")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "flash cards that come again in time")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Velomind shows the front of a flash card, you remember the back and score
yourself from 0 to 5. The score and the time that has really passed since the
last review decide when the card comes again.
.
Cards have categories, a reading and notes, are searched and edited in a list,
and are imported from and exported to tables and text files.")
include(CPack)
