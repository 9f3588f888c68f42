#include "core/vendor/audio_preset.h"
#include "core/vendor/vlc_wrapper.h"
#include "tests/core/content_playing/test_sinks_keep_alive.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/support/pcm_analysis.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QThread>
#include <QUrl>
#include <QtTest>

#include <algorithm>
#include <memory>

using Core::Vendor::AudioPreset;
using Core::Vendor::VlcStatus;
using Core::Vendor::VlcWrapper;

namespace {

constexpr double A = Tests::TestMedia::MusicAFrequency;
// A tone that sounds at all: the null sinks are digitally silent otherwise.
constexpr double Heard = 0.01;
// Nothing of a tone: what a sink that played something else gives.
constexpr double NotHeard = 0.002;

std::vector<VlcStatus> Statuses(const QSignalSpy& spy)
{
    std::vector<VlcStatus> statuses;
    for (const auto& arguments : spy) {
        statuses.push_back(arguments.at(0).value<VlcStatus>());
    }
    return statuses;
}

QString Describe(const std::vector<VlcStatus>& statuses)
{
    QStringList names;
    for (const VlcStatus status : statuses) {
        names << QString::number(static_cast<int>(status));
    }
    return names.join(QStringLiteral(","));
}

bool Contains(const QSignalSpy& spy, VlcStatus status)
{
    const auto statuses = Statuses(spy);
    return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
}

QUrl Media(const QString& name)
{
    return QUrl::fromLocalFile(Tests::TestMedia::Path(name));
}

} // namespace

