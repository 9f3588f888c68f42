// The program draws its screens and its video without OpenGL, as it starts on a
// shop's computer: no GL driver, no Mesa, no LLVM in the process, which would cost
// it tens of megabytes for nothing it shows. A process of its own, started with
// nothing of the test environment's own GL settings, prepares the environment as
// the program does, shows a Qt Quick screen and a video in a native widget, and
// reports what it drew and which libraries it loaded.

#include "core/vendor/vlc_status.h"
#include "core/vendor/vlc_wrapper.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"
#include "ui/desktop/application_start_up.h"

#include <QApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QQuickWidget>
#include <QRegularExpression>
#include <QScreen>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>

namespace {

const char* const ChildArgument = "--drawing-child";

int ColoursShown(QWidget& widget)
{
    const QImage image = widget.screen()->grabWindow(widget.winId()).toImage();
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); y += 4) {
        for (int x = 0; x < image.width(); x += 4) {
            colours.insert(image.pixel(x, y));
        }
    }
    return colours.size();
}

// The libraries of a GL driver this process has loaded: the vendor-neutral
// dispatch libraries libvlc's plugins link against are harmless, the driver behind
// them is not.
QJsonArray GlDriversLoaded()
{
    QFile maps(QStringLiteral("/proc/self/maps"));
    if (!maps.open(QIODevice::ReadOnly)) {
        return {QStringLiteral("/proc/self/maps unreadable")};
    }
    const QRegularExpression driver(QStringLiteral("(_mesa\\.so|_dri\\.so|libLLVM|libnvidia)"));
    QSet<QString> found;
    for (const QByteArray& line : maps.readAll().split('\n')) {
        const QString path = QString::fromLocal8Bit(line).section(QLatin1Char(' '), -1);
        if (driver.match(path).hasMatch()) {
            found.insert(path);
        }
    }
    QJsonArray list;
    for (const QString& path : found) {
        list.append(path);
    }
    return list;
}

int RunChild(int argc, char* argv[])
{
    UI::Desktop::ApplicationStartUp::PrepareEnvironment();
    QApplication application(argc, argv);

    QTemporaryDir folder;
    QFile document(folder.filePath(QStringLiteral("screen.qml")));
    if (!document.open(QIODevice::WriteOnly) ||
        document.write("import QtQuick 2.15\nRectangle { color: \"teal\" }\n") < 0) {
        return 1;
    }
    document.close();
    QQuickWidget screen;
    screen.setResizeMode(QQuickWidget::SizeRootObjectToView);
    screen.setSource(QUrl::fromLocalFile(document.fileName()));
    screen.resize(320, 240);
    screen.show();

    QWidget videoArea;
    videoArea.setStyleSheet(QStringLiteral("background: black"));
    videoArea.resize(320, 240);
    videoArea.move(400, 0);
    videoArea.show();
    const bool exposed = QTest::qWaitForWindowExposed(&screen) && QTest::qWaitForWindowExposed(&videoArea);

    Core::Vendor::VlcWrapper player;
    player.SetMedia(QUrl::fromLocalFile(Tests::TestMedia::Path(QStringLiteral("video.mp4"))));
    player.SetVideoOutput(&videoArea);
    player.Play();
    const bool videoShown =
        QTest::qWaitFor([&videoArea]() { return ColoursShown(videoArea) > 10; }, Tests::Timeouts::Playback);
    player.Stop();

    QJsonObject report;
    report.insert(QStringLiteral("exposed"), exposed);
    report.insert(QStringLiteral("videoShown"), videoShown);
    report.insert(QStringLiteral("screenDrawn"),
                  screen.grabFramebuffer().pixel(10, 10) == QColor("teal").rgb());
    report.insert(QStringLiteral("sceneGraph"), QQuickWindow::sceneGraphBackend());
    report.insert(QStringLiteral("glDrivers"), GlDriversLoaded());
    QTextStream(stdout) << QJsonDocument(report).toJson(QJsonDocument::Compact) << Qt::endl;
    return 0;
}

} // namespace

class TestDrawingWithoutOpenGl : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
    }

    void noGlDriverIsLoaded()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        // The test environment keeps GL away from every test by hand; the program
        // must do it by itself.
        for (const char* name : {"QT_XCB_GL_INTEGRATION", "LIBGL_DRIVERS_PATH", "QT_QUICK_BACKEND"}) {
            environment.remove(QString::fromLatin1(name));
        }
        QProcess child;
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        child.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(ChildArgument)});
        QVERIFY(child.waitForFinished(Tests::Timeouts::Playback + Tests::Timeouts::Process));
        QCOMPARE(child.exitCode(), 0);
        const QList<QByteArray> lines = child.readAllStandardOutput().trimmed().split('\n');
        const QJsonObject report = QJsonDocument::fromJson(lines.last()).object();

        QVERIFY2(report.value(QStringLiteral("exposed")).toBool(), "the windows never appeared");
        QVERIFY2(report.value(QStringLiteral("screenDrawn")).toBool(), "the Qt Quick screen was not drawn");
        QVERIFY2(report.value(QStringLiteral("videoShown")).toBool(), "the video did not reach its widget");
        QCOMPARE(report.value(QStringLiteral("sceneGraph")).toString(), QStringLiteral("software"));
        const QJsonArray drivers = report.value(QStringLiteral("glDrivers")).toArray();
        QVERIFY2(drivers.isEmpty(), QJsonDocument(drivers).toJson().constData());
    }
};

int main(int argc, char* argv[])
{
    if (argc > 1 && std::strcmp(argv[1], ChildArgument) == 0) {
        return RunChild(argc, argv);
    }
    QApplication application(argc, argv);
    TestDrawingWithoutOpenGl test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_drawing_without_open_gl.moc"
