#include "core/networking/json_converter.h"
#include "core/utilities/core_resources.h"

#include <QHostAddress>

#include <algorithm>
#include <tuple>

using Core::DataTypes::Playback::LikeStatus;
using Core::Networking::JsonConverter;
namespace Auth = Core::DataTypes::Auth;
namespace Playlists = Core::DataTypes::Playlists;
using namespace std::string_literals;

namespace {

QJsonObject Object(const char* json)
{
    return QJsonDocument::fromJson(json).object();
}

// Every field at once, so a comparison covers the whole value and names what differs.
auto Fields(const Auth::Server& s)
{
    return std::make_tuple(s.id, s.name, s.url, s.email, s.phone, s.privacyPolicyUrl, s.landingUrl,
                           s.isPrimary, s.phoneCountryCode, s.phoneSymbolLen);
}
auto Fields(const Auth::PlaybackObject& o)
{
    return std::make_tuple(o.id, o.name, o.address, o.code, o.contractNumber, o.image, o.logo,
                           o.disablePlayerControl, o.organizationName);
}
auto Fields(const Playlists::Playlist& p)
{
    return std::make_tuple(p.id, p.name, p.image, p.contentSizeBytes, p.tracksCount, p.active);
}
auto Fields(const Playlists::ContentPlaylistSettings& s)
{
    return std::make_tuple(s.advanced, s.playlistId, s.playlistName, s.morningPlaylistId,
                           s.morningPlaylistName, s.dayPlaylistId, s.dayPlaylistName, s.eveningPlaylistId,
                           s.eveningPlaylistName, s.nightPlaylistId, s.nightPlaylistName);
}

} // namespace

