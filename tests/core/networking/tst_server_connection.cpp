#include "core/data_types/api_error.h"
#include "core/data_types/json_deserialization_error.h"
#include "core/networking/server_connection.h"
#include "core/utilities/clock.h"
#include "core/utilities/logger.h"
#include "tests/support/reference_service.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSslConfiguration>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <typeinfo>

Q_DECLARE_METATYPE(Tests::ServiceFault)

using Core::DataTypes::ApiError;
using Core::DataTypes::JsonDeserializationError;
using Core::DataTypes::NetworkError;
using Core::Networking::ServerConnection;
using Tests::ServiceFault;

namespace {

const char* const NoConnection = "Отсутствует связь с сервером";

// What came back from one asynchronous call: how often each callback ran, the
// value or the error, and whether anything ran before the call returned.
template <typename Value>
struct Outcome
{
    int successes = 0;
    int failures = 0;
    Value value{};
    std::shared_ptr<NetworkError> error;

    std::function<void(Value)> Success()
    {
        return [this](Value received) {
            ++successes;
            value = std::move(received);
        };
    }
    ServerConnection::Failure Failure()
    {
        return [this](std::shared_ptr<NetworkError> received) {
            ++failures;
            error = std::move(received);
        };
    }
    int Calls() const
    {
        return successes + failures;
    }
    QString Describe() const
    {
        return error ? QString::fromStdString(error->ToString()) : QStringLiteral("no error");
    }
};

struct Done : Outcome<bool>
{
    ServerConnection::Success Succeeded()
    {
        return [this] {
            ++successes;
            value = true;
        };
    }
};

// Records the listener calls, and what else had happened by then.
class RecordingListener : public Core::UnauthorizedErrorListener, public Core::ObjectExportedErrorListener
{
public:
    explicit RecordingListener(const int* failuresSoFar = nullptr)
        : failures(failuresSoFar)
    {
    }

    void OnWrongTokenError() override
    {
        calls << QStringLiteral("wrong token") + FailuresNote();
    }
    void OnAccountIsBlockedError() override
    {
        calls << QStringLiteral("blocked") + FailuresNote();
    }
    void OnObjectExportedError() override
    {
        calls << QStringLiteral("exported") + FailuresNote();
    }

    QStringList calls;

private:
    QString FailuresNote() const
    {
        return failures ? QStringLiteral(" after %1 failures").arg(*failures) : QString();
    }

    const int* failures;
};

QString HeaderOf(const QJsonObject& request, const QString& name)
{
    const QJsonObject headers = request.value(QStringLiteral("headers")).toObject();
    for (auto it = headers.begin(); it != headers.end(); ++it) {
        if (it.key().compare(name, Qt::CaseInsensitive) == 0) {
            return it.value().toString();
        }
    }
    return QString();
}

QByteArray ReadEventLog()
{
    QFile file(QString::fromStdString(Core::Utilities::Logger::GetLogFileName()));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList consoleLines;

void CollectConsoleLine(QtMsgType, const QMessageLogContext&, const QString& message)
{
    consoleLines << message;
}

} // namespace

#define WAIT_FOR(outcome) QTRY_COMPARE_WITH_TIMEOUT((outcome).Calls(), 1, Tests::Timeouts::Process)

// The client of the server API against the reference service: what each request
// looks like on the wire, how every kind of reply is sorted, and who hears about
// account conditions.
class ServerConnectionTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    Core::DataTypes::Auth::Server server;
    Core::DataTypes::Auth::PlaybackObject shop;
    QString token;
    std::unique_ptr<ServerConnection> connection;

    static QString Scenario()
    {
        return Tests::ReferenceService::SourceDirectory() + QStringLiteral("/tests/tools/scenarios/basic");
    }

    static Core::DataTypes::Auth::Server ServerAt(const QString& baseUrl)
    {
        Core::DataTypes::Auth::Server entry;
        entry.id = 1;
        entry.url = baseUrl.toStdString();
        return entry;
    }

    QString SignIn(ServerConnection& through, const QString& login, const QString& password)
    {
        Outcome<std::string> signIn;
        through.SignIn(login.toStdString(), password.toStdString(), shop, signIn.Success(), signIn.Failure());
        [&] {
            WAIT_FOR(signIn);
        }();
        return signIn.successes == 1 ? QString::fromStdString(signIn.value) : QString();
    }

    void AddFault(const ServiceFault& fault)
    {
        QVERIFY2(service->AddFault(fault) > 0, qPrintable(service->ErrorString()));
    }

    QJsonObject LastRequest()
    {
        const QJsonArray requests = service->Requests();
        return requests.isEmpty() ? QJsonObject() : requests.last().toObject();
    }

private slots:
    void initTestCase()
    {
        service = std::make_unique<Tests::ReferenceService>(Scenario());
        QVERIFY2(service->Start(), qPrintable(service->ErrorString()));
        server = ServerAt(service->BaseUrl());
        shop.code = "shop1";
        qInstallMessageHandler(CollectConsoleLine);
    }

    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        ServerConnection signInConnection(server);
        token = SignIn(signInConnection, QStringLiteral("owner"), QStringLiteral("secret"));
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

