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
    // Only the three exact names are known kinds; anything else the server sends
    // is shown as a photo and written back as "photo".
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
    }

    void fromStringIsExactAndFallsBackToPhoto()
    {
        QFETCH(QString, text);
        QFETCH(ContentType, expected);
        const ContentType type = Playback::ContentTypeFromString(text.toStdString());
        QCOMPARE(type, expected);
        const QString back = QString::fromStdString(Playback::ContentTypeToString(type));
        QCOMPARE(back, expected == ContentType::Photo ? QStringLiteral("photo") : text);
        QCOMPARE(Playback::ContentTypeToString(static_cast<ContentType>(-1)), std::string("photo"));
    }

    // Database rows and the stored configuration's content list rely on this order.
    void allContentTypesAreInTypeOrder()
    {
        QCOMPARE(Playback::AllContentTypes(),
                 std::vector<ContentType>(
                     {ContentType::Clip, ContentType::Music, ContentType::Video, ContentType::Photo}));
    }

    // The catalogue shares 1 to 3 with the schedule, but its 0 is not advertising.
    void catalogueTypeZeroIsStockMusicNotClip()
    {
        QCOMPARE(Playlists::PlaylistContentTypeToString(Playlists::PlaylistContentType::StockMusic),
                 std::string("stock_music"));
        for (int value = 1; value <= 3; ++value) {
            QCOMPARE(
                Playlists::PlaylistContentTypeToString(static_cast<Playlists::PlaylistContentType>(value)),
                Playback::ContentTypeToString(static_cast<ContentType>(value)));
        }
        QCOMPARE(Playlists::PlaylistContentTypeToString(static_cast<Playlists::PlaylistContentType>(9)),
                 std::string("photo"));
    }

    // Readers and writers use checked access on these keys, and advertising has no
    // playlist of a period.
    void aNewPeriodHoldsExactlyTheThreeContentKeys()
    {
        const Playback::PlaybackPeriod period;
        QCOMPARE(period.playlistIds,
                 (std::map<ContentType, std::int32_t>{
                     {ContentType::Music, 0}, {ContentType::Video, 0}, {ContentType::Photo, 0}}));
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