// The media backend on real libvlc, heard on the private PulseAudio server: the
// statuses libvlc really goes through, what reaches which sink, and the equaliser's
// effect on the sound.
class VlcWrapperTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(!qEnvironmentVariableIsEmpty("PULSE_SERVER"), "register the test with NEEDS sound");
        qRegisterMetaType<VlcStatus>();
        QVERIFY2(VlcWrapper::GetVlcInstance() != nullptr, "libvlc did not start: are its plugins installed?");
        QVERIFY(VlcWrapper::GetVlcInstance() == VlcWrapper::GetVlcInstance());
    }

    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        // Both sinks kept running, so that libvlc plays in real time from the start.
        sinks = std::make_unique<Tests::TestSinksKeepAlive>();
        QVERIFY2(sinks->Start(), qPrintable(sinks->ErrorString()));
    }

    void cleanup()
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        dataDirectory.reset();
    }

    void goodMediaOpenPlayAndEnd_data()
    {
        QTest::addColumn<QString>("media");
        QTest::addColumn<double>("seconds");
        QTest::newRow("mp3") << QStringLiteral("short_a.mp3") << 1.5;
        QTest::newRow("mp4") << QStringLiteral("video_short.mp4") << 2.0;
    }

    void goodMediaOpenPlayAndEnd()
    {
        QFETCH(QString, media);
        QFETCH(double, seconds);
        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        QSignalSpy positions(&player, &VlcWrapper::positionChanged);
        player.SetMedia(Media(media));
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Ended), Tests::Timeouts::Playback);

        // Opening and buffering may be too quick for the 250 ms poll; then one
        // Playing, however many polls saw it, and the end.
        const auto sequence = Statuses(statuses);
        QVERIFY2(sequence.size() >= 2, qPrintable(Describe(sequence)));
        QCOMPARE(sequence.back(), VlcStatus::Ended);
        QCOMPARE(std::count(sequence.begin(), sequence.end(), VlcStatus::Playing), 1);
        QCOMPARE(sequence[sequence.size() - 2], VlcStatus::Playing);
        for (std::size_t i = 0; i + 2 < sequence.size(); ++i) {
            QVERIFY2(sequence[i] == VlcStatus::Opening || sequence[i] == VlcStatus::Buffering,
                     qPrintable(Describe(sequence)));
        }

        QVERIFY2(std::abs(player.Duration() - seconds * 1000) < 150,
                 qPrintable(QString::number(player.Duration())));
        // A fraction of the media that never goes back while it plays. How many
        // polls fall within the playback is not fixed: the first playback of a
        // process, starved of processor time under the sanitizers, has been seen
        // to end after a single moving poll.
        float highest = 0;
        for (const auto& arguments : positions) {
            const float position = arguments.at(0).toFloat();
            // libvlc answers -1 while there is no input to ask.
            QVERIFY2(position <= 1.0f, qPrintable(QString::number(position)));
            if (position > 0) {
                QVERIFY2(position >= highest,
                         qPrintable(QStringLiteral("%1 after %2").arg(position).arg(highest)));
                highest = position;
            }
        }
        QVERIFY2(highest > 0, qPrintable(QString::number(positions.count())));
    }

    void unreadableMediaEndsWithoutPlaying_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("noise as mp3") << Tests::TestMedia::Path(QStringLiteral("broken.mp3"));
        QTest::newRow("noise as mp4") << Tests::TestMedia::Path(QStringLiteral("broken.mp4"));
        QTest::newRow("empty file") << Tests::TestMedia::Path(QStringLiteral("empty.mp3"));
        QTest::newRow("missing file") << QStringLiteral("/nonexistent/zelmar/missing.mp3");
    }

    void unreadableMediaEndsWithoutPlaying()
    {
        QFETCH(QString, path);
        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        player.SetMedia(QUrl::fromLocalFile(path));
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Ended) || Contains(statuses, VlcStatus::Error),
                                 Tests::Timeouts::Playback);
        // libvlc 3 reports a file it cannot read as ended, not failed: the track
        // list player has to tell such an end from a played track by itself.
        const auto sequence = Statuses(statuses);
        QVERIFY2(!Contains(statuses, VlcStatus::Playing), qPrintable(Describe(sequence)));
        QCOMPARE(sequence.back(), VlcStatus::Ended);
    }

    void noiseIsNeverPlaying()
    {
        // Some demuxer of libvlc takes nearly any noise on trust, reports it playing
        // for a millisecond or two and ends it: seen by the 250 ms poll only now and
        // then, and then a broken file counts as played. Asked as often as it can
        // be, the status must never say Playing. The noise is seeded, so every run
        // tries the same files.
        constexpr int Files = 12;
        QStringList played;
        for (int seed = 1; seed <= Files; ++seed) {
            QRandomGenerator generator(static_cast<quint32>(seed));
            QByteArray noise(64 * 1024, Qt::Uninitialized);
            generator.fillRange(reinterpret_cast<quint32*>(noise.data()), noise.size() / 4);
            const QString path = dataDirectory->FilePath(QStringLiteral("noise_%1.mp3").arg(seed));
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            QCOMPARE(file.write(noise), noise.size());
            file.close();

            VlcWrapper player;
            player.SetMedia(QUrl::fromLocalFile(path));
            player.Play();
            QElapsedTimer elapsed;
            elapsed.start();
            bool seenPlaying = false;
            VlcStatus status = player.GetStatus();
            while (status != VlcStatus::Ended && status != VlcStatus::Error &&
                   elapsed.elapsed() < Tests::Timeouts::Playback) {
                seenPlaying = seenPlaying || status == VlcStatus::Playing;
                QThread::yieldCurrentThread();
                status = player.GetStatus();
            }
            QVERIFY2(status == VlcStatus::Ended || status == VlcStatus::Error, qPrintable(path));
            player.Stop();
            if (seenPlaying) {
                played << QString::number(seed);
            }
        }
        QVERIFY2(played.isEmpty(), qPrintable(QStringLiteral("played noise of seeds ") + played.join(',')));
    }

    void nothingIsReportedBetweenSetMediaAndPlay()
    {
        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        QSignalSpy positions(&player, &VlcWrapper::positionChanged);
        player.SetMedia(Media(QStringLiteral("short_a.mp3")));
        QVERIFY(!positions.wait(Tests::Timeouts::Silence));
        QCOMPARE(statuses.count(), 0);

        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);
    }

    void nothingIsReportedAfterStop()
    {
        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        QSignalSpy positions(&player, &VlcWrapper::positionChanged);
        player.SetMedia(Media(QStringLiteral("music_a.mp3")));
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);

        player.Stop();
        QCOMPARE(player.GetStatus(), VlcStatus::Stopped);
        statuses.clear();
        positions.clear();
        QVERIFY(!positions.wait(Tests::Timeouts::Silence));
        QCOMPARE(statuses.count(), 0);
    }

    void pauseNeverToggles()
    {
        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        player.SetMedia(Media(QStringLiteral("music_a.mp3")));
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);

        player.Pause();
        QTRY_COMPARE_WITH_TIMEOUT(player.GetStatus(), VlcStatus::Paused, Tests::Timeouts::Quick);
        player.Pause();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Paused), Tests::Timeouts::Quick);
        QCOMPARE(player.GetStatus(), VlcStatus::Paused);
        const qint64 pausedAt = player.PositionMs();

        // Play() reports every transition afresh, Playing included.
        statuses.clear();
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);
        QVERIFY2(player.PositionMs() >= pausedAt, "resumed from the start instead of where it paused");
        QVERIFY2(player.PositionMs() < 7000, "resumed from the start instead of where it paused");
    }

    void positionCanBeSet()
    {
        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        player.SetMedia(Media(QStringLiteral("music_a.mp3")));
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);
        player.SetPosition(0.75f);
        QTRY_VERIFY_WITH_TIMEOUT(player.Position() >= 0.75f, Tests::Timeouts::Quick);
        QVERIFY(player.PositionMs() >= 5900);
    }

    void bothNullSinksAreOfferedAndNoPseudoDevice()
    {
        VlcWrapper player;
        const auto devices = player.GetAudioDevices();
        QStringList ids;
        for (const auto& device : devices) {
            ids << QString::fromStdString(device.id);
            QVERIFY(!device.selected);
            QVERIFY(!device.description.empty());
            QVERIFY(!VlcWrapper::IsPseudoAudioDevice(device.id));
        }
        QVERIFY2(ids.contains(qEnvironmentVariable("ZELMAR_TEST_SINK_A")), qPrintable(ids.join(',')));
        QVERIFY2(ids.contains(qEnvironmentVariable("ZELMAR_TEST_SINK_B")), qPrintable(ids.join(',')));
    }

    void pseudoDevicesAreRecognised()
    {
        QVERIFY(VlcWrapper::IsPseudoAudioDevice("default"));
        QVERIFY(VlcWrapper::IsPseudoAudioDevice("sysdefault"));
        QVERIFY(VlcWrapper::IsPseudoAudioDevice("null"));
        // Real cards, whichever way ALSA or PulseAudio name them, stay.
        QVERIFY(!VlcWrapper::IsPseudoAudioDevice("sysdefault:CARD=PCH"));
        QVERIFY(!VlcWrapper::IsPseudoAudioDevice("hw:CARD=PCH,DEV=0"));
        QVERIFY(!VlcWrapper::IsPseudoAudioDevice("alsa_output.pci-0000_00_1f.3.analog-stereo"));
    }

    void playsOnTheChosenSinkOnly()
    {
        Tests::TwoSinkListener listener;
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));

        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        player.SetAudioOutput(qPrintable(qEnvironmentVariable("ZELMAR_TEST_SINK_B")));
        player.SetMedia(Media(QStringLiteral("short_a.mp3")));
        const double playedFrom = listener.SecondsRecorded();
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Ended), Tests::Timeouts::Playback);
        QVERIFY(listener.WaitUntilRecorded(playedFrom + 2.0, Tests::Timeouts::Playback));
        listener.Stop();

        const double heard = Tests::ToneTimeline::FirstHeard(listener.B(), A, Heard, playedFrom);
        QVERIFY2(heard >= 0, "nothing was heard on sink B");
        QVERIFY2(Tests::PcmAnalysis::Rms(listener.A(), 0, Tests::ToneTimeline::Seconds(listener.A())) <
                     NotHeard,
                 "the default sink played too");
    }

    void chosenSinkAndVolumeOutlastStop()
    {
        // libvlc replaces a player's audio output after a stop; the next playback
        // must still go to the chosen sink, at the chosen volume, from its start.
        Tests::TwoSinkListener listener;
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));

        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        player.SetAudioOutput(qPrintable(qEnvironmentVariable("ZELMAR_TEST_SINK_B")));
        player.SetVolume(70);
        player.SetMedia(Media(QStringLiteral("music_a.mp3")));
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);
        QTRY_COMPARE_WITH_TIMEOUT(player.Volume(), 70, Tests::Timeouts::Quick);
        const double firstPlaybackFrom = listener.SecondsRecorded();
        QVERIFY(listener.WaitUntilRecorded(firstPlaybackFrom + 0.8, Tests::Timeouts::Playback));
        const double atSeventy =
            Tests::ToneTimeline::Level(listener.B(), A, firstPlaybackFrom + 0.3, firstPlaybackFrom + 0.8);
        player.Stop();

        statuses.clear();
        player.SetMedia(Media(QStringLiteral("short_a.mp3")));
        const double playedFrom = listener.SecondsRecorded();
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Ended), Tests::Timeouts::Playback);
        QCOMPARE(player.Volume(), 70);
        QVERIFY(listener.WaitUntilRecorded(playedFrom + 2.0, Tests::Timeouts::Playback));
        listener.Stop();

        QVERIFY2(Tests::PcmAnalysis::Rms(listener.A(), playedFrom, playedFrom + 2.0) < NotHeard,
                 "after the stop the sound went to the default sink");
        const double onset = Tests::ToneTimeline::FirstHeard(listener.B(), A, NotHeard, playedFrom);
        QVERIFY2(onset >= 0, "nothing was heard on sink B");
        // From its first moment the second playback sounds at 70, not at libvlc's
        // fresh 100. The window where the tone begins is only partly filled, so it
        // can only be quieter: it is held to "not louder", and the windows after it
        // to the level heard before the stop.
        constexpr double Window = Tests::ToneTimeline::Window;
        for (int window = 0; window < 3; ++window) {
            const double at = onset + window * Window;
            const double level = Tests::ToneTimeline::Level(listener.B(), A, at, at + Window);
            QVERIFY2(
                level < atSeventy * 1.25,
                qPrintable(
                    QStringLiteral("%1 at %2 s, %3 at 70 before").arg(level).arg(at - onset).arg(atSeventy)));
        }
        const double start = Tests::ToneTimeline::Level(listener.B(), A, onset + Window, onset + 4 * Window);
        QVERIFY2(std::abs(start - atSeventy) < atSeventy * 0.25,
                 qPrintable(QStringLiteral("%1 at the start, %2 at 70 before").arg(start).arg(atSeventy)));
    }

    void volumeAndMuteAreHeard()
    {
        Tests::TwoSinkListener listener;
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        player.SetMedia(Media(QStringLiteral("music_a.mp3")));
        player.SetVolume(100);
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);

        const double full = ListenFor(listener, 0.6);
        QVERIFY2(full > Heard, qPrintable(QString::number(full)));
        player.SetVolume(70);
        // PulseAudio confirms a volume asynchronously; libvlc reads back the
        // confirmed one.
        QTRY_COMPARE_WITH_TIMEOUT(player.Volume(), 70, Tests::Timeouts::Quick);
        double lower = -1;
        QVERIFY2(
            listener.WaitForToneLevel(
                A, [&](double level) { return level < full * 0.7; }, 0.6, Tests::Timeouts::Playback, &lower),
            qPrintable(QStringLiteral("%1 at 70 against %2 at 100").arg(lower).arg(full)));
        QVERIFY2(lower > NotHeard, qPrintable(QString::number(lower)));
        player.SetMute(true);
        double muted = -1;
        QVERIFY2(
            listener.WaitForToneLevel(
                A, [](double level) { return level < NotHeard; }, 0.6, Tests::Timeouts::Playback, &muted),
            qPrintable(QString::number(muted)));
        player.SetMute(false);
        double unmuted = -1;
        QVERIFY2(listener.WaitForToneLevel(
                     A, [&](double level) { return std::abs(level - lower) < lower * 0.3; }, 0.6,
                     Tests::Timeouts::Playback, &unmuted),
                 qPrintable(QStringLiteral("%1 after unmuting, %2 before").arg(unmuted).arg(lower)));
        player.Stop();
    }

    void equaliserIsAppliedAndRemoved()
    {
        Tests::TwoSinkListener listener;
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        player.SetMedia(Media(QStringLiteral("music_a.mp3")));
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Playing), Tests::Timeouts::Playback);

        const double plain = ListenFor(listener, 0.6);
        QVERIFY2(plain > Heard, qPrintable(QString::number(plain)));
        player.SetAmplifier(VlcWrapper::GetMinAmplifierValue());
        player.SetEqualizerBands(
            std::vector<double>(VlcWrapper::GetEqualizerBandCount(), VlcWrapper::GetMinBandValue()));
        double equalised = -1;
        QVERIFY2(
            listener.WaitForToneLevel(
                A, [&](double level) { return level < plain * 0.2; }, 0.6, Tests::Timeouts::Playback,
                &equalised),
            qPrintable(QStringLiteral("%1 with the equaliser cut, %2 without").arg(equalised).arg(plain)));
        player.RemoveEqualizer();
        double restored = -1;
        QVERIFY2(listener.WaitForToneLevel(
                     A, [&](double level) { return level > plain * 0.7; }, 0.6, Tests::Timeouts::Playback,
                     &restored),
                 qPrintable(
                     QStringLiteral("%1 after removing the equaliser, %2 before").arg(restored).arg(plain)));
        player.Stop();
    }

    void equaliserFactsAndPresets()
    {
        const unsigned bands = VlcWrapper::GetEqualizerBandCount();
        QCOMPARE(bands, 10u);
        for (unsigned band = 1; band < bands; ++band) {
            QVERIFY(VlcWrapper::GetEqualizerBandFrequency(band) >
                    VlcWrapper::GetEqualizerBandFrequency(band - 1));
        }
        QCOMPARE(VlcWrapper::GetMinBandValue(), -20.0);
        QCOMPARE(VlcWrapper::GetMaxBandValue(), 20.0);
        QCOMPARE(VlcWrapper::GetMinAmplifierValue(), -20.0);
        QCOMPARE(VlcWrapper::GetMaxAmplifierValue(), 20.0);

        const auto presets = VlcWrapper::GetPresets();
        QVERIFY(presets.size() >= 10);
        for (const auto& preset : presets) {
            QVERIFY(!preset.Name().empty());
            QCOMPARE(preset.Bands().size(), static_cast<std::size_t>(bands));
            QVERIFY(preset.Equal(preset.Amplifier(), preset.Bands()));
        }
        // libvlc's first preset is the flat one.
        QCOMPARE(presets.front().Name(), std::string("Flat"));
        QVERIFY(std::all_of(presets.front().Bands().begin(), presets.front().Bands().end(),
                            [](double band) { return band == 0.0; }));
        // The presets differ from one another.
        QVERIFY(!presets[1].Equal(presets[0].Amplifier(), presets[0].Bands()));
    }

    void presetMatchingTolerance()
    {
        const AudioPreset preset("Тест", 5.0, {1.0, -2.0, 3.5});
        QVERIFY(preset.Equal(5.0, {1.0, -2.0, 3.5}));
        QVERIFY(preset.Equal(5.05, {1.05, -2.05, 3.45}));
        QVERIFY(!preset.Equal(5.2, {1.0, -2.0, 3.5}));
        QVERIFY(!preset.Equal(5.0, {1.0, -2.0, 3.65}));
        QVERIFY(!preset.Equal(5.0, {1.0, -2.0}));
        QVERIFY(!preset.Equal(5.0, {1.0, -2.0, 3.5, 0.0}));
    }

    void scaleCoversTheWidget()
    {
        QVERIFY(qAbs(VlcWrapper::ScaleToCover(QSize(960, 720), QSize(1920, 1080)) - 0.6667) < 0.001);
        QCOMPARE(VlcWrapper::ScaleToCover(QSize(640, 360), QSize(320, 240)), 2.0);
        QCOMPARE(VlcWrapper::ScaleToCover(QSize(320, 240), QSize(320, 240)), 1.0);
        QCOMPARE(VlcWrapper::ScaleToCover(QSize(640, 360), QSize(0, 0)), 0.0);
    }

    void fileNamesWithReservedCharactersPlay()
    {
        // Cached file names come from the server: spaces, Cyrillic, "#" and "%"
        // must not turn into a URL fragment or an escape.
        const QString name = dataDirectory->FilePath(QStringLiteral("Тон №1 #2 100% ?.mp3"));
        QVERIFY(QFile::copy(Tests::TestMedia::Path(QStringLiteral("short_a.mp3")), name));
        VlcWrapper player;
        QSignalSpy statuses(&player, &VlcWrapper::mediaStatusChanged);
        player.SetMedia(QUrl::fromLocalFile(name));
        player.Play();
        QTRY_VERIFY_WITH_TIMEOUT(Contains(statuses, VlcStatus::Ended), Tests::Timeouts::Playback);
        QVERIFY2(Contains(statuses, VlcStatus::Playing), qPrintable(Describe(Statuses(statuses))));
    }

private:
    // The level of tone A on the default sink over `seconds`, from a moment after
    // the change just made has reached the sink: libvlc has some audio decoded
    // ahead, and an equaliser change restarts its filters.
    double ListenFor(Tests::TwoSinkListener& listener, double seconds, double settle = 0.4)
    {
        const double from = listener.SecondsRecorded() + settle;
        const double to = from + seconds;
        if (!listener.WaitUntilRecorded(to, Tests::Timeouts::Playback)) {
            qWarning("the recording stalled");
            return -1.0;
        }
        return Tests::ToneTimeline::Level(listener.A(), A, from, to);
    }

    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::TestSinksKeepAlive> sinks;
};

QTEST_GUILESS_MAIN(VlcWrapperTest)
#include "tst_vlc_wrapper.moc"
