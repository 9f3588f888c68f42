#pragma once

#include "core/data_types/auth/business_type.h"
#include "core/data_types/auth/music_style.h"
#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/data_types/error.h"
#include "core/data_types/network_error.h"
#include "core/data_types/playback/like_status.h"
#include "core/data_types/playback/playback_configuration.h"
#include "core/data_types/playback/track.h"
#include "core/data_types/playback/user_facing_schedule.h"
#include "core/data_types/playlists/playlist.h"
#include "core/data_types/playlists/playlist_content_type.h"
#include "core/data_types/playlists/playlists_settings.h"
#include "core/data_types/playlists/recommended_playlist.h"
#include "core/data_types/playlists/track.h"
#include "core/networking/like_action.h"
#include "core/networking/object_exported_error_listener.h"
#include "core/networking/unauthorized_error_listener.h"
#include "core/statistics/report.h"

#include <QDateTime>
#include <QObject>
#include <QTimer>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Core {

namespace ContentPlaying {
class Player;
}
namespace Networking {
class ServerConnection;
}

class PlaybackConfigurationUpdatedObserver;

// Who is signed in, on which server, for which point of sale — and everything that
// lives as long as that sign-in: the connection with its token, the player, the
// periodic configuration check, the delayed start at login and the playback
// reports. The screens go through the current environment for every account,
// catalogue, playlist and player operation; they never reach the server or the
// database themselves.
//
// There is one current environment per process. A complete sign-in stored in the
// database brings it back on the next start, so a shop's computer that lost power
// resumes playing without anyone typing a password.
//
// Asynchronous operations call exactly one of their two callbacks, later, on the GUI
// thread, even when the answer is known at once. Server failures reach the caller
// unchanged. Work still in flight when the environment is cleared ends quietly: its
// callbacks still run, but nothing of the cleared environment is touched.
class UserEnvironment : public QObject, public UnauthorizedErrorListener, public ObjectExportedErrorListener
{
    Q_OBJECT

public:
    using Failure = std::function<void(std::shared_ptr<DataTypes::Error>)>;
    using NetworkFailure = std::function<void(std::shared_ptr<DataTypes::NetworkError>)>;
    using Done = std::function<void()>;
    using EnvironmentHandler = std::function<void(std::shared_ptr<UserEnvironment>)>;
    using ServersHandler = std::function<void(std::vector<std::shared_ptr<DataTypes::Auth::Server>>)>;
    using ObjectsHandler = std::function<void(std::vector<std::shared_ptr<DataTypes::Auth::PlaybackObject>>)>;
    using UpdateHandler = std::function<void(bool updated, std::string message)>;

    // A music track counts as played only after this long (see HandleTrackStarted).
    static constexpr int ReportDelayMs = 60000;
    static constexpr int MillisecondsPerMinute = 60000;

    // Built by the sign-in paths below and on resuming a stored sign-in; starts the
    // update timer, sends the player version and the reports still stored.
    UserEnvironment(const DataTypes::Auth::Server& server, const DataTypes::Auth::PlaybackObject& object,
                    const std::string& login, const std::string& password, const std::string& token);
    ~UserEnvironment() override;

    UserEnvironment(const UserEnvironment&) = delete;
    UserEnvironment& operator=(const UserEnvironment&) = delete;

    // --- Before anyone is signed in ---

