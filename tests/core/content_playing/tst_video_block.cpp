#include "core/content_playing/video_block.h"
#include "core/vendor/vlc_wrapper.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/recording_block_observer.h"
#include "tests/core/content_playing/test_sinks_keep_alive.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>
#include <QSet>
#include <QSignalSpy>
#include <QUrl>
#include <QWidget>
#include <QtTest>

#include <memory>

using Core::ContentPlaying::VideoBlock;
using Core::DataTypes::Playback::ContentType;
using Core::Vendor::VlcStatus;
using Core::Vendor::VlcWrapper;
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

bool Contains(const QSignalSpy& spy, VlcStatus status)
{
    return std::any_of(spy.begin(), spy.end(), [status](const auto& arguments) {
        return arguments.at(0).template value<VlcStatus>() == status;
    });
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

QUrl Media(const QString& name)
{
    return QUrl::fromLocalFile(Tests::TestMedia::Path(name));
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

// Video on the virtual display (Xvfb). The backend draws into the widget it is
// given, scaled to cover it, and never into a window libvlc opens by itself. A video
// block stops the video on a pause and resumes it from where it was, and moves it to
// another widget while playing: both restart libvlc at a position, and a progress
// report from before the position is reached would send a progress bar back to the
// start.
class VideoBlockTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
        qRegisterMetaType<VlcStatus>();
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

    void videoIsDrawnIntoTheWidgetAndCoversIt()
    {
        const auto widget = BlackWidget(QSize(640, 360));
        QVERIFY(QTest::qWaitForWindowExposed(widget.get()));
        QCOMPARE(ColoursShown(*widget), 1);

        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        player.SetVideoOutput(widget.get());
        player.SetMedia(Media(QStringLiteral("video.mp4")));
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);
        // 320×240 into 640×360: the wider ratio, 2, so the picture fills the width
        // and its top and bottom are cut off.
        QTRY_COMPARE_WITH_TIMEOUT(player.VideoScale(), 2.0f, Tests::Timeouts::Quick);
        QTRY_VERIFY_WITH_TIMEOUT(ColoursShown(*widget) > 10, Tests::Timeouts::Playback);
        player.Stop();
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
        QWidget widget;
        widget.resize(320, 240);
        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        player.SetMedia(Media(QStringLiteral("video.mp4")));
        if (widgetFirst) {
            widget.show();
            QVERIFY(QTest::qWaitForWindowExposed(&widget));
            player.SetVideoOutput(&widget);
            player.Play();
            QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);
            player.SetVideoOutput(nullptr);
            player.Stop();
            widget.hide();
        }

        QString error;
        const QSet<QString> before = TopLevelWindows(&error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        statuses.clear();
        player.Play();
        // A second into the 5 s video its output is open; a starved test thread may
        // look only after the end.
        QTRY_VERIFY_WITH_TIMEOUT(player.Position() > 0.2f || Contains(statuses, VlcStatus::Ended),
                                 Tests::Timeouts::Playback);
        QVERIFY2(!Contains(statuses, VlcStatus::Ended), "the video ended before it was looked at");
        const QSet<QString> during = TopLevelWindows(&error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
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
        QTRY_VERIFY_WITH_TIMEOUT(observer->progress.size() > reports + 2, Tests::Timeouts::Playback);
        QTRY_VERIFY_WITH_TIMEOUT(ColoursShown(*widget) > 10, Tests::Timeouts::Playback);
        VerifyNoProgressBefore(pausedAt, reports);
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
        const auto reports = observer->progress.size();

        block.SetVideoWidget(second.get());
        QTRY_VERIFY_WITH_TIMEOUT(ColoursShown(*second) > 10, Tests::Timeouts::Playback);
        QTRY_VERIFY_WITH_TIMEOUT(observer->progress.size() > reports + 2, Tests::Timeouts::Playback);
        VerifyNoProgressBefore(before, reports);
        QCOMPARE(observer->StartCount(), 1);
        block.Stop();
    }

private:
    // Every progress report from `first` on is at the position the video was
    // restarted from or later.
    void VerifyNoProgressBefore(double position, std::size_t first)
    {
        for (std::size_t i = first; i < observer->progress.size(); ++i) {
            QVERIFY2(observer->progress[i].progress >= position - 0.05,
                     qPrintable(QStringLiteral("reported %1 after restarting at %2")
                                    .arg(observer->progress[i].progress)
                                    .arg(position)));
        }
    }

    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::RecordingBlockObserver> observer;
    std::unique_ptr<Tests::TestSinksKeepAlive> sinks;
};

QTEST_MAIN(VideoBlockTest)
#include "tst_video_block.moc"
