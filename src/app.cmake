# daywyn_app: the Qt layer (every src/*/qt/ folder) and the daywyn-app executable;
# daywyn: the light command-line program (src/cli/bus/), which loads no Qt.
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui DBus Multimedia Qml Quick QuickControls2 Widgets)
include(GNUInstallDirs)

set(CMAKE_AUTOMOC ON)

file(GLOB DAYWYN_APP_SOURCES CONFIGURE_DEPENDS
    ${CMAKE_CURRENT_SOURCE_DIR}/*/qt/*.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/*/qt/*.h)
list(FILTER DAYWYN_APP_SOURCES EXCLUDE REGEX "/app/qt/main\\.cpp$")
# The app's side of org.daywyn.Daywyn and the proxy that calls it, made from the one
# interface description.
set(DAYWYN_BUS_XML ${CMAKE_CURRENT_SOURCE_DIR}/app/qt/org.daywyn.Daywyn.xml)
qt_add_dbus_adaptor(DAYWYN_APP_SOURCES ${DAYWYN_BUS_XML} app/qt/DaywynBusService.h
    daywyn::DaywynBusService daywyn_adaptor DaywynAdaptor)
qt_add_dbus_interface(DAYWYN_APP_SOURCES ${DAYWYN_BUS_XML} daywyn_interface)
add_library(daywyn_app STATIC ${DAYWYN_APP_SOURCES})
target_include_directories(daywyn_app PUBLIC ${CMAKE_CURRENT_BINARY_DIR})
target_link_libraries(daywyn_app PUBLIC daywyn_core
    Qt6::Core Qt6::Gui Qt6::DBus Qt6::Multimedia Qt6::Qml Qt6::Quick Qt6::QuickControls2 Qt6::Widgets)
target_compile_definitions(daywyn_app PUBLIC QT_NO_KEYWORDS)
# Voice capture's recogniser (see daywyn_speech in CMakeLists.txt).
target_link_libraries(daywyn_app PUBLIC daywyn_speech)
daywyn_warnings(daywyn_app)

# The global shortcut and focus hand-back talk to the X server over Qt's xcb connection.
find_package(PkgConfig REQUIRED)
pkg_check_modules(DAYWYN_XCB REQUIRED IMPORTED_TARGET xcb)
target_link_libraries(daywyn_app PUBLIC PkgConfig::DAYWYN_XCB)

# Update checks and downloads go over HTTPS with Qt Network; libcrypto hashes them.
find_package(Qt6 6.4 REQUIRED COMPONENTS Network)
find_package(OpenSSL 3 REQUIRED COMPONENTS Crypto)
target_link_libraries(daywyn_app PUBLIC Qt6::Network OpenSSL::Crypto)

add_executable(daywyn-app ${CMAKE_CURRENT_SOURCE_DIR}/app/qt/main.cpp)
target_link_libraries(daywyn-app PRIVATE daywyn_app)
daywyn_warnings(daywyn-app)
set_target_properties(daywyn-app PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
set(DAYWYN_APP_INSTALL_DIR ${CMAKE_INSTALL_LIBEXECDIR}/daywyn)
install(TARGETS daywyn-app RUNTIME DESTINATION ${DAYWYN_APP_INSTALL_DIR})

# The command line: the core, ICU and sd-bus for the session bus. With no verb it hands
# over to daywyn-app (beside it in the build tree, the relative path below once
# installed, whatever the prefix).
pkg_check_modules(DAYWYN_SDBUS REQUIRED IMPORTED_TARGET libsystemd)
file(GLOB DAYWYN_CLI_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/cli/bus/*.cpp)
add_executable(daywyn ${DAYWYN_CLI_SOURCES})
file(RELATIVE_PATH DAYWYN_APP_FROM_BINDIR /prefix/${CMAKE_INSTALL_BINDIR}
    /prefix/${DAYWYN_APP_INSTALL_DIR}/daywyn-app)
target_compile_definitions(daywyn PRIVATE DAYWYN_APP_FROM_BINDIR="${DAYWYN_APP_FROM_BINDIR}")
# sd-bus is loaded with dlopen by the verbs that need it: only its header is used here.
target_include_directories(daywyn SYSTEM PRIVATE ${DAYWYN_SDBUS_INCLUDE_DIRS})
target_link_libraries(daywyn PRIVATE daywyn_core daywyn_speech ${CMAKE_DL_LIBS})
# Only the libraries a verb uses are loaded.
target_link_options(daywyn PRIVATE -Wl,--as-needed)
daywyn_warnings(daywyn)
set_target_properties(daywyn PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
add_dependencies(daywyn daywyn-app)
install(TARGETS daywyn RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# The manual page and the shell completions, written by the program from its verb
# table.
set(DAYWYN_GENERATED ${PROJECT_BINARY_DIR}/generated)
add_custom_command(
    OUTPUT ${DAYWYN_GENERATED}/daywyn.1 ${DAYWYN_GENERATED}/daywyn.1.gz
        ${DAYWYN_GENERATED}/daywyn.bash
        ${DAYWYN_GENERATED}/_daywyn
    COMMAND ${CMAKE_COMMAND} -E make_directory ${DAYWYN_GENERATED}
    COMMAND daywyn --man > ${DAYWYN_GENERATED}/daywyn.1
    # Debian installs manual pages compressed, without a time stamp in the header.
    COMMAND gzip -9nf -k ${DAYWYN_GENERATED}/daywyn.1
    COMMAND daywyn --completion bash > ${DAYWYN_GENERATED}/daywyn.bash
    COMMAND daywyn --completion zsh > ${DAYWYN_GENERATED}/_daywyn
    DEPENDS daywyn
    COMMENT "Writing the manual page and the shell completions")
add_custom_target(daywyn_docs ALL DEPENDS ${DAYWYN_GENERATED}/daywyn.1 ${DAYWYN_GENERATED}/daywyn.1.gz
    ${DAYWYN_GENERATED}/daywyn.bash ${DAYWYN_GENERATED}/_daywyn)
install(FILES ${DAYWYN_GENERATED}/daywyn.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${DAYWYN_GENERATED}/daywyn.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME daywyn)
install(FILES ${DAYWYN_GENERATED}/_daywyn DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES ${DAYWYN_BUS_XML} DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/interfaces)

# The screens: the QML module Daywyn (every file in ui/qml, and the parts registered as
# singletons in app/qt/ScreenSingletons.h), compiled ahead of time by qmlcachegen into
# the app library. No plugin: the module is linked in, and found under qrc:/qt/qml.
file(GLOB DAYWYN_QML_FILES CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR}
    ${CMAKE_CURRENT_SOURCE_DIR}/ui/qml/*.qml)
foreach(qml IN LISTS DAYWYN_QML_FILES)
    get_filename_component(qml_name ${qml} NAME)
    set_source_files_properties(${qml} PROPERTIES QT_RESOURCE_ALIAS ${qml_name})
endforeach()
qt_add_qml_module(daywyn_app
    URI Daywyn
    VERSION 1.0
    RESOURCE_PREFIX /qt/qml
    OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/qml/Daywyn
    NO_PLUGIN
    QML_FILES ${DAYWYN_QML_FILES})
# The registrar names the singletons' header without its folder.
target_include_directories(daywyn_app PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/app/qt)
# The C++ qmlcachegen and the registrar write is Qt's, not ours: our warnings are not its.
get_target_property(DAYWYN_APP_ALL_SOURCES daywyn_app SOURCES)
list(FILTER DAYWYN_APP_ALL_SOURCES INCLUDE REGEX "qmlcache|qmltyperegistrations|qmlcache_loader")
set_source_files_properties(${DAYWYN_APP_ALL_SOURCES} PROPERTIES COMPILE_OPTIONS "-w")

# The pop-out chime, made by scripts/make-chime.py.
qt_add_resources(daywyn_app daywyn_sounds
    PREFIX /daywyn/sounds
    BASE ${CMAKE_CURRENT_SOURCE_DIR}/ui/sounds
    FILES ${CMAKE_CURRENT_SOURCE_DIR}/ui/sounds/chime.wav)

# A D-Bus call to org.daywyn.Daywyn starts the app when it is not running (the command
# line relies on it), and the desktop entry puts Daywyn in the application menu. Both
# name an installed program, so they are written at install time (the prefix may be
# chosen then).
foreach(template IN ITEMS org.daywyn.Daywyn.service daywyn.desktop)
    if(template MATCHES "service$")
        set(destination ${CMAKE_INSTALL_DATADIR}/dbus-1/services)
    else()
        set(destination ${CMAKE_INSTALL_DATADIR}/applications)
    endif()
    install(CODE "
        set(DAYWYN_INSTALLED_BINARY \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/daywyn\")
        set(DAYWYN_INSTALLED_APP \"\${CMAKE_INSTALL_PREFIX}/${DAYWYN_APP_INSTALL_DIR}/daywyn-app\")
        file(READ \"${CMAKE_CURRENT_SOURCE_DIR}/shell/install/${template}.in\" text)
        string(CONFIGURE \"\${text}\" text @ONLY)
        file(WRITE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${destination}/${template}\" \"\${text}\")
        message(STATUS \"Installing: \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${destination}/${template}\")
    ")
endforeach()

# System calendars: Evolution Data Server through libecal, and folders of .ics files
# through libical (both only in src/calendar/qt/).
pkg_check_modules(DAYWYN_CALENDARS REQUIRED IMPORTED_TARGET libecal-2.0 libical)
target_link_libraries(daywyn_app PUBLIC PkgConfig::DAYWYN_CALENDARS)
