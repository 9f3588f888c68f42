#pragma once

#include <QString>

namespace Core::Utilities {

// Where every file the player writes lives: the database, the settings, the event
// log and the media cache. The executable's folder when it is a portable copy's
// (IsPortableFolder), else the user's XDG data folder. The
// environment variable overrides both, so that tests and several instances on one
// machine never share files.
class DataDirectory
{
public:
    DataDirectory() = delete;

    static constexpr const char* EnvironmentVariable = "ZELMAR_DATA_DIR";

    // Absolute path without a trailing slash. The folder is created when a location
    // is chosen; the choice is remembered until the override changes, because every
    // log line and every cached file asks for it. A relative override is resolved
    // against the working directory on each call.
    static QString Path();
    // Path() + "/" + name.
    static QString FilePath(const QString& name);
    // Whether a program in `folder` keeps its data beside itself: a portable copy
    // unpacked where its user can write. Never a folder of the system's programs
    // (under /usr, /bin, /sbin), even for root, who can write anywhere: a package
    // installs there, and what is there belongs to the package manager.
    static bool IsPortableFolder(const QString& folder);
};

} // namespace Core::Utilities
