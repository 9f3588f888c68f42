#pragma once

#include "core/data_types/auth/business_type.h"
#include "core/data_types/auth/music_style.h"
#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/data_types/network_error.h"
#include "core/data_types/playback/like_status.h"
#include "core/data_types/playback/playback_configuration.h"
#include "core/data_types/playlists/playlist.h"
#include "core/data_types/playlists/playlist_content_type.h"
#include "core/data_types/playlists/playlists_settings.h"
#include "core/data_types/playlists/recommended_playlist.h"
#include "core/data_types/playlists/track.h"
#include "core/networking/host_checker.h"
#include "core/networking/like_action.h"
#include "core/networking/object_exported_error_listener.h"
#include "core/networking/unauthorized_error_listener.h"
#include "core/statistics/report.h"

#include <QByteArray>
#include <QNetworkRequest>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class QNetworkAccessManager;
class QNetworkReply;

namespace Core::Networking {

// The client of the service's REST API. Builds each request from the chosen
// server, the signed-in playback object's code and the token, sends it on an
// access manager of its own, sorts the reply into a transport failure, an
// unreadable reply, an API error or a success, and calls exactly one of the two
// callbacks later, on the thread that owns the connection (the GUI thread).
//
// Failures always arrive as a NetworkError (possibly an ApiError or a
// JsonDeserializationError). Nothing is retried here: each call sends one request
// and callers decide whether to try again.
//
// A reply may outlive the connection that sent it (sign-in runs on a temporary
// connection); its callbacks are still called, but the listeners are no longer
// told once the connection is gone.
//
// The token travels only in the "token" header and is never written to the event
// log or the console.
class ServerConnection
{
public:
    using Failure = std::function<void(std::shared_ptr<DataTypes::NetworkError>)>;
    using Success = std::function<void()>;

    // When set (even to nothing), replaces the build's API host for the servers
    // list, e.g. "127.0.0.1:8091": a local or staging service, and the tests.
    static constexpr const char* ApiHostEnvironmentVariable = "ZELMAR_API_HOST";
    // Authorized requests and account deletion give up after this long.
    static constexpr int AuthorizedTransferTimeoutMs = 30000;

    ServerConnection();
    explicit ServerConnection(const DataTypes::Auth::Server& server);
    ServerConnection(const DataTypes::Auth::Server& server, const DataTypes::Auth::PlaybackObject& object,
                     const std::string& token);
    ~ServerConnection();

    ServerConnection(const ServerConnection&) = delete;
    ServerConnection& operator=(const ServerConnection&) = delete;

    std::shared_ptr<DataTypes::Auth::Server> GetServer() const;
    void SetPlaybackObjectAndToken(const DataTypes::Auth::PlaybackObject& object, const std::string& token);
    // Not owned; null switches the notification off. The listener must outlive the
    // connection or be unset first.
    void SetUnathorizedErrorListener(UnauthorizedErrorListener* listener);
    void SetObjectExportedErrorListener(ObjectExportedErrorListener* listener);
    // Called with every reply of this connection's requests: true when the server
    // answered at all (an error status or a refusal is still an answer), false when
    // the transfer failed for want of a connection. Empty switches it off.
    void SetReachabilityHandler(std::function<void(bool answered)> handler);

    // The server's clock as one reply showed it: the instant its "Date" header
    // names and what the local clock read when the reply arrived. The protocol
    // carries no time of its own, so this is the only way to learn whether the
    // computer's clock, which the schedule runs on, is right.
    struct ServerClockReading
    {
        std::int64_t serverMSecsSinceEpoch = 0;
        std::int64_t localMSecsSinceEpoch = 0;
    };
    // From the latest reply of this connection's requests whose "Date" header could
    // be read; empty until one arrived.
    std::optional<ServerClockReading> LastServerClockReading() const;
    // Called with each new reading, before the request's own callbacks. Empty
    // switches it off.
    void SetServerClockHandler(std::function<void(const ServerClockReading&)> handler);
    // An HTTP date in any of its three forms ("Sun, 06 Nov 1994 08:49:37 GMT", the
    // obsolete "Sunday, 06-Nov-94 08:49:37 GMT" and "Sun Nov  6 08:49:37 1994"),
    // as milliseconds since the epoch; empty for anything else.
    static std::optional<std::int64_t> MSecsSinceEpochFromHttpDate(const QByteArray& text);

    // The servers the player can work with, from the service's public API host
    // (see ApiHostEnvironmentVariable). Needs no server; fails at once with a
    // NetworkError when the build names no API host.
    static void Servers(std::function<void(std::vector<std::shared_ptr<DataTypes::Auth::Server>>)> success,
                        Failure failure, bool english = false, bool useHttp = false);

    // Whether the server's host name resolves; no request is sent.
    void CheckServerAvailable(Success success, Failure failure);

    // Sign-in family (plain URLs, no token, no transfer timeout).
    void SendConfirmationCode(const std::string& phone, std::function<void(std::string)> success,
                              Failure failure);
    void
    BusinessTypes(std::function<void(std::vector<std::shared_ptr<DataTypes::Auth::BusinessType>>)> success,
                  Failure failure);
    void MusicStyles(std::function<void(std::vector<std::shared_ptr<DataTypes::Auth::MusicStyle>>)> success,
                     Failure failure);
    void PlaybackObjects(
        const std::string& login, const std::string& password,
        std::function<void(std::vector<std::shared_ptr<DataTypes::Auth::PlaybackObject>>)> success,
        Failure failure);
    // `success` receives the token.
    void SignIn(const std::string& login, const std::string& password,
                const DataTypes::Auth::PlaybackObject& object, std::function<void(std::string)> success,
                Failure failure);
    // `success` receives the new account's playback object and token.
    void SignUp(const std::string& phone, const std::string& city,
                std::function<void(std::shared_ptr<DataTypes::Auth::PlaybackObject>, std::string)> success,
                Failure failure);

