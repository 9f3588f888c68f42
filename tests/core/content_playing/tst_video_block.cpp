#include "core/content_playing/video_block.h"
#include "core/vendor/vlc_wrapper.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/recording_block_observer.h"
#include "tests/core/content_playing/test_sinks_keep_alive.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QImage>
#include <QScreen>
#include <QWidget>

using Core::Vendor::VlcStatus;
using Core::Vendor::VlcWrapper;

namespace {

// How many different colours the widget shows on screen: the test picture has bars
// of many, a black widget one.
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

// Every top-level window on the display, whoever made it.
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

std::unique_ptr<QWidget> BlackWidget(QSize size = QSize(320, 240))
{
    auto widget = std::make_unique<QWidget>();
    widget->setStyleSheet(QStringLiteral("background: black"));
    widget->resize(size);
    widget->show();
    return widget;
}

} // namespace

// Video on the virtual display (Xvfb): drawn into the widget it is given, scaled to
// cover it, and never into a window libvlc opens by itself.
class VideoBlockTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
    }

    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        observer = std::make_unique<Tests::RecordingBlockObserver>();
        // Both sinks kept running, so that libvlc plays in real time from the start.
        sinks = std::make_unique<Tests::TestSinksKeepAlive>();
        QVERIFY2(sinks->Start(), qPrintable(sinks->ErrorString()));
    }

    void cleanup()
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        observer.reset();
        dataDirectory.reset();
    }

    void noWindowOfItsOwn_data()
    {
        QTest::addColumn<bool>("widgetFirst");
        QTest::newRow("never given a widget") << false;
        // Once libvlc has been given a window it no longer falls back to the dummy
        // output: a null window would make it open one of its own.
        QTest::newRow("widget taken away") << true;
    }

    void noWindowOfItsOwn()
    {
        QFETCH(bool, widgetFirst);
        VlcWrapper player;
        player.SetMedia(QUrl::fromLocalFile(Tests::TestMedia::Path(QStringLiteral("video.mp4"))));
        if (widgetFirst) {
            const auto first = BlackWidget();
            QVERIFY(QTest::qWaitForWindowExposed(first.get()));
            player.SetVideoOutput(first.get());
            player.Play();
            QTRY_COMPARE_WITH_TIMEOUT(player.GetStatus(), VlcStatus::Playing, Tests::Timeouts::Playback);
            player.SetVideoOutput(nullptr);
            player.Stop();
        }

        QString error;
        const QSet<QString> before = TopLevelWindows(&error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        player.Play();
        // A second into the 5 s video its output is open; a starved test thread may
        // look only after the end.
        QTRY_VERIFY_WITH_TIMEOUT(player.Position() > 0.2f || player.GetStatus() == VlcStatus::Ended,
                                 Tests::Timeouts::Playback);
        QVERIFY2(player.GetStatus() != VlcStatus::Ended, "the video ended before it was looked at");
        const QSet<QString> during = TopLevelWindows(&error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QVERIFY2((during - before).isEmpty(), qPrintable(QStringList((during - before).values()).join('\n')));

        // Given a widget, the same media shows its picture, 320×240 into 640×360
        // scaled by the wider ratio, 2, to cover it.
        player.Stop();
        const auto widget = BlackWidget(QSize(640, 360));
        QVERIFY(QTest::qWaitForWindowExposed(widget.get()));
        QCOMPARE(ColoursShown(*widget), 1);
        player.SetVideoOutput(widget.get());
        player.Play();
        QTRY_COMPARE_WITH_TIMEOUT(player.VideoScale(), 2.0f, Tests::Timeouts::Playback);
        QTRY_VERIFY_WITH_TIMEOUT(ColoursShown(*widget) > 10, Tests::Timeouts::Playback);
        player.Stop();
    }

    void aRestartedVideoGoesOnFromItsPosition_data()
    {
        QTest::addColumn<bool>("move");
        // A pause stops the video; Start() plays it again, reported as a fresh start.
        QTest::newRow("paused and started") << false;
        // libvlc cannot move a running video to another window.
        QTest::newRow("moved to a new widget") << true;
    }

    void aRestartedVideoGoesOnFromItsPosition()
    {
        QFETCH(bool, move);
        const auto first = BlackWidget();
        const auto second = BlackWidget();
        second->move(400, 0);
        QVERIFY(QTest::qWaitForWindowExposed(first.get()) && QTest::qWaitForWindowExposed(second.get()));
        Core::ContentPlaying::VideoBlock block(
            {Tests::PlaybackTestTracks::Cached(1, Core::DataTypes::Playback::ContentType::Video,
                                               QStringLiteral("video.mp4"))},
            100);
        block.SetObserver(observer.get());
        block.SetVideoWidget(first.get());
        block.Start();
        QVERIFY(block.CurrentTrackIsVideo());
        QTRY_VERIFY_WITH_TIMEOUT(!observer->progress.empty() && observer->progress.back().progress > 0.35,
                                 Tests::Timeouts::Playback);
        const double before = observer->progress.back().progress;
        const auto reports = observer->progress.size();
        if (move) {
            block.SetVideoWidget(second.get());
        } else {
            block.Pause();
            QVERIFY(!QTest::qWaitFor([&]() { return observer->progress.size() > reports; },
                                     Tests::Timeouts::Silence));
            block.Start();
            QVERIFY(!observer->starts.back().resumed);
        }
        QCOMPARE(observer->StartCount(), move ? 1 : 2);
        QTRY_VERIFY_WITH_TIMEOUT(ColoursShown(move ? *second : *first) > 10, Tests::Timeouts::Playback);
        QTRY_VERIFY_WITH_TIMEOUT(observer->progress.size() > reports + 2, Tests::Timeouts::Playback);
        // A report from before the position is reached would send a progress bar back
        // to the start.
        for (std::size_t i = reports; i < observer->progress.size(); ++i) {
            QVERIFY2(observer->progress[i].progress >= before - 0.05,
                     qPrintable(QStringLiteral("%1 after restarting at %2")
                                    .arg(observer->progress[i].progress)
                                    .arg(before)));
        }
        block.Stop();
    }

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::RecordingBlockObserver> observer;
    std::unique_ptr<Tests::TestSinksKeepAlive> sinks;
};

QTEST_MAIN(VideoBlockTest)
#include "tst_video_block.moc"
