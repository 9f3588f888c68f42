#include "core/networking/server_connection.h"

#include "core/data_types/api_error.h"
#include "core/data_types/json_deserialization_error.h"
#include "core/networking/json_converter.h"
#include "core/utilities/clock.h"
#include "core/utilities/logger.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QSslError>
#include <QTimer>
#include <QUrl>

#include <map>

#ifndef ZELMAR_API_HOST
#define ZELMAR_API_HOST ""
#endif

namespace Core::Networking {

using DataTypes::ApiError;
using DataTypes::JsonDeserializationError;
using DataTypes::NetworkError;

namespace {

const char* const NoConnectionMessage = "Отсутствует связь с сервером";
const char* const FormContentType = "application/x-www-form-urlencoded";
const char* const JsonContentType = "application/json";

// Qt numbers connection-level failures (refused, host not found, timeout, TLS)
// below 100; proxy, content, protocol and HTTP status errors above.
constexpr int LastConnectionErrorCode = 99;

// What a reply handler gets: the reply (for its error) and its body as text, cut
// at the first zero byte.
using ReplyHandler = std::function<void(QNetworkReply* reply, const QString& body)>;

std::string ApiHost()
{
    // Set, even to nothing, it wins over the build's host.
    if (qEnvironmentVariableIsSet(ServerConnection::ApiHostEnvironmentVariable)) {
        return qgetenv(ServerConnection::ApiHostEnvironmentVariable).toStdString();
    }
    return ZELMAR_API_HOST;
}

// Where a request went, for the event log: the address without its query, which
// is all support needs to tell one server or endpoint from another.
std::string Destination(const QNetworkReply* reply)
{
    return reply->url().toString(QUrl::RemoveQuery | QUrl::RemoveUserInfo).toStdString();
}

// A failure of the transfer itself, or null when a reply arrived.
std::shared_ptr<NetworkError> TransportError(const QNetworkReply* reply)
{
    if (reply->error() == QNetworkReply::NoError) {
        return nullptr;
    }
    if (reply->error() <= LastConnectionErrorCode) {
        // The user only reads "no connection"; the reason is for support.
        Utilities::Logger::Log(std::string(NoConnectionMessage) + " (" + Destination(reply) +
                               "): " + reply->errorString().toStdString());
        return std::make_shared<NetworkError>(NoConnectionMessage);
    }
    return std::make_shared<NetworkError>(reply->errorString().toStdString());
}

// One access manager per request, deleted once its reply has been handled, so a
// request never depends on the connection object that sent it.
void SendRequest(QNetworkAccessManager* manager, const QByteArray& verb, const QNetworkRequest& request,
                 const QByteArray& body, ReplyHandler handler)
{
    QObject::connect(manager, &QNetworkAccessManager::sslErrors, manager,
                     [](QNetworkReply* reply, const QList<QSslError>& errors) {
                         for (const QSslError& error : errors) {
                             Utilities::Logger::Log("Ошибка проверки сертификата сервера " +
                                                    Destination(reply) + ": " +
                                                    error.errorString().toStdString());
                         }
                     });
    QObject::connect(manager, &QNetworkAccessManager::finished, manager,
                     [manager, handler = std::move(handler)](QNetworkReply* reply) {
                         const QByteArray bytes = reply->readAll();
                         const QString text = QString::fromUtf8(bytes.constData());
                         handler(reply, text);
                         reply->deleteLater();
                         manager->deleteLater();
                     });
    if (verb == "GET") {
        manager->get(request);
    } else {
        manager->post(request, body);
    }
}

// The JSON texts of the sign-in family are put together by hand, values unescaped,
// because the server reads exactly these bytes.
std::string QuotedMember(const std::string& key, const std::string& value)
{
    return "\"" + key + "\":\"" + value + "\"";
}

} // namespace

struct ServerConnection::Listeners
{
    UnauthorizedErrorListener* unauthorized = nullptr;
    ObjectExportedErrorListener* objectExported = nullptr;
    std::function<void(bool)> reachability;
    std::function<void(const ServerClockReading&)> serverClockHandler;
    // Written by the replies in flight, which share this with the connection.
    std::optional<ServerClockReading> serverClock;
};

ServerConnection::ServerConnection()
    : listeners(std::make_shared<Listeners>())
{
}

ServerConnection::ServerConnection(const DataTypes::Auth::Server& chosenServer)
    : server(std::make_shared<DataTypes::Auth::Server>(chosenServer))
    , listeners(std::make_shared<Listeners>())
{
}

ServerConnection::ServerConnection(const DataTypes::Auth::Server& chosenServer,
                                   const DataTypes::Auth::PlaybackObject& object,
                                   const std::string& signInToken)
    : objectCode(object.code)
    , token(signInToken)
    , server(std::make_shared<DataTypes::Auth::Server>(chosenServer))
    , listeners(std::make_shared<Listeners>())
{
}

ServerConnection::~ServerConnection()
{
    // Replies still in flight keep the listener slots alive; empty them so that a
    // late answer cannot reach a listener that went away with this connection.
    listeners->unauthorized = nullptr;
    listeners->objectExported = nullptr;
}

std::shared_ptr<DataTypes::Auth::Server> ServerConnection::GetServer() const
{
    return server;
}

void ServerConnection::SetPlaybackObjectAndToken(const DataTypes::Auth::PlaybackObject& object,
                                                 const std::string& signInToken)
{
    objectCode = object.code;
    token = signInToken;
}

void ServerConnection::SetUnathorizedErrorListener(UnauthorizedErrorListener* listener)
{
    listeners->unauthorized = listener;
}

void ServerConnection::SetObjectExportedErrorListener(ObjectExportedErrorListener* listener)
{
    listeners->objectExported = listener;
}

void ServerConnection::SetReachabilityHandler(std::function<void(bool)> handler)
{
    listeners->reachability = std::move(handler);
}

std::optional<ServerConnection::ServerClockReading> ServerConnection::LastServerClockReading() const
{
    return listeners->serverClock;
}

void ServerConnection::SetServerClockHandler(std::function<void(const ServerClockReading&)> handler)
{
    listeners->serverClockHandler = std::move(handler);
}

std::optional<std::int64_t> ServerConnection::MSecsSinceEpochFromHttpDate(const QByteArray& text)
{
    static const QStringList months = {QStringLiteral("Jan"), QStringLiteral("Feb"), QStringLiteral("Mar"),
                                       QStringLiteral("Apr"), QStringLiteral("May"), QStringLiteral("Jun"),
                                       QStringLiteral("Jul"), QStringLiteral("Aug"), QStringLiteral("Sep"),
                                       QStringLiteral("Oct"), QStringLiteral("Nov"), QStringLiteral("Dec")};
    // Day, month name, year, hours, minutes, seconds, in each form's own order.
    static const QRegularExpression fixed(
        QStringLiteral(R"(^[A-Z][a-z]{2}, (\d{2}) ([A-Z][a-z]{2}) (\d{4}) (\d{2}):(\d{2}):(\d{2}) GMT$)"));
    static const QRegularExpression rfc850(
        QStringLiteral(R"(^[A-Z][a-z]{5,8}, (\d{2})-([A-Z][a-z]{2})-(\d{2}) (\d{2}):(\d{2}):(\d{2}) GMT$)"));
    static const QRegularExpression asctime(
        QStringLiteral(R"(^[A-Z][a-z]{2} ([A-Z][a-z]{2}) {1,2}(\d{1,2}) (\d{2}):(\d{2}):(\d{2}) (\d{4})$)"));

    const QString value = QString::fromLatin1(text).trimmed();
    int day = 0;
    QString month;
    int year = 0;
    QStringList clock;
    if (const auto current = fixed.match(value); current.hasMatch()) {
        day = current.captured(1).toInt();
        month = current.captured(2);
        year = current.captured(3).toInt();
        clock = QStringList{current.captured(4), current.captured(5), current.captured(6)};
    } else if (const auto obsolete = rfc850.match(value); obsolete.hasMatch()) {
        day = obsolete.captured(1).toInt();
        month = obsolete.captured(2);
        // A two-digit year more than 50 years ahead is the latest such year past.
        const int thisYear = Utilities::Clock::CurrentLocalDateTime().date().year();
        year = thisYear / 100 * 100 + obsolete.captured(3).toInt();
        if (year > thisYear + 50) {
            year -= 100;
        }
        clock = QStringList{obsolete.captured(4), obsolete.captured(5), obsolete.captured(6)};
    } else if (const auto ansiC = asctime.match(value); ansiC.hasMatch()) {
        month = ansiC.captured(1);
        day = ansiC.captured(2).toInt();
        clock = QStringList{ansiC.captured(3), ansiC.captured(4), ansiC.captured(5)};
        year = ansiC.captured(6).toInt();
    } else {
        return std::nullopt;
    }
    const QDate date(year, months.indexOf(month) + 1, day);
    const QTime time(clock.at(0).toInt(), clock.at(1).toInt(), clock.at(2).toInt());
    if (!date.isValid() || !time.isValid()) {
        return std::nullopt;
    }
    return QDateTime(date, time, Qt::UTC).toMSecsSinceEpoch();
}

void ServerConnection::Servers(
    std::function<void(std::vector<std::shared_ptr<DataTypes::Auth::Server>>)> success, Failure failure,
    bool english, bool useHttp)
{
    const std::string host = ApiHost();
    if (host.empty()) {
        FailLater(std::move(failure),
                  std::make_shared<NetworkError>("Адрес сервиса не задан: список серверов недоступен"));
        return;
    }
    const std::string url = std::string(useHttp ? "http://" : "https://") + host +
                            "/api/player/legacy/v1/auth/servers" + (english ? "?lang=en" : "");
    QNetworkRequest request{QUrl(QString::fromStdString(url))};
    // The list is read whatever it holds: only a transport failure is an error here.
    SendRequest(CreateNetworkAccessManager(), "GET", request, QByteArray(),
                [success = std::move(success), failure = std::move(failure)](QNetworkReply* reply,
                                                                             const QString& body) {
                    if (auto error = TransportError(reply)) {
                        if (failure) {
                            failure(error);
                        }
                        return;
                    }
                    if (success) {
                        success(JsonConverter::ServersFromResponse(body));
                    }
                });
}

void ServerConnection::CheckServerAvailable(Success success, Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    hostChecker.CheckHostAvailability(server->url, std::move(success), [failure = std::move(failure)] {
        if (failure) {
            failure(std::make_shared<NetworkError>(NoConnectionMessage));
        }
    });
}

void ServerConnection::SendConfirmationCode(const std::string& phone,
                                            std::function<void(std::string)> success, Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    const FormItems form = {{QStringLiteral("phone"), QString::fromStdString(phone)},
                            {QStringLiteral("lang"), QStringLiteral("ru")}};
    Post(
        CreateRequestForUrl(PlainUrl("auth/send_confirmation_code")), FormBody(form),
        [success = std::move(success)](const QString& body) {
            if (success) {
                success(JsonConverter::ConfirmationCodeFromResponse(body));
            }
        },
        std::move(failure));
}

void ServerConnection::BusinessTypes(
    std::function<void(std::vector<std::shared_ptr<DataTypes::Auth::BusinessType>>)> success, Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    Get(
        CreateRequestForUrl(PlainUrl("auth/business_types?" + LangGetParam())),
        [success = std::move(success)](const QString& body) {
            if (success) {
                success(JsonConverter::BusinessTypesFromResponse(body));
            }
        },
        std::move(failure));
}

void ServerConnection::MusicStyles(
    std::function<void(std::vector<std::shared_ptr<DataTypes::Auth::MusicStyle>>)> success, Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    Get(
        CreateRequestForUrl(PlainUrl("auth/music_styles?" + LangGetParam())),
        [success = std::move(success)](const QString& body) {
            if (success) {
                success(JsonConverter::MusicStylesFromResponse(body));
            }
        },
        std::move(failure));
}

void ServerConnection::PlaybackObjects(
    const std::string& login, const std::string& password,
    std::function<void(std::vector<std::shared_ptr<DataTypes::Auth::PlaybackObject>>)> success,
    Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    const std::string json =
        "{" + QuotedMember("login", login) + "," + QuotedMember("password", password) + "}";
    QNetworkRequest request = CreateRequestForUrl(PlainUrl("auth/objects"));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray(JsonContentType));
    Post(
        request, QByteArray::fromStdString(json),
        [success = std::move(success)](const QString& body) {
            if (success) {
                success(JsonConverter::PlaybackObjectsFromResponse(body));
            }
        },
        std::move(failure));
}