    // True when an environment is current, or a complete stored sign-in could be
    // resumed into one. A half-written sign-in reads as signed out.
    static bool UserIsSignedIn();
    // The current environment (resuming a stored sign-in), or an empty pointer.
    static void GetSignedInEnvironment(const EnvironmentHandler& callback);
    // The servers built into the program.
    static void Servers(ServersHandler onSuccess, Failure onError);
    static void ServersFromApi(ServersHandler onSuccess, NetworkFailure onError, bool english = false,
                               bool useHttp = false);
    // A server whose address is not HTTPS is refused without any request; otherwise
    // its host name has to resolve.
    static void CheckServerIsHttpsAndAvailable(const DataTypes::Auth::Server& server, Done onAvailable,
                                               Done onNotHttps, Done onUnavailable);
    // The account's points of sale, so that the user can pick one before signing in.
    static void PlaybackObjects(const DataTypes::Auth::Server& server, const std::string& login,
                                const std::string& password, ObjectsHandler onSuccess,
                                NetworkFailure onError);
    // Sign-in: on success the sign-in is stored and the new environment is current.
    static void CreateAndStoreEnvironment(const DataTypes::Auth::Server& server,
                                          const DataTypes::Auth::PlaybackObject& object,
                                          const std::string& login, const std::string& password,
                                          EnvironmentHandler onSuccess, Failure onError);
    // Sign-up of a new account with its phone number and city, once the user has
    // typed the code that SendConfirmationCode handed back (the confirmation screen
    // compares them). The server makes the account's first point of sale.
    static void CreateAndStoreEnvironment(const DataTypes::Auth::Server& server, const std::string& phone,
                                          const std::string& city, EnvironmentHandler onSuccess,
                                          Failure onError);
    // `onSuccess` receives the code the server sent to the phone.
    static void SendConfirmationCode(const DataTypes::Auth::Server& server, const std::string& phone,
                                     std::function<void(std::string)> onSuccess, NetworkFailure onError);
    static void
    BusinessTypes(const DataTypes::Auth::Server& server,
                  std::function<void(std::vector<std::shared_ptr<DataTypes::Auth::BusinessType>>)> onSuccess,
                  NetworkFailure onError);
    static void
    MusicStyles(const DataTypes::Auth::Server& server,
                std::function<void(std::vector<std::shared_ptr<DataTypes::Auth::MusicStyle>>)> onSuccess,
                NetworkFailure onError);
    static std::vector<std::string> SuitableCities(const std::string& prefix);

    // --- The signed-in account ---

    void SetBusinessType(const DataTypes::Auth::BusinessType& type, Done onSuccess, NetworkFailure onError);
    void SetMusicStyles(const std::vector<std::shared_ptr<DataTypes::Auth::MusicStyle>>& styles,
                        Done onSuccess, NetworkFailure onError);
    void RecommendedPlaylists(
        const DataTypes::Auth::BusinessType& type, const DataTypes::Auth::MusicStyle& style,
        std::function<void(std::vector<std::shared_ptr<DataTypes::Playlists::RecommendedPlaylist>>)>
            onSuccess,
        NetworkFailure onError);
    void PlaybackObjects(ObjectsHandler onSuccess, NetworkFailure onError);
    // Signs the current token out and in again for `object`. A failed sign-out
    // changes nothing. Once the new sign-in is stored, the old configuration is
    // gone and the player stopped; `onSuccess` comes when the new object's
    // configuration has been loaded and handed to the player, `onError` with the
    // loading error when it could not be (the object is switched all the same, and
    // the update timer keeps trying; the old schedule's player is dropped then).
    void ChoosePlaybackObject(const DataTypes::Auth::PlaybackObject& object, Done onSuccess, Failure onError);
    void GetServerInfo(std::string& name, std::string& email, std::string& phone) const;
    DataTypes::Auth::PlaybackObject CurrentPlaybackObject() const;
    // The server's landing page when it names one (completed with the API's scheme
    // when written without), otherwise the scheme and host of its API address: the
    // account's web pages live on the same site as the API.
    std::string PersonalAccountPageUrl() const;
    // The address of the point of sale's music-rights certificate.
    void LoadCertifcate(std::function<void(std::string)> onSuccess, NetworkFailure onError);

    void
    Playlists(const DataTypes::Playlists::PlaylistContentType& type,
              std::function<void(std::vector<std::shared_ptr<DataTypes::Playlists::Playlist>>)> onSuccess,
              NetworkFailure onError);
    void
    TracksOfPlaylist(const DataTypes::Playlists::PlaylistContentType& type,
                     const DataTypes::Playlists::Playlist& playlist,
                     std::function<void(std::shared_ptr<std::vector<DataTypes::Playlists::Track>>)> onSuccess,
                     NetworkFailure onError);
    void LoadPlaylistsSettings(
        std::function<void(std::shared_ptr<DataTypes::Playlists::PlaylistsSettings>)> onSuccess,
        NetworkFailure onError);
    void SetPlaylistAsActive(const DataTypes::Playlists::PlaylistContentType& type,
                             const DataTypes::Playlists::Playlist& playlist, Done onSuccess,
                             NetworkFailure onError);
    void SetPlaylistAsActiveForPeriods(const DataTypes::Playlists::PlaylistContentType& type,
                                       const DataTypes::Playlists::Playlist& playlist, bool morning, bool day,
                                       bool evening, bool night, Done onSuccess, NetworkFailure onError);
    void DeactivatePlaylist(const DataTypes::Playlists::PlaylistContentType& type,
                            const DataTypes::Playlists::Playlist& playlist, Done onSuccess,
                            NetworkFailure onError);

