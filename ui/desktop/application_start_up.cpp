#include "ui/desktop/application_start_up.h"

#include "core/settings.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/ui_kit/ui_kit.h"

#include <QCoreApplication>
#include <QQuickWindow>
#include <QSGRendererInterface>

#include <malloc.h>

namespace UI::Desktop {

void ApplicationStartUp::PrepareEnvironment()
{
    // A video's decoded pictures are buffers of a megabyte and more, made anew for
    // every clip and every photo. glibc would soon move its mmap threshold above
    // them and keep them in its arenas, one arena per decoding thread, where they
    // stay fragmented for good: a player showing the demo's clips and photos grew by
    // 70 MB in three minutes and went on growing. A fixed threshold hands big
    // buffers back to the system when a clip ends, and two arenas are plenty for a
    // player. Before any thread exists.
    mallopt(M_ARENA_MAX, 2);
    mallopt(M_MMAP_THRESHOLD, 256 * 1024);
    QCoreApplication::setAttribute(Qt::AA_DisableHighDpiScaling, true);
    if (qEnvironmentVariableIsEmpty("QT_FONT_DPI")) {
        qputenv("QT_FONT_DPI", DefaultFontDpi);
    }
    QCoreApplication::setAttribute(Qt::AA_DontCreateNativeWidgetSiblings, true);
    // The screens are drawn by Qt Quick's software renderer and the video goes out
    // through plain X11 (see VlcWrapper): nothing of the program needs OpenGL. A
    // shop's computer often has no proper GPU driver, where OpenGL means Mesa's
    // software rasteriser, whose LLVM alone is some 50 MB of every process that
    // merely asks whether GLX is there. A value set from outside still wins.
    if (qEnvironmentVariableIsEmpty("QT_XCB_GL_INTEGRATION")) {
        qputenv("QT_XCB_GL_INTEGRATION", "none");
    }
    if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND")) {
        QQuickWindow::setSceneGraphBackend(QSGRendererInterface::Software);
    }
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
    // A shop's computer keeps starting the player at login after the program was
    // moved or installed elsewhere: the entry names the program that runs now.
    Core::Settings::RefreshAutoRunEntry();
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
