#include "tools/reference_service/object_endpoints.h"

#include "tools/reference_service/json_values.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QRegularExpression>

namespace ReferenceService {

namespace {

bool IsTimestamp(const QString& text)
{
    static const QRegularExpression pattern(QStringLiteral("^[0-9]{1,20}$"));
    return pattern.match(text).hasMatch();
}

std::optional<int> IntegerText(const QString& text)
{
    static const QRegularExpression pattern(QStringLiteral("^-?[0-9]{1,10}$"));
    if (!pattern.match(text).hasMatch()) {
        return std::nullopt;
    }
    bool ok = false;
    const int value = text.toInt(&ok);
    return ok ? std::optional<int>(value) : std::nullopt;
}

bool ContainsId(const QJsonArray& items, int id)
{
    for (const QJsonValue& item : items) {
        if (item.toObject().value(QStringLiteral("id")).toInt() == id) {
            return true;
        }
    }
    return false;
}

// One statistics report exactly as the player builds it.
bool IsReport(const QJsonValue& value)
{
    static const QRegularExpression time(QStringLiteral("^[0-2][0-9]:[0-5][0-9]:[0-5][0-9]$"));
    static const QRegularExpression date(QStringLiteral("^[0-3][0-9]\\.[01][0-9]\\.[0-9]{4}$"));
    static const QStringList types = {QStringLiteral("clip"), QStringLiteral("music"),
                                      QStringLiteral("video"), QStringLiteral("photo")};
    const QJsonObject report = value.toObject();
    return value.isObject() && report.size() == 6 &&
           JsonValues::IsInteger(report.value(QStringLiteral("volume"))) &&
           JsonValues::IsInteger(report.value(QStringLiteral("track_id"))) &&
           JsonValues::IsInteger(report.value(QStringLiteral("shop_id"))) &&
           types.contains(report.value(QStringLiteral("type")).toString()) &&
           time.match(report.value(QStringLiteral("time")).toString()).hasMatch() &&
           date.match(report.value(QStringLiteral("date")).toString()).hasMatch();
}

} // namespace

ObjectEndpoints::ObjectEndpoints(const Scenario& source, ServiceState& serviceState,
                                 Recorder& requestRecorder, const ConfigurationBuilder& configurationBuilder,
                                 const ServiceAddresses& serviceAddresses)
    : scenario(source)
    , state(serviceState)
    , recorder(requestRecorder)
    , builder(configurationBuilder)
    , addresses(serviceAddresses)
{
}

Reply ObjectEndpoints::Handle(const IncomingRequest& request, const QString& endpoint, const QString& token,
                              ServiceState::ObjectState& object, std::unique_lock<std::mutex>& lock)
{
    if (endpoint == QLatin1String("playback/version")) {
        return Version(request, object, lock);
    }
    if (endpoint == QLatin1String("playback/configuration_v2")) {
        return Configuration(request, object, lock);
    }
    if (endpoint == QLatin1String("player_version")) {
        return PlayerVersion(request, object);
    }
    if (endpoint == QLatin1String("playlists/recommended")) {
        return Recommended(request);
    }
    if (endpoint == QLatin1String("set_business_type")) {
        return SetBusinessType(request, object);
    }
    if (endpoint == QLatin1String("set_music_styles")) {
        return SetMusicStyles(request, object);
    }
    if (endpoint == QLatin1String("playlists/settings")) {
        return Reply::Success({{QStringLiteral("settings"), object.catalogue.Settings()}});
    }
    if (endpoint == QLatin1String("playlists")) {
        return Playlists(request, object);
    }
    if (endpoint == QLatin1String("playlists/tracks")) {
        return PlaylistTracks(request, object);
    }
    if (endpoint == QLatin1String("playlists/activate") ||
        endpoint == QLatin1String("playlists/deactivate")) {
        return ChangePlaylist(request, endpoint, object);
    }
    if (endpoint == QLatin1String("certificate")) {
        return Certificate(object);
    }
    if (endpoint == QLatin1String("statistics")) {
        return Statistics(request, object);
    }
    if (endpoint == QLatin1String("likes_dislikes")) {
        return Like(request, object);
    }
    if (endpoint == QLatin1String("sign_out")) {
        return SignOut(request, token, object);
    }
    return Reply::ApiError(404000);
}

Reply ObjectEndpoints::Version(const IncomingRequest& request, ServiceState::ObjectState& object,
                               std::unique_lock<std::mutex>& lock) const
{
    if (!IsTimestamp(request.query.Value(QStringLiteral("timestamp")))) {
        return Reply::ApiError(400000);
    }
    const ServiceState::ObjectState copy = object;
    const QDate today = state.Today();
    lock.unlock();
    return Reply::Success({{QStringLiteral("version"), builder.Build(copy, today).version}});
}

Reply ObjectEndpoints::Configuration(const IncomingRequest& request, ServiceState::ObjectState& object,
                                     std::unique_lock<std::mutex>& lock) const
{
    if (!IsTimestamp(request.query.Value(QStringLiteral("timestamp")))) {
        return Reply::ApiError(400000);
    }
    // Building reads and may hash the content files; other requests go on meanwhile.
    const ServiceState::ObjectState copy = object;
    const QDate today = state.Today();
    lock.unlock();
    return Reply::Success({{QStringLiteral("configuration"), builder.Build(copy, today).configuration}});
}

Reply ObjectEndpoints::PlayerVersion(const IncomingRequest& request, const ServiceState::ObjectState& object)
{
    const FormData form = request.Form();
    if (!request.ContentTypeIs("application/x-www-form-urlencoded") || !form.Has(QStringLiteral("version")) ||
        !form.Has(QStringLiteral("os")) || !form.Has(QStringLiteral("platform_info"))) {
        return Reply::ApiError(400000);
    }
    recorder.Record(QStringLiteral("player_versions"),
                    {{QStringLiteral("object"), object.object.code},
                     {QStringLiteral("version"), form.Value(QStringLiteral("version"))},
                     {QStringLiteral("os"), form.Value(QStringLiteral("os"))},
                     {QStringLiteral("platform_info"), form.Value(QStringLiteral("platform_info"))}},
                    request.logIndex);
    return Reply::Success();
}

Reply ObjectEndpoints::Recommended(const IncomingRequest& request) const
{
    const auto businessType = IntegerText(request.query.Value(QStringLiteral("business_type_id")));
    const auto musicStyle = IntegerText(request.query.Value(QStringLiteral("music_style_id")));
    if (!businessType || !musicStyle) {
        return Reply::ApiError(400000);
    }
    if (!ContainsId(scenario.businessTypes, *businessType)) {
        return Reply::ApiError(404003);
    }
    if (!ContainsId(scenario.musicStyles, *musicStyle)) {
        return Reply::ApiError(404004);
    }
    QJsonArray playlists;
    for (const QJsonValue& value : scenario.catalogue.value(QStringLiteral("recommended")).toArray()) {
        const QJsonObject entry = value.toObject();
        const QJsonValue forType = entry.value(QStringLiteral("business_type_id"));
        const QJsonValue forStyle = entry.value(QStringLiteral("music_style_id"));
        if ((!forType.isUndefined() && forType.toInt() != *businessType) ||
            (!forStyle.isUndefined() && forStyle.toInt() != *musicStyle)) {
            continue;
        }
        playlists.append(
            QJsonObject{{QStringLiteral("id"), entry.value(QStringLiteral("id")).toInt()},
                        {QStringLiteral("name"), entry.value(QStringLiteral("name")).toString()},
                        {QStringLiteral("image"), entry.value(QStringLiteral("image")).toString()},
                        {QStringLiteral("main"), entry.value(QStringLiteral("main")).toBool(false)}});
    }
    return Reply::Success({{QStringLiteral("playlists"), addresses.Substitute(playlists)}});
}

Reply ObjectEndpoints::SetBusinessType(const IncomingRequest& request,
                                       const ServiceState::ObjectState& object)
{
    if (!request.ContentTypeIs("application/x-www-form-urlencoded")) {
        return Reply::ApiError(400000);
    }
    const auto id = IntegerText(request.Form().Value(QStringLiteral("business_type_id")));
    if (!id) {
        return Reply::ApiError(400000);
    }
    if (!ContainsId(scenario.businessTypes, *id)) {
        return Reply::ApiError(404003);
    }
    recorder.Record(
        QStringLiteral("business_types"),
        {{QStringLiteral("object"), object.object.code}, {QStringLiteral("business_type_id"), *id}},
        request.logIndex);
    return Reply::Success();
}

Reply ObjectEndpoints::SetMusicStyles(const IncomingRequest& request, const ServiceState::ObjectState& object)
{
    if (!request.ContentTypeIs("application/x-www-form-urlencoded")) {
        return Reply::ApiError(400000);
    }
    // The ids arrive as the text of a JSON array inside a form field.
    QJsonParseError error;
    const QJsonDocument document =
        QJsonDocument::fromJson(request.Form().Value(QStringLiteral("music_styles")).toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isArray()) {
        return Reply::ApiError(400000);
    }
    QJsonArray ids;
    for (const QJsonValue& value : document.array()) {
        const auto id = JsonValues::Integer(value);
        if (!id) {
            return Reply::ApiError(400000);
        }
        if (!ContainsId(scenario.musicStyles, *id)) {
            return Reply::ApiError(404004);
        }
        ids.append(*id);
    }
    recorder.Record(QStringLiteral("music_styles"),
                    {{QStringLiteral("object"), object.object.code}, {QStringLiteral("music_styles"), ids}},
                    request.logIndex);
    return Reply::Success();
}

Reply ObjectEndpoints::Playlists(const IncomingRequest& request,
                                 const ServiceState::ObjectState& object) const
{
    const auto playlists = object.catalogue.Playlists(request.segments.at(4));
    if (!playlists) {
        return Reply::ApiError(404000);
    }
    return Reply::Success({{QStringLiteral("playlists"), addresses.Substitute(*playlists)}});
}

Reply ObjectEndpoints::PlaylistTracks(const IncomingRequest& request,
                                      const ServiceState::ObjectState& object) const
{
    const QString type = request.segments.at(4);
    const auto id = IntegerText(request.segments.at(5));
    if (!Scenario::PlaylistTypes().contains(type) || !id) {
        return Reply::ApiError(404000);
    }
    const auto tracks = object.catalogue.Tracks(type, *id);
    if (!tracks) {
        return Reply::ApiError(404005);
    }
    return Reply::Success(
        {{QStringLiteral("data"), QJsonObject{{QStringLiteral("tracks"), addresses.Substitute(*tracks)}}}});
}

Reply ObjectEndpoints::ChangePlaylist(const IncomingRequest& request, const QString& endpoint,
                                      ServiceState::ObjectState& object)
{
    const QString type = request.segments.at(4);
    const auto id = IntegerText(request.segments.at(5));
    if (!Scenario::PlaylistTypes().contains(type) || !id) {
        return Reply::ApiError(404000);
    }
    if (!request.ContentTypeIs("application/x-www-form-urlencoded")) {
        return Reply::ApiError(400000);
    }
    if (object.object.reply.value(QStringLiteral("disable_player_control")).toBool()) {
        return Reply::ApiError(403001);
    }
    const bool activate = endpoint == QLatin1String("playlists/activate");
    const FormData form = request.Form();
    const int error =
        activate ? object.catalogue.Activate(type, *id, form) : object.catalogue.Deactivate(type, *id);
    if (error != 0) {
        return Reply::ApiError(error);
    }
    QJsonObject record{
        {QStringLiteral("object"), object.object.code},
        {QStringLiteral("type"), type},
        {QStringLiteral("playlist_id"), *id},
        {QStringLiteral("action"), activate ? QStringLiteral("activate") : QStringLiteral("deactivate")}};
    for (const auto& item : form.Items()) {
        record.insert(item.first, item.second);
    }
    recorder.Record(QStringLiteral("playlist_changes"), record, request.logIndex);
    return Reply::Success();
}

Reply ObjectEndpoints::Certificate(const ServiceState::ObjectState& object) const
{
    const QString url =
        object.object.certificateUrl.isEmpty() ? scenario.certificateUrl : object.object.certificateUrl;
    if (url.isEmpty()) {
        return Reply::ApiError(403008);
    }
    return Reply::Success({{QStringLiteral("url"), addresses.Substitute(url)}});
}

Reply ObjectEndpoints::Statistics(const IncomingRequest& request, const ServiceState::ObjectState& object)
{
    if (!request.ContentTypeIs("application/json")) {
        return Reply::ApiError(400000);
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(request.Body(), &error);
    if (error.error != QJsonParseError::NoError || !document.isArray()) {
        return Reply::ApiError(400000);
    }
    const QJsonArray reports = document.array();
    for (const QJsonValue& report : reports) {
        if (!IsReport(report)) {
            return Reply::ApiError(400000);
        }
    }
    recorder.Record(QStringLiteral("statistics"),
                    {{QStringLiteral("object"), object.object.code}, {QStringLiteral("reports"), reports}},
                    request.logIndex);
    return Reply::Success();
}

Reply ObjectEndpoints::Like(const IncomingRequest& request, ServiceState::ObjectState& object)
{
    const FormData form = request.Form();
    const auto value = IntegerText(form.Value(QStringLiteral("value")));
    const auto trackId = IntegerText(form.Value(QStringLiteral("track_id")));
    if (!request.ContentTypeIs("application/x-www-form-urlencoded") || !value || !trackId) {
        return Reply::ApiError(400000);
    }
    // 1 likes, 0 dislikes, any other value takes the rating back.
    const int status = *value == 1 ? 1 : (*value == 0 ? 0 : -1);
    object.likes[*trackId] = status;
    const QJsonValue likeStatus = status < 0 ? QJsonValue(QJsonValue::Null) : QJsonValue(status == 1);
    recorder.Record(QStringLiteral("likes"),
                    {{QStringLiteral("object"), object.object.code},
                     {QStringLiteral("track_id"), *trackId},
                     {QStringLiteral("value"), *value},
                     {QStringLiteral("like_status"), likeStatus}},
                    request.logIndex);
    return Reply::Success({{QStringLiteral("like_status"), likeStatus}});
}

Reply ObjectEndpoints::SignOut(const IncomingRequest& request, const QString& token,
                               const ServiceState::ObjectState& object)
{
    const QString code = object.object.code;
    state.InvalidateToken(token);
    recorder.Record(QStringLiteral("sign_outs"),
                    {{QStringLiteral("object"), code}, {QStringLiteral("token"), token}}, request.logIndex);
    return Reply::Success();
}

} // namespace ReferenceService
