#include "core/vendor/audio_preset.h"
#include "core/vendor/vlc_wrapper.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/support/pcm_analysis.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

using Core::Vendor::VlcStatus;
using Core::Vendor::VlcWrapper;

namespace {

constexpr double A = Tests::TestMedia::MusicAFrequency;

std::vector<VlcStatus> Statuses(const QSignalSpy& spy)
{
    std::vector<VlcStatus> statuses;
    for (const auto& arguments : spy) {
        statuses.push_back(arguments.at(0).value<VlcStatus>());
    }
    return statuses;
}

QString Describe(const QSignalSpy& spy)
{
    QStringList names;
    for (const VlcStatus status : Statuses(spy)) {
        names << QString::number(static_cast<int>(status));
    }
    return names.join(QStringLiteral(","));
}

bool Contains(const QSignalSpy& spy, VlcStatus status)
{
    const auto statuses = Statuses(spy);
    return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
}

} // namespace

// The media backend on real libvlc, heard on the private PulseAudio server: the
// statuses libvlc really goes through, what reaches which sink and how loud.
class VlcWrapperTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(VlcWrapper::GetVlcInstance() != nullptr, "libvlc did not start: are its plugins installed?");
    }

    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        // Both sinks recorded and kept running, so that libvlc plays in real time.
        listener = std::make_unique<Tests::TwoSinkListener>();
        QVERIFY2(listener->Start(), qPrintable(listener->ErrorString()));
    }

    void cleanup()
    {
        listener.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        dataDirectory.reset();
    }

    void aFileOpensPlaysAndEnds()
    {
        // Cached file names come from the server: spaces, Cyrillic, "#" and "%" must
        // not turn into a URL fragment or an escape.
        const QString path = dataDirectory->FilePath(QStringLiteral("Тон №1 #2 100% ?.mp3"));
        QVERIFY(QFile::copy(Tests::TestMedia::Path(QStringLiteral("short_a.mp3")), path));
        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        QSignalSpy positions(&player, &VlcWrapper::positionChanged);
        player.SetMedia(QUrl::fromLocalFile(path));
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Ended), Tests::Timeouts::Playback);

        // Opening and buffering may be too quick for the 250 ms poll; then one
        // Playing, however many polls saw it, and the end.
        const auto sequence = Statuses(statuses);
        QVERIFY2(sequence.size() >= 2, qPrintable(Describe(statuses)));
        QCOMPARE(sequence.back(), VlcStatus::Ended);
        QCOMPARE(std::count(sequence.begin(), sequence.end(), VlcStatus::Playing), 1);
        QCOMPARE(sequence[sequence.size() - 2], VlcStatus::Playing);
        QVERIFY2(
            std::all_of(sequence.begin(), sequence.end() - 2,
                        [](VlcStatus s) { return s == VlcStatus::Opening || s == VlcStatus::Buffering; }),
            qPrintable(Describe(statuses)));
        QVERIFY2(std::abs(player.Duration() - 1500) < 150, qPrintable(QString::number(player.Duration())));
        // A fraction that never goes back; libvlc answers -1 while there is no input.
        float highest = 0;
        for (const auto& arguments : positions) {
            const float position = arguments.at(0).toFloat();
            QVERIFY2(position <= 1.0f, qPrintable(QString::number(position)));
            if (position > 0) {
                QVERIFY2(position >= highest,
                         qPrintable(QStringLiteral("%1 after %2").arg(position).arg(highest)));
                highest = position;
            }
        }
        QVERIFY2(highest > 0, qPrintable(QString::number(positions.count())));
    }

    void unreadableFilesAreNeverPlaying()
    {
        // Some demuxer of libvlc takes nearly any noise on trust, reports it playing for
        // a millisecond or two and ends it: then a broken file would count as played.
        // Asked as often as it can be, the status must never say Playing. Seeded, so
        // every run tries the same noise.
        QStringList paths = {Tests::TestMedia::Path(QStringLiteral("broken.mp3")),
                             Tests::TestMedia::Path(QStringLiteral("broken.mp4")),
                             Tests::TestMedia::Path(QStringLiteral("empty.mp3")),
                             QStringLiteral("/nonexistent/zelmar/missing.mp3")};
        for (int seed = 1; seed <= 12; ++seed) {
            QRandomGenerator generator(static_cast<quint32>(seed));
            QByteArray noise(64 * 1024, Qt::Uninitialized);
            generator.fillRange(reinterpret_cast<quint32*>(noise.data()), noise.size() / 4);
            paths << dataDirectory->FilePath(QStringLiteral("noise_%1.mp3").arg(seed));
            QFile file(paths.back());
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(noise) == noise.size());
        }
        QStringList played;
        for (const QString& path : paths) {
            VlcWrapper player;
            player.SetMedia(QUrl::fromLocalFile(path));
            player.Play();
            QElapsedTimer elapsed;
            elapsed.start();
            VlcStatus status = player.GetStatus();
            while (status != VlcStatus::Ended && status != VlcStatus::Error &&
                   elapsed.elapsed() < Tests::Timeouts::Playback) {
                if (status == VlcStatus::Playing && !played.contains(path)) {
                    played << path;
                }
                QThread::yieldCurrentThread();
                status = player.GetStatus();
            }
            QVERIFY2(status == VlcStatus::Ended || status == VlcStatus::Error, qPrintable(path));
        }
        QVERIFY2(played.isEmpty(), qPrintable(QStringLiteral("played ") + played.join(' ')));
    }

    void pauseStaysPausedPlayResumesAndStopEndsTheReports()
    {
        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        QSignalSpy positions(&player, &VlcWrapper::positionChanged);
        player.SetMedia(QUrl::fromLocalFile(Tests::TestMedia::Path(QStringLiteral("music_a.mp3"))));
        QVERIFY(!positions.wait(Tests::Timeouts::Silence));
        QCOMPARE(statuses.count(), 0);
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);
        player.SetPosition(0.5f);
        QTRY_VERIFY_WITH_TIMEOUT(player.PositionMs() >= 4000, Tests::Timeouts::Quick);

        // libvlc's own pause toggles; a second Pause() must not resume.
        player.Pause();
        QTRY_COMPARE_WITH_TIMEOUT(player.GetStatus(), VlcStatus::Paused, Tests::Timeouts::Quick);
        player.Pause();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Paused), Tests::Timeouts::Quick);
        QCOMPARE(player.GetStatus(), VlcStatus::Paused);
        const qint64 pausedAt = player.PositionMs();

        // Play() reports every transition afresh, Playing included, and goes on from
        // where it paused.
        statuses.clear();
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);
        QVERIFY2(player.PositionMs() >= pausedAt, "resumed from the start instead of where it paused");

        player.Stop();
        QCOMPARE(player.GetStatus(), VlcStatus::Stopped);
        statuses.clear();
        positions.clear();
        QVERIFY(!positions.wait(Tests::Timeouts::Silence));
        QCOMPARE(statuses.count(), 0);
    }

    void chosenSinkAndVolumeOutlastStop()
    {
        // libvlc replaces a player's audio output after a stop; the next playback must
        // still go to the chosen sink, at the chosen volume rather than libvlc's fresh
        // 100, from its first moment on.
        VlcWrapper player;
        player.SetAudioOutput(qPrintable(qEnvironmentVariable("ZELMAR_TEST_SINK_B")));
        player.SetVolume(70);
        player.SetMedia(QUrl::fromLocalFile(Tests::TestMedia::Path(QStringLiteral("music_a.mp3"))));
        const double from = listener->SecondsRecorded();
        const double atSeventy = LoudestOnB(player);
        QVERIFY2(atSeventy > Tests::ToneTimeline::Heard, qPrintable(QString::number(atSeventy)));
        QCOMPARE(player.Volume(), 70);
        player.Stop();

        const double afterStop = LoudestOnB(player);
        QCOMPARE(player.Volume(), 70);
        player.Stop();
        // The loudest moment, the tone's first included: at 100 it would be some three
        // times as loud.
        QVERIFY2(std::abs(afterStop - atSeventy) < atSeventy * 0.25,
                 qPrintable(QStringLiteral("%1 after the stop, %2 before").arg(afterStop).arg(atSeventy)));
        QVERIFY2(Tests::PcmAnalysis::Rms(listener->A(), from, listener->SecondsRecorded()) <
                     Tests::ToneTimeline::NotHeard,
                 "sound went to the default sink");
    }

    void staticFacts()
    {
        for (const char* pseudo : {"default", "sysdefault", "null"}) {
            QVERIFY(VlcWrapper::IsPseudoAudioDevice(pseudo));
        }
        // Real cards, whichever way ALSA or PulseAudio name them, stay.
        for (const char* card :
             {"sysdefault:CARD=PCH", "hw:CARD=PCH,DEV=0", "alsa_output.pci-0000_00_1f.3"}) {
            QVERIFY(!VlcWrapper::IsPseudoAudioDevice(card));
        }
        QVERIFY(qAbs(VlcWrapper::ScaleToCover(QSize(960, 720), QSize(1920, 1080)) - 0.6667) < 0.001);
        QCOMPARE(VlcWrapper::ScaleToCover(QSize(640, 360), QSize(320, 240)), 2.0);
        QCOMPARE(VlcWrapper::ScaleToCover(QSize(640, 360), QSize(0, 0)), 0.0);

        // Rising band frequencies; libvlc's first preset is the flat one, and the
        // presets differ from one another.
        const unsigned bands = VlcWrapper::GetEqualizerBandCount();
        QVERIFY(bands > 0);
        for (unsigned band = 1; band < bands; ++band) {
            QVERIFY(VlcWrapper::GetEqualizerBandFrequency(band) >
                    VlcWrapper::GetEqualizerBandFrequency(band - 1));
        }
        const auto presets = VlcWrapper::GetPresets();
        QVERIFY(presets.size() >= 2);
        for (const auto& preset : presets) {
            QVERIFY(!preset.Name().empty());
            QCOMPARE(preset.Bands().size(), static_cast<std::size_t>(bands));
        }
        const auto& flat = presets.front().Bands();
        QVERIFY(std::all_of(flat.begin(), flat.end(), [](double band) { return band == 0.0; }));
        QVERIFY(!presets[1].Equal(presets[0].Amplifier(), presets[0].Bands()));

        // A preset matches settings within a tenth of a decibel, band for band.
        const Core::Vendor::AudioPreset preset("Тест", 5.0, {1.0, -2.0, 3.5});
        QVERIFY(preset.Equal(5.05, {1.05, -2.05, 3.45}));
        QVERIFY(!preset.Equal(5.2, {1.0, -2.0, 3.5}));
        QVERIFY(!preset.Equal(5.0, {1.0, -2.0, 3.65}));
        QVERIFY(!preset.Equal(5.0, {1.0, -2.0, 3.5, 0.0}));
    }

private:
    // Plays the player's media and gives tone A's loudest level on sink B over the
    // 2.5 s from when it is first heard there; -1 when it is not.
    double LoudestOnB(VlcWrapper& player)
    {
        const double from = listener->SecondsRecorded();
        player.Play();
        double onset = -1;
        if (!QTest::qWaitFor(
                [&]() {
                    return (onset = Tests::ToneTimeline::FirstHeard(
                                listener->B(), A, Tests::ToneTimeline::NotHeard, from)) >= 0;
                },
                Tests::Timeouts::Playback) ||
            !listener->WaitUntilRecorded(onset + 2.5, Tests::Timeouts::Playback)) {
            return -1;
        }
        return Tests::ToneTimeline::Loudest(listener->B(), A, onset, onset + 2.5);
    }

    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::TwoSinkListener> listener;
};

QTEST_GUILESS_MAIN(VlcWrapperTest)
#include "tst_vlc_wrapper.moc"
