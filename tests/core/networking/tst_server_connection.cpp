#include "core/data_types/api_error.h"
#include "core/networking/server_connection.h"
#include "core/utilities/clock.h"
#include "tests/support/call_outcome.h"
#include "tests/support/event_log.h"
#include "tests/support/reference_service.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_sign_in.h"
#include "tests/support/test_timeouts.h"

#include <QSslConfiguration>

#include <memory>

using Core::DataTypes::ApiError;
using Core::DataTypes::NetworkError;
using Core::DataTypes::Playlists::PlaylistContentType;
using Core::Networking::ServerConnection;
using Tests::ServiceFault;

// One call's outcome with its value already put into words.
using Reply = Tests::CallOutcome<QString, NetworkError>;
// Makes one call whose outcome `Reply` records.
using Call = std::function<void(Reply&)>;

Q_DECLARE_METATYPE(Tests::ServiceFault)
Q_DECLARE_METATYPE(Call)

namespace {

const char* const NoConnection = "Network error: Отсутствует связь с сервером";
const char* const Form = "application/x-www-form-urlencoded";
const char* const Json = "application/json";

// Records the listener calls, and how many failures the caller had heard by then.
class RecordingListener : public Core::UnauthorizedErrorListener, public Core::ObjectExportedErrorListener
{
public:
    explicit RecordingListener(const int* failuresSoFar)
        : failures(failuresSoFar)
    {
    }
    void OnWrongTokenError() override
    {
        calls << QStringLiteral("wrong token after %1 failures").arg(*failures);
    }
    void OnAccountIsBlockedError() override
    {
        calls << QStringLiteral("blocked after %1 failures").arg(*failures);
    }
    void OnObjectExportedError() override
    {
        calls << QStringLiteral("exported after %1 failures").arg(*failures);
    }

    QStringList calls;

private:
    const int* failures;
};

// Every success value in words, for one table column.
QString Describe(const std::string& text)
{
    return QString::fromStdString(text);
}

QString Describe(const std::shared_ptr<Core::DataTypes::Auth::PlaybackObject>& object)
{
    return Describe(object->code);
}

QString Describe(const std::shared_ptr<Core::DataTypes::Playback::PlaybackConfiguration>& configuration)
{
    return QStringLiteral("version %1, %2 days").arg(configuration->version).arg(configuration->days.size());
}

QString Describe(const std::shared_ptr<Core::DataTypes::Playlists::PlaylistsSettings>& settings)
{
    return QStringLiteral("music playlist %1, video advanced %2")
        .arg(settings->music.playlistId)
        .arg(settings->video.advanced);
}

QString Describe(const std::shared_ptr<std::vector<Core::DataTypes::Playlists::Track>>& tracks)
{
    QStringList names;
    for (const auto& track : *tracks) {
        names << Describe(track.name);
    }
    return names.join(QStringLiteral(", "));
}

// A number, or a list by its names.
template <typename Value>
QString Describe(const Value& value)
{
    if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value>) {
        return QString::number(static_cast<long>(value));
    } else {
        QStringList names;
        for (const auto& item : value) {
            names << Describe(item->name);
        }
        return names.join(QStringLiteral(", "));
    }
}

// A success callback of any shape for `reply`.
auto Ok(Reply& reply)
{
    return [&reply](const auto&... values) {
        reply.Success()(QStringList{Describe(values)...}.join(QLatin1Char(' ')));
    };
}

// The value in words, or the error's own text and, for an API error, its code.
QString Outcome(const Reply& reply)
{
    if (reply.successes == 1) {
        return reply.value;
    }
    const auto apiError = std::dynamic_pointer_cast<ApiError>(reply.error);
    return QStringLiteral("error: ") + reply.Describe() +
           (apiError ? QStringLiteral(" (%1)").arg(apiError->code) : QString());
}

QStringList consoleLines;

void CollectConsoleLine(QtMsgType, const QMessageLogContext&, const QString& message)
{
    consoleLines << message;
}

} // namespace

#define WAIT_FOR(outcome) QTRY_COMPARE_WITH_TIMEOUT((outcome).Calls(), 1, Tests::Timeouts::Process)

