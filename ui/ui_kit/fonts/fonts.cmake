# The five font files of the screens, copied from Debian's font packages at configure
# time: a bold display face (Roboto Bold), two weights of the body face (Open Sans
# Regular and Semibold) and two of a monospaced secondary face for times, codes and
# the log (JetBrains Mono Regular and Bold). All three cover Cyrillic.
#
# Sets ZELMAR_FONT_QRC_ENTRIES to the <file> lines of the generated resources.

set(_zelmar_fonts
    Roboto-Bold.ttf=/usr/share/fonts/truetype/roboto/unhinted/RobotoTTF/Roboto-Bold.ttf=fonts-roboto-unhinted
    OpenSans-Regular.ttf=/usr/share/fonts/truetype/open-sans/OpenSans-Regular.ttf=fonts-open-sans
    OpenSans-Semibold.ttf=/usr/share/fonts/truetype/open-sans/OpenSans-Semibold.ttf=fonts-open-sans
    JetBrainsMono-Regular.ttf=/usr/share/fonts/truetype/jetbrains-mono/JetBrainsMono-Regular.ttf=fonts-jetbrains-mono
    JetBrainsMono-Bold.ttf=/usr/share/fonts/truetype/jetbrains-mono/JetBrainsMono-Bold.ttf=fonts-jetbrains-mono)

set(ZELMAR_FONT_QRC_ENTRIES "")
foreach(_font IN LISTS _zelmar_fonts)
    string(REPLACE "=" ";" _parts "${_font}")
    list(GET _parts 0 _name)
    list(GET _parts 1 _source)
    list(GET _parts 2 _package)
    if(NOT EXISTS ${_source})
        message(FATAL_ERROR "Font ${_name} is missing (${_source}, package ${_package}): run scripts/install-deps")
    endif()
    configure_file(${_source} ${CMAKE_CURRENT_BINARY_DIR}/ui_kit/fonts/${_name} COPYONLY)
    string(APPEND ZELMAR_FONT_QRC_ENTRIES
           "        <file alias=\"ui_kit/fonts/${_name}\">${CMAKE_CURRENT_BINARY_DIR}/ui_kit/fonts/${_name}</file>\n")
endforeach()
