# The audio logo (":/sounds/zelmar_audiologo.mp3") is made from a formula at build
# time and compiled into the core, so the repository holds no binary sound file.
# Included by the media backend's CMakeLists (core/vendor), which adds it to `core`.
set(_zelmar_sounds_dir ${CMAKE_CURRENT_BINARY_DIR}/sounds)
set(ZELMAR_AUDIO_LOGO ${_zelmar_sounds_dir}/zelmar_audiologo.mp3)
set(_zelmar_sounds_qrc ${_zelmar_sounds_dir}/zelmar_sounds.qrc)
set(_zelmar_sounds_cpp ${_zelmar_sounds_dir}/qrc_zelmar_sounds.cpp)
set(_zelmar_audio_logo_script ${PROJECT_SOURCE_DIR}/ui/ui_kit/sounds/make-audio-logo)

configure_file(${PROJECT_SOURCE_DIR}/ui/ui_kit/sounds/zelmar_sounds.qrc.in ${_zelmar_sounds_qrc} @ONLY)

add_custom_command(OUTPUT ${ZELMAR_AUDIO_LOGO}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${_zelmar_sounds_dir}
    COMMAND ${_zelmar_audio_logo_script} ${ZELMAR_AUDIO_LOGO}
    DEPENDS ${_zelmar_audio_logo_script}
    COMMENT "Making the audio logo"
    VERBATIM)
add_custom_command(OUTPUT ${_zelmar_sounds_cpp}
    COMMAND Qt5::rcc --name zelmar_sounds --output ${_zelmar_sounds_cpp} ${_zelmar_sounds_qrc}
    DEPENDS ${_zelmar_sounds_qrc} ${ZELMAR_AUDIO_LOGO}
    COMMENT "Compiling the sound resources"
    VERBATIM)
add_custom_target(zelmar_sounds DEPENDS ${_zelmar_sounds_cpp})
add_dependencies(core zelmar_sounds)

set_source_files_properties(${_zelmar_sounds_cpp} DIRECTORY ${PROJECT_SOURCE_DIR}/core
    PROPERTIES GENERATED ON SKIP_AUTOGEN ON)
target_sources(core PRIVATE ${_zelmar_sounds_cpp})