    // The sign-in family sends hand-made JSON; the server expects these very bytes.
    void signInAndObjectsSendTheirJsonTextsByteForByte()
    {
        const QJsonObject signInRequest =
            service->RequestsTo(QStringLiteral("auth/sign_in")).last().toObject();
        const QString signInBody = QStringLiteral(R"({"login":"owner","password":"secret", "code":"shop1"})");
        QCOMPARE(signInRequest.value(QStringLiteral("body")).toString(), signInBody);
        QCOMPARE(HeaderOf(signInRequest, QStringLiteral("Content-Type")), QStringLiteral("application/json"));
        // Given by hand and by Qt, it must still go out once.
        QCOMPARE(HeaderOf(signInRequest, QStringLiteral("Content-Length")),
                 QString::number(signInBody.toUtf8().size()));
        QCOMPARE(service->Received(QStringLiteral("sign_ins")).last().toObject().value("token").toString(),
                 token);

        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Auth::PlaybackObject>>> objects;
        ServerConnection(server).PlaybackObjects("owner", "secret", objects.Success(), objects.Failure());
        WAIT_FOR(objects);
        QVERIFY2(objects.successes == 1, qPrintable(objects.Describe()));
        QCOMPARE(objects.value.size(), std::size_t(2));
        QCOMPARE(objects.value.at(0)->code, std::string("shop1"));
        QCOMPARE(objects.value.at(1)->code, std::string("shop2"));
        const QJsonObject objectsRequest = LastRequest();
        QCOMPARE(objectsRequest.value(QStringLiteral("target")).toString(),
                 QStringLiteral("/api/v1/auth/objects"));
        QCOMPARE(objectsRequest.value(QStringLiteral("body")).toString(),
                 QStringLiteral(R"({"login":"owner","password":"secret"})"));
    }

    void valuesAreInsertedWithoutEscaping()
    {
        Outcome<std::string> signIn;
        ServerConnection(server).SignIn("owner", "se\"cret", shop, signIn.Success(), signIn.Failure());
        WAIT_FOR(signIn);
        QCOMPARE(LastRequest().value(QStringLiteral("body")).toString(),
                 QStringLiteral("{\"login\":\"owner\",\"password\":\"se\"cret\", \"code\":\"shop1\"}"));
        // The server cannot read such a text and says so.
        QCOMPARE(signIn.failures, 1);
        const auto apiError = std::dynamic_pointer_cast<ApiError>(signIn.error);
        QVERIFY2(apiError, qPrintable(signIn.Describe()));
        QCOMPARE(apiError->code, 400000);
        QCOMPARE(apiError->message, std::string("Неправильно построенный запрос"));
    }

    void wrongPasswordIsAnApiError()
    {
        Outcome<std::string> signIn;
        ServerConnection(server).SignIn("owner", "wrong", shop, signIn.Success(), signIn.Failure());
        WAIT_FOR(signIn);
        QCOMPARE(signIn.failures, 1);
        QCOMPARE(signIn.error->ToString(), std::string("Ошибка: Неправильный логин или пароль"));
    }

    // A form decoder reads "+" as a blank and "&" as the next field: every value
    // has to be percent-encoded completely to arrive as typed.
    void formValuesArriveIntactInTheirOrder()
    {
        Outcome<std::string> code;
        connection->SendConfirmationCode("+79001234567", code.Success(), code.Failure());
        WAIT_FOR(code);
        QVERIFY2(code.successes == 1, qPrintable(code.Describe()));
        QCOMPARE(code.value, std::string("4321"));
        QCOMPARE(service->Received(QStringLiteral("confirmation_codes"))
                     .last()
                     .toObject()
                     .value("phone")
                     .toString(),
                 QStringLiteral("+79001234567"));
        QCOMPARE(LastRequest().value(QStringLiteral("body")).toString(),
                 QStringLiteral("phone=%2B79001234567&lang=ru"));

        Outcome<std::pair<std::shared_ptr<Core::DataTypes::Auth::PlaybackObject>, std::string>> signUp;
        connection->SignUp(
            "+79001112233", "Ростов-на-Дону & Co = 100%",
            [&signUp](std::shared_ptr<Core::DataTypes::Auth::PlaybackObject> object, std::string newToken) {
                ++signUp.successes;
                signUp.value = {std::move(object), std::move(newToken)};
            },
            signUp.Failure());
        WAIT_FOR(signUp);
        QVERIFY2(signUp.successes == 1, qPrintable(signUp.Describe()));
        const QJsonObject signUpRecord = service->Received(QStringLiteral("sign_ups")).last().toObject();
        QCOMPARE(signUpRecord.value("phone").toString(), QStringLiteral("+79001112233"));
        QCOMPARE(signUpRecord.value("city").toString(), QStringLiteral("Ростов-на-Дону & Co = 100%"));
        QVERIFY(LastRequest().value(QStringLiteral("body")).toString().startsWith(QStringLiteral("phone=")));
        QVERIFY(LastRequest().value(QStringLiteral("body")).toString().endsWith(QStringLiteral("&lang=ru")));
        QVERIFY(signUp.value.first);
        QCOMPARE(QString::fromStdString(signUp.value.first->code), signUpRecord.value("code").toString());
        QCOMPARE(QString::fromStdString(signUp.value.second), signUpRecord.value("token").toString());

        Done version;
        connection->SendPlayerVersion("3.13", "Linux", "Debian 12 + X11; 2 cores", version.Succeeded(),
                                      version.Failure());
        WAIT_FOR(version);
        QVERIFY2(version.successes == 1, qPrintable(version.Describe()));
        const QJsonObject versionRecord =
            service->Received(QStringLiteral("player_versions")).last().toObject();
        QCOMPARE(versionRecord.value("platform_info").toString(), QStringLiteral("Debian 12 + X11; 2 cores"));
        QVERIFY(LastRequest()
                    .value(QStringLiteral("body"))
                    .toString()
                    .startsWith(QStringLiteral(
                        "version=3.13&os=Linux&platform_info=Debian%2012%20%2B%20X11%3B%202%20cores")));
    }