    // Ends the sign-in on the server and, whatever it answers, forgets it here.
    void SignOut();
    // Forgets the sign-in only when the server has ended it; a failure leaves
    // everything as it was.
    void SignOut(Done onSuccess, NetworkFailure onError);
    // Deletes the account on the server and, when that succeeded, forgets it here.
    void DeleteAccount();
    // The same, telling the person who asked how it went.
    void DeleteAccount(Done onSuccess, NetworkFailure onError);
    // For a sign-in the server has already ended: no request.
    void ClearStoredEnvironmentWithoutSigningOut();

    // Not owned; null switches the notification off.
    void SetUnathorizedErrorListener(UnauthorizedErrorListener* listener);
    void SetObjectExportedErrorListener(ObjectExportedErrorListener* listener);
    // Told after every answer or failure of a request of this sign-in: true when
    // the server answered (whatever it said), false when it could not be reached.
    // The player then goes on from what is stored. Empty switches it off.
    using ReachabilityHandler = std::function<void(bool answered)>;
    void SetServerReachabilityHandler(ReachabilityHandler handler);
    // The server's clock now: the time of its latest reply's "Date" header moved on
    // by what the local clock has run since. Invalid until a reply carried one.
    QDateTime ServerDateTimeNow() const;
    // False while the computer's clock is more than a minute off the server's: the
    // server refuses play reports then, and the schedule runs at the wrong hours.
    // True while the server's time is not known.
    bool DeviceTimeIsCorrect() const;
    // Told when a reply finds the device time wrong, and when one finds it right
    // again. Empty switches it off.
    using DeviceTimeHandler = std::function<void(bool correct)>;
    void SetDeviceTimeHandler(DeviceTimeHandler handler);
    // Not owned; adding one twice keeps it once.
    void AddConfigurationUpdatedObserver(PlaybackConfigurationUpdatedObserver* observer);
    void RemoveConfigurationUpdatedObserver(PlaybackConfigurationUpdatedObserver* observer);

    static bool AppHasAutorunArgument();
    static bool MainWindowShouldBeMinimized();

    // --- Configuration, player, reports and likes ---

    // Checks the server for a new configuration; a new one reaches a running player.
    void LoadPlaybackConfiguration(UpdateHandler onSuccess, Failure onError);
    void
    StoredPlaybackConfiguration(std::function<void(DataTypes::Playback::PlaybackConfiguration)> onSuccess,
                                Failure onError);
    // The stored configuration as the weekly schedule the user sees. One entry per
    // schedule (periods grouped by their schedule's id and name), in the order the
    // days first show it; its periods in start-time order, a period that recurs on
    // several days listed once. A period the server sends outside any schedule
    // (no id and name) is not part of what the user set up and is left out.
    void
    UserFacingSchedules(std::function<void(std::vector<DataTypes::Playback::UserFacingSchedule>)> onSuccess,
                        Failure onError);
    // Created on first call from the stored configuration; empty while none is stored
    // and after the server refused the sign-in.
    std::shared_ptr<ContentPlaying::Player> GetContentPlayer();
    void StopAndClearPlayer();

    void StartUpdateTimer();
    void StopUpdateTimer();
    // Takes the interval now in the settings, counting from this moment.
    void RefreshUpdateTimer();
    void RunStartPlayerTimer();
    void CheckAutoStartEnabled();
    // True while the delayed start of a start at login is still to come: a screen
    // that would start the player leaves it to that timer.
    bool PlayerStartIsDelayed() const;