void ServerConnection::SignIn(const std::string& login, const std::string& password,
                              const DataTypes::Auth::PlaybackObject& object,
                              std::function<void(std::string)> success, Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    const QByteArray json = QByteArray::fromStdString("{" + QuotedMember("login", login) + "," +
                                                      QuotedMember("password", password) + ", " +
                                                      QuotedMember("code", object.code) + "}");
    QNetworkRequest request = CreateRequestForUrl(PlainUrl("auth/sign_in"));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray(JsonContentType));
    request.setRawHeader("Content-Length", QByteArray::number(json.size()));
    Post(
        request, json,
        [success = std::move(success)](const QString& body) {
            if (success) {
                success(JsonConverter::TokenFromResponse(body));
            }
        },
        std::move(failure));
}

void ServerConnection::SignUp(
    const std::string& phone, const std::string& city,
    std::function<void(std::shared_ptr<DataTypes::Auth::PlaybackObject>, std::string)> success,
    Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    const FormItems form = {{QStringLiteral("phone"), QString::fromStdString(phone)},
                            {QStringLiteral("city"), QString::fromStdString(city)},
                            {QStringLiteral("lang"), QStringLiteral("ru")}};
    Post(
        CreateRequestForUrl(PlainUrl("auth/sign_up")), FormBody(form),
        [success = std::move(success)](const QString& body) {
            if (success) {
                success(JsonConverter::PlaybackObjectFromResponse(body),
                        JsonConverter::TokenFromResponse(body));
            }
        },
        std::move(failure));
}

