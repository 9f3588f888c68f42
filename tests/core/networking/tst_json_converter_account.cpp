#include "core/networking/json_converter.h"
#include "core/utilities/core_resources.h"

#include <QFile>
#include <QHostAddress>
#include <QJsonDocument>
#include <QUrl>
#include <QtTest>

#include <algorithm>

using Core::DataTypes::Playback::LikeStatus;
using Core::Networking::JsonConverter;
namespace Playlists = Core::DataTypes::Playlists;

Q_DECLARE_METATYPE(LikeStatus)

namespace {

QString Body(const char* json)
{
    return QString::fromUtf8(json);
}

QJsonObject Object(const char* json)
{
    return QJsonDocument::fromJson(json).object();
}

} // namespace

class TestJsonConverterAccount : public QObject
{
    Q_OBJECT

private slots:
    void servers()
    {
        const auto servers = JsonConverter::ServersFromResponse(Body(R"({"success": true, "servers": [
            {"id": 3, "name": "Основной", "url": "https:\/\/api.example.ru\/api\/v1\/", "email": "help@example.ru",
             "phone": "+7 (495) 000-00-00", "privacy_policy_url": "https:\/\/example.ru\/privacy",
             "landing_url": "https:\/\/example.ru\/", "is_primary": true, "phone_country_code": "+7",
             "phone_symbol_len": 10},
            7,
            {"id": "4", "is_primary": "true", "phone_symbol_len": null, "name": ["x"]}]})"));
        QCOMPARE(servers.size(), std::size_t(3));
        const auto& s = *servers[0];
        QCOMPARE(s.id, 3);
        QCOMPARE(s.name, std::string("Основной"));
        QCOMPARE(s.url, std::string("https://api.example.ru/api/v1/"));
        QCOMPARE(s.email, std::string("help@example.ru"));
        QCOMPARE(s.phone, std::string("+7 (495) 000-00-00"));
        QCOMPARE(s.privacyPolicyUrl, std::string("https://example.ru/privacy"));
        QCOMPARE(s.landingUrl, std::string("https://example.ru/"));
        QVERIFY(s.isPrimary);
        QCOMPARE(s.phoneCountryCode, std::string("+7"));
        QCOMPARE(s.phoneSymbolLen, 10);
        for (const auto& empty : {servers[1], servers[2]}) {
            QCOMPARE(empty->id, 0);
            QCOMPARE(empty->name, std::string());
            QVERIFY(!empty->isPrimary);
            QCOMPARE(empty->phoneSymbolLen, 0);
        }
    }

    void serversWithoutList_data()
    {
        QTest::addColumn<QString>("body");
        QTest::newRow("no servers") << Body(R"({"success": true})");
        QTest::newRow("servers not a list") << Body(R"({"servers": {"id": 1}})");
        QTest::newRow("not JSON") << Body("Service Unavailable");
    }
    void serversWithoutList()
    {
        QFETCH(QString, body);
        QVERIFY(JsonConverter::ServersFromResponse(body).empty());
    }

    void builtInServers()
    {
        Core::Utilities::CoreResources::Initialize();
        QFile file(":/jsons/servers.json");
        QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.errorString()));
        const auto servers = JsonConverter::ServersFromResponse(QString::fromUtf8(file.readAll()));
        const auto demo = std::find_if(servers.begin(), servers.end(), [](const auto& server) {
            return server->name == "Локальный демо-сервер";
        });
        QVERIFY2(demo != servers.end(), "the built-in list has no local demo server");
        const QUrl url(QString::fromStdString((*demo)->url));
        QVERIFY2(QHostAddress(url.host()).isLoopback(), qPrintable(url.toString()));
        QVERIFY(url.path().endsWith('/'));
    }

    void likeStatus_data()
    {
        QTest::addColumn<QString>("body");
        QTest::addColumn<LikeStatus>("expected");
        QTest::newRow("null") << Body(R"({"like_status": null})") << LikeStatus::None;
        QTest::newRow("missing") << Body("{}") << LikeStatus::None;
        QTest::newRow("not JSON") << Body("like") << LikeStatus::None;
        QTest::newRow("false") << Body(R"({"like_status": false})") << LikeStatus::Disliked;
        QTest::newRow("true") << Body(R"({"success": true, "like_status": true})") << LikeStatus::Liked;
        QTest::newRow("string") << Body(R"({"like_status": "true"})") << LikeStatus::Disliked;
        QTest::newRow("nested") << Body(R"({"data": {"like_status": true}})") << LikeStatus::None;
    }
    void likeStatus()
    {
        QFETCH(QString, body);
        QFETCH(LikeStatus, expected);
        QCOMPARE(JsonConverter::LikeStatusFromResponse(body), expected);
    }

    void catalogue()
    {
        const auto playlists = JsonConverter::PlaylistsFromResponse(Body(R"({"playlists": [
            {"id": 5, "name": "Лаунж", "image": "l.png", "content_size_bytes": 1.5e9, "tracks_count": 120,
             "active": true},
            {"id": 6, "content_size_bytes": 5000000000, "tracks_count": 1.5, "active": 1},
            {"content_size_bytes": "100"}]})"));
        QCOMPARE(playlists.size(), std::size_t(3));
        QCOMPARE(playlists[0]->id, 5);
        QCOMPARE(playlists[0]->name, std::string("Лаунж"));
        QCOMPARE(playlists[0]->image, std::string("l.png"));
        QCOMPARE(playlists[0]->contentSizeBytes, 1.5e9);
        QCOMPARE(playlists[0]->tracksCount, 120);
        QVERIFY(playlists[0]->active);
        QCOMPARE(playlists[1]->contentSizeBytes, 5e9);
        QCOMPARE(playlists[1]->tracksCount, 0);
        QVERIFY(!playlists[1]->active);
        QCOMPARE(playlists[2]->contentSizeBytes, 0.0);

        const auto recommended = JsonConverter::RecommendedPlaylistsFromResponse(Body(
            R"({"playlists": [{"id": 2, "name": "Кофейня", "image": "c.png", "main": true}, {"id": 3}]})"));
        QCOMPARE(recommended.size(), std::size_t(2));
        QCOMPARE(recommended[0]->name, std::string("Кофейня"));
        QCOMPARE(recommended[0]->image, std::string("c.png"));
        QVERIFY(recommended[0]->main);
        QCOMPARE(recommended[1]->id, 3);
        QVERIFY(!recommended[1]->main);

        // The tracks of a catalogue playlist come inside "data".
        const auto tracks = JsonConverter::TracksFromResponse(Body(R"({"data": {"tracks": [
            {"id": 1, "name": "Вальс", "author": "Оркестр", "image": "v.jpg"}, null]}, "tracks": [{"id": 9}]})"));
        QVERIFY(tracks);
        QCOMPARE(tracks->size(), std::size_t(2));
        QCOMPARE((*tracks)[0].id, 1);
        QCOMPARE((*tracks)[0].name, std::string("Вальс"));
        QCOMPARE((*tracks)[0].author, std::string("Оркестр"));
        QCOMPARE((*tracks)[0].image, std::string("v.jpg"));
        QCOMPARE((*tracks)[1].id, 0);
        QVERIFY(JsonConverter::TracksFromResponse(Body(R"({"tracks": [{"id": 9}]})"))->empty());
    }

    void signUpCatalogues()
    {
        const auto types = JsonConverter::BusinessTypesFromResponse(Body(R"({"business_types": [{"id": 1,
            "name": "Кафе", "image": "cafe.png", "icon_dark_theme": "d.svg", "icon_light_theme": "l.svg"}]})"));
        QCOMPARE(types.size(), std::size_t(1));
        QCOMPARE(types[0]->id, 1);
        QCOMPARE(types[0]->name, std::string("Кафе"));
        QCOMPARE(types[0]->image, std::string("cafe.png"));
        QCOMPARE(types[0]->iconDarkTheme, std::string("d.svg"));
        QCOMPARE(types[0]->iconLightTheme, std::string("l.svg"));

        const auto styles = JsonConverter::MusicStylesFromResponse(
            Body(R"({"music_styles": [{"id": 4, "name": "Джаз", "image": "j.png"}, []]})"));
        QCOMPARE(styles.size(), std::size_t(2));
        QCOMPARE(styles[0]->id, 4);
        QCOMPARE(styles[0]->name, std::string("Джаз"));
        QCOMPARE(styles[0]->image, std::string("j.png"));
        QCOMPARE(styles[1]->name, std::string());
    }

    void playbackObjects()
    {
        const char* fields = R"({"id": 12, "name": "Кофейня на Невском", "address": "Невский пр., 1",
            "code": "nvsk-01", "contract_number": "Д-17/2024", "image": "i.png", "logo": "logo.png",
            "disable_player_control": true, "organization_name": "ООО «Ромашка»"})";
        const auto one =
            JsonConverter::PlaybackObjectFromResponse(Body(R"({"object": %1})").arg(Body(fields)));
        QCOMPARE(one->id, 12);
        QCOMPARE(one->name, std::string("Кофейня на Невском"));
        QCOMPARE(one->address, std::string("Невский пр., 1"));
        QCOMPARE(one->code, std::string("nvsk-01"));
        QCOMPARE(one->contractNumber, std::string("Д-17/2024"));
        QCOMPARE(one->image, std::string("i.png"));
        QCOMPARE(one->logo, std::string("logo.png"));
        QVERIFY(one->disablePlayerControl);
        QCOMPARE(one->organizationName, std::string("ООО «Ромашка»"));

        const auto list =
            JsonConverter::PlaybackObjectsFromResponse(Body(R"({"objects": [%1, "x"]})").arg(Body(fields)));
        QCOMPARE(list.size(), std::size_t(2));
        QCOMPARE(list[0]->code, one->code);
        QCOMPARE(list[1]->code, std::string());
        QVERIFY(!list[1]->disablePlayerControl);

        const auto missing = JsonConverter::PlaybackObjectFromResponse(Body(R"({"objects": []})"));
        QVERIFY(missing);
        QCOMPARE(missing->id, 0);
    }

    void playlistsSettingsFromResponse()
    {
        const auto settings = JsonConverter::PlaylistsSettingsFromResponse(Body(R"({"settings": {
            "music": {"advanced": true, "playlist_id": 1, "playlist_name": "Весь день",
                      "morning": {"playlist_id": 2, "playlist_name": "Утро"}, "day": {"playlist_id": 3, "playlist_name": "День"},
                      "evening": {"playlist_id": 4, "playlist_name": "Вечер"}, "night": {"playlist_id": 5, "playlist_name": "Ночь"}},
            "video": {"advanced": false, "playlist_id": 6, "playlist_name": "Клипы", "morning": null},
            "photo": "none"}})"));
        const Playlists::ContentPlaylistSettings& music = settings->music;
        QVERIFY(music.advanced);
        QCOMPARE(music.playlistId, 1);
        QCOMPARE(music.playlistName, std::string("Весь день"));
        QCOMPARE(music.morningPlaylistId, 2);
        QCOMPARE(music.morningPlaylistName, std::string("Утро"));
        QCOMPARE(music.dayPlaylistId, 3);
        QCOMPARE(music.dayPlaylistName, std::string("День"));
        QCOMPARE(music.eveningPlaylistId, 4);
        QCOMPARE(music.eveningPlaylistName, std::string("Вечер"));
        QCOMPARE(music.nightPlaylistId, 5);
        QCOMPARE(music.nightPlaylistName, std::string("Ночь"));
        QVERIFY(!settings->video.advanced);
        QCOMPARE(settings->video.playlistId, 6);
        QCOMPARE(settings->video.playlistName, std::string("Клипы"));
        QCOMPARE(settings->video.morningPlaylistId, 0);
        QCOMPARE(settings->photo.playlistId, 0);
        QVERIFY(!settings->photo.advanced);
    }

    void playlistsSettingsToJson()
    {
        Playlists::PlaylistsSettings settings;
        settings.music = {true, 1, "Весь день", 2, "Утро", 3, "День", 4, "Вечер", 5, "Ночь"};
        settings.video = {false, 6, "Клипы", 7, "Утро", 8, "", 9, "", 10, ""};
        const QJsonObject json = JsonConverter::PlaylistsSettingsToJson(settings);
        QCOMPARE(json, Object(R"({"settings": {
            "music": {"advanced": true, "morning": {"playlist_id": 2}, "day": {"playlist_id": 3},
                      "evening": {"playlist_id": 4}, "night": {"playlist_id": 5}},
            "video": {"advanced": false, "playlist_id": 6},
            "photo": {"advanced": false, "playlist_id": 0}}})"));

        // Reading back what was written keeps the ids that were sent.
        const Playlists::ContentPlaylistSettings music =
            Core::Networking::ContentPlaylistSettingsFromJson(json["settings"]["music"].toObject());
        QVERIFY(music.advanced);
        QCOMPARE(music.playlistId, 0);
        QCOMPARE(music.morningPlaylistId, 2);
        QCOMPARE(music.nightPlaylistId, 5);
        QCOMPARE(music.nightPlaylistName, std::string());
        const Playlists::ContentPlaylistSettings video =
            Core::Networking::ContentPlaylistSettingsFromJson(json["settings"]["video"].toObject());
        QVERIFY(!video.advanced);
        QCOMPARE(video.playlistId, 6);
        QCOMPARE(video.morningPlaylistId, 0);
    }

    void topLevelMembers()
    {
        const QString body =
            Body(R"({"code": "4821", "token": "ab.cd", "url": "https:\/\/cert.example.ru\/1.pdf",
            "count": 17, "name": 5, "items": [1, 2], "data": {"token": "inner"}, "object": {"a": 1}})");
        QCOMPARE(JsonConverter::ConfirmationCodeFromResponse(body), std::string("4821"));
        QCOMPARE(JsonConverter::TokenFromResponse(body), std::string("ab.cd"));
        QCOMPARE(JsonConverter::CertificateUrlFromResponse(body),
                 std::string("https://cert.example.ru/1.pdf"));
        QCOMPARE(JsonConverter::StringFromResponse(body, "name"), std::string());
        QCOMPARE(JsonConverter::IntFromResponse(body, "count"), 17);
        QCOMPARE(JsonConverter::IntFromResponse(body, "code"), 0);
        QCOMPARE(JsonConverter::ArrayFromDataResponse(body, "items"), QJsonArray({1, 2}));
        QVERIFY(JsonConverter::ArrayFromDataResponse(body, "object").isEmpty());
        QCOMPARE(JsonConverter::JsonObjectFromDataResponse(body, "object"), Object(R"({"a": 1})"));
        QCOMPARE(JsonConverter::DataObjectFromDataResponse(body), Object(R"({"token": "inner"})"));
        QVERIFY(JsonConverter::DataObjectFromDataResponse(Body(R"([{"data": {}}])")).isEmpty());
        QCOMPARE(JsonConverter::TokenFromResponse(Body("token=ab.cd")), std::string());
    }
};

QTEST_GUILESS_MAIN(TestJsonConverterAccount)
#include "tst_json_converter_account.moc"
