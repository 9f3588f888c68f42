#include "tests/support/reference_service.h"
#include "tests/support/test_timeouts.h"
#include "tests/tools/api_client.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

#include <memory>

using Tests::ApiClient;

// The service as a process: a broken scenario or command line is refused with a
// clear message before listening; it survives whatever arrives on its port, stops
// at once on SIGTERM, listens on loopback only, serves HTTPS that certificate
// checks can be tried against, and writes nothing into its folders.
class ReferenceServiceProcessTest : public QObject
{
    Q_OBJECT

private:
    struct Outcome
    {
        bool finished = false;
        int exitCode = -1;
        QString output;
        QString errors;
    };

    static Outcome Run(const QStringList& arguments)
    {
        QProcess process;
        process.start(Tests::ReferenceService::ExecutablePath(), arguments);
        Outcome outcome;
        outcome.finished = process.waitForFinished(Tests::Timeouts::Process);
        if (!outcome.finished) {
            process.kill();
            process.waitForFinished(Tests::Timeouts::Process);
        }
        outcome.exitCode = process.exitCode();
        outcome.output = QString::fromLocal8Bit(process.readAllStandardOutput());
        outcome.errors = QString::fromLocal8Bit(process.readAllStandardError());
        return outcome;
    }

    static bool WriteFile(const QString& path, const QByteArray& bytes)
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
    }

    static QString BasicScenario()
    {
        return Tests::ReferenceService::SourceDirectory() + QStringLiteral("/tests/tools/scenarios/basic");
    }

    // Path, size and modification time of everything below a folder.
    static QStringList Snapshot(const QString& folder)
    {
        QStringList entries;
        QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            it.next();
            entries << QStringLiteral("%1 %2 %3")
                           .arg(it.filePath())
                           .arg(it.fileInfo().size())
                           .arg(it.fileInfo().lastModified().toMSecsSinceEpoch());
        }
        entries.sort();
        return entries;
    }

    static bool AnswersNormally(Tests::ReferenceService& service)
    {
        const auto answer =
            ApiClient(service.Origin()).Get(QStringLiteral("/api/player/legacy/v1/auth/servers"));
        return service.IsRunning() && answer.complete && answer.status == 200 &&
               answer.Json().value(QStringLiteral("success")) == QJsonValue(true);
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(!Tests::ReferenceService::ExecutablePath().isEmpty(), "ZELMAR_REFERENCE_SERVICE is not set");
        QVERIFY2(!Tests::ReferenceService::SourceDirectory().isEmpty(), "ZELMAR_TEST_SOURCE_DIR is not set");
    }

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
        row("not JSON", accounts, "{\"accounts\": [", "accounts.json: not valid JSON");
        row("not an object", accounts, "[]", "accounts.json: a JSON object was expected");
        row("login twice", accounts,
            R"({"accounts": [{"login": "a", "password": ""}, {"login": "a", "password": ""}]})",
            "accounts[1]: the login \"a\" is used twice");
        row("code that is a path", accounts,
            R"({"accounts": [{"login": "a", "password": "", "objects": [{"id": 1, "code": "../x"}]}]})",
            "accounts.json: accounts[0]: objects[0]: a playback object needs");
        row("code that is a path segment of the API", accounts,
            R"({"accounts": [{"login": "a", "password": "", "objects": [{"id": 1, "code": "auth"}]}]})",
            "a playback object needs");
        row("day beyond the week", shop, R"({"schedule": [{"day_offset": 7}]})",
            "configurations/shop.json: schedule[0]: \"day_offset\"");
        row("day as text", shop, R"({"schedule": [{"day_offset": "0"}]})", "schedule[0]: \"day_offset\"");
        row("track outside the content", shop,
            R"({"content": [{"type": "music", "tracks": [{"id": 1, "path": "../../etc/passwd"}]}]})",
            "content[0].tracks[0]: \"path\" \"../../etc/passwd\" must be a relative path");
        row("absolute track path", shop,
            R"({"content": [{"type": "music", "tracks": [{"id": 1, "path": "/etc/passwd"}]}]})",
            "must be a relative path");
        row("ad entry without a track", shop, R"({"ads": [{"name": "x", "tracks": [{"day_offset": 0}]}]})",
            "ads[0].tracks[0]");
        row("configuration of nobody", "configurations/nobody.json", "{}",
            "no playback object has the code \"nobody\"");
        row("settings naming a missing playlist", "catalogue.json",
            R"({"settings": {"music": {"playlist_id": 5}}})",
            "\"settings\".\"music\".\"playlist_id\" must be 0 or the id of a music playlist");
        row("unknown playlist type", "catalogue.json", R"({"playlists": {"radio": []}})",
            "unknown playlist type \"radio\"");
        row("servers not a list", "service.json", R"({"servers": {}})", "\"servers\" must be an array");
        row("sign-up configuration missing", "service.json", R"({"sign_up_configuration": "fresh"})",
            "there is no configurations/fresh.json");
    }

    void brokenScenariosAreRefusedNamingTheFileAndThePlace()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, text);
        QFETCH(QString, complaint);
        QTemporaryDir scenario;
        QVERIFY(WriteFile(
            scenario.filePath(QStringLiteral("accounts.json")),
            R"({"accounts": [{"login": "a", "password": "b", "objects": [{"id": 1, "code": "shop"}]}]})"));
        QVERIFY(WriteFile(scenario.filePath(file), text));
        const Outcome outcome = Run({QStringLiteral("--scenario"), scenario.path()});
        QVERIFY(outcome.finished);
        QCOMPARE(outcome.exitCode, 2);
        QVERIFY2(outcome.errors.contains(complaint), qPrintable(outcome.errors));
        QVERIFY(outcome.output.isEmpty());
    }

    void commandLineIsChecked_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("message");
        const QString scenario = BasicScenario();
        const auto row = [](const char* name, const QStringList& arguments, int exitCode,
                            const char* message) {
            QTest::newRow(name) << arguments << exitCode << message;
        };
        const auto with = [&](const QStringList& more) {
            return QStringList{"--scenario", scenario} + more;
        };
        row("help", {"--help"}, 0, "--scenario DIR");
        row("nothing", {}, 2, "--scenario is required");
        row("scenario without folder", {"--scenario"}, 2, "--scenario needs a value");
        row("missing scenario", {"--scenario", "/nonexistent/zelmar"}, 2, "does not exist");
        row("port as a word", with({"--port", "http"}), 2, "--port must be a number");
        row("port too high", with({"--port", "70000"}), 2, "--port must be a number");
        row("certificate without key", with({"--tls-cert", "a.crt"}), 2,
            "--tls-cert and --tls-key go together");
        row("missing content", with({"--content", "/nonexistent/zelmar"}), 2, "the content folder");
        row("unknown option", with({"--colour"}), 2, "unknown option \"--colour\"");
        row("unreadable certificate",
            with({"--tls-cert", "/nonexistent.crt", "--tls-key", "/nonexistent.key"}), 1,
            "cannot use the TLS certificate");
    }

    void commandLineIsChecked()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, message);
        const Outcome outcome = Run(arguments);
        QVERIFY(outcome.finished);
        QCOMPARE(outcome.exitCode, exitCode);
        // Help goes to standard output, complaints to standard error.
        QVERIFY2((exitCode == 0 ? outcome.output : outcome.errors).contains(message),
                 qPrintable(outcome.output + outcome.errors));
    }

    void aTakenPortIsReported()
    {
        Tests::ReferenceService first(BasicScenario());
        QVERIFY2(first.Start(), qPrintable(first.ErrorString()));
        const QString port = QString::number(first.Port());
        const Outcome second =
            Run({QStringLiteral("--scenario"), BasicScenario(), QStringLiteral("--port"), port});
        QCOMPARE(second.exitCode, 1);
        QVERIFY2(second.errors.contains(QStringLiteral("cannot listen on 127.0.0.1:") + port),
                 qPrintable(second.errors));
        QVERIFY(AnswersNormally(first));
    }

    void malformedRequestsLeaveTheServiceServing_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        // Whether the service answers or hangs up by itself at once; otherwise the
        // client gives up half way, as the service would only drop one waiting for a
        // body that never comes after its read timeout.
        QTest::addColumn<bool>("serviceEndsIt");
        const auto row = [](const char* name, const QByteArray& bytes, bool serviceEndsIt = true) {
            QTest::newRow(name) << bytes << serviceEndsIt;
        };
        const QByteArray host = "Host: 127.0.0.1\r\n";
        const QByteArray signIn = "POST /api/v1/auth/sign_in HTTP/1.1\r\n" + host;
        row("binary garbage", QByteArray("\x00\x01\x02\xff\xfe garbage\r\n\r\n", 18));
        row("no protocol version", "GET /api/v1/auth/business_types\r\n\r\n");
        row("unknown method", "BREW /api/v1/auth/business_types HTTP/1.1\r\n" + host + "\r\n");
        row("a header line of 20 kB",
            "GET /files/x HTTP/1.1\r\n" + host + "X-Long: " + QByteArray(20000, 'a') + "\r\n\r\n");
        row("a thousand headers",
            "GET /files/x HTTP/1.1\r\n" + host + QByteArray("X-Header: value\r\n").repeated(1000) + "\r\n");
        row("body shorter than announced",
            signIn + "Content-Type: application/json\r\nContent-Length: 1000\r\n\r\n{\"login\"", false);
        row("negative length", signIn + "Content-Length: -5\r\n\r\n", false);
        row("length beyond any number", signIn + "Content-Length: 99999999999999999999999\r\n\r\n", false);
        row("body larger than accepted", signIn + "Content-Length: 200000000\r\n\r\n", false);
        row("broken chunks", signIn + "Transfer-Encoding: chunked\r\n\r\nzz\r\nnot a chunk\r\n\r\n");
        row("broken escapes", "GET /media/%zz/%/%%%/x%4 HTTP/1.1\r\n" + host + "\r\n");
        row("escaped zero byte", "GET /files/a%00b HTTP/1.1\r\n" + host + "\r\n");
        row("path of 8000 segments",
            "GET /media/shop1/music/" + QByteArray("a/").repeated(4000) + " HTTP/1.1\r\n" + host + "\r\n");
        row("form of 100 kB",
            "POST /api/v1/auth/sign_up HTTP/1.1\r\n" + host +
                "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: 100000\r\n\r\n" +
                QByteArray("a=b&").repeated(25000));
        row("nothing but blank lines", "\r\n\r\n\r\n");
    }

    void malformedRequestsLeaveTheServiceServing()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, serviceEndsIt);
        Tests::ReferenceService service(BasicScenario());
        QVERIFY2(service.Start(), qPrintable(service.ErrorString()));
        QTcpSocket socket;
        socket.connectToHost(QStringLiteral("127.0.0.1"), static_cast<quint16>(service.Port()));
        QVERIFY(socket.waitForConnected(Tests::Timeouts::Process));
        QCOMPARE(socket.write(bytes), bytes.size());
        QVERIFY(socket.waitForBytesWritten(Tests::Timeouts::Process) || socket.bytesToWrite() == 0);
        if (serviceEndsIt) {
            QSignalSpy closed(&socket, &QTcpSocket::disconnected);
            QTRY_VERIFY_WITH_TIMEOUT(closed.count() == 1 ||
                                         socket.state() == QAbstractSocket::UnconnectedState,
                                     Tests::Timeouts::Process);
        } else {
            socket.abort();
        }
        QVERIFY(AnswersNormally(service));
        QVERIFY2(service.Stop(), qPrintable(service.ErrorString()));
    }

    // Whatever body reaches an endpoint, the answer is the API's envelope.
    void randomBodiesAreAnsweredWithTheEnvelope()
    {
        Tests::ReferenceService service(BasicScenario());
        QVERIFY2(service.Start(), qPrintable(service.ErrorString()));
        const ApiClient client(service.Origin());
        const QString token =
            client.SignIn(QStringLiteral("owner"), QStringLiteral("secret"), QStringLiteral("shop1"));
        QVERIFY(!token.isEmpty());
        const QStringList posts = {"/api/v1/auth/send_confirmation_code",
                                   "/api/v1/auth/objects",
                                   "/api/v1/auth/sign_in",
                                   "/api/v1/auth/sign_up",
                                   "/api/v1/shop1/player_version",
                                   "/api/v1/shop1/set_business_type",
                                   "/api/v1/shop1/set_music_styles",
                                   "/api/v1/shop1/playlists/video/4/activate",
                                   "/api/v1/shop1/playlists/music/2/deactivate",
                                   "/api/v1/shop1/statistics",
                                   "/api/v1/shop1/likes_dislikes"};
        const QStringList gets = {"/api/v1/shop1/playback/version", "/api/v1/shop1/playback/configuration_v2",
                                  "/api/v1/shop1/playlists/recommended",
                                  "/api/v1/shop1/playlists/stock_music", "/api/v1/auth/business_types"};
        const QList<QByteArray> contentTypes = {"application/json", "application/x-www-form-urlencoded",
                                                "text/plain"};
        const QList<QByteArray> pieces = {
            "{",   "}",  "[",     "]",    ",",     ":",           "\"login\"",    "\"value\"",
            "1",   "-1", "1e400", "null", "true",  "\"\\u0000\"", "\"\xd0\xbf\"", "=",
            "&",   "%",  "%zz",   "+",    "value", "track_id",    "phone",        "music_styles",
            "\xff"};
        QRandomGenerator random(20261121);
        for (int round = 0; round < 40; ++round) {
            QByteArray body;
            const int parts = random.bounded(12);
            for (int i = 0; i < parts; ++i) {
                body += random.bounded(4) == 0 ? QByteArray(1, static_cast<char>(random.bounded(256)))
                                               : pieces.at(random.bounded(pieces.size()));
            }
            // The same bytes as a body to every POST and as the query of every GET.
            QList<ApiClient::Answer> answers;
            for (const QString& path : posts) {
                answers << client.Post(path, body, contentTypes.at(random.bounded(contentTypes.size())),
                                       ApiClient::Token(token));
            }
            for (const QString& path : gets) {
                answers << client.Get(path + QLatin1Char('?') +
                                          QString::fromLatin1(body.toPercentEncoding("=&")),
                                      ApiClient::Token(token));
            }
            for (int i = 0; i < answers.size(); ++i) {
                QVERIFY2(answers.at(i).complete && answers.at(i).status == 200 &&
                             answers.at(i).Json().value(QStringLiteral("success")).isBool(),
                         qPrintable((posts + gets).at(i) + QStringLiteral(" <- ") +
                                    QString::fromLatin1(body.toPercentEncoding())));
            }
        }
        QVERIFY(AnswersNormally(service));
    }

    void stopsAtOnceOnSigtermEvenWithARequestHeld()
    {
        Tests::ReferenceService service(BasicScenario());
        QVERIFY2(service.Start(), qPrintable(service.ErrorString()));
        Tests::ServiceFault hold(QStringLiteral("servers"), QStringLiteral("delay"));
        hold.delayMs = 600000;
        QVERIFY(service.AddFault(hold) > 0);
        QTcpSocket socket;
        socket.connectToHost(QStringLiteral("127.0.0.1"), static_cast<quint16>(service.Port()));
        QVERIFY(socket.waitForConnected(Tests::Timeouts::Process));
        socket.write("GET /api/player/legacy/v1/auth/servers HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
        QTRY_COMPARE_WITH_TIMEOUT(service.RequestsTo(QStringLiteral("servers")).size(), 1,
                                  Tests::Timeouts::Process);
        // Stop() waits Timeouts::Process at most, far below the ten minutes held.
        QVERIFY2(service.Stop(), qPrintable(service.ErrorString()));
        QVERIFY(!service.IsRunning());
    }

    void listensOnLoopbackOnly()
    {
        Tests::ReferenceService service(BasicScenario());
        QVERIFY2(service.Start(), qPrintable(service.ErrorString()));
        QFile table(QStringLiteral("/proc/net/tcp"));
        QVERIFY2(table.open(QIODevice::ReadOnly), "/proc/net/tcp is needed to see where the service listens");
        const QString port = QStringLiteral("%1").arg(service.Port(), 4, 16, QLatin1Char('0')).toUpper();
        QStringList listening;
        for (const QByteArray& line : table.readAll().split('\n')) {
            const QList<QByteArray> fields = line.simplified().split(' ');
            // local address, then remote address, then state; 0A is LISTEN.
            if (fields.size() > 3 && fields.at(1).endsWith(":" + port.toLatin1()) && fields.at(3) == "0A") {
                listening << QString::fromLatin1(fields.at(1));
            }
        }
        QCOMPARE(listening, QStringList({QStringLiteral("0100007F:") + port}));
        QVERIFY(service.BaseUrl().startsWith(QStringLiteral("http://127.0.0.1:")));
    }

    void writesNothingIntoItsFolders()
    {
        QTemporaryDir scenario;
        QTemporaryDir content;
        for (const QString& name : QDir(BasicScenario()).entryList(QDir::Files)) {
            QVERIFY(QFile::copy(BasicScenario() + QLatin1Char('/') + name, scenario.filePath(name)));
        }
        QVERIFY(QDir(scenario.path()).mkpath(QStringLiteral("configurations")));
        QVERIFY(QFile::copy(BasicScenario() + QStringLiteral("/configurations/shop1.json"),
                            scenario.filePath(QStringLiteral("configurations/shop1.json"))));
        QVERIFY(WriteFile(content.filePath(QStringLiteral("music/a.mp3")), "music"));
        const QStringList scenarioBefore = Snapshot(scenario.path());
        const QStringList contentBefore = Snapshot(content.path());

        Tests::ReferenceService service(scenario.path(), content.path());
        QVERIFY2(service.Start(), qPrintable(service.ErrorString()));
        const ApiClient client(service.Origin());
        const QString token =
            client.SignIn(QStringLiteral("owner"), QStringLiteral("secret"), QStringLiteral("shop1"));
        const auto headers = ApiClient::Token(token);
        QVERIFY(client.PostForm(QStringLiteral("/api/v1/shop1/likes_dislikes"), "value=1&track_id=1", headers)
                    .complete);
        QVERIFY(client.Get(QStringLiteral("/api/v1/shop1/playback/configuration_v2?timestamp=1"), headers)
                    .complete);
        QVERIFY(client.Get(QStringLiteral("/media/shop1/music/a.mp3")).complete);
        QVERIFY(service.ReplaceConfiguration(QStringLiteral("shop1"), QJsonObject()) > 0);
        QVERIFY(service.Reset());
        QVERIFY2(service.Stop(), qPrintable(service.ErrorString()));
        QCOMPARE(Snapshot(scenario.path()), scenarioBefore);
        QCOMPARE(Snapshot(content.path()), contentBefore);
    }

    void servesHttpsThatCertificateChecksCanBeTriedAgainst()
    {
        QTemporaryDir certificates;
        QString error;
        QVERIFY2(Tests::ReferenceService::MakeTestCertificates(certificates.path(), &error),
                 qPrintable(error));
        const QString ca = certificates.filePath(QStringLiteral("ca.crt"));

        Tests::ReferenceService trusted(BasicScenario());
        trusted.SetTls(certificates.filePath(QStringLiteral("server.crt")),
                       certificates.filePath(QStringLiteral("server.key")));
        QVERIFY2(trusted.Start(), qPrintable(trusted.ErrorString()));
        QVERIFY(trusted.BaseUrl().startsWith(QStringLiteral("https://127.0.0.1:")));
        Tests::ReferenceService untrusted(BasicScenario());
        untrusted.SetTls(certificates.filePath(QStringLiteral("untrusted.crt")),
                         certificates.filePath(QStringLiteral("untrusted.key")));
        QVERIFY2(untrusted.Start(), qPrintable(untrusted.ErrorString()));

        QSslConfiguration trustingOurCa = QSslConfiguration::defaultConfiguration();
        trustingOurCa.setCaCertificates(QSslCertificate::fromPath(ca));
        QVERIFY(!trustingOurCa.caCertificates().isEmpty());
        const auto fetch = [&](const QString& url, const QSslConfiguration& configuration) {
            // A manager of its own each time: a cached connection or TLS session would
            // skip the check being tried.
            QNetworkAccessManager network;
            QNetworkRequest request{QUrl(url)};
            request.setSslConfiguration(configuration);
            std::unique_ptr<QNetworkReply> reply(network.get(request));
            QSignalSpy done(reply.get(), &QNetworkReply::finished);
            done.wait(Tests::Timeouts::Process);
            return std::make_pair(reply->error(), reply->readAll());
        };
        const auto good = fetch(trusted.ServersUrl(), trustingOurCa);
        QCOMPARE(good.first, QNetworkReply::NoError);
        QCOMPARE(QJsonDocument::fromJson(good.second)[QStringLiteral("servers")][0][QStringLiteral("url")]
                     .toString(),
                 trusted.BaseUrl());
        QCOMPARE(fetch(trusted.ServersUrl(), QSslConfiguration::defaultConfiguration()).first,
                 QNetworkReply::SslHandshakeFailedError);
        QCOMPARE(fetch(untrusted.ServersUrl(), trustingOurCa).first, QNetworkReply::SslHandshakeFailedError);

        // The control API shares the port, and so the TLS.
        QVERIFY2(trusted.Reset(), qPrintable(trusted.ErrorString()));
        ApiClient checking(trusted.Origin());
        checking.SetCaCertificate(ca);
        QCOMPARE(checking.Get(QStringLiteral("/api/v1/auth/music_styles?lang=ru")).status, 200);
        QVERIFY(!ApiClient(QStringLiteral("http://127.0.0.1:%1").arg(trusted.Port()))
                     .Get(QStringLiteral("/api/v1/auth/music_styles"))
                     .IsJsonObject());
    }
};

QTEST_GUILESS_MAIN(ReferenceServiceProcessTest)
#include "tst_reference_service_process.moc"
