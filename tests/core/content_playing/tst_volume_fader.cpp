#include "core/content_playing/volume_fader.h"
#include "core/vendor/vlc_wrapper.h"
#include "tests/support/test_timeouts.h"

using Core::ContentPlaying::VolumeFader;
using Core::Vendor::VlcWrapper;

namespace {

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
        for (const auto& [at, read] : samples) {
            volume = at <= seconds ? read : volume;
        }
        return volume;
    }

    // How many steps there were, all the given way (-1 down, +1 up); -1 when one went
    // the other way.
    int Steps(int direction) const
    {
        int steps = 0;
        for (std::size_t i = 1; i < samples.size(); ++i) {
            const int step = samples[i].second - samples[i - 1].second;
            if (step * direction < 0) {
                return -1;
            }
            steps += step != 0 ? 1 : 0;
        }
        return steps;
    }

    std::vector<std::pair<double, int>> samples;

private:
    QElapsedTimer clock;
    QTimer timer;
};

// libvlc reads back the volume PulseAudio has confirmed.
bool SetVolume(VlcWrapper& player, int volume)
{
    player.SetVolume(volume);
    return QTest::qWaitFor([&]() { return player.Volume() == volume; }, Tests::Timeouts::Quick);
}

} // namespace

// The crossfade's volume ramps, read back from a real player: down in a straight
// line, up along an out-cubic curve, both in 200 ms steps.
class VolumeFaderTest : public QObject
{
    Q_OBJECT

private slots:
    void fadesFollowTheirCurves_data()
    {
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("to");
        QTest::addColumn<int>("halfwayLow");
        QTest::addColumn<int>("halfwayHigh");
        QTest::addColumn<int>("lastLow");
        QTest::addColumn<int>("lastHigh");
        // About half at half time; the last step close to silence, without a jump to 0.
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
        QVERIFY2(SetVolume(player, from), "no volume confirmed: register the test with NEEDS sound");
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

        // Nothing moves before the first 200 ms step; four or five steps in a second.
        QCOMPARE(probe.At(0.15), from);
        const int halfway = probe.At(0.55);
        QVERIFY2(halfway >= halfwayLow && halfway <= halfwayHigh, qPrintable(QString::number(halfway)));
        const int last = probe.samples.back().second;
        QVERIFY2(last >= lastLow && last <= lastHigh, qPrintable(QString::number(last)));
        const int steps = probe.Steps(to > from ? 1 : -1);
        QVERIFY2(steps >= 3 && steps <= 6, qPrintable(QString::number(steps)));
        QVERIFY(fader.GetRemainingSeconds() > 1.0);
    }

    void noFadeWithoutAPlayerOrALength()
    {
        VlcWrapper player;
        QVERIFY(SetVolume(player, 100));
        VolumeFader fader;
        fader.FadeOut(nullptr, 1.0);
        fader.FadeOut(&player, 0.0);
        fader.FadeIn(&player, 50, -1.0);
        QVERIFY(fader.IsFinished());
        QVERIFY(!QTest::qWaitFor([&]() { return player.Volume() != 100; }, Tests::Timeouts::Silence));
    }
};

QTEST_GUILESS_MAIN(VolumeFaderTest)
#include "tst_volume_fader.moc"