// The server API client against the reference service.
class ServerConnectionTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    QTemporaryDir certificates;
    Core::DataTypes::Auth::Server server;
    Core::DataTypes::Auth::PlaybackObject shop;
    QString token;
    QByteArray apiHost;
    std::unique_ptr<ServerConnection> connection;

    static Core::DataTypes::Auth::Server ServerAt(const QString& baseUrl)
    {
        Core::DataTypes::Auth::Server entry;
        entry.id = 1;
        entry.url = baseUrl.toStdString();
        return entry;
    }

    // Issued tokens as TOKEN, the origin as ORIGIN/, the configuration's version as VERSION.
    QString Placeholders(QString text)
    {
        for (const char* section : {"sign_ins", "sign_ups"}) {
            for (const QJsonValue& record : service->Received(section)) {
                const QString issued = record.toObject().value("token").toString();
                if (!issued.isEmpty()) {
                    text.replace(issued, QStringLiteral("TOKEN"));
                }
            }
        }
        const QString version = QString::number(service->ConfigurationVersion(QStringLiteral("shop1")));
        return text.replace(service->Origin(), QStringLiteral("ORIGIN/"))
            .replace(version, QStringLiteral("VERSION"));
    }

    // A call of `method` on this case's connection, with `arguments` before the callbacks.
    template <typename Method, typename... Arguments>
    Call On(Method method, Arguments... arguments)
    {
        return [this, method, arguments...](Reply& r) {
            (connection.get()->*method)(arguments..., Ok(r), r.Failure());
        };
    }

    void AddFault(const ServiceFault& fault)
    {
        QVERIFY2(service->AddFault(fault) > 0, qPrintable(service->ErrorString()));
    }

