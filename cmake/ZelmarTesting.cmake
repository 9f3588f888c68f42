# Every Qt Test executable is registered through zelmar_add_test, which links it
# against core and the test support library and gives it its environment:
#
#   zelmar_add_test(<name> SOURCES <files...> [NEEDS media|sound|display|two-screens|service|session-bus ...]
#                   [LIBRARIES <targets...>] [TIMEOUT <seconds>] [ARGS <arguments...>])
#   zelmar_add_test(<name> EXECUTABLE <test> [NEEDS ...] [TIMEOUT <seconds>] [ARGS <arguments...>])
#
# ARGS are put on the test's command line. EXECUTABLE runs a test program made by an
# earlier call once more under another name, typically with other ARGS; the run gets
# its own data folders and sound lane like any other test.
#
# NEEDS pulls in the CTest fixtures below: generated media files, the private
# PulseAudio server with its two null sinks, and the Xvfb display. Tests without
# "display" run on the offscreen platform. "service" builds the reference service
# first and tells the test where it is (ZELMAR_REFERENCE_SERVICE), for
# Tests::ReferenceService to start. "session-bus" gives the test a private D-Bus
# session bus (DBUS_SESSION_BUS_ADDRESS) shared by the tests of this build folder.

set(ZELMAR_TEST_STATE_DIR ${PROJECT_BINARY_DIR}/test-state)
set(ZELMAR_TEST_MEDIA_DIR ${ZELMAR_TEST_STATE_DIR}/media)
set(ZELMAR_TEST_SOUND_DIR ${ZELMAR_TEST_STATE_DIR}/sound)
set(ZELMAR_TEST_DISPLAY_DIR ${ZELMAR_TEST_STATE_DIR}/display)
set(ZELMAR_TEST_SESSION_BUS_DIR ${ZELMAR_TEST_STATE_DIR}/session-bus)

# The display number is derived from the build folder, so two build trees on one
# machine do not fight over it; it can be set by hand when it is taken.
string(MD5 _zelmar_build_hash "${PROJECT_BINARY_DIR}")
string(SUBSTRING "${_zelmar_build_hash}" 0 4 _zelmar_build_hash)
math(EXPR _zelmar_display "0x${_zelmar_build_hash} % 800 + 100")
set(ZELMAR_TEST_DISPLAY ${_zelmar_display} CACHE STRING "Xvfb display number used by the tests")

set(_zelmar_fixtures ${PROJECT_SOURCE_DIR}/tests/fixtures)

add_test(NAME fixture.media.make
         COMMAND ${_zelmar_fixtures}/make-test-media ${ZELMAR_TEST_MEDIA_DIR})
set_tests_properties(fixture.media.make PROPERTIES FIXTURES_SETUP zelmar_media TIMEOUT 120)

add_test(NAME fixture.sound.start
         COMMAND ${_zelmar_fixtures}/sound-server start ${ZELMAR_TEST_SOUND_DIR})
add_test(NAME fixture.sound.stop
         COMMAND ${_zelmar_fixtures}/sound-server stop ${ZELMAR_TEST_SOUND_DIR})
set_tests_properties(fixture.sound.start PROPERTIES FIXTURES_SETUP zelmar_sound TIMEOUT 30)
set_tests_properties(fixture.sound.stop PROPERTIES FIXTURES_CLEANUP zelmar_sound TIMEOUT 30)

add_test(NAME fixture.display.start
         COMMAND ${_zelmar_fixtures}/virtual-display start ${ZELMAR_TEST_DISPLAY_DIR} ${ZELMAR_TEST_DISPLAY})
add_test(NAME fixture.display.stop
         COMMAND ${_zelmar_fixtures}/virtual-display stop ${ZELMAR_TEST_DISPLAY_DIR})
set_tests_properties(fixture.display.start PROPERTIES FIXTURES_SETUP zelmar_display TIMEOUT 30)
set_tests_properties(fixture.display.stop PROPERTIES FIXTURES_CLEANUP zelmar_display TIMEOUT 30)

# The session bus listens on an abstract socket named after the build folder, like
# the display's number: no socket path to outgrow its 108 characters in a deep
# checkout, and two build trees on one machine keep to their own bus.
set(ZELMAR_TEST_SESSION_BUS_ADDRESS "unix:abstract=zelmar-test-bus-${_zelmar_build_hash}")
add_test(NAME fixture.session_bus.start
         COMMAND ${_zelmar_fixtures}/session-bus start ${ZELMAR_TEST_SESSION_BUS_DIR} ${ZELMAR_TEST_SESSION_BUS_ADDRESS})
