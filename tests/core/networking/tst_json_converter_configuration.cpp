#include "core/networking/json_converter.h"

#include <tuple>

using namespace Core::DataTypes::Playback;
using Core::Networking::JsonConverter;
using namespace std::string_literals;

Q_DECLARE_METATYPE(PlaybackConfiguration)

namespace {

// Every member present, with texts a careless writer or reader would mangle.
QByteArray FullDocument()
{
    QFile file(qEnvironmentVariable("ZELMAR_TEST_SOURCE_DIR") +
               QStringLiteral("/tests/core/networking/full_configuration.json"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

PlaybackConfiguration FullConfiguration()
{
    return *JsonConverter::PlaybackConfigurationFromResponse(QString::fromUtf8(FullDocument()));
}

PlaybackConfiguration EmptyConfiguration()
{
    PlaybackConfiguration empty;
    for (const ContentType type : AllContentTypes()) {
        empty.tracks[type] = {};
    }
    return empty;
}

// The tree writers' document; the text writer escapes U+FEFF, which Qt's parser drops.
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
    void initTestCase()
    {
        QVERIFY2(QJsonDocument::fromJson(FullDocument()).isObject(),
                 "tests/core/networking/full_configuration.json is missing or damaged");
    }

    // The database keeps what the writer makes of what was read.
    void aFullDocumentIsReadAndWrittenBackWhole()
    {
        const QJsonDocument document = QJsonDocument::fromJson(FullDocument());
        const PlaybackConfiguration c = FullConfiguration();
        const QByteArray written = JsonConverter::PlaybackConfigurationToString(c).toUtf8();
        QCOMPARE(QJsonDocument::fromJson(written).toJson(QJsonDocument::Compact),
                 document.toJson(QJsonDocument::Compact));
        // Members of one type that a reader and writer could swap between them alike.
        const Track& morning = c.tracks.at(ContentType::Music).front();
        QCOMPARE(std::tie(morning.path, morning.name, morning.author, morning.image, morning.md5),
                 std::make_tuple("music/a\\b.mp3"s, "\xEF\xBB\xBFУтро"s, "Трио «Сумерки»"s, "covers/7.jpg"s,
                                 "92eb5ffe"s));
        QCOMPARE(std::tie(morning.fileSize, morning.shopId), std::make_tuple(5000000, 3));
        QCOMPARE(c.playlists.front(),
                 (Playlist{11, "Утренний джаз", ContentType::Music, "p/11.png", {7, 8, 9, 7}}));
        QCOMPARE(c.tracks.at(ContentType::Music)[1].author, "A\0B"s);
        const PlaybackPeriod& period = c.days.front().periods.front();
        QCOMPARE(std::tie(period.startTime, period.endTime, period.contentVolume, period.adsVolume),
                 std::make_tuple("08:00:00"s, "23:59:59"s, 60, 100));
        QCOMPARE(period.playlistIds,
                 (std::map<ContentType, int>{
                     {ContentType::Music, 11}, {ContentType::Video, 12}, {ContentType::Photo, 13}}));
        QCOMPARE(std::tie(c.days.front().dayOfWeek, c.days.front().date),
                 std::make_tuple("Понедельник"s, "2024-05-06"s));
    }

    // What cannot be read as a configuration object reads as an empty configuration.
    void emptyConfigurationFromBadBody()
    {
        for (const char* body : {R"({"configuration": {"version": 5, "domains": [)",
                                 R"([{"configuration": {"version": 5}}])", R"({"configuration": [1, 2]})"}) {
            QCOMPARE(*JsonConverter::PlaybackConfigurationFromResponse(body), EmptyConfiguration());
        }
    }

    // A null id or name means "no schedule" (-1), a half-null pair too; a missing id is a plain 0.
    void scheduleRule()
    {
        const auto periods = JsonConverter::PlaybackPeriodsFromArray(QJsonDocument::fromJson(R"([
            {"schedule_id": null, "schedule_name": "Будни"}, {"schedule_id": 7, "schedule_name": null},
            {"schedule_name": "Выходные"}])")
                                                                         .array());
        QCOMPARE(periods.size(), std::size_t(3));
        QCOMPARE(std::tie(periods[0].scheduleId, periods[0].scheduleName), std::make_tuple(-1, ""s));
        QCOMPARE(std::tie(periods[1].scheduleId, periods[1].scheduleName), std::make_tuple(-1, ""s));
        QCOMPARE(std::tie(periods[2].scheduleId, periods[2].scheduleName), std::make_tuple(0, "Выходные"s));
    }

    void mistypedMembersGiveDefaults()
    {
        const auto c = JsonConverter::PlaybackConfigurationFromResponse(QString(R"({"configuration": {
            "version": "12", "domains": "cdn", "playlists": {"id": 1},
            "schedule": [{"day_of_week": 5, "day_of_week_id": "3", "date": null, "periods": [{
                "name": ["x"], "content_volume": "50", "ads_volume": 70.5, "music_playlist_id": 4.0,
                "video_playlist_id": "4", "photo_playlist_id": 3000000000}]}],
            "ads": [{"name": 1, "interrupt_content": "true", "start_time_str": {}, "tracks": [{"date": 6, "track": "501"}]}],
            "content": [{"type": "music", "tracks": [{"id": "7", "name": 42, "file_size_bytes": 1e12,
                "shop_id": 9.0, "uploaded_by_user": 1, "path": true}]}, {"type": "Music", "tracks": [{"id": 1}]},
                {"type": "gif", "tracks": [{"id": 5}]}, {"tracks": [{"id": 8}]}, "video",
                {"type": "video", "tracks": {"id": 9}}, {"type": "clip", "tracks": [{"id": 4}]},
                {"type": "clip", "tracks": [{"id": 6}]}]}})"));
        QCOMPARE(c->version, 0);
        QVERIFY(c->domains.empty() && c->playlists.empty());
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
        // A kind's tracks come from every object of exactly its name, and are of its kind.
        QVERIFY(c->tracks.at(ContentType::Video).empty() && c->tracks.at(ContentType::Photo).empty());
        QCOMPARE(c->tracks.at(ContentType::Clip).size(), std::size_t(2));
        QVERIFY(c->tracks.at(ContentType::Clip)[1].id == 6 &&
                c->tracks.at(ContentType::Clip)[1].contentType == ContentType::Clip);
    }

    void textMatchesQtDocument_data()
    {
        QTest::addColumn<PlaybackConfiguration>("configuration");
        QTest::newRow("empty") << EmptyConfiguration();
        QTest::newRow("full") << FullConfiguration();
        // Text that is not valid UTF-8 is repaired the way QString repairs it.
        PlaybackConfiguration broken = FullConfiguration();
        broken.domains = {"\xFF\xFE", "a\xC0\x80z", "\xED\xA0\x80", "\xEF\xBB\xBF\xEF\xBB", "\x1F\x7F"};
        QTest::newRow("broken UTF-8") << broken;
    }

    void textMatchesQtDocument()
    {
        QFETCH(PlaybackConfiguration, configuration);
        QCOMPARE(JsonConverter::PlaybackConfigurationToString(configuration).toUtf8(),
                 QtDocument(configuration));
    }

    void version()
    {
        QCOMPARE(
            JsonConverter::PlaybackConfigurationVersionFromResponse(R"({"success": true, "version": 42})"),
            42L);
        QCOMPARE(JsonConverter::PlaybackConfigurationVersionFromResponse(R"({"version": 3000000000})"), 0L);
        QCOMPARE(JsonConverter::PlaybackConfigurationVersionFromResponse("version: 42"), 0L);
    }
};

QTEST_GUILESS_MAIN(TestJsonConverterConfiguration)
#include "tst_json_converter_configuration.moc"