    // Every operation reaches its endpoint with the object's code, the token and
    // the right method, and its reader turns the reply into the caller's value.
    void everyOperationReachesItsEndpointAndReadsTheReply()
    {
        using Core::DataTypes::Playlists::PlaylistContentType;
        const QDateTime fixedNow = QDateTime::fromSecsSinceEpoch(1700000000);
        Core::Utilities::Clock::SetCurrentDateTimeForTesting(fixedNow);
        const int firstRequest = service->Requests().size();

        Outcome<long> version;
        connection->PlaybackConfigurationVersion(version.Success(), version.Failure());
        WAIT_FOR(version);
        QVERIFY2(version.successes == 1, qPrintable(version.Describe()));
        QCOMPARE(version.value, static_cast<long>(service->ConfigurationVersion(QStringLiteral("shop1"))));

        Outcome<std::shared_ptr<Core::DataTypes::Playback::PlaybackConfiguration>> configuration;
        connection->GetPlaybackConfiguration(configuration.Success(), configuration.Failure());
        WAIT_FOR(configuration);
        QVERIFY2(configuration.successes == 1, qPrintable(configuration.Describe()));
        QCOMPARE(configuration.value->version, static_cast<std::int32_t>(version.value));
        QCOMPARE(configuration.value->days.size(), std::size_t(3));

        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Auth::BusinessType>>> businessTypes;
        connection->BusinessTypes(businessTypes.Success(), businessTypes.Failure());
        WAIT_FOR(businessTypes);
        QCOMPARE(businessTypes.value.size(), std::size_t(2));

        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Auth::MusicStyle>>> musicStyles;
        connection->MusicStyles(musicStyles.Success(), musicStyles.Failure());
        WAIT_FOR(musicStyles);
        QCOMPARE(musicStyles.value.size(), std::size_t(2));

        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Playlists::RecommendedPlaylist>>> recommended;
        connection->RecommendedPlaylists(*businessTypes.value.at(0), *musicStyles.value.at(0),
                                         recommended.Success(), recommended.Failure());
        WAIT_FOR(recommended);
        QVERIFY2(recommended.successes == 1, qPrintable(recommended.Describe()));
        QCOMPARE(recommended.value.size(), std::size_t(2));
        QVERIFY(recommended.value.at(0)->main);

        Done businessType;
        connection->SetBusinessType(*businessTypes.value.at(1), businessType.Succeeded(),
                                    businessType.Failure());
        WAIT_FOR(businessType);
        QCOMPARE(
            service->Received(QStringLiteral("business_types")).last().toObject().value("business_type_id"),
            QJsonValue(2));

        Done styles;
        connection->SetMusicStyles(musicStyles.value, styles.Succeeded(), styles.Failure());
        WAIT_FOR(styles);
        QCOMPARE(service->Received(QStringLiteral("music_styles")).last().toObject().value("music_styles"),
                 QJsonValue(QJsonArray{10, 11}));

        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Playlists::Playlist>>> stock;
        connection->Playlists(PlaylistContentType::StockMusic, stock.Success(), stock.Failure());
        WAIT_FOR(stock);
        QCOMPARE(stock.value.size(), std::size_t(1));
        QCOMPARE(stock.value.at(0)->name, std::string("Утренний джаз"));

        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Playlists::Playlist>>> videos;
        connection->Playlists(PlaylistContentType::Video, videos.Success(), videos.Failure());
        WAIT_FOR(videos);
        QCOMPARE(videos.value.size(), std::size_t(2));

        Outcome<std::shared_ptr<std::vector<Core::DataTypes::Playlists::Track>>> tracks;
        connection->TracksOfPlaylist(PlaylistContentType::StockMusic, *stock.value.at(0), tracks.Success(),
                                     tracks.Failure());
        WAIT_FOR(tracks);
        QVERIFY2(tracks.successes == 1, qPrintable(tracks.Describe()));
        QCOMPARE(tracks.value->size(), std::size_t(2));
        QCOMPARE(tracks.value->at(1).name, std::string("Вторая"));

        Outcome<std::shared_ptr<Core::DataTypes::Playlists::PlaylistsSettings>> settings;
        connection->LoadPlaylistsSettings(settings.Success(), settings.Failure());
        WAIT_FOR(settings);
        QCOMPARE(settings.value->music.playlistId, 1);
        QVERIFY(settings.value->video.advanced);

        Done activate;
        connection->SetPlaylistAsActive(PlaylistContentType::StockMusic, *stock.value.at(0),
                                        activate.Succeeded(), activate.Failure());
        WAIT_FOR(activate);
        QVERIFY2(activate.successes == 1, qPrintable(activate.Describe()));

        Done periods;
        connection->SetPlaylistAsActiveForPeriods(PlaylistContentType::Video, *videos.value.at(0), true,
                                                  false, true, false, periods.Succeeded(), periods.Failure());
        WAIT_FOR(periods);
        QVERIFY2(periods.successes == 1, qPrintable(periods.Describe()));
        QCOMPARE(LastRequest().value(QStringLiteral("body")).toString(),
                 QStringLiteral("morning=true&day=false&evening=true&night=false"));

        Done deactivate;
        connection->DeactivatePlaylist(PlaylistContentType::Video, *videos.value.at(1),
                                       deactivate.Succeeded(), deactivate.Failure());
        WAIT_FOR(deactivate);
        QVERIFY2(deactivate.successes == 1, qPrintable(deactivate.Describe()));
        const QJsonArray changes = service->Received(QStringLiteral("playlist_changes"));
        QCOMPARE(changes.size(), 3);
        QCOMPARE(changes.at(2).toObject().value("action").toString(), QStringLiteral("deactivate"));

        Outcome<std::string> certificate;
        connection->LoadCertificate(certificate.Success(), certificate.Failure());
        WAIT_FOR(certificate);
        QVERIFY(QString::fromStdString(certificate.value).endsWith(QStringLiteral("/files/certificate.pdf")));

        Core::DataTypes::Playback::Track played;
        played.id = 2;
        played.contentType = Core::DataTypes::Playback::ContentType::Music;
        played.shopId = 101;
        const Core::Statistics::Report report(played, 65, "10:15:30", "01.02.2024");
        Done statistics;
        connection->SendStatistics({report, report}, statistics.Succeeded(), statistics.Failure());
        WAIT_FOR(statistics);
        QVERIFY2(statistics.successes == 1, qPrintable(statistics.Describe()));
        const QJsonArray reports = service->StatisticsReports();
        QCOMPARE(reports.size(), 2);
        QCOMPARE(reports.at(0).toObject(), (QJsonObject{{"volume", 65},
                                                        {"type", "music"},
                                                        {"time", "10:15:30"},
                                                        {"date", "01.02.2024"},
                                                        {"track_id", 2},
                                                        {"shop_id", 101}}));
        QCOMPARE(HeaderOf(LastRequest(), QStringLiteral("Content-Type")), QStringLiteral("application/json"));

        Outcome<Core::DataTypes::Playback::LikeStatus> like;
        connection->SendLikeAction(3, Core::LikeAction::Like, like.Success(), like.Failure());
        WAIT_FOR(like);
        QCOMPARE(like.value, Core::DataTypes::Playback::LikeStatus::Liked);
        Outcome<Core::DataTypes::Playback::LikeStatus> dislike;
        connection->SendLikeAction(3, Core::LikeAction::Dislike, dislike.Success(), dislike.Failure());
        WAIT_FOR(dislike);
        QCOMPARE(dislike.value, Core::DataTypes::Playback::LikeStatus::Disliked);
        QCOMPARE(LastRequest().value(QStringLiteral("body")).toString(),
                 QStringLiteral("value=0&track_id=3"));

        Done signOut;
        connection->SignOut(signOut.Succeeded(), signOut.Failure());
        WAIT_FOR(signOut);
        QVERIFY2(signOut.successes == 1, qPrintable(signOut.Describe()));
        QCOMPARE(service->Received(QStringLiteral("sign_outs")).size(), 1);

        const QStringList expected = {
            "GET /api/v1/shop1/playback/version?timestamp=",
            "GET /api/v1/shop1/playback/configuration_v2?timestamp=",
            "GET /api/v1/auth/business_types?lang=ru",
            "GET /api/v1/auth/music_styles?lang=ru",
            "GET /api/v1/shop1/playlists/recommended?business_type_id=1&music_style_id=10",
            "POST /api/v1/shop1/set_business_type",
            "POST /api/v1/shop1/set_music_styles",
            "GET /api/v1/shop1/playlists/stock_music?lang=ru",
            "GET /api/v1/shop1/playlists/video",
            "GET /api/v1/shop1/playlists/stock_music/1",
            "GET /api/v1/shop1/playlists/settings",
            "POST /api/v1/shop1/playlists/stock_music/1/activate",
            "POST /api/v1/shop1/playlists/video/3/activate",
            "POST /api/v1/shop1/playlists/video/4/deactivate",
            "GET /api/v1/shop1/certificate?lang=ru",
            "POST /api/v1/shop1/statistics",
            "POST /api/v1/shop1/likes_dislikes",
            "POST /api/v1/shop1/likes_dislikes",
            "POST /api/v1/shop1/sign_out",
        };
        const QJsonArray requests = service->Requests(firstRequest);
        QCOMPARE(requests.size(), expected.size());
        for (int i = 0; i < expected.size(); ++i) {
            const QJsonObject request = requests.at(i).toObject();
            const QString line =
                request.value("method").toString() + " " + request.value("target").toString();
            const bool timestamped = expected.at(i).endsWith(QLatin1String("timestamp="));
            if (timestamped) {
                // Seconds from the program's clock, which the test set.
                const QRegularExpression stamp(QStringLiteral("timestamp=(\\d+)"));
                const qint64 seconds = stamp.match(line).captured(1).toLongLong();
                QVERIFY2(seconds >= fixedNow.toSecsSinceEpoch() &&
                             seconds <= fixedNow.toSecsSinceEpoch() + 60,
                         qPrintable(line));
            }
            QVERIFY2(timestamped ? line.startsWith(expected.at(i)) : line == expected.at(i),
                     qPrintable(line));
            const bool authorized = line.contains(QLatin1String("/shop1/"));
            QCOMPARE(HeaderOf(request, QStringLiteral("token")), authorized ? token : QString());
            if (request.value("method").toString() == QLatin1String("POST") &&
                !line.endsWith(QLatin1String("/statistics"))) {
                QCOMPARE(HeaderOf(request, QStringLiteral("Content-Type")),
                         QStringLiteral("application/x-www-form-urlencoded"));
            }
        }
        QVERIFY(requests.at(1).toObject().value("target").toString().endsWith(QLatin1String("&lang=ru")));
    }

