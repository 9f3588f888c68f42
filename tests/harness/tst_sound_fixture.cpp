#include "tests/support/pcm_analysis.h"
#include "tests/support/sink_recorder.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

// The private sound server with its two null sinks is how the playback tests hear
// what the player did: sound sent to one sink is heard on its monitor and not on the
// other, and plays out in real time.
class SoundFixtureTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(!qEnvironmentVariableIsEmpty("PULSE_SERVER"), "register the test with NEEDS sound");
    }

    void soundPlayedOnOneSinkIsHeardOnlyThere()
    {
        // paplay speaks WAV, so the tone is decoded once into a temporary file.
        QTemporaryDir directory;
        const QString wav = directory.filePath(QStringLiteral("music_a.wav"));
        QVERIFY2(QProcess::execute(QStringLiteral("ffmpeg"),
                                   {QStringLiteral("-nostdin"), QStringLiteral("-loglevel"),
                                    QStringLiteral("error"), QStringLiteral("-i"),
                                    Tests::TestMedia::Path(QStringLiteral("music_a.mp3")), wav}) == 0,
                 "ffmpeg failed (run scripts/install-deps)");

        const QString sinkA = qEnvironmentVariable("ZELMAR_TEST_SINK_A");
        Tests::SinkRecorder onA(sinkA);
        Tests::SinkRecorder onB(qEnvironmentVariable("ZELMAR_TEST_SINK_B"));
        QVERIFY2(onA.Start(), qPrintable(onA.ErrorString()));
        QVERIFY2(onB.Start(), qPrintable(onB.ErrorString()));

        QProcess player;
        player.start(QStringLiteral("paplay"), {QStringLiteral("--device=") + sinkA, wav});
        QVERIFY2(player.waitForStarted(), qPrintable(player.errorString()));
        QTRY_COMPARE_WITH_TIMEOUT(player.state(), QProcess::NotRunning, Tests::Timeouts::Playback);
        QCOMPARE(player.exitCode(), 0);
        onA.Stop();
        onB.Stop();

        // A null sink clocks samples out in real time: the tone spans seconds of
        // the recording, not a moment. On a busy machine stretches of it, mostly
        // near its start, may never reach the sink, so its first and last audible
        // quarter seconds are held only to lie more than half its length apart.
        const double frequency = Tests::TestMedia::MusicAFrequency;
        double first = -1;
        double last = -1;
        for (double at = 0; at + 0.25 <= onA.SecondsRecorded(); at += 0.25) {
            if (Tests::PcmAnalysis::ToneLevel(onA.Samples(), frequency, at, at + 0.25) > 0.01) {
                first = first < 0 ? at : first;
                last = at + 0.25;
            }
        }
        QVERIFY2(first >= 0, "the tone was not heard on its sink");
        QVERIFY2(last - first > Tests::TestMedia::MusicSeconds / 2.0,
                 qPrintable(QStringLiteral("heard from %1 s to %2 s").arg(first).arg(last)));
        QVERIFY2(onB.SecondsRecorded() > 1.0, "the other sink's monitor was not recorded");
        QVERIFY2(Tests::PcmAnalysis::Rms(onB.Samples(), 0, onB.SecondsRecorded()) < 0.001,
                 "sound leaked onto the other sink");
    }
};

QTEST_GUILESS_MAIN(SoundFixtureTest)
#include "tst_sound_fixture.moc"
