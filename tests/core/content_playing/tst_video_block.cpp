#include "core/content_playing/video_block.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/recording_block_observer.h"
#include "tests/core/content_playing/test_sinks_keep_alive.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"

#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>
#include <QSet>
#include <QWidget>
#include <QtTest>

#include <memory>

using Core::ContentPlaying::VideoBlock;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Track;
using Tests::PlaybackTestTracks;

namespace {

// How many different colours the widget shows on screen: the test picture has
// bars of many, a black widget one.
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

QSet<QString> TopLevelWindows()
{
    QProcess xwininfo;
    xwininfo.start(QStringLiteral("xwininfo"), {QStringLiteral("-root"), QStringLiteral("-children")});
    if (!xwininfo.waitForFinished(Tests::Timeouts::Process) || xwininfo.exitCode() != 0) {
        qWarning("xwininfo failed (run scripts/install-deps): %s", qPrintable(xwininfo.errorString()));
        return {QStringLiteral("xwininfo failed")};
    }
    QSet<QString> windows;
    const QRegularExpression line(QStringLiteral("^\\s+(0x[0-9a-f]+) "));
    for (const QString& text : QString::fromLocal8Bit(xwininfo.readAllStandardOutput()).split('\n')) {
        const auto match = line.match(text);
        if (match.hasMatch()) {
            windows.insert(match.captured(1));
        }
    }
    return windows;
}

std::unique_ptr<QWidget> BlackWidget()
{
    auto widget = std::make_unique<QWidget>();
    widget->setStyleSheet(QStringLiteral("background: black"));
    widget->resize(320, 240);
    widget->show();
    return widget;
}

} // namespace

// A video block drawing into real windows on the virtual display: the picture in
// the widget, a pause that stops the video and resumes it from where it was, and a
// move to another widget while playing, without any window of libvlc's own.
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

    void pauseStopsTheVideoAndStartResumesItWhereItWas()
    {
        const auto widget = BlackWidget();
        QVERIFY(QTest::qWaitForWindowExposed(widget.get()));
        VideoBlock block({PlaybackTestTracks::Cached(1, ContentType::Video, QStringLiteral("video.mp4"))},
                         100);
        block.SetObserver(observer.get());
        block.SetVideoWidget(widget.get());
        block.Start();
        QVERIFY(block.CurrentTrackIsVideo());
        QTRY_VERIFY_WITH_TIMEOUT(ColoursShown(*widget) > 10, Tests::Timeouts::Playback);
        QTRY_VERIFY_WITH_TIMEOUT(!observer->progress.empty() && observer->progress.back().progress > 0.35,
                                 Tests::Timeouts::Playback);

        block.Pause();
        const double pausedAt = observer->progress.back().progress;
        const auto reports = observer->progress.size();
        QVERIFY(!QTest::qWaitFor([&]() { return observer->progress.size() > reports; },
                                 Tests::Timeouts::Silence));

        // The stopped video starts over, reported as a fresh start, from its position.
        block.Start();
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1, 1}));
        QVERIFY(!observer->starts.back().resumed);
        QTRY_VERIFY_WITH_TIMEOUT(observer->progress.size() > reports &&
                                     observer->progress.back().progress > 0,
                                 Tests::Timeouts::Playback);
        QVERIFY2(observer->progress.back().progress >= pausedAt - 0.05,
                 qPrintable(QStringLiteral("resumed at %1, paused at %2")
                                .arg(observer->progress.back().progress)
                                .arg(pausedAt)));
        QTRY_VERIFY_WITH_TIMEOUT(ColoursShown(*widget) > 10, Tests::Timeouts::Playback);
        block.Stop();
    }

    void aPlayingVideoMovesToANewWidget()
    {
        const auto first = BlackWidget();
        const auto second = BlackWidget();
        second->move(400, 0);
        QVERIFY(QTest::qWaitForWindowExposed(first.get()));
        QVERIFY(QTest::qWaitForWindowExposed(second.get()));
        VideoBlock block({PlaybackTestTracks::Cached(1, ContentType::Video, QStringLiteral("video.mp4"))},
                         100);
        block.SetObserver(observer.get());
        block.SetVideoWidget(first.get());
        block.Start();
        QTRY_VERIFY_WITH_TIMEOUT(!observer->progress.empty() && observer->progress.back().progress > 0.2,
                                 Tests::Timeouts::Playback);
        const double before = observer->progress.back().progress;

        block.SetVideoWidget(second.get());
        QTRY_VERIFY_WITH_TIMEOUT(ColoursShown(*second) > 10, Tests::Timeouts::Playback);
        QVERIFY2(observer->progress.back().progress >= before - 0.05,
                 "the video started over in its new widget");
        QCOMPARE(observer->StartCount(), 1);
        block.Stop();
    }

    void takenAwayFromItsWidgetTheVideoOpensNoWindow()
    {
        auto widget = BlackWidget();
        QVERIFY(QTest::qWaitForWindowExposed(widget.get()));
        VideoBlock block(
            {PlaybackTestTracks::Cached(1, ContentType::Video, QStringLiteral("video_short.mp4"))}, 100);
        block.SetObserver(observer.get());
        block.SetVideoWidget(widget.get());
        block.Start();
        QTRY_VERIFY_WITH_TIMEOUT(!observer->progress.empty() && observer->progress.back().progress > 0.1,
                                 Tests::Timeouts::Playback);

        block.SetVideoWidget(nullptr);
        widget.reset();
        const QSet<QString> before = TopLevelWindows();
        // It plays on, and loops, without a picture anywhere.
        QTRY_VERIFY_WITH_TIMEOUT(observer->StartCount() >= 2, Tests::Timeouts::Playback);
        QTRY_VERIFY_WITH_TIMEOUT(observer->progress.back().progress > 0.3, Tests::Timeouts::Playback);
        const QSet<QString> during = TopLevelWindows();
        QVERIFY2((during - before).isEmpty(), qPrintable(QStringList((during - before).values()).join(' ')));
        block.Stop();
    }

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::RecordingBlockObserver> observer;
    std::unique_ptr<Tests::TestSinksKeepAlive> sinks;
};

QTEST_MAIN(VideoBlockTest)
#include "tst_video_block.moc"
