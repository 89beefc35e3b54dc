# daywyn_app: the Qt layer (every src/*/qt/ folder) and the daywyn-app executable;
# daywyn: the light command-line program (src/cli/bus/), which loads no Qt.
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui DBus Multimedia Qml Quick QuickControls2 Widgets)
include(GNUInstallDirs)

set(CMAKE_AUTOMOC ON)

file(GLOB DAYWYN_APP_SOURCES CONFIGURE_DEPENDS
    ${CMAKE_CURRENT_SOURCE_DIR}/*/qt/*.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/*/qt/*.h)
list(FILTER DAYWYN_APP_SOURCES EXCLUDE REGEX "/app/qt/main\\.cpp$")
# The CalDAV client and the keyring are shared with daywyn-sync (below), which loads
# QtCore, QtNetwork and libsecret only; the app's sync controller is the app's.
list(FILTER DAYWYN_APP_SOURCES EXCLUDE REGEX
    "/sync/qt/(CalDav|SyncAccountAccess)|/calendar/qt/SecretServiceStore\\.")
find_package(PkgConfig REQUIRED)
pkg_check_modules(DAYWYN_SECRET REQUIRED IMPORTED_TARGET libsecret-1)
file(GLOB DAYWYN_SYNC_NET_SOURCES CONFIGURE_DEPENDS
    ${CMAKE_CURRENT_SOURCE_DIR}/sync/qt/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/sync/qt/*.h
    ${CMAKE_CURRENT_SOURCE_DIR}/calendar/qt/SecretServiceStore.cpp)
list(FILTER DAYWYN_SYNC_NET_SOURCES EXCLUDE REGEX "/sync/qt/SyncController\\.")
find_package(Qt6 6.4 REQUIRED COMPONENTS Network)
add_library(daywyn_sync_net STATIC ${DAYWYN_SYNC_NET_SOURCES})
target_link_libraries(daywyn_sync_net PUBLIC daywyn_core Qt6::Core Qt6::Network
    PkgConfig::DAYWYN_SECRET)
target_compile_definitions(daywyn_sync_net PUBLIC QT_NO_KEYWORDS)
daywyn_warnings(daywyn_sync_net)
# The app's side of org.daywyn.Daywyn and the proxy that calls it, made from the one
# interface description.
set(DAYWYN_BUS_XML ${CMAKE_CURRENT_SOURCE_DIR}/app/qt/org.daywyn.Daywyn.xml)
qt_add_dbus_adaptor(DAYWYN_APP_SOURCES ${DAYWYN_BUS_XML} app/qt/DaywynBusService.h
    daywyn::DaywynBusService daywyn_adaptor DaywynAdaptor)
qt_add_dbus_interface(DAYWYN_APP_SOURCES ${DAYWYN_BUS_XML} daywyn_interface)
add_library(daywyn_app STATIC ${DAYWYN_APP_SOURCES})
target_include_directories(daywyn_app PUBLIC ${CMAKE_CURRENT_BINARY_DIR})
target_link_libraries(daywyn_app PUBLIC daywyn_core daywyn_sync_net daywyn_sync_ical
    Qt6::Core Qt6::Gui Qt6::DBus Qt6::Multimedia Qt6::Qml Qt6::Quick Qt6::QuickControls2 Qt6::Widgets)
target_compile_definitions(daywyn_app PUBLIC QT_NO_KEYWORDS)
# Voice capture's recogniser: where the model is, linked; the decoder (pocketsphinx, with
# BLAS, LAPACK and Fortran's runtime) in daywyn-speech.so, beside daywyn-app, loaded when
# voice capture first needs it.
target_link_libraries(daywyn_app PUBLIC daywyn_speech_model)
daywyn_warnings(daywyn_app)

# The global shortcut and focus hand-back talk to the X server over Qt's xcb connection.
find_package(PkgConfig REQUIRED)
pkg_check_modules(DAYWYN_XCB REQUIRED IMPORTED_TARGET xcb)
target_link_libraries(daywyn_app PUBLIC PkgConfig::DAYWYN_XCB)

# Update checks and downloads go over HTTPS with Qt Network; the core's Nettle hashes them.
find_package(Qt6 6.4 REQUIRED COMPONENTS Network)
target_link_libraries(daywyn_app PUBLIC Qt6::Network)

add_executable(daywyn-app ${CMAKE_CURRENT_SOURCE_DIR}/app/qt/main.cpp)
target_link_libraries(daywyn-app PRIVATE daywyn_app)
daywyn_warnings(daywyn-app)
set_target_properties(daywyn-app PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
set(DAYWYN_APP_INSTALL_DIR ${CMAKE_INSTALL_LIBEXECDIR}/daywyn)
install(TARGETS daywyn-app RUNTIME DESTINATION ${DAYWYN_APP_INSTALL_DIR})

# The command line: the core, ICU and sd-bus for the session bus. `transcribe` is handed
# to daywyn-transcribe and `sync` to daywyn-sync (beside it in the build tree, in the
# libexec folder once installed, whatever the prefix).
pkg_check_modules(DAYWYN_SDBUS REQUIRED IMPORTED_TARGET libsystemd)
# daywyn_command_line is the command line without a clock: daywyn-command-line.so hands
# it the wall clock, the tests' daywyn-at a fixed one.
file(GLOB DAYWYN_CLI_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/cli/bus/*.cpp)
add_library(daywyn_command_line STATIC ${DAYWYN_CLI_SOURCES})
file(RELATIVE_PATH DAYWYN_LIBEXEC_FROM_BINDIR /prefix/${CMAKE_INSTALL_BINDIR}
    /prefix/${DAYWYN_APP_INSTALL_DIR})
target_compile_definitions(daywyn_command_line PRIVATE
    DAYWYN_LIBEXEC_FROM_BINDIR="${DAYWYN_LIBEXEC_FROM_BINDIR}")
# sd-bus is loaded with dlopen by the verbs that need it: only its header is used here.
target_include_directories(daywyn_command_line SYSTEM PRIVATE ${DAYWYN_SDBUS_INCLUDE_DIRS})
target_link_libraries(daywyn_command_line PUBLIC daywyn_core ${CMAKE_DL_LIBS})
set_target_properties(daywyn_command_line PROPERTIES AUTOMOC OFF POSITION_INDEPENDENT_CODE ON)
daywyn_warnings(daywyn_command_line)

# daywyn: a C program that needs the C library only. It answers --version itself, becomes
# daywyn-app when there is no verb, and otherwise loads daywyn-command-line.so (beside
# daywyn-app) and hands it the verb line: no C++ runtime, ICU or simdjson is loaded or
# relocated before it knows that a verb needs them.
add_executable(daywyn ${CMAKE_CURRENT_SOURCE_DIR}/cli/launcher/main.c)
target_compile_definitions(daywyn PRIVATE
    DAYWYN_LIBEXEC_FROM_BINDIR="${DAYWYN_LIBEXEC_FROM_BINDIR}"
    DAYWYN_VERSION_LINE="${DAYWYN_VERSION_LINE}")
target_link_libraries(daywyn PRIVATE ${CMAKE_DL_LIBS})
target_link_options(daywyn PRIVATE -Wl,--as-needed -Wl,-O1)
daywyn_warnings(daywyn)
set_target_properties(daywyn PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR} AUTOMOC OFF)
add_dependencies(daywyn daywyn-app daywyn-transcribe daywyn-command-line)
install(TARGETS daywyn RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# The command line's module. A verb is a short process, so its start-up is most of its
# cost: ICU is linked in statically (Debian's shared ICU binds 2,000 symbols and 12,800
# relocations at every start), the shared ICU named by daywyn_core is then dropped by
# --as-needed, nothing but the one entry is exported, so that calls inside bind at link
# time, and the relative relocations (ICU's tables of pointers) are packed, which the
# loader applies far faster than one entry each. The C++ library stays shared: simdjson
# (Debian ships it shared only) and the calendar module bring it anyway, and one process
# must hold one C++ runtime.
# Debian's static ICU is built for programs: one object (putil) reads the C library's
# `timezone` and `tzname` directly, which a shared object cannot. A copy of the archive
# has those names, and tzset() that fills them, pointed at the module's mirror of them
# (CommandLineModule.cpp).
find_library(DAYWYN_ICUI18N_STATIC libicui18n.a REQUIRED)
find_library(DAYWYN_ICUUC_STATIC libicuuc.a REQUIRED)
find_library(DAYWYN_ICUDATA_STATIC libicudata.a REQUIRED)
set(DAYWYN_ICUUC_MODULE ${CMAKE_CURRENT_BINARY_DIR}/libicuuc-module.a)
add_custom_command(OUTPUT ${DAYWYN_ICUUC_MODULE}
    COMMAND ${CMAKE_OBJCOPY} --redefine-sym __timezone=daywynIcuTimezone
        --redefine-sym tzname=daywynIcuTzname --redefine-sym tzset=daywynIcuTzset
        ${DAYWYN_ICUUC_STATIC} ${DAYWYN_ICUUC_MODULE}
    DEPENDS ${DAYWYN_ICUUC_STATIC}
    COMMENT "Pointing ICU's reads of the C library's time zone at the module's mirror")
add_custom_target(daywyn_icuuc_module DEPENDS ${DAYWYN_ICUUC_MODULE})
add_library(daywyn-command-line MODULE ${CMAKE_CURRENT_SOURCE_DIR}/cli/module/CommandLineModule.cpp)
add_dependencies(daywyn-command-line daywyn_icuuc_module)
set_target_properties(daywyn-command-line PROPERTIES PREFIX "" CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR} AUTOMOC OFF)
target_link_libraries(daywyn-command-line PRIVATE daywyn_command_line daywyn_core
    ${DAYWYN_ICUI18N_STATIC} ${DAYWYN_ICUUC_MODULE} ${DAYWYN_ICUDATA_STATIC} ${CMAKE_DL_LIBS})
target_link_options(daywyn-command-line PRIVATE -Wl,--exclude-libs,ALL -Wl,-z,defs
    -Wl,-Bsymbolic -Wl,--as-needed -Wl,-O1 -Wl,--gc-sections -Wl,-z,pack-relative-relocs)
daywyn_warnings(daywyn-command-line)
install(TARGETS daywyn-command-line LIBRARY DESTINATION ${DAYWYN_APP_INSTALL_DIR})

# The recogniser for `daywyn transcribe`, in a program of its own: pocketsphinx with
# BLAS, LAPACK and Fortran's runtime is loaded only when audio is decoded.
add_executable(daywyn-transcribe ${CMAKE_CURRENT_SOURCE_DIR}/cli/transcribe/main.cpp)
target_link_libraries(daywyn-transcribe PRIVATE daywyn_speech)
daywyn_warnings(daywyn-transcribe)
set_target_properties(daywyn-transcribe PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}
    AUTOMOC OFF)
install(TARGETS daywyn-transcribe RUNTIME DESTINATION ${DAYWYN_APP_INSTALL_DIR})

# `daywyn sync` in a program of its own: QtCore, QtNetwork, libsecret and libical are
# loaded only when tasks sync with a CalDAV server.
add_executable(daywyn-sync ${CMAKE_CURRENT_SOURCE_DIR}/cli/sync/main.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/cli/sync/SyncCommand.cpp)
target_link_libraries(daywyn-sync PRIVATE daywyn_sync_net daywyn_sync_ical)
daywyn_warnings(daywyn-sync)
set_target_properties(daywyn-sync PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}
    AUTOMOC OFF)
install(TARGETS daywyn-sync RUNTIME DESTINATION ${DAYWYN_APP_INSTALL_DIR})
add_dependencies(daywyn daywyn-sync)

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
    DEPENDS daywyn daywyn-command-line
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
    # Colours and fonts in the parts' properties are QtQuick's value types.
    DEPENDENCIES QtQuick
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
# through libical (src/calendar/system/, wrapped for Qt in src/calendar/qt/).
target_link_libraries(daywyn_app PUBLIC daywyn_system_calendars PkgConfig::DAYWYN_ICS)

# The system calendars as a module: the command line loads it for `today` and
# `calendars` only, the app when it first reads Evolution's calendars; libecal alone costs
# a process start about 0.1 s. Beside daywyn-app, in the build tree and once installed.
add_library(daywyn-calendars MODULE ${CMAKE_CURRENT_SOURCE_DIR}/cli/calendars/SystemCalendarsModule.cpp)
set_target_properties(daywyn-calendars PROPERTIES PREFIX "" CXX_VISIBILITY_PRESET hidden
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
target_link_libraries(daywyn-calendars PRIVATE daywyn_system_calendars daywyn_eds_calendars)
# The speech decoder as a module (see daywyn_speech_model above).
add_library(daywyn-speech MODULE ${CMAKE_CURRENT_SOURCE_DIR}/voice/module/SpeechDecoderModule.cpp)
set_target_properties(daywyn-speech PROPERTIES PREFIX "" CXX_VISIBILITY_PRESET hidden
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
target_link_libraries(daywyn-speech PRIVATE daywyn_speech)
target_link_options(daywyn-speech PRIVATE -Wl,--exclude-libs,ALL -Wl,-z,defs)
daywyn_warnings(daywyn-speech)
install(TARGETS daywyn-speech LIBRARY DESTINATION ${DAYWYN_APP_INSTALL_DIR})
add_dependencies(daywyn-app daywyn-calendars daywyn-speech)
target_link_options(daywyn-calendars PRIVATE -Wl,--exclude-libs,ALL -Wl,-z,defs)
daywyn_warnings(daywyn-calendars)
add_dependencies(daywyn daywyn-calendars)
install(TARGETS daywyn-calendars LIBRARY DESTINATION ${DAYWYN_APP_INSTALL_DIR})

# Google accounts are kept in the desktop's Secret Service (libsecret, found above).
target_link_libraries(daywyn_app PUBLIC PkgConfig::DAYWYN_SECRET)
# A build may carry its Google desktop registration file from outside the source tree.
set(DAYWYN_GOOGLE_REGISTRATION "" CACHE FILEPATH
    "Google desktop client registration (JSON) used when the user's config folder has none")
target_compile_definitions(daywyn_app PRIVATE
    DAYWYN_GOOGLE_REGISTRATION="${DAYWYN_GOOGLE_REGISTRATION}")
