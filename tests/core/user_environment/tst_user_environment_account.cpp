#include "core/content_playing/player.h"
#include "core/data_types/api_error.h"
#include "core/data_types/json_deserialization_error.h"
#include "core/database/db_manager.h"
#include "core/networking/object_exported_error_listener.h"
#include "core/networking/unauthorized_error_listener.h"
#include "core/playback_configuration_updated_observer.h"
#include "core/user_environment.h"
#include "core/utilities/clock.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/call_outcome.h"
#include "tests/support/event_log.h"
#include "tests/support/reference_service.h"
#include "tests/support/service_fault.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QtTest>

#include <memory>
#include <vector>

using Core::UserEnvironment;
using Core::DataBase::DbManager;
using Core::DataTypes::ApiError;
using Core::DataTypes::Error;
using Core::DataTypes::NetworkError;
using Core::DataTypes::Auth::BusinessType;
using Core::DataTypes::Auth::MusicStyle;
using Core::DataTypes::Auth::PlaybackObject;
using Core::DataTypes::Auth::Server;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Day;
using Core::DataTypes::Playback::PlaybackConfiguration;
using Core::DataTypes::Playback::PlaybackPeriod;
using Core::DataTypes::Playback::Playlist;
using Core::DataTypes::Playback::UserFacingSchedule;

using Environment = std::shared_ptr<UserEnvironment>;
using Done = Tests::CallOutcome<int, Error>;
// One call's outcome with its value already put into words.
using Reply = Tests::CallOutcome<QString, Error>;
using Call = std::function<void(Reply&)>;

Q_DECLARE_METATYPE(Call)
Q_DECLARE_METATYPE(PlaybackConfiguration)

#define WAIT_FOR(outcome) QTRY_COMPARE_WITH_TIMEOUT((outcome).Calls(), 1, Tests::Timeouts::Process)

namespace {

class AccountListener : public Core::UnauthorizedErrorListener, public Core::ObjectExportedErrorListener
{
public:
    void OnWrongTokenError() override
    {
        calls << QStringLiteral("wrong token");
    }
    void OnAccountIsBlockedError() override
    {
        calls << QStringLiteral("blocked");
    }
    void OnObjectExportedError() override
    {
        calls << QStringLiteral("exported");
    }

    QStringList calls;
};

class CountingObserver : public Core::PlaybackConfigurationUpdatedObserver
{
public:
    void PlaybackConfigurationUpdated(bool, const std::string&) override
    {
        ++calls;
    }

    int calls = 0;
};

QString Text(const std::string& text)
{
    return QString::fromStdString(text);
}

int ApiCode(const std::shared_ptr<Error>& error)
{
    const auto apiError = std::dynamic_pointer_cast<ApiError>(error);
    return apiError ? apiError->code : -1;
}

QString Describe(const std::vector<std::shared_ptr<Server>>& servers)
{
    const bool primary =
        std::any_of(servers.begin(), servers.end(), [](const auto& server) { return server->isPrimary; });
    return servers.empty() ? QStringLiteral("none")
           : primary       ? QStringLiteral("with a primary")
                           : QStringLiteral("no primary");
}

QString Describe(const Environment& environment)
{
    return environment ? Text(environment->CurrentPlaybackObject().code) : QStringLiteral("none");
}

QString Describe(const std::vector<std::shared_ptr<PlaybackObject>>& objects)
{
    QStringList codes;
    for (const auto& object : objects) {
        codes << Text(object->code);
    }
    return codes.join(QStringLiteral(", "));
}

// A success callback of any shape for `reply`.
auto Ok(Reply& reply)
{
    return [&reply](const auto& value) {
        reply.Success()(Describe(value));
    };
}

QString Outcome(const Reply& reply)
{
    const int code = ApiCode(reply.error);
    return reply.successes == 1 ? reply.value
           : code >= 0          ? QStringLiteral("error %1").arg(code)
                                : QStringLiteral("error: ") + reply.Describe();
}

// "code login token" of the sign-in a restart would resume, or "none".
QString StoredSignIn()
{
    PlaybackObject object;
    Server server;
    std::string login;
    std::string password;
    std::string token;
    if (!DbManager::GetInstance().SavedAuthData(object, server, login, password, token)) {
        return QStringLiteral("none");
    }
    return QStringList{Text(object.code), Text(login), Text(token)}.join(QLatin1Char(' '));
}

long StoredConfigurationVersion()
{
    long version = 0;
    return DbManager::GetInstance().SavedPlaybackConfiguration(version) ? version : -1;
}

void ExecuteOnDatabase(const QString& statements)
{
    const QString name = QStringLiteral("half-written");
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        database.setDatabaseName(DbManager::DataBaseFilePath());
        QVERIFY(database.open());
        for (const QString& statement : statements.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
            QSqlQuery query(database);
            QVERIFY2(query.exec(statement), qPrintable(query.lastError().text()));
        }
    }
    QSqlDatabase::removeDatabase(name);
}