    void accountDeletionCarriesTheTokenWithoutTheObjectCode()
    {
        Done deletion;
        connection->DeleteAccount(deletion.Succeeded(), deletion.Failure());
        WAIT_FOR(deletion);
        QVERIFY2(deletion.successes == 1, qPrintable(deletion.Describe()));
        const QJsonObject request = LastRequest();
        QCOMPARE(request.value("method").toString(), QStringLiteral("GET"));
        QCOMPARE(request.value("target").toString(), QStringLiteral("/api/v1//delete_account"));
        QCOMPARE(HeaderOf(request, QStringLiteral("token")), token);
        QCOMPARE(service->Received(QStringLiteral("deleted_accounts")).size(), 1);
    }

    void onlyAuthorizedRequestsHaveTheTransferTimeoutAndToken()
    {
        const QNetworkRequest authorized = connection->CreateAuthorizedRequestForUrl("https://example.org/x");
        QCOMPARE(authorized.transferTimeout(), 30000);
        QCOMPARE(authorized.rawHeader("token"), token.toUtf8());
        QCOMPARE(authorized.header(QNetworkRequest::ContentTypeHeader).toString(),
                 QStringLiteral("application/x-www-form-urlencoded"));
        const QNetworkRequest plain = connection->CreateRequestForUrl("https://example.org/x");
        QCOMPARE(plain.transferTimeout(), 0);
        QVERIFY(!plain.hasRawHeader("token"));
        QCOMPARE(plain.header(QNetworkRequest::ContentTypeHeader).toString(),
                 QStringLiteral("application/x-www-form-urlencoded"));
    }

