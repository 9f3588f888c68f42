#include "tests/support/reference_service.h"
#include "tests/support/test_timeouts.h"
#include "tests/tools/api_client.h"

#include <QTcpSocket>

#include <memory>

using Tests::ApiClient;

// The service as a process: a broken scenario or command line is refused before it listens,
// it says where it listens in one line, survives whatever arrives on its port and stops at
// once on SIGTERM; and the demo scenario it ships with fills a week.
class ReferenceServiceProcessTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Tests::ReferenceService> service;
    const QString basicScenario = Tests::ReferenceService::SourceDirectory() + "/tests/tools/scenarios/basic";

    struct Outcome
    {
        int exitCode = -1;
        QString output;
        QString errors;
    };

    static Outcome Run(const QStringList& arguments)
    {
        QProcess process;
        process.start(Tests::ReferenceService::ExecutablePath(), arguments);
        if (!process.waitForFinished(Tests::Timeouts::Process)) {
            return Outcome(); // QProcess kills it on the way out.
        }
        return {process.exitCode(), QString::fromLocal8Bit(process.readAllStandardOutput()),
                QString::fromLocal8Bit(process.readAllStandardError())};
    }

    static bool WriteFile(const QString& path, const QByteArray& bytes)
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(!Tests::ReferenceService::ExecutablePath().isEmpty(), "ZELMAR_REFERENCE_SERVICE is not set");
        QVERIFY2(!Tests::ReferenceService::SourceDirectory().isEmpty(), "ZELMAR_TEST_SOURCE_DIR is not set");
        QString error;
        service = Tests::ReferenceService::Started("basic", &error);
        QVERIFY2(service, qPrintable(error));
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    // A scenario mistake stops the service before any test talks to it, and says
    // where it is.
    void brokenScenariosAreRefusedNamingTheFileAndThePlace_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("complaint");
        const auto row = [](const char* name, const char* file, const QByteArray& text,
                            const char* complaint) {
            QTest::newRow(name) << file << text << complaint;
        };
        const char* accounts = "accounts.json";
        const char* shop = "configurations/shop.json";
        const QByteArray object = R"({"accounts":[{"login":"a","password":"","objects":[{"id":1,"code":)";
        row("not an object", accounts, "[]", "a JSON object was expected");
        row("login twice", accounts,
            R"({"accounts":[{"login":"a","password":""},{"login":"a","password":""}]})",
            "accounts[1]: the login \"a\" is used twice");
        row("code that is a path", accounts, object + R"("../x"}]}]})",
            "accounts[0]: objects[0]: a playback object");
        row("track outside the content", shop,
            R"({"content":[{"type":"music","tracks":[{"id":1,"path":"../../etc/passwd"}]}]})",
            "content[0].tracks[0]: \"path\" \"../../etc/passwd\" must be a relative path");
        row("ad entry without a track", shop, R"({"ads":[{"name":"x","tracks":[{"day_offset":0}]}]})",
            "ads[0].tracks[0]");
        row("configuration of nobody", "configurations/nobody.json", "{}", "no playback object has the code");
        row("settings naming a missing playlist", "catalogue.json",
            R"({"settings":{"music":{"playlist_id":5}}})",
            "\"settings\".\"music\".\"playlist_id\" must be 0 or the id of a music playlist");
        row("unknown playlist type", "catalogue.json", R"({"playlists":{"radio":[]}})",
            "playlist type \"radio\"");
        row("servers not a list", "service.json", R"({"servers":{}})", "\"servers\" must be an array");
        row("sign-up configuration missing", "service.json", R"({"sign_up_configuration":"fresh"})",
            "there is no configurations/fresh.json");
    }

    void brokenScenariosAreRefusedNamingTheFileAndThePlace()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, text);
        QFETCH(QString, complaint);
        QTemporaryDir scenario;
        QVERIFY(
            WriteFile(scenario.filePath("accounts.json"),
                      R"({"accounts":[{"login":"a","password":"b","objects":[{"id":1,"code":"shop"}]}]})"));
        QVERIFY(WriteFile(scenario.filePath(file), text));
        const Outcome outcome = Run({"--scenario", scenario.path()});
        QCOMPARE(outcome.exitCode, 2);
        QVERIFY2(outcome.errors.contains(file + ": ") && outcome.errors.contains(complaint),
                 qPrintable(outcome.errors));
        QVERIFY(outcome.output.isEmpty());
    }

    void commandLineIsChecked_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("message");
        const QStringList basic = {"--scenario", basicScenario};
        const auto row = [](const char* name, const QStringList& arguments, int exitCode,
                            const char* message) {
            QTest::newRow(name) << arguments << exitCode << message;
        };
        row("help", {"--help"}, 0, "--scenario DIR");
        row("nothing", {}, 2, "--scenario is required");
        row("scenario without folder", {"--scenario"}, 2, "--scenario needs a value");
        row("missing scenario", {"--scenario", "/nonexistent/zelmar"}, 2, "does not exist");
        row("port as a word", basic + QStringList{"--port", "http"}, 2, "--port must be a number");
        row("certificate without key", basic + QStringList{"--tls-cert", "a.crt"}, 2,
            "--tls-cert and --tls-key go together");
        row("missing content", basic + QStringList{"--content", "/nonexistent/zelmar"}, 2,
            "the content folder");
        row("unknown option", basic + QStringList{"--colour"}, 2, "unknown option \"--colour\"");
        row("taken port", basic + QStringList{"--port", QString::number(service->Port())}, 1,
            "cannot listen on 127.0.0.1:");
        row("unreadable certificate",
            basic + QStringList{"--tls-cert", "/nonexistent.crt", "--tls-key", "/nonexistent.key"}, 1,
            "cannot use the TLS certificate");
    }

    void commandLineIsChecked()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, message);
        const Outcome outcome = Run(arguments);
        QCOMPARE(outcome.exitCode, exitCode);
        // Help goes to standard output, complaints to standard error.
        QVERIFY2((exitCode == 0 ? outcome.output : outcome.errors).contains(message),
                 qPrintable(outcome.output + outcome.errors));
    }

    // Tests read the first line of output for the address; SIGTERM ends the service
    // with 0 at once, even with a reply held back for ten minutes.
    void saysWhereItListensOnceAndStopsAtOnceOnSigterm()
    {
        QProcess process;
        process.start(Tests::ReferenceService::ExecutablePath(),
                      {"--scenario", basicScenario, "--port", "0"});
        QTRY_VERIFY_WITH_TIMEOUT(process.canReadLine(), Tests::Timeouts::Process);
        const QString line = QString::fromLocal8Bit(process.readLine()).trimmed();
        const auto match =
            QRegularExpression("^listening on (http://127\\.0\\.0\\.1:(\\d+)/)api/v1/$").match(line);
        QVERIFY2(match.hasMatch() && match.captured(2).toInt() > 0, qPrintable(line));
        const ApiClient control(match.captured(1));
        QCOMPARE(control.Post("/control/faults", R"({"target":"servers","kind":"delay","delay_ms":600000})")
                     .status,
                 200);
        QTcpSocket socket;
        socket.connectToHost("127.0.0.1", static_cast<quint16>(match.captured(2).toInt()));
        QVERIFY(socket.waitForConnected(Tests::Timeouts::Process));
        socket.write("GET /api/player/legacy/v1/auth/servers HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
        QTRY_VERIFY_WITH_TIMEOUT(control.Get("/control/requests").body.contains("auth/servers"),
                                 Tests::Timeouts::Process);
        process.terminate();
        QVERIFY(process.waitForFinished(Tests::Timeouts::Process));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(process.readAllStandardOutput(), QByteArray());
    }

    // Each is answered while the bad connection is still open: neither a crash nor a
    // request stalled half way holds up the next one.
    void malformedRequestsLeaveTheServiceServing_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray host = " HTTP/1.1\r\nHost: 127.0.0.1\r\n";
        const QByteArray signIn = "POST /api/v1/auth/sign_in" + host;
        QTest::newRow("binary garbage") << QByteArray("\x00\x01\x02\xff\xfe garbage\r\n\r\n", 18);
        QTest::newRow("a thousand headers")
            << "GET /files/x" + host + QByteArray("X-Header: value\r\n").repeated(1000) + "\r\n";
        QTest::newRow("body shorter than announced") << signIn + "Content-Length: 1000\r\n\r\n{\"login\"";
        QTest::newRow("body larger than accepted") << signIn + "Content-Length: 200000000\r\n\r\n";
        QTest::newRow("broken chunks")
            << signIn + "Transfer-Encoding: chunked\r\n\r\nzz\r\nnot a chunk\r\n\r\n";
        QTest::newRow("broken escapes") << "GET /media/%zz/%/%%%/x%4" + host + "\r\n";
        QTest::newRow("escaped zero byte") << "GET /files/a%00b" + host + "\r\n";
    }

    void malformedRequestsLeaveTheServiceServing()
    {
        QFETCH(QByteArray, bytes);
        QTcpSocket socket;
        socket.connectToHost("127.0.0.1", static_cast<quint16>(service->Port()));
        QVERIFY(socket.waitForConnected(Tests::Timeouts::Process));
        QCOMPARE(socket.write(bytes), bytes.size());
        QVERIFY(socket.waitForBytesWritten(Tests::Timeouts::Process) || socket.bytesToWrite() == 0);
        const auto answer = ApiClient(service->Origin()).Get("/api/player/legacy/v1/auth/servers");
        QVERIFY2(answer.complete && answer.Json().value("success") == QJsonValue(true),
                 qPrintable(answer.error));
    }

    // Both demo points of sale have a week of days covered from midnight to midnight
    // by periods naming playlists of their own kind, and media named by the layout
    // scripts/make-demo-content writes.
    void demoScenarioCoversEveryDayWithTheDemoContent()
    {
        Tests::ReferenceService demo(Tests::ReferenceService::SourceDirectory() + "/demo/scenario");
        QVERIFY2(demo.Start(), qPrintable(demo.ErrorString()));
        const ApiClient client(demo.Origin());
        const auto objects = client.Post("/api/v1/auth/objects", R"({"login":"demo","password":"demo"})");
        QStringList codes;
        for (const QJsonValue& object : objects.Json().value("objects").toArray()) {
            codes << object["code"].toString();
        }
        QCOMPARE(codes, QStringList({"demo-cafe", "demo-shop"}));
        const QHash<QString, QRegularExpression> layout = {
            {"music", QRegularExpression("^track(0[1-9]|1[0-2])\\.mp3$")},
            {"clip", QRegularExpression("^(ad0[1-6]\\.mp3|ad_video01\\.mp4)$")},
            {"video", QRegularExpression("^clip0[1-4]\\.mp4$")},
            {"photo", QRegularExpression("^photo0[1-8]\\.jpg$")}};
        const auto minutes = [](const QJsonValue& time, bool isEnd) {
            const int value = QTime::fromString(time.toString(), "hh:mm").msecsSinceStartOfDay() / 60000;
            return isEnd && value == 0 ? 24 * 60 : value;
        };
        QSet<QString> used;
        for (const QString& code : codes) {
            const QString token = client.SignIn("demo", "demo", code);
            const QJsonObject configuration =
                client.Get("/api/v1/" + code + "/playback/configuration_v2?timestamp=1&lang=ru", token)
                    .Json()["configuration"]
                    .toObject();
            for (const QJsonValue& list : configuration.value("content").toArray()) {
                const QString type = list["type"].toString();
                for (const QJsonValue& track : list["tracks"].toArray()) {
                    QVERIFY2(layout.value(type).match(track["path"].toString()).hasMatch(),
                             qPrintable(type + '/' + track["path"].toString()));
                    used.insert(type + '/' + track["path"].toString());
                }
            }
            QHash<int, QString> kinds;
            for (const QJsonValue& playlist : configuration.value("playlists").toArray()) {
                kinds.insert(playlist["id"].toInt(), playlist["content_type"].toString());
                QVERIFY(!playlist["tracks"].toArray().isEmpty());
            }
            const QJsonArray days = configuration.value("schedule").toArray();
            QCOMPARE(days.size(), 7);
            for (const QJsonValue& day : days) {
                int reached = 0;
                for (const QJsonValue& period : day["periods"].toArray()) {
                    QCOMPARE(minutes(period["start_time_str"], false), reached);
                    reached = minutes(period["end_time_str"], true);
                    QCOMPARE(kinds.value(period["music_playlist_id"].toInt()), "music");
                    for (const QString& kind : {QStringLiteral("video"), QStringLiteral("photo")}) {
                        const int id = period[kind + "_playlist_id"].toInt();
                        QVERIFY2(id == 0 || kinds.value(id) == kind, qPrintable(code + ' ' + kind));
                    }
                }
                QCOMPARE(reached, 24 * 60);
            }
            QVERIFY(!configuration.value("ads").toArray().isEmpty());
        }
        // Between them the two points of sale use every generated file.
        QCOMPARE(used.size(), 12 + 7 + 4 + 8);
        QVERIFY2(demo.Stop(), qPrintable(demo.ErrorString()));
    }
};

QTEST_GUILESS_MAIN(ReferenceServiceProcessTest)
#include "tst_reference_service_process.moc"
