#pragma once

namespace Core::Utilities {

// Keeps the screen saver and display power-off away while the player plays, so a
// shop's screen keeps showing video and photos. On Linux this is an idle inhibit
// held from the desktop session over D-Bus (org.freedesktop.ScreenSaver). The calls
// are asynchronous: the player's thread never waits for the session, and without a
// session bus or a screen saver service nothing happens beyond a console warning.
// Variants for other platforms (KeepAwakeMacOS, KeepAwakeWindows) come with builds
// for them.
class AwakeHelper
{
public:
    AwakeHelper() = delete;

    // Idempotent: the session holds at most one inhibit of ours however often this
    // is called with true, and false releases it.
    static void KeepAwake(bool keepAwake);

    static void KeepAwakeLinux(bool keepAwake);

    // True once the session has granted the inhibit and until it is released.
    static bool IsKeepingAwake();
};

} // namespace Core::Utilities