    void withoutServerNothingIsSent()
    {
        ServerConnection empty;
        QVERIFY(!empty.GetServer());
        const int before = service->Requests().size();
        Outcome<long> version;
        empty.PlaybackConfigurationVersion(version.Success(), version.Failure());
        Done available;
        empty.CheckServerAvailable(available.Succeeded(), available.Failure());
        // Later, never from inside the call.
        QCOMPARE(version.Calls(), 0);
        QCOMPARE(available.Calls(), 0);
        WAIT_FOR(version);
        WAIT_FOR(available);
        QCOMPARE(version.failures, 1);
        QCOMPARE(version.error->message, std::string("Сервер не выбран"));
        QCOMPARE(available.failures, 1);
        QCOMPARE(available.error->message, std::string("Сервер не выбран"));
        QCOMPARE(service->Requests().size(), before);
    }

    void replyKinds_data()
    {
        QTest::addColumn<ServiceFault>("fault");
        QTest::addColumn<QString>("errorClass");
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("code");

        const auto fault = [](const QString& kind) {
            return ServiceFault(QStringLiteral("playback/version"), kind);
        };
        ServiceFault status500 = fault(QStringLiteral("status"));
        status500.status = 500;
        ServiceFault apiError500 = fault(QStringLiteral("api_error"));
        apiError500.error = 500000;
        ServiceFault body500 = fault(QStringLiteral("body"));
        body500.body = QStringLiteral(R"({"success": false, "error": 500000})");
        ServiceFault unknownCode = fault(QStringLiteral("api_error"));
        unknownCode.error = 123;
        ServiceFault arrayBody = fault(QStringLiteral("body"));
        arrayBody.body = QStringLiteral("[true]");
        ServiceFault successTrue = fault(QStringLiteral("body"));
        successTrue.body = QStringLiteral(R"({"success": true, "version": 77})");
        ServiceFault successText = fault(QStringLiteral("body"));
        successText.body = QStringLiteral(R"({"success": "yes", "error": 403011})");

        // Connection-level failures read as "no connection"; HTTP statuses keep
        // Qt's own text, whatever the body says.
        QTest::newRow("closed mid-body") << fault(QStringLiteral("close_mid_body")) << "NetworkError"
                                         << QString::fromUtf8(NoConnection) << 0;
        QTest::newRow("HTTP 500") << status500 << "NetworkError"
                                  << "server replied: Internal Server Error" << 0;
        QTest::newRow("HTTP 404") << fault(QStringLiteral("not_found")) << "NetworkError"
                                  << "server replied: Not Found" << 0;
        QTest::newRow("not JSON") << fault(QStringLiteral("not_json")) << "JsonDeserializationError"
                                  << "illegal value" << 0;
        QTest::newRow("empty body") << fault(QStringLiteral("empty")) << "JsonDeserializationError"
                                    << "illegal value" << 0;
        QTest::newRow("no success") << fault(QStringLiteral("no_success")) << "JsonDeserializationError"
                                    << "Response json doesn't containt \"success\" key" << 0;
        QTest::newRow("array") << arrayBody << "JsonDeserializationError"
                               << "Response json doesn't containt \"success\" key" << 0;
        QTest::newRow("API error 500000") << apiError500 << "ApiError"
                                          << "Ошибка на сервере" << 500000;
        QTest::newRow("HTTP 200 with the 500000 body") << body500 << "ApiError"
                                                       << "Ошибка на сервере" << 500000;
        QTest::newRow("unknown code") << unknownCode << "ApiError"
                                      << "Неизвестная ошибка" << 123;
        QTest::newRow("success not a boolean") << successText << "ApiError"
                                               << "Слишком частая отправка" << 403011;
        QTest::newRow("success") << successTrue << ""
                                 << "77" << 0;
    }

