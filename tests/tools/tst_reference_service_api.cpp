#include "tests/support/reference_service.h"
#include "tests/support/test_timeouts.h"
#include "tests/tools/api_client.h"

#include <QTcpSocket>

#include <memory>

using Tests::ApiClient;

// What player-side tests take for granted: token rules, the real server's refusal codes,
// configurations dated from the service's today with a version that follows them, downloads
// inside the content folder, and a control API that resets, logs and plays planned faults.
class ReferenceServiceApiTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<ApiClient> client;
    QString token;
    // Large enough that a reply cut mid-body has delivered part of it.
    const QByteArray music = QByteArray("first track ").repeated(20000);
    const QByteArray ownerSignIn = R"({"login":"owner","password":"secret", "code":"shop1"})";
    const QByteArray report =
        R"([{"volume":70,"type":"music","time":"10:00:00","date":"27.02.2026","track_id":1,"shop_id":101}])";

    static QByteArray Describe(const ApiClient::Answer& answer)
    {
        return answer.complete ? QByteArray::number(answer.status) + ' ' + answer.body
                               : answer.error.toUtf8();
    }

    static bool IsApiError(const ApiClient::Answer& answer, int code)
    {
        return answer.complete && answer.status == 200 &&
               answer.Json() == QJsonObject{{"success", false}, {"error", code}};
    }

    static bool IsSuccess(const ApiClient::Answer& answer)
    {
        return answer.complete && answer.status == 200 && answer.Json().value("success") == QJsonValue(true);
    }

    void WriteContent(const QString& relative, const QByteArray& bytes)
    {
        QVERIFY(QDir().mkpath(QFileInfo(content.filePath(relative)).path()));
        QFile file(content.filePath(relative));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(bytes), bytes.size());
    }

    ApiClient::Answer Get(const QString& path, const QString& withToken, const QString& code = "shop1")
    {
        return client->Get("/api/v1/" + code + path, withToken);
    }

    ApiClient::Answer Post(const QString& path, const QByteArray& form)
    {
        return client->Post("/api/v1/shop1" + path, form, ApiClient::Form, token);
    }

    QJsonObject Configuration()
    {
        return Get("/playback/configuration_v2?timestamp=1&lang=ru", token)
            .Json()["configuration"]
            .toObject();
    }

    int Version()
    {
        return Get("/playback/version?timestamp=1", token).Json().value("version").toInt(-1);
    }

    static QJsonObject TrackById(const QJsonObject& configuration, int id)
    {
        for (const QJsonValue& list : configuration.value("content").toArray()) {
            for (const QJsonValue& track : list["tracks"].toArray()) {
                if (track["id"].toInt() == id) {
                    return track.toObject();
                }
            }
        }
        return QJsonObject();
    }

