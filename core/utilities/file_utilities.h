#pragma once

#include <string>

namespace Core::Utilities {

class FileUtilities
{
public:
    FileUtilities() = delete;

    // MD5 of the file's contents as 32 lower-case hexadecimal digits, compared with
    // the checksum the server gives for each media file. Empty when the path is not
    // a regular file or cannot be opened or read to its end: that never equals a
    // real checksum, so such a file counts as not downloaded. `path` is UTF-8.
    static std::string FileContentsMd5(const std::string& path);
};

} // namespace Core::Utilities