    void replyKinds()
    {
        QFETCH(ServiceFault, fault);
        QFETCH(QString, errorClass);
        QFETCH(QString, message);
        QFETCH(int, code);
        AddFault(fault);

        Outcome<long> version;
        connection->PlaybackConfigurationVersion(version.Success(), version.Failure());
        QCOMPARE(version.Calls(), 0);
        WAIT_FOR(version);
        QCOMPARE(service->RequestsTo(QStringLiteral("playback/version")).size(), 1);

        if (errorClass.isEmpty()) {
            QCOMPARE(version.successes, 1);
            QCOMPARE(QString::number(version.value), message);
            return;
        }
        QCOMPARE(version.failures, 1);
        const NetworkError& error = *version.error;
        if (errorClass == QLatin1String("NetworkError")) {
            QVERIFY2(typeid(error) == typeid(NetworkError), qPrintable(version.Describe()));
            QVERIFY2(QString::fromStdString(error.message).contains(message), qPrintable(version.Describe()));
        } else if (errorClass == QLatin1String("JsonDeserializationError")) {
            QVERIFY2(typeid(error) == typeid(JsonDeserializationError), qPrintable(version.Describe()));
            QCOMPARE(QString::fromStdString(error.message), message);
        } else {
            QVERIFY2(typeid(error) == typeid(ApiError), qPrintable(version.Describe()));
            QCOMPARE(QString::fromStdString(error.message), message);
            QCOMPARE(dynamic_cast<const ApiError&>(error).code, code);
        }
    }

    void noConnectionLeavesTheReasonInTheEventLog()
    {
        // A port nobody listens on: the service's own, once it has stopped.
        Tests::ReferenceService stopped(Scenario());
        QVERIFY2(stopped.Start(), qPrintable(stopped.ErrorString()));
        const Core::DataTypes::Auth::Server gone = ServerAt(stopped.BaseUrl());
        QVERIFY(stopped.Stop());

        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Auth::MusicStyle>>> styles;
        ServerConnection(gone).MusicStyles(styles.Success(), styles.Failure());
        WAIT_FOR(styles);
        QCOMPARE(styles.failures, 1);
        QCOMPARE(styles.error->ToString(), std::string("Network error: Отсутствует связь с сервером"));
        const QString log = QString::fromUtf8(ReadEventLog());
        QVERIFY2(log.contains(QStringLiteral("Отсутствует связь с сервером (") + gone.url.c_str() +
                              QStringLiteral("auth/music_styles): Connection refused")),
                 qPrintable(log));
    }

    void accountConditionsReachTheListenersOnce_data()
    {
        QTest::addColumn<QString>("condition");
        QTest::addColumn<QString>("heard");
        QTest::addColumn<bool>("wrongToken");
        QTest::newRow("signed in elsewhere") << "tokens"
                                             << "wrong token after 0 failures" << true;
        QTest::newRow("account blocked") << "blocked"
                                         << "blocked after 0 failures" << false;
        QTest::newRow("object exported") << "exported"
                                         << "exported after 0 failures" << false;
    }

    // The real conditions on the service, not injected codes: its answer to an
    // ordinary request is what the listeners must hear, before the caller does.
    void accountConditionsReachTheListenersOnce()
    {
        QFETCH(QString, condition);
        QFETCH(QString, heard);
        QFETCH(bool, wrongToken);
        if (condition == QLatin1String("tokens")) {
            QCOMPARE(service->InvalidateTokens(QStringLiteral("shop1")), 1);
        } else if (condition == QLatin1String("blocked")) {
            QVERIFY(service->SetAccountBlocked(QStringLiteral("owner"), true));
        } else {
            QVERIFY(service->SetObjectExported(QStringLiteral("shop1"), true));
        }
        Outcome<long> version;
        RecordingListener listener(&version.failures);
        connection->SetUnathorizedErrorListener(&listener);
        connection->SetObjectExportedErrorListener(&listener);
        connection->PlaybackConfigurationVersion(version.Success(), version.Failure());
        WAIT_FOR(version);
        QCOMPARE(listener.calls, QStringList{heard});
        QCOMPARE(version.failures, 1);
        QCOMPARE(version.error->IsWrongTokenError(), wrongToken);

        // Without listeners the error still arrives, and nobody else is told.
        connection->SetUnathorizedErrorListener(nullptr);
        connection->SetObjectExportedErrorListener(nullptr);
        Outcome<long> again;
        connection->PlaybackConfigurationVersion(again.Success(), again.Failure());
        WAIT_FOR(again);
        QCOMPARE(again.failures, 1);
        QCOMPARE(again.error->message, version.error->message);
        QCOMPARE(listener.calls.size(), 1);
    }

