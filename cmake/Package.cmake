# What is installed beside the two programs: man pages, descriptions for desktops, completions of the
# shell, and word lists. debian/rules and the Flatpak manifest in packaging/ install just this.
include(GNUInstallDirs)
set(packaging ${PROJECT_SOURCE_DIR}/packaging)

# The man pages bear the day of the release.
file(READ ${packaging}/${VELOMIND_ID}.metainfo.xml metainfo)
if(NOT metainfo MATCHES "<release version=\"${VELOMIND_RELEASE}\" date=\"([0-9-]+)\"")
  message(FATAL_ERROR "packaging/${VELOMIND_ID}.metainfo.xml has no release ${VELOMIND_RELEASE}")
endif()
set(RELEASE_DATE ${CMAKE_MATCH_1})

foreach(program velomind velomind-cards)
  foreach(language "" de ja)
    if(language)
      set(page ${program}.${language}.1.in)
    else()
      set(page ${program}.1.in)
    endif()
    set(filled ${PROJECT_BINARY_DIR}/man/${language}/${program}.1)
    configure_file(${packaging}/${page} ${filled} @ONLY)
    install(FILES ${filled} DESTINATION ${CMAKE_INSTALL_MANDIR}/${language}/man1)
  endforeach()
  install(FILES ${packaging}/${program}.bash-completion
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${program})
endforeach()

install(FILES ${packaging}/${VELOMIND_ID}.desktop
  DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${packaging}/${VELOMIND_ID}.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${packaging}/${VELOMIND_ID}.mime.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages RENAME ${VELOMIND_ID}.xml)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/samples/
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velomind/examples)
