// The program's start: the environment it prepares for Qt and libvlc, its version,
// the window's minimum size, the tray, and closing. The environment steps run in a
// process of their own, as they do when the program starts.

#include "core/settings.h"
#include "core/vendor/vlc_status.h"
#include "core/vendor/vlc_wrapper.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/main_window_desktop.h"

#include <QAction>
#include <QApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtTest>

#include <cstring>
#include <memory>

namespace {

const char* const ChildArgument = "--start-up-child";

// main()'s first steps, then what they left behind, as JSON on standard output.
int RunChild(int argc, char* argv[])
{
    UI::Desktop::ApplicationStartUp::PrepareEnvironment();
    QApplication application(argc, argv);
    UI::Desktop::ApplicationStartUp::ConfigureApplication();

    QJsonObject report;
    report.insert(QStringLiteral("fontDpi"), QString::fromLocal8Bit(qgetenv("QT_FONT_DPI")));
    report.insert(QStringLiteral("vlcPluginPath"), QString::fromLocal8Bit(qgetenv("VLC_PLUGIN_PATH")));
    report.insert(QStringLiteral("applicationDir"), QCoreApplication::applicationDirPath());
    report.insert(QStringLiteral("version"), QCoreApplication::applicationVersion());
    report.insert(QStringLiteral("highDpiScalingOff"),
                  QCoreApplication::testAttribute(Qt::AA_DisableHighDpiScaling));
    report.insert(QStringLiteral("noNativeSiblings"),
                  QCoreApplication::testAttribute(Qt::AA_DontCreateNativeWidgetSiblings));

    // The plugin folder beside the program does not exist here: libvlc must still
    // find Debian's own plugins and play.
    Core::Vendor::VlcWrapper player;
    player.SetMedia(QUrl::fromLocalFile(Tests::TestMedia::Path(QStringLiteral("music_a.mp3"))));
    player.Play();
    const bool played =
        QTest::qWaitFor([&player]() { return player.PositionMs() > 0; }, Tests::Timeouts::Playback);
    player.Stop();
    report.insert(QStringLiteral("played"), played);

    QTextStream(stdout) << QJsonDocument(report).toJson(QJsonDocument::Compact) << Qt::endl;
    return 0;
}

} // namespace

class TestApplicationStartUp : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void fontDpiIsOnlyADefault_data();
    void fontDpiIsOnlyADefault();
    void mediaLibraryFindsItsPlugins();
    void windowNeverShrinksBelowItsMinimum();
    void trayHidesAndRestoresTheWindow();
    void minimisesToTrayOnStartWhenAsked();

private:
    QJsonObject RunChild(const QProcessEnvironment& environment);

    std::unique_ptr<Tests::TestDataDirectory> mData;
};

void TestApplicationStartUp::init()
{
    mData = std::make_unique<Tests::TestDataDirectory>();
    QVERIFY(mData->IsValid());
}

void TestApplicationStartUp::cleanup()
{
    mData.reset();
}

QJsonObject TestApplicationStartUp::RunChild(const QProcessEnvironment& environment)
{
    QProcess child;
    child.setProcessEnvironment(environment);
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(ChildArgument)});
    if (!child.waitForFinished(Tests::Timeouts::Playback + Tests::Timeouts::Process) ||
        child.exitCode() != 0) {
        return {};
    }
    const QList<QByteArray> lines = child.readAllStandardOutput().trimmed().split('\n');
    return QJsonDocument::fromJson(lines.last()).object();
}

void TestApplicationStartUp::fontDpiIsOnlyADefault_data()
{
    QTest::addColumn<bool>("set");
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("expected");
    QTest::newRow("unset") << false << QString() << QStringLiteral("84");
    QTest::newRow("empty") << true << QString() << QStringLiteral("84");
    QTest::newRow("the user's own") << true << QStringLiteral("120") << QStringLiteral("120");
}

