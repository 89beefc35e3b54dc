# daywyn_app: the Qt layer (every src/*/qt/ folder) and the daywyn executable.
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui DBus Multimedia Qml Quick QuickControls2 Widgets)

set(CMAKE_AUTOMOC ON)

file(GLOB DAYWYN_APP_SOURCES CONFIGURE_DEPENDS
    ${CMAKE_CURRENT_SOURCE_DIR}/*/qt/*.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/*/qt/*.h)
add_library(daywyn_app STATIC ${DAYWYN_APP_SOURCES})
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

add_executable(daywyn ${CMAKE_CURRENT_SOURCE_DIR}/main.cpp)
target_link_libraries(daywyn PRIVATE daywyn_app)
daywyn_warnings(daywyn)
set_target_properties(daywyn PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
install(TARGETS daywyn RUNTIME DESTINATION bin)

# The screens' QML, compiled into the binary.
file(GLOB DAYWYN_QML_FILES CONFIGURE_DEPENDS
    ${CMAKE_CURRENT_SOURCE_DIR}/ui/qml/*.qml)
qt_add_resources(daywyn_app daywyn_qml
    PREFIX /daywyn
    BASE ${CMAKE_CURRENT_SOURCE_DIR}/ui/qml
    FILES ${DAYWYN_QML_FILES})
# The pop-out chime, made by scripts/make-chime.py.
qt_add_resources(daywyn_app daywyn_sounds
    PREFIX /daywyn/sounds
    BASE ${CMAKE_CURRENT_SOURCE_DIR}/ui/sounds
    FILES ${CMAKE_CURRENT_SOURCE_DIR}/ui/sounds/chime.wav)

# A D-Bus call to org.daywyn.Daywyn starts the app when it is not running (the command
# line relies on it), and the desktop entry puts Daywyn in the application menu. Both
# name the installed binary, so they are written at install time (the prefix may be
# chosen then).
include(GNUInstallDirs)
foreach(template IN ITEMS org.daywyn.Daywyn.service daywyn.desktop)
    if(template MATCHES "service$")
        set(destination ${CMAKE_INSTALL_DATADIR}/dbus-1/services)
    else()
        set(destination ${CMAKE_INSTALL_DATADIR}/applications)
    endif()
    install(CODE "
        set(DAYWYN_INSTALLED_BINARY \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/daywyn\")
        file(READ \"${CMAKE_CURRENT_SOURCE_DIR}/shell/install/${template}.in\" text)
        string(CONFIGURE \"\${text}\" text @ONLY)
        file(WRITE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${destination}/${template}\" \"\${text}\")
        message(STATUS \"Installing: \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${destination}/${template}\")
    ")
endforeach()