private slots:
    void initTestCase()
    {
        QVERIFY(content.isValid());
        WriteContent("music/a.mp3", music);
        WriteContent("music/b.mp3", "second track");
        WriteContent("photo/p.jpg", "picture");
        WriteContent("manifest.json",
                     R"({"files": [{"path": "music/a.mp3", "title": "Утро", "artist": "Оркестр"}]})");
        QString error;
        service = Tests::ReferenceService::Started("basic", &error, content.path());
        QVERIFY2(service, qPrintable(error));
        client = std::make_unique<ApiClient>(service->Origin());
    }

    void init()
    {
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        token = client->SignIn("owner", "secret", "shop1");
        QVERIFY(!token.isEmpty());
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    // The player's wrong-token handling is only tried for real if the service
    // refuses exactly what the real server refuses.
    void aTokenServesOneSignInOfOneObject()
    {
        const QString version = "/playback/version?timestamp=1";
        const QString shop2 = client->SignIn("owner", "secret", "shop2");
        QVERIFY(IsSuccess(Get(version, shop2, "shop2")));
        QVERIFY(IsApiError(Get(version, shop2), 403010));
        QVERIFY(IsApiError(Get(version, "0123456789abcdef0123456789abcdef"), 403010));
        QVERIFY(IsSuccess(Get(version, token)));
        // Signing in for the same object again, as from another device, ends the first.
        const QString first = token;
        token = client->SignIn("owner", "secret", "shop1");
        QVERIFY(IsApiError(Get(version, first), 403010));
        QVERIFY(IsSuccess(Post("/sign_out", QByteArray())));
        QVERIFY(IsApiError(Get(version, token), 403010));
        // Deleting the account ends all its sign-ins and its login, and no other account's.
        QVERIFY(IsSuccess(client->Get("/api/v1//delete_account", shop2)));
        QVERIFY(IsApiError(Get(version, shop2, "shop2"), 403010));
        QVERIFY(IsApiError(client->Post("/api/v1/auth/sign_in", ownerSignIn), 401000));
        QVERIFY(!client->SignIn("second", "pass2", "other").isEmpty());
    }

    void accountConditionsCloseEveryDoor()
    {
        QVERIFY(service->SetAccountBlocked("owner", true));
        QVERIFY(IsApiError(client->Post("/api/v1/auth/objects", R"({"login":"owner","password":"secret"})"),
                           403003));
        QVERIFY(IsApiError(client->Post("/api/v1/auth/sign_in", ownerSignIn), 403003));
        QVERIFY(service->SetAccountBlocked("owner", false));
        QVERIFY(IsSuccess(Get("/playback/version?timestamp=1", token)));
        QVERIFY(service->SetObjectExported("shop1", true));
        QVERIFY(IsApiError(client->Post("/api/v1/auth/sign_in", ownerSignIn), 403013));
        QVERIFY(!service->SetAccountBlocked("nobody", true));
        QVERIFY(!service->SetObjectExported("nowhere", true));
    }

    // Each refusal is {"success": false, "error": code} with HTTP 200 and records
    // nothing: a player-side test that sends something wrong hears about it. A row is
    // one kind of mistake, made to every endpoint that checks for it.
    void refusalsCarryTheServersErrorCodes_data()
    {
        QTest::addColumn<QStringList>("requests");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<int>("error");
        // Paths under /api/v1/, comma-separated, POST unless "GET "; shop1 and shop2 go with their tokens.
        const auto row = [](const char* name, const char* requests, int error, const QByteArray& body = {},
                            const char* type = ApiClient::Form) {
            QTest::newRow(name) << QString(requests).split(", ") << body << QByteArray(type) << error;
        };
        const char* json = ApiClient::Json;
        row("a form where JSON belongs", "auth/objects, auth/sign_in, shop1/statistics", 400000,
            "login=owner&password=secret&code=shop1");
        row("JSON where a form belongs",
            "auth/send_confirmation_code, auth/sign_up, shop1/player_version, shop1/set_business_type, "
            "shop1/set_music_styles, shop1/likes_dislikes, shop1/playlists/video/4/activate",
            400000, "{}", json);
        row("unreadable JSON", "auth/objects, shop1/statistics", 400000, "[{\"volume\":", json);
        row("a JSON member missing", "auth/sign_in", 400000, R"({"login":"owner","password":"secret"})",
            json);
        row("a report member of the wrong kind", "shop1/statistics", 400000,
            QByteArray(report).replace("\"track_id\":1", "\"track_id\":1.5"), json);
        row("a form member missing", "auth/sign_up, shop1/player_version, shop1/likes_dislikes", 400000,
            "phone=+79991112244&version=3.13&os=Linux&value=1");
        row("a form member of the wrong kind",
            "shop1/set_business_type, shop1/set_music_styles, shop1/playlists/video/4/activate", 400000,
            "business_type_id=x&music_styles=10&morning=yes");
        row("a query member missing or wrong",
            "GET shop1/playback/version?timestamp=soon, GET shop1/playback/configuration_v2, GET "
            "shop1/playlists/recommended?business_type_id=1",
            400000);
        row("not a phone", "auth/send_confirmation_code, auth/sign_up", 403002, "phone=123&city=X");
        row("phone taken", "auth/send_confirmation_code, auth/sign_up", 403000, "phone=+79990000001&city=X");
        row("wrong password", "auth/objects", 401000, R"({"login":"owner","password":"x"})", json);
        row("another account's object", "auth/sign_in", 404001,
            R"({"login":"owner","password":"secret", "code":"other"})", json);
        row("wrong method or path",
            "GET auth/sign_in, GET shop1/statistics, GET shop1/playback/version/?timestamp=1, GET "
            "shop1/playlists/radio",
            404000);
        row("no token to delete an account", "GET /delete_account", 403010);
        row("unknown business type",
            "GET shop1/playlists/recommended?business_type_id=9&music_style_id=10, shop1/set_business_type",
            404003, "business_type_id=99");
        row("unknown music style",
            "GET shop1/playlists/recommended?business_type_id=1&music_style_id=9, shop1/set_music_styles",
            404004, "music_styles=%5B10%2C12%5D");
        row("unknown playlist", "GET shop1/playlists/stock_music/3, shop1/playlists/video/99/activate",
            404005);
        // Whole-day choices meet simple settings, part-of-day ones advanced settings.
        row("whole day on advanced", "shop1/playlists/video/3/activate", 403005);
        row("part of day on simple", "shop1/playlists/music/2/activate", 403006,
            "morning=true&day=false&evening=false&night=false");
        row("no player control", "shop2/playlists/music/2/activate", 403001);
        row("no certificate", "GET shop2/certificate?lang=ru", 403008);
    }

    void refusalsCarryTheServersErrorCodes()
    {
        QFETCH(QStringList, requests);
        QFETCH(QByteArray, body);
        QFETCH(QByteArray, type);
        QFETCH(int, error);
        const QString shop2 = client->SignIn("owner", "secret", "shop2");
        for (const QString& request : requests) {
            const QString path = request.section(' ', -1);
            const QString code = path.section('/', 0, 0);
            const QString withToken = code == "shop1" ? token : code == "shop2" ? shop2 : QString();
            const auto answer = request.startsWith("GET ")
                                    ? client->Get("/api/v1/" + path, withToken)
                                    : client->Post("/api/v1/" + path, body, type, withToken);
            QVERIFY2(IsApiError(answer, error), qPrintable(request + " <- " + Describe(answer)));
        }
        QJsonObject received = service->Received();
        received.remove("sign_ins");
        for (const QString& section : received.keys()) {
            QVERIFY2(received.value(section).toArray().isEmpty(), qPrintable(section));
        }
    }

    void configurationIsDatedFromTheServiceToday()
    {
        QVERIFY(service->SetToday(QDate(2026, 2, 27)));
        const QJsonObject configuration = Configuration();
        QStringList days;
        for (const QJsonValue& day : configuration.value("schedule").toArray()) {
            days << QStringLiteral("%1 %2 %3 %4")
                        .arg(day["date"].toString(), day["day_of_week"].toString())
                        .arg(day["day_of_week_id"].toInt())
                        .arg(day["periods"].toArray().size());
            QVERIFY(!day.toObject().contains("day_offset"));
        }
        // A day without periods still carries the list.
        QCOMPARE(days,
                 QStringList({"27.02.2026 Пятница 5 2", "28.02.2026 Суббота 6 0", "05.03.2026 Четверг 4 0"}));
        // The rest of a day passes through as written, nulls included.
        QVERIFY(configuration["schedule"][0]["periods"][1]["schedule_id"].isNull());
        // An ad entry is dated once for each of its days; a written date is kept.
        QCOMPARE(configuration["ads"][0]["tracks"].toArray(),
                 QJsonArray({QJsonObject{{"track", 41}, {"date", "27.02.2026"}},
                             QJsonObject{{"track", 41}, {"date", "28.02.2026"}},
                             QJsonObject{{"track", 42}, {"date", "28.02.2026"}},
                             QJsonObject{{"track", 41}, {"date", "01.01.2000"}}}));
        QVERIFY(service->SetDayOffset(1));
        QCOMPARE(Configuration().value("schedule")[0]["date"].toString(), "28.02.2026");
    }

    // Digest and size from the file, name and author from the manifest or the
    // file's name; whatever the scenario writes wins; a missing or remote file has
    // no digest, and a remote one no name either.
    void tracksCarryTheFactsOfTheirFiles()
    {
        const QJsonObject configuration = Configuration();
        const auto facts = [&](int id) {
            const QJsonObject track = TrackById(configuration, id);
            return QStringList({track["name"].toString(), track["author"].toString(), track["md5"].toString(),
                                QString::number(track["file_size_bytes"].toInt())})
                .join('|');
        };
        const auto md5 = [](const QByteArray& bytes) {
            return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex());
        };
        QCOMPARE(facts(1), "Утро|Оркестр|" + md5(music) + "|240000");
        QCOMPARE(facts(2), "Своё имя|Свой автор|" + md5("second track") + "|12");
        QCOMPARE(facts(3), "missing|||0");
        QCOMPARE(facts(21), "|||0");
        // Every member a real reply carries, whatever the scenario leaves out.
        QCOMPARE(TrackById(configuration, 21).keys(),
                 QStringList({"author", "file_size_bytes", "id", "image", "liked", "md5", "name", "path",
                              "shop_id", "uploaded_by_user"}));
    }

    // The player reloads when the version moves: it must move with any change to
    // what the player would get, and with nothing else.
    void versionFollowsTheConfigurationAndItsFiles()
    {
        const int version = Version();
        QVERIFY(version > 0);
        QCOMPARE(service->ConfigurationVersion("shop1"), version);
        QCOMPARE(Configuration().value("version").toInt(), version);
        WriteContent("music/b.mp3", "another second track");
        QVERIFY(Version() != version);
        WriteContent("music/b.mp3", "second track");
        QCOMPARE(Version(), version);
        QVERIFY(service->SetDayOffset(1));
        QVERIFY(Version() != version);
        QVERIFY(service->SetDayOffset(0));
        // A like shows in the configuration, which the player keeps up to date itself.
        QCOMPARE(Post("/likes_dislikes", "value=0&track_id=2").Json(),
                 QJsonObject({{"success", true}, {"like_status", false}}));
        QCOMPARE(TrackById(Configuration(), 2).value("liked"), QJsonValue(false));
        QCOMPARE(Post("/likes_dislikes", "value=-1&track_id=1").Json().value("like_status"),
                 QJsonValue::Null);
        QCOMPARE(TrackById(Configuration(), 1).value("liked"), QJsonValue::Null);
        QCOMPARE(Version(), version);

        QCOMPARE(service->SetConfigurationVersion("shop1", 7), 7);
        // A version set through the control API wins over a template's own.
        const QJsonObject replacement{{"version", 42},
                                      {"schedule", QJsonArray{QJsonObject{{"day_offset", 2}}}}};
        QCOMPARE(service->ReplaceConfiguration("shop1", replacement), 7);
        QVERIFY(service->Reset());
        QCOMPARE(service->ReplaceConfiguration("shop1", replacement), 42);
        const QJsonObject broken{{"schedule", QJsonArray{QJsonObject{{"day_offset", 9}}}}};
        QCOMPARE(service->ReplaceConfiguration("shop1", broken), -1);
        QVERIFY2(service->ErrorString().contains("day_offset"), qPrintable(service->ErrorString()));
    }

    // A part-of-day choice takes only its parts and leaves the others as they were.
    void playlistChoicesFollowTheSettingsRules()
    {
        const auto video = [&] {
            const QJsonValue settings = Get("/playlists/settings", token).Json().value("settings")["video"];
            QList<int> ids;
            for (const char* part : {"morning", "day", "evening", "night"}) {
                ids << settings[part]["playlist_id"].toInt();
            }
            return ids;
        };
        QVERIFY(IsSuccess(
            Post("/playlists/video/4/activate", "morning=true&day=false&evening=false&night=true")));
        QCOMPARE(video(), QList<int>({4, 3, 0, 4}));
        QVERIFY(IsSuccess(Post("/playlists/video/3/deactivate", QByteArray())));
        QCOMPARE(video(), QList<int>({4, 0, 0, 4}));
    }

    void downloadsStayInsideTheContentFolder_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("type");
        QTest::newRow("music") << "/media/shop1/music/b.mp3" << 200 << QByteArray("audio/mpeg");
        QTest::newRow("plain file") << "/files/photo/p.jpg" << 200 << QByteArray("image/jpeg");
        QTest::newRow("unknown object") << "/media/nobody/music/a.mp3" << 404 << QByteArray();
        QTest::newRow("folder of another type") << "/media/shop1/video/a.mp3" << 404 << QByteArray();
        QTest::newRow("dot dot") << "/media/shop1/music/../../etc/passwd" << 404 << QByteArray();
        QTest::newRow("escaped dot dot") << "/files/%2e%2e/%2e%2e/etc/passwd" << 404 << QByteArray();
        QTest::newRow("escaped slash") << "/files/music%2Fa.mp3" << 400 << QByteArray();
    }

    void downloadsStayInsideTheContentFolder()
    {
        QFETCH(QString, target);
        QFETCH(int, status);
        QFETCH(QByteArray, type);
        const auto answer = client->Get(target);
        QVERIFY2(answer.complete && answer.status == status, Describe(answer).constData());
        QVERIFY2(status != 200 || answer.contentType == type, answer.contentType.constData());
    }

    // Player-side tests pick their requests out of this log by position and endpoint.
    void requestLogKeepsEveryRequestInOrder()
    {
        Get("/playback/version?timestamp=5", token);
        client->Get("/media/shop1/photo/p.jpg");
        const QJsonArray requests = service->Requests();
        QStringList endpoints;
        for (int i = 0; i < requests.size(); ++i) {
            QCOMPARE(requests.at(i)["index"].toInt(), i);
            endpoints << requests.at(i)["endpoint"].toString();
        }
        QCOMPARE(endpoints, QStringList({"auth/sign_in", "playback/version", "media/photo/p.jpg"}));
        QCOMPARE(requests.at(1)["target"].toString(), "/api/v1/shop1/playback/version?timestamp=5");
        QCOMPARE(requests.at(1)["method"].toString(), "GET");
        QCOMPARE(requests.at(1)["headers"]["token"].toString(), token);
        QCOMPARE(service->Requests(2), QJsonArray{requests.at(2)});
        QCOMPARE(service->RequestsTo("playback/version"), QJsonArray{requests.at(1)});
    }

    void resetGoesBackToTheScenario()
    {
        const int version = Version();
        QVERIFY(service->BumpConfigurationVersion("shop1") > 0);
        QVERIFY(service->SetAccountBlocked("second", true));
        QVERIFY(service->AddFault({"servers", "not_found"}) > 0);
        QVERIFY(IsSuccess(Post("/likes_dislikes", "value=1&track_id=2")));
        QVERIFY(service->Reset());
        QVERIFY(service->Faults().isEmpty());
        QVERIFY(service->Received("likes").isEmpty());
        QVERIFY(!client->SignIn("second", "pass2", "other").isEmpty());
        // Tokens are gone too: the scenario has no sign-ins.
        QVERIFY(IsApiError(Get("/playback/version?timestamp=1", token), 403010));
        token = client->SignIn("owner", "secret", "shop1");
        QCOMPARE(Version(), version);
        QVERIFY(TrackById(Configuration(), 2).value("liked").isNull());
    }

    // The player takes the server's time from the "Date" of whatever reply comes,
    // refusals included; a shifted clock moves every one of them.
    void everyReplyCarriesTheServiceClock_data()
    {
        QTest::addColumn<int>("shift");
        QTest::newRow("two minutes behind") << -120;
        // After the reset between cases.
        QTest::newRow("real") << 0;
    }

    void everyReplyCarriesTheServiceClock()
    {
        QFETCH(int, shift);
        QVERIFY(shift == 0 || service->ShiftClock(shift));
        for (const QString target : {"/api/v1/shop1/playback/version?timestamp=1", "/media/shop1/music/b.mp3",
                                     "/control/state", "/nowhere"}) {
            // HTTP dates are whole seconds.
            const QDateTime earliest = QDateTime::currentDateTimeUtc().addSecs(shift - 1);
            const ApiClient::Answer answer = client->Get(target, token);
            QDateTime date = QLocale::c().toDateTime(QString::fromLatin1(answer.date),
                                                     QStringLiteral("ddd, dd MMM yyyy hh:mm:ss 'GMT'"));
            date.setTimeSpec(Qt::UTC);
            QVERIFY2(date.isValid() && date >= earliest &&
                         date <= QDateTime::currentDateTimeUtc().addSecs(shift),
                     qPrintable(target + ": " + Describe(answer) + " Date: " + answer.date));
        }
    }

    // A fault hits the first `count` requests to its target and marks them in the
    // request log; the next request is served as before. `processed`: the service
    // still did the work (recorded the report) under the fault.
    void faultsHitOnlyTheFirstRequestsAsked_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"status", "not_json", "api_error", "empty", "not_found", "body",
                                 "no_success", "close_mid_body", "wrong_md5", "delay"}) {
            QTest::newRow(kind) << kind;
        }
    }

    void faultsHitOnlyTheFirstRequestsAsked()
    {
        QFETCH(QString, kind);
        const bool processed =
            QStringList({"no_success", "close_mid_body", "wrong_md5", "delay"}).contains(kind);
        const auto send = [&] {
            return client->Post("/api/v1/shop1/statistics", report, ApiClient::Json, token);
        };
        const auto normal = send();
        QVERIFY(IsSuccess(normal));
        Tests::ServiceFault fault("statistics", kind, 2);
        fault.status = 503;
        fault.error = 403011;
        fault.delayMs = kind == "delay" ? 10 : 0;
        fault.body = R"({"success": true, "version": -5})";
        QVERIFY2(service->AddFault(fault) > 0, qPrintable(service->ErrorString()));
        for (int attempt = 0; attempt < 2; ++attempt) {
            const auto answer = send();
            // A delay holds the reply back without changing it; every other kind changes it.
            const bool changed = !answer.complete || answer.status != 200 || answer.body != normal.body;
            QVERIFY2(changed != (kind == "delay"), Describe(answer).constData());
        }
        QCOMPARE(send().body, normal.body);
        QStringList marks;
        for (const QJsonValue& request : service->RequestsTo("statistics")) {
            marks << request["fault"].toString();
        }
        QCOMPARE(marks, QStringList({QString(), kind, kind, QString()}));
        QCOMPARE(service->Faults().at(0)["fired"].toInt(), 2);
        QCOMPARE(service->Faults().at(0)["remaining"].toInt(), 0);
        QCOMPARE(service->Received("statistics").size(), processed ? 4 : 2);
    }

    // Player-side tests of half-received files are only real if the body is cut
    // after the headers announced all of it.
    void closedMidBodyDeliversPartOfTheAnnouncedBody()
    {
        QVERIFY(service->AddFault({"media/music/a.mp3", "close_mid_body", 1}) > 0);
        QTcpSocket socket;
        socket.connectToHost("127.0.0.1", static_cast<quint16>(service->Port()));
        QVERIFY(socket.waitForConnected(Tests::Timeouts::Process));
        socket.write("GET /media/shop1/music/a.mp3 HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
        QVERIFY(socket.waitForDisconnected(Tests::Timeouts::Process));
        const QByteArray received = socket.readAll();
        const int headerEnd = received.indexOf("\r\n\r\n");
        QVERIFY2(received.startsWith("HTTP/1.1 200") && headerEnd > 0, received.left(200).constData());
        QVERIFY(received.left(headerEnd).toLower().contains("content-length: " +
                                                            QByteArray::number(music.size())));
        const QByteArray body = received.mid(headerEnd + 4);
        QVERIFY2(body.size() > 0 && body.size() < music.size(), qPrintable(QString::number(body.size())));
        QCOMPARE(body, music.left(body.size()));
    }

    void faultTargetsReachWhatTheyNameAndNothingElse_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("hit");
        const char* a = "/media/shop1/music/a.mp3";
        const char* servers = "/api/player/legacy/v1/auth/servers";
        QTest::newRow("one file") << "media/music/a.mp3" << a << true;
        QTest::newRow("one file, not the next") << "media/music/a.mp3"
                                                << "/media/shop1/music/b.mp3" << false;
        QTest::newRow("downloads") << "media" << a << true;
        QTest::newRow("downloads, not plain files") << "media"
                                                    << "/files/photo/p.jpg" << false;
        QTest::newRow("the API") << "*" << servers << true;
        QTest::newRow("the API, not downloads") << "*" << a << false;
    }

    void faultTargetsReachWhatTheyNameAndNothingElse()
    {
        QFETCH(QString, target);
        QFETCH(QString, url);
        QFETCH(bool, hit);
        QVERIFY(service->AddFault({target, "not_found"}) > 0);
        QCOMPARE(client->Get(url).status, hit ? 404 : 200);
        QVERIFY(service->ClearFaults());
        QCOMPARE(client->Get(url).status, 200);
    }

    // A misspelt fault would never fire, and the test planning it would pass for
    // the wrong reason.
    void faultsAreCheckedWhenPlanned_data()
    {
        QTest::addColumn<QByteArray>("description");
        QTest::addColumn<QString>("complaint");
        const auto row = [](const char* name, const char* description, const char* complaint) {
            QTest::newRow(name) << QByteArray(description) << complaint;
        };
        row("misspelt endpoint", R"({"target":"playback/versions","kind":"not_found"})",
            "unknown fault target");
        row("unknown kind", R"({"target":"servers","kind":"teapot"})", "unknown fault kind");
        row("status out of range", R"({"target":"servers","kind":"status","status":999})", "\"status\"");
        row("API error without code", R"({"target":"servers","kind":"api_error"})", "\"error\"");
        row("delay without time", R"({"target":"servers","kind":"delay"})", "delay_ms");
        row("delay far too long", R"({"target":"servers","kind":"delay","delay_ms":100000000})", "delay_ms");
        row("no count", R"({"target":"servers","kind":"empty","count":0})", "\"count\"");
        row("body not text", R"({"target":"servers","kind":"body","body":{}})", "\"body\"");
    }

    void faultsAreCheckedWhenPlanned()
    {
        QFETCH(QByteArray, description);
        QFETCH(QString, complaint);
        QVERIFY(!service->Control("POST", "faults", QJsonDocument::fromJson(description).object()));
        QVERIFY2(service->ErrorString().contains(complaint), qPrintable(service->ErrorString()));
        QVERIFY(service->Faults().isEmpty());
    }
};

QTEST_GUILESS_MAIN(ReferenceServiceApiTest)
#include "tst_reference_service_api.moc"