void ServerConnection::PlaybackConfigurationVersion(std::function<void(long)> success, Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    Get(
        CreateAuthorizedRequestForUrl(AuthorizedUrl("/playback/version?" + CurrentTimeStampUrlParam())),
        [success = std::move(success)](const QString& body) {
            if (success) {
                success(JsonConverter::PlaybackConfigurationVersionFromResponse(body));
            }
        },
        std::move(failure));
}

void ServerConnection::GetPlaybackConfiguration(
    std::function<void(std::shared_ptr<DataTypes::Playback::PlaybackConfiguration>)> success, Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    Get(
        CreateAuthorizedRequestForUrl(
            AuthorizedUrl("/playback/configuration_v2?" + CurrentTimeStampUrlParam() + "&" + LangGetParam())),
        [success = std::move(success)](const QString& body) {
            if (success) {
                success(JsonConverter::PlaybackConfigurationFromResponse(body));
            }
        },
        std::move(failure));
}

void ServerConnection::SendPlayerVersion(const std::string& version, const std::string& os,
                                         const std::string& platformInfo, Success success, Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    PostAuthorizedForm("/player_version",
                       {{QStringLiteral("version"), QString::fromStdString(version)},
                        {QStringLiteral("os"), QString::fromStdString(os)},
                        {QStringLiteral("platform_info"), QString::fromStdString(platformInfo)}},
                       std::move(success), std::move(failure));
}

