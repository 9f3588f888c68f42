#include "core/content_playing/volume_fader.h"
#include "core/vendor/vlc_wrapper.h"
#include "tests/support/test_timeouts.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QtTest>

#include <vector>

using Core::ContentPlaying::VolumeFader;
using Core::Vendor::VlcWrapper;

namespace {

struct Sample
{
    double seconds;
    int volume;
};

// Reads the player's volume every 20 ms while it lives.
class VolumeProbe
{
public:
    explicit VolumeProbe(VlcWrapper& player)
    {
        clock.start();
        QObject::connect(&timer, &QTimer::timeout, &timer, [this, &player]() {
            samples.push_back({static_cast<double>(clock.nsecsElapsed()) / 1e9, player.Volume()});
        });
        timer.start(20);
    }

    // The last volume read at or before `seconds`.
    int At(double seconds) const
    {
        int volume = -1;
        for (const auto& sample : samples) {
            if (sample.seconds <= seconds) {
                volume = sample.volume;
            }
        }
        return volume;
    }

    std::vector<Sample> samples;

private:
    QElapsedTimer clock;
    QTimer timer;
};

} // namespace

// The crossfade's volume ramps, read back from a real player: down in a straight
// line, up along an out-cubic curve, both in 200 ms steps, and nothing at all for
// a missing player or a fade of no length.
class VolumeFaderTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(!qEnvironmentVariableIsEmpty("PULSE_SERVER"), "register the test with NEEDS sound");
    }

    void fadeOutGoesDownInAStraightLine()
    {
        VlcWrapper player;
        player.SetVolume(80);
        QTRY_COMPARE_WITH_TIMEOUT(player.Volume(), 80, Tests::Timeouts::Quick);

        VolumeFader fader;
        QVERIFY(fader.IsFinished());
        VolumeProbe probe(player);
        fader.FadeOut(&player, 1.0);
        QVERIFY(!fader.IsFinished());
        QTRY_VERIFY_WITH_TIMEOUT(fader.IsFinished(), Tests::Timeouts::Quick);

        // Nothing moves before the first 200 ms step; halfway it is about half.
        QCOMPARE(probe.At(0.15), 80);
        const int halfway = probe.At(0.55);
        QVERIFY2(halfway >= 30 && halfway <= 50, qPrintable(QString::number(halfway)));
        // The last step stays: close to silence, without a jump to exactly 0.
        const int last = probe.samples.back().volume;
        QVERIFY2(last <= 20, qPrintable(QString::number(last)));
        for (std::size_t i = 1; i < probe.samples.size(); ++i) {
            QVERIFY(probe.samples[i].volume <= probe.samples[i - 1].volume);
        }
        // Steps of 200 ms over one second: four or five changes.
        int changes = 0;
        for (std::size_t i = 1; i < probe.samples.size(); ++i) {
            changes += probe.samples[i].volume != probe.samples[i - 1].volume ? 1 : 0;
        }
        QVERIFY2(changes >= 3 && changes <= 6, qPrintable(QString::number(changes)));
        QVERIFY(fader.GetRemainingSeconds() > 1.0);
    }

    void fadeInRisesSteeplyFirst()
    {
        VlcWrapper player;
        player.SetVolume(0);
        QTRY_COMPARE_WITH_TIMEOUT(player.Volume(), 0, Tests::Timeouts::Quick);

        VolumeFader fader;
        VolumeProbe probe(player);
        fader.FadeIn(&player, 80, 1.0);
        QTRY_VERIFY_WITH_TIMEOUT(fader.IsFinished(), Tests::Timeouts::Quick);

        // Out-cubic: 87.5 % of the way at half time, where a straight line would
        // be at 50 %.
        const int halfway = probe.At(0.55);
        QVERIFY2(halfway >= 60 && halfway <= 80, qPrintable(QString::number(halfway)));
        const int last = probe.samples.back().volume;
        QVERIFY2(last >= 75 && last <= 80, qPrintable(QString::number(last)));
        for (std::size_t i = 1; i < probe.samples.size(); ++i) {
            QVERIFY(probe.samples[i].volume >= probe.samples[i - 1].volume);
        }
    }

    void stopHoldsTheVolumeWhereItIs()
    {
        VlcWrapper player;
        player.SetVolume(100);
        QTRY_COMPARE_WITH_TIMEOUT(player.Volume(), 100, Tests::Timeouts::Quick);
        VolumeFader fader;
        fader.FadeOut(&player, 2.0);
        QTRY_VERIFY_WITH_TIMEOUT(player.Volume() < 90, Tests::Timeouts::Quick);
        fader.Stop();
        const int held = player.Volume();
        const double elapsed = fader.GetRemainingSeconds();

        VolumeProbe probe(player);
        // Forty reads, 0.8 s: four steps of a fade that would be running.
        QTRY_VERIFY_WITH_TIMEOUT(probe.samples.size() >= 40, Tests::Timeouts::Quick);
        for (const auto& sample : probe.samples) {
            QCOMPARE(sample.volume, held);
        }
        QCOMPARE(fader.GetRemainingSeconds(), elapsed);
        QVERIFY(!fader.IsFinished());
    }

    void noFadeWithoutAPlayerOrALength()
    {
        VlcWrapper player;
        player.SetVolume(60);
        QTRY_COMPARE_WITH_TIMEOUT(player.Volume(), 60, Tests::Timeouts::Quick);

        VolumeFader fader;
        fader.FadeOut(nullptr, 1.0);
        QVERIFY(fader.IsFinished());
        fader.FadeOut(&player, 0.0);
        QVERIFY(fader.IsFinished());
        fader.FadeIn(&player, 100, -1.0);
        QVERIFY(fader.IsFinished());

        VolumeProbe probe(player);
        // Forty reads, 0.8 s: four steps of a fade that would be running.
        QTRY_VERIFY_WITH_TIMEOUT(probe.samples.size() >= 40, Tests::Timeouts::Quick);
        QVERIFY(!probe.samples.empty());
        for (const auto& sample : probe.samples) {
            QCOMPARE(sample.volume, 60);
        }
    }
};

QTEST_GUILESS_MAIN(VolumeFaderTest)
#include "tst_volume_fader.moc"
