# What `cmake --install` puts where. The programs find their data through their own place, so that a whole
# installation can be moved.
set(application_id io.marloon.Tidewrack)

foreach(program tidewrack tidewrackctl)
  if(TARGET ${program})
    install(TARGETS ${program} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
  endif()
endforeach()
install(FILES "${CMAKE_BINARY_DIR}/share/tidewrack/schemas/gschemas.compiled"
              "data/${application_id}.gschema.xml"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/tidewrack/schemas")
install(DIRECTORY "${CMAKE_BINARY_DIR}/share/locale/" DESTINATION "${CMAKE_INSTALL_LOCALEDIR}"
        FILES_MATCHING PATTERN "*.mo")
install(FILES docs/tidewrackctl.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
install(FILES README.md NEWS LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}")

if(TARGET tidewrack)
  install(FILES docs/tidewrack.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
  install(FILES "data/${application_id}.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
  install(FILES "data/${application_id}.metainfo.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
  install(FILES "data/icons/${application_id}.svg"
          DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps")
  install(FILES "data/icons/${application_id}-symbolic.svg"
          DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/symbolic/apps")
  # The session bus needs the program's full path, which is known only now that the prefix is.
  install(CODE "
    set(program \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/tidewrack\")
    set(service \"${CMAKE_BINARY_DIR}/${application_id}.service\")
    configure_file(\"${CMAKE_SOURCE_DIR}/data/${application_id}.service.in\" \"\${service}\" @ONLY)
    file(INSTALL \"\${service}\" DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/dbus-1/services\")")
endif()
