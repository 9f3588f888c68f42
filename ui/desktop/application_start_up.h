#pragma once

namespace UI::Desktop {

class MainWindowDesktop;

// The steps of the program's start that main() takes in a fixed order, each on its
// own so that the tests can take them too.
class ApplicationStartUp
{
public:
    ApplicationStartUp() = delete;

    // Before the application object exists: high-DPI scaling off, "QT_FONT_DPI"
    // defaulted to "84" (a value from the user's environment is kept), no native
    // siblings for native child widgets.
    static void PrepareEnvironment();
    // After the application object exists: its version and the media library's
    // plugin folder, before the media backend starts libvlc.
    static void ConfigureApplication();
    // The start-at-login entry brought up to date when autorun is on, the theme,
    // since every screen binds to it, then the window at no less than its minimum
    // size, shown, or in the tray when the settings ask for that.
    static MainWindowDesktop* CreateMainWindow();

    static constexpr const char* Version = "3.13";
    static constexpr const char* DefaultFontDpi = "84";
};

} // namespace UI::Desktop