PlaybackPeriod Period(const std::string& name, const std::string& start, const std::string& end,
                      int scheduleId, const std::string& scheduleName, int music = 0, int video = 0,
                      int photo = 0)
{
    PlaybackPeriod period;
    period.name = name;
    period.startTime = start;
    period.endTime = end;
    period.scheduleId = scheduleId;
    period.scheduleName = scheduleName;
    period.contentVolume = 60;
    period.adsVolume = 80;
    period.playlistIds[ContentType::Music] = music;
    period.playlistIds[ContentType::Video] = video;
    period.playlistIds[ContentType::Photo] = photo;
    return period;
}

// Consecutive days, each with its periods.
PlaybackConfiguration Days(const std::vector<std::vector<PlaybackPeriod>>& days,
                           const std::vector<Playlist>& playlists = {})
{
    PlaybackConfiguration configuration;
    QDate date(2026, 11, 16);
    for (const auto& periods : days) {
        Day day;
        day.date = date.toString(QStringLiteral("dd.MM.yyyy")).toStdString();
        day.periods = periods;
        configuration.days.push_back(day);
        date = date.addDays(1);
    }
    configuration.playlists = playlists;
    return configuration;
}

Playlist List(int id, const std::string& name, ContentType type, const std::string& image, int tracks)
{
    Playlist playlist;
    playlist.id = id;
    playlist.name = name;
    playlist.contentType = type;
    playlist.image = image;
    for (int track = 1; track <= tracks; ++track) {
        playlist.trackIds.push_back(track);
    }
    return playlist;
}

QString Summary(const UserFacingSchedule::PlaylistSummary& summary)
{
    if (summary.id == 0) {
        return QStringLiteral("-");
    }
    return QStringLiteral("%1 %2 %3 %4")
        .arg(summary.id)
        .arg(Text(summary.name), Text(summary.image))
        .arg(summary.trackCount);
}

// A line per schedule and an indented line per period.
QStringList Lines(const std::vector<UserFacingSchedule>& schedules)
{
    QStringList lines;
    for (const auto& schedule : schedules) {
        lines << QStringLiteral("%1 %2").arg(schedule.id).arg(Text(schedule.name));
        for (const auto& period : schedule.periods) {
            lines << QStringLiteral("  %1 %2-%3 %4/%5 music[%6] video[%7] photo[%8]")
                         .arg(Text(period.name), Text(period.startTime), Text(period.endTime))
                         .arg(period.contentVolume)
                         .arg(period.adsVolume)
                         .arg(Summary(period.music), Summary(period.video), Summary(period.photo));
        }
    }
    return lines;
}

} // namespace

// The signed-in life of the player against the reference service: signing in and
// up, resuming after a restart, switching the point of sale, the account's errors.
class UserEnvironmentAccountTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    Server server;
    PlaybackObject shop1;
    PlaybackObject shop2;
    AccountListener listener;
    // Members, so that an environment that outlives a failed case never calls a
    // destroyed one.
    CountingObserver twice;
    CountingObserver once;
    QList<bool> deviceTimeTold;

    int PlayerVersionsOf(const QString& code)
    {
        const QJsonArray versions = service->Received(QStringLiteral("player_versions"));
        return static_cast<int>(std::count_if(versions.begin(), versions.end(), [&code](const QJsonValue& v) {
            return v.toObject().value(QStringLiteral("object")).toString() == code;
        }));
    }

    QJsonObject Last(const QString& section)
    {
        const QJsonArray records = service->Received(section);
        return records.isEmpty() ? QJsonObject() : records.last().toObject();
    }

    // Waits until the new environment has announced itself with its token.
    void SignIn(const PlaybackObject& object, Environment& environment)
    {
        QString error;
        environment = Tests::ShopSession::SignedIn(server, object, &error);
        QVERIFY2(environment, qPrintable(error));
        QTRY_COMPARE_WITH_TIMEOUT(PlayerVersionsOf(Text(object.code)), 1, Tests::Timeouts::Process);
    }

    static void Load(const Environment& environment, bool expectUpdated)
    {
        Tests::CallOutcome<bool, Error> outcome;
        environment->LoadPlaybackConfiguration(
            [&outcome](bool updated, const std::string&) { outcome.Success()(updated); }, outcome.Failure());
        WAIT_FOR(outcome);
        QVERIFY2(outcome.successes == 1, qPrintable(outcome.Describe()));
        QCOMPARE(outcome.value, expectUpdated);
    }

