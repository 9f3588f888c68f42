#include "core/settings.h"
#include "core/utilities/data_directory.h"
#include "core/vendor/vlc_wrapper.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/support/pcm_analysis.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

using Core::Settings;
using Tests::ToneTimeline;

// The settings' side of the sound devices, on the two null sinks of the test sound
// server: what is offered and marked, where players go, and the test sound.
class SettingsAudioTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        listener = std::make_unique<Tests::TwoSinkListener>();
        QVERIFY2(listener->Start(), qPrintable(listener->ErrorString()));
    }

    void cleanup()
    {
        listener.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        dataDirectory.reset();
    }

    void playersGoToTheStoredDevice_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("onB");
        QTest::newRow("sink B") << qEnvironmentVariable("ZELMAR_TEST_SINK_B") << true;
        // A device that is gone is not marked, and the default plays.
        QTest::newRow("unplugged") << QStringLiteral("alsa_output.unplugged-usb-speaker") << false;
    }

    void playersGoToTheStoredDevice()
    {
        QFETCH(QString, stored);
        QFETCH(bool, onB);
        // Each device offered once, marked with a star when it is the stored one.
        const auto offered = []() {
            QStringList ids;
            for (const auto& output : Settings::GetInstance().GetAudioOutputs()) {
                ids << QString::fromStdString(output.id) + (output.selected ? "*" : "");
            }
            return ids;
        };
        QVERIFY2(offered().contains(qEnvironmentVariable("ZELMAR_TEST_SINK_A")) &&
                     offered().contains(qEnvironmentVariable("ZELMAR_TEST_SINK_B")),
                 qPrintable(offered().join(' ')));
        Settings::SetCurrentAudioOutput({stored.toStdString(), "stored", false});
        QCOMPARE(offered().filter(QStringLiteral("*")), onB ? QStringList{stored + "*"} : QStringList{});

        Core::Vendor::VlcWrapper player;
        Settings::SetAudioOutputToPlayer(&player);
        player.SetMedia(QUrl::fromLocalFile(Tests::TestMedia::Path(QStringLiteral("short_a.mp3"))));
        const double from = listener->SecondsRecorded();
        player.Play();
        const auto& chosen = onB ? listener->B() : listener->A();
        const auto& other = onB ? listener->A() : listener->B();
        // ToneTimeline::Heard whenever it is heard: a loaded machine may take a while to open the
        // file, and some of its start may not reach the sink.
        const double frequency = Tests::TestMedia::MusicAFrequency;
        double onset = -1;
        QVERIFY2(QTest::qWaitFor(
                     [&]() {
                         return (onset = ToneTimeline::FirstHeard(chosen, frequency, ToneTimeline::NotHeard,
                                                                  from)) >= 0;
                     },
                     Tests::Timeouts::Playback),
                 "the tone was not heard on the sink it should go to");
        QVERIFY(listener->WaitUntilRecorded(onset + 1.5, Tests::Timeouts::Playback));
        const double level = ToneTimeline::Loudest(chosen, frequency, onset, onset + 1.5);
        QVERIFY2(level > ToneTimeline::Heard, qPrintable(QString::number(level)));
        QVERIFY(Tests::PcmAnalysis::Rms(other, from, onset + 1.5) < ToneTimeline::NotHeard);
    }

    void theTestSoundIsHeardOnTheChosenDevice()
    {
        const double from = listener->SecondsRecorded();
        Settings::GetInstance().PlayTestSound(
            {qEnvironmentVariable("ZELMAR_TEST_SINK_B").toStdString(), "B", false});
        QVERIFY(listener->WaitUntilRecorded(from + 3.5, Tests::Timeouts::Playback));

        const QString copy = Core::Utilities::DataDirectory::FilePath(QStringLiteral("zelmar_audiologo.mp3"));
        QVERIFY2(QFileInfo(copy).size() > 10000, qPrintable(copy));
        // The chime opens on E5 and rings for about a second and a half; however much
        // of its start is lost, it has ended 1.8 s after it is first heard.
        const double onset = ToneTimeline::FirstHeard(listener->B(), 659.25, ToneTimeline::NotHeard, from);
        QVERIFY2(onset >= 0, "the test sound was not heard on the chosen sink");
        QVERIFY(listener->WaitUntilRecorded(onset + 2.3, Tests::Timeouts::Playback));
        QVERIFY2(Tests::PcmAnalysis::Rms(listener->A(), from, onset + 2.3) < ToneTimeline::NotHeard,
                 "the test sound reached sink A");
        QVERIFY2(Tests::PcmAnalysis::Rms(listener->B(), onset + 1.8, onset + 2.3) < ToneTimeline::NotHeard,
                 "the test sound goes on");
    }

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::TwoSinkListener> listener;
};

QTEST_GUILESS_MAIN(SettingsAudioTest)
#include "tst_settings_audio.moc"