void ServerConnection::RecommendedPlaylists(
    const DataTypes::Auth::BusinessType& businessType, const DataTypes::Auth::MusicStyle& musicStyle,
    std::function<void(std::vector<std::shared_ptr<DataTypes::Playlists::RecommendedPlaylist>>)> success,
    Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    Get(
        CreateAuthorizedRequestForUrl(
            AuthorizedUrl("/playlists/recommended?business_type_id=" + std::to_string(businessType.id) +
                          "&music_style_id=" + std::to_string(musicStyle.id))),
        [success = std::move(success)](const QString& body) {
            if (success) {
                success(JsonConverter::RecommendedPlaylistsFromResponse(body));
            }
        },
        std::move(failure));
}

void ServerConnection::SetBusinessType(const DataTypes::Auth::BusinessType& businessType, Success success,
                                       Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    PostAuthorizedForm("/set_business_type",
                       {{QStringLiteral("business_type_id"), QString::number(businessType.id)}},
                       std::move(success), std::move(failure));
}

void ServerConnection::SetMusicStyles(
    const std::vector<std::shared_ptr<DataTypes::Auth::MusicStyle>>& musicStyles, Success success,
    Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    QJsonArray ids;
    for (const auto& style : musicStyles) {
        if (style) {
            ids.append(style->id);
        }
    }
    PostAuthorizedForm("/set_music_styles",
                       {{QStringLiteral("music_styles"), QString::fromUtf8(QJsonDocument(ids).toJson())}},
                       std::move(success), std::move(failure));
}

