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
            volume = sample.seconds <= seconds ? sample.volume : volume;
        }
        return volume;
    }

    // Whether every step went the given way (-1 down, +1 up, 0 nowhere), and
    // how many steps there were.
    bool Monotonic(int direction, int* changes = nullptr) const
    {
        int steps = 0;
        for (std::size_t i = 1; i < samples.size(); ++i) {
            const int step = samples[i].volume - samples[i - 1].volume;
            if (step * direction < 0 || (direction == 0 && step != 0)) {
                return false;
            }
            steps += step != 0 ? 1 : 0;
        }
        if (changes != nullptr) {
            *changes = steps;
        }
        return true;
    }

    std::vector<Sample> samples;

private:
    QElapsedTimer clock;
    QTimer timer;
};

// A player whose volume PulseAudio has confirmed: libvlc reads back the confirmed
// one.
bool SetVolume(VlcWrapper& player, int volume)
{
    player.SetVolume(volume);
    return QTest::qWaitFor([&]() { return player.Volume() == volume; }, Tests::Timeouts::Quick);
}

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

    void fadesFollowTheirCurves_data()
    {
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("to");
        QTest::addColumn<int>("halfwayLow");
        QTest::addColumn<int>("halfwayHigh");
        QTest::addColumn<int>("lastLow");
        QTest::addColumn<int>("lastHigh");
        // About half at half time; the last step stays close to silence, without
        // a jump to exactly 0.
        QTest::newRow("out, straight") << 80 << 0 << 30 << 50 << 0 << 20;
        // 87.5 % of the way at half time, where a straight line would be at 50 %.
        QTest::newRow("in, out-cubic") << 0 << 80 << 60 << 80 << 75 << 80;
    }

    void fadesFollowTheirCurves()
    {
        QFETCH(int, from);
        QFETCH(int, to);
        QFETCH(int, halfwayLow);
        QFETCH(int, halfwayHigh);
        QFETCH(int, lastLow);
        QFETCH(int, lastHigh);
        VlcWrapper player;
        QVERIFY(SetVolume(player, from));
        VolumeFader fader;
        QVERIFY(fader.IsFinished());
        VolumeProbe probe(player);
        if (to == 0) {
            fader.FadeOut(&player, 1.0);
        } else {
            fader.FadeIn(&player, to, 1.0);
        }
        QVERIFY(!fader.IsFinished());
        QTRY_VERIFY_WITH_TIMEOUT(fader.IsFinished(), Tests::Timeouts::Quick);

        // Nothing moves before the first 200 ms step.
        QCOMPARE(probe.At(0.15), from);
        const int halfway = probe.At(0.55);
        QVERIFY2(halfway >= halfwayLow && halfway <= halfwayHigh, qPrintable(QString::number(halfway)));
        const int last = probe.samples.back().volume;
        QVERIFY2(last >= lastLow && last <= lastHigh, qPrintable(QString::number(last)));
        // Steps of 200 ms over one second, all one way: four or five of them.
        int changes = 0;
        QVERIFY(probe.Monotonic(to > from ? 1 : -1, &changes));
        QVERIFY2(changes >= 3 && changes <= 6, qPrintable(QString::number(changes)));
        QVERIFY(fader.GetRemainingSeconds() > 1.0);
    }

    void nothingMovesWithoutAFadeOrAfterStop()
    {
        VlcWrapper player;
        QVERIFY(SetVolume(player, 100));
        VolumeFader fader;
        // No player or no length: no fade begins.
        fader.FadeOut(nullptr, 1.0);
        QVERIFY(fader.IsFinished());
        fader.FadeOut(&player, 0.0);
        QVERIFY(fader.IsFinished());
        fader.FadeIn(&player, 100, -1.0);
        QVERIFY(fader.IsFinished());

        fader.FadeOut(&player, 2.0);
        QTRY_VERIFY_WITH_TIMEOUT(player.Volume() < 90, Tests::Timeouts::Quick);
        fader.Stop();
        const int held = player.Volume();
        const double elapsed = fader.GetRemainingSeconds();
        // Forty reads, 0.8 s: four steps of a fade that would be running.
        VolumeProbe probe(player);
        QTRY_VERIFY_WITH_TIMEOUT(probe.samples.size() >= 40, Tests::Timeouts::Quick);
        QVERIFY(probe.Monotonic(0));
        QCOMPARE(probe.samples.front().volume, held);
        QCOMPARE(fader.GetRemainingSeconds(), elapsed);
        QVERIFY(!fader.IsFinished());
    }
};

QTEST_GUILESS_MAIN(VolumeFaderTest)
#include "tst_volume_fader.moc"