add_test(NAME fixture.session_bus.stop
         COMMAND ${_zelmar_fixtures}/session-bus stop ${ZELMAR_TEST_SESSION_BUS_DIR})
set_tests_properties(fixture.session_bus.start PROPERTIES FIXTURES_SETUP zelmar_session_bus TIMEOUT 30)
set_tests_properties(fixture.session_bus.stop PROPERTIES FIXTURES_CLEANUP zelmar_session_bus TIMEOUT 30)

# A second virtual display with two monitors, on the next display number.
math(EXPR ZELMAR_TEST_TWO_SCREENS_DISPLAY "${ZELMAR_TEST_DISPLAY} + 1")
set(ZELMAR_TEST_TWO_SCREENS_DIR ${ZELMAR_TEST_STATE_DIR}/two-screens)
add_test(NAME fixture.two_screens.start
         COMMAND ${_zelmar_fixtures}/virtual-display start ${ZELMAR_TEST_TWO_SCREENS_DIR}
                 ${ZELMAR_TEST_TWO_SCREENS_DISPLAY} two-screens)
add_test(NAME fixture.two_screens.stop
         COMMAND ${_zelmar_fixtures}/virtual-display stop ${ZELMAR_TEST_TWO_SCREENS_DIR})
set_tests_properties(fixture.two_screens.start PROPERTIES FIXTURES_SETUP zelmar_two_screens TIMEOUT 30)
set_tests_properties(fixture.two_screens.stop PROPERTIES FIXTURES_CLEANUP zelmar_two_screens TIMEOUT 30)

# The Qt and standard headers nearly every test includes, compiled once and reused
# by every test executable: most of a test's build time is otherwise spent parsing
# them again. The tests include <QtTest>, the whole module with all of QtCore.
# Test code itself is built without optimisation in every build type; what the
# optimised build is there to exercise is core, which keeps its flags.
# The header and the tests must agree on the flags for the header to be used.
add_library(zelmar_test_pch OBJECT ${PROJECT_SOURCE_DIR}/cmake/zelmar_test_pch.cpp)
target_link_libraries(zelmar_test_pch PRIVATE core zelmar_test_support Qt5::Test zelmar_warnings)
target_compile_options(zelmar_test_pch PRIVATE -O0)
target_precompile_headers(zelmar_test_pch PRIVATE
    <QtTest>
    <algorithm> <functional> <map> <memory> <string> <vector>)

