#include "core/networking/json_converter.h"

#include <QJsonDocument>
#include <QtTest>

#include <stdexcept>

using namespace Core::DataTypes::Playback;
using Core::Networking::JsonConverter;
using namespace std::string_literals;

Q_DECLARE_METATYPE(PlaybackConfiguration)
Q_DECLARE_METATYPE(LikeStatus)

namespace {

PlaybackPeriod Period(const char* name, const char* scheduleName, int scheduleId, int musicPlaylistId,
                      int photoPlaylistId)
{
    PlaybackPeriod period;
    period.name = name;
    period.startTime = "08:00:00";
    period.endTime = "23:59:59";
    period.scheduleName = scheduleName;
    period.scheduleId = scheduleId;
    period.contentVolume = 60;
    period.adsVolume = 100;
    period.playlistIds.at(ContentType::Music) = musicPlaylistId;
    period.playlistIds.at(ContentType::Photo) = photoPlaylistId;
    return period;
}

// Every text field carries something a careless writer or reader would mangle:
// Cyrillic, quotes, apostrophes, backslashes, control characters, a NUL, a leading
// byte order mark and a character outside the basic plane.
PlaybackConfiguration SampleConfiguration()
{
    PlaybackConfiguration c;
    c.version = 73;
    c.domains = {"https://cdn.example.ru/media/", "http://10.0.0.2:8080/"};
    c.tracks[ContentType::Clip] = {{501, "ads/скидки.mp3", "Скидки \"недели\"", "Магазин O'Key", "",
                                    "0cc175b9", ContentType::Clip, 48000, 9, true, LikeStatus::None}};
    c.tracks[ContentType::Music] = {{7, "music/a\\b.mp3", "\xEF\xBB\xBFУтро", "Трио «Сумерки»",
                                     "covers/7.jpg", "92eb5ffe", ContentType::Music, 5'000'000, 9, false,
                                     LikeStatus::Liked},
                                    {8, "music/8.mp3", "Строка\nвторая\tтаб", "A\0B"s, "", "",
                                     ContentType::Music, 0, 0, false, LikeStatus::Disliked},
                                    {9, "music/9.mp3", "Смайл \xF0\x9F\x98\x80", "", "", "",
                                     ContentType::Music, -1, 9, false, LikeStatus::None}};
    c.tracks[ContentType::Video] = {};
    c.tracks[ContentType::Photo] = {
        {30, "photo/30.jpg", "Витрина", "", "", "", ContentType::Photo, 1024, 9, true, LikeStatus::Liked}};
    c.playlists = {{11, "Утренний джаз", ContentType::Music, "p/11.png", {7, 8, 9, 7}},
                   {12, "Пусто", ContentType::Video, "", {}},
                   {13, "Фото", ContentType::Photo, "", {30}},
                   {14, "Реклама", ContentType::Clip, "", {501}}};
    c.days = {{"Понедельник",
               "2024-05-06",
               1,
               {Period("Утро", "Будни", 5, 11, 13), Period("Ночь", "", -1, 0, 0)},
               "Будни",
               5},
              {"Вторник", "2024-05-07", 2, {}, "", 0}};
    c.adBlocks = {{"Акция \\ 1+1", true, "10:15:00", {{"2024-05-06", 501}, {"2024-05-07", 501}}},
                  {"Пустой", false, "", {}}};
    return c;
}

QString Body(const char* json)
{
    return QString::fromUtf8(json);
}

// The document the tree writers and QJsonDocument make of a configuration; the
// text writer must produce exactly these bytes, except that it escapes U+FEFF, which
// Qt's parser would drop at the start of a string.
QByteArray QtDocument(const PlaybackConfiguration& c)
{
    QJsonArray content;
    for (const ContentType type : AllContentTypes()) {
        content.append(QJsonObject{{"type", QString::fromStdString(ContentTypeToString(type))},
                                   {"tracks", JsonConverter::TracksToArray(c.tracks.at(type))}});
    }
    const QJsonObject inner{{"version", c.version},
                            {"domains", JsonConverter::DomainsToArray(c.domains)},
                            {"schedule", JsonConverter::DaysToArray(c.days)},
                            {"playlists", JsonConverter::PlaylistsWithTracksToArray(c.playlists)},
                            {"ads", JsonConverter::AdBlocksToArray(c.adBlocks)},
                            {"content", content}};
    return QJsonDocument(QJsonObject{{"configuration", inner}})
        .toJson(QJsonDocument::Indented)
        .replace("\xEF\xBB\xBF", "\\ufeff");
}

} // namespace

