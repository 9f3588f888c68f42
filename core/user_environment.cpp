#include "core/user_environment.h"

#include "core/content_playing/player.h"
#include "core/data_types/json_deserialization_error.h"
#include "core/database/db_manager.h"
#include "core/networking/content_files_helper.h"
#include "core/networking/json_converter.h"
#include "core/networking/server_connection.h"
#include "core/networking/test_connect_helper.h"
#include "core/playback_configuration_updated_observer.h"
#include "core/settings.h"
#include "core/statistics/manager.h"
#include "core/utilities/cities_helper.h"
#include "core/utilities/clock.h"
#include "core/utilities/device_info_helper.h"
#include "core/utilities/local_time_helper.h"
#include "core/utilities/logger.h"
#include "core/utilities/playback_configuration_loader.h"

#include <QCoreApplication>
#include <QFile>
#include <QPointer>
#include <QUrl>

#include <algorithm>
#include <map>
#include <utility>

namespace Core {

using DataBase::DbManager;
using DataTypes::Error;
using DataTypes::NetworkError;
using DataTypes::Auth::PlaybackObject;
using DataTypes::Auth::Server;
using DataTypes::Playback::ContentType;
using DataTypes::Playback::LikeStatus;
using DataTypes::Playback::PlaybackConfiguration;
using DataTypes::Playback::PlaybackPeriod;
using DataTypes::Playback::Track;
using DataTypes::Playback::UserFacingSchedule;
using Networking::ServerConnection;
using Utilities::Logger;

std::shared_ptr<UserEnvironment> UserEnvironment::sCurrentEnvironment;
bool UserEnvironment::sStartPlayerTimerRun = false;
int UserEnvironment::sReportDelayMs = UserEnvironment::ReportDelayMs;
int UserEnvironment::sMillisecondsPerMinute = UserEnvironment::MillisecondsPerMinute;

namespace {

// Callbacks come later even when the answer is known at once, so that a screen
// never sees its own call return into its handler.
void Later(std::function<void()> work)
{
    QTimer::singleShot(0, QCoreApplication::instance(), std::move(work));
}

template <typename Callback, typename... Arguments>
void CallLater(const Callback& callback, Arguments... arguments)
{
    if (!callback) {
        return;
    }
    Later([callback, arguments...]() { callback(arguments...); });
}

// An environment that has been let go may still be in the middle of one of its
// own callbacks (a reply of its connection, a tick of its timer): it is destroyed
// on the next pass of the event loop instead.
void ReleaseLater(std::shared_ptr<UserEnvironment> environment)
{
    if (environment) {
        Later([environment]() {});
    }
}

// A reply that said yes without what a sign-in needs: storing it would leave the
// point of sale with a sign-in every request is refused on.
std::shared_ptr<Error> UnusableSignInError()
{
    return std::make_shared<DataTypes::JsonDeserializationError>(
        "Ответ сервера не содержит данных для входа");
}

// The configuration in the database; null when none is stored or it cannot be read.
std::shared_ptr<PlaybackConfiguration> StoredConfiguration()
{
    std::shared_ptr<PlaybackConfiguration> configuration;
    if (!DbManager::GetInstance().SavedPlaybackConfiguration(configuration)) {
        return nullptr;
    }
    return configuration;
}

// A failure of the server passed on where any failure is expected.
UserEnvironment::NetworkFailure AsNetworkFailure(UserEnvironment::Failure onError)
{
    return [onError](std::shared_ptr<NetworkError> error) {
        if (onError) {
            onError(std::move(error));
        }
    };
}

std::shared_ptr<Networking::TestConnectHelper> ConnectionTester()
{
    static const auto tester = std::make_shared<Networking::TestConnectHelper>();
    return tester;
}

UserFacingSchedule::PlaylistSummary SummaryOf(const PlaybackConfiguration& configuration, std::int32_t id)
{
    UserFacingSchedule::PlaylistSummary summary;
    summary.id = id;
    if (id == 0) {
        return summary;
    }
    const auto playlist = std::find_if(configuration.playlists.begin(), configuration.playlists.end(),
                                       [id](const auto& candidate) { return candidate.id == id; });
    if (playlist != configuration.playlists.end()) {
        summary.name = playlist->name;
        summary.image = playlist->image;
        summary.trackCount = static_cast<std::int32_t>(playlist->trackIds.size());
    }
    return summary;
}

UserFacingSchedule::PlaybackPeriodInfo InfoOf(const PlaybackConfiguration& configuration,
                                              const PlaybackPeriod& period)
{
    UserFacingSchedule::PlaybackPeriodInfo info;
    info.name = period.name;
    info.startTime = period.startTime;
    info.endTime = period.endTime;
    info.contentVolume = period.contentVolume;
    info.adsVolume = period.adsVolume;
    info.music = SummaryOf(configuration, period.playlistIds.at(ContentType::Music));
    info.video = SummaryOf(configuration, period.playlistIds.at(ContentType::Video));
    info.photo = SummaryOf(configuration, period.playlistIds.at(ContentType::Photo));
    return info;
}

// The web site the API lives on: "https://host:port/".
std::string SiteOf(const QUrl& api)
{
    QUrl site;
    site.setScheme(api.scheme());
    site.setHost(api.host());
    site.setPort(api.port());
    site.setPath(QStringLiteral("/"));
    return site.toString().toStdString();
}

// "1 ч. 5 мин. 3 сек.": the units that are not zero, largest first.
std::string DurationText(std::int64_t seconds)
{
    const std::pair<std::int64_t, const char*> units[] = {
        {86400, " дн."}, {3600, " ч."}, {60, " мин."}, {1, " сек."}};
    std::string text;
    for (const auto& [length, name] : units) {
        if (seconds >= length || (length == 1 && text.empty())) {
            text += (text.empty() ? "" : " ") + std::to_string(seconds / length) + name;
            seconds %= length;
        }
    }
    return text;
}

// Support asks the owner to set the clock: by how much and which way it is off,
// and both clocks as they read, in local time.
std::string DeviceTimeIsWrongEntry(const QDateTime& server)
{
    const QDateTime local = Utilities::Clock::CurrentLocalDateTime();
    // To the nearest second: the server's time is known only that closely.
    const std::int64_t difference = (server.msecsTo(local) + (server <= local ? 500 : -500)) / 1000;
    const QString format = QStringLiteral("dd.MM.yyyy HH:mm:ss");
    return std::string("Часы компьютера ") + (difference < 0 ? "отстают от" : "спешат относительно") +
           " времени сервера на " + DurationText(difference < 0 ? -difference : difference) + " (сервер " +
           server.toLocalTime().toString(format).toStdString() + ", компьютер " +
           local.toString(format).toStdString() + "): сервер не примет отчеты о воспроизведении";
}

} // namespace

UserEnvironment::UserEnvironment(const Server& server, const PlaybackObject& object, const std::string& login,
                                 const std::string& password, const std::string& token)
    : connection(std::make_shared<ServerConnection>(server, object, token))
    , login(login)
    , password(password)
    , playbackObject(object)
{
    connection->SetUnathorizedErrorListener(this);
    connection->SetObjectExportedErrorListener(this);
    QPointer<UserEnvironment> self(this);
    connection->SetReachabilityHandler([self](bool answered) {
        if (self && self->reachabilityHandler) {
            self->reachabilityHandler(answered);
        }
    });
    connection->SetServerClockHandler([self](const ServerConnection::ServerClockReading&) {
        if (self) {
            self->CheckDeviceTime();
        }
    });
    CheckAutoStartEnabled();
    StartUpdateTimer();
    SendPlayerVersion();
    Statistics::Manager::TryToSendStoredReports(connection);
    reportTimer.setSingleShot(true);
    // A coarse timer may fire seconds early on a minute, counting a track cut at 58 s.
    reportTimer.setTimerType(Qt::PreciseTimer);
    connect(&reportTimer, &QTimer::timeout, this, &UserEnvironment::SendPendingReport);
}

UserEnvironment::~UserEnvironment()
{
    StopListeningToConnection();
    // The player may be held by a screen a little longer; it must not call back
    // into an environment that is gone.
    if (player) {
        player->SetTrackStartedHandler(nullptr);
        player->SetPlaybackStopHandler(nullptr);
    }
}

void UserEnvironment::StopListeningToConnection()
{
    // Requests in flight keep the connection alive after the environment is gone.
    connection->SetUnathorizedErrorListener(nullptr);
    connection->SetObjectExportedErrorListener(nullptr);
    connection->SetReachabilityHandler(nullptr);
    connection->SetServerClockHandler(nullptr);
}

// --- Before anyone is signed in ---

bool UserEnvironment::UserIsSignedIn()
{
    return sCurrentEnvironment || ResumeStoredSignIn();
}

void UserEnvironment::GetSignedInEnvironment(const EnvironmentHandler& callback)
{
    UserIsSignedIn();
    CallLater(callback, sCurrentEnvironment);
}

bool UserEnvironment::ResumeStoredSignIn()
{
    PlaybackObject object;
    Server server;
    std::string login;
    std::string password;
    std::string token;
    if (!DbManager::GetInstance().SavedAuthData(object, server, login, password, token)) {
        return false;
    }
    sCurrentEnvironment = std::make_shared<UserEnvironment>(server, object, login, password, token);
    return true;
}

void UserEnvironment::Servers(ServersHandler onSuccess, Failure onError)
{
    QFile file(QStringLiteral(":/jsons/servers.json"));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        CallLater(onError, Error::CreateReadFileError());
        return;
    }
    const QString body = QString::fromUtf8(file.readAll());
    CallLater(onSuccess, Networking::JsonConverter::ServersFromResponse(body));
}