class TestJsonConverterAccount : public QObject
{
    Q_OBJECT

private slots:
    void servers()
    {
        const auto servers = JsonConverter::ServersFromResponse(QString(R"({"success": true, "servers": [
            {"id": 3, "name": "Основной", "url": "https:\/\/api.example.ru\/api\/v1\/", "email": "help@example.ru",
             "phone": "+7 (495) 000-00-00", "privacy_policy_url": "https:\/\/example.ru\/privacy",
             "landing_url": "https:\/\/example.ru\/", "is_primary": true, "phone_country_code": "+7",
             "phone_symbol_len": 10},
            7,
            {"id": "4", "is_primary": "true", "phone_symbol_len": null, "name": ["x"]}]})"));
        QCOMPARE(servers.size(), std::size_t(3));
        QCOMPARE(Fields(*servers[0]),
                 Fields(Auth::Server{3, "Основной", "https://api.example.ru/api/v1/", "help@example.ru",
                                     "+7 (495) 000-00-00", "https://example.ru/privacy",
                                     "https://example.ru/", true, "+7", 10}));
        QCOMPARE(Fields(*servers[1]), Fields(Auth::Server{}));
        QCOMPARE(Fields(*servers[2]), Fields(Auth::Server{}));
        // No list to read: no servers, and no crash.
        for (const char* body :
             {R"({"success": true})", R"({"servers": {"id": 1}})", "Service Unavailable"}) {
            QVERIFY2(JsonConverter::ServersFromResponse(QString(body)).empty(), body);
        }
        // The list built into the program offers the demo server on this machine.
        Core::Utilities::CoreResources::Initialize();
        QFile file(":/jsons/servers.json");
        QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.errorString()));
        const auto builtIn = JsonConverter::ServersFromResponse(QString::fromUtf8(file.readAll()));
        const auto demo = std::find_if(builtIn.begin(), builtIn.end(), [](const auto& server) {
            return server->name == "Локальный демо-сервер";
        });
        QVERIFY2(demo != builtIn.end(), "the built-in list has no local demo server");
        const QUrl url(QString::fromStdString((*demo)->url));
        QVERIFY2(QHostAddress(url.host()).isLoopback(), qPrintable(url.toString()));
        QVERIFY(url.path().endsWith('/'));
    }

    void catalogue()
    {
        const auto playlists = JsonConverter::PlaylistsFromResponse(QString(R"({"playlists": [
            {"id": 5, "name": "Лаунж", "image": "l.png", "content_size_bytes": 1.5e9, "tracks_count": 120,
             "active": true},
            {"id": 6, "content_size_bytes": 5000000000, "tracks_count": 1.5, "active": 1},
            {"content_size_bytes": "100"}]})"));
        QCOMPARE(playlists.size(), std::size_t(3));
        QCOMPARE(Fields(*playlists[0]), Fields(Playlists::Playlist{5, "Лаунж", "l.png", 1.5e9, 120, true}));
        QCOMPARE(Fields(*playlists[1]), Fields(Playlists::Playlist{6, "", "", 5e9, 0, false}));
        QCOMPARE(Fields(*playlists[2]), Fields(Playlists::Playlist{}));

        const auto recommended = JsonConverter::RecommendedPlaylistsFromResponse(QString(
            R"({"playlists": [{"id": 2, "name": "Кофейня", "image": "c.png", "main": true}, {"id": 3}]})"));
        QCOMPARE(recommended.size(), std::size_t(2));
        QCOMPARE(
            std::tie(recommended[0]->id, recommended[0]->name, recommended[0]->image, recommended[0]->main),
            std::make_tuple(2, "Кофейня"s, "c.png"s, true));
        QCOMPARE(std::tie(recommended[1]->id, recommended[1]->main), std::make_tuple(3, false));

        // The tracks of a catalogue playlist come inside "data".
        const auto tracks = JsonConverter::TracksFromResponse(QString(R"({"data": {"tracks": [
            {"id": 1, "name": "Вальс", "author": "Оркестр", "image": "v.jpg"}, null]}, "tracks": [{"id": 9}]})"));
        QCOMPARE(tracks->size(), std::size_t(2));
        const Playlists::Track& waltz = tracks->front();
        QCOMPARE(std::tie(waltz.id, waltz.name, waltz.author, waltz.image),
                 std::make_tuple(1, "Вальс"s, "Оркестр"s, "v.jpg"s));
        QCOMPARE(tracks->back().id, 0);
        QVERIFY(JsonConverter::TracksFromResponse(QString(R"({"tracks": [{"id": 9}]})"))->empty());
    }

    void signUpCatalogues()
    {
        const auto types = JsonConverter::BusinessTypesFromResponse(QString(R"({"business_types": [{"id": 1,
            "name": "Кафе", "image": "cafe.png", "icon_dark_theme": "d.svg", "icon_light_theme": "l.svg"}]})"));
        QCOMPARE(types.size(), std::size_t(1));
        QCOMPARE(std::tie(types[0]->id, types[0]->name, types[0]->image, types[0]->iconDarkTheme,
                          types[0]->iconLightTheme),
                 std::make_tuple(1, "Кафе"s, "cafe.png"s, "d.svg"s, "l.svg"s));

        const auto styles = JsonConverter::MusicStylesFromResponse(
            QString(R"({"music_styles": [{"id": 4, "name": "Джаз", "image": "j.png"}, []]})"));
        QCOMPARE(styles.size(), std::size_t(2));
        QCOMPARE(std::tie(styles[0]->id, styles[0]->name, styles[0]->image),
                 std::make_tuple(4, "Джаз"s, "j.png"s));
        QCOMPARE(std::tie(styles[1]->id, styles[1]->name), std::make_tuple(0, ""s));
    }

    void playbackObjects()
    {
        const char* fields = R"({"id": 12, "name": "Кофейня на Невском", "address": "Невский пр., 1",
            "code": "nvsk-01", "contract_number": "Д-17/2024", "image": "i.png", "logo": "logo.png",
            "disable_player_control": true, "organization_name": "ООО «Ромашка»"})";
        const auto one =
            JsonConverter::PlaybackObjectFromResponse(QString(R"({"object": %1})").arg(QString(fields)));
        const Auth::PlaybackObject expected{
            12,   "Кофейня на Невском", "Невский пр., 1", "nvsk-01", "Д-17/2024", "i.png", "logo.png",
            true, "ООО «Ромашка»"};
        QCOMPARE(Fields(*one), Fields(expected));

        const auto list = JsonConverter::PlaybackObjectsFromResponse(
            QString(R"({"objects": [%1, "x"]})").arg(QString(fields)));
        QCOMPARE(list.size(), std::size_t(2));
        QCOMPARE(Fields(*list[0]), Fields(expected));
        QCOMPARE(Fields(*list[1]), Fields(Auth::PlaybackObject{}));

        const auto missing = JsonConverter::PlaybackObjectFromResponse(QString(R"({"objects": []})"));
        QCOMPARE(Fields(*missing), Fields(Auth::PlaybackObject{}));
    }

    void playlistsSettingsFromResponse()
    {
        const auto settings = JsonConverter::PlaylistsSettingsFromResponse(QString(R"({"settings": {
            "music": {"advanced": true, "playlist_id": 1, "playlist_name": "Весь день",
                      "morning": {"playlist_id": 2, "playlist_name": "Утро"}, "day": {"playlist_id": 3, "playlist_name": "День"},
                      "evening": {"playlist_id": 4, "playlist_name": "Вечер"}, "night": {"playlist_id": 5, "playlist_name": "Ночь"}},
            "video": {"advanced": false, "playlist_id": 6, "playlist_name": "Клипы", "morning": null},
            "photo": "none"}})"));
        QCOMPARE(Fields(settings->music),
                 Fields(Playlists::ContentPlaylistSettings{true, 1, "Весь день", 2, "Утро", 3, "День", 4,
                                                           "Вечер", 5, "Ночь"}));
        QCOMPARE(Fields(settings->video),
                 Fields(Playlists::ContentPlaylistSettings{false, 6, "Клипы", 0, "", 0, "", 0, "", 0, ""}));
        QCOMPARE(Fields(settings->photo), Fields(Playlists::ContentPlaylistSettings{}));
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
    }

    void topLevelMembers()
    {
        const QString body =
            QString(R"({"code": "4821", "token": "ab.cd", "url": "https:\/\/cert.example.ru\/1.pdf",
            "count": 17, "name": 5, "items": [1, 2], "data": {"token": "inner"}, "object": {"a": 1}})");
        QCOMPARE(JsonConverter::ConfirmationCodeFromResponse(body), "4821"s);
        QCOMPARE(JsonConverter::TokenFromResponse(body), "ab.cd"s);
        QCOMPARE(JsonConverter::CertificateUrlFromResponse(body), "https://cert.example.ru/1.pdf"s);
        QCOMPARE(JsonConverter::StringFromResponse(body, "name"), ""s);
        QCOMPARE(JsonConverter::IntFromResponse(body, "count"), 17);
        QCOMPARE(JsonConverter::IntFromResponse(body, "code"), 0);
        QCOMPARE(JsonConverter::ArrayFromDataResponse(body, "items"), QJsonArray({1, 2}));
        QVERIFY(JsonConverter::ArrayFromDataResponse(body, "object").isEmpty());
        QCOMPARE(JsonConverter::JsonObjectFromDataResponse(body, "object"), Object(R"({"a": 1})"));
        QCOMPARE(JsonConverter::DataObjectFromDataResponse(body), Object(R"({"token": "inner"})"));
        QVERIFY(JsonConverter::DataObjectFromDataResponse(QString(R"([{"data": {}}])")).isEmpty());
        QCOMPARE(JsonConverter::TokenFromResponse(QString("token=ab.cd")), ""s);
        // Unlike a track's "liked", a reply without the key knows nothing yet.
        QCOMPARE(JsonConverter::LikeStatusFromResponse(R"({"data": {"like_status": true}})"),
                 LikeStatus::None);
        QCOMPARE(JsonConverter::LikeStatusFromResponse(R"({"like_status": null})"), LikeStatus::None);
        QCOMPARE(JsonConverter::LikeStatusFromResponse(R"({"like_status": true})"), LikeStatus::Liked);
        QCOMPARE(JsonConverter::LikeStatusFromResponse(R"({"like_status": "true"})"), LikeStatus::Disliked);
    }
};

QTEST_GUILESS_MAIN(TestJsonConverterAccount)
#include "tst_json_converter_account.moc"