class TestJsonConverterConfiguration : public QObject
{
    Q_OBJECT

private slots:
    void emptyConfigurationFromBadBody_data()
    {
        QTest::addColumn<QString>("body");
        QTest::newRow("empty") << QString();
        QTest::newRow("not JSON") << Body("<html>502 Bad Gateway</html>");
        QTest::newRow("truncated") << Body(R"({"configuration": {"version": 5, "domains": [)");
        QTest::newRow("top-level array") << Body(R"([{"configuration": {"version": 5}}])");
        QTest::newRow("configuration not an object") << Body(R"({"configuration": [1, 2]})");
        QTest::newRow("version outside configuration") << Body(R"({"version": 5, "configuration": {}})");
    }
    void emptyConfigurationFromBadBody()
    {
        QFETCH(QString, body);
        const auto configuration = JsonConverter::PlaybackConfigurationFromResponse(body);
        QVERIFY(configuration);
        PlaybackConfiguration expected;
        for (const ContentType type : AllContentTypes()) {
            expected.tracks[type] = {};
        }
        QCOMPARE(*configuration, expected);
    }

    void contentObjectsMatchTheirTypeExactly()
    {
        const auto c =
            JsonConverter::PlaybackConfigurationFromResponse(Body(R"({"configuration": {"content": [
            {"type": "Music", "tracks": [{"id": 1}]},
            {"type": "music", "tracks": [{"id": 2}, {"id": 3}]},
            {"type": "clip", "tracks": [{"id": 4}]},
            {"type": "gif", "tracks": [{"id": 5}]},
            {"type": "music", "tracks": [{"id": 6}]},
            {"type": "photo", "tracks": [{"id": 7}]},
            {"tracks": [{"id": 8}]},
            "video",
            {"type": "video", "tracks": {"id": 9}}
        ]}})"));
        // The kind of each track is its list's, whatever the object said.
        const auto ids = [&c](ContentType type) {
            std::vector<int> result;
            for (const Track& track : c->tracks.at(type)) {
                result.push_back(track.contentType == type ? track.id : -track.id);
            }
            return result;
        };
        QCOMPARE(ids(ContentType::Clip), std::vector<int>({4}));
        QCOMPARE(ids(ContentType::Music), std::vector<int>({2, 3, 6}));
        QCOMPARE(ids(ContentType::Video), std::vector<int>());
        QCOMPARE(ids(ContentType::Photo), std::vector<int>({7}));

        // A kind the player does not know is named "photo", so it reads the photo lists.
        const QJsonArray content =
            QJsonDocument::fromJson(R"([{"type": "photo", "tracks": [{"id": 7}]}])").array();
        const auto unknownKind = static_cast<ContentType>(9);
        const std::vector<Track> tracks = JsonConverter::TracksFromArray(content, unknownKind);
        QCOMPARE(tracks.size(), std::size_t(1));
        QCOMPARE(tracks.front().contentType, unknownKind);
    }

    void likedRule_data()
    {
        QTest::addColumn<QString>("member");
        QTest::addColumn<LikeStatus>("expected");
        QTest::newRow("null") << Body(R"(, "liked": null)") << LikeStatus::None;
        QTest::newRow("true") << Body(R"(, "liked": true)") << LikeStatus::Liked;
        QTest::newRow("false") << Body(R"(, "liked": false)") << LikeStatus::Disliked;
        QTest::newRow("missing") << QString() << LikeStatus::Disliked;
        QTest::newRow("string") << Body(R"(, "liked": "true")") << LikeStatus::Disliked;
        QTest::newRow("number") << Body(R"(, "liked": 1)") << LikeStatus::Disliked;
    }
    void likedRule()
    {
        QFETCH(QString, member);
        QFETCH(LikeStatus, expected);
        const QString body =
            R"({"configuration": {"content": [{"type": "music", "tracks": [{"id": 1)" + member + "}]}]}}";
        const auto c = JsonConverter::PlaybackConfigurationFromResponse(body);
        QCOMPARE(c->tracks.at(ContentType::Music).size(), std::size_t(1));
        QCOMPARE(c->tracks.at(ContentType::Music).front().likeStatus, expected);
    }

    void scheduleRule_data()
    {
        QTest::addColumn<QString>("members");
        QTest::addColumn<int>("scheduleId");
        QTest::addColumn<QString>("scheduleName");
        QTest::newRow("both set") << Body(R"("schedule_id": 7, "schedule_name": "Будни")") << 7 << "Будни";
        QTest::newRow("null id") << Body(R"("schedule_id": null, "schedule_name": "Будни")") << -1 << "";
        QTest::newRow("null name") << Body(R"("schedule_id": 7, "schedule_name": null)") << -1 << "";
        QTest::newRow("both null") << Body(R"("schedule_id": null, "schedule_name": null)") << -1 << "";
        QTest::newRow("both missing") << Body(R"("name": "x")") << 0 << "";
        QTest::newRow("id missing") << Body(R"("schedule_name": "Выходные")") << 0 << "Выходные";
        QTest::newRow("mistyped") << Body(R"("schedule_id": "7", "schedule_name": 7)") << 0 << "";
    }
    void scheduleRule()
    {
        QFETCH(QString, members);
        QFETCH(int, scheduleId);
        QFETCH(QString, scheduleName);
        const auto periods = JsonConverter::PlaybackPeriodsFromArray(
            QJsonDocument::fromJson("[{" + members.toUtf8() + "}]").array());
        QCOMPARE(periods.size(), std::size_t(1));
        QCOMPARE(periods.front().scheduleId, scheduleId);
        QCOMPARE(QString::fromStdString(periods.front().scheduleName), scheduleName);
    }

    void mistypedMembersGiveDefaults()
    {
        const auto c = JsonConverter::PlaybackConfigurationFromResponse(Body(R"({"configuration": {
            "version": "12", "domains": "cdn", "playlists": {"id": 1},
            "schedule": [{"day_of_week": 5, "day_of_week_id": "3", "date": null, "periods": [{
                "name": ["x"], "content_volume": "50", "ads_volume": 70.5, "music_playlist_id": 4.0,
                "video_playlist_id": "4", "photo_playlist_id": 3000000000}]}],
            "ads": [{"name": 1, "interrupt_content": "true", "start_time_str": {}, "tracks": [{"date": 6, "track": "501"}]}],
            "content": [{"type": "music", "tracks": [{"id": "7", "name": 42, "file_size_bytes": 1e12,
                "shop_id": 9.0, "uploaded_by_user": 1, "path": true}]}]}})"));
        QCOMPARE(c->version, 0);
        QVERIFY(c->domains.empty());
        QVERIFY(c->playlists.empty());
        QCOMPARE(c->days.size(), std::size_t(1));
        QCOMPARE(c->days[0], (Day{"", "", 0, c->days[0].periods, "", 0}));
        PlaybackPeriod period;
        period.scheduleId = 0;                         // keys missing, not null
        period.playlistIds.at(ContentType::Music) = 4; // a whole double is an integer
        QCOMPARE(c->days[0].periods, std::vector<PlaybackPeriod>({period}));
        QCOMPARE(c->adBlocks, std::vector<AdBlock>({{"", false, "", {{"", 0}}}}));
        QCOMPARE(c->tracks.at(ContentType::Music),
                 std::vector<Track>(
                     {{0, "", "", "", "", "", ContentType::Music, 0, 9, false, LikeStatus::Disliked}}));
    }

    // Anything in a list that is not an object is read as an empty object.
    void nonObjectElementsGiveDefaults()
    {
        const auto c = JsonConverter::PlaybackConfigurationFromResponse(Body(R"({"configuration": {
            "domains": [1, "cdn.example.ru", null], "playlists": [null, {"id": 4, "tracks": ["1", 2, null]}],
            "schedule": ["Понедельник", {"periods": [true]}], "ads": [[], {"tracks": [3]}],
            "content": [{"type": "photo", "tracks": [null, 5]}]}})"));
        QCOMPARE(c->domains, std::vector<std::string>({"", "cdn.example.ru", ""}));
        // An empty "content_type" is no known kind, and unknown kinds are photos.
        QCOMPARE(c->playlists, std::vector<Playlist>({{0, "", ContentType::Photo, "", {}},
                                                      {4, "", ContentType::Photo, "", {0, 2, 0}}}));
        PlaybackPeriod period;
        period.scheduleId = 0;
        QCOMPARE(c->days, std::vector<Day>({Day{}, Day{"", "", 0, {period}, "", 0}}));
        QCOMPARE(c->adBlocks, std::vector<AdBlock>({AdBlock{}, AdBlock{"", false, "", {{"", 0}}}}));
        const Track empty{0, "", "", "", "", "", ContentType::Photo, 0, 0, false, LikeStatus::Disliked};
        QCOMPARE(c->tracks.at(ContentType::Photo), std::vector<Track>({empty, empty}));
    }

    void roundTrip()
    {
        const PlaybackConfiguration original = SampleConfiguration();
        const auto read = JsonConverter::PlaybackConfigurationFromResponse(
            JsonConverter::PlaybackConfigurationToString(original));
        QCOMPARE(read->version, original.version);
        QCOMPARE(read->domains, original.domains);
        QCOMPARE(read->days, original.days);
        QCOMPARE(read->playlists, original.playlists);
        QCOMPARE(read->adBlocks, original.adBlocks);
        QCOMPARE(read->tracks, original.tracks);
    }

    void writtenDocumentStructure()
    {
        const QJsonObject outer =
            QJsonDocument::fromJson(
                JsonConverter::PlaybackConfigurationToString(SampleConfiguration()).toUtf8())
                .object();
        QCOMPARE(outer.keys(), QStringList({"configuration"}));
        const QJsonObject c = outer["configuration"].toObject();
        QCOMPARE(c.keys(), QStringList({"ads", "content", "domains", "playlists", "schedule", "version"}));
        QCOMPARE(c["version"].toInt(), 73);
        const QJsonArray content = c["content"].toArray();
        QStringList types;
        for (const QJsonValue& value : content) {
            QCOMPARE(value.toObject().keys(), QStringList({"tracks", "type"}));
            types << value["type"].toString();
        }
        QCOMPARE(types, QStringList({"clip", "music", "video", "photo"}));
        const QJsonArray music = content[1]["tracks"].toArray();
        QCOMPARE(music[0].toObject().keys(),
                 QStringList({"author", "file_size_bytes", "id", "image", "liked", "md5", "name", "path",
                              "shop_id", "uploaded_by_user"}));
        QCOMPARE(music[0]["liked"], QJsonValue(true));
        QCOMPARE(music[1]["liked"], QJsonValue(false));
        QCOMPARE(music[2]["liked"], QJsonValue(QJsonValue::Null));
        const QJsonObject day = c["schedule"][0].toObject();
        QCOMPARE(day.keys(), QStringList({"date", "day_of_week", "day_of_week_id", "periods", "schedule_id",
                                          "schedule_name"}));
        QCOMPARE(day["periods"][0].toObject().keys(),
                 QStringList({"ads_volume", "content_volume", "end_time_str", "music_playlist_id", "name",
                              "photo_playlist_id", "schedule_id", "schedule_name", "start_time_str",
                              "video_playlist_id"}));
        QCOMPARE(day["periods"][1]["schedule_id"], QJsonValue(-1));
        const QJsonObject playlist = c["playlists"][0].toObject();
        QCOMPARE(playlist.keys(), QStringList({"content_type", "id", "image", "name", "tracks"}));
        QCOMPARE(playlist["content_type"].toString(), "music");
        QCOMPARE(playlist["tracks"], QJsonValue(QJsonArray({7, 8, 9, 7})));
        const QJsonObject adBlock = c["ads"][0].toObject();
        QCOMPARE(adBlock.keys(), QStringList({"interrupt_content", "name", "start_time_str", "tracks"}));
        QCOMPARE(adBlock["tracks"][1].toObject(), QJsonObject({{"date", "2024-05-07"}, {"track", 501}}));
    }

    void textMatchesQtDocument_data()
    {
        QTest::addColumn<PlaybackConfiguration>("configuration");
        PlaybackConfiguration empty;
        for (const ContentType type : AllContentTypes()) {
            empty.tracks[type] = {};
        }
        QTest::newRow("empty") << empty;
        QTest::newRow("sample") << SampleConfiguration();
        // Text that is not valid UTF-8 is repaired the way QString repairs it.
        PlaybackConfiguration broken = SampleConfiguration();
        broken.domains = {"\xFF\xFE", "a\xC0\x80z", "\xED\xA0\x80", "\xEF\xBB\xBF\xEF\xBB", "\x1F\x7F"};
        QTest::newRow("broken UTF-8") << broken;
    }
    void textMatchesQtDocument()
    {
        QFETCH(PlaybackConfiguration, configuration);
        QCOMPARE(JsonConverter::PlaybackConfigurationToString(configuration).toUtf8(),
                 QtDocument(configuration));
    }

    void writerNeedsEveryKey()
    {
        PlaybackConfiguration withoutVideo = SampleConfiguration();
        withoutVideo.tracks.erase(ContentType::Video);
        QVERIFY_EXCEPTION_THROWN(JsonConverter::PlaybackConfigurationToString(withoutVideo),
                                 std::out_of_range);

        PlaybackConfiguration withoutPhotoPlaylist = SampleConfiguration();
        withoutPhotoPlaylist.days[0].periods[1].playlistIds.erase(ContentType::Photo);
        QVERIFY_EXCEPTION_THROWN(JsonConverter::PlaybackConfigurationToString(withoutPhotoPlaylist),
                                 std::out_of_range);
        QVERIFY_EXCEPTION_THROWN(JsonConverter::PlaybackPeriodsToArray(withoutPhotoPlaylist.days[0].periods),
                                 std::out_of_range);
    }

    void version_data()
    {
        QTest::addColumn<QString>("body");
        QTest::addColumn<long>("version");
        QTest::newRow("integer") << Body(R"({"success": true, "version": 42})") << 42L;
        QTest::newRow("largest") << Body(R"({"version": 2147483647})") << 2147483647L;
        QTest::newRow("beyond int") << Body(R"({"version": 3000000000})") << 0L;
        QTest::newRow("fraction") << Body(R"({"version": 4.5})") << 0L;
        QTest::newRow("string") << Body(R"({"version": "42"})") << 0L;
        QTest::newRow("nested") << Body(R"({"data": {"version": 42}})") << 0L;
        QTest::newRow("not JSON") << Body("version: 42") << 0L;
    }
    void version()
    {
        QFETCH(QString, body);
        QFETCH(long, version);
        QCOMPARE(JsonConverter::PlaybackConfigurationVersionFromResponse(body), version);
    }
};

QTEST_GUILESS_MAIN(TestJsonConverterConfiguration)
#include "tst_json_converter_configuration.moc"
