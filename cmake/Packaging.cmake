# `make package`: a Debian package (daywyn_<version>_amd64.deb) built by CPack from what
# `cmake --install` puts in place, plus the files that make Daywyn a desktop citizen:
# the icon in every hicolor size, the AppStream metainfo, and Debian's copyright and
# changelog. `make package-check` validates the result (scripts/check-package.sh).
include(GNUInstallDirs)

set(DAYWYN_DATA_DIR ${PROJECT_SOURCE_DIR}/data)

# The icon: a hand-drawn SVG and PNGs rendered from it (scripts/render-icons.sh).
install(DIRECTORY ${DAYWYN_DATA_DIR}/icons/hicolor
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons
    FILES_MATCHING PATTERN "*.png" PATTERN "*.svg")
install(FILES ${DAYWYN_DATA_DIR}/metainfo/org.daywyn.Daywyn.metainfo.xml
    DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

# Debian wants both in the package's doc folder, the changelog compressed reproducibly
# (a native package, so changelog.gz).
set(DAYWYN_CHANGELOG_GZ ${PROJECT_BINARY_DIR}/packaging/changelog.gz)
add_custom_command(OUTPUT ${DAYWYN_CHANGELOG_GZ}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/packaging
    COMMAND sh -c "gzip -9n -c '${DAYWYN_DATA_DIR}/debian/changelog' > '${DAYWYN_CHANGELOG_GZ}'"
    DEPENDS ${DAYWYN_DATA_DIR}/debian/changelog
    VERBATIM)
add_custom_target(daywyn_changelog ALL DEPENDS ${DAYWYN_CHANGELOG_GZ})
install(FILES ${DAYWYN_DATA_DIR}/debian/copyright ${DAYWYN_CHANGELOG_GZ}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/daywyn)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME daywyn)
set(CPACK_PACKAGE_VENDOR "The Daywyn developers")
set(CPACK_PACKAGE_CONTACT "The Daywyn developers <packages@daywyn.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "local-first day planner at the edge of the screen")
set(CPACK_PACKAGE_DESCRIPTION
    "Daywyn lives at an edge of the screen as a small handle, and its drawer\n"
    "shows today's plan: priorities, today's tasks, carried-over and\n"
    "upcoming tasks, a work timer per task and today's calendar events.\n"
    "Tasks are added by typing, from any application through a global\n"
    "Quick Add shortcut. All data stays on the computer.")
string(REPLACE ";" "" CPACK_PACKAGE_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_RELEASE "")
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://daywyn.org/)
# Library dependencies come from dpkg-shlibdeps; the QML modules are loaded at run time,
# so they are named here.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "qml6-module-qtquick, qml6-module-qtquick-controls, qml6-module-qtquick-layouts, qml6-module-qtquick-window, qml6-module-qtquick-dialogs, qml6-module-qt-labs-platform, qml6-module-qtqml-workerscript, qml6-module-qtquick-templates, qml6-module-qtqml, qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