void UserEnvironment::ServersFromApi(ServersHandler onSuccess, NetworkFailure onError, bool english,
                                     bool useHttp)
{
    ServerConnection::Servers(std::move(onSuccess), std::move(onError), english, useHttp);
}

void UserEnvironment::CheckServerIsHttpsAndAvailable(const Server& server, Done onAvailable, Done onNotHttps,
                                                     Done onUnavailable)
{
    // The account's password and token travel to this server: never in the clear.
    if (!QString::fromStdString(server.url).startsWith(QLatin1String("https:"), Qt::CaseInsensitive)) {
        CallLater(onNotHttps);
        return;
    }
    ConnectionTester()->LookUp(server.url, std::move(onAvailable), std::move(onUnavailable));
}

void UserEnvironment::PlaybackObjects(const Server& server, const std::string& login,
                                      const std::string& password, ObjectsHandler onSuccess,
                                      NetworkFailure onError)
{
    ServerConnection(server).PlaybackObjects(login, password, std::move(onSuccess), std::move(onError));
}

void UserEnvironment::CreateAndStoreEnvironment(const Server& server, const PlaybackObject& object,
                                                const std::string& login, const std::string& password,
                                                EnvironmentHandler onSuccess, Failure onError)
{
    ServerConnection(server).SignIn(
        login, password, object,
        [server, object, login, password, onSuccess, onError](const std::string& token) {
            StoreAndMakeCurrent(server, object, login, password, token, onSuccess, onError);
        },
        AsNetworkFailure(onError));
}

