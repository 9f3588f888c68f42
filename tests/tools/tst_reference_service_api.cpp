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

// The reference service answers every endpoint the player calls, in the shapes the
// player reads, and keeps the rules of the real server: tokens per account and
// object, the account conditions, the playlist settings rules. These tests speak
// raw HTTP to it so that every byte is the test's choice.
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

    void WriteContent(const QString& relative, const QByteArray& bytes)
    {
        const QString path = content.filePath(relative);
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(bytes), bytes.size());
    }

    ApiClient::Answer Get(const QString& path, const QString& withToken)
    {
        return client->Get(ObjectPath(QStringLiteral("shop1"), path), ApiClient::Token(withToken));
    }

    QJsonObject Configuration()
    {
        const auto answer =
            Get(QStringLiteral("/playback/configuration_v2?timestamp=1700000000&lang=ru"), token);
        return answer.Json().value(QStringLiteral("configuration")).toObject();
    }

    int Version()
    {
        return Get(QStringLiteral("/playback/version?timestamp=1700000000"), token)
            .Json()
            .value(QStringLiteral("version"))
            .toInt(-1);
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
        token = client->SignIn(QStringLiteral("owner"), QStringLiteral("secret"), QStringLiteral("shop1"));
        QVERIFY(!token.isEmpty());
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    void serversListNamesTheServiceItselfAndSpeaksEnglishOnRequest()
    {
        const QString path = QStringLiteral("/api/player/legacy/v1/auth/servers");
        const auto russian = client->Get(path);
        QVERIFY2(IsSuccess(russian), qPrintable(Describe(russian)));
        const QJsonArray servers = russian.Json().value(QStringLiteral("servers")).toArray();
        QCOMPARE(servers.size(), 2);
        const QJsonObject first = servers.at(0).toObject();
        QCOMPARE(first.value(QStringLiteral("url")).toString(), service->BaseUrl());
        QCOMPARE(first.value(QStringLiteral("privacy_policy_url")).toString(),
                 service->Origin() + QStringLiteral("privacy"));
        QCOMPARE(first.value(QStringLiteral("name")).toString(), QStringLiteral("Тестовый сервер"));
        QCOMPARE(Keys(first),
                 QStringList({"email", "id", "is_primary", "landing_url", "name", "phone",
                              "phone_country_code", "phone_symbol_len", "privacy_policy_url", "url"}));
        QCOMPARE(servers.at(1).toObject().value(QStringLiteral("url")).toString(),
                 QStringLiteral("http://backup.invalid/api/v1/"));
        QVERIFY(service->BaseUrl().startsWith(QStringLiteral("http://127.0.0.1:")));
        QVERIFY(service->BaseUrl().endsWith(QStringLiteral("/api/v1/")));

        const auto english = client->Get(path + QStringLiteral("?lang=en"));
        const QJsonArray englishServers = english.Json().value(QStringLiteral("servers")).toArray();
        QCOMPARE(englishServers.at(0).toObject().value(QStringLiteral("name")).toString(),
                 QStringLiteral("Test server"));
        // A server without an English name keeps its own.
        QCOMPARE(englishServers.at(1).toObject().value(QStringLiteral("name")).toString(),
                 QStringLiteral("Запасной сервер"));
    }

    void signUpCataloguesCarryEveryKey()
    {
        const auto types = client->Get(QStringLiteral("/api/v1/auth/business_types?lang=ru"));
        QVERIFY2(IsSuccess(types), qPrintable(Describe(types)));
        const QJsonObject cafe =
            types.Json().value(QStringLiteral("business_types")).toArray().at(0).toObject();
        QCOMPARE(Keys(cafe), QStringList({"icon_dark_theme", "icon_light_theme", "id", "image", "name"}));
        QCOMPARE(cafe.value(QStringLiteral("name")).toString(), QStringLiteral("Кафе"));
        QCOMPARE(cafe.value(QStringLiteral("image")).toString(),
                 service->Origin() + QStringLiteral("files/covers/cafe.png"));

        const auto styles = client->Get(QStringLiteral("/api/v1/auth/music_styles?lang=ru"));
        const QJsonArray list = styles.Json().value(QStringLiteral("music_styles")).toArray();
        QCOMPARE(list.size(), 2);
        QCOMPARE(list.at(1).toObject(),
                 QJsonObject({{"id", 11}, {"name", QStringLiteral("Поп")}, {"image", QString()}}));
    }

    void playbackObjectsAreListedForTheRightPasswordOnly()
    {
        const auto owner = client->PostJson(QStringLiteral("/api/v1/auth/objects"),
                                            R"({"login":"owner","password":"secret"})");
        QVERIFY2(IsSuccess(owner), qPrintable(Describe(owner)));
        const QJsonArray objects = owner.Json().value(QStringLiteral("objects")).toArray();
        QCOMPARE(objects.size(), 2);
        const QJsonObject shop = objects.at(0).toObject();
        QCOMPARE(Keys(shop), QStringList({"address", "code", "contract_number", "disable_player_control",
                                          "id", "image", "logo", "name", "organization_name"}));
        QCOMPARE(shop.value(QStringLiteral("code")).toString(), QStringLiteral("shop1"));
        QCOMPARE(shop.value(QStringLiteral("organization_name")).toString(), QStringLiteral("ООО «Кофе»"));
        QCOMPARE(shop.value(QStringLiteral("image")).toString(),
                 service->Origin() + QStringLiteral("files/covers/shop.png"));
        QCOMPARE(objects.at(1).toObject().value(QStringLiteral("disable_player_control")).toBool(), true);

        const auto second = client->PostJson(QStringLiteral("/api/v1/auth/objects"),
                                             R"({"login":"second","password":"pass2"})");
        QCOMPARE(second.Json().value(QStringLiteral("objects")).toArray().size(), 1);

        QVERIFY(IsApiError(client->PostJson(QStringLiteral("/api/v1/auth/objects"),
                                            R"({"login":"owner","password":"pass2"})"),
                           401000));
        QVERIFY(IsApiError(
            client->PostJson(QStringLiteral("/api/v1/auth/objects"), R"({"login":"nobody","password":""})"),
            401000));
        QVERIFY(IsApiError(
            client->PostJson(QStringLiteral("/api/v1/auth/objects"), "login=owner&password=secret"), 400000));
        QVERIFY(IsApiError(client->PostForm(QStringLiteral("/api/v1/auth/objects"),
                                            R"({"login":"owner","password":"secret"})"),
                           400000));
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
        const QJsonObject record = signIns.at(1).toObject();
        QCOMPARE(record.value(QStringLiteral("body")).toString().toUtf8(), body);
        QCOMPARE(record.value(QStringLiteral("code")).toString(), QStringLiteral("shop2"));
        QCOMPARE(record.value(QStringLiteral("token")).toString(), shop2Token);
        QCOMPARE(record.value(QStringLiteral("error")).toInt(), 0);

        // Both sign-ins work side by side, each for its own object.
        QVERIFY(IsSuccess(Get(QStringLiteral("/playback/version?timestamp=1"), token)));
        QVERIFY(IsSuccess(
            client->Get(ObjectPath(QStringLiteral("shop2"), QStringLiteral("/playback/version?timestamp=1")),
                        ApiClient::Token(shop2Token))));

        // Signing in for the same object again, as from another device, ends the first.
        const QString again =
            client->SignIn(QStringLiteral("owner"), QStringLiteral("secret"), QStringLiteral("shop1"));
        QVERIFY(!again.isEmpty());
        QVERIFY(IsApiError(Get(QStringLiteral("/playback/version?timestamp=1"), token), 403010));
        QVERIFY(IsSuccess(Get(QStringLiteral("/playback/version?timestamp=1"), again)));

        const QString signInPath = QStringLiteral("/api/v1/auth/sign_in");
        QVERIFY(IsApiError(
            client->PostJson(signInPath, R"({"login":"owner","password":"secret", "code":"other"})"),
            404001));
        QVERIFY(IsApiError(
            client->PostJson(signInPath, R"({"login":"owner","password":"wrong", "code":"shop1"})"), 401000));
        // The player inserts values without escaping; a quote breaks the text.
        const QByteArray unescaped = "{\"login\":\"owner\",\"password\":\"se\"cret\", \"code\":\"shop1\"}";
        QVERIFY(IsApiError(client->PostJson(signInPath, unescaped), 400000));
        QVERIFY(IsApiError(client->PostJson(signInPath, R"({"login":"owner","password":"secret"})"), 400000));
        QCOMPARE(service->Received(QStringLiteral("sign_ins"))
                     .last()
                     .toObject()
                     .value(QStringLiteral("error"))
                     .toInt(),
                 400000);
    }

    void everyAuthorizedEndpointChecksTheToken_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("contentType");
        QTest::addColumn<QByteArray>("body");
        const QByteArray form = "application/x-www-form-urlencoded";
        QTest::newRow("version") << "GET"
                                 << "/playback/version?timestamp=1" << QByteArray() << QByteArray();
        QTest::newRow("configuration")
            << "GET"
            << "/playback/configuration_v2?timestamp=1&lang=ru" << QByteArray() << QByteArray();
        QTest::newRow("player version")
            << "POST"
            << "/player_version" << form << QByteArray("version=3.13&os=Linux&platform_info=x86_64");
        QTest::newRow("recommended") << "GET"
                                     << "/playlists/recommended?business_type_id=1&music_style_id=10"
                                     << QByteArray() << QByteArray();
        QTest::newRow("business type") << "POST"
                                       << "/set_business_type" << form << QByteArray("business_type_id=1");
        QTest::newRow("music styles") << "POST"
                                      << "/set_music_styles" << form << QByteArray("music_styles=%5B10%5D");
        QTest::newRow("stock playlists") << "GET"
                                         << "/playlists/stock_music?lang=ru" << QByteArray() << QByteArray();
        QTest::newRow("video playlists") << "GET"
                                         << "/playlists/video" << QByteArray() << QByteArray();
        QTest::newRow("playlist tracks") << "GET"
                                         << "/playlists/video/3" << QByteArray() << QByteArray();
        QTest::newRow("settings") << "GET"
                                  << "/playlists/settings" << QByteArray() << QByteArray();
        QTest::newRow("activate") << "POST"
                                  << "/playlists/photo/5/activate" << form << QByteArray();
        QTest::newRow("deactivate") << "POST"
                                    << "/playlists/photo/5/deactivate" << form << QByteArray();
        QTest::newRow("certificate") << "GET"
                                     << "/certificate?lang=ru" << QByteArray() << QByteArray();
        QTest::newRow("statistics") << "POST"
                                    << "/statistics" << QByteArray("application/json")
                                    << QByteArray("[" + Report(QStringLiteral("10:00:00"), 1) + "]");
        QTest::newRow("like") << "POST"
                              << "/likes_dislikes" << form << QByteArray("value=1&track_id=1");
        QTest::newRow("sign out") << "POST"
                                  << "/sign_out" << form << QByteArray();
    }

    void everyAuthorizedEndpointChecksTheToken()
    {
        QFETCH(QString, method);
        QFETCH(QString, path);
        QFETCH(QByteArray, contentType);
        QFETCH(QByteArray, body);
        const QString shop2Token =
            client->SignIn(QStringLiteral("owner"), QStringLiteral("secret"), QStringLiteral("shop2"));
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

    void configurationIsDatedFromTheServiceToday()
    {
        QVERIFY(service->SetToday(QDate(2026, 2, 27)));
        QJsonObject configuration = Configuration();
        QJsonArray schedule = configuration.value(QStringLiteral("schedule")).toArray();
        QCOMPARE(schedule.size(), 3);
        QStringList dates;
        QStringList weekdays;
        QList<int> weekdayIds;
        for (const QJsonValue& day : schedule) {
            dates << day.toObject().value(QStringLiteral("date")).toString();
            weekdays << day.toObject().value(QStringLiteral("day_of_week")).toString();
            weekdayIds << day.toObject().value(QStringLiteral("day_of_week_id")).toInt();
            QVERIFY(!day.toObject().contains(QStringLiteral("day_offset")));
        }
        QCOMPARE(dates, QStringList({"27.02.2026", "28.02.2026", "05.03.2026"}));
        QCOMPARE(weekdays, QStringList({QStringLiteral("Пятница"), QStringLiteral("Суббота"),
                                        QStringLiteral("Четверг")}));
        QCOMPARE(weekdayIds, QList<int>({5, 6, 4}));
        // A day without periods still carries the list; the rest passes through as written.
        QCOMPARE(schedule.at(2).toObject().value(QStringLiteral("periods")).toArray(), QJsonArray());
        const QJsonObject midday =
            schedule.at(0).toObject().value(QStringLiteral("periods")).toArray().at(1).toObject();
        QVERIFY(midday.value(QStringLiteral("schedule_id")).isNull());
        QCOMPARE(midday.value(QStringLiteral("end_time_str")).toString(), QStringLiteral("00:00"));

        const QJsonArray entries = configuration.value(QStringLiteral("ads"))
                                       .toArray()
                                       .at(0)
                                       .toObject()
                                       .value(QStringLiteral("tracks"))
                                       .toArray();
        QCOMPARE(entries, QJsonArray({QJsonObject{{"track", 41}, {"date", "27.02.2026"}},
                                      QJsonObject{{"track", 41}, {"date", "28.02.2026"}},
                                      QJsonObject{{"track", 42}, {"date", "28.02.2026"}},
                                      QJsonObject{{"track", 41}, {"date", "01.01.2000"}}}));

        const int version = Version();
        QVERIFY(service->SetDayOffset(1));
        configuration = Configuration();
        schedule = configuration.value(QStringLiteral("schedule")).toArray();
        QCOMPARE(schedule.at(0).toObject().value(QStringLiteral("date")).toString(),
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

        const QJsonObject a = TrackById(configuration, 1);
        QCOMPARE(Keys(a), QStringList({"author", "file_size_bytes", "id", "image", "liked", "md5", "name",
                                       "path", "shop_id", "uploaded_by_user"}));
        QCOMPARE(a.value(QStringLiteral("md5")).toString(),
                 QString::fromLatin1(QCryptographicHash::hash(musicA, QCryptographicHash::Md5).toHex()));
        QCOMPARE(a.value(QStringLiteral("file_size_bytes")).toInt(), musicA.size());
        QCOMPARE(a.value(QStringLiteral("name")).toString(), QStringLiteral("Утро"));
        QCOMPARE(a.value(QStringLiteral("author")).toString(), QStringLiteral("Оркестр"));
        QCOMPARE(a.value(QStringLiteral("shop_id")).toInt(), 101);
        QCOMPARE(a.value(QStringLiteral("liked")), QJsonValue(true));
        QCOMPARE(a.value(QStringLiteral("uploaded_by_user")), QJsonValue(false));

        const QJsonObject b = TrackById(configuration, 2);
        QCOMPARE(b.value(QStringLiteral("md5")).toString(),
                 QString::fromLatin1(QCryptographicHash::hash(musicB, QCryptographicHash::Md5).toHex()));
        QCOMPARE(b.value(QStringLiteral("name")).toString(), QStringLiteral("Своё имя"));
        QCOMPARE(b.value(QStringLiteral("image")).toString(),
                 service->Origin() + QStringLiteral("files/covers/b.png"));
        QVERIFY(b.value(QStringLiteral("liked")).isNull());
        QCOMPARE(b.value(QStringLiteral("uploaded_by_user")), QJsonValue(true));

        const QJsonObject missing = TrackById(configuration, 3);
        QCOMPARE(missing.value(QStringLiteral("md5")).toString(), QString());
        QCOMPARE(missing.value(QStringLiteral("file_size_bytes")).toInt(), 0);

        const QJsonObject declared = TrackById(configuration, 4);
        QCOMPARE(declared.value(QStringLiteral("md5")).toString(),
                 QStringLiteral("0123456789abcdef0123456789abcdef"));
        QCOMPARE(declared.value(QStringLiteral("file_size_bytes")).toInt(), 99);
        QCOMPARE(declared.value(QStringLiteral("shop_id")).toInt(), 5);

        const QJsonObject advert = TrackById(configuration, 42);
        QCOMPARE(advert.value(QStringLiteral("name")).toString(), QStringLiteral("ad2"));
        QCOMPARE(advert.value(QStringLiteral("file_size_bytes")).toInt(), 13);
        const QJsonObject remote = TrackById(configuration, 21);
        QCOMPARE(remote.value(QStringLiteral("path")).toString(),
                 QStringLiteral("https://cdn.example.invalid/v.mp4"));
        QCOMPARE(remote.value(QStringLiteral("md5")).toString(), QString());

        QStringList types;
        for (const QJsonValue& list : configuration.value(QStringLiteral("content")).toArray()) {
            types << list.toObject().value(QStringLiteral("type")).toString();
        }
        QCOMPARE(types, QStringList({"clip", "music", "video", "photo"}));
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
        const int afterChange = Version();
        QVERIFY(afterChange != version);
        QCOMPARE(TrackById(Configuration(), 2).value(QStringLiteral("md5")).toString(),
                 QString::fromLatin1(QCryptographicHash::hash(changed, QCryptographicHash::Md5).toHex()));
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
        token = client->SignIn(QStringLiteral("owner"), QStringLiteral("secret"), QStringLiteral("shop1"));
        QCOMPARE(service->ReplaceConfiguration(QStringLiteral("shop1"), replacement), 42);
        QCOMPARE(Configuration().value(QStringLiteral("schedule")).toArray().size(), 1);
        QCOMPARE(Configuration().value(QStringLiteral("domains")).toArray(),
                 QJsonArray({service->MediaDomain()}));

        const QJsonObject broken{{"schedule", QJsonArray{QJsonObject{{"day_offset", 9}}}}};
        QCOMPARE(service->ReplaceConfiguration(QStringLiteral("shop1"), broken), -1);
        QVERIFY2(service->ErrorString().contains(QStringLiteral("day_offset")),
                 qPrintable(service->ErrorString()));
    }

    void versionAndConfigurationNeedATimestamp_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("version without") << "/playback/version";
        QTest::newRow("version, not a number") << "/playback/version?timestamp=soon";
        QTest::newRow("configuration without") << "/playback/configuration_v2?lang=ru";
        QTest::newRow("configuration, negative") << "/playback/configuration_v2?timestamp=-5&lang=ru";
    }

    void versionAndConfigurationNeedATimestamp()
    {
        QFETCH(QString, path);
        const auto answer = Get(path, token);
        QVERIFY2(IsApiError(answer, 400000), qPrintable(Describe(answer)));
    }

    void mediaAreServedFromTheContentFolder_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("music") << "/media/shop1/music/a.mp3" << 200 << musicA;
        QTest::newRow("advert in a subfolder")
            << "/media/shop1/clip/promo/ad2.mp3" << 200 << QByteArray("second advert");
        QTest::newRow("another object's code") << "/media/shop2/photo/p.jpg" << 200 << QByteArray("picture");
        QTest::newRow("plain file") << "/files/photo/p.jpg" << 200 << QByteArray("picture");
        QTest::newRow("unknown object") << "/media/nobody/music/a.mp3" << 404 << QByteArray();
        QTest::newRow("unknown type") << "/media/shop1/covers/a.mp3" << 404 << QByteArray();
        QTest::newRow("type folder of another type") << "/media/shop1/video/a.mp3" << 404 << QByteArray();
        QTest::newRow("missing file") << "/media/shop1/music/missing.mp3" << 404 << QByteArray();
        QTest::newRow("a folder") << "/media/shop1/clip/promo" << 404 << QByteArray();
        QTest::newRow("dot dot") << "/media/shop1/music/../../etc/passwd" << 404 << QByteArray();
        QTest::newRow("escaped dot dot") << "/files/%2e%2e/%2e%2e/etc/passwd" << 404 << QByteArray();
        QTest::newRow("escaped slash") << "/files/music%2Fa.mp3" << 400 << QByteArray();
        QTest::newRow("empty segment") << "/files/music//a.mp3" << 404 << QByteArray();
    }

    void mediaAreServedFromTheContentFolder()
    {
        QFETCH(QString, target);
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        const auto answer = client->Get(target);
        QVERIFY2(answer.complete, qPrintable(answer.error));
        QCOMPARE(answer.status, status);
        if (status == 200) {
            QCOMPARE(answer.body, body);
        }
    }

    void mediaCarryTheirContentType()
    {
        QCOMPARE(client->Get(QStringLiteral("/media/shop1/music/a.mp3")).contentType,
                 QByteArray("audio/mpeg"));
        QCOMPARE(client->Get(QStringLiteral("/files/photo/p.jpg")).contentType, QByteArray("image/jpeg"));
    }

    void statisticsBatchesAreRecordedInOrder()
    {
        const QString path = ObjectPath(QStringLiteral("shop1"), QStringLiteral("/statistics"));
        const QByteArray first =
            "[" + Report(QStringLiteral("10:00:00"), 1) + "," + Report(QStringLiteral("10:01:00"), 2) + "]";
        const QByteArray second = "[" + Report(QStringLiteral("10:02:00"), 3) + "]";
        QVERIFY(IsSuccess(client->PostJson(path, first, ApiClient::Token(token))));
        QVERIFY(IsSuccess(client->PostJson(path, second, ApiClient::Token(token))));
        const QJsonArray batches = service->Received(QStringLiteral("statistics"));
        QCOMPARE(batches.size(), 2);
        QCOMPARE(batches.at(0).toObject().value(QStringLiteral("object")).toString(),
                 QStringLiteral("shop1"));
        QCOMPARE(batches.at(0).toObject().value(QStringLiteral("reports")).toArray(),
                 QJsonDocument::fromJson(first).array());
        const QJsonArray reports = service->StatisticsReports();
        QCOMPARE(reports.size(), 3);
        QCOMPARE(reports.at(2).toObject().value(QStringLiteral("track_id")).toInt(), 3);
    }

    void malformedStatisticsAreRefusedAndNotRecorded_data()
    {
        QTest::addColumn<QByteArray>("contentType");
        QTest::addColumn<QByteArray>("body");
        const QByteArray json = "application/json";
        QTest::newRow("not an array") << json << Report(QStringLiteral("10:00:00"), 1);
        QTest::newRow("not JSON") << json << QByteArray("[{\"volume\":");
        QTest::newRow("form content type") << QByteArray("application/x-www-form-urlencoded")
                                           << QByteArray("[" + Report(QStringLiteral("10:00:00"), 1) + "]");
        QTest::newRow("time without seconds")
            << json << QByteArray("[" + Report(QStringLiteral("10:00"), 1) + "]");
        QTest::newRow("hour without its zero")
            << json << QByteArray("[" + Report(QStringLiteral("9:00:00"), 1) + "]");
        QTest::newRow("volume as text")
            << json
            << QByteArray(
                   R"([{"volume":"70","type":"music","time":"10:00:00","date":"27.02.2026","track_id":1,"shop_id":1}])");
        QTest::newRow("unknown type")
            << json
            << QByteArray(
                   R"([{"volume":70,"type":"Music","time":"10:00:00","date":"27.02.2026","track_id":1,"shop_id":1}])");
        QTest::newRow("missing shop")
            << json
            << QByteArray(
                   R"([{"volume":70,"type":"music","time":"10:00:00","date":"27.02.2026","track_id":1}])");
        QTest::newRow("fractional track")
            << json
            << QByteArray(
                   R"([{"volume":70,"type":"music","time":"10:00:00","date":"27.02.2026","track_id":1.5,"shop_id":1}])");
        QTest::newRow("date the other way")
            << json
            << QByteArray(
                   R"([{"volume":70,"type":"music","time":"10:00:00","date":"2026-02-27","track_id":1,"shop_id":1}])");
    }

    void malformedStatisticsAreRefusedAndNotRecorded()
    {
        QFETCH(QByteArray, contentType);
        QFETCH(QByteArray, body);
        const auto answer = client->Post(ObjectPath(QStringLiteral("shop1"), QStringLiteral("/statistics")),
                                         body, contentType, ApiClient::Token(token));
        QVERIFY2(IsApiError(answer, 400000), qPrintable(Describe(answer)));
        QCOMPARE(service->Received(QStringLiteral("statistics")).size(), 0);
    }

    void likesChangeTheStatusTheConfigurationCarries()
    {
        const QString path = ObjectPath(QStringLiteral("shop1"), QStringLiteral("/likes_dislikes"));
        const int version = Version();
        const auto like = client->PostForm(path, "value=1&track_id=2", ApiClient::Token(token));
        QCOMPARE(like.Json(), QJsonObject({{"success", true}, {"like_status", true}}));
        QCOMPARE(TrackById(Configuration(), 2).value(QStringLiteral("liked")), QJsonValue(true));
        // The player keeps its own copy up to date; a like is no reason to reload.
        QCOMPARE(Version(), version);

        QCOMPARE(client->PostForm(path, "value=0&track_id=1", ApiClient::Token(token)).Json(),
                 QJsonObject({{"success", true}, {"like_status", false}}));
        QCOMPARE(TrackById(Configuration(), 1).value(QStringLiteral("liked")), QJsonValue(false));
        const auto cleared = client->PostForm(path, "value=-1&track_id=1", ApiClient::Token(token));
        QVERIFY(cleared.Json().value(QStringLiteral("like_status")).isNull());
        QVERIFY(cleared.Json().contains(QStringLiteral("like_status")));
        QVERIFY(TrackById(Configuration(), 1).value(QStringLiteral("liked")).isNull());

        QVERIFY(IsApiError(client->PostForm(path, "value=yes&track_id=1", ApiClient::Token(token)), 400000));
        QVERIFY(IsApiError(client->PostForm(path, "value=1", ApiClient::Token(token)), 400000));
        const QJsonArray likes = service->Received(QStringLiteral("likes"));
        QCOMPARE(likes.size(), 3);
        QCOMPARE(likes.at(0).toObject().value(QStringLiteral("track_id")).toInt(), 2);
        QCOMPARE(likes.at(0).toObject().value(QStringLiteral("value")).toInt(), 1);
    }

    void playerVersionAndQuestionnaireAreRecorded()
    {
        const auto post = [&](const QString& path, const QByteArray& form) {
            return client->PostForm(ObjectPath(QStringLiteral("shop1"), path), form, ApiClient::Token(token));
        };
        // QUrlQuery leaves '+' as it is; it must arrive as a '+', not as a blank.
        QVERIFY(IsSuccess(post(QStringLiteral("/player_version"),
                               "version=3.13&os=Linux&platform_info=Debian%2012+x86_64")));
        const QJsonObject version = service->Received(QStringLiteral("player_versions")).at(0).toObject();
        QCOMPARE(version.value(QStringLiteral("version")).toString(), QStringLiteral("3.13"));
        QCOMPARE(version.value(QStringLiteral("platform_info")).toString(),
                 QStringLiteral("Debian 12+x86_64"));
        QCOMPARE(version.value(QStringLiteral("object")).toString(), QStringLiteral("shop1"));
        QVERIFY(IsApiError(post(QStringLiteral("/player_version"), "version=3.13&os=Linux"), 400000));

        QVERIFY(IsSuccess(post(QStringLiteral("/set_business_type"), "business_type_id=2")));
        QCOMPARE(service->Received(QStringLiteral("business_types"))
                     .at(0)
                     .toObject()
                     .value(QStringLiteral("business_type_id"))
                     .toInt(),
                 2);
        QVERIFY(IsApiError(post(QStringLiteral("/set_business_type"), "business_type_id=99"), 404003));
        QVERIFY(IsApiError(post(QStringLiteral("/set_business_type"), "business_type_id=two"), 400000));

        // The ids as QJsonDocument writes an array, indented, inside the form.
        const QByteArray styles = QJsonDocument(QJsonArray{10, 11}).toJson().toPercentEncoding();
        QVERIFY(IsSuccess(post(QStringLiteral("/set_music_styles"), "music_styles=" + styles)));
        QCOMPARE(service->Received(QStringLiteral("music_styles"))
                     .at(0)
                     .toObject()
                     .value(QStringLiteral("music_styles"))
                     .toArray(),
                 QJsonArray({10, 11}));
        QVERIFY(IsApiError(post(QStringLiteral("/set_music_styles"), "music_styles=%5B10%2C12%5D"), 404004));
        QVERIFY(IsApiError(post(QStringLiteral("/set_music_styles"), "music_styles=10"), 400000));
    }

    void recommendedPlaylistsFollowTheAnswers()
    {
        const auto ids = [&](const QString& query) {
            QList<int> found;
            const auto answer = Get(QStringLiteral("/playlists/recommended?") + query, token);
            for (const QJsonValue& playlist : answer.Json().value(QStringLiteral("playlists")).toArray()) {
                found << playlist.toObject().value(QStringLiteral("id")).toInt();
            }
            return found;
        };
        QCOMPARE(ids(QStringLiteral("business_type_id=1&music_style_id=10")), QList<int>({1, 2}));
        QCOMPARE(ids(QStringLiteral("business_type_id=2&music_style_id=11")), QList<int>({2}));
        const QJsonObject main =
            Get(QStringLiteral("/playlists/recommended?business_type_id=1&music_style_id=10"), token)
                .Json()
                .value(QStringLiteral("playlists"))
                .toArray()
                .at(0)
                .toObject();
        QCOMPARE(Keys(main), QStringList({"id", "image", "main", "name"}));
        QCOMPARE(main.value(QStringLiteral("main")), QJsonValue(true));
        QVERIFY(IsApiError(
            Get(QStringLiteral("/playlists/recommended?business_type_id=9&music_style_id=10"), token),
            404003));
        QVERIFY(IsApiError(
            Get(QStringLiteral("/playlists/recommended?business_type_id=1&music_style_id=9"), token),
            404004));
        QVERIFY(IsApiError(Get(QStringLiteral("/playlists/recommended?business_type_id=1"), token), 400000));
    }

    void catalogueShowsWhatIsActive()
    {
        const QJsonArray stock = Get(QStringLiteral("/playlists/stock_music?lang=ru"), token)
                                     .Json()
                                     .value(QStringLiteral("playlists"))
                                     .toArray();
        QCOMPARE(stock.size(), 1);
        const QJsonObject jazz = stock.at(0).toObject();
        QCOMPARE(Keys(jazz),
                 QStringList({"active", "content_size_bytes", "id", "image", "name", "tracks_count"}));
        QCOMPARE(jazz.value(QStringLiteral("content_size_bytes")).toDouble(), 1500000000.5);
        QCOMPARE(jazz.value(QStringLiteral("tracks_count")).toInt(), 2);
        QCOMPARE(jazz.value(QStringLiteral("active")), QJsonValue(true));

        const QJsonArray video = Get(QStringLiteral("/playlists/video"), token)
                                     .Json()
                                     .value(QStringLiteral("playlists"))
                                     .toArray();
        QCOMPARE(video.at(0).toObject().value(QStringLiteral("active")), QJsonValue(true));
        QCOMPARE(video.at(1).toObject().value(QStringLiteral("active")), QJsonValue(true));
        QCOMPARE(video.at(1).toObject().value(QStringLiteral("tracks_count")).toInt(), 12);
        const QJsonArray photo = Get(QStringLiteral("/playlists/photo"), token)
                                     .Json()
                                     .value(QStringLiteral("playlists"))
                                     .toArray();
        QCOMPARE(photo.at(0).toObject().value(QStringLiteral("active")), QJsonValue(false));

        const auto tracks = Get(QStringLiteral("/playlists/stock_music/1"), token);
        const QJsonArray list =
            tracks.Json().value(QStringLiteral("data")).toObject().value(QStringLiteral("tracks")).toArray();
        QCOMPARE(list.size(), 2);
        QCOMPARE(list.at(0).toObject(),
                 QJsonObject({{"id", 1001},
                              {"name", QStringLiteral("Первая")},
                              {"author", QStringLiteral("Квартет")},
                              {"image", service->Origin() + QStringLiteral("files/covers/1001.png")}}));
        QVERIFY(IsApiError(Get(QStringLiteral("/playlists/stock_music/3"), token), 404005));
        QVERIFY(IsApiError(Get(QStringLiteral("/playlists/radio"), token), 404000));

        const QJsonObject settings = Get(QStringLiteral("/playlists/settings"), token)
                                         .Json()
                                         .value(QStringLiteral("settings"))
                                         .toObject();
        QCOMPARE(Keys(settings), QStringList({"music", "photo", "video"}));
        const QJsonObject music = settings.value(QStringLiteral("music")).toObject();
        QCOMPARE(music.value(QStringLiteral("advanced")), QJsonValue(false));
        QCOMPARE(music.value(QStringLiteral("playlist_id")).toInt(), 1);
        QCOMPARE(music.value(QStringLiteral("playlist_name")).toString(), QStringLiteral("Утренний джаз"));
        QCOMPARE(music.value(QStringLiteral("night")).toObject(),
                 QJsonObject({{"playlist_id", 0}, {"playlist_name", ""}}));
        const QJsonObject videoSettings = settings.value(QStringLiteral("video")).toObject();
        QCOMPARE(videoSettings.value(QStringLiteral("evening")).toObject(),
                 QJsonObject({{"playlist_id", 4}, {"playlist_name", QStringLiteral("Клипы вечера")}}));
    }

    void playlistChoicesKeepTheSettingsRules()
    {
        const auto post = [&](const QString& path, const QByteArray& form) {
            return client->PostForm(ObjectPath(QStringLiteral("shop1"), path), form, ApiClient::Token(token));
        };
        const auto settings = [&](const QString& kind) {
            return Get(QStringLiteral("/playlists/settings"), token)
                .Json()
                .value(QStringLiteral("settings"))
                .toObject()
                .value(kind)
                .toObject();
        };
        QVERIFY(IsSuccess(post(QStringLiteral("/playlists/music/2/activate"), QByteArray())));
        QCOMPARE(settings(QStringLiteral("music")).value(QStringLiteral("playlist_id")).toInt(), 2);
        QCOMPARE(Get(QStringLiteral("/playlists/stock_music"), token)
                     .Json()
                     .value(QStringLiteral("playlists"))
                     .toArray()
                     .at(0)
                     .toObject()
                     .value(QStringLiteral("active")),
                 QJsonValue(false));

        // Whole-day choices meet advanced settings, part-of-day ones simple settings.
        QVERIFY(IsApiError(post(QStringLiteral("/playlists/video/3/activate"), QByteArray()), 403005));
        QVERIFY(IsApiError(post(QStringLiteral("/playlists/music/2/activate"),
                                "morning=true&day=false&evening=false&night=false"),
                           403006));
        QVERIFY(IsSuccess(post(QStringLiteral("/playlists/video/4/activate"),
                               "morning=true&day=false&evening=false&night=true")));
        const QJsonObject video = settings(QStringLiteral("video"));
        QCOMPARE(
            video.value(QStringLiteral("morning")).toObject().value(QStringLiteral("playlist_id")).toInt(),
            4);
        QCOMPARE(video.value(QStringLiteral("day")).toObject().value(QStringLiteral("playlist_id")).toInt(),
                 3);
        QCOMPARE(
            video.value(QStringLiteral("evening")).toObject().value(QStringLiteral("playlist_id")).toInt(),
            0);
        QCOMPARE(video.value(QStringLiteral("night")).toObject().value(QStringLiteral("playlist_id")).toInt(),
                 4);
        QVERIFY(IsSuccess(post(QStringLiteral("/playlists/video/3/deactivate"), QByteArray())));
        QCOMPARE(settings(QStringLiteral("video"))
                     .value(QStringLiteral("day"))
                     .toObject()
                     .value(QStringLiteral("playlist_id"))
                     .toInt(),
                 0);

        QVERIFY(IsApiError(post(QStringLiteral("/playlists/video/4/activate"), "morning=yes"), 400000));
        QVERIFY(IsApiError(post(QStringLiteral("/playlists/video/99/activate"), QByteArray()), 404005));

        const QJsonArray changes = service->Received(QStringLiteral("playlist_changes"));
        QCOMPARE(changes.size(), 3);
        QCOMPARE(changes.at(1).toObject().value(QStringLiteral("night")).toString(), QStringLiteral("true"));
        QCOMPARE(changes.at(2).toObject().value(QStringLiteral("action")).toString(),
                 QStringLiteral("deactivate"));

        // An object whose player may not change anything.
        const QString shop2 =
            client->SignIn(QStringLiteral("owner"), QStringLiteral("secret"), QStringLiteral("shop2"));
        QVERIFY(IsApiError(client->PostForm(ObjectPath(QStringLiteral("shop2"),
                                                       QStringLiteral("/playlists/music/2/activate")),
                                            QByteArray(), ApiClient::Token(shop2)),
                           403001));
    }

    void certificateBelongsToTheObject()
    {
        const auto answer = Get(QStringLiteral("/certificate?lang=ru"), token);
        QCOMPARE(answer.Json(),
                 QJsonObject({{"success", true},
                              {"url", service->Origin() + QStringLiteral("files/certificate.pdf")}}));
        const QString shop2 =
            client->SignIn(QStringLiteral("owner"), QStringLiteral("secret"), QStringLiteral("shop2"));
        QVERIFY(IsApiError(
            client->Get(ObjectPath(QStringLiteral("shop2"), QStringLiteral("/certificate?lang=ru")),
                        ApiClient::Token(shop2)),
            403008));
    }

    void signOutEndsTheSignIn()
    {
        QVERIFY(IsSuccess(client->PostForm(ObjectPath(QStringLiteral("shop1"), QStringLiteral("/sign_out")),
                                           QByteArray(), ApiClient::Token(token))));
        QVERIFY(IsApiError(Get(QStringLiteral("/playback/version?timestamp=1"), token), 403010));
        QCOMPARE(service->Received(QStringLiteral("sign_outs"))
                     .at(0)
                     .toObject()
                     .value(QStringLiteral("token"))
                     .toString(),
                 token);
    }

    void signUpMakesAnAccountThatWorks()
    {
        const auto code = client->PostForm(QStringLiteral("/api/v1/auth/send_confirmation_code"),
                                           "phone=+79991112233&lang=ru");
        QCOMPARE(code.Json(), QJsonObject({{"success", true}, {"code", "4321"}}));
        QCOMPARE(service->Received(QStringLiteral("confirmation_codes"))
                     .at(0)
                     .toObject()
                     .value(QStringLiteral("phone"))
                     .toString(),
                 QStringLiteral("+79991112233"));
        QVERIFY(IsApiError(
            client->PostForm(QStringLiteral("/api/v1/auth/send_confirmation_code"), "phone=123&lang=ru"),
            403002));
        QVERIFY(IsApiError(client->PostForm(QStringLiteral("/api/v1/auth/send_confirmation_code"),
                                            "phone=+79990000001&lang=ru"),
                           403000));

        const auto signUp =
            client->PostForm(QStringLiteral("/api/v1/auth/sign_up"),
                             "phone=+79991112233&city=%D0%A2%D0%B2%D0%B5%D1%80%D1%8C&lang=ru");
        QVERIFY2(IsSuccess(signUp), qPrintable(Describe(signUp)));
        const QJsonObject object = signUp.Json().value(QStringLiteral("object")).toObject();
        QCOMPARE(Keys(object), QStringList({"address", "code", "contract_number", "disable_player_control",
                                            "id", "image", "logo", "name", "organization_name"}));
        QCOMPARE(object.value(QStringLiteral("address")).toString(), QStringLiteral("Тверь"));
        const QString newCode = object.value(QStringLiteral("code")).toString();
        const QString newToken = signUp.Json().value(QStringLiteral("token")).toString();
        const auto configuration =
            client->Get(ObjectPath(newCode, QStringLiteral("/playback/configuration_v2?timestamp=1&lang=ru")),
                        ApiClient::Token(newToken));
        QVERIFY2(IsSuccess(configuration), qPrintable(Describe(configuration)));
        // New accounts start from the scenario's sign-up configuration, with their own shop id.
        const QJsonObject newConfiguration =
            configuration.Json().value(QStringLiteral("configuration")).toObject();
        QCOMPARE(newConfiguration.value(QStringLiteral("schedule")).toArray().size(), 3);
        QCOMPARE(TrackById(newConfiguration, 1).value(QStringLiteral("shop_id")).toInt(),
                 object.value(QStringLiteral("id")).toInt());

        QVERIFY(IsApiError(
            client->PostForm(QStringLiteral("/api/v1/auth/sign_up"), "phone=+79991112233&city=X&lang=ru"),
            403000));
        QVERIFY(IsApiError(
            client->PostForm(QStringLiteral("/api/v1/auth/sign_up"), "phone=+79991112244&lang=ru"), 400000));
        QCOMPARE(service->Received(QStringLiteral("sign_ups")).size(), 1);
    }

    void deletingTheAccountEndsEverySignIn()
    {
        const QString shop2 =
            client->SignIn(QStringLiteral("owner"), QStringLiteral("secret"), QStringLiteral("shop2"));
        // The player puts the path after the server's URL as it is: a double slash.
        QVERIFY(IsApiError(client->Get(QStringLiteral("/api/v1//delete_account")), 403010));
        const auto deleted = client->Get(QStringLiteral("/api/v1//delete_account"), ApiClient::Token(token));
        QVERIFY2(IsSuccess(deleted), qPrintable(Describe(deleted)));
        QVERIFY(IsApiError(Get(QStringLiteral("/playback/version?timestamp=1"), token), 403010));
        QVERIFY(IsApiError(
            client->Get(ObjectPath(QStringLiteral("shop2"), QStringLiteral("/playback/version?timestamp=1")),
                        ApiClient::Token(shop2)),
            403010));
        QVERIFY(client->SignIn(QStringLiteral("owner"), QStringLiteral("secret"), QStringLiteral("shop1"))
                    .isEmpty());
        QVERIFY(!client->SignIn(QStringLiteral("second"), QStringLiteral("pass2"), QStringLiteral("other"))
                     .isEmpty());
        QCOMPARE(service->Received(QStringLiteral("deleted_accounts"))
                     .at(0)
                     .toObject()
                     .value(QStringLiteral("login"))
                     .toString(),
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
        QVERIFY(client->SignIn(QStringLiteral("owner"), QStringLiteral("secret"), QStringLiteral("shop1"))
                    .isEmpty());
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

    void wrongPathsAndMethodsAreAnsweredAsTheServerDoes_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("target");
        QTest::addColumn<bool>("withToken");
        QTest::addColumn<int>("error");
        QTest::newRow("unknown path with token") << "GET"
                                                 << "/api/v1/shop1/nothing/here" << true << 404000;
        QTest::newRow("unknown path without token") << "GET"
                                                    << "/api/v1/shop1/nothing/here" << false << 403010;
        QTest::newRow("statistics by GET") << "GET"
                                           << "/api/v1/shop1/statistics" << true << 404000;
        QTest::newRow("version by POST") << "POST"
                                         << "/api/v1/shop1/playback/version?timestamp=1" << true << 404000;
        QTest::newRow("sign-in by GET") << "GET"
                                        << "/api/v1/auth/sign_in" << false << 404000;
        QTest::newRow("trailing slash") << "GET"
                                        << "/api/v1/shop1/playback/version/?timestamp=1" << true << 404000;
    }

    void wrongPathsAndMethodsAreAnsweredAsTheServerDoes()
    {
        QFETCH(QString, method);
        QFETCH(QString, target);
        QFETCH(bool, withToken);
        QFETCH(int, error);
        const ApiClient::Headers headers = withToken ? ApiClient::Token(token) : ApiClient::Headers();
        const auto answer = method == QLatin1String("GET") ? client->Get(target, headers)
                                                           : client->PostForm(target, QByteArray(), headers);
        QVERIFY2(IsApiError(answer, error), qPrintable(Describe(answer)));
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
            QCOMPARE(requests.at(i).toObject().value(QStringLiteral("index")).toInt(), i);
            endpoints << requests.at(i).toObject().value(QStringLiteral("endpoint")).toString();
        }
        QCOMPARE(endpoints, QStringList({"auth/sign_in", "playback/version", "media/photo/p.jpg"}));
        const QJsonObject first = requests.at(0).toObject();
        QCOMPARE(first.value(QStringLiteral("body")).toString().toUtf8(), signIn);
        QCOMPARE(first.value(QStringLiteral("headers"))
                     .toObject()
                     .value(QStringLiteral("Content-Type"))
                     .toString(),
                 QStringLiteral("application/json"));
        const QJsonObject second = requests.at(1).toObject();
        QCOMPARE(second.value(QStringLiteral("target")).toString(),
                 QStringLiteral("/api/v1/shop1/playback/version?timestamp=5"));
        QCOMPARE(second.value(QStringLiteral("method")).toString(), QStringLiteral("GET"));
        QCOMPARE(second.value(QStringLiteral("headers")).toObject().value(QStringLiteral("token")).toString(),
                 fresh);
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
        token = client->SignIn(QStringLiteral("owner"), QStringLiteral("secret"), QStringLiteral("shop1"));
        QCOMPARE(Version(), version);
        QVERIFY(IsSuccess(client->Get(QStringLiteral("/api/player/legacy/v1/auth/servers"))));
    }
};

QTEST_GUILESS_MAIN(ReferenceServiceApiTest)
#include "tst_reference_service_api.moc"
