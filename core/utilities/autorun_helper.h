#pragma once

#include <QString>
#include <QStringList>

#include <string>

namespace Core::Utilities {

// Starting the player when the shop's computer logs in, so that it plays without
// anyone touching it. Only the variant of the platform the program is built for
// exists: on Linux an XDG autostart entry. Other platforms get their variant
// (SetAutorunEnabledMacOS, SetAutorunEnabledWindows) when the program is built for
// them; until then the setting is only stored.
class AutorunHelper
{
public:
    AutorunHelper() = delete;

    // The entry's file name in the autostart folder.
    static constexpr const char* LinuxDesktopEntryFileName = "zelmar-player.desktop";

    // Starts the program at login with `argumentName` (the autorun flag, "-autorun")
    // on its command line, or stops doing so. False, with a console warning, when
    // the change could not be made; never throws.
    static bool SetAutorunEnabled(bool enabled, std::string argumentName);
    // At a start with the setting on: makes the entry start this program. An entry
    // that is missing or starts another command line (the program was moved, or a
    // package put it elsewhere) is written anew; one that already starts this
    // program is left as it is, with whatever the desktop's session settings
    // changed in it. False, with a console warning, when it could not be written.
    static bool RefreshAutorun(std::string argumentName);

    // Writes or removes "zelmar-player.desktop" in the user's autostart folder
    // ($XDG_CONFIG_HOME/autostart, else ~/.config/autostart). Enabling again
    // rewrites the entry for the current executable.
    static bool SetAutorunEnabledLinux(bool enabled, const std::string& argumentName);
    static bool RefreshAutorunLinux(const std::string& argumentName);
    // Where SetAutorunEnabledLinux puts the entry; empty when there is no
    // configuration folder.
    static QString LinuxAutostartEntryPath();
    // A command line as the value of a desktop entry's Exec key: arguments with
    // reserved characters quoted and escaped, "%" doubled, then the escapes of a
    // string value applied.
    static QString DesktopEntryExecValue(const QStringList& arguments);
};

} // namespace Core::Utilities