    // Authorized requests (the object's code in the URL, the token in a header).
    void PlaybackConfigurationVersion(std::function<void(long)> success, Failure failure);
    void GetPlaybackConfiguration(
        std::function<void(std::shared_ptr<DataTypes::Playback::PlaybackConfiguration>)> success,
        Failure failure);
    void SendPlayerVersion(const std::string& version, const std::string& os, const std::string& platformInfo,
                           Success success, Failure failure);
    void RecommendedPlaylists(
        const DataTypes::Auth::BusinessType& businessType, const DataTypes::Auth::MusicStyle& musicStyle,
        std::function<void(std::vector<std::shared_ptr<DataTypes::Playlists::RecommendedPlaylist>>)> success,
        Failure failure);
    void SetBusinessType(const DataTypes::Auth::BusinessType& businessType, Success success, Failure failure);
    void SetMusicStyles(const std::vector<std::shared_ptr<DataTypes::Auth::MusicStyle>>& musicStyles,
                        Success success, Failure failure);
    void Playlists(const DataTypes::Playlists::PlaylistContentType& type,
                   std::function<void(std::vector<std::shared_ptr<DataTypes::Playlists::Playlist>>)> success,
                   Failure failure);
    void
    TracksOfPlaylist(const DataTypes::Playlists::PlaylistContentType& type,
                     const DataTypes::Playlists::Playlist& playlist,
                     std::function<void(std::shared_ptr<std::vector<DataTypes::Playlists::Track>>)> success,
                     Failure failure);
    void LoadPlaylistsSettings(
        std::function<void(std::shared_ptr<DataTypes::Playlists::PlaylistsSettings>)> success,
        Failure failure);
    void SetPlaylistAsActive(const DataTypes::Playlists::PlaylistContentType& type,
                             const DataTypes::Playlists::Playlist& playlist, Success success,
                             Failure failure);
    void SetPlaylistAsActiveForPeriods(const DataTypes::Playlists::PlaylistContentType& type,
                                       const DataTypes::Playlists::Playlist& playlist, bool morning, bool day,
                                       bool evening, bool night, Success success, Failure failure);
    void DeactivatePlaylist(const DataTypes::Playlists::PlaylistContentType& type,
                            const DataTypes::Playlists::Playlist& playlist, Success success, Failure failure);
    // `success` receives the certificate document's URL.
    void LoadCertificate(std::function<void(std::string)> success, Failure failure);
    void SendStatistics(const std::vector<Statistics::Report>& reports, Success success, Failure failure);
    void SendLikeAction(long trackId, LikeAction action,
                        std::function<void(DataTypes::Playback::LikeStatus)> success, Failure failure);
    void SignOut(Success success, Failure failure);
    void DeleteAccount(Success success, Failure failure);

    // Request building, public so that what every request carries can be checked.
    // A plain request: form content type, no token, no transfer timeout.
    QNetworkRequest CreateRequestForUrl(const std::string& url) const;
    // An authorized request: form content type, "token" header, 30 s transfer timeout.
    QNetworkRequest CreateAuthorizedRequestForUrl(const std::string& url) const;
    static std::string LangGetParam();
    // "timestamp=" and the current Unix time in whole seconds.
    static std::string CurrentTimeStampUrlParam();
    // The server's error codes in the user's words; "Неизвестная ошибка" for any other.
    static std::string ErrorMessageFromCode(int code);
    std::shared_ptr<DataTypes::NetworkError> CreateServerIsNotSetError() const;

private:
    struct Listeners;
    // Form items in the order they are sent; names and values are percent-encoded
    // completely, so "+" in a phone number reaches the server as a plus.
    using FormItems = std::vector<std::pair<QString, QString>>;
    using BodyHandler = std::function<void(const QString& body)>;

    static QByteArray FormBody(const FormItems& items);
    static QNetworkAccessManager* CreateNetworkAccessManager();
    static std::shared_ptr<DataTypes::NetworkError>
    NetworkErrorFromReply(QNetworkReply* reply, const QString& body, const Listeners* listeners);
    // Remembers the server's clock from the reply's "Date" header, when it has one.
    static void NoteServerClock(const QNetworkReply* reply, Listeners& heard);
    // Calls `failure` with `error` on the next pass of the event loop.
    static void FailLater(Failure failure, std::shared_ptr<DataTypes::NetworkError> error);

    std::string PlainUrl(const std::string& path) const;
    std::string AuthorizedUrl(const std::string& path) const;
    // True when a server is chosen; otherwise answers `failure` with the
    // server-not-set error and the caller sends nothing.
    bool HasServerOrFail(const Failure& failure) const;

    // Sends the request; on a classified success hands the body to `onBody`.
    void Get(const QNetworkRequest& request, BodyHandler onBody, Failure failure) const;
    void Post(const QNetworkRequest& request, const QByteArray& body, BodyHandler onBody,
              Failure failure) const;
    void Send(const QByteArray& verb, const QNetworkRequest& request, const QByteArray& body,
              BodyHandler onBody, Failure failure) const;
    void PostAuthorizedForm(const std::string& path, const FormItems& items, Success success,
                            Failure failure) const;

    std::string objectCode;
    std::string token;
    std::shared_ptr<DataTypes::Auth::Server> server;
    HostChecker hostChecker;
    std::shared_ptr<Listeners> listeners;
};

} // namespace Core::Networking