void UserEnvironment::CreateAndStoreEnvironment(const Server& server, const std::string& phone,
                                                const std::string& city, EnvironmentHandler onSuccess,
                                                Failure onError)
{
    ServerConnection(server).SignUp(
        phone, city,
        [server, phone, onSuccess, onError](std::shared_ptr<PlaybackObject> object,
                                            const std::string& token) {
            // A new account signs in with its phone number; it has no password yet.
            StoreAndMakeCurrent(server, object ? *object : PlaybackObject(), phone, std::string(), token,
                                onSuccess, onError);
        },
        AsNetworkFailure(onError));
}

void UserEnvironment::StoreAndMakeCurrent(const Server& server, const PlaybackObject& object,
                                          const std::string& login, const std::string& password,
                                          const std::string& token, const EnvironmentHandler& onSuccess,
                                          const Failure& onError)
{
    if (token.empty() || object.code.empty()) {
        if (onError) {
            onError(UnusableSignInError());
        }
        return;
    }
    DbManager& database = DbManager::GetInstance();
    if (!database.InitEmptyDataBase() || !database.SaveAuthData(object, server, login, password, token)) {
        if (onError) {
            onError(Error::CreateDataBaseError());
        }
        return;
    }
    // Two environments never play at once, and only the new one hears the server.
    if (sCurrentEnvironment) {
        sCurrentEnvironment->StopListeningToConnection();
        sCurrentEnvironment->StopAndClearPlayer();
        ReleaseLater(std::move(sCurrentEnvironment));
    }
    sCurrentEnvironment = std::make_shared<UserEnvironment>(server, object, login, password, token);
    if (onSuccess) {
        onSuccess(sCurrentEnvironment);
    }
}

void UserEnvironment::SendConfirmationCode(const Server& server, const std::string& phone,
                                           std::function<void(std::string)> onSuccess, NetworkFailure onError)
{
    ServerConnection(server).SendConfirmationCode(phone, std::move(onSuccess), std::move(onError));
}

void UserEnvironment::BusinessTypes(
    const Server& server,
    std::function<void(std::vector<std::shared_ptr<DataTypes::Auth::BusinessType>>)> onSuccess,
    NetworkFailure onError)
{
    ServerConnection(server).BusinessTypes(std::move(onSuccess), std::move(onError));
}

void UserEnvironment::MusicStyles(
    const Server& server,
    std::function<void(std::vector<std::shared_ptr<DataTypes::Auth::MusicStyle>>)> onSuccess,
    NetworkFailure onError)
{
    ServerConnection(server).MusicStyles(std::move(onSuccess), std::move(onError));
}

std::vector<std::string> UserEnvironment::SuitableCities(const std::string& prefix)
{
    return Utilities::CitiesHelper::GetInstance().SuitableCities(prefix);
}

// --- The signed-in account ---

void UserEnvironment::SetBusinessType(const DataTypes::Auth::BusinessType& type, Done onSuccess,
                                      NetworkFailure onError)
{
    connection->SetBusinessType(type, std::move(onSuccess), std::move(onError));
}