private slots:
    void initTestCase()
    {
        QString error;
        service = Tests::ReferenceService::Started(QStringLiteral("basic"), &error);
        QVERIFY2(service, qPrintable(error));
        server = Tests::ShopSession::ServerOf(*service);
        shop1 = Tests::ShopSession::Shop();
        shop2.id = 102;
        shop2.code = "shop2";
    }

    void init()
    {
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        listener.calls.clear();
        twice.calls = 0;
        once.calls = 0;
        deviceTimeTold.clear();
    }

    void cleanup()
    {
        Tests::ShopSession::ForgetSession();
        dataDirectory.reset();
    }

    void beforeSigningIn_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QString>("expected");
        QTest::newRow("built-in servers")
            << Call([](Reply& reply) { UserEnvironment::Servers(Ok(reply), reply.Failure()); })
            << "with a primary";
        QTest::newRow("objects of the account") << Call([this](Reply& reply) {
            UserEnvironment::PlaybackObjects(server, "owner", "secret", Ok(reply), reply.Failure());
        }) << "shop1, shop2";
        QTest::newRow("objects for a wrong password") << Call([this](Reply& reply) {
            UserEnvironment::PlaybackObjects(server, "owner", "wrong", Ok(reply), reply.Failure());
        }) << "error 401000";
        QTest::newRow("signed-in environment, nobody signed in")
            << Call([](Reply& reply) { UserEnvironment::GetSignedInEnvironment(Ok(reply)); }) << "none";
    }

    void beforeSigningIn()
    {
        QFETCH(Call, call);
        QFETCH(QString, expected);
        Reply reply;
        call(reply);
        const int answeredInsideTheCall = reply.Calls();
        WAIT_FOR(reply);
        QCOMPARE(Outcome(reply), expected);
        QVERIFY2(answeredInsideTheCall == 0, "answered inside the call");
    }

    void serverCheck_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("expected");
        // The base URL of the running service: answering would not make it safe.
        QTest::newRow("http") << QString() << "not https";
        QTest::newRow("https, name does not resolve") << "https://nowhere.invalid/api/v1/"
                                                      << "unavailable";
        QTest::newRow("https, address") << "https://127.0.0.1:1/api/v1/"
                                        << "available";
        QTest::newRow("scheme in capitals") << "HTTPS://127.0.0.1:1/api/v1/"
                                            << "available";
    }

    void serverCheck()
    {
        QFETCH(QString, url);
        QFETCH(QString, expected);
        Server checked = server;
        checked.url = url.isEmpty() ? service->BaseUrl().toStdString() : url.toStdString();
        Reply reply;
        UserEnvironment::CheckServerIsHttpsAndAvailable(
            checked, [&reply] { reply.Success()(QStringLiteral("available")); },
            [&reply] { reply.Success()(QStringLiteral("not https")); },
            [&reply] { reply.Success()(QStringLiteral("unavailable")); });
        const int answeredInsideTheCall = reply.Calls();
        WAIT_FOR(reply);
        QCOMPARE(reply.value, expected);
        QVERIFY2(answeredInsideTheCall == 0, "answered inside the call");
        // Only the host name is looked up: no request, not even to a server that would answer.
        QCOMPARE(service->Requests().size(), 0);
    }

    void restartResumesOnlyACompleteSignIn_data()
    {
        QTest::addColumn<QString>("signOut");
        // Run on db.sqlite before the restart.
        QTest::addColumn<QString>("damage");
        QTest::addColumn<bool>("resumed");
        QTest::newRow("signed in") << QString() << QString() << true;
        QTest::newRow("signed out, answer not awaited") << "quiet" << QString() << false;
        QTest::newRow("signed out, answer awaited") << "awaited" << QString() << false;
        QTest::newRow("only the server written")
            << QString() << "DELETE FROM playback_object; DELETE FROM user" << false;
        QTest::newRow("user not written") << QString() << "DELETE FROM user" << false;
    }

    void restartResumesOnlyACompleteSignIn()
    {
        QFETCH(QString, signOut);
        QFETCH(QString, damage);
        QFETCH(bool, resumed);
        Environment environment;
        SignIn(shop1, environment);
        QVERIFY(environment);
        if (signOut == QLatin1String("quiet")) {
            environment->SignOut();
            QTRY_VERIFY_WITH_TIMEOUT(!UserEnvironment::UserIsSignedIn(), Tests::Timeouts::Process);
            QCOMPARE(service->Received(QStringLiteral("sign_outs")).size(), 1);
        } else if (signOut == QLatin1String("awaited")) {
            Tests::CallOutcome<int, NetworkError> outcome;
            environment->SignOut(outcome.Done(), outcome.Failure());
            WAIT_FOR(outcome);
            QVERIFY2(outcome.successes == 1, qPrintable(outcome.Describe()));
        }
        if (!damage.isEmpty()) {
            ExecuteOnDatabase(damage);
        }
        environment.reset();

        UserEnvironment::ForgetProcessStateForTesting();
        QCOMPARE(UserEnvironment::UserIsSignedIn(), resumed);
        Tests::CallOutcome<Environment, Error> resumedEnvironment;
        UserEnvironment::GetSignedInEnvironment(resumedEnvironment.Success());
        WAIT_FOR(resumedEnvironment);
        QCOMPARE(bool(resumedEnvironment.value), resumed);
        if (resumed) {
            QCOMPARE(resumedEnvironment.value->CurrentPlaybackObject().code, shop1.code);
            // The stored token works: the service takes the resumed environment's
            // requests, and nobody signed in again.
            QTRY_COMPARE_WITH_TIMEOUT(PlayerVersionsOf(QStringLiteral("shop1")), 2, Tests::Timeouts::Process);
            Load(resumedEnvironment.value, true);
            QCOMPARE(service->Received(QStringLiteral("sign_ins")).size(), 1);
            // One environment was resumed, not one per question.
            QCOMPARE(PlayerVersionsOf(QStringLiteral("shop1")), 2);
        }
    }

    void signUp_data()
    {
        QTest::addColumn<QString>("phone");
        // The service's error code for both the confirmation code and the sign-up; 0: none.
        QTest::addColumn<int>("refusal");
        QTest::newRow("new phone") << "+79991234567" << 0;
        QTest::newRow("phone already registered") << "+79990000001" << 403000;
    }

    void signUp()
    {
        QFETCH(QString, phone);
        QFETCH(int, refusal);
        Tests::CallOutcome<std::string, NetworkError> code;
        UserEnvironment::SendConfirmationCode(server, phone.toStdString(), code.Success(), code.Failure());
        WAIT_FOR(code);
        // The city the user picks from what matches the letters typed.
        const auto cities = UserEnvironment::SuitableCities("моск");
        QCOMPARE(cities, std::vector<std::string>{"Москва"});
        Tests::CallOutcome<Environment, Error> signedUp;
        UserEnvironment::CreateAndStoreEnvironment(server, phone.toStdString(), cities.front(),
                                                   signedUp.Success(), signedUp.Failure());
        WAIT_FOR(signedUp);
        if (refusal != 0) {
            QCOMPARE(ApiCode(code.error), refusal);
            QCOMPARE(ApiCode(signedUp.error), refusal);
            QCOMPARE(StoredSignIn(), QStringLiteral("none"));
            QVERIFY(!UserEnvironment::UserIsSignedIn());
            return;
        }
        QCOMPARE(Text(code.value), QStringLiteral("4321"));
        QVERIFY2(signedUp.value, qPrintable(signedUp.Describe()));
        const QJsonObject record = Last(QStringLiteral("sign_ups"));
        QCOMPARE(record.value(QStringLiteral("phone")).toString(), phone);
        QCOMPARE(record.value(QStringLiteral("city")).toString(), QStringLiteral("Москва"));
        const QString object = record.value(QStringLiteral("code")).toString();
        QCOMPARE(StoredSignIn(),
                 QStringList({object, phone, record.value(QStringLiteral("token")).toString()})
                     .join(QLatin1Char(' ')));

        // The questionnaire, from the catalogue lists to the answers on the server.
        Tests::CallOutcome<std::vector<std::shared_ptr<BusinessType>>, NetworkError> types;
        Tests::CallOutcome<std::vector<std::shared_ptr<MusicStyle>>, NetworkError> styles;
        UserEnvironment::BusinessTypes(server, types.Success(), types.Failure());
        UserEnvironment::MusicStyles(server, styles.Success(), styles.Failure());
        WAIT_FOR(types);
        WAIT_FOR(styles);
        QCOMPARE(types.value.size(), std::size_t(2));
        QCOMPARE(styles.value.size(), std::size_t(2));
        Tests::CallOutcome<int, NetworkError> typeSet;
        Tests::CallOutcome<int, NetworkError> stylesSet;
        signedUp.value->SetBusinessType(*types.value.back(), typeSet.Done(), typeSet.Failure());
        signedUp.value->SetMusicStyles(styles.value, stylesSet.Done(), stylesSet.Failure());
        WAIT_FOR(typeSet);
        WAIT_FOR(stylesSet);
        QCOMPARE(Last(QStringLiteral("business_types")).value(QStringLiteral("object")).toString(), object);
        QCOMPARE(Last(QStringLiteral("business_types")).value(QStringLiteral("business_type_id")).toInt(), 2);
        QCOMPARE(Last(QStringLiteral("music_styles")).value(QStringLiteral("object")).toString(), object);
        QCOMPARE(Last(QStringLiteral("music_styles")).value(QStringLiteral("music_styles")).toArray(),
                 QJsonArray({10, 11}));
    }

    // A yes without the token (or, at sign-up, without the new point of sale) would
    // store a sign-in every later request is refused on.
    void aSignInAnswerLackingWhatItNeedsIsRefused_data()
    {
        QTest::addColumn<QString>("endpoint");
        QTest::addColumn<QString>("answer");
        QTest::newRow("sign-in without a token") << "auth/sign_in"
                                                 << R"({"success": true})";
        QTest::newRow("sign-up without a point of sale") << "auth/sign_up"
                                                         << R"({"success": true, "token": "t-1"})";
    }

    void aSignInAnswerLackingWhatItNeedsIsRefused()
    {
        QFETCH(QString, endpoint);
        QFETCH(QString, answer);
        Tests::ServiceFault fault(endpoint, QStringLiteral("body"));
        fault.body = answer;
        QVERIFY2(service->AddFault(fault) > 0, qPrintable(service->ErrorString()));
        Tests::CallOutcome<Environment, Error> outcome;
        if (endpoint == QLatin1String("auth/sign_in")) {
            UserEnvironment::CreateAndStoreEnvironment(server, shop1, "owner", "secret", outcome.Success(),
                                                       outcome.Failure());
        } else {
            UserEnvironment::CreateAndStoreEnvironment(server, "+79991234567", "Москва", outcome.Success(),
                                                       outcome.Failure());
        }
        WAIT_FOR(outcome);
        QVERIFY(std::dynamic_pointer_cast<Core::DataTypes::JsonDeserializationError>(outcome.error));
        QCOMPARE(StoredSignIn(), QStringLiteral("none"));
        QVERIFY(!UserEnvironment::UserIsSignedIn());
    }

    void choosingAnotherObject_data()
    {
        // The endpoint that answers HTTP 503.
        QTest::addColumn<QString>("failing");
        QTest::addColumn<bool>("succeeds");
        QTest::addColumn<QString>("storedObject");
        // Whose configuration is stored afterwards; empty for none.
        QTest::addColumn<QString>("storedConfiguration");
        QTest::newRow("switched") << QString() << true << "shop2"
                                  << "shop2";
        QTest::newRow("sign-out refused") << "sign_out" << false << "shop1"
                                          << "shop1";
        QTest::newRow("new configuration not loaded") << "playback/configuration_v2" << false << "shop2"
                                                      << "";
    }

    void choosingAnotherObject()
    {
        QFETCH(QString, failing);
        QFETCH(bool, succeeds);
        QFETCH(QString, storedObject);
        QFETCH(QString, storedConfiguration);
        QVERIFY(service->ConfigurationVersion(QStringLiteral("shop1")) !=
                service->ConfigurationVersion(QStringLiteral("shop2")));
        Environment environment;
        SignIn(shop1, environment);
        QVERIFY(environment);
        Load(environment, true);
        const auto player = environment->GetContentPlayer();
        QVERIFY(player);
        const QString signedInBefore = StoredSignIn();
        if (!failing.isEmpty()) {
            Tests::ServiceFault fault(failing, QStringLiteral("status"));
            fault.status = 503;
            QVERIFY2(service->AddFault(fault) > 0, qPrintable(service->ErrorString()));
        }

        Done outcome;
        environment->ChoosePlaybackObject(shop2, outcome.Done(), outcome.Failure());
        WAIT_FOR(outcome);
        QVERIFY2(outcome.successes == int(succeeds), qPrintable(outcome.Describe()));
        const QJsonArray signIns = service->Received(QStringLiteral("sign_ins"));
        const QJsonArray signOuts = service->Received(QStringLiteral("sign_outs"));
        QCOMPARE(Text(environment->CurrentPlaybackObject().code), storedObject);
        if (storedObject == QLatin1String("shop2")) {
            QCOMPARE(signIns.size(), 2);
            QCOMPARE(signOuts.size(), 1);
            QCOMPARE(signOuts[0].toObject().value(QStringLiteral("object")).toString(),
                     QStringLiteral("shop1"));
            // The old token ended before the new one was asked for.
            QVERIFY(signOuts[0].toObject().value(QStringLiteral("request")).toInt() <
                    signIns[1].toObject().value(QStringLiteral("request")).toInt());
            QCOMPARE(StoredSignIn(), QStringLiteral("shop2 owner ") +
                                         signIns[1].toObject().value(QStringLiteral("token")).toString());
            QTRY_COMPARE_WITH_TIMEOUT(PlayerVersionsOf(QStringLiteral("shop2")), 1, Tests::Timeouts::Process);
        } else {
            QCOMPARE(signIns.size(), 1);
            QCOMPARE(StoredSignIn(), signedInBefore);
            // The old token still works; by now a second answer would have come too.
            Load(environment, false);
        }
        QCOMPARE(outcome.Calls(), 1);
        QCOMPARE(StoredConfigurationVersion(),
                 storedConfiguration.isEmpty() ? -1L
                                               : long(service->ConfigurationVersion(storedConfiguration)));
        if (storedConfiguration.isEmpty()) {
            // Nothing of the new point of sale to play, and the old schedule must not be.
            QVERIFY(!environment->GetContentPlayer());
            return;
        }
        // The same player goes on, holding what is stored.
        QCOMPARE(environment->GetContentPlayer(), player);
        QCOMPARE(player->Configuration().version, service->ConfigurationVersion(storedConfiguration));
    }

    void accountErrors_data()
    {
        QTest::addColumn<QString>("refusal");
        // How many configuration checks meet it; 0: the update timer's.
        QTest::addColumn<int>("checks");
        QTest::addColumn<QStringList>("heard");
        QTest::addColumn<bool>("playerKept");
        QTest::newRow("wrong token, two checks") << "wrong token" << 2 << QStringList{"wrong token"} << false;
        QTest::newRow("account blocked, two checks") << "blocked" << 2 << QStringList{"blocked"} << false;
        QTest::newRow("wrong token, update timer")
            << "wrong token" << 0 << QStringList{"wrong token"} << false;
        QTest::newRow("object exported") << "exported" << 1 << QStringList{"exported"} << true;
    }

    void accountErrors()
    {
        QFETCH(QString, refusal);
        QFETCH(int, checks);
        QFETCH(QStringList, heard);
        QFETCH(bool, playerKept);
        if (checks == 0) {
            UserEnvironment::SetMinuteForTesting(5);
        }
        Environment environment;
        SignIn(shop1, environment);
        QVERIFY(environment);
        environment->SetUnathorizedErrorListener(&listener);
        environment->SetObjectExportedErrorListener(&listener);
        Load(environment, true);
        const auto player = environment->GetContentPlayer();
        QVERIFY(player);
        if (refusal == QLatin1String("wrong token")) {
            QVERIFY(service->InvalidateTokens(QStringLiteral("shop1")) > 0);
        } else if (refusal == QLatin1String("blocked")) {
            QVERIFY(service->SetAccountBlocked(QStringLiteral("owner"), true));
        } else {
            QVERIFY(service->SetObjectExported(QStringLiteral("shop1"), true));
        }

        if (checks > 0) {
            std::vector<Tests::CallOutcome<int, Error>> outcomes(static_cast<std::size_t>(checks));
            for (auto& outcome : outcomes) {
                environment->LoadPlaybackConfiguration(
                    [&outcome](bool, const std::string&) { outcome.Done()(); }, outcome.Failure());
            }
            for (auto& outcome : outcomes) {
                WAIT_FOR(outcome);
            }
        } else {
            QTRY_VERIFY_WITH_TIMEOUT(!listener.calls.isEmpty(), Tests::Timeouts::Process);
            // Nothing more is asked with the refused token: the timer has stopped.
            const int refusedChecks = service->RequestsTo(QStringLiteral("playback/version")).size();
            QVERIFY(!QTest::qWaitFor(
                [&] {
                    return service->RequestsTo(QStringLiteral("playback/version")).size() > refusedChecks;
                },
                Tests::Timeouts::Silence));
        }
        QCOMPARE(listener.calls, heard);
        QCOMPARE(environment->GetContentPlayer(), playerKept ? player : nullptr);
        // Until the user has seen why, a restart would still find the sign-in.
        QVERIFY(StoredSignIn().startsWith(QStringLiteral("shop1 owner ")));
    }

    void configurationObserversAreToldOnceEach()
    {
        UserEnvironment::SetMinuteForTesting(5);
        Environment environment;
        SignIn(shop1, environment);
        QVERIFY(environment);
        environment->AddConfigurationUpdatedObserver(&twice);
        environment->AddConfigurationUpdatedObserver(&twice);
        environment->AddConfigurationUpdatedObserver(&once);
        QTRY_VERIFY_WITH_TIMEOUT(once.calls > 0, Tests::Timeouts::Process);
        // Both are told in the same pass, the twice-added one first.
        QCOMPARE(twice.calls, once.calls);

        environment->RemoveConfigurationUpdatedObserver(&twice);
        const int removedHeard = twice.calls;
        const int keptHeard = once.calls;
        QTRY_VERIFY_WITH_TIMEOUT(once.calls > keptHeard, Tests::Timeouts::Process);
        QCOMPARE(twice.calls, removedHeard);
        environment->RemoveConfigurationUpdatedObserver(&once);
    }

    void personalAccountPage_data()
    {
        QTest::addColumn<QString>("api");
        QTest::addColumn<QString>("landing");
        QTest::addColumn<QString>("expected");
        // Nothing listens on these ports: the environment's own requests fail at once.
        const QString http = QStringLiteral("http://127.0.0.1:1/api/v1/");
        const QString https = QStringLiteral("https://127.0.0.1:1/api/v1/");
        QTest::newRow("landing kept") << http << "https://shop.example/"
                                      << "https://shop.example/";
        QTest::newRow("landing without scheme, http api") << http << "shop.example/"
                                                          << "http://shop.example/";
        QTest::newRow("landing without scheme, https api") << https << "shop.example/"
                                                           << "https://shop.example/";
        QTest::newRow("landing in capitals") << http << "HTTPS://Shop.example/"
                                             << "HTTPS://Shop.example/";
        QTest::newRow("no landing") << http << ""
                                    << "http://127.0.0.1:1/";
        QTest::newRow("no landing, default port") << "https://127.0.0.1/api/v1/"
                                                  << ""
                                                  << "https://127.0.0.1/";
    }

    void personalAccountPage()
    {
        QFETCH(QString, api);
        QFETCH(QString, landing);
        QFETCH(QString, expected);
        QVERIFY(DbManager::GetInstance().InitEmptyDataBase());
        Server record = server;
        record.url = api.toStdString();
        record.landingUrl = landing.toStdString();
        const UserEnvironment environment(record, shop1, "owner", "secret", "token");
        QCOMPARE(Text(environment.PersonalAccountPageUrl()), expected);
    }

    void schedulesOf_data()
    {
        QTest::addColumn<PlaybackConfiguration>("configuration");
        QTest::addColumn<QStringList>("expected");
        const auto weekday = [](const std::string& name, const std::string& start, const std::string& end) {
            return Period(name, start, end, 7, "Будни");
        };
        const auto weekend = Period("Выходной", "10:00", "18:00", 9, "Выходные");
        const QString none = QStringLiteral(" 60/80 music[-] video[-] photo[-]");
        QTest::newRow("interleaved schedules")
            << Days({{weekend},
                     {weekday("День", "12:00", "18:00")},
                     {weekday("Утро", "08:00", "12:00"), weekday("День", "12:00", "18:00")},
                     {weekend}})
            << QStringList{"9 Выходные", "  Выходной 10:00-18:00" + none, "7 Будни",
                           "  Утро 08:00-12:00" + none, "  День 12:00-18:00" + none};
        QTest::newRow("period outside any schedule")
            << Days({{Period("Служебный", "00:00", "08:00", -1, ""), weekday("Утро", "08:00", "12:00")}})
            << QStringList{"7 Будни", "  Утро 08:00-12:00" + none};
        QTest::newRow("playlist summaries")
            << Days({{Period("Утро", "08:00", "12:00", 7, "Будни", 11, 12, 99)}},
                    {List(11, "Музыка", ContentType::Music, "m.png", 3),
                     List(12, "Видео", ContentType::Video, "", 1)})
            << QStringList{"7 Будни", "  Утро 08:00-12:00 60/80 music[11 Музыка m.png 3] video[12 Видео  1] "
                                      "photo[99   0]"};
    }

    void schedulesOf()
    {
        QFETCH(PlaybackConfiguration, configuration);
        QFETCH(QStringList, expected);
        QCOMPARE(Lines(UserEnvironment::SchedulesOf(configuration)), expected);
    }

    void userFacingSchedulesReadTheStore()
    {
        Environment environment;
        SignIn(shop1, environment);
        QVERIFY(environment);
        Tests::CallOutcome<std::vector<UserFacingSchedule>, Error> nothingStored;
        environment->UserFacingSchedules(nothingStored.Success(), nothingStored.Failure());
        WAIT_FOR(nothingStored);
        QCOMPARE(nothingStored.Describe(), Text(Error::CreateDataBaseError()->ToString()));

        Load(environment, true);
        Tests::CallOutcome<std::vector<UserFacingSchedule>, Error> stored;
        environment->UserFacingSchedules(stored.Success(), stored.Failure());
        WAIT_FOR(stored);
        // The afternoon period of shop1 belongs to no schedule.
        QCOMPARE(Lines(stored.value),
                 QStringList(
                     {"7 Будни", QStringLiteral("  Утро 00:00-12:00 60/80 music[11 Музыка %1covers/music.png "
                                                "4] video[12 Видео  1] photo[13 Фото  1]")
                                     .arg(service->Origin() + QStringLiteral("files/"))}));
    }

    // The server refuses reports from a computer whose clock is more than a minute
    // off; only its replies' "Date" says what its clock reads.
    void deviceTimeFollowsTheServerClock_data()
    {
        QTest::addColumn<int>("shift");
        QTest::addColumn<QString>("logged");
        QTest::newRow("server two minutes ahead") << 120 << "Часы компьютера отстают от времени сервера на ";
        QTest::newRow("server two minutes behind")
            << -120 << "Часы компьютера спешат относительно времени сервера на ";
        QTest::newRow("half a minute is right") << 30 << QString();
    }

    void deviceTimeFollowsTheServerClock()
    {
        QFETCH(int, shift);
        QFETCH(QString, logged);
        Environment environment;
        SignIn(shop1, environment);
        QVERIFY(environment);
        // The version's reply, whose clock was right, is in.
        QTRY_VERIFY_WITH_TIMEOUT(Tests::EventLog::Text().contains("Версия плеера успешно отправлена"),
                                 Tests::Timeouts::Process);
        QVERIFY(environment->DeviceTimeIsCorrect());
        environment->SetDeviceTimeHandler([this](bool correct) { deviceTimeTold << correct; });
        const auto wrongEntries = [] {
            return Tests::EventLog::Entries().filter(QRegularExpression("^Часы компьютера"));
        };

        QVERIFY(service->ShiftClock(shift));
        // Two replies, the version and the configuration: found wrong once.
        Load(environment, true);
        const qint64 ahead =
            Core::Utilities::Clock::CurrentLocalDateTime().secsTo(environment->ServerDateTimeNow());
        QVERIFY2(qAbs(ahead - shift) <= 2, qPrintable(QString::number(ahead)));
        QCOMPARE(environment->DeviceTimeIsCorrect(), logged.isEmpty());
        QCOMPARE(wrongEntries().size(), logged.isEmpty() ? 0 : 1);
        QVERIFY2(logged.isEmpty() || wrongEntries().first().startsWith(logged),
                 qPrintable(Tests::EventLog::Text()));

        QVERIFY(service->ShiftClock(0));
        Load(environment, false);
        QVERIFY(environment->DeviceTimeIsCorrect());
        QCOMPARE(deviceTimeTold, logged.isEmpty() ? QList<bool>() : QList<bool>({false, true}));
        QCOMPARE(Tests::EventLog::Count("Время на компьютере снова совпадает со временем сервера"),
                 logged.isEmpty() ? 0 : 1);
    }
};

QTEST_MAIN(UserEnvironmentAccountTest)
#include "tst_user_environment_account.moc"
