#include "core/vendor/vlc_wrapper.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QApplication>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>
#include <QSet>
#include <QSignalSpy>
#include <QUrl>
#include <QWidget>
#include <QtTest>

using Core::Vendor::VlcStatus;
using Core::Vendor::VlcWrapper;

namespace {

bool Contains(const QSignalSpy& spy, VlcStatus status)
{
    for (const auto& arguments : spy) {
        if (arguments.at(0).value<VlcStatus>() == status) {
            return true;
        }
    }
    return false;
}

// The X windows that are children of the root window: every top-level window on
// the display, whoever made it.
QSet<QString> TopLevelWindows(QString* error)
{
    QProcess xwininfo;
    xwininfo.start(QStringLiteral("xwininfo"), {QStringLiteral("-root"), QStringLiteral("-children")});
    if (!xwininfo.waitForFinished(Tests::Timeouts::Process) || xwininfo.exitCode() != 0) {
        *error = QStringLiteral("xwininfo failed (run scripts/install-deps): ") + xwininfo.errorString() +
                 QString::fromLocal8Bit(xwininfo.readAllStandardError());
        return {};
    }
    QSet<QString> windows;
    const QRegularExpression line(QStringLiteral("^\\s+(0x[0-9a-f]+) (.*)$"));
    for (const QString& text : QString::fromLocal8Bit(xwininfo.readAllStandardOutput()).split('\n')) {
        const auto match = line.match(text);
        if (match.hasMatch()) {
            windows.insert(match.captured(1) + QLatin1Char(' ') + match.captured(2).section(':', 0, 0));
        }
    }
    return windows;
}

// How many different colours the widget shows: the test picture has bars of many,
// an empty widget one.
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

} // namespace

// Video on a real X display (Xvfb): drawn into the widget it is given, scaled to
// cover it, and never into a window libvlc opens by itself.
class VlcWrapperVideoTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
        qRegisterMetaType<VlcStatus>();
    }

    void videoIsDrawnIntoTheWidgetAndCoversIt()
    {
        QWidget widget;
        widget.setStyleSheet(QStringLiteral("background: black"));
        widget.resize(640, 360);
        widget.show();
        QVERIFY(QTest::qWaitForWindowExposed(&widget));
        QCOMPARE(ColoursShown(widget), 1);

        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        player.SetVideoOutput(&widget);
        player.SetMedia(QUrl::fromLocalFile(Tests::TestMedia::Path(QStringLiteral("video.mp4"))));
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);

        // 320×240 into 640×360: the wider ratio, 2, so the picture fills the width
        // and its top and bottom are cut off.
        QTRY_COMPARE_WITH_TIMEOUT(player.VideoScale(), 2.0f, Tests::Timeouts::Quick);
        QTRY_VERIFY_WITH_TIMEOUT(ColoursShown(widget) > 10, Tests::Timeouts::Playback);
        player.Stop();
    }

    void noWindowOfItsOwnWithoutAWidget()
    {
        QString error;
        const QSet<QString> before = TopLevelWindows(&error);
        QVERIFY2(error.isEmpty(), qPrintable(error));

        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        player.SetMedia(QUrl::fromLocalFile(Tests::TestMedia::Path(QStringLiteral("video_short.mp4"))));
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);
        QTRY_VERIFY_WITH_TIMEOUT(player.Position() > 0.3f, Tests::Timeouts::Playback);
        const QSet<QString> during = TopLevelWindows(&error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QVERIFY2((during - before).isEmpty(), qPrintable(QStringList((during - before).values()).join('\n')));
        player.Stop();
    }

    void noWindowOfItsOwnAfterTheWidgetIsTakenAway()
    {
        // Once libvlc has been given a window it no longer falls back to the dummy
        // output: a null window would make it open one of its own.
        QWidget widget;
        widget.resize(320, 240);
        widget.show();
        QVERIFY(QTest::qWaitForWindowExposed(&widget));

        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        player.SetVideoOutput(&widget);
        player.SetMedia(QUrl::fromLocalFile(Tests::TestMedia::Path(QStringLiteral("video_short.mp4"))));
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);
        player.SetVideoOutput(nullptr);
        player.Stop();
        widget.hide();

        QString error;
        const QSet<QString> before = TopLevelWindows(&error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        statuses.clear();
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);
        QTRY_VERIFY_WITH_TIMEOUT(player.Position() > 0.3f, Tests::Timeouts::Playback);
        const QSet<QString> during = TopLevelWindows(&error);
        QVERIFY2((during - before).isEmpty(), qPrintable(QStringList((during - before).values()).join('\n')));

        // Given a widget again, the same media shows its picture once more.
        player.Stop();
        widget.show();
        QVERIFY(QTest::qWaitForWindowExposed(&widget));
        player.SetVideoOutput(&widget);
        statuses.clear();
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);
        QTRY_VERIFY_WITH_TIMEOUT(ColoursShown(widget) > 10, Tests::Timeouts::Playback);
        player.Stop();
    }
};

QTEST_MAIN(VlcWrapperVideoTest)
#include "tst_vlc_wrapper_video.moc"
