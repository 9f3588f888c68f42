#include "tests/support/reference_service.h"
#include "tests/support/test_timeouts.h"
#include "tests/tools/api_client.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Tests::ApiClient;

// The service as a process: a broken scenario or command line is refused with a
// clear message before it listens; it says where it listens in one line, survives
// whatever arrives on its port, stops at once on SIGTERM, listens on loopback only
// and writes nothing into its folders.
class ReferenceServiceProcessTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Tests::ReferenceService> service;

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
            process.kill();
            process.waitForFinished(Tests::Timeouts::Process);
            return Outcome();
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

    static QString BasicScenario()
    {
        return Tests::ReferenceService::SourceDirectory() + "/tests/tools/scenarios/basic";
    }

    // Path, size and modification time of everything below a folder.
    static QStringList Snapshot(const QString& folder)
    {
        QStringList entries;
        QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            it.next();
            entries << it.filePath() + ' ' + QString::number(it.fileInfo().size()) + ' ' +
                           QString::number(it.fileInfo().lastModified().toMSecsSinceEpoch());
        }
        entries.sort();
        return entries;
    }

    bool AnswersNormally() const
    {
        const auto answer = ApiClient(service->Origin()).Get("/api/player/legacy/v1/auth/servers");
        return service->IsRunning() && answer.complete && answer.status == 200 &&
               answer.Json().value("success") == QJsonValue(true);
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
        row("not JSON", accounts, "{\"accounts\": [", "not valid JSON");
        row("not an object", accounts, "[]", "a JSON object was expected");
        row("login twice", accounts,
            R"({"accounts":[{"login":"a","password":""},{"login":"a","password":""}]})",
            "accounts[1]: the login \"a\" is used twice");
        row("code that is a path", accounts, object + R"("../x"}]}]})",
            "accounts[0]: objects[0]: a playback object");
        row("code that is a path of the API", accounts, object + R"("auth"}]}]})", "accounts[0]: objects[0]");
        row("day beyond the week", shop, R"({"schedule":[{"day_offset":7}]})", "schedule[0]: \"day_offset\"");
        row("day as text", shop, R"({"schedule":[{"day_offset":"0"}]})", "schedule[0]: \"day_offset\"");
        row("track outside the content", shop,
            R"({"content":[{"type":"music","tracks":[{"id":1,"path":"../../etc/passwd"}]}]})",
            "content[0].tracks[0]: \"path\" \"../../etc/passwd\" must be a relative path");
        row("absolute track path", shop,
            R"({"content":[{"type":"music","tracks":[{"id":1,"path":"/etc/x"}]}]})",
            "content[0].tracks[0]: \"path\"");
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
        const QStringList basic = {"--scenario", BasicScenario()};
        const auto row = [](const char* name, const QStringList& arguments, int exitCode,
                            const char* message) {
            QTest::newRow(name) << arguments << exitCode << message;
        };
        row("help", {"--help"}, 0, "--scenario DIR");
        row("nothing", {}, 2, "--scenario is required");
        row("scenario without folder", {"--scenario"}, 2, "--scenario needs a value");
        row("missing scenario", {"--scenario", "/nonexistent/zelmar"}, 2, "does not exist");
        row("port as a word", basic + QStringList{"--port", "http"}, 2, "--port must be a number");
        row("port too high", basic + QStringList{"--port", "70000"}, 2, "--port must be a number");
        row("certificate without key", basic + QStringList{"--tls-cert", "a.crt"}, 2,
            "--tls-cert and --tls-key go together");
        row("missing content", basic + QStringList{"--content", "/nonexistent/zelmar"}, 2,
            "the content folder");
        row("unknown option", basic + QStringList{"--colour"}, 2, "unknown option \"--colour\"");
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

    void aTakenPortIsReported()
    {
        const QString port = QString::number(service->Port());
        const Outcome second = Run({"--scenario", BasicScenario(), "--port", port});
        QCOMPARE(second.exitCode, 1);
        QVERIFY2(second.errors.contains("cannot listen on 127.0.0.1:" + port), qPrintable(second.errors));
        QVERIFY(AnswersNormally());
    }

    // Tests read the first line of output for the address; SIGTERM ends the service
    // with 0 at once, even with a reply held back for ten minutes.
    void saysWhereItListensOnceAndStopsAtOnceOnSigterm()
    {
        QProcess process;
        process.start(Tests::ReferenceService::ExecutablePath(),
                      {"--scenario", BasicScenario(), "--port", "0"});
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

    // `serviceEndsIt`: the service answers or hangs up at once; otherwise the client
    // gives up half way, as the service only drops a request whose body never comes
    // after its read timeout.
    void malformedRequestsLeaveTheServiceServing_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("serviceEndsIt");
        const auto row = [](const char* name, const QByteArray& bytes, bool serviceEndsIt = true) {
            QTest::newRow(name) << bytes << serviceEndsIt;
        };
        const QByteArray host = " HTTP/1.1\r\nHost: 127.0.0.1\r\n";
        const QByteArray signIn = "POST /api/v1/auth/sign_in" + host;
        row("binary garbage", QByteArray("\x00\x01\x02\xff\xfe garbage\r\n\r\n", 18));
        row("no protocol version", "GET /api/v1/auth/business_types\r\n\r\n");
        row("unknown method", "BREW /api/v1/auth/business_types" + host + "\r\n");
        row("a header line of 20 kB",
            "GET /files/x" + host + "X-Long: " + QByteArray(20000, 'a') + "\r\n\r\n");
        row("a thousand headers",
            "GET /files/x" + host + QByteArray("X-Header: value\r\n").repeated(1000) + "\r\n");
        row("body shorter than announced", signIn + "Content-Length: 1000\r\n\r\n{\"login\"", false);
        row("negative length", signIn + "Content-Length: -5\r\n\r\n", false);
        row("length beyond any number", signIn + "Content-Length: 99999999999999999999999\r\n\r\n", false);
        row("body larger than accepted", signIn + "Content-Length: 200000000\r\n\r\n", false);
        row("broken chunks", signIn + "Transfer-Encoding: chunked\r\n\r\nzz\r\nnot a chunk\r\n\r\n");
        row("broken escapes", "GET /media/%zz/%/%%%/x%4" + host + "\r\n");
        row("escaped zero byte", "GET /files/a%00b" + host + "\r\n");
        row("path of 8000 segments",
            "GET /media/shop1/music/" + QByteArray("a/").repeated(4000) + host + "\r\n");
        row("form of 100 kB",
            "POST /api/v1/auth/sign_up" + host +
                "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: 100000\r\n\r\n" +
                QByteArray("a=b&").repeated(25000));
        row("nothing but blank lines", "\r\n\r\n\r\n");
    }

    void malformedRequestsLeaveTheServiceServing()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, serviceEndsIt);
        QTcpSocket socket;
        socket.connectToHost("127.0.0.1", static_cast<quint16>(service->Port()));
        QVERIFY(socket.waitForConnected(Tests::Timeouts::Process));
        QCOMPARE(socket.write(bytes), bytes.size());
        QVERIFY(socket.waitForBytesWritten(Tests::Timeouts::Process) || socket.bytesToWrite() == 0);
        if (serviceEndsIt) {
            QTRY_COMPARE_WITH_TIMEOUT(socket.state(), QAbstractSocket::UnconnectedState,
                                      Tests::Timeouts::Process);
        }
        socket.abort();
        QVERIFY(AnswersNormally());
    }

    // Whatever body reaches an endpoint, the answer is the API's envelope.
    void randomBodiesAreAnsweredWithTheEnvelope()
    {
        const ApiClient client(service->Origin());
        const auto token = ApiClient::Token(client.SignIn("owner", "secret", "shop1"));
        const QStringList posts =
            QString("auth/send_confirmation_code auth/objects auth/sign_in auth/sign_up shop1/player_version "
                    "shop1/set_business_type shop1/set_music_styles shop1/playlists/video/4/activate "
                    "shop1/playlists/music/2/deactivate shop1/statistics shop1/likes_dislikes")
                .split(' ');
        const QStringList gets =
            QString("shop1/playback/version shop1/playback/configuration_v2 auth/business_types "
                    "shop1/playlists/recommended shop1/playlists/stock_music")
                .split(' ');
        const QList<QByteArray> types = {ApiClient::Json, ApiClient::Form, "text/plain"};
        const QList<QByteArray> pieces = QByteArray("{ } [ ] , : \"login\" 1 1e400 null true \"\\u0000\" "
                                                    "\"\xd0\xbf\" = & %zz + track_id music_styles \xff")
                                             .split(' ');
        QRandomGenerator random(20261121);
        for (int round = 0; round < 40; ++round) {
            QByteArray body;
            for (int i = random.bounded(12); i > 0; --i) {
                body += random.bounded(4) == 0 ? QByteArray(1, static_cast<char>(random.bounded(256)))
                                               : pieces.at(random.bounded(pieces.size()));
            }
            // The same bytes as the body of every POST and the query of every GET.
            for (const QString& path : posts + gets) {
                const QString target = "/api/v1/" + path;
                const auto answer =
                    gets.contains(path)
                        ? client.Get(target + '?' + QString::fromLatin1(body.toPercentEncoding("=&")), token)
                        : client.Post(target, body, types.at(random.bounded(types.size())), token);
                QVERIFY2(answer.complete && answer.status == 200 && answer.Json().value("success").isBool(),
                         qPrintable(path + " <- " + QString::fromLatin1(body.toPercentEncoding())));
            }
        }
        QVERIFY(AnswersNormally());
    }

    void listensOnLoopbackOnly()
    {
        QFile table("/proc/net/tcp");
        QVERIFY2(table.open(QIODevice::ReadOnly), "/proc/net/tcp is needed to see where the service listens");
        const QByteArray port = QByteArray::number(service->Port(), 16).toUpper().rightJustified(4, '0');
        QList<QByteArray> listening;
        for (const QByteArray& line : table.readAll().split('\n')) {
            const QList<QByteArray> fields = line.simplified().split(' ');
            // local address, then remote address, then state; 0A is LISTEN.
            if (fields.size() > 3 && fields.at(1).endsWith(':' + port) && fields.at(3) == "0A") {
                listening << fields.at(1);
            }
        }
        QCOMPARE(listening, QList<QByteArray>{"0100007F:" + port});
    }

    // Scenario and content folders belong to the repository or the user: likes,
    // replaced configurations and resets live in memory only.
    void writesNothingIntoItsFolders()
    {
        QTemporaryDir scenario;
        QTemporaryDir content;
        QDirIterator files(BasicScenario(), QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString copy = scenario.filePath(QDir(BasicScenario()).relativeFilePath(files.next()));
            QVERIFY(QDir().mkpath(QFileInfo(copy).path()) && QFile::copy(files.filePath(), copy));
        }
        QVERIFY(WriteFile(content.filePath("music/a.mp3"), "music"));
        const QStringList before = Snapshot(scenario.path()) + Snapshot(content.path());
        Tests::ReferenceService own(scenario.path(), content.path());
        QVERIFY2(own.Start(), qPrintable(own.ErrorString()));
        const ApiClient client(own.Origin());
        const auto token = ApiClient::Token(client.SignIn("owner", "secret", "shop1"));
        QVERIFY(client.Post("/api/v1/shop1/likes_dislikes", "value=1&track_id=1", ApiClient::Form, token)
                    .complete);
        QVERIFY(client.Get("/api/v1/shop1/playback/configuration_v2?timestamp=1", token).complete);
        QVERIFY(client.Get("/media/shop1/music/a.mp3").complete);
        QVERIFY(own.ReplaceConfiguration("shop1", QJsonObject()) > 0);
        QVERIFY(own.Reset());
        QVERIFY2(own.Stop(), qPrintable(own.ErrorString()));
        QCOMPARE(Snapshot(scenario.path()) + Snapshot(content.path()), before);
    }
};

QTEST_GUILESS_MAIN(ReferenceServiceProcessTest)
#include "tst_reference_service_process.moc"