void ServerConnection::Playlists(
    const DataTypes::Playlists::PlaylistContentType& type,
    std::function<void(std::vector<std::shared_ptr<DataTypes::Playlists::Playlist>>)> success,
    Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    // Only the stock catalogue has names in several languages.
    const bool stock = type == DataTypes::Playlists::PlaylistContentType::StockMusic;
    Get(
        CreateAuthorizedRequestForUrl(AuthorizedUrl("/playlists/" +
                                                    DataTypes::Playlists::PlaylistContentTypeToString(type) +
                                                    (stock ? "?" + LangGetParam() : std::string()))),
        [success = std::move(success)](const QString& body) {
            if (success) {
                success(JsonConverter::PlaylistsFromResponse(body));
            }
        },
        std::move(failure));
}

void ServerConnection::TracksOfPlaylist(
    const DataTypes::Playlists::PlaylistContentType& type, const DataTypes::Playlists::Playlist& playlist,
    std::function<void(std::shared_ptr<std::vector<DataTypes::Playlists::Track>>)> success, Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    Get(
        CreateAuthorizedRequestForUrl(AuthorizedUrl("/playlists/" +
                                                    DataTypes::Playlists::PlaylistContentTypeToString(type) +
                                                    "/" + std::to_string(playlist.id))),
        [success = std::move(success)](const QString& body) {
            if (success) {
                success(JsonConverter::TracksFromResponse(body));
            }
        },
        std::move(failure));
}

void ServerConnection::LoadPlaylistsSettings(
    std::function<void(std::shared_ptr<DataTypes::Playlists::PlaylistsSettings>)> success, Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    Get(
        CreateAuthorizedRequestForUrl(AuthorizedUrl("/playlists/settings")),
        [success = std::move(success)](const QString& body) {
            if (success) {
                success(JsonConverter::PlaylistsSettingsFromResponse(body));
            }
        },
        std::move(failure));
}

void ServerConnection::SetPlaylistAsActive(const DataTypes::Playlists::PlaylistContentType& type,
                                           const DataTypes::Playlists::Playlist& playlist, Success success,
                                           Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    PostAuthorizedForm("/playlists/" + DataTypes::Playlists::PlaylistContentTypeToString(type) + "/" +
                           std::to_string(playlist.id) + "/activate",
                       {}, std::move(success), std::move(failure));
}

void ServerConnection::SetPlaylistAsActiveForPeriods(const DataTypes::Playlists::PlaylistContentType& type,
                                                     const DataTypes::Playlists::Playlist& playlist,
                                                     bool morning, bool day, bool evening, bool night,
                                                     Success success, Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    const auto flag = [](bool value) {
        return value ? QStringLiteral("true") : QStringLiteral("false");
    };
    PostAuthorizedForm("/playlists/" + DataTypes::Playlists::PlaylistContentTypeToString(type) + "/" +
                           std::to_string(playlist.id) + "/activate",
                       {{QStringLiteral("morning"), flag(morning)},
                        {QStringLiteral("day"), flag(day)},
                        {QStringLiteral("evening"), flag(evening)},
                        {QStringLiteral("night"), flag(night)}},
                       std::move(success), std::move(failure));
}

void ServerConnection::DeactivatePlaylist(const DataTypes::Playlists::PlaylistContentType& type,
                                          const DataTypes::Playlists::Playlist& playlist, Success success,
                                          Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    PostAuthorizedForm("/playlists/" + DataTypes::Playlists::PlaylistContentTypeToString(type) + "/" +
                           std::to_string(playlist.id) + "/deactivate",
                       {}, std::move(success), std::move(failure));
}

void ServerConnection::LoadCertificate(std::function<void(std::string)> success, Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    Get(
        CreateAuthorizedRequestForUrl(AuthorizedUrl("/certificate?" + LangGetParam())),
        [success = std::move(success)](const QString& body) {
            if (success) {
                success(JsonConverter::CertificateUrlFromResponse(body));
            }
        },
        std::move(failure));
}

void ServerConnection::SendStatistics(const std::vector<Statistics::Report>& reports, Success success,
                                      Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    QJsonArray array;
    for (const auto& report : reports) {
        array.append(QJsonObject{{QStringLiteral("volume"), report.volume},
                                 {QStringLiteral("type"), QString::fromStdString(report.type)},
                                 {QStringLiteral("time"), QString::fromStdString(report.time)},
                                 {QStringLiteral("date"), QString::fromStdString(report.date)},
                                 {QStringLiteral("track_id"), report.track_id},
                                 {QStringLiteral("shop_id"), report.shop_id}});
    }
    QNetworkRequest request = CreateAuthorizedRequestForUrl(AuthorizedUrl("/statistics"));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray(JsonContentType));
    Post(
        request, QJsonDocument(array).toJson(QJsonDocument::Compact),
        [success = std::move(success)](const QString&) {
            if (success) {
                success();
            }
        },
        std::move(failure));
}

