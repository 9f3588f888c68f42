#include "ui/desktop/application_start_up.h"

#include "ui/desktop/main_window_desktop.h"
#include "ui/ui_kit/ui_kit.h"

#include <QCoreApplication>

namespace UI::Desktop {

void ApplicationStartUp::PrepareEnvironment()
{
    QCoreApplication::setAttribute(Qt::AA_DisableHighDpiScaling, true);
    if (qEnvironmentVariableIsEmpty("QT_FONT_DPI")) {
        qputenv("QT_FONT_DPI", DefaultFontDpi);
    }
    QCoreApplication::setAttribute(Qt::AA_DontCreateNativeWidgetSiblings, true);
}

void ApplicationStartUp::ConfigureApplication()
{
    QCoreApplication::setApplicationVersion(QString::fromLatin1(Version));
    // A folder beside the program for plugins shipped with it. libvlc 3 searches
    // this variable's folders in addition to its own plugin folder, so Debian's
    // plugins are still found when the folder does not exist.
    qputenv("VLC_PLUGIN_PATH",
            (QCoreApplication::applicationDirPath() + QStringLiteral("/plugins")).toLocal8Bit());
}

MainWindowDesktop* ApplicationStartUp::CreateMainWindow()
{
    UiKit::GetInstance();
    auto* window = new MainWindowDesktop(nullptr);
    window->setMinimumSize(MainWindowDesktop::MinimumWidth, MainWindowDesktop::MinimumHeight);
    window->show();
    // A shop that asked for it finds the program in the tray after a start, with
    // the music playing.
    window->MinimizeToTrayIfNeeded();
    return window;
}

} // namespace UI::Desktop