private slots:
    void initTestCase()
    {
        QString error;
        service = Tests::ReferenceService::Started(QStringLiteral("basic"), &error);
        QVERIFY2(service, qPrintable(error));
        QVERIFY2(Tests::ReferenceService::MakeTestCertificates(certificates.path(), &error),
                 qPrintable(error));
        server = ServerAt(service->BaseUrl());
        shop.code = "shop1";
        qInstallMessageHandler(CollectConsoleLine);
        // The servers list comes from this service too.
        apiHost = QByteArray::number(service->Port()).prepend("127.0.0.1:");
        qputenv(ServerConnection::ApiHostEnvironmentVariable, apiHost);
    }

    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        token = QString::fromStdString(Tests::TestSignIn::Token(server, shop, "owner", "secret"));
        QVERIFY(!token.isEmpty());
        connection = std::make_unique<ServerConnection>(server, shop, token.toStdString());
    }

    void cleanup()
    {
        connection.reset();
        Core::Utilities::Clock::ResetForTesting();
        dataDirectory.reset();
    }

    void cleanupTestCase()
    {
        qInstallMessageHandler(nullptr);
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    void requestsOnTheWire_data()
    {
        QTest::addColumn<QString>("body");
        QTest::addColumn<QString>("reply");
        QTest::addColumn<Call>("call");
        const auto row = [](const char* request, const char* body, const char* reply, const Call& call) {
            QTest::newRow(request) << QString::fromUtf8(body) << QString::fromUtf8(reply) << call;
        };
        const auto withId = [](auto item, int id) {
            item.id = id;
            return item;
        };
        const auto stock = withId(Core::DataTypes::Playlists::Playlist(), 1);
        const auto clips = withId(Core::DataTypes::Playlists::Playlist(), 3);
        const auto shopType = withId(Core::DataTypes::Auth::BusinessType(), 2);
        const auto pop = withId(Core::DataTypes::Auth::MusicStyle(), 11);
        const std::vector<std::shared_ptr<Core::DataTypes::Auth::MusicStyle>> styles = {
            std::make_shared<Core::DataTypes::Auth::MusicStyle>(withId(pop, 10)),
            std::make_shared<Core::DataTypes::Auth::MusicStyle>(pop)};
        Core::DataTypes::Playback::Track played;
        played.id = 2;
        played.contentType = Core::DataTypes::Playback::ContentType::Music;
        played.shopId = 101;
        const std::vector<Core::Statistics::Report> reports = {{played, 65, "10:15:30", "01.02.2024"}};
        const auto stockMusic = PlaylistContentType::StockMusic;
        const auto video = PlaylistContentType::Video;
        using SC = ServerConnection;

        // Sign-in JSON is put together by hand: the server reads exactly these bytes.
        row("POST /api/v1/auth/sign_in", R"({"login":"owner","password":"secret", "code":"shop1"})", "TOKEN",
            [=](Reply& r) { ServerConnection(server).SignIn("owner", "secret", shop, Ok(r), r.Failure()); });
        row("POST /api/v1/auth/objects", R"({"login":"owner","password":"secret"})", "Кофейня, Склад",
            [=](Reply& r) {
                ServerConnection(server).PlaybackObjects("owner", "secret", Ok(r), r.Failure());
            });
        // A form decoder reads "+" as a blank and "&" as the next field: encode all.
        row("POST /api/v1/auth/sign_up",
            "phone=%2B79001112233&city=%D0%9E%D0%BC%D1%81%D0%BA%20%26%20Co%20%3D%20100%25&lang=ru",
            "signup-1 TOKEN", On(&SC::SignUp, std::string("+79001112233"), std::string("Омск & Co = 100%")));
        row("POST /api/v1/auth/send_confirmation_code", "phone=%2B79001234567&lang=ru", "4321",
            On(&SC::SendConfirmationCode, std::string("+79001234567")));
        row("POST /api/v1/shop1/player_version", "version=3.13&os=Linux&platform_info=Debian%2012", "",
            On(&SC::SendPlayerVersion, std::string("3.13"), std::string("Linux"), std::string("Debian 12")));
        row("POST /api/v1/shop1/statistics",
            R"([{"date":"01.02.2024","shop_id":101,"time":"10:15:30","track_id":2,"type":"music","volume":65}])",
            "", On(&SC::SendStatistics, reports));
        row("POST /api/v1/shop1/likes_dislikes", "value=0&track_id=3", "0",
            On(&SC::SendLikeAction, 3L, Core::LikeAction::Dislike));
        row("POST /api/v1/shop1/set_business_type", "business_type_id=2", "",
            On(&SC::SetBusinessType, shopType));
        row("POST /api/v1/shop1/set_music_styles",
            "music_styles=%5B%0A%20%20%20%2010%2C%0A%20%20%20%2011%0A%5D%0A", "",
            On(&SC::SetMusicStyles, styles));
        row("POST /api/v1/shop1/playlists/video/3/activate",
            "morning=true&day=false&evening=true&night=false", "",
            On(&SC::SetPlaylistAsActiveForPeriods, video, clips, true, false, true, false));
        row("POST /api/v1/shop1/playlists/stock_music/1/activate", "", "",
            On(&SC::SetPlaylistAsActive, stockMusic, stock));
        row("POST /api/v1/shop1/playlists/video/3/deactivate", "", "",
            On(&SC::DeactivatePlaylist, video, clips));
        // The timestamp is the program's clock in seconds (T).
        row("GET /api/v1/shop1/playback/version?timestamp=T", "", "VERSION",
            On(&SC::PlaybackConfigurationVersion));
        row("GET /api/v1/shop1/playback/configuration_v2?timestamp=T&lang=ru", "", "version VERSION, 3 days",
            On(&SC::GetPlaybackConfiguration));
        row("GET /api/v1/auth/business_types?lang=ru", "", "Кафе, Магазин одежды", On(&SC::BusinessTypes));
        row("GET /api/v1/auth/music_styles?lang=ru", "", "Джаз, Поп", On(&SC::MusicStyles));
        row("GET /api/v1/shop1/playlists/recommended?business_type_id=2&music_style_id=11", "", "Для всех",
            On(&SC::RecommendedPlaylists, shopType, pop));
        // Only the stock catalogue has names in several languages.
        row("GET /api/v1/shop1/playlists/stock_music?lang=ru", "", "Утренний джаз",
            On(&SC::Playlists, stockMusic));
        row("GET /api/v1/shop1/playlists/video", "", "Клипы дня, Клипы вечера", On(&SC::Playlists, video));
        row("GET /api/v1/shop1/playlists/stock_music/1", "", "Первая, Вторая",
            On(&SC::TracksOfPlaylist, stockMusic, stock));
        row("GET /api/v1/shop1/playlists/settings", "", "music playlist 1, video advanced 1",
            On(&SC::LoadPlaylistsSettings));
        row("GET /api/v1/shop1/certificate?lang=ru", "", "ORIGIN/files/certificate.pdf",
            On(&SC::LoadCertificate));
        // Beside the sign-in family, without the object's code, yet with the token.
        row("GET /api/v1//delete_account", "", "", On(&SC::DeleteAccount));
    }

    // Endpoint, token when authorized, body in its encoding, reply into the caller's value.
    void requestsOnTheWire()
    {
        QFETCH(QString, body);
        QFETCH(QString, reply);
        QFETCH(Call, call);
        Core::Utilities::Clock::SetCurrentDateTimeForTesting(QDateTime::fromSecsSinceEpoch(1700000000));
        const int firstRequest = service->Requests().size();

        Reply outcome;
        call(outcome);
        WAIT_FOR(outcome);
        QCOMPARE(Placeholders(Outcome(outcome)), reply);

        const QJsonArray requests = service->Requests(firstRequest);
        QCOMPARE(requests.size(), 1);
        const QJsonObject sent = requests.at(0).toObject();
        // The clock runs on from the moment it was set.
        const QString line = QString(sent.value("method").toString() + " " + sent.value("target").toString())
                                 .replace(QRegularExpression("timestamp=17000000\\d\\d"), "timestamp=T");
        QCOMPARE(line, QString::fromUtf8(QTest::currentDataTag()));
        const bool authorized = line.contains(QLatin1String("/shop1/")) || line.endsWith("delete_account");
        const QJsonObject headers = sent.value("headers").toObject();
        QCOMPARE(headers.value("token").toString(), authorized ? token : QString());
        // A GET or an empty POST carries the form type all the same.
        const bool json = body.startsWith('{') || body.startsWith('[');
        QCOMPARE(headers.value("Content-Type").toString(), QString::fromUtf8(json ? Json : Form));
        QCOMPARE(sent.value("body").toString(), body);
        // Given by hand for the sign-in and by Qt: it must still go out once.
        const bool post = sent.value("method").toString() == QLatin1String("POST");
        QCOMPARE(headers.value("Content-Length").toString(),
                 post ? QString::number(body.toUtf8().size()) : "");
    }

    // Waiting out a stalled server would take half a minute: only authorized requests carry the limit.
    void onlyAuthorizedRequestsHaveTheTransferTimeout()
    {
        QCOMPARE(connection->CreateAuthorizedRequestForUrl("https://example.org/x").transferTimeout(), 30000);
        QCOMPARE(connection->CreateRequestForUrl("https://example.org/x").transferTimeout(), 0);
    }

    // The server's time arrives only as a reply's "Date", in any of HTTP's three forms.
    void httpDates_data()
    {
        QTest::addColumn<QByteArray>("date");
        QTest::addColumn<QDateTime>("expected");
        const QDateTime instant(QDate(2026, 11, 24), QTime(8, 49, 37), Qt::UTC);
        QTest::newRow("current form") << QByteArray("Tue, 24 Nov 2026 08:49:37 GMT") << instant;
        QTest::newRow("two-digit year") << QByteArray("Tuesday, 24-Nov-26 08:49:37 GMT") << instant;
        QTest::newRow("asctime") << QByteArray("Fri Nov  6 08:49:37 2026") << instant.addDays(-18);
        QTest::newRow("no such day") << QByteArray("Sat, 31 Feb 2026 08:49:37 GMT") << QDateTime();
        QTest::newRow("no such hour") << QByteArray("Tue, 24 Nov 2026 24:49:37 GMT") << QDateTime();
        QTest::newRow("another zone") << QByteArray("Tue, 24 Nov 2026 08:49:37 +0300") << QDateTime();
        QTest::newRow("none") << QByteArray() << QDateTime();
    }

    void httpDates()
    {
        QFETCH(QByteArray, date);
        QFETCH(QDateTime, expected);
        const auto read = ServerConnection::MSecsSinceEpochFromHttpDate(date);
        QCOMPARE(read ? QDateTime::fromMSecsSinceEpoch(*read, Qt::UTC) : QDateTime(), expected);
    }

    void replyKinds_data()
    {
        QTest::addColumn<ServiceFault>("fault");
        QTest::addColumn<QString>("outcome");
        const auto fault = [](const char* kind, const char* body = "") {
            ServiceFault made(QStringLiteral("playback/version"), QString::fromUtf8(kind));
            made.status = 500;
            made.error = 500000;
            made.body = QString::fromUtf8(body);
            return made;
        };
        ServiceFault unknownCode = fault("api_error");
        unknownCode.error = 123;
        const QString unreadable = QStringLiteral("error: Json Deserialization error: ");

        // Transport failures read as "no connection"; HTTP statuses keep Qt's text (* is the address).
        QTest::newRow("connection closed")
            << fault("close_mid_body") << QStringLiteral("error: ") + NoConnection;
        QTest::newRow("HTTP 500") << fault("status")
                                  << "error: Network error: *server replied: Internal Server Error";
        QTest::newRow("not JSON") << fault("not_json") << unreadable + "illegal value";
        // Not an account condition either: the listeners hear nothing.
        QTest::newRow("wrong-token code, no success")
            << fault("body", R"({"error": 403010})")
            << unreadable + "Response json doesn't containt \"success\" key";
        QTest::newRow("success not a boolean") << fault("body", R"({"success": "yes", "error": 403011})")
                                               << "error: Ошибка: Слишком частая отправка (403011)";
        QTest::newRow("unknown code") << unknownCode << "error: Ошибка: Неизвестная ошибка (123)";
        QTest::newRow("success") << fault("body", R"({"success": true, "version": 77})") << "77";
    }

    void replyKinds()
    {
        QFETCH(ServiceFault, fault);
        QFETCH(QString, outcome);
        AddFault(fault);
        Reply version;
        RecordingListener listener(&version.failures);
        connection->SetUnathorizedErrorListener(&listener);
        connection->SetObjectExportedErrorListener(&listener);
        connection->PlaybackConfigurationVersion(Ok(version), version.Failure());
        QCOMPARE(version.Calls(), 0);
        WAIT_FOR(version);
        const QStringList parts = outcome.split(QLatin1Char('*'));
        QVERIFY2(Outcome(version).startsWith(parts.first()) && Outcome(version).endsWith(parts.last()),
                 qPrintable(Outcome(version)));
        QCOMPARE(service->RequestsTo(QStringLiteral("playback/version")).size(), 1);
        QCOMPARE(listener.calls, QStringList());
        QVERIFY(!version.error || !version.error->IsWrongTokenError());
        // The user reads "no connection"; support reads the address, without its query.
        const QString reason = QStringLiteral("Отсутствует связь с сервером (%1shop1/playback/version): ")
                                   .arg(service->BaseUrl());
        QCOMPARE(Tests::EventLog::Text().count(reason), outcome.contains(NoConnection) ? 1 : 0);
    }

    void accountConditionsReachTheListenersOnce_data()
    {
        QTest::addColumn<QString>("condition");
        QTest::addColumn<bool>("connectionGone");
        QTest::addColumn<QString>("heard");
        QTest::newRow("signed in elsewhere") << "tokens" << false << "wrong token after 0 failures";
        QTest::newRow("account blocked") << "blocked" << false << "blocked after 0 failures";
        QTest::newRow("object exported") << "exported" << false << "exported after 0 failures";
        // Sign-in runs on a temporary connection: its caller still hears back, its listeners not.
        QTest::newRow("connection gone before the answer") << "tokens" << true << "";
    }

    // Real conditions on the service, heard by the listeners before the caller.
    void accountConditionsReachTheListenersOnce()
    {
        QFETCH(QString, condition);
        QFETCH(bool, connectionGone);
        QFETCH(QString, heard);
        QVERIFY(condition == QLatin1String("tokens") ? service->InvalidateTokens(QStringLiteral("shop1")) == 1
                : condition == QLatin1String("blocked")
                    ? service->SetAccountBlocked(QStringLiteral("owner"), true)
                    : service->SetObjectExported(QStringLiteral("shop1"), true));
        if (connectionGone) {
            ServiceFault late(QStringLiteral("playback/version"), QStringLiteral("delay"), 1);
            late.delayMs = 300;
            AddFault(late);
        }
        Reply version;
        RecordingListener listener(&version.failures);
        auto asking = std::make_unique<ServerConnection>(server, shop, token.toStdString());
        asking->SetUnathorizedErrorListener(&listener);
        asking->SetObjectExportedErrorListener(&listener);
        asking->PlaybackConfigurationVersion(Ok(version), version.Failure());
        if (connectionGone) {
            asking.reset();
        }
        WAIT_FOR(version);
        QCOMPARE(listener.calls, heard.isEmpty() ? QStringList() : QStringList{heard});
        QCOMPARE(version.failures, 1);
        QCOMPARE(version.error->IsWrongTokenError(), condition == QLatin1String("tokens"));
        if (connectionGone) {
            return;
        }
        // A listener taken away is never called again: the screen that set it may be gone.
        asking->SetUnathorizedErrorListener(nullptr);
        asking->SetObjectExportedErrorListener(nullptr);
        Reply again;
        asking->PlaybackConfigurationVersion(Ok(again), again.Failure());
        WAIT_FOR(again);
        QCOMPARE(again.failures, 1);
        QCOMPARE(listener.calls.size(), 1);
    }

    // A slow answer holds up no other request: the player asks several things at once.
    void requestsInFlightAnswerInTheOrderTheyFinish()
    {
        ServiceFault slow(QStringLiteral("playback/version"), QStringLiteral("delay"), 1);
        slow.delayMs = 500;
        AddFault(slow);
        QStringList order;
        const auto note = [&order](const char* what) {
            return [&order, what](const auto&...) {
                order << what;
            };
        };
        connection->PlaybackConfigurationVersion(note("version"), note("version failed"));
        connection->LoadPlaylistsSettings(note("settings"), note("settings failed"));
        QTRY_COMPARE_WITH_TIMEOUT(order.size(), 2, Tests::Timeouts::Process);
        QCOMPARE(order, (QStringList{QStringLiteral("settings"), QStringLiteral("version")}));
    }

    // A host lookup, answered later; without a server every request fails so, unsent.
    void serverAvailabilityIsAHostLookup()
    {
        ServerConnection unknownHost(ServerAt("http://zelmar-test-host.invalid/api/v1/"));
        ServerConnection none;
        QVERIFY(!none.GetServer());
        const int before = service->Requests().size();
        Reply found, lost, available, version;
        connection->CheckServerAvailable(Ok(found), found.Failure());
        unknownHost.CheckServerAvailable(Ok(lost), lost.Failure());
        none.CheckServerAvailable(Ok(available), available.Failure());
        none.PlaybackConfigurationVersion(Ok(version), version.Failure());
        QCOMPARE(found.Calls() + lost.Calls() + available.Calls() + version.Calls(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(found.Calls() + lost.Calls() + available.Calls() + version.Calls(), 4,
                                  Tests::Timeouts::Process);
        QCOMPARE(found.successes, 1);
        QCOMPARE(Outcome(lost), QStringLiteral("error: ") + NoConnection);
        QCOMPARE(Outcome(available), QStringLiteral("error: Network error: Сервер не выбран"));
        QCOMPARE(Outcome(version), Outcome(available));
        QCOMPARE(service->Requests().size(), before);
    }

    void serversListComesFromTheApiHost_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<bool>("english");
        QTest::addColumn<bool>("useHttp");
        QTest::addColumn<bool>("hostNamed");
        QTest::addColumn<QString>("reply");
        const QString failed = QStringLiteral("error: ") + NoConnection;
        // The list is read as it is, in the language asked for; only the transfer can fail.
        QTest::newRow("English, no success key")
            << "no_success" << true << true << true << "Test server, Запасной сервер";
        QTest::newRow("cut") << "close_mid_body" << false << true << true << failed;
        // HTTPS by default: this plain-HTTP service cannot complete a handshake.
        QTest::newRow("HTTPS") << "" << false << false << true << failed;
        // A build that names no API host cannot ask anyone.
        QTest::newRow("no API host")
            << "" << false << true << false
            << "error: Network error: Адрес сервиса не задан: список серверов недоступен";
    }

    void serversListComesFromTheApiHost()
    {
        QFETCH(QString, fault);
        QFETCH(bool, english);
        QFETCH(bool, useHttp);
        QFETCH(bool, hostNamed);
        QFETCH(QString, reply);
        const auto restore =
            qScopeGuard([this] { qputenv(ServerConnection::ApiHostEnvironmentVariable, apiHost); });
        if (!hostNamed) {
            qputenv(ServerConnection::ApiHostEnvironmentVariable, QByteArray());
        }
        if (!fault.isEmpty()) {
            AddFault(ServiceFault(QStringLiteral("servers"), fault, 1));
        }

        Reply servers;
        ServerConnection::Servers(Ok(servers), servers.Failure(), english, useHttp);
        QCOMPARE(servers.Calls(), 0);
        WAIT_FOR(servers);
        QCOMPARE(Outcome(servers), reply);
        QCOMPARE(service->RequestsTo(QStringLiteral("servers")).size(), useHttp && hostNamed ? 1 : 0);
    }

    void certificatesAreChecked_data()
    {
        QTest::addColumn<QString>("certificate");
        QTest::addColumn<bool>("trustTestCa");
        QTest::addColumn<QString>("reply");
        const QString refused = QStringLiteral("error: ") + NoConnection;
        QTest::newRow("signed by a trusted CA") << "server" << true << "Кафе, Магазин одежды";
        QTest::newRow("signed by an unknown CA") << "server" << false << refused;
        QTest::newRow("self-signed") << "untrusted" << true << refused;
    }

    void certificatesAreChecked()
    {
        QFETCH(QString, certificate);
        QFETCH(bool, trustTestCa);
        QFETCH(QString, reply);
        const QSslConfiguration original = QSslConfiguration::defaultConfiguration();
        const auto restore = qScopeGuard([&] { QSslConfiguration::setDefaultConfiguration(original); });
        if (trustTestCa) {
            QSslConfiguration trusting = original;
            trusting.addCaCertificates(certificates.filePath(QStringLiteral("ca.crt")));
            QSslConfiguration::setDefaultConfiguration(trusting);
        }
        Tests::ReferenceService tls(Tests::ReferenceService::SourceDirectory() +
                                    QStringLiteral("/tests/tools/scenarios/basic"));
        tls.SetTls(certificates.filePath(certificate + ".crt"), certificates.filePath(certificate + ".key"));
        QVERIFY2(tls.Start(), qPrintable(tls.ErrorString()));
        QVERIFY(tls.BaseUrl().startsWith(QLatin1String("https://")));

        Reply types;
        ServerConnection(ServerAt(tls.BaseUrl())).BusinessTypes(Ok(types), types.Failure());
        WAIT_FOR(types);
        QCOMPARE(Outcome(types), reply);
        const bool accepted = types.successes == 1;
        QCOMPARE(tls.Requests().size(), accepted ? 1 : 0);
        QCOMPARE(Tests::EventLog::Text().contains("Ошибка проверки сертификата сервера " + tls.BaseUrl()),
                 !accepted);
        QVERIFY(tls.Stop());
    }

    // Support reads the event log and the console: never the token.
    void tokenNeverReachesTheLogs()
    {
        consoleLines.clear();
        AddFault(ServiceFault(QStringLiteral("*"), QStringLiteral("close_mid_body"), 1));
        QVERIFY(service->InvalidateTokens(QStringLiteral("shop1")) > 0);
        for (int i = 0; i < 2; ++i) {
            Reply signOut;
            connection->SignOut(signOut.Done(), signOut.Failure());
            WAIT_FOR(signOut);
            QCOMPARE(signOut.failures, 1);
        }
        const QString log = Tests::EventLog::Text();
        QVERIFY2(log.contains(QStringLiteral("Отсутствует связь с сервером (")), qPrintable(log));
        QVERIFY(!log.contains(token));
        for (const QString& line : qAsConst(consoleLines)) {
            QVERIFY2(!line.contains(token), qPrintable(line));
        }
    }
};

QTEST_GUILESS_MAIN(ServerConnectionTest)
#include "tst_server_connection.moc"
