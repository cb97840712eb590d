# Where `cmake --install` puts Ringwell, relative to the prefix unless given
# as absolute paths:
#   bin/ringwell, libexec/ringwell/ (ringwell-daemon, ringwell-rules), share/ringwell/ (tones,
#   web app), the desktop entry and its icon, bash and zsh completions, the
#   manual page and the systemd user units.
# The programs find their data relative to themselves, so any prefix (and a
# DESTDIR copy) works. `make install` installs for the current user,
# `make deb` packages for /usr with CPack.
include(GNUInstallDirs)

set(RINGWELL_SYSTEMD_USER_UNIT_DIR "lib/systemd/user" CACHE STRING
    "Where the systemd user units go (relative to the prefix, or absolute)")
# Debian's zsh looks in <prefix>/share/zsh/vendor-completions.
set(RINGWELL_ZSH_COMPLETION_DIR "share/zsh/vendor-completions" CACHE STRING
    "Where the zsh completion goes (relative to the prefix, or absolute)")

set(ringwell_packaging ${PROJECT_SOURCE_DIR}/packaging)
set(ringwell_man_page ${CMAKE_BINARY_DIR}/share/man/man1/ringwell.1)

# The manual page is the command line's own help, written at build time.
add_custom_command(
    OUTPUT ${ringwell_man_page}
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:ringwell> -DOUTPUT=${ringwell_man_page}
            -P ${PROJECT_SOURCE_DIR}/cmake/WriteManPage.cmake
    DEPENDS ringwell ${PROJECT_SOURCE_DIR}/cmake/WriteManPage.cmake
    COMMENT "Writing the manual page ringwell(1)"
    VERBATIM)
add_custom_target(ringwell-man ALL DEPENDS ${ringwell_man_page})

install(TARGETS ringwell RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS ringwell-daemon ringwell-rules RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/ringwell)
install(DIRECTORY ${CMAKE_BINARY_DIR}/share/ringwell/ DESTINATION ${CMAKE_INSTALL_DATADIR}/ringwell)
install(FILES ${ringwell_packaging}/ringwell.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${ringwell_packaging}/ringwell.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${ringwell_packaging}/ringwell.bash
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ringwell)
install(FILES ${ringwell_packaging}/_ringwell DESTINATION ${RINGWELL_ZSH_COMPLETION_DIR})
install(FILES ${ringwell_man_page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The service names the daemon by its installed path, which is known only
# when installing (`cmake --install --prefix` may choose another prefix).
install(CODE "
    set(RINGWELL_INSTALLED_DAEMON
        \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBEXECDIR}/ringwell/ringwell-daemon\")
    configure_file(\"${ringwell_packaging}/ringwell.service.in\"
                   \"${CMAKE_BINARY_DIR}/packaging/ringwell.service\" @ONLY)
")
install(FILES ${CMAKE_BINARY_DIR}/packaging/ringwell.service ${ringwell_packaging}/ringwell.socket
        DESTINATION ${RINGWELL_SYSTEMD_USER_UNIT_DIR})

# `make deb`: a Debian package for /usr, its library dependencies found by
# dpkg-shlibdeps.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ringwell)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Ringwell maintainers <ringwell@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "Turns the notifications you must not miss into alarms that ring through silence")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "xdg-utils, pulseaudio | pipewire-pulse, dbus-user-session")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
include(CPack)
