# `cmake --install BUILD --prefix DIR` gives a tree that runs where it lands:
# DIR/bin is the program folder (both programs, the template database and the
# sample Device Library, found there by the start-up search; the outputs'
# folders are made there too), plus a desktop entry and its icon under DIR/share.
set(BW_INSTALL_TARGETS burstwright-cli)
if(TARGET burstwright)
  list(APPEND BW_INSTALL_TARGETS burstwright)
endif()
install(TARGETS ${BW_INSTALL_TARGETS} RUNTIME DESTINATION bin)
install(FILES ${CMAKE_BINARY_DIR}/bin/Empty_RCIR.mdb DESTINATION bin)
install(DIRECTORY "${CMAKE_SOURCE_DIR}/Device Library" DESTINATION bin)
if(TARGET burstwright)
  install(FILES ${CMAKE_CURRENT_LIST_DIR}/burstwright.svg DESTINATION share/icons/hicolor/scalable/apps)
  # The entry names the program by its full path, known only once the prefix is.
  install(CODE "
    file(READ \"${CMAKE_CURRENT_LIST_DIR}/burstwright.desktop.in\" entry)
    string(REPLACE \"@BINDIR@\" \"\${CMAKE_INSTALL_PREFIX}/bin\" entry \"\${entry}\")
    set(dir \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/share/applications\")
    file(MAKE_DIRECTORY \"\${dir}\")
    file(WRITE \"\${dir}/burstwright.desktop\" \"\${entry}\")
    message(STATUS \"Installing: \${dir}/burstwright.desktop\")")
endif()
