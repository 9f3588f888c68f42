#include "tests/support/reference_service.h"
#include "tests/support/test_timeouts.h"
#include "tests/tools/api_client.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

#include <memory>

using Tests::ApiClient;
using Tests::ServiceFault;

// Each fault the player's tests rely on does what it says, to the requests it
// names, exactly as many times as asked, and leaves the service as it was.
class ReferenceServiceFaultsTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<ApiClient> client;
    QString token;
    QByteArray musicA;

    static QString Describe(const ApiClient::Answer& answer)
    {
        return answer.complete ? QStringLiteral("HTTP %1: %2")
                                     .arg(answer.status)
                                     .arg(QString::fromUtf8(answer.body.left(200)))
                               : QStringLiteral("no reply: %1").arg(answer.error);
    }

    static QByteArray Md5(const QByteArray& bytes)
    {
        return QCryptographicHash::hash(bytes, QCryptographicHash::Md5);
    }

    QString VersionPath() const
    {
        return QStringLiteral("/api/v1/shop1/playback/version?timestamp=1700000000");
    }

    ApiClient::Answer Version()
    {
        return client->Get(VersionPath(), ApiClient::Token(token));
    }

    QStringList FaultColumn(const QString& endpoint)
    {
        QStringList faults;
        for (const QJsonValue& request : service->RequestsTo(endpoint)) {
            faults << request.toObject().value(QStringLiteral("fault")).toString();
        }
        return faults;
    }

    // Sends a raw request and collects everything until the service closes the
    // connection: what a client receives when a reply is cut short.
    QByteArray RawExchange(const QByteArray& request)
    {
        QTcpSocket socket;
        socket.connectToHost(QStringLiteral("127.0.0.1"), static_cast<quint16>(service->Port()));
        if (!socket.waitForConnected(Tests::Timeouts::Process)) {
            return QByteArray();
        }
        socket.write(request);
        QByteArray received;
        QObject::connect(&socket, &QTcpSocket::readyRead, [&] { received += socket.readAll(); });
        QSignalSpy closed(&socket, &QTcpSocket::disconnected);
        [&] {
            QTRY_COMPARE_WITH_TIMEOUT(closed.count(), 1, Tests::Timeouts::Process);
        }();
        received += socket.readAll();
        return received;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(content.isValid());
        for (int i = 0; i < 300000; ++i) {
            musicA.append(static_cast<char>((i * 7) % 253));
        }
        QVERIFY(QDir(content.path()).mkpath(QStringLiteral("music")));
        for (const auto& [name, bytes] : {std::make_pair(QStringLiteral("music/a.mp3"), musicA),
                                          std::make_pair(QStringLiteral("music/b.mp3"), QByteArray("other")),
                                          std::make_pair(QStringLiteral("cover.jpg"), QByteArray("cover"))}) {
            QFile file(content.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            QCOMPARE(file.write(bytes), bytes.size());
        }
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

    void faultsFireOnlyAsOftenAsAsked_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("endpoint");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("count");
        for (const char* kind : {"status", "not_json", "no_success", "api_error", "close_mid_body", "empty",
                                 "not_found", "body", "wrong_md5"}) {
            QTest::addRow("version, %s", kind) << VersionPath() << "playback/version" << kind << 2;
        }
        for (const char* kind : {"wrong_md5", "empty", "not_found", "status", "close_mid_body"}) {
            QTest::addRow("media, %s", kind) << "/media/shop1/music/a.mp3"
                                             << "media/music/a.mp3" << kind << 1;
        }
    }

    void faultsFireOnlyAsOftenAsAsked()
    {
        QFETCH(QString, target);
        QFETCH(QString, endpoint);
        QFETCH(QString, kind);
        QFETCH(int, count);
        const auto fetch = [&] {
            return client->Get(target, ApiClient::Token(token));
        };
        const auto normal = fetch();
        QCOMPARE(normal.status, 200);
        ServiceFault fault(endpoint, kind, count);
        fault.status = kind == QLatin1String("status") ? 503 : 0;
        fault.error = kind == QLatin1String("api_error") ? 403011 : 0;
        fault.body =
            kind == QLatin1String("body") ? QStringLiteral(R"({"success": true, "version": -5})") : QString();
        QVERIFY2(service->AddFault(fault) > 0, qPrintable(service->ErrorString()));

        for (int attempt = 0; attempt < count; ++attempt) {
            const auto answer = fetch();
            if (kind == QLatin1String("close_mid_body")) {
                QVERIFY2(!answer.complete, qPrintable(Describe(answer)));
                continue;
            }
            QCOMPARE(answer.status, kind == QLatin1String("status")      ? 503
                                    : kind == QLatin1String("not_found") ? 404
                                                                         : 200);
            QVERIFY2(answer.body != normal.body, qPrintable(Describe(answer)));
            if (kind == QLatin1String("not_json")) {
                QVERIFY(!answer.body.isEmpty() && !answer.IsJsonObject());
            } else if (kind == QLatin1String("no_success")) {
                QJsonObject expected = normal.Json();
                expected.remove(QStringLiteral("success"));
                QCOMPARE(answer.Json(), expected);
            } else if (kind == QLatin1String("api_error")) {
                QCOMPARE(answer.Json(), QJsonObject({{"success", false}, {"error", 403011}}));
            } else if (kind == QLatin1String("empty")) {
                QCOMPARE(answer.body, QByteArray());
            } else if (kind == QLatin1String("body")) {
                QCOMPARE(answer.body, fault.body.toUtf8());
            } else if (kind == QLatin1String("wrong_md5")) {
                // What a downloader checks: the size is right, the digest is not.
                QCOMPARE(answer.body.size(), normal.body.size());
                QVERIFY(Md5(answer.body) != Md5(normal.body));
            }
        }
        const auto after = fetch();
        QCOMPARE(after.status, 200);
        QCOMPARE(after.body, normal.body);

        const QJsonObject planned = service->Faults().at(0).toObject();
        QCOMPARE(planned.value(QStringLiteral("fired")).toInt(), count);
        QCOMPARE(planned.value(QStringLiteral("remaining")).toInt(), 0);
        // The request log marks the faulted requests only: before, `count` of them, after.
        QStringList marks{QString()};
        for (int attempt = 0; attempt < count; ++attempt) {
            marks << kind;
        }
        QCOMPARE(FaultColumn(endpoint), marks << QString());
    }

    void closedMidBodyDeliversPartOfTheAnnouncedBody_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("endpoint");
        QTest::addColumn<bool>("withToken");
        QTest::newRow("file") << "/media/shop1/music/a.mp3"
                              << "media/music/a.mp3" << false;
        QTest::newRow("API reply") << "/api/v1/shop1/playback/configuration_v2?timestamp=1&lang=ru"
                                   << "playback/configuration_v2" << true;
    }

    void closedMidBodyDeliversPartOfTheAnnouncedBody()
    {
        QFETCH(QString, target);
        QFETCH(QString, endpoint);
        QFETCH(bool, withToken);
        const auto whole = client->Get(target, withToken ? ApiClient::Token(token) : ApiClient::Headers());
        QCOMPARE(whole.status, 200);
        QVERIFY(service->AddFault({endpoint, QStringLiteral("close_mid_body"), 1}) > 0);
        QByteArray request = "GET " + target.toUtf8() + " HTTP/1.1\r\nHost: 127.0.0.1\r\n";
        if (withToken) {
            request += "token: " + token.toUtf8() + "\r\n";
        }
        request += "\r\n";
        const QByteArray received = RawExchange(request);
        const int headerEnd = received.indexOf("\r\n\r\n");
        QVERIFY2(headerEnd > 0, received.left(200).constData());
        QVERIFY(received.startsWith("HTTP/1.1 200"));
        const QRegularExpression length(QStringLiteral("Content-Length: (\\d+)"),
                                        QRegularExpression::CaseInsensitiveOption);
        const auto match = length.match(QString::fromLatin1(received.left(headerEnd)));
        QVERIFY(match.hasMatch());
        QCOMPARE(match.captured(1).toInt(), whole.body.size());
        const QByteArray body = received.mid(headerEnd + 4);
        QVERIFY2(body.size() > 0 && body.size() < whole.body.size(),
                 qPrintable(QStringLiteral("%1 of %2 bytes").arg(body.size()).arg(whole.body.size())));
        QCOMPARE(body, whole.body.left(body.size()));
    }

    void faultTargetsReachWhatTheyNameAndNothingElse()
    {
        const auto status = [&](const QString& target) {
            return client->Get(target).status;
        };
        const QString a = QStringLiteral("/media/shop1/music/a.mp3");
        const QString b = QStringLiteral("/media/shop1/music/b.mp3");
        const QString servers = QStringLiteral("/api/player/legacy/v1/auth/servers");

        QVERIFY(service->AddFault({QStringLiteral("media/music/a.mp3"), QStringLiteral("not_found")}) > 0);
        QCOMPARE(status(a), 404);
        QCOMPARE(status(b), 200);
        QCOMPARE(status(a), 404);
        QVERIFY(service->ClearFaults());
        QCOMPARE(status(a), 200);

        QVERIFY(service->AddFault({QStringLiteral("media"), QStringLiteral("not_found")}) > 0);
        QCOMPARE(status(a), 404);
        QCOMPARE(status(b), 404);
        QCOMPARE(status(QStringLiteral("/files/cover.jpg")), 200);
        QCOMPARE(status(servers), 200);
        QVERIFY(service->ClearFaults());

        ServiceFault everything(QStringLiteral("*"), QStringLiteral("status"));
        everything.status = 502;
        QVERIFY(service->AddFault(everything) > 0);
        QCOMPARE(status(servers), 502);
        QCOMPARE(Version().status, 502);
        QCOMPARE(status(a), 200);
        QCOMPARE(status(QStringLiteral("/files/cover.jpg")), 200);
        QVERIFY(service->ClearFaults());

        QVERIFY(service->AddFault({QStringLiteral("auth/sign_in"), QStringLiteral("not_found")}) > 0);
        QCOMPARE(Version().status, 200);
        QVERIFY(client->SignIn(QStringLiteral("owner"), QStringLiteral("secret"), QStringLiteral("shop1"))
                    .isEmpty());
        QVERIFY(service->ClearFaults());

        QVERIFY(service->AddFault({QStringLiteral("files"), QStringLiteral("empty")}) > 0);
        QCOMPARE(client->Get(QStringLiteral("/files/cover.jpg")).body, QByteArray());
        QCOMPARE(client->Get(a).body, musicA);
    }

    void faultsAreTakenInTheOrderPlanned()
    {
        QVERIFY(service->AddFault({QStringLiteral("playback/version"), QStringLiteral("not_found"), 1}) > 0);
        ServiceFault second(QStringLiteral("playback/version"), QStringLiteral("status"), 1);
        second.status = 500;
        QVERIFY(service->AddFault(second) > 0);
        QCOMPARE(Version().status, 404);
        QCOMPARE(Version().status, 500);
        QCOMPARE(Version().status, 200);
    }

    void repliesThatReplaceTheAnswerLeaveTheRequestUnprocessed_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("processed");
        QTest::newRow("status") << "status" << false;
        QTest::newRow("API error") << "api_error" << false;
        QTest::newRow("not JSON") << "not_json" << false;
        QTest::newRow("empty") << "empty" << false;
        QTest::newRow("not found") << "not_found" << false;
        QTest::newRow("delay") << "delay" << true;
        QTest::newRow("no success") << "no_success" << true;
        QTest::newRow("closed mid-body") << "close_mid_body" << true;
        QTest::newRow("wrong bytes") << "wrong_md5" << true;
    }

    void repliesThatReplaceTheAnswerLeaveTheRequestUnprocessed()
    {
        QFETCH(QString, kind);
        QFETCH(bool, processed);
        ServiceFault fault(QStringLiteral("statistics"), kind, 1);
        fault.status = 500;
        fault.error = 500000;
        fault.delayMs = kind == QLatin1String("delay") ? 10 : 0;
        QVERIFY2(service->AddFault(fault) > 0, qPrintable(service->ErrorString()));
        const QByteArray report =
            R"([{"volume":50,"type":"clip","time":"12:00:00","date":"27.02.2026","track_id":41,"shop_id":101}])";
        client->PostJson(QStringLiteral("/api/v1/shop1/statistics"), report, ApiClient::Token(token));
        QCOMPARE(service->Received(QStringLiteral("statistics")).size(), processed ? 1 : 0);
        QCOMPARE(FaultColumn(QStringLiteral("statistics")), QStringList({kind}));
    }

    void aDelayedReplyComesAfterLaterOnes()
    {
        ServiceFault delay(QStringLiteral("playback/version"), QStringLiteral("delay"), 1);
        delay.delayMs = 3000;
        QVERIFY(service->AddFault(delay) > 0);
        QNetworkAccessManager network;
        QNetworkRequest delayedRequest(QUrl(service->Origin() + VersionPath().mid(1)));
        delayedRequest.setRawHeader("token", token.toUtf8());
        QNetworkReply* delayed = network.get(delayedRequest);
        QSignalSpy delayedDone(delayed, &QNetworkReply::finished);
        // The delay starts once the request is in, so wait for it to be logged.
        QTRY_COMPARE_WITH_TIMEOUT(service->RequestsTo(QStringLiteral("playback/version")).size(), 1,
                                  Tests::Timeouts::Process);
        QNetworkReply* prompt = network.get(QNetworkRequest(QUrl(service->ServersUrl())));
        QSignalSpy promptDone(prompt, &QNetworkReply::finished);
        QTRY_COMPARE_WITH_TIMEOUT(promptDone.count(), 1, Tests::Timeouts::Process);
        QCOMPARE(delayedDone.count(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(delayedDone.count(), 1, Tests::Timeouts::Process);
        QCOMPARE(delayed->error(), QNetworkReply::NoError);
        QCOMPARE(QJsonDocument::fromJson(delayed->readAll()).object().value(QStringLiteral("success")),
                 QJsonValue(true));
        delete delayed;
        delete prompt;
    }

    // How the player's network stack sees each fault decides which of its error
    // paths a test of the player reaches.
    void qtSeesEachFaultAsTheFailureItStandsFor_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("error");
        QTest::newRow("closed mid-body: a connection failure")
            << "close_mid_body" << int(QNetworkReply::RemoteHostClosedError);
        QTest::newRow("status 500: an HTTP failure") << "status" << int(QNetworkReply::InternalServerError);
        QTest::newRow("not found: an HTTP failure")
            << "not_found" << int(QNetworkReply::ContentNotFoundError);
        QTest::newRow("not JSON: a good transfer") << "not_json" << int(QNetworkReply::NoError);
        QTest::newRow("API error: a good transfer") << "api_error" << int(QNetworkReply::NoError);
    }

    void qtSeesEachFaultAsTheFailureItStandsFor()
    {
        QFETCH(QString, kind);
        QFETCH(int, error);
        ServiceFault fault(QStringLiteral("playback/version"), kind, 1);
        fault.status = 500;
        fault.error = 403010;
        QVERIFY(service->AddFault(fault) > 0);
        QNetworkAccessManager network;
        QNetworkRequest request(QUrl(service->Origin() + VersionPath().mid(1)));
        request.setRawHeader("token", token.toUtf8());
        QNetworkReply* reply = network.get(request);
        QSignalSpy done(reply, &QNetworkReply::finished);
        QTRY_COMPARE_WITH_TIMEOUT(done.count(), 1, Tests::Timeouts::Process);
        QCOMPARE(int(reply->error()), error);
        delete reply;
    }

    void faultsAreCheckedWhenPlanned_data()
    {
        QTest::addColumn<QByteArray>("description");
        QTest::addColumn<QString>("complaint");
        QTest::newRow("misspelt endpoint")
            << QByteArray(R"({"target":"playback/versions","kind":"not_found"})") << "unknown fault target";
        QTest::newRow("unknown kind")
            << QByteArray(R"({"target":"servers","kind":"teapot"})") << "unknown fault kind";
        QTest::newRow("status without one")
            << QByteArray(R"({"target":"servers","kind":"status"})") << "\"status\"";
        QTest::newRow("status out of range")
            << QByteArray(R"({"target":"servers","kind":"status","status":999})") << "\"status\"";
        QTest::newRow("API error without code")
            << QByteArray(R"({"target":"servers","kind":"api_error"})") << "\"error\"";
        QTest::newRow("delay without time")
            << QByteArray(R"({"target":"servers","kind":"delay"})") << "delay_ms";
        QTest::newRow("delay far too long")
            << QByteArray(R"({"target":"servers","kind":"delay","delay_ms":100000000})") << "delay_ms";
        QTest::newRow("no count") << QByteArray(R"({"target":"servers","kind":"empty","count":0})")
                                  << "\"count\"";
        QTest::newRow("body not text")
            << QByteArray(R"({"target":"servers","kind":"body","body":{}})") << "\"body\"";
        QTest::newRow("media without a path")
            << QByteArray(R"({"target":"media/","kind":"empty"})") << "unknown fault target";
    }

    void faultsAreCheckedWhenPlanned()
    {
        QFETCH(QByteArray, description);
        QFETCH(QString, complaint);
        QVERIFY(!service->Control("POST", QStringLiteral("faults"),
                                  QJsonDocument::fromJson(description).object()));
        QVERIFY2(service->ErrorString().contains(complaint), qPrintable(service->ErrorString()));
        QVERIFY(service->ErrorString().contains(QStringLiteral("HTTP 400")));
        QVERIFY(service->Faults().isEmpty());
    }
};

QTEST_GUILESS_MAIN(ReferenceServiceFaultsTest)
#include "tst_reference_service_faults.moc"