function(zelmar_add_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT;EXECUTABLE" "SOURCES;NEEDS;LIBRARIES;ARGS" ${ARGN})
    if(NOT ARG_SOURCES AND NOT ARG_EXECUTABLE)
        message(FATAL_ERROR "zelmar_add_test(${name}): SOURCES or EXECUTABLE is required")
    endif()
    if(ARG_SOURCES AND ARG_EXECUTABLE)
        message(FATAL_ERROR "zelmar_add_test(${name}): SOURCES and EXECUTABLE exclude each other")
    endif()
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()

    if(ARG_EXECUTABLE)
        set(target ${ARG_EXECUTABLE})
    else()
        set(target ${name})
        add_executable(${name} ${ARG_SOURCES})
        target_link_libraries(${name} PRIVATE core zelmar_test_support Qt5::Test zelmar_warnings ${ARG_LIBRARIES})
        target_precompile_headers(${name} REUSE_FROM zelmar_test_pch)
        # A test's moc output is included by its own source, which leaves the generated
        # compilation unit empty; with the header it still cost seconds to load.
        set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/${name}_autogen/mocs_compilation.cpp
                                    PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
        target_compile_options(${name} PRIVATE -O0)
    endif()
    add_test(NAME ${name} COMMAND ${target} ${ARG_ARGS})

    # Anything a test writes without choosing a folder itself lands in a folder of
    # its own, never in the build tree or the user's home.
    set(env
        "ZELMAR_DATA_DIR=${ZELMAR_TEST_STATE_DIR}/data/${name}"
        "ZELMAR_TEST_SOURCE_DIR=${PROJECT_SOURCE_DIR}"
        "XDG_DATA_HOME=${ZELMAR_TEST_STATE_DIR}/xdg/${name}/data"
        "XDG_CONFIG_HOME=${ZELMAR_TEST_STATE_DIR}/xdg/${name}/config"
        "XDG_CACHE_HOME=${ZELMAR_TEST_STATE_DIR}/xdg/${name}/cache"
        # Screens draw with Qt Quick's software renderer, as on kiosk boxes without
        # a GPU; QQuickWidget on the offscreen platform aborts without it.
        "QT_QUICK_BACKEND=software")
    set(fixtures "")
    set(platform offscreen)
    foreach(need IN LISTS ARG_NEEDS)
        if(need STREQUAL "media")
            list(APPEND fixtures zelmar_media)
            list(APPEND env "ZELMAR_TEST_MEDIA_DIR=${ZELMAR_TEST_MEDIA_DIR}")
        elseif(need STREQUAL "sound")
            list(APPEND fixtures zelmar_sound)
            # Sound tests take turns on two lanes, each a pair of sinks of its own,
            # so two of them play at once without hearing each other.
            get_property(lane GLOBAL PROPERTY ZELMAR_NEXT_SOUND_LANE)
            if(NOT lane)
                set(lane 0)
            endif()
            math(EXPR next_lane "(${lane} + 1) % 2")
            set_property(GLOBAL PROPERTY ZELMAR_NEXT_SOUND_LANE ${next_lane})
            if(lane EQUAL 0)
                set(sink_prefix zelmar_sink)
            else()
                set(sink_prefix zelmar_lane${lane}_sink)
            endif()
            list(APPEND env "PULSE_SERVER=unix:${ZELMAR_TEST_SOUND_DIR}/native"
                            "PULSE_SINK=${sink_prefix}_a"
                            "ZELMAR_TEST_SINK_A=${sink_prefix}_a" "ZELMAR_TEST_SINK_B=${sink_prefix}_b")
        elseif(need STREQUAL "session-bus")
            list(APPEND fixtures zelmar_session_bus)
            list(APPEND env "DBUS_SESSION_BUS_ADDRESS=${ZELMAR_TEST_SESSION_BUS_ADDRESS}")
        elseif(need STREQUAL "service")
            add_dependencies(${target} zelmar-reference-service)
            list(APPEND env "ZELMAR_REFERENCE_SERVICE=$<TARGET_FILE:zelmar-reference-service>")
        elseif(need STREQUAL "display" OR need STREQUAL "two-screens")
            if(need STREQUAL "display")
                list(APPEND fixtures zelmar_display)
                set(display ${ZELMAR_TEST_DISPLAY})
            else()
                list(APPEND fixtures zelmar_two_screens)
                set(display ${ZELMAR_TEST_TWO_SCREENS_DISPLAY})
            endif()
            set(platform xcb)
            # Windows on the virtual display are drawn without OpenGL, by Qt and by
            # libvlc alike. Qt's GLX integration and libvlc's GL video output would
            # load Mesa's software driver, which leaves allocations behind (in it
            # and in libplacebo) in a module unloaded before LeakSanitizer reports,
            # so no suppression can name them. What the tests check (native windows,
            # video in them, libvlc's plain X11 output) does not depend on GL.
            list(APPEND env "DISPLAY=:${display}" "QT_XCB_GL_INTEGRATION=none"
                            "LIBGL_DRIVERS_PATH=/nonexistent")
        else()
            message(FATAL_ERROR "zelmar_add_test(${name}): unknown NEEDS '${need}'")
        endif()
    endforeach()
    # The program offers its media controls on the session bus; a test that does
    # not ask for the tests' own bus gets none, so that nothing reaches the session
    # of whoever runs the suite and no bus is started for it behind the scenes.
    if(NOT "session-bus" IN_LIST ARG_NEEDS)
        list(APPEND env "DBUS_SESSION_BUS_ADDRESS=unix:path=${ZELMAR_TEST_SESSION_BUS_DIR}/none")
    endif()
    list(APPEND env "QT_QPA_PLATFORM=${platform}")

    set_tests_properties(${name} PROPERTIES
        ENVIRONMENT "${env}"
        FIXTURES_REQUIRED "${fixtures}"
        TIMEOUT ${ARG_TIMEOUT})
    # Tests that listen to the same sinks would hear each other: one at a time
    # on each lane. On the session bus only one process at a time can hold the
    # player's name.
    set(locks "")
    if("sound" IN_LIST ARG_NEEDS)
        list(APPEND locks zelmar_sound_lane_${lane})
    endif()
    if("session-bus" IN_LIST ARG_NEEDS)
        list(APPEND locks zelmar_session_bus_name)
    endif()
    if(locks)
        set_tests_properties(${name} PROPERTIES RESOURCE_LOCK "${locks}")
    endif()
endfunction()