void ServerConnection::SendLikeAction(long trackId, LikeAction action,
                                      std::function<void(DataTypes::Playback::LikeStatus)> success,
                                      Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    const FormItems form = {{QStringLiteral("value"), QString::number(static_cast<int>(action))},
                            {QStringLiteral("track_id"), QString::number(trackId)}};
    Post(
        CreateAuthorizedRequestForUrl(AuthorizedUrl("/likes_dislikes")), FormBody(form),
        [success = std::move(success)](const QString& body) {
            if (success) {
                success(JsonConverter::LikeStatusFromResponse(body));
            }
        },
        std::move(failure));
}

void ServerConnection::SignOut(Success success, Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    PostAuthorizedForm("/sign_out", {}, std::move(success), std::move(failure));
}

void ServerConnection::DeleteAccount(Success success, Failure failure)
{
    if (!HasServerOrFail(failure)) {
        return;
    }
    // Account deletion lives beside the sign-in family, without the object's code,
    // yet it needs the token and the timeout of an authorized request.
    QNetworkRequest request = CreateRequestForUrl(PlainUrl("/delete_account"));
    request.setTransferTimeout(AuthorizedTransferTimeoutMs);
    request.setRawHeader("token", QByteArray::fromStdString(token));
    Get(
        request,
        [success = std::move(success)](const QString&) {
            if (success) {
                success();
            }
        },
        std::move(failure));
}

QNetworkRequest ServerConnection::CreateRequestForUrl(const std::string& url) const
{
    QNetworkRequest request{QUrl(QString::fromStdString(url))};
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray(FormContentType));
    return request;
}

QNetworkRequest ServerConnection::CreateAuthorizedRequestForUrl(const std::string& url) const
{
    QNetworkRequest request = CreateRequestForUrl(url);
    request.setTransferTimeout(AuthorizedTransferTimeoutMs);
    request.setRawHeader("token", QByteArray::fromStdString(token));
    return request;
}

std::string ServerConnection::LangGetParam()
{
    return "lang=ru";
}

std::string ServerConnection::CurrentTimeStampUrlParam()
{
    return "timestamp=" + std::to_string(Utilities::Clock::CurrentSecsSinceEpoch());
}

std::string ServerConnection::ErrorMessageFromCode(int code)
{
    static const std::map<int, std::string> messages = {
        {400000, "Неправильно построенный запрос"},
        {401000, "Неправильный логин или пароль"},
        {401001, "Не указан токен авторизации"},
        {403000, "Пользователь с таким номером уже существует"},
        {403001, "Управление из плеера запрещено"},
        {403002, "Неправильный номер телефона"},
        {403003, "Аккаунт заблокирован"},
        {403005, "Включены расширенные настройки плейлистов"},
        {403006, "Расширенные настройки плейлистов выключены"},
        {403007, "Поток не доступен"},
        {403008, "Сертификат не доступен"},
        {403010, "Неверный токен авторизации"},
        {403011, "Слишком частая отправка"},
        {403012, "Плеер на объекте уже запущен"},
        {403013, "На объекте включена выгрузка"},
        {404000, "URL не найден"},
        {404001, "Объект воспроизведения не найден"},
        {404002, "Пользователь не найден"},
        {404003, "Тип бизнеса не найден"},
        {404004, "Музыкальный стиль не найден"},
        {404005, "Плейлист не найден"},
        {404006, "Канал не найден"},
        {404007, "Текущий интервал не найден"},
        {500000, "Ошибка на сервере"},
    };
    const auto found = messages.find(code);
    return found == messages.end() ? "Неизвестная ошибка" : found->second;
}

std::shared_ptr<NetworkError> ServerConnection::CreateServerIsNotSetError() const
{
    return std::make_shared<NetworkError>("Сервер не выбран");
}

QByteArray ServerConnection::FormBody(const FormItems& items)
{
    QByteArray body;
    for (const auto& [name, value] : items) {
        if (!body.isEmpty()) {
            body += '&';
        }
        body += QUrl::toPercentEncoding(name) + '=' + QUrl::toPercentEncoding(value);
    }
    return body;
}