    void codeWithoutSuccessKeyIsNotAnAccountCondition()
    {
        ServiceFault fault(QStringLiteral("playback/version"), QStringLiteral("body"));
        fault.body = QStringLiteral(R"({"error": 403010})");
        AddFault(fault);
        RecordingListener listener;
        connection->SetUnathorizedErrorListener(&listener);
        Outcome<long> version;
        connection->PlaybackConfigurationVersion(version.Success(), version.Failure());
        WAIT_FOR(version);
        QCOMPARE(version.failures, 1);
        QVERIFY(!version.error->IsWrongTokenError());
        QVERIFY(listener.calls.isEmpty());
    }

    // Sign-in runs on a connection that is gone before the answer comes: the
    // caller still hears back, the listeners of the dead connection do not.
    void answersOutliveTheirConnection()
    {
        ServiceFault late(QStringLiteral("playback/version"), QStringLiteral("api_error"));
        late.error = 403010;
        late.delayMs = 300;
        AddFault(late);
        RecordingListener listener;
        Outcome<long> version;
        {
            ServerConnection temporary(server, shop, token.toStdString());
            temporary.SetUnathorizedErrorListener(&listener);
            temporary.PlaybackConfigurationVersion(version.Success(), version.Failure());
        }
        WAIT_FOR(version);
        QCOMPARE(version.failures, 1);
        QVERIFY(version.error->IsWrongTokenError());
        QVERIFY(listener.calls.isEmpty());
    }

    void requestsInFlightAnswerInTheOrderTheyFinish()
    {
        ServiceFault slow(QStringLiteral("playback/version"), QStringLiteral("delay"), 1);
        slow.delayMs = 500;
        AddFault(slow);
        QStringList order;
        connection->PlaybackConfigurationVersion(
            [&order](long) { order << QStringLiteral("version"); },
            [&order](auto) { order << QStringLiteral("version failed"); });
        connection->LoadPlaylistsSettings([&order](auto) { order << QStringLiteral("settings"); },
                                          [&order](auto) { order << QStringLiteral("settings failed"); });
        QTRY_COMPARE_WITH_TIMEOUT(order.size(), 2, Tests::Timeouts::Process);
        QCOMPARE(order, (QStringList{QStringLiteral("settings"), QStringLiteral("version")}));
    }

    void serverAvailabilityIsAHostLookup()
    {
        Done available;
        connection->CheckServerAvailable(available.Succeeded(), available.Failure());
        Core::DataTypes::Auth::Server nowhere = server;
        nowhere.url = "http://zelmar-test-host.invalid/api/v1/";
        ServerConnection unresolvable(nowhere);
        Done unavailable;
        unresolvable.CheckServerAvailable(unavailable.Succeeded(), unavailable.Failure());
        WAIT_FOR(available);
        WAIT_FOR(unavailable);
        QCOMPARE(available.successes, 1);
        QCOMPARE(unavailable.failures, 1);
        QCOMPARE(unavailable.error->message, std::string(NoConnection));
    }

    void serversListComesFromTheApiHost()
    {
        const QByteArray previous = qgetenv(ServerConnection::ApiHostEnvironmentVariable);
        const bool wasSet = qEnvironmentVariableIsSet(ServerConnection::ApiHostEnvironmentVariable);
        const auto restore = qScopeGuard([&] {
            if (wasSet) {
                qputenv(ServerConnection::ApiHostEnvironmentVariable, previous);
            } else {
                qunsetenv(ServerConnection::ApiHostEnvironmentVariable);
            }
        });
        const QString host = QStringLiteral("127.0.0.1:%1").arg(service->Port());
        qputenv(ServerConnection::ApiHostEnvironmentVariable, host.toUtf8());

        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Auth::Server>>> russian;
        ServerConnection::Servers(russian.Success(), russian.Failure(), false, true);
        WAIT_FOR(russian);
        QVERIFY2(russian.successes == 1, qPrintable(russian.Describe()));
        QCOMPARE(russian.value.size(), std::size_t(2));
        QCOMPARE(russian.value.at(0)->name, std::string("Тестовый сервер"));
        QCOMPARE(QString::fromStdString(russian.value.at(0)->url), service->BaseUrl());
        QCOMPARE(LastRequest().value("target").toString(),
                 QStringLiteral("/api/player/legacy/v1/auth/servers"));

        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Auth::Server>>> english;
        ServerConnection::Servers(english.Success(), english.Failure(), true, true);
        WAIT_FOR(english);
        QCOMPARE(english.value.at(0)->name, std::string("Test server"));
        QCOMPARE(LastRequest().value("target").toString(),
                 QStringLiteral("/api/player/legacy/v1/auth/servers?lang=en"));

        // The list is read as it is; only the transfer can fail.
        AddFault(ServiceFault(QStringLiteral("servers"), QStringLiteral("no_success"), 1));
        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Auth::Server>>> withoutSuccess;
        ServerConnection::Servers(withoutSuccess.Success(), withoutSuccess.Failure(), false, true);
        WAIT_FOR(withoutSuccess);
        QCOMPARE(withoutSuccess.successes, 1);
        QCOMPARE(withoutSuccess.value.size(), std::size_t(2));

        AddFault(ServiceFault(QStringLiteral("servers"), QStringLiteral("close_mid_body"), 1));
        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Auth::Server>>> cut;
        ServerConnection::Servers(cut.Success(), cut.Failure(), false, true);
        WAIT_FOR(cut);
        QCOMPARE(cut.failures, 1);
        QCOMPARE(cut.error->message, std::string(NoConnection));

        // HTTPS by default: this plain-HTTP service cannot complete a handshake.
        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Auth::Server>>> https;
        ServerConnection::Servers(https.Success(), https.Failure(), false, false);
        WAIT_FOR(https);
        QCOMPARE(https.failures, 1);

        // A build that names no API host cannot ask anyone.
        qputenv(ServerConnection::ApiHostEnvironmentVariable, QByteArray());
        const int before = service->Requests().size();
        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Auth::Server>>> noHost;
        ServerConnection::Servers(noHost.Success(), noHost.Failure(), false, true);
        QCOMPARE(noHost.Calls(), 0);
        WAIT_FOR(noHost);
        QCOMPARE(noHost.failures, 1);
        QVERIFY(!noHost.error->message.empty());
        QCOMPARE(service->Requests().size(), before);
    }

