#include "tests/support/reference_service.h"
#include "tests/tools/api_client.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Tests::ApiClient;

// Every endpoint the player calls answers in the shapes the player reads and keeps
// the real server's rules: tokens per account and object, account conditions,
// playlist settings rules. Raw HTTP, so every byte is the test's choice.
class ReferenceServiceApiTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<ApiClient> client;
    QString token;
    QByteArray musicA;
    QByteArray musicB;

    static QString ObjectPath(const QString& code, const QString& path)
    {
        return QStringLiteral("/api/v1/") + code + path;
    }

    static QString Describe(const ApiClient::Answer& answer)
    {
        return answer.complete
                   ? QStringLiteral("HTTP %1: %2").arg(answer.status).arg(QString::fromUtf8(answer.body))
                   : QStringLiteral("no reply: %1").arg(answer.error);
    }

    static bool IsApiError(const ApiClient::Answer& answer, int code)
    {
        return answer.complete && answer.status == 200 &&
               answer.Json() ==
                   QJsonObject{{QStringLiteral("success"), false}, {QStringLiteral("error"), code}};
    }

    static bool IsSuccess(const ApiClient::Answer& answer)
    {
        return answer.complete && answer.status == 200 &&
               answer.Json().value(QStringLiteral("success")) == QJsonValue(true);
    }

    static QStringList Keys(const QJsonObject& object)
    {
        QStringList keys = object.keys();
        keys.sort();
        return keys;
    }

    static QString Compact(const QJsonObject& object)
    {
        return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    }

    static QString Md5(const QByteArray& bytes)
    {
        return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex());
    }

    void WriteContent(const QString& relative, const QByteArray& bytes)
    {
        const QString path = content.filePath(relative);
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(bytes), bytes.size());
    }

    QString SignIn(const QString& code)
    {
        return client->SignIn(QStringLiteral("owner"), QStringLiteral("secret"), code);
    }

    ApiClient::Answer Get(const QString& path, const QString& withToken)
    {
        return client->Get(ObjectPath(QStringLiteral("shop1"), path), ApiClient::Token(withToken));
    }

    ApiClient::Answer Post(const QString& path, const QByteArray& form)
    {
        return client->PostForm(ObjectPath(QStringLiteral("shop1"), path), form, ApiClient::Token(token));
    }

    // One member of a shop1 reply, e.g. Field("/playlists/video", "playlists").
    QJsonValue Field(const QString& path, const QString& key)
    {
        return Get(path, token).Json().value(key);
    }

    QJsonObject Configuration()
    {
        return Field(QStringLiteral("/playback/configuration_v2?timestamp=1700000000&lang=ru"),
                     QStringLiteral("configuration"))
            .toObject();
    }

    int Version()
    {
        return Field(QStringLiteral("/playback/version?timestamp=1700000000"), QStringLiteral("version"))
            .toInt(-1);
    }

    bool VersionWorks(const QString& code, const QString& withToken)
    {
        return IsSuccess(client->Get(ObjectPath(code, QStringLiteral("/playback/version?timestamp=1")),
                                     ApiClient::Token(withToken)));
    }

    static QJsonObject TrackById(const QJsonObject& configuration, int id)
    {
        for (const QJsonValue& list : configuration.value(QStringLiteral("content")).toArray()) {
            for (const QJsonValue& track : list.toObject().value(QStringLiteral("tracks")).toArray()) {
                if (track.toObject().value(QStringLiteral("id")).toInt() == id) {
                    return track.toObject();
                }
            }
        }
        return QJsonObject();
    }

    static QByteArray Report(const QString& time, int trackId)
    {
        return QStringLiteral(
                   R"({"volume":70,"type":"music","time":"%1","date":"27.02.2026","track_id":%2,"shop_id":101})")
            .arg(time)
            .arg(trackId)
            .toUtf8();
    }

    // A one-report batch with `field` set to the JSON text `value`, or left out.
    static QByteArray SpoiltBatch(const QString& field, const QByteArray& value)
    {
        QJsonObject report = QJsonDocument::fromJson(Report(QStringLiteral("10:00:00"), 1)).object();
        report.remove(field);
        if (!value.isEmpty()) {
            report.insert(field, QJsonDocument::fromJson("[" + value + "]").array().at(0));
        }
        return QJsonDocument(QJsonArray{report}).toJson(QJsonDocument::Compact);
    }

    // A row of the refusal table: targets without a leading '/' are shop1's.
    static void Refusal(const char* name, const QByteArray& method, const QString& target,
                        const QByteArray& body, int error, QByteArray type = QByteArray(),
                        bool withToken = true)
    {
        if (type.isEmpty() && method == "POST") {
            type = body.startsWith('{') || body.startsWith('[') ? "application/json"
                                                                : "application/x-www-form-urlencoded";
        }
        const QString full =
            target.startsWith(QLatin1Char('/')) ? target : QStringLiteral("/api/v1/shop1/") + target;
        QTest::newRow(name) << method << full << body << type << withToken << error;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(content.isValid());
        for (int i = 0; i < 200000; ++i) {
            musicA.append(static_cast<char>(i % 251));
        }
        musicB = QByteArray("second track ").repeated(1000);
        WriteContent(QStringLiteral("music/a.mp3"), musicA);
        WriteContent(QStringLiteral("music/b.mp3"), musicB);
        WriteContent(QStringLiteral("clip/ad.mp3"), "advert");
        WriteContent(QStringLiteral("clip/promo/ad2.mp3"), "second advert");
        WriteContent(QStringLiteral("photo/p.jpg"), "picture");
        WriteContent(
            QStringLiteral("manifest.json"),
            R"({"files": [{"path": "music/a.mp3", "title": "Утро", "artist": "Оркестр", "seconds": 3}]})");
        service = std::make_unique<Tests::ReferenceService>(
            Tests::ReferenceService::SourceDirectory() + QStringLiteral("/tests/tools/scenarios/basic"),
            content.path());
        QVERIFY2(service->Start(), qPrintable(service->ErrorString()));
        client = std::make_unique<ApiClient>(service->Origin());
    }

    void init()
    {
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        token = SignIn(QStringLiteral("shop1"));
        QVERIFY(!token.isEmpty());
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    // Whole replies, compared key by key, in the shapes the player reads; @ORIGIN@
    // is the service's own "http://127.0.0.1:PORT/".
    void repliesHaveThePlayersShapes_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QByteArray>("objectsLogin");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char* name, const char* target, const QByteArray& expected,
                            const QByteArray& objectsLogin = {}) {
            QTest::newRow(name) << target << objectsLogin << expected;
        };
        const QByteArray backup = R"({"email":"","id":2,"is_primary":false,"landing_url":"",
            "name":"Запасной сервер","phone":"","phone_country_code":"+7","phone_symbol_len":10,
            "privacy_policy_url":"","url":"http://backup.invalid/api/v1/"})";
        const QByteArray test =
            R"({"email":"test@localhost","id":1,"is_primary":true,"landing_url":"@ORIGIN@",
            "name":"Тестовый сервер","phone":"+7 000 000-00-00","phone_country_code":"+7","phone_symbol_len":10,
            "privacy_policy_url":"@ORIGIN@privacy","url":"@ORIGIN@api/v1/"})";
        row("servers", "/api/player/legacy/v1/auth/servers",
            R"({"success":true,"servers":[)" + test + "," + backup + "]}");
        // A server without an English name keeps its own.
        row("servers in English", "/api/player/legacy/v1/auth/servers?lang=en",
            R"({"success":true,"servers":[)" + QByteArray(test).replace("Тестовый сервер", "Test server") +
                "," + backup + "]}");
        row("business types", "/api/v1/auth/business_types?lang=ru", R"({"success":true,"business_types":[
            {"icon_dark_theme":"@ORIGIN@files/icons/cafe_dark.png","icon_light_theme":"@ORIGIN@files/icons/cafe_light.png",
             "id":1,"image":"@ORIGIN@files/covers/cafe.png","name":"Кафе"},
            {"icon_dark_theme":"","icon_light_theme":"","id":2,"image":"","name":"Магазин одежды"}]})");
        row("music styles", "/api/v1/auth/music_styles?lang=ru",
            R"({"success":true,"music_styles":[{"id":10,"image":"","name":"Джаз"},{"id":11,"image":"","name":"Поп"}]})");
        // Keys the scenario leaves out come as empty values.
        row("objects", "/api/v1/auth/objects", R"({"success":true,"objects":[
            {"address":"ул. Садовая, 1","code":"shop1","contract_number":"Д-1","disable_player_control":false,"id":101,
             "image":"@ORIGIN@files/covers/shop.png","logo":"","name":"Кофейня","organization_name":"ООО «Кофе»"},
            {"address":"","code":"shop2","contract_number":"","disable_player_control":true,"id":102,"image":"",
             "logo":"","name":"Склад","organization_name":""}]})",
            R"({"login":"owner","password":"secret"})");
        row("objects of another account", "/api/v1/auth/objects", R"({"success":true,"objects":[
            {"address":"","code":"other","contract_number":"","disable_player_control":false,"id":201,"image":"",
             "logo":"","name":"Чужая точка","organization_name":""}]})",
            R"({"login":"second","password":"pass2"})");
        // Recommendations follow both answers; one without answers of its own suits all.
        row("recommended", "playlists/recommended?business_type_id=1&music_style_id=10",
            R"({"success":true,"playlists":[
            {"id":1,"image":"@ORIGIN@files/covers/jazz.png","main":true,"name":"Утренний джаз"},
            {"id":2,"image":"","main":false,"name":"Для всех"}]})");
        row("recommended for other answers", "playlists/recommended?business_type_id=2&music_style_id=11",
            R"({"success":true,"playlists":[{"id":2,"image":"","main":false,"name":"Для всех"}]})");
        row("stock music", "playlists/stock_music?lang=ru", R"({"success":true,"playlists":[{"active":true,
            "content_size_bytes":1500000000.5,"id":1,"image":"@ORIGIN@files/covers/jazz.png","name":"Утренний джаз",
            "tracks_count":2}]})");
        // Counted from the tracks unless the scenario gives a count; active when chosen for any part of the
        // day.
        row("video", "playlists/video", R"({"success":true,"playlists":[
            {"active":true,"content_size_bytes":0,"id":3,"image":"","name":"Клипы дня","tracks_count":1},
            {"active":true,"content_size_bytes":0,"id":4,"image":"","name":"Клипы вечера","tracks_count":12}]})");
        row("photo", "playlists/photo", R"({"success":true,"playlists":[
            {"active":false,"content_size_bytes":0,"id":5,"image":"","name":"Интерьер","tracks_count":0}]})");
        row("playlist tracks", "playlists/stock_music/1", R"({"success":true,"data":{"tracks":[
            {"author":"Квартет","id":1001,"image":"@ORIGIN@files/covers/1001.png","name":"Первая"},
            {"author":"Квартет","id":1002,"image":"","name":"Вторая"}]}})");
        const QByteArray none = R"({"playlist_id":0,"playlist_name":""})";
        row("settings", "playlists/settings",
            R"({"success":true,"settings":{
            "music":{"advanced":false,"playlist_id":1,"playlist_name":"Утренний джаз",
                     "morning":)" +
                none + R"(,"day":)" + none + R"(,"evening":)" + none + R"(,"night":)" + none + R"(},
            "photo":{"advanced":false,"playlist_id":0,"playlist_name":"",
                     "morning":)" +
                none + R"(,"day":)" + none + R"(,"evening":)" + none + R"(,"night":)" + none + R"(},
            "video":{"advanced":true,"playlist_id":0,"playlist_name":"",
                     "morning":{"playlist_id":3,"playlist_name":"Клипы дня"},"day":{"playlist_id":3,"playlist_name":"Клипы дня"},
                     "evening":{"playlist_id":4,"playlist_name":"Клипы вечера"},"night":)" +
                none + R"(}}})");
        row("certificate", "certificate?lang=ru",
            R"({"success":true,"url":"@ORIGIN@files/certificate.pdf"})");
    }

    void repliesHaveThePlayersShapes()
    {
        QFETCH(QString, target);
        QFETCH(QByteArray, objectsLogin);
        QFETCH(QByteArray, expected);
        const auto answer = !objectsLogin.isEmpty()               ? client->PostJson(target, objectsLogin)
                            : target.startsWith(QLatin1Char('/')) ? client->Get(target)
                                                                  : Get(QLatin1Char('/') + target, token);
        QVERIFY2(answer.complete && answer.status == 200, qPrintable(Describe(answer)));
        const QJsonDocument wanted =
            QJsonDocument::fromJson(expected.replace("@ORIGIN@", service->Origin().toUtf8()));
        QVERIFY2(wanted.isObject(), expected.constData());
        QCOMPARE(Compact(answer.Json()), Compact(wanted.object()));
    }

    void signInIssuesOneWorkingTokenPerAccountAndObject()
    {
        // The player's own text, a blank before "code" included.
        const QByteArray body = R"({"login":"owner","password":"secret", "code":"shop2"})";
        const auto answer = client->PostJson(QStringLiteral("/api/v1/auth/sign_in"), body);
        QVERIFY2(IsSuccess(answer), qPrintable(Describe(answer)));
        const QString shop2Token = answer.Json().value(QStringLiteral("token")).toString();
        QVERIFY(QRegularExpression(QStringLiteral("^[0-9a-f]{32}$")).match(shop2Token).hasMatch());
        QVERIFY(shop2Token != token);

        const QJsonArray signIns = service->Received(QStringLiteral("sign_ins"));
        QCOMPARE(signIns.size(), 2);
        QJsonObject record = signIns.at(1).toObject();
        record.remove(QStringLiteral("request"));
        QCOMPARE(record, QJsonObject({{"body", QString::fromUtf8(body)},
                                      {"login", "owner"},
                                      {"code", "shop2"},
                                      {"token", shop2Token},
                                      {"error", 0}}));

        // Both sign-ins work side by side, each for its own object.
        QVERIFY(VersionWorks(QStringLiteral("shop1"), token));
        QVERIFY(VersionWorks(QStringLiteral("shop2"), shop2Token));

        // Signing in for the same object again, as from another device, ends the first.
        const QString again = SignIn(QStringLiteral("shop1"));
        QVERIFY(!again.isEmpty());
        QVERIFY(IsApiError(Get(QStringLiteral("/playback/version?timestamp=1"), token), 403010));
        QVERIFY(VersionWorks(QStringLiteral("shop1"), again));

        // A refused sign-in is recorded with its error.
        QVERIFY(SignIn(QStringLiteral("other")).isEmpty());
        QCOMPARE(service->Received(QStringLiteral("sign_ins")).last()[QStringLiteral("error")].toInt(),
                 404001);
    }

    void everyAuthorizedEndpointChecksTheToken_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("contentType");
        QTest::addColumn<QByteArray>("body");
        const auto row = [](const char* name, const char* method, const char* path, const QByteArray& body) {
            const QByteArray type = QByteArray(method) == "GET" ? QByteArray()
                                    : body.startsWith('[')      ? QByteArray("application/json")
                                                           : QByteArray("application/x-www-form-urlencoded");
            QTest::newRow(name) << method << path << type << body;
        };
        row("version", "GET", "/playback/version?timestamp=1", {});
        row("configuration", "GET", "/playback/configuration_v2?timestamp=1&lang=ru", {});
        row("player version", "POST", "/player_version", "version=3.13&os=Linux&platform_info=x86_64");
        row("recommended", "GET", "/playlists/recommended?business_type_id=1&music_style_id=10", {});
        row("business type", "POST", "/set_business_type", "business_type_id=1");
        row("music styles", "POST", "/set_music_styles", "music_styles=%5B10%5D");
        row("stock playlists", "GET", "/playlists/stock_music?lang=ru", {});
        row("video playlists", "GET", "/playlists/video", {});
        row("playlist tracks", "GET", "/playlists/video/3", {});
        row("settings", "GET", "/playlists/settings", {});
        row("activate", "POST", "/playlists/photo/5/activate", {});
        row("deactivate", "POST", "/playlists/photo/5/deactivate", {});
        row("certificate", "GET", "/certificate?lang=ru", {});
        row("statistics", "POST", "/statistics", "[" + Report(QStringLiteral("10:00:00"), 1) + "]");
        row("like", "POST", "/likes_dislikes", "value=1&track_id=1");
        row("sign out", "POST", "/sign_out", {});
    }

    void everyAuthorizedEndpointChecksTheToken()
    {
        QFETCH(QString, method);
        QFETCH(QString, path);
        QFETCH(QByteArray, contentType);
        QFETCH(QByteArray, body);
        const QString shop2Token = SignIn(QStringLiteral("shop2"));
        QVERIFY(!shop2Token.isEmpty());
        const auto call = [&](const ApiClient::Headers& headers) {
            const QString target = ObjectPath(QStringLiteral("shop1"), path);
            return method == QLatin1String("GET") ? client->Get(target, headers)
                                                  : client->Post(target, body, contentType, headers);
        };
        const auto missing = call({});
        QVERIFY2(IsApiError(missing, 403010), qPrintable(Describe(missing)));
        QVERIFY(
            IsApiError(call(ApiClient::Token(QStringLiteral("0123456789abcdef0123456789abcdef"))), 403010));
        QVERIFY(IsApiError(call(ApiClient::Token(QString())), 403010));
        // A good token, but for another object of the same account.
        QVERIFY(IsApiError(call(ApiClient::Token(shop2Token)), 403010));
        const auto right = call(ApiClient::Token(token));
        QVERIFY2(IsSuccess(right), qPrintable(Describe(right)));
    }

    // Every refusal is {"success": false, "error": code} with HTTP 200, and leaves
    // nothing recorded but the sign-in attempt itself.
    void refusalsCarryTheServersErrorCodes_data()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QString>("target");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<bool>("withToken");
        QTest::addColumn<int>("error");
        const QString objects = QStringLiteral("/api/v1/auth/objects");
        const QString signIn = QStringLiteral("/api/v1/auth/sign_in");
        const QString code = QStringLiteral("/api/v1/auth/send_confirmation_code");
        const QString signUp = QStringLiteral("/api/v1/auth/sign_up");
        const QByteArray json = "application/json";
        const QByteArray form = "application/x-www-form-urlencoded";
        Refusal("objects: wrong password", "POST", objects, R"({"login":"owner","password":"pass2"})",
                401000);
        Refusal("objects: unknown login", "POST", objects, R"({"login":"nobody","password":""})", 401000);
        Refusal("objects: form sent as JSON", "POST", objects, "login=owner&password=secret", 400000, json);
        Refusal("objects: JSON sent as form", "POST", objects, R"({"login":"owner","password":"secret"})",
                400000, form);
        Refusal("sign-in: unknown object", "POST", signIn,
                R"({"login":"owner","password":"secret", "code":"other"})", 404001);
        Refusal("sign-in: wrong password", "POST", signIn,
                R"({"login":"owner","password":"wrong", "code":"shop1"})", 401000);
        // The player inserts values without escaping; a quote breaks the text.
        Refusal("sign-in: unescaped quote", "POST", signIn,
                "{\"login\":\"owner\",\"password\":\"se\"cret\", \"code\":\"shop1\"}", 400000);
        Refusal("sign-in: no code", "POST", signIn, R"({"login":"owner","password":"secret"})", 400000);
        Refusal("code: not a phone", "POST", code, "phone=123&lang=ru", 403002);
        Refusal("code: phone taken", "POST", code, "phone=+79990000001&lang=ru", 403000);
        Refusal("sign-up: phone taken", "POST", signUp, "phone=+79990000001&city=X&lang=ru", 403000);
        Refusal("sign-up: no city", "POST", signUp, "phone=+79991112244&lang=ru", 400000);
        Refusal("version without timestamp", "GET", "playback/version", {}, 400000);
        Refusal("version, timestamp a word", "GET", "playback/version?timestamp=soon", {}, 400000);
        Refusal("configuration without timestamp", "GET", "playback/configuration_v2?lang=ru", {}, 400000);
        Refusal("configuration, negative timestamp", "GET", "playback/configuration_v2?timestamp=-5&lang=ru",
                {}, 400000);
        Refusal("recommended: unknown type", "GET",
                "playlists/recommended?business_type_id=9&music_style_id=10", {}, 404003);
        Refusal("recommended: unknown style", "GET",
                "playlists/recommended?business_type_id=1&music_style_id=9", {}, 404004);
        Refusal("recommended: no style", "GET", "playlists/recommended?business_type_id=1", {}, 400000);
        Refusal("unknown playlist", "GET", "playlists/stock_music/3", {}, 404005);
        Refusal("unknown playlist type", "GET", "playlists/radio", {}, 404000);
        // Whole-day choices meet advanced settings, part-of-day ones simple settings.
        Refusal("whole day on advanced", "POST", "playlists/video/3/activate", {}, 403005);
        Refusal("part of day on simple", "POST", "playlists/music/2/activate",
                "morning=true&day=false&evening=false&night=false", 403006);
        Refusal("activate: parts not true/false", "POST", "playlists/video/4/activate", "morning=yes",
                400000);
        Refusal("activate: unknown playlist", "POST", "playlists/video/99/activate", {}, 404005);
        Refusal("player version: no platform", "POST", "player_version", "version=3.13&os=Linux", 400000);
        Refusal("business type: unknown", "POST", "set_business_type", "business_type_id=99", 404003);
        Refusal("business type: a word", "POST", "set_business_type", "business_type_id=two", 400000);
        Refusal("music styles: unknown", "POST", "set_music_styles", "music_styles=%5B10%2C12%5D", 404004);
        Refusal("music styles: not a list", "POST", "set_music_styles", "music_styles=10", 400000);
        Refusal("like: value a word", "POST", "likes_dislikes", "value=yes&track_id=1", 400000);
        Refusal("like: no track", "POST", "likes_dislikes", "value=1", 400000);
        Refusal("statistics: not an array", "POST", "statistics", Report(QStringLiteral("10:00:00"), 1),
                400000);
        Refusal("statistics: not JSON", "POST", "statistics", "[{\"volume\":", 400000);
        Refusal("statistics: form content type", "POST", "statistics",
                "[" + Report(QStringLiteral("10:00:00"), 1) + "]", 400000, form);
        Refusal("statistics: time without seconds", "POST", "statistics",
                "[" + Report(QStringLiteral("10:00"), 1) + "]", 400000);
        Refusal("statistics: hour without its zero", "POST", "statistics",
                "[" + Report(QStringLiteral("9:00:00"), 1) + "]", 400000);
        Refusal("statistics: volume as text", "POST", "statistics", SpoiltBatch("volume", R"("70")"), 400000);
        Refusal("statistics: unknown type", "POST", "statistics", SpoiltBatch("type", R"("Music")"), 400000);
        Refusal("statistics: missing shop", "POST", "statistics", SpoiltBatch("shop_id", {}), 400000);
        Refusal("statistics: fractional track", "POST", "statistics", SpoiltBatch("track_id", "1.5"), 400000);
        Refusal("statistics: date the other way", "POST", "statistics",
                SpoiltBatch("date", R"("2026-02-27")"), 400000);
        Refusal("unknown path", "GET", "nothing/here", {}, 404000);
        Refusal("unknown path without token", "GET", "nothing/here", {}, 403010, {}, false);
        Refusal("statistics by GET", "GET", "statistics", {}, 404000);
        Refusal("version by POST", "POST", "playback/version?timestamp=1", {}, 404000);
        Refusal("sign-in by GET", "GET", signIn, {}, 404000);
        Refusal("trailing slash", "GET", "playback/version/?timestamp=1", {}, 404000);
    }

    void refusalsCarryTheServersErrorCodes()
    {
        QFETCH(QByteArray, method);
        QFETCH(QString, target);
        QFETCH(QByteArray, body);
        QFETCH(QByteArray, type);
        QFETCH(bool, withToken);
        QFETCH(int, error);
        const ApiClient::Headers headers = withToken ? ApiClient::Token(token) : ApiClient::Headers();
        const auto answer =
            method == "GET" ? client->Get(target, headers) : client->Post(target, body, type, headers);
        QVERIFY2(IsApiError(answer, error), qPrintable(Describe(answer)));
        QJsonObject received = service->Received();
        received.remove(QStringLiteral("sign_ins"));
        for (const QString& section : received.keys()) {
            QVERIFY2(received.value(section).toArray().isEmpty(), qPrintable(section));
        }
    }

    void configurationIsDatedFromTheServiceToday()
    {
        QVERIFY(service->SetToday(QDate(2026, 2, 27)));
        QJsonObject configuration = Configuration();
        QJsonArray schedule = configuration.value(QStringLiteral("schedule")).toArray();
        QCOMPARE(schedule.size(), 3);
        QStringList days;
        for (const QJsonValue& day : schedule) {
            const QJsonObject object = day.toObject();
            days << QStringLiteral("%1 %2 %3")
                        .arg(object.value(QStringLiteral("date")).toString(),
                             object.value(QStringLiteral("day_of_week")).toString())
                        .arg(object.value(QStringLiteral("day_of_week_id")).toInt());
            QVERIFY(!object.contains(QStringLiteral("day_offset")));
        }
        QCOMPARE(days,
                 QStringList({QStringLiteral("27.02.2026 Пятница 5"), QStringLiteral("28.02.2026 Суббота 6"),
                              QStringLiteral("05.03.2026 Четверг 4")}));
        // A day without periods still carries the list; the rest passes through as written.
        QCOMPARE(schedule.at(2).toObject().value(QStringLiteral("periods")).toArray(), QJsonArray());
        const QJsonObject midday =
            schedule.at(0).toObject().value(QStringLiteral("periods")).toArray().at(1).toObject();
        QVERIFY(midday.value(QStringLiteral("schedule_id")).isNull());
        QCOMPARE(midday.value(QStringLiteral("end_time_str")).toString(), QStringLiteral("00:00"));

        const QJsonArray entries =
            configuration.value(QStringLiteral("ads")).toArray().at(0)[QStringLiteral("tracks")].toArray();
        QCOMPARE(entries, QJsonArray({QJsonObject{{"track", 41}, {"date", "27.02.2026"}},
                                      QJsonObject{{"track", 41}, {"date", "28.02.2026"}},
                                      QJsonObject{{"track", 42}, {"date", "28.02.2026"}},
                                      QJsonObject{{"track", 41}, {"date", "01.01.2000"}}}));

        const int version = Version();
        QVERIFY(service->SetDayOffset(1));
        configuration = Configuration();
        QCOMPARE(configuration.value(QStringLiteral("schedule"))
                     .toArray()
                     .at(0)[QStringLiteral("date")]
                     .toString(),
                 QStringLiteral("28.02.2026"));
        // A new day is a new configuration for the player to fetch.
        QVERIFY(Version() != version);
        QCOMPARE(configuration.value(QStringLiteral("version")).toInt(), Version());
    }

    void tracksCarryTheFactsOfTheirFiles()
    {
        const QJsonObject configuration = Configuration();
        QCOMPARE(Keys(configuration),
                 QStringList({"ads", "content", "domains", "playlists", "schedule", "version"}));
        QCOMPARE(configuration.value(QStringLiteral("domains")).toArray(),
                 QJsonArray({service->MediaDomain()}));
        QStringList types;
        for (const QJsonValue& list : configuration.value(QStringLiteral("content")).toArray()) {
            types << list.toObject().value(QStringLiteral("type")).toString();
        }
        QCOMPARE(types, QStringList({"clip", "music", "video", "photo"}));

        // Digest and size from the file, name and author from the manifest or the
        // file's name; whatever the scenario writes wins; a missing or remote file
        // has no digest, and a remote one no name either.
        const auto track = [&](int id, const QString& path, const QString& name, const QString& author,
                               const QJsonValue& md5, int size, const QJsonObject& own = {}) {
            QJsonObject expected{{"id", id},       {"path", path},
                                 {"name", name},   {"author", author},
                                 {"md5", md5},     {"file_size_bytes", size},
                                 {"image", ""},    {"liked", QJsonValue::Null},
                                 {"shop_id", 101}, {"uploaded_by_user", false}};
            for (auto it = own.begin(); it != own.end(); ++it) {
                expected.insert(it.key(), it.value());
            }
            return Compact(expected);
        };
        const auto facts = [&](int id) {
            return Compact(TrackById(configuration, id));
        };
        QCOMPARE(facts(1),
                 track(1, "a.mp3", "Утро", "Оркестр", Md5(musicA), musicA.size(), {{"liked", true}}));
        QCOMPARE(facts(2), track(2, "b.mp3", "Своё имя", "Свой автор", Md5(musicB), musicB.size(),
                                 {{"image", service->Origin() + QStringLiteral("files/covers/b.png")},
                                  {"uploaded_by_user", true}}));
        QCOMPARE(facts(3), track(3, "missing.mp3", "missing", "", "", 0));
        QCOMPARE(facts(4), track(4, "declared.mp3", "declared", "", "0123456789abcdef0123456789abcdef", 99,
                                 {{"shop_id", 5}}));
        QCOMPARE(facts(42), track(42, "promo/ad2.mp3", "ad2", "", Md5("second advert"), 13));
        QCOMPARE(facts(21), track(21, "https://cdn.example.invalid/v.mp4", "", "", "", 0));
    }

    void versionFollowsTheConfigurationAndItsFiles()
    {
        const int version = Version();
        QVERIFY(version > 0);
        QCOMPARE(Version(), version);
        QCOMPARE(service->ConfigurationVersion(QStringLiteral("shop1")), version);
        QCOMPARE(Configuration().value(QStringLiteral("version")).toInt(), version);

        // Another file under the same name is new content.
        const QByteArray changed = musicB + "!";
        WriteContent(QStringLiteral("music/b.mp3"), changed);
        QVERIFY(Version() != version);
        QCOMPARE(TrackById(Configuration(), 2).value(QStringLiteral("md5")).toString(), Md5(changed));
        WriteContent(QStringLiteral("music/b.mp3"), musicB);
        QCOMPARE(Version(), version);

        QCOMPARE(service->BumpConfigurationVersion(QStringLiteral("shop1")), version + 1);
        QCOMPARE(Version(), version + 1);
        QCOMPARE(service->SetConfigurationVersion(QStringLiteral("shop1"), 7), 7);
        QCOMPARE(Version(), 7);
        QCOMPARE(service->BumpConfigurationVersion(QStringLiteral("shop1")), 8);

        const QJsonObject replacement{{"version", 42},
                                      {"schedule", QJsonArray{QJsonObject{{"day_offset", 2}}}},
                                      {"content", QJsonArray()}};
        // The version set through the control API, bumped once, still wins over the template's.
        QCOMPARE(service->ReplaceConfiguration(QStringLiteral("shop1"), replacement), 8);
        QCOMPARE(Version(), 8);
        QVERIFY(service->Reset());
        token = SignIn(QStringLiteral("shop1"));
        QCOMPARE(service->ReplaceConfiguration(QStringLiteral("shop1"), replacement), 42);
        QCOMPARE(Configuration().value(QStringLiteral("schedule")).toArray().size(), 1);
        QCOMPARE(Configuration().value(QStringLiteral("domains")).toArray(),
                 QJsonArray({service->MediaDomain()}));

        const QJsonObject broken{{"schedule", QJsonArray{QJsonObject{{"day_offset", 9}}}}};
        QCOMPARE(service->ReplaceConfiguration(QStringLiteral("shop1"), broken), -1);
        QVERIFY2(service->ErrorString().contains(QStringLiteral("day_offset")),
                 qPrintable(service->ErrorString()));
    }

    void mediaAreServedFromTheContentFolder_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("type");
        const auto row = [](const char* name, const char* target, int status, const QByteArray& body = {},
                            const QByteArray& type = {}) {
            QTest::newRow(name) << target << status << body << type;
        };
        row("music", "/media/shop1/music/a.mp3", 200, musicA, "audio/mpeg");
        row("advert in a subfolder", "/media/shop1/clip/promo/ad2.mp3", 200, "second advert", "audio/mpeg");
        row("another object's code", "/media/shop2/photo/p.jpg", 200, "picture", "image/jpeg");
        row("plain file", "/files/photo/p.jpg", 200, "picture", "image/jpeg");
        row("unknown object", "/media/nobody/music/a.mp3", 404);
        row("unknown type", "/media/shop1/covers/a.mp3", 404);
        row("type folder of another type", "/media/shop1/video/a.mp3", 404);
        row("missing file", "/media/shop1/music/missing.mp3", 404);
        row("a folder", "/media/shop1/clip/promo", 404);
        row("dot dot", "/media/shop1/music/../../etc/passwd", 404);
        row("escaped dot dot", "/files/%2e%2e/%2e%2e/etc/passwd", 404);
        row("escaped slash", "/files/music%2Fa.mp3", 400);
        row("empty segment", "/files/music//a.mp3", 404);
    }

    void mediaAreServedFromTheContentFolder()
    {
        QFETCH(QString, target);
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QByteArray, type);
        const auto answer = client->Get(target);
        QVERIFY2(answer.complete, qPrintable(answer.error));
        QCOMPARE(answer.status, status);
        if (status == 200) {
            QCOMPARE(answer.body, body);
            QCOMPARE(answer.contentType, type);
        }
    }

    void statisticsBatchesAreRecordedInOrder()
    {
        const QByteArray first =
            "[" + Report(QStringLiteral("10:00:00"), 1) + "," + Report(QStringLiteral("10:01:00"), 2) + "]";
        QVERIFY(IsSuccess(client->PostJson(ObjectPath(QStringLiteral("shop1"), QStringLiteral("/statistics")),
                                           first, ApiClient::Token(token))));
        QVERIFY(IsSuccess(client->PostJson(ObjectPath(QStringLiteral("shop1"), QStringLiteral("/statistics")),
                                           "[" + Report(QStringLiteral("10:02:00"), 3) + "]",
                                           ApiClient::Token(token))));
        const QJsonArray batches = service->Received(QStringLiteral("statistics"));
        QCOMPARE(batches.size(), 2);
        QCOMPARE(batches.at(0)[QStringLiteral("object")].toString(), QStringLiteral("shop1"));
        QCOMPARE(batches.at(0)[QStringLiteral("reports")].toArray(), QJsonDocument::fromJson(first).array());
        const QJsonArray reports = service->StatisticsReports();
        QCOMPARE(reports.size(), 3);
        QCOMPARE(reports.at(2)[QStringLiteral("track_id")].toInt(), 3);
    }

    void likesChangeTheStatusTheConfigurationCarries()
    {
        const int version = Version();
        const auto like = Post(QStringLiteral("/likes_dislikes"), "value=1&track_id=2");
        QCOMPARE(like.Json(), QJsonObject({{"success", true}, {"like_status", true}}));
        QCOMPARE(TrackById(Configuration(), 2).value(QStringLiteral("liked")), QJsonValue(true));
        // The player keeps its own copy up to date; a like is no reason to reload.
        QCOMPARE(Version(), version);

        QCOMPARE(Post(QStringLiteral("/likes_dislikes"), "value=0&track_id=1").Json(),
                 QJsonObject({{"success", true}, {"like_status", false}}));
        QCOMPARE(TrackById(Configuration(), 1).value(QStringLiteral("liked")), QJsonValue(false));
        const auto cleared = Post(QStringLiteral("/likes_dislikes"), "value=-1&track_id=1");
        QCOMPARE(cleared.Json(), QJsonObject({{"success", true}, {"like_status", QJsonValue::Null}}));
        QVERIFY(TrackById(Configuration(), 1).value(QStringLiteral("liked")).isNull());

        const QJsonArray likes = service->Received(QStringLiteral("likes"));
        QCOMPARE(likes.size(), 3);
        QCOMPARE(likes.at(0)[QStringLiteral("track_id")].toInt(), 2);
        QCOMPARE(likes.at(0)[QStringLiteral("value")].toInt(), 1);
    }

    void playerVersionAndQuestionnaireAreRecorded()
    {
        const auto first = [&](const QString& section, const QString& key) {
            return service->Received(section).at(0)[key];
        };
        // QUrlQuery leaves '+' as it is; it must arrive as a '+', not as a blank.
        QVERIFY(IsSuccess(Post(QStringLiteral("/player_version"),
                               "version=3.13&os=Linux&platform_info=Debian%2012+x86_64")));
        QCOMPARE(first(QStringLiteral("player_versions"), QStringLiteral("version")).toString(),
                 QStringLiteral("3.13"));
        QCOMPARE(first(QStringLiteral("player_versions"), QStringLiteral("platform_info")).toString(),
                 QStringLiteral("Debian 12+x86_64"));
        QCOMPARE(first(QStringLiteral("player_versions"), QStringLiteral("object")).toString(),
                 QStringLiteral("shop1"));

        QVERIFY(IsSuccess(Post(QStringLiteral("/set_business_type"), "business_type_id=2")));
        QCOMPARE(first(QStringLiteral("business_types"), QStringLiteral("business_type_id")).toInt(), 2);

        // The ids as QJsonDocument writes an array, indented, inside the form.
        const QByteArray styles = QJsonDocument(QJsonArray{10, 11}).toJson().toPercentEncoding();
        QVERIFY(IsSuccess(Post(QStringLiteral("/set_music_styles"), "music_styles=" + styles)));
        QCOMPARE(first(QStringLiteral("music_styles"), QStringLiteral("music_styles")).toArray(),
                 QJsonArray({10, 11}));
    }

    void playlistChoicesKeepTheSettingsRules()
    {
        const auto settings = [&](const QString& kind) {
            return Field(QStringLiteral("/playlists/settings"), QStringLiteral("settings"))[kind].toObject();
        };
        const auto parts = [&](const QJsonObject& video) {
            QList<int> ids;
            for (const char* part : {"morning", "day", "evening", "night"}) {
                ids << video.value(QLatin1String(part))[QStringLiteral("playlist_id")].toInt();
            }
            return ids;
        };
        QVERIFY(IsSuccess(Post(QStringLiteral("/playlists/music/2/activate"), QByteArray())));
        QCOMPARE(settings(QStringLiteral("music")).value(QStringLiteral("playlist_id")).toInt(), 2);
        QCOMPARE(Field(QStringLiteral("/playlists/stock_music"), QStringLiteral("playlists"))
                     .toArray()
                     .at(0)[QStringLiteral("active")],
                 QJsonValue(false));

        QVERIFY(IsSuccess(Post(QStringLiteral("/playlists/video/4/activate"),
                               "morning=true&day=false&evening=false&night=true")));
        QCOMPARE(parts(settings(QStringLiteral("video"))), QList<int>({4, 3, 0, 4}));
        QVERIFY(IsSuccess(Post(QStringLiteral("/playlists/video/3/deactivate"), QByteArray())));
        QCOMPARE(parts(settings(QStringLiteral("video"))), QList<int>({4, 0, 0, 4}));

        const QJsonArray changes = service->Received(QStringLiteral("playlist_changes"));
        QCOMPARE(changes.size(), 3);
        QCOMPARE(changes.at(1)[QStringLiteral("night")].toString(), QStringLiteral("true"));
        QCOMPARE(changes.at(2)[QStringLiteral("action")].toString(), QStringLiteral("deactivate"));

        // An object whose player may not change anything.
        QVERIFY(IsApiError(client->PostForm(ObjectPath(QStringLiteral("shop2"),
                                                       QStringLiteral("/playlists/music/2/activate")),
                                            QByteArray(), ApiClient::Token(SignIn(QStringLiteral("shop2")))),
                           403001));
    }

    void certificateBelongsToTheObject()
    {
        QVERIFY(IsApiError(
            client->Get(ObjectPath(QStringLiteral("shop2"), QStringLiteral("/certificate?lang=ru")),
                        ApiClient::Token(SignIn(QStringLiteral("shop2")))),
            403008));
    }

    void signOutEndsTheSignIn()
    {
        QVERIFY(IsSuccess(Post(QStringLiteral("/sign_out"), QByteArray())));
        QVERIFY(!VersionWorks(QStringLiteral("shop1"), token));
        QVERIFY(IsApiError(Get(QStringLiteral("/playback/version?timestamp=1"), token), 403010));
        QCOMPARE(service->Received(QStringLiteral("sign_outs")).at(0)[QStringLiteral("token")].toString(),
                 token);
    }

    void signUpMakesAnAccountThatWorks()
    {
        const auto code = client->PostForm(QStringLiteral("/api/v1/auth/send_confirmation_code"),
                                           "phone=+79991112233&lang=ru");
        QCOMPARE(code.Json(), QJsonObject({{"success", true}, {"code", "4321"}}));
        QCOMPARE(
            service->Received(QStringLiteral("confirmation_codes")).at(0)[QStringLiteral("phone")].toString(),
            QStringLiteral("+79991112233"));

        const auto signUp =
            client->PostForm(QStringLiteral("/api/v1/auth/sign_up"),
                             "phone=+79991112233&city=%D0%A2%D0%B2%D0%B5%D1%80%D1%8C&lang=ru");
        QVERIFY2(IsSuccess(signUp), qPrintable(Describe(signUp)));
        const QJsonObject object = signUp.Json().value(QStringLiteral("object")).toObject();
        QCOMPARE(Keys(object), QStringList({"address", "code", "contract_number", "disable_player_control",
                                            "id", "image", "logo", "name", "organization_name"}));
        QCOMPARE(object.value(QStringLiteral("address")).toString(), QStringLiteral("Тверь"));
        const auto configuration =
            client->Get(ObjectPath(object.value(QStringLiteral("code")).toString(),
                                   QStringLiteral("/playback/configuration_v2?timestamp=1&lang=ru")),
                        ApiClient::Token(signUp.Json().value(QStringLiteral("token")).toString()));
        QVERIFY2(IsSuccess(configuration), qPrintable(Describe(configuration)));
        // New accounts start from the scenario's sign-up configuration, with their own shop id.
        const QJsonObject fresh = configuration.Json().value(QStringLiteral("configuration")).toObject();
        QCOMPARE(fresh.value(QStringLiteral("schedule")).toArray().size(), 3);
        QCOMPARE(TrackById(fresh, 1).value(QStringLiteral("shop_id")).toInt(),
                 object.value(QStringLiteral("id")).toInt());

        // The new phone is taken from now on.
        QVERIFY(IsApiError(
            client->PostForm(QStringLiteral("/api/v1/auth/sign_up"), "phone=+79991112233&city=X&lang=ru"),
            403000));
        QCOMPARE(service->Received(QStringLiteral("sign_ups")).size(), 1);
    }

    void deletingTheAccountEndsEverySignIn()
    {
        const QString shop2 = SignIn(QStringLiteral("shop2"));
        // The player puts the path after the server's URL as it is: a double slash.
        QVERIFY(IsApiError(client->Get(QStringLiteral("/api/v1//delete_account")), 403010));
        const auto deleted = client->Get(QStringLiteral("/api/v1//delete_account"), ApiClient::Token(token));
        QVERIFY2(IsSuccess(deleted), qPrintable(Describe(deleted)));
        QVERIFY(IsApiError(Get(QStringLiteral("/playback/version?timestamp=1"), token), 403010));
        QVERIFY(!VersionWorks(QStringLiteral("shop2"), shop2));
        QVERIFY(SignIn(QStringLiteral("shop1")).isEmpty());
        QVERIFY(!client->SignIn(QStringLiteral("second"), QStringLiteral("pass2"), QStringLiteral("other"))
                     .isEmpty());
        QCOMPARE(
            service->Received(QStringLiteral("deleted_accounts")).at(0)[QStringLiteral("login")].toString(),
            QStringLiteral("owner"));
    }

    void accountConditionsAnswerWithTheirCodes()
    {
        const QString version = QStringLiteral("/playback/version?timestamp=1");
        QVERIFY(service->SetAccountBlocked(QStringLiteral("owner"), true));
        QVERIFY(IsApiError(Get(version, token), 403003));
        QVERIFY(IsApiError(client->PostJson(QStringLiteral("/api/v1/auth/objects"),
                                            R"({"login":"owner","password":"secret"})"),
                           403003));
        QVERIFY(SignIn(QStringLiteral("shop1")).isEmpty());
        QVERIFY(service->SetAccountBlocked(QStringLiteral("owner"), false));
        QVERIFY(IsSuccess(Get(version, token)));

        QVERIFY(service->SetObjectExported(QStringLiteral("shop1"), true));
        QVERIFY(IsApiError(Get(version, token), 403013));
        QVERIFY(IsApiError(client->PostJson(QStringLiteral("/api/v1/auth/sign_in"),
                                            R"({"login":"owner","password":"secret", "code":"shop1"})"),
                           403013));
        QVERIFY(service->SetObjectExported(QStringLiteral("shop1"), false));

        QCOMPARE(service->InvalidateTokens(QStringLiteral("shop1")), 1);
        QVERIFY(IsApiError(Get(version, token), 403010));
        QVERIFY(!service->SetAccountBlocked(QStringLiteral("nobody"), true));
        QVERIFY(!service->SetObjectExported(QStringLiteral("nowhere"), true));
    }

    void requestLogKeepsEveryRequestInOrder()
    {
        QVERIFY(service->Reset());
        const QByteArray signIn = R"({"login":"owner","password":"secret", "code":"shop1"})";
        const QString fresh = client->PostJson(QStringLiteral("/api/v1/auth/sign_in"), signIn)
                                  .Json()
                                  .value(QStringLiteral("token"))
                                  .toString();
        Get(QStringLiteral("/playback/version?timestamp=5"), fresh);
        client->Get(QStringLiteral("/media/shop1/photo/p.jpg"));
        QVERIFY(service->Faults().isEmpty());
        const QJsonArray requests = service->Requests();
        QCOMPARE(requests.size(), 3);
        QStringList endpoints;
        for (int i = 0; i < requests.size(); ++i) {
            QCOMPARE(requests.at(i)[QStringLiteral("index")].toInt(), i);
            endpoints << requests.at(i)[QStringLiteral("endpoint")].toString();
        }
        QCOMPARE(endpoints, QStringList({"auth/sign_in", "playback/version", "media/photo/p.jpg"}));
        QCOMPARE(requests.at(0)[QStringLiteral("body")].toString().toUtf8(), signIn);
        QCOMPARE(requests.at(0)[QStringLiteral("headers")][QStringLiteral("Content-Type")].toString(),
                 QStringLiteral("application/json"));
        const QJsonObject second = requests.at(1).toObject();
        QCOMPARE(second.value(QStringLiteral("target")).toString(),
                 QStringLiteral("/api/v1/shop1/playback/version?timestamp=5"));
        QCOMPARE(second.value(QStringLiteral("method")).toString(), QStringLiteral("GET"));
        QCOMPARE(second.value(QStringLiteral("headers"))[QStringLiteral("token")].toString(), fresh);
        QCOMPARE(service->Requests(2).size(), 1);
        QCOMPARE(service->RequestsTo(QStringLiteral("playback/version")).size(), 1);
    }

    void resetGoesBackToTheScenario()
    {
        const int version = Version();
        QVERIFY(service->BumpConfigurationVersion(QStringLiteral("shop1")) > 0);
        QVERIFY(service->SetAccountBlocked(QStringLiteral("second"), true));
        QVERIFY(service->SetDayOffset(3));
        QVERIFY(service->AddFault({QStringLiteral("servers"), QStringLiteral("not_found")}) > 0);
        QVERIFY(service->Reset());
        QVERIFY(service->Faults().isEmpty());
        QVERIFY(service->Requests().isEmpty());
        QCOMPARE(service->Received(QStringLiteral("sign_ins")).size(), 0);
        QVERIFY(!client->SignIn(QStringLiteral("second"), QStringLiteral("pass2"), QStringLiteral("other"))
                     .isEmpty());
        // Tokens are gone too: the scenario has no sign-ins.
        QVERIFY(IsApiError(Get(QStringLiteral("/playback/version?timestamp=1"), token), 403010));
        token = SignIn(QStringLiteral("shop1"));
        QCOMPARE(Version(), version);
        QVERIFY(IsSuccess(client->Get(QStringLiteral("/api/player/legacy/v1/auth/servers"))));
    }
};

QTEST_GUILESS_MAIN(ReferenceServiceApiTest)
#include "tst_reference_service_api.moc"
