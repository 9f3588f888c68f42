#include "tests/support/pcm_analysis.h"
#include "tests/support/test_media.h"

#include <QImage>

// The generated media are what every playback test stands on: the tones must be
// distinct and as long as the tests assume, and the broken files really broken.
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

    void photosHaveBothOrientationsAndBrokenFilesAreBroken()
    {
        QCOMPARE(QImage(Tests::TestMedia::Path(QStringLiteral("photo_landscape.jpg"))).size(),
                 QSize(640, 360));
        QCOMPARE(QImage(Tests::TestMedia::Path(QStringLiteral("photo_portrait.jpg"))).size(),
                 QSize(360, 640));
        QVERIFY(QImage(Tests::TestMedia::Path(QStringLiteral("broken.jpg"))).isNull());
        QCOMPARE(QFileInfo(Tests::TestMedia::Path(QStringLiteral("empty.mp3"))).size(), qint64(0));
    }
};

QTEST_GUILESS_MAIN(MediaFixtureTest)
#include "tst_media_fixture.moc"