void UserEnvironment::SetMusicStyles(const std::vector<std::shared_ptr<DataTypes::Auth::MusicStyle>>& styles,
                                     Done onSuccess, NetworkFailure onError)
{
    connection->SetMusicStyles(styles, std::move(onSuccess), std::move(onError));
}

void UserEnvironment::RecommendedPlaylists(
    const DataTypes::Auth::BusinessType& type, const DataTypes::Auth::MusicStyle& style,
    std::function<void(std::vector<std::shared_ptr<DataTypes::Playlists::RecommendedPlaylist>>)> onSuccess,
    NetworkFailure onError)
{
    connection->RecommendedPlaylists(type, style, std::move(onSuccess), std::move(onError));
}

void UserEnvironment::PlaybackObjects(ObjectsHandler onSuccess, NetworkFailure onError)
{
    connection->PlaybackObjects(login, password, std::move(onSuccess), std::move(onError));
}

void UserEnvironment::ChoosePlaybackObject(const PlaybackObject& object, Done onSuccess, Failure onError)
{
    QPointer<UserEnvironment> self(this);
    connection->SignOut(
        [self, object, onSuccess, onError]() {
            if (self) {
                self->ChoosePlaybackObjectAfterSigningOut(object, onSuccess, onError);
            }
        },
        AsNetworkFailure(onError));
}

void UserEnvironment::ChoosePlaybackObjectAfterSigningOut(const PlaybackObject& object, Done onSuccess,
                                                          Failure onError)
{
    QPointer<UserEnvironment> self(this);
    const Server server = *connection->GetServer();
    ServerConnection(server).SignIn(
        login, password, object,
        [self, server, object, onSuccess, onError](const std::string& token) {
            if (!self) {
                return;
            }
            if (token.empty()) {
                if (onError) {
                    onError(UnusableSignInError());
                }
                return;
            }
            if (!DbManager::GetInstance().SaveAuthData(object, server, self->login, self->password, token)) {
                if (onError) {
                    onError(Error::CreateDataBaseError());
                }
                return;
            }
            self->playbackObject = object;
            self->signInRefused = false;
            DbManager::GetInstance().RemovePlaybackConfiguration();
            if (self->player) {
                self->player->Stop(true);
                self->player->SetObjectCode(object.code);
            }
            self->connection->SetPlaybackObjectAndToken(object, token);
            self->SendPlayerVersion();
            self->LoadPlaybackConfiguration(
                [onSuccess](bool, const std::string&) {
                    if (onSuccess) {
                        onSuccess();
                    }
                },
                [self, onError](std::shared_ptr<Error> error) {
                    // The stopped player still holds the previous point of sale's
                    // schedule; it must not be started for this one.
                    if (self) {
                        self->StopAndClearPlayer();
                    }
                    if (onError) {
                        onError(std::move(error));
                    }
                });
        },
        AsNetworkFailure(onError));
}

void UserEnvironment::GetServerInfo(std::string& name, std::string& email, std::string& phone) const
{
    const auto server = connection->GetServer();
    name = server->name;
    email = server->email;
    phone = server->phone;
}

PlaybackObject UserEnvironment::CurrentPlaybackObject() const
{
    return playbackObject;
}

std::string UserEnvironment::PersonalAccountPageUrl() const
{
    const auto server = connection->GetServer();
    const QUrl api(QString::fromStdString(server->url));
    const QString landing = QString::fromStdString(server->landingUrl).trimmed();
    if (landing.isEmpty()) {
        return SiteOf(api);
    }
    if (landing.startsWith(QLatin1String("https://"), Qt::CaseInsensitive) ||
        landing.startsWith(QLatin1String("http://"), Qt::CaseInsensitive)) {
        return landing.toStdString();
    }
    const QString scheme =
        api.scheme() == QLatin1String("http") ? QStringLiteral("http://") : QStringLiteral("https://");
    return (scheme + landing).toStdString();
}

void UserEnvironment::LoadCertifcate(std::function<void(std::string)> onSuccess, NetworkFailure onError)
{
    connection->LoadCertificate(std::move(onSuccess), std::move(onError));
}

void UserEnvironment::Playlists(
    const DataTypes::Playlists::PlaylistContentType& type,
    std::function<void(std::vector<std::shared_ptr<DataTypes::Playlists::Playlist>>)> onSuccess,
    NetworkFailure onError)
{
    connection->Playlists(type, std::move(onSuccess), std::move(onError));
}

void UserEnvironment::TracksOfPlaylist(
    const DataTypes::Playlists::PlaylistContentType& type, const DataTypes::Playlists::Playlist& playlist,
    std::function<void(std::shared_ptr<std::vector<DataTypes::Playlists::Track>>)> onSuccess,
    NetworkFailure onError)
{
    connection->TracksOfPlaylist(type, playlist, std::move(onSuccess), std::move(onError));
}

