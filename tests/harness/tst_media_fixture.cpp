#include "tests/support/pcm_analysis.h"
#include "tests/support/test_media.h"

#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QtTest>

// The generated media are what every playback test stands on: the tones must be
// distinct and as long as the tests assume, the video must carry picture and
// sound, and the broken files must really be broken.
class MediaFixtureTest : public QObject
{
    Q_OBJECT

private slots:
    void musicFilesAreDistinctTonesOfTheAnnouncedLength_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("frequency");
        QTest::addColumn<int>("seconds");
        QTest::newRow("music a") << "music_a.mp3" << Tests::TestMedia::MusicAFrequency
                                 << Tests::TestMedia::MusicSeconds;
        QTest::newRow("music b") << "music_b.mp3" << Tests::TestMedia::MusicBFrequency
                                 << Tests::TestMedia::MusicSeconds;
        QTest::newRow("music c") << "music_c.mp3" << Tests::TestMedia::MusicCFrequency
                                 << Tests::TestMedia::MusicSeconds;
        QTest::newRow("ad") << "ad_short.mp3" << Tests::TestMedia::AdFrequency << Tests::TestMedia::AdSeconds;
        QTest::newRow("video's sound")
            << "video.mp4" << Tests::TestMedia::VideoFrequency << Tests::TestMedia::VideoSeconds;
    }

    void musicFilesAreDistinctTonesOfTheAnnouncedLength()
    {
        QFETCH(QString, name);
        QFETCH(int, frequency);
        QFETCH(int, seconds);
        const QString path = Tests::TestMedia::Path(name);
        QVERIFY2(!path.isEmpty(), "generated media missing");

        const auto samples = Tests::PcmAnalysis::DecodeFile(path);
        const double duration = static_cast<double>(samples.size()) / Tests::PcmAnalysis::SampleRate;
        QVERIFY2(qAbs(duration - seconds) < 0.2, qPrintable(QStringLiteral("lasts %1 s").arg(duration)));
        const std::vector<double> allTones = {
            Tests::TestMedia::MusicAFrequency, Tests::TestMedia::MusicBFrequency,
            Tests::TestMedia::MusicCFrequency, Tests::TestMedia::AdFrequency,
            Tests::TestMedia::VideoFrequency};
        QCOMPARE(Tests::PcmAnalysis::SecondsDominatedBy(samples, frequency, allTones), seconds);
    }

    void videoHasPictureAndSound()
    {
        QProcess probe;
        probe.start(QStringLiteral("ffprobe"),
                    {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
                     QStringLiteral("stream=codec_type"), QStringLiteral("-of"), QStringLiteral("csv=p=0"),
                     Tests::TestMedia::Path(QStringLiteral("video.mp4"))});
        QVERIFY2(probe.waitForFinished(10000) && probe.exitCode() == 0, "ffprobe failed");
        QStringList kinds = QString::fromUtf8(probe.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
        kinds.sort();
        QCOMPARE(kinds, QStringList({QStringLiteral("audio"), QStringLiteral("video")}));
    }

    void photosHaveBothOrientations()
    {
        const QImage landscape(Tests::TestMedia::Path(QStringLiteral("photo_landscape.jpg")));
        const QImage portrait(Tests::TestMedia::Path(QStringLiteral("photo_portrait.jpg")));
        QCOMPARE(landscape.size(), QSize(640, 360));
        QCOMPARE(portrait.size(), QSize(360, 640));
    }

    void brokenFilesAreBroken()
    {
        QVERIFY(QImage(Tests::TestMedia::Path(QStringLiteral("broken.jpg"))).isNull());
        QCOMPARE(QFileInfo(Tests::TestMedia::Path(QStringLiteral("empty.mp3"))).size(), qint64(0));
        const QString truncated = Tests::TestMedia::Path(QStringLiteral("truncated.mp3"));
        QVERIFY(QFileInfo(truncated).size() <
                QFileInfo(Tests::TestMedia::Path(QStringLiteral("music_a.mp3"))).size());
        const auto samples = Tests::PcmAnalysis::DecodeFile(truncated);
        QVERIFY2(samples.size() < static_cast<std::size_t>(Tests::PcmAnalysis::SampleRate),
                 "a truncated file must hold well under a second of sound");
    }
};

QTEST_GUILESS_MAIN(MediaFixtureTest)
#include "tst_media_fixture.moc"