    void SendPlayerVersion();
    // Likes or dislikes a track; the server's answer is stored in the configuration
    // and shown by the running player.
    void SendLikeAction(LikeAction action, std::int32_t trackId,
                        std::function<void(DataTypes::Playback::LikeStatus)> onSuccess, Failure onError);
    void UpdateLikeStatusForTrack(std::int32_t trackId, DataTypes::Playback::LikeStatus status,
                                  std::function<void(DataTypes::Playback::LikeStatus)> onSuccess,
                                  Failure onError);
    void UpdateLikeStatusForTrackInPlayer(std::int32_t trackId, DataTypes::Playback::LikeStatus status);

    // UnauthorizedErrorListener, ObjectExportedErrorListener: from the connection.
    void OnWrongTokenError() override;
    void OnAccountIsBlockedError() override;
    void OnObjectExportedError() override;

    // Test seams, like the clock's; the program itself never calls them.
    static void SetReportDelayForTesting(int milliseconds);
    static void SetMinuteForTesting(int milliseconds);
    // The program's own report delay and minute again.
    static void ResetTimingForTesting();
    // The application's last word, before its event loop ends: the player stops and
    // the current environment is destroyed while Qt is still whole. The stored sign-in
    // stays, so the next start resumes playing.
    static void ReleaseCurrentEnvironment();
    // What a new process starts with: no current environment (the stored sign-in
    // stays) and no delayed start run yet.
    static void ForgetProcessStateForTesting();

    // The grouping of UserFacingSchedules, on a configuration in hand.
    static std::vector<DataTypes::Playback::UserFacingSchedule>
    SchedulesOf(const DataTypes::Playback::PlaybackConfiguration& configuration);

private:
    static std::shared_ptr<UserEnvironment> sCurrentEnvironment;
    static bool sStartPlayerTimerRun;
    static int sReportDelayMs;
    static int sMillisecondsPerMinute;

    // Makes an environment from a sign-in the server has just accepted, after
    // storing it; the database error when it could not be stored.
    static void StoreAndMakeCurrent(const DataTypes::Auth::Server& server,
                                    const DataTypes::Auth::PlaybackObject& object, const std::string& login,
                                    const std::string& password, const std::string& token,
                                    const EnvironmentHandler& onSuccess, const Failure& onError);
    static bool ResumeStoredSignIn();

    void ChoosePlaybackObjectAfterSigningOut(const DataTypes::Auth::PlaybackObject& object, Done onSuccess,
                                             Failure onError);
    // Stops the player, drops the stored sign-in, configuration, media and settings,
    // and lets go of this environment.
    void ClearEnvironment();
    // Clears this environment, if it is still there, and then calls `onSuccess`.
    Done ClearThen(Done onSuccess);
    void ReleasePlayerAfterSignInRefused();
    void StopListeningToConnection();
    void UpdateTimerFired();
    void StartPlayerTimerFired();
    // Compares the clocks after each reply that showed the server's, and says so
    // once when the device time goes wrong and once when it is right again.
    void CheckDeviceTime();
    void HandleTrackStarted(const DataTypes::Playback::Track& track, int volume, bool resumed);
    void SendPendingReport();
    // Reads the stored configuration and hands it to the player, if there is one.
    bool HandStoredConfigurationToPlayer();

    std::shared_ptr<Networking::ServerConnection> connection;
    std::string login;
    std::string password;
    std::shared_ptr<ContentPlaying::Player> player;
    QTimer updateTimer;
    QTimer startPlayerTimer;
    QTimer reportTimer;
    Statistics::Report pendingReport;
    std::vector<PlaybackConfigurationUpdatedObserver*> configurationObservers;
    UnauthorizedErrorListener* unauthorizedListener = nullptr;
    ObjectExportedErrorListener* objectExportedListener = nullptr;
    ReachabilityHandler reachabilityHandler;
    DeviceTimeHandler deviceTimeHandler;
    bool deviceTimeWrong = false;
    // The sign-in as stored, for the account screens without a trip to the disk.
    DataTypes::Auth::PlaybackObject playbackObject;
    // The server refused this sign-in: nothing more is asked with its token, and
    // the listener has been told once.
    bool signInRefused = false;
};

} // namespace Core