void UserEnvironment::LoadPlaylistsSettings(
    std::function<void(std::shared_ptr<DataTypes::Playlists::PlaylistsSettings>)> onSuccess,
    NetworkFailure onError)
{
    connection->LoadPlaylistsSettings(std::move(onSuccess), std::move(onError));
}

void UserEnvironment::SetPlaylistAsActive(const DataTypes::Playlists::PlaylistContentType& type,
                                          const DataTypes::Playlists::Playlist& playlist, Done onSuccess,
                                          NetworkFailure onError)
{
    connection->SetPlaylistAsActive(type, playlist, std::move(onSuccess), std::move(onError));
}

void UserEnvironment::SetPlaylistAsActiveForPeriods(const DataTypes::Playlists::PlaylistContentType& type,
                                                    const DataTypes::Playlists::Playlist& playlist,
                                                    bool morning, bool day, bool evening, bool night,
                                                    Done onSuccess, NetworkFailure onError)
{
    connection->SetPlaylistAsActiveForPeriods(type, playlist, morning, day, evening, night,
                                              std::move(onSuccess), std::move(onError));
}

void UserEnvironment::DeactivatePlaylist(const DataTypes::Playlists::PlaylistContentType& type,
                                         const DataTypes::Playlists::Playlist& playlist, Done onSuccess,
                                         NetworkFailure onError)
{
    connection->DeactivatePlaylist(type, playlist, std::move(onSuccess), std::move(onError));
}

void UserEnvironment::SignOut()
{
    const Done clear = ClearThen(nullptr);
    connection->SignOut(clear, [clear](std::shared_ptr<NetworkError>) { clear(); });
}

void UserEnvironment::SignOut(Done onSuccess, NetworkFailure onError)
{
    connection->SignOut(ClearThen(std::move(onSuccess)), std::move(onError));
}

void UserEnvironment::DeleteAccount()
{
    DeleteAccount(nullptr, nullptr);
}

void UserEnvironment::DeleteAccount(Done onSuccess, NetworkFailure onError)
{
    connection->DeleteAccount(ClearThen(std::move(onSuccess)), std::move(onError));
}

UserEnvironment::Done UserEnvironment::ClearThen(Done onSuccess)
{
    QPointer<UserEnvironment> self(this);
    return [self, onSuccess]() {
        if (self) {
            self->ClearEnvironment();
        }
        if (onSuccess) {
            onSuccess();
        }
    };
}

void UserEnvironment::ClearStoredEnvironmentWithoutSigningOut()
{
    ClearEnvironment();
}

void UserEnvironment::ClearEnvironment()
{
    // A refusal still on its way concerns a sign-in the user has already ended.
    StopListeningToConnection();
    StopAndClearPlayer();
    StopUpdateTimer();
    startPlayerTimer.stop();
    reportTimer.stop();
    if (sCurrentEnvironment.get() == this) {
        ReleaseLater(std::move(sCurrentEnvironment));
        sCurrentEnvironment.reset();
    }
    DbManager::GetInstance().ClearDataBase();
    ContentPlaying::ContentFilesHelper::DropContentFiles();
    Settings::SwitchToDefault();
}

void UserEnvironment::SetUnathorizedErrorListener(UnauthorizedErrorListener* listener)
{
    unauthorizedListener = listener;
}

void UserEnvironment::SetObjectExportedErrorListener(ObjectExportedErrorListener* listener)
{
    objectExportedListener = listener;
}

void UserEnvironment::SetServerReachabilityHandler(ReachabilityHandler handler)
{
    reachabilityHandler = std::move(handler);
}

QDateTime UserEnvironment::ServerDateTimeNow() const
{
    const auto reading = connection->LastServerClockReading();
    if (!reading) {
        return QDateTime();
    }
    const std::int64_t sinceReading =
        Utilities::Clock::CurrentMSecsSinceEpoch() - reading->localMSecsSinceEpoch;
    return QDateTime::fromMSecsSinceEpoch(reading->serverMSecsSinceEpoch + sinceReading, Qt::UTC);
}

bool UserEnvironment::DeviceTimeIsCorrect() const
{
    const QDateTime server = ServerDateTimeNow();
    return !server.isValid() || Utilities::LocalTimeHelper::DeviceTimeIsCorrect(server.toSecsSinceEpoch());
}

void UserEnvironment::SetDeviceTimeHandler(DeviceTimeHandler handler)
{
    deviceTimeHandler = std::move(handler);
}

void UserEnvironment::CheckDeviceTime()
{
    const bool wrong = !DeviceTimeIsCorrect();
    if (wrong == deviceTimeWrong) {
        return;
    }
    deviceTimeWrong = wrong;
    if (wrong) {
        Logger::Log(DeviceTimeIsWrongEntry(ServerDateTimeNow()));
    } else {
        Logger::Log("Время на компьютере снова совпадает со временем сервера");
    }
    if (deviceTimeHandler) {
        deviceTimeHandler(!wrong);
    }
}