void TestApplicationStartUp::fontDpiIsOnlyADefault()
{
    QFETCH(bool, set);
    QFETCH(QString, given);
    QFETCH(QString, expected);

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("QT_FONT_DPI"));
    if (set) {
        environment.insert(QStringLiteral("QT_FONT_DPI"), given);
    }
    const QJsonObject report = RunChild(environment);
    QVERIFY2(!report.isEmpty(), "the start-up process failed");
    QCOMPARE(report.value(QStringLiteral("fontDpi")).toString(), expected);
    QCOMPARE(report.value(QStringLiteral("version")).toString(), QStringLiteral("3.13"));
    QVERIFY(report.value(QStringLiteral("highDpiScalingOff")).toBool());
    QVERIFY(report.value(QStringLiteral("noNativeSiblings")).toBool());
}

void TestApplicationStartUp::mediaLibraryFindsItsPlugins()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // Whatever the user's environment said, the program's own folder wins.
    environment.insert(QStringLiteral("VLC_PLUGIN_PATH"), QStringLiteral("/nonexistent/elsewhere"));
    const QJsonObject report = RunChild(environment);
    QVERIFY2(!report.isEmpty(), "the start-up process failed");
    QCOMPARE(report.value(QStringLiteral("vlcPluginPath")).toString(),
             report.value(QStringLiteral("applicationDir")).toString() + QStringLiteral("/plugins"));
    QVERIFY(!QFileInfo::exists(report.value(QStringLiteral("vlcPluginPath")).toString()));
    QVERIFY2(report.value(QStringLiteral("played")).toBool(),
             "libvlc did not play with the plugin folder missing");
}

void TestApplicationStartUp::windowNeverShrinksBelowItsMinimum()
{
    std::unique_ptr<UI::Desktop::MainWindowDesktop> window(
        UI::Desktop::ApplicationStartUp::CreateMainWindow());
    QVERIFY(window->isVisible());
    QCOMPARE(window->windowTitle(), QStringLiteral("ЗЕЛМАР"));
    window->resize(640, 480);
    QTRY_VERIFY_WITH_TIMEOUT(window->width() >= 1024 && window->height() >= 708, Tests::Timeouts::Quick);
    QCOMPARE(window->minimumSize(), QSize(1024, 708));
}

void TestApplicationStartUp::trayHidesAndRestoresTheWindow()
{
    std::unique_ptr<UI::Desktop::MainWindowDesktop> window(
        UI::Desktop::ApplicationStartUp::CreateMainWindow());
    QAction* toggle = window->ToggleAction();
    QCOMPARE(toggle->text(), QStringLiteral("Свернуть"));

    toggle->trigger();
    QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), Tests::Timeouts::Quick);
    QCOMPARE(toggle->text(), QStringLiteral("Развернуть"));
    QVERIFY(window->windowFlags().testFlag(Qt::Tool));

    toggle->trigger();
    QTRY_VERIFY_WITH_TIMEOUT(window->isVisible(), Tests::Timeouts::Quick);
    QCOMPARE(toggle->text(), QStringLiteral("Свернуть"));
    QVERIFY(!window->windowFlags().testFlag(Qt::Tool));
    QVERIFY(!window->isMinimized());
}

void TestApplicationStartUp::minimisesToTrayOnStartWhenAsked()
{
    Core::Settings::SetMinimizeToTrayOnAppStart(false);
    std::unique_ptr<UI::Desktop::MainWindowDesktop> shown(
        UI::Desktop::ApplicationStartUp::CreateMainWindow());
    QVERIFY(shown->isVisible());
    shown.reset();

    Core::Settings::SetMinimizeToTrayOnAppStart(true);
    std::unique_ptr<UI::Desktop::MainWindowDesktop> window(
        UI::Desktop::ApplicationStartUp::CreateMainWindow());
    QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), Tests::Timeouts::Quick);
    QCOMPARE(window->ToggleAction()->text(), QStringLiteral("Развернуть"));
}

int main(int argc, char* argv[])
{
    if (argc > 1 && std::strcmp(argv[1], ChildArgument) == 0) {
        return RunChild(argc, argv);
    }
    QApplication application(argc, argv);
    TestApplicationStartUp test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_application_start_up.moc"