    void certificatesAreChecked()
    {
        QTemporaryDir certificates;
        QVERIFY(certificates.isValid());
        QString error;
        QVERIFY2(Tests::ReferenceService::MakeTestCertificates(certificates.path(), &error),
                 qPrintable(error));

        const QSslConfiguration original = QSslConfiguration::defaultConfiguration();
        const auto restore = qScopeGuard([&] { QSslConfiguration::setDefaultConfiguration(original); });
        QSslConfiguration trustingTestCa = original;
        trustingTestCa.addCaCertificates(certificates.filePath(QStringLiteral("ca.crt")));
        QSslConfiguration::setDefaultConfiguration(trustingTestCa);

        Tests::ReferenceService trusted(Scenario());
        trusted.SetTls(certificates.filePath(QStringLiteral("server.crt")),
                       certificates.filePath(QStringLiteral("server.key")));
        QVERIFY2(trusted.Start(), qPrintable(trusted.ErrorString()));
        QVERIFY(trusted.BaseUrl().startsWith(QLatin1String("https://")));
        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Auth::BusinessType>>> overTls;
        ServerConnection(ServerAt(trusted.BaseUrl())).BusinessTypes(overTls.Success(), overTls.Failure());
        WAIT_FOR(overTls);
        QVERIFY2(overTls.successes == 1, qPrintable(overTls.Describe()));
        QCOMPARE(overTls.value.size(), std::size_t(2));

        Tests::ReferenceService untrusted(Scenario());
        untrusted.SetTls(certificates.filePath(QStringLiteral("untrusted.crt")),
                         certificates.filePath(QStringLiteral("untrusted.key")));
        QVERIFY2(untrusted.Start(), qPrintable(untrusted.ErrorString()));
        Outcome<std::vector<std::shared_ptr<Core::DataTypes::Auth::BusinessType>>> refused;
        ServerConnection(ServerAt(untrusted.BaseUrl())).BusinessTypes(refused.Success(), refused.Failure());
        WAIT_FOR(refused);
        QCOMPARE(refused.failures, 1);
        QCOMPARE(refused.error->message, std::string(NoConnection));
        QVERIFY(untrusted.Requests().isEmpty());
        const QString log = QString::fromUtf8(ReadEventLog());
        QVERIFY2(log.contains(QStringLiteral("Ошибка проверки сертификата сервера ") + untrusted.BaseUrl()),
                 qPrintable(log));
        QVERIFY(trusted.Stop());
        QVERIFY(untrusted.Stop());
    }

    // Support reads the event log and the console; neither may ever show the
    // token, whatever went wrong.
    void tokenNeverReachesTheLogs()
    {
        consoleLines.clear();
        ServiceFault cut(QStringLiteral("*"), QStringLiteral("close_mid_body"), 1);
        AddFault(cut);
        ServiceFault status(QStringLiteral("*"), QStringLiteral("status"), 1);
        status.status = 502;
        AddFault(status);
        AddFault(ServiceFault(QStringLiteral("*"), QStringLiteral("not_json"), 1));
        std::vector<std::unique_ptr<Done>> outcomes;
        for (int i = 0; i < 4; ++i) {
            outcomes.push_back(std::make_unique<Done>());
            connection->SendPlayerVersion("3.13", "Linux", "test", outcomes.back()->Succeeded(),
                                          outcomes.back()->Failure());
            WAIT_FOR(*outcomes.back());
        }
        QCOMPARE(outcomes.at(0)->failures + outcomes.at(1)->failures + outcomes.at(2)->failures, 3);
        QCOMPARE(outcomes.at(3)->successes, 1);
        QVERIFY(service->InvalidateTokens(QStringLiteral("shop1")) > 0);
        Done signOut;
        connection->SignOut(signOut.Succeeded(), signOut.Failure());
        WAIT_FOR(signOut);
        QCOMPARE(signOut.failures, 1);

        const QByteArray log = ReadEventLog();
        QVERIFY2(!log.isEmpty(), "the failures above should have left their reasons in the event log");
        QVERIFY(!log.contains(token.toUtf8()));
        for (const QString& line : qAsConst(consoleLines)) {
            QVERIFY2(!line.contains(token), qPrintable(line));
        }
    }
};

QTEST_GUILESS_MAIN(ServerConnectionTest)
#include "tst_server_connection.moc"