void UserEnvironment::AddConfigurationUpdatedObserver(PlaybackConfigurationUpdatedObserver* observer)
{
    if (observer && std::find(configurationObservers.begin(), configurationObservers.end(), observer) ==
                        configurationObservers.end()) {
        configurationObservers.push_back(observer);
    }
}

void UserEnvironment::RemoveConfigurationUpdatedObserver(PlaybackConfigurationUpdatedObserver* observer)
{
    configurationObservers.erase(
        std::remove(configurationObservers.begin(), configurationObservers.end(), observer),
        configurationObservers.end());
}

bool UserEnvironment::AppHasAutorunArgument()
{
    return QCoreApplication::arguments().contains(QString::fromStdString(Settings::AutoRunArgumentName()));
}

bool UserEnvironment::MainWindowShouldBeMinimized()
{
    return Settings::AutoRunEnabled() && Settings::MinimizeOnAutoRun() && AppHasAutorunArgument();
}

void UserEnvironment::OnWrongTokenError()
{
    if (signInRefused) {
        return;
    }
    ReleasePlayerAfterSignInRefused();
    if (unauthorizedListener) {
        unauthorizedListener->OnWrongTokenError();
    }
}

void UserEnvironment::OnAccountIsBlockedError()
{
    if (signInRefused) {
        return;
    }
    ReleasePlayerAfterSignInRefused();
    if (unauthorizedListener) {
        unauthorizedListener->OnAccountIsBlockedError();
    }
}

void UserEnvironment::ReleasePlayerAfterSignInRefused()
{
    // Every further request with this token would be refused the same way and
    // tell the user again; the stored sign-in stays until the user has seen why.
    signInRefused = true;
    StopUpdateTimer();
    startPlayerTimer.stop();
    StopAndClearPlayer();
}

void UserEnvironment::OnObjectExportedError()
{
    // The schedule already stored is still the shop's to play.
    if (objectExportedListener) {
        objectExportedListener->OnObjectExportedError();
    }
}

// --- Configuration, player, reports and likes ---

void UserEnvironment::LoadPlaybackConfiguration(UpdateHandler onSuccess, Failure onError)
{
    QPointer<UserEnvironment> self(this);
    const auto keptConnection = connection;
    Utilities::PlaybackConfigurationLoader::UpdatePlaybackConfiguration(
        *connection,
        [self, keptConnection, onSuccess, onError](bool updated, const std::string& message) {
            if (updated && self && !self->HandStoredConfigurationToPlayer()) {
                if (onError) {
                    onError(Error::CreateDataBaseError());
                }
                return;
            }
            if (onSuccess) {
                onSuccess(updated, message);
            }
        },
        [keptConnection, onError](std::shared_ptr<Error> error) {
            if (onError) {
                onError(std::move(error));
            }
        });
}

bool UserEnvironment::HandStoredConfigurationToPlayer()
{
    const auto configuration = StoredConfiguration();
    if (!configuration) {
        return false;
    }
    if (player) {
        player->UpdateConfiguration(*configuration, false);
    }
    return true;
}

void UserEnvironment::StoredPlaybackConfiguration(std::function<void(PlaybackConfiguration)> onSuccess,
                                                  Failure onError)
{
    const auto configuration = StoredConfiguration();
    if (!configuration) {
        CallLater(onError, Error::CreateDataBaseError());
        return;
    }
    CallLater(onSuccess, *configuration);
}

void UserEnvironment::UserFacingSchedules(std::function<void(std::vector<UserFacingSchedule>)> onSuccess,
                                          Failure onError)
{
    const auto configuration = StoredConfiguration();
    if (!configuration) {
        CallLater(onError, Error::CreateDataBaseError());
        return;
    }
    CallLater(onSuccess, SchedulesOf(*configuration));
}

std::vector<UserFacingSchedule> UserEnvironment::SchedulesOf(const PlaybackConfiguration& configuration)
{
    struct Group
    {
        UserFacingSchedule schedule;
        std::vector<PlaybackPeriod> periods;
    };
    std::vector<Group> groups;
    for (const auto& day : configuration.days) {
        for (const auto& period : day.periods) {
            if (period.scheduleId < 0 && period.scheduleName.empty()) {
                continue;
            }
            auto group = std::find_if(groups.begin(), groups.end(), [&period](const Group& candidate) {
                return candidate.schedule.id == period.scheduleId &&
                       candidate.schedule.name == period.scheduleName;
            });
            if (group == groups.end()) {
                Group added;
                added.schedule.id = period.scheduleId;
                added.schedule.name = period.scheduleName;
                groups.push_back(std::move(added));
                group = std::prev(groups.end());
            }
            // The same period on every weekday is one line of the weekly schedule.
            if (std::find(group->periods.begin(), group->periods.end(), period) == group->periods.end()) {
                group->periods.push_back(period);
            }
        }
    }
    std::vector<UserFacingSchedule> schedules;
    for (auto& group : groups) {
        std::stable_sort(
            group.periods.begin(), group.periods.end(),
            [](const PlaybackPeriod& left, const PlaybackPeriod& right) {
                return Utilities::LocalTimeHelper::StartTimeToSecondsFromDayStart(left.startTime) <
                       Utilities::LocalTimeHelper::StartTimeToSecondsFromDayStart(right.startTime);
            });
        for (const auto& period : group.periods) {
            group.schedule.periods.push_back(InfoOf(configuration, period));
        }
        schedules.push_back(std::move(group.schedule));
    }
    return schedules;
}

