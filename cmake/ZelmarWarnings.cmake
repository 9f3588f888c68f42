# Warnings are errors for our own code. Qt's headers are included as system
# headers by its imported targets, so -Wold-style-cast stays quiet about them.
add_library(zelmar_warnings INTERFACE)
target_compile_options(zelmar_warnings INTERFACE
    -Wall -Wextra -Werror
    -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
    $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>
    $<$<CXX_COMPILER_ID:Clang>:-Wshadow-uncaptured-local>)
# Keep the QString API honest: no silent conversions from char* or to ASCII.
target_compile_definitions(zelmar_warnings INTERFACE
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING
    QT_DEPRECATED_WARNINGS)
