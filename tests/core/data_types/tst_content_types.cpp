#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/playback_configuration.h"
#include "core/data_types/playback/playback_period.h"
#include "core/data_types/playlists/playlist_content_type.h"

#include <QtTest>

#include <string>

using namespace Core::DataTypes;
using Playback::ContentType;

Q_DECLARE_METATYPE(ContentType)

class ContentTypesTest : public QObject
{
    Q_OBJECT

private slots:
    void fromStringIsExactAndFallsBackToPhoto_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<ContentType>("expected");
        QTest::newRow("clip") << "clip" << ContentType::Clip;
        QTest::newRow("music") << "music" << ContentType::Music;
        QTest::newRow("video") << "video" << ContentType::Video;
        QTest::newRow("photo") << "photo" << ContentType::Photo;
        QTest::newRow("capital letter") << "Music" << ContentType::Photo;
        QTest::newRow("trailing blank") << "video " << ContentType::Photo;
        QTest::newRow("catalogue's stock music") << "stock_music" << ContentType::Photo;
        QTest::newRow("empty") << "" << ContentType::Photo;
        QTest::newRow("unknown word") << "hologram" << ContentType::Photo;
    }

    void fromStringIsExactAndFallsBackToPhoto()
    {
        QFETCH(QString, text);
        QFETCH(ContentType, expected);
        const ContentType type = Playback::ContentTypeFromString(text.toStdString());
        QCOMPARE(type, expected);
        // Whatever is not one of the three exact names comes back as "photo".
        const std::string back = Playback::ContentTypeToString(type);
        if (expected == ContentType::Photo) {
            QCOMPARE(back, std::string("photo"));
        } else {
            QCOMPARE(QString::fromStdString(back), text);
        }
    }

    void toStringOfAnOutOfRangeValueIsPhoto()
    {
        QCOMPARE(Playback::ContentTypeToString(static_cast<ContentType>(7)), std::string("photo"));
        QCOMPARE(Playback::ContentTypeToString(static_cast<ContentType>(-1)), std::string("photo"));
    }

    void allContentTypesAreInTypeOrder()
    {
        const auto all = Playback::AllContentTypes();
        QCOMPARE(all.size(), std::size_t(4));
        for (std::size_t i = 0; i < all.size(); ++i) {
            QCOMPARE(static_cast<int>(all[i]), static_cast<int>(i));
        }
    }

    void catalogueTypeZeroIsStockMusicNotClip()
    {
        QCOMPARE(Playlists::PlaylistContentTypeToString(Playlists::PlaylistContentType::StockMusic),
                 std::string("stock_music"));
        QCOMPARE(Playback::ContentTypeToString(static_cast<ContentType>(0)), std::string("clip"));
        for (int value = 1; value <= 3; ++value) {
            QCOMPARE(
                Playlists::PlaylistContentTypeToString(static_cast<Playlists::PlaylistContentType>(value)),
                Playback::ContentTypeToString(static_cast<ContentType>(value)));
        }
        QCOMPARE(Playlists::PlaylistContentTypeToString(static_cast<Playlists::PlaylistContentType>(9)),
                 std::string("photo"));
    }

    void defaultPeriodHoldsExactlyTheThreeContentKeys()
    {
        Playback::PlaybackPeriod period;
        QCOMPARE(period.scheduleId, -1);
        QCOMPARE(period.playlistIds.size(), std::size_t(3));
        QCOMPARE(period.playlistIds.count(ContentType::Clip), std::size_t(0));
        for (const auto type : {ContentType::Music, ContentType::Video, ContentType::Photo}) {
            QCOMPARE(period.playlistIds.at(type), 0);
        }
        period.playlistIds.at(ContentType::Music) = 42;
        QCOMPARE(period.playlistIds.size(), std::size_t(3));
        QCOMPARE(period.playlistIds.at(ContentType::Music), 42);
    }

    void equalityNoticesEveryNestedField()
    {
        Playback::PlaybackConfiguration a;
        a.days.resize(1);
        a.days[0].periods.resize(1);
        a.tracks[ContentType::Music].resize(1);
        a.adBlocks.resize(1);
        a.adBlocks[0].tracks.push_back({"21.11.2026", 5});

        auto b = a;
        QVERIFY(a == b);
        b.days[0].periods[0].playlistIds.at(ContentType::Photo) = 1;
        QVERIFY(a != b);

        b = a;
        b.tracks[ContentType::Music][0].likeStatus = Playback::LikeStatus::Liked;
        QVERIFY(a != b);

        b = a;
        b.adBlocks[0].tracks[0].date = "22.11.2026";
        QVERIFY(a != b);

        b = a;
        b.tracks[ContentType::Photo];
        QVERIFY2(a != b, "an empty list under a new key is still a difference");
    }
};

QTEST_GUILESS_MAIN(ContentTypesTest)
#include "tst_content_types.moc"