std::shared_ptr<ContentPlaying::Player> UserEnvironment::GetContentPlayer()
{
    if (player) {
        return player;
    }
    // Whatever it played would not be the account's any more.
    if (signInRefused) {
        return nullptr;
    }
    const auto configuration = StoredConfiguration();
    if (!configuration) {
        return nullptr;
    }
    player = std::make_shared<ContentPlaying::Player>(*configuration);
    player->SetObjectCode(playbackObject.code);
    QPointer<UserEnvironment> self(this);
    player->SetTrackStartedHandler([self](const Track& track, int volume, bool resumed) {
        if (self) {
            self->HandleTrackStarted(track, volume, resumed);
        }
    });
    // Music that stopped before its minute was not heard.
    player->SetPlaybackStopHandler([self]() {
        if (self) {
            self->reportTimer.stop();
        }
    });
    return player;
}

void UserEnvironment::StopAndClearPlayer()
{
    if (!player) {
        return;
    }
    const auto stopped = std::move(player);
    player.reset();
    stopped->Stop(true);
    stopped->SetTrackStartedHandler(nullptr);
    stopped->SetPlaybackStopHandler(nullptr);
}

void UserEnvironment::StartUpdateTimer()
{
    updateTimer.setSingleShot(false);
    updateTimer.setInterval(static_cast<int>(Settings::GetUpdateIntervalMinutes()) * sMillisecondsPerMinute);
    connect(&updateTimer, &QTimer::timeout, this, &UserEnvironment::UpdateTimerFired, Qt::UniqueConnection);
    updateTimer.start();
}

void UserEnvironment::StopUpdateTimer()
{
    updateTimer.stop();
    disconnect(&updateTimer, &QTimer::timeout, this, &UserEnvironment::UpdateTimerFired);
}

void UserEnvironment::RefreshUpdateTimer()
{
    if (signInRefused) {
        return;
    }
    StopUpdateTimer();
    StartUpdateTimer();
}

void UserEnvironment::UpdateTimerFired()
{
    Logger::Log("Сработал таймер обновления по времени");
    QPointer<UserEnvironment> self(this);
    const auto keptConnection = connection;
    Utilities::PlaybackConfigurationLoader::UpdatePlaybackConfiguration(
        *connection,
        [self, keptConnection](bool updated, const std::string& message) {
            if (!self) {
                return;
            }
            // An observer may remove itself while it is told.
            const auto observers = self->configurationObservers;
            for (auto* observer : observers) {
                if (self &&
                    std::find(self->configurationObservers.begin(), self->configurationObservers.end(),
                              observer) != self->configurationObservers.end()) {
                    observer->PlaybackConfigurationUpdated(updated, message);
                }
            }
            if (!self) {
                return;
            }
            if (!updated) {
                Logger::Log("\tОбновление по времени: версия конфигурации воспроизведения не изменилась");
                return;
            }
            Logger::Log("\tОбновление по времени: успешно обновлено до новой версии");
            if (!self->HandStoredConfigurationToPlayer()) {
                Logger::Log("\tОбновление по времени: не удалось прочитать сохраненную конфигурацию "
                            "воспроизведения из локальной базы данных");
            }
        },
        [keptConnection](std::shared_ptr<Error> error) {
            Logger::Log("\tОбновление по времени: ошибка загрузки конфигурации воспроизведения :" +
                        (error ? error->ToString() : std::string()));
        });
}

void UserEnvironment::CheckAutoStartEnabled()
{
    if (Settings::AutoRunEnabled() && AppHasAutorunArgument()) {
        RunStartPlayerTimer();
    }
}

bool UserEnvironment::PlayerStartIsDelayed() const
{
    return startPlayerTimer.isActive();
}

void UserEnvironment::RunStartPlayerTimer()
{
    // A start at login happens once; signing in again later in the same session
    // is somebody at the keyboard, who starts the player themselves.
    if (sStartPlayerTimerRun) {
        return;
    }
    sStartPlayerTimerRun = true;
    const unsigned delay = Settings::GetDelayValueSeconds();
    Logger::Log("Автозапуск - включен таймер запуска плеера (" + std::to_string(delay) + " сек.)");
    startPlayerTimer.setSingleShot(true);
    startPlayerTimer.setInterval(static_cast<int>(delay) * 1000);
    connect(&startPlayerTimer, &QTimer::timeout, this, &UserEnvironment::StartPlayerTimerFired,
            Qt::UniqueConnection);
    startPlayerTimer.start();
}

