#include "core/settings.h"
#include "core/utilities/data_directory.h"
#include "core/vendor/vlc_wrapper.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/support/pcm_analysis.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QFileInfo>
#include <QUrl>
#include <QtTest>

#include <algorithm>
#include <memory>

using Core::Settings;
using Core::Vendor::AudioOutput;
using Core::Vendor::VlcStatus;
using Core::Vendor::VlcWrapper;

namespace {

constexpr double Heard = 0.01;
constexpr double NotHeard = 0.002;

const AudioOutput* Find(const std::vector<AudioOutput>& outputs, const QString& id)
{
    const auto found = std::find_if(outputs.begin(), outputs.end(), [&id](const AudioOutput& output) {
        return output.id == id.toStdString();
    });
    return found == outputs.end() ? nullptr : &*found;
}

} // namespace

// The settings' side of the sound devices, on the two null sinks of the test sound
// server: what is offered and marked, where players go, and the test sound.
class SettingsAudioTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qRegisterMetaType<VlcStatus>();
        sinkA = qEnvironmentVariable("ZELMAR_TEST_SINK_A");
        sinkB = qEnvironmentVariable("ZELMAR_TEST_SINK_B");
        QVERIFY2(!sinkA.isEmpty() && !sinkB.isEmpty(), "register the test with NEEDS sound");
    }

    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
    }

    void cleanup()
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        dataDirectory.reset();
    }

    void theStoredDeviceIsMarkedSelected()
    {
        auto outputs = Settings::GetInstance().GetAudioOutputs();
        QVERIFY(Find(outputs, sinkA) != nullptr);
        QVERIFY(Find(outputs, sinkB) != nullptr);
        QVERIFY(
            std::none_of(outputs.begin(), outputs.end(), [](const auto& output) { return output.selected; }));

        Settings::SetCurrentAudioOutput(*Find(outputs, sinkB));
        outputs = Settings::GetInstance().GetAudioOutputs();
        QVERIFY(Find(outputs, sinkB)->selected);
        QVERIFY(!Find(outputs, sinkA)->selected);
        QCOMPARE(
            std::count_if(outputs.begin(), outputs.end(), [](const auto& output) { return output.selected; }),
            1);
    }

    void playersGoToTheStoredDevice()
    {
        Settings::SetCurrentAudioOutput({sinkB.toStdString(), "B", false});
        const auto [onA, onB] = PlayThroughSettings();
        QVERIFY2(onB > Heard, qPrintable(QString::number(onB)));
        QVERIFY2(onA < NotHeard, qPrintable(QString::number(onA)));
    }

    void aStoredDeviceThatIsGoneLeavesTheDefault()
    {
        Settings::SetCurrentAudioOutput({"alsa_output.unplugged-usb-speaker", "USB", false});
        const auto outputs = Settings::GetInstance().GetAudioOutputs();
        QVERIFY(
            std::none_of(outputs.begin(), outputs.end(), [](const auto& output) { return output.selected; }));

        const auto [onA, onB] = PlayThroughSettings();
        QVERIFY2(onA > Heard, qPrintable(QString::number(onA)));
        QVERIFY2(onB < NotHeard, qPrintable(QString::number(onB)));
    }

    void theTestSoundIsHeardOnTheChosenDevice()
    {
        Tests::TwoSinkListener listener;
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
        const double from = listener.SecondsRecorded();
        Settings::GetInstance().PlayTestSound({sinkB.toStdString(), "B", false});
        QVERIFY(listener.WaitUntilRecorded(from + 3.5, Tests::Timeouts::Playback));
        listener.Stop();

        const QString copy = Core::Utilities::DataDirectory::FilePath(QStringLiteral("zelmar_audiologo.mp3"));
        QVERIFY2(QFileInfo(copy).size() > 10000, qPrintable(copy));
        // The chime opens on E5 and rings for about a second and a half.
        const double onset = Tests::ToneTimeline::FirstHeard(listener.B(), 659.25, NotHeard, from);
        QVERIFY2(onset >= 0, "the test sound was not heard on the chosen sink");
        const double onB = Tests::PcmAnalysis::Rms(listener.B(), onset, onset + 1.0);
        QVERIFY2(onB > Heard, qPrintable(QString::number(onB)));
        QVERIFY2(Tests::PcmAnalysis::Rms(listener.A(), from, from + 3.5) < NotHeard,
                 "the test sound reached sink A");
        QVERIFY2(Tests::PcmAnalysis::Rms(listener.B(), onset + 1.8, onset + 2.3) < NotHeard,
                 "the test sound goes on");
    }

private:
    // Plays a short tone on a player set up by the settings; the tone's level on
    // each sink.
    std::pair<double, double> PlayThroughSettings()
    {
        Tests::TwoSinkListener listener;
        if (!listener.Start()) {
            qWarning("%s", qPrintable(listener.ErrorString()));
            return {-1, -1};
        }
        VlcWrapper player;
        Settings::SetAudioOutputToPlayer(&player);
        player.SetMedia(QUrl::fromLocalFile(Tests::TestMedia::Path(QStringLiteral("short_a.mp3"))));
        const double from = listener.SecondsRecorded();
        player.Play();
        // Measured from the moment the tone begins on either sink: a loaded machine
        // may take a while to open the file, and the tone lasts only 1.5 s.
        const double frequency = Tests::TestMedia::MusicAFrequency;
        double onset = -1;
        const bool heard = QTest::qWaitFor(
            [&]() {
                const double onA = Tests::ToneTimeline::FirstHeard(listener.A(), frequency, NotHeard, from);
                const double onB = Tests::ToneTimeline::FirstHeard(listener.B(), frequency, NotHeard, from);
                onset = onA < 0 ? onB : (onB < 0 ? onA : std::min(onA, onB));
                return onset >= 0;
            },
            Tests::Timeouts::Playback);
        if (!heard) {
            qWarning("the tone was heard on neither sink");
            return {0, 0};
        }
        if (!listener.WaitUntilRecorded(onset + 1.0, Tests::Timeouts::Playback)) {
            return {-1, -1};
        }
        listener.Stop();
        return {Tests::ToneTimeline::Level(listener.A(), frequency, onset, onset + 1.0),
                Tests::ToneTimeline::Level(listener.B(), frequency, onset, onset + 1.0)};
    }

    QString sinkA;
    QString sinkB;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
};

QTEST_GUILESS_MAIN(SettingsAudioTest)
#include "tst_settings_audio.moc"
