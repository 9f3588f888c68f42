#include "tools/reference_service/api_handler.h"

#include "tools/reference_service/json_values.h"

#include <QJsonArray>
#include <QRegularExpression>

#include <map>

namespace ReferenceService {

namespace {

const QStringList& AuthEndpoints()
{
    static const QStringList names = {QStringLiteral("send_confirmation_code"),
                                      QStringLiteral("business_types"),
                                      QStringLiteral("music_styles"),
                                      QStringLiteral("objects"),
                                      QStringLiteral("sign_in"),
                                      QStringLiteral("sign_up")};
    return names;
}

// Authorized endpoints whose path after the object's code is fixed.
const std::map<QString, QString>& FixedObjectPaths()
{
    static const std::map<QString, QString> paths = {
        {QStringLiteral("playback/version"), QStringLiteral("playback/version")},
        {QStringLiteral("playback/configuration_v2"), QStringLiteral("playback/configuration_v2")},
        {QStringLiteral("player_version"), QStringLiteral("player_version")},
        {QStringLiteral("playlists/recommended"), QStringLiteral("playlists/recommended")},
        {QStringLiteral("playlists/settings"), QStringLiteral("playlists/settings")},
        {QStringLiteral("set_business_type"), QStringLiteral("set_business_type")},
        {QStringLiteral("set_music_styles"), QStringLiteral("set_music_styles")},
        {QStringLiteral("certificate"), QStringLiteral("certificate")},
        {QStringLiteral("statistics"), QStringLiteral("statistics")},
        {QStringLiteral("likes_dislikes"), QStringLiteral("likes_dislikes")},
        {QStringLiteral("sign_out"), QStringLiteral("sign_out")}};
    return paths;
}

const QStringList& GetEndpoints()
{
    static const QStringList names = {QStringLiteral("servers"),
                                      QStringLiteral("auth/business_types"),
                                      QStringLiteral("auth/music_styles"),
                                      QStringLiteral("delete_account"),
                                      QStringLiteral("playback/version"),
                                      QStringLiteral("playback/configuration_v2"),
                                      QStringLiteral("playlists/recommended"),
                                      QStringLiteral("playlists"),
                                      QStringLiteral("playlists/tracks"),
                                      QStringLiteral("playlists/settings"),
                                      QStringLiteral("certificate")};
    return names;
}

bool IsValidPhone(const QString& phone)
{
    static const QRegularExpression pattern(QStringLiteral("^\\+?[0-9]{10,15}$"));
    return pattern.match(phone).hasMatch();
}

// The JSON bodies of "auth/objects" and "auth/sign_in": an object whose named
// members are all strings. The player writes these texts by hand without
// escaping, so a quote inside a value makes them unreadable, as for any server.
std::optional<QJsonObject> StringMembers(const IncomingRequest& request, const QStringList& keys)
{
    if (!request.ContentTypeIs("application/json")) {
        return std::nullopt;
    }
    QString error;
    const auto object = JsonValues::ParseObject(request.Body(), &error);
    if (!object) {
        return std::nullopt;
    }
    for (const QString& key : keys) {
        if (!object->value(key).isString()) {
            return std::nullopt;
        }
    }
    return object;
}

} // namespace

ApiHandler::ApiHandler(const Scenario& source, ServiceState& serviceState, Recorder& requestRecorder,
                       const ConfigurationBuilder& builder, const ServiceAddresses& serviceAddresses)
    : scenario(source)
    , state(serviceState)
    , recorder(requestRecorder)
    , addresses(serviceAddresses)
    , objectEndpoints(source, serviceState, requestRecorder, builder, serviceAddresses)
{
}

QString ApiHandler::EndpointOf(const IncomingRequest& request)
{
    const QStringList& segments = request.segments;
    static const QStringList serversPath = {QStringLiteral("api"),    QStringLiteral("player"),
                                            QStringLiteral("legacy"), QStringLiteral("v1"),
                                            QStringLiteral("auth"),   QStringLiteral("servers")};
    if (segments == serversPath) {
        return QStringLiteral("servers");
    }
    if (segments.size() < 2 || segments.at(0) != QLatin1String("api") ||
        segments.at(1) != QLatin1String("v1")) {
        return QString();
    }
    const QStringList rest = segments.mid(2);
    if (rest.size() == 2 && rest.at(0) == QLatin1String("auth") && AuthEndpoints().contains(rest.at(1))) {
        return QStringLiteral("auth/") + rest.at(1);
    }
    if (rest == QStringList{QString(), QStringLiteral("delete_account")} ||
        rest == QStringList{QStringLiteral("delete_account")}) {
        return QStringLiteral("delete_account");
    }
    if (rest.size() < 2 || !Scenario::IsValidObjectCode(rest.at(0))) {
        return QStringLiteral("unknown");
    }
    const QStringList path = rest.mid(1);
    const auto fixed = FixedObjectPaths().find(path.join(QLatin1Char('/')));
    if (fixed != FixedObjectPaths().end()) {
        return fixed->second;
    }
    if (path.at(0) == QLatin1String("playlists")) {
        if (path.size() == 2) {
            return QStringLiteral("playlists");
        }
        if (path.size() == 3) {
            return QStringLiteral("playlists/tracks");
        }
        if (path.size() == 4 &&
            (path.at(3) == QLatin1String("activate") || path.at(3) == QLatin1String("deactivate"))) {
            return QStringLiteral("playlists/") + path.at(3);
        }
    }
    return QStringLiteral("unknown");
}

const QStringList& ApiHandler::Endpoints()
{
    static const QStringList names = [] {
        QStringList all = {QStringLiteral("servers"), QStringLiteral("delete_account")};
        for (const QString& name : AuthEndpoints()) {
            all.append(QStringLiteral("auth/") + name);
        }
        for (const auto& entry : FixedObjectPaths()) {
            all.append(entry.first);
        }
        all << QStringLiteral("playlists") << QStringLiteral("playlists/tracks")
            << QStringLiteral("playlists/activate") << QStringLiteral("playlists/deactivate")
            << QStringLiteral("unknown");
        return all;
    }();
    return names;
}

Reply ApiHandler::Handle(const IncomingRequest& request, const QString& endpoint)
{
    const bool isPlain = endpoint == QLatin1String("servers") ||
                         endpoint.startsWith(QLatin1String("auth/")) ||
                         endpoint == QLatin1String("delete_account");
    const bool methodMatches = request.method == (GetEndpoints().contains(endpoint) ? "GET" : "POST");
    if (!isPlain) {
        // The token is checked before the URL, so a wrong path with a wrong token
        // still says "wrong token", as on the real server.
        return Authorized(request, methodMatches ? endpoint : QStringLiteral("unknown"));
    }
    if (!methodMatches) {
        return Reply::ApiError(404000);
    }
    if (endpoint == QLatin1String("servers")) {
        return Servers(request);
    }
    if (endpoint == QLatin1String("auth/send_confirmation_code")) {
        return SendConfirmationCode(request);
    }
    if (endpoint == QLatin1String("auth/business_types")) {
        return Catalogue(QStringLiteral("business_types"), scenario.businessTypes);
    }
    if (endpoint == QLatin1String("auth/music_styles")) {
        return Catalogue(QStringLiteral("music_styles"), scenario.musicStyles);
    }
    if (endpoint == QLatin1String("auth/objects")) {
        return Objects(request);
    }
    if (endpoint == QLatin1String("auth/sign_in")) {
        return SignIn(request);
    }
    if (endpoint == QLatin1String("auth/sign_up")) {
        return SignUp(request);
    }
    if (endpoint == QLatin1String("delete_account")) {
        return DeleteAccount(request);
    }
    return Authorized(request, endpoint);
}

Reply ApiHandler::Servers(const IncomingRequest& request) const
{
    const bool english = request.query.Value(QStringLiteral("lang")) == QLatin1String("en");
    QJsonArray servers;
    for (const QJsonValue& value : scenario.servers) {
        QJsonObject server = addresses.Substitute(value).toObject();
        const QJsonValue englishName = server.take(QStringLiteral("name_en"));
        if (english && englishName.isString()) {
            server.insert(QStringLiteral("name"), englishName);
        }
        servers.append(server);
    }
    return Reply::Success({{QStringLiteral("servers"), servers}});
}

Reply ApiHandler::SendConfirmationCode(const IncomingRequest& request)
{
    if (!request.ContentTypeIs("application/x-www-form-urlencoded")) {
        return Reply::ApiError(400000);
    }
    const QString phone = request.Form().Value(QStringLiteral("phone"));
    if (!IsValidPhone(phone)) {
        return Reply::ApiError(403002);
    }
    auto lock = state.Lock();
    for (const auto& entry : state.accounts) {
        if (entry.second.phone == phone) {
            return Reply::ApiError(403000);
        }
    }
    lock.unlock();
    recorder.Record(QStringLiteral("confirmation_codes"), {{QStringLiteral("phone"), phone}},
                    request.logIndex);
    return Reply::Success({{QStringLiteral("code"), scenario.confirmationCode}});
}

Reply ApiHandler::Catalogue(const QString& key, const QJsonArray& items) const
{
    return Reply::Success({{key, addresses.Substitute(items)}});
}

Reply ApiHandler::Objects(const IncomingRequest& request)
{
    const auto body = StringMembers(request, {QStringLiteral("login"), QStringLiteral("password")});
    if (!body) {
        return Reply::ApiError(400000);
    }
    auto lock = state.Lock();
    const ServiceState::AccountState* account =
        state.FindAccount(body->value(QStringLiteral("login")).toString());
    if (!account || account->password != body->value(QStringLiteral("password")).toString()) {
        return Reply::ApiError(401000);
    }
    if (account->blocked) {
        return Reply::ApiError(403003);
    }
    QJsonArray objects;
    for (const QString& code : account->objectCodes) {
        if (const ServiceState::ObjectState* object = state.FindObject(code)) {
            objects.append(addresses.Substitute(object->object.reply));
        }
    }
    return Reply::Success({{QStringLiteral("objects"), objects}});
}

Reply ApiHandler::SignIn(const IncomingRequest& request)
{
    QJsonObject record{{QStringLiteral("body"), QString::fromUtf8(request.Body())}};
    const auto answer = [&](int error, const QString& token) {
        record.insert(QStringLiteral("error"), error);
        record.insert(QStringLiteral("token"), token);
        recorder.Record(QStringLiteral("sign_ins"), record, request.logIndex);
        return error == 0 ? Reply::Success({{QStringLiteral("token"), token}}) : Reply::ApiError(error);
    };
    const auto body =
        StringMembers(request, {QStringLiteral("login"), QStringLiteral("password"), QStringLiteral("code")});
    if (!body) {
        return answer(400000, QString());
    }
    const QString login = body->value(QStringLiteral("login")).toString();
    const QString code = body->value(QStringLiteral("code")).toString();
    record.insert(QStringLiteral("login"), login);
    record.insert(QStringLiteral("code"), code);
    auto lock = state.Lock();
    const ServiceState::AccountState* account = state.FindAccount(login);
    if (!account || account->password != body->value(QStringLiteral("password")).toString()) {
        return answer(401000, QString());
    }
    if (account->blocked) {
        return answer(403003, QString());
    }
    const ServiceState::ObjectState* object = state.FindObject(code);
    if (!object || object->login != login) {
        return answer(404001, QString());
    }
    if (object->object.exported) {
        return answer(403013, QString());
    }
    return answer(0, state.IssueToken(login, code));
}

Reply ApiHandler::SignUp(const IncomingRequest& request)
{
    if (!request.ContentTypeIs("application/x-www-form-urlencoded")) {
        return Reply::ApiError(400000);
    }
    const FormData form = request.Form();
    const QString phone = form.Value(QStringLiteral("phone"));
    const QString city = form.Value(QStringLiteral("city"));
    if (!IsValidPhone(phone)) {
        return Reply::ApiError(403002);
    }
    if (city.trimmed().isEmpty()) {
        return Reply::ApiError(400000);
    }
    auto lock = state.Lock();
    for (const auto& entry : state.accounts) {
        if (entry.second.phone == phone || entry.first == phone) {
            return Reply::ApiError(403000);
        }
    }
    const ServiceState::ObjectState& object = state.SignUp(phone, city);
    const QString token = state.IssueToken(object.login, object.object.code);
    lock.unlock();
    recorder.Record(QStringLiteral("sign_ups"),
                    {{QStringLiteral("phone"), phone},
                     {QStringLiteral("city"), city},
                     {QStringLiteral("code"), object.object.code},
                     {QStringLiteral("token"), token}},
                    request.logIndex);
    return Reply::Success(
        {{QStringLiteral("object"), object.object.reply}, {QStringLiteral("token"), token}});
}

Reply ApiHandler::DeleteAccount(const IncomingRequest& request)
{
    const QString token = QString::fromStdString(request.Header("token"));
    auto lock = state.Lock();
    const auto owner = state.tokens.find(token);
    if (token.isEmpty() || owner == state.tokens.end()) {
        return Reply::ApiError(403010);
    }
    const QString login = owner->second.login;
    state.RemoveAccount(login);
    lock.unlock();
    recorder.Record(QStringLiteral("deleted_accounts"), {{QStringLiteral("login"), login}}, request.logIndex);
    return Reply::Success();
}

Reply ApiHandler::Authorized(const IncomingRequest& request, const QString& endpoint)
{
    const QStringList& segments = request.segments;
    const QString code = segments.size() > 2 ? segments.at(2) : QString();
    const QString token = QString::fromStdString(request.Header("token"));
    auto lock = state.Lock();
    const auto owner = state.tokens.find(token);
    if (token.isEmpty() || owner == state.tokens.end() || owner->second.code != code) {
        return Reply::ApiError(403010);
    }
    const ServiceState::AccountState* account = state.FindAccount(owner->second.login);
    ServiceState::ObjectState* object = state.FindObject(code);
    if (!account || !object) {
        return Reply::ApiError(403010);
    }
    if (account->blocked) {
        return Reply::ApiError(403003);
    }
    if (object->object.exported) {
        return Reply::ApiError(403013);
    }
    if (endpoint == QLatin1String("unknown")) {
        return Reply::ApiError(404000);
    }
    return objectEndpoints.Handle(request, endpoint, token, *object, lock);
}

} // namespace ReferenceService