void UserEnvironment::StartPlayerTimerFired()
{
    Logger::Log("Сработал таймер запуска плеера");
    if (const auto started = GetContentPlayer()) {
        started->Start();
    }
}

void UserEnvironment::SendPlayerVersion()
{
    const std::string version = QCoreApplication::applicationVersion().toStdString();
    // The service tells the builds apart by this name; the description is the
    // machine's, for support.
    const std::string os = Utilities::DeviceInfoHelper::GetOsInfo();
    const std::string platformInfo = Utilities::DeviceInfoHelper::GetPlatformInfo();
    connection->SendPlayerVersion(
        version, os, platformInfo,
        [version, os]() {
            Logger::Log("Версия плеера успешно отправлена на сервер (" + version + ", " + os + ")");
        },
        [](std::shared_ptr<NetworkError> error) {
            Logger::Log("Ошибка отправки версии плеера:" + (error ? error->ToString() : std::string()));
        });
}

void UserEnvironment::HandleTrackStarted(const Track& track, int volume, bool resumed)
{
    // A track picked up again after a pause or an ad was reported when it began.
    if (resumed) {
        return;
    }
    const Statistics::Report report(track, volume, Utilities::LocalTimeHelper::GetLocalTimeString(),
                                    Utilities::LocalTimeHelper::GetLocalDateString());
    if (track.contentType == ContentType::Music) {
        // Only music heard for a whole minute counts as played: one skipped or cut
        // short before that is overwritten here or dropped by the stop.
        pendingReport = report;
        reportTimer.start(sReportDelayMs);
        return;
    }
    Statistics::Manager::TryToSendReport(connection, report);
}

void UserEnvironment::SendPendingReport()
{
    Statistics::Manager::TryToSendReport(connection, pendingReport);
}

void UserEnvironment::SendLikeAction(LikeAction action, std::int32_t trackId,
                                     std::function<void(LikeStatus)> onSuccess, Failure onError)
{
    QPointer<UserEnvironment> self(this);
    connection->SendLikeAction(
        trackId, action,
        [self, trackId, onSuccess, onError](LikeStatus status) {
            if (!self) {
                return;
            }
            self->UpdateLikeStatusForTrack(trackId, status, onSuccess, onError);
        },
        AsNetworkFailure(onError));
}

void UserEnvironment::UpdateLikeStatusForTrack(std::int32_t trackId, LikeStatus status,
                                               std::function<void(LikeStatus)> onSuccess, Failure onError)
{
    const auto configuration = StoredConfiguration();
    if (!configuration) {
        CallLater(onError, Error::CreateDataBaseError());
        return;
    }
    for (auto& kind : configuration->tracks) {
        for (auto& track : kind.second) {
            if (track.id == trackId) {
                track.likeStatus = status;
            }
        }
    }
    if (!DbManager::GetInstance().SavePlaybackConfiguration(*configuration)) {
        CallLater(onError, Error::CreateDataBaseError());
        return;
    }
    CallLater(onSuccess, status);
    UpdateLikeStatusForTrackInPlayer(trackId, status);
}

void UserEnvironment::UpdateLikeStatusForTrackInPlayer(std::int32_t trackId, LikeStatus status)
{
    if (!player) {
        return;
    }
    // Ids are unique within a kind only; tell the kinds that have the track.
    for (const auto& kind : player->Configuration().tracks) {
        const auto& tracks = kind.second;
        if (std::any_of(tracks.begin(), tracks.end(),
                        [trackId](const Track& track) { return track.id == trackId; })) {
            player->RefreshTrackLikeStatus(kind.first, trackId, status);
        }
    }
}

// --- Test seams ---

void UserEnvironment::SetReportDelayForTesting(int milliseconds)
{
    sReportDelayMs = milliseconds;
}

void UserEnvironment::SetMinuteForTesting(int milliseconds)
{
    sMillisecondsPerMinute = milliseconds;
}

void UserEnvironment::ResetTimingForTesting()
{
    sReportDelayMs = ReportDelayMs;
    sMillisecondsPerMinute = MillisecondsPerMinute;
}

void UserEnvironment::ReleaseCurrentEnvironment()
{
    if (sCurrentEnvironment) {
        sCurrentEnvironment->StopAndClearPlayer();
    }
    sCurrentEnvironment.reset();
}

void UserEnvironment::ForgetProcessStateForTesting()
{
    ReleaseCurrentEnvironment();
    sStartPlayerTimerRun = false;
}

} // namespace Core