QNetworkAccessManager* ServerConnection::CreateNetworkAccessManager()
{
    return new QNetworkAccessManager();
}

std::shared_ptr<NetworkError>
ServerConnection::NetworkErrorFromReply(QNetworkReply* reply, const QString& body, const Listeners* heard)
{
    if (auto error = TransportError(reply)) {
        return error;
    }

    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(body.toUtf8(), &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        return std::make_shared<JsonDeserializationError>(parseError.errorString().toStdString());
    }
    const QJsonObject object = document.object();
    if (!object.contains(QStringLiteral("success"))) {
        return std::make_shared<JsonDeserializationError>("Response json doesn't containt \"success\" key");
    }
    if (object.value(QStringLiteral("success")).toBool(false)) {
        return nullptr;
    }

    const int code = object.value(QStringLiteral("error")).toInt(0);
    auto error = std::make_shared<ApiError>(ErrorMessageFromCode(code), code);
    if (heard && heard->unauthorized) {
        if (code == ApiError::AccountIsBlockedCode) {
            heard->unauthorized->OnAccountIsBlockedError();
        } else if (code == ApiError::WrongTokenCode) {
            heard->unauthorized->OnWrongTokenError();
        }
    }
    if (heard && heard->objectExported && code == ApiError::ObjectExportedCode) {
        heard->objectExported->OnObjectExportedError();
    }
    return error;
}

void ServerConnection::FailLater(Failure failure, std::shared_ptr<NetworkError> error)
{
    if (!failure) {
        return;
    }
    QTimer::singleShot(0, [failure = std::move(failure), error = std::move(error)] { failure(error); });
}

std::string ServerConnection::PlainUrl(const std::string& path) const
{
    return server->url + path;
}

std::string ServerConnection::AuthorizedUrl(const std::string& path) const
{
    return server->url + objectCode + path;
}

bool ServerConnection::HasServerOrFail(const Failure& failure) const
{
    if (server) {
        return true;
    }
    FailLater(failure, CreateServerIsNotSetError());
    return false;
}

void ServerConnection::Get(const QNetworkRequest& request, BodyHandler onBody, Failure failure) const
{
    Send("GET", request, QByteArray(), std::move(onBody), std::move(failure));
}

void ServerConnection::Post(const QNetworkRequest& request, const QByteArray& body, BodyHandler onBody,
                            Failure failure) const
{
    Send("POST", request, body, std::move(onBody), std::move(failure));
}

void ServerConnection::Send(const QByteArray& verb, const QNetworkRequest& request, const QByteArray& body,
                            BodyHandler onBody, Failure failure) const
{
    SendRequest(CreateNetworkAccessManager(), verb, request, body,
                [heard = listeners, onBody = std::move(onBody),
                 failure = std::move(failure)](QNetworkReply* reply, const QString& text) {
                    NoteServerClock(reply, *heard);
                    if (heard->reachability) {
                        heard->reachability(reply->error() == QNetworkReply::NoError ||
                                            reply->error() > LastConnectionErrorCode);
                    }
                    if (auto error = NetworkErrorFromReply(reply, text, heard.get())) {
                        if (failure) {
                            failure(error);
                        }
                        return;
                    }
                    onBody(text);
                });
}

void ServerConnection::NoteServerClock(const QNetworkReply* reply, Listeners& heard)
{
    const auto server = MSecsSinceEpochFromHttpDate(reply->rawHeader("Date"));
    if (!server) {
        return;
    }
    // A date names the whole second the reply was made in; its middle is the
    // closest guess, within half a second either way.
    constexpr std::int64_t halfASecond = 500;
    heard.serverClock = ServerClockReading{*server + halfASecond, Utilities::Clock::CurrentMSecsSinceEpoch()};
    if (heard.serverClockHandler) {
        heard.serverClockHandler(*heard.serverClock);
    }
}

void ServerConnection::PostAuthorizedForm(const std::string& path, const FormItems& items, Success success,
                                          Failure failure) const
{
    Post(
        CreateAuthorizedRequestForUrl(AuthorizedUrl(path)), FormBody(items),
        [success = std::move(success)](const QString&) {
            if (success) {
                success();
            }
        },
        std::move(failure));
}

} // namespace Core::Networking
