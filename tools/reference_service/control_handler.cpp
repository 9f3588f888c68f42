#include "tools/reference_service/control_handler.h"

#include "tools/reference_service/json_values.h"

#include <QJsonArray>

namespace ReferenceService {

namespace {

Reply Refuse(const QString& why, int status = 400)
{
    return Reply::Json({{QStringLiteral("error"), why}}, status);
}

Reply Done(QJsonObject members = QJsonObject())
{
    members.insert(QStringLiteral("ok"), true);
    return Reply::Json(members);
}

} // namespace

ControlHandler::ControlHandler(ServiceState& serviceState, Recorder& requestRecorder, FaultPlan& faultPlan,
                               const ConfigurationBuilder& configurationBuilder,
                               const ServiceAddresses& serviceAddresses)
    : state(serviceState)
    , recorder(requestRecorder)
    , faults(faultPlan)
    , builder(configurationBuilder)
    , addresses(serviceAddresses)
{
}

bool ControlHandler::IsControl(const IncomingRequest& request)
{
    return !request.segments.isEmpty() && request.segments.at(0) == QLatin1String("control");
}

Reply ControlHandler::Handle(const IncomingRequest& request)
{
    const QString path = request.segments.mid(1).join(QLatin1Char('/'));
    if (request.method == "GET") {
        if (path == QLatin1String("state")) {
            return State();
        }
        if (path == QLatin1String("configuration")) {
            return ConfigurationOf(request.query.Value(QStringLiteral("object")));
        }
        if (path == QLatin1String("tokens")) {
            return Tokens();
        }
        if (path == QLatin1String("faults")) {
            return Reply::Json({{QStringLiteral("faults"), faults.ToJson()}});
        }
        if (path == QLatin1String("received")) {
            return Reply::Json(recorder.Received());
        }
        if (path == QLatin1String("requests")) {
            return Reply::Json(recorder.Requests(request.query.Value(QStringLiteral("from")).toInt()));
        }
        return Refuse(QStringLiteral("unknown control request GET /control/%1").arg(path), 404);
    }
    if (request.method != "POST") {
        return Refuse(QStringLiteral("control requests are GET or POST"), 405);
    }
    QJsonObject body;
    if (!request.body.empty()) {
        QString error;
        const auto parsed = JsonValues::ParseObject(request.Body(), &error);
        if (!parsed) {
            return Refuse(QStringLiteral("the body is %1").arg(error));
        }
        body = *parsed;
    }
    if (path == QLatin1String("reset")) {
        auto lock = state.Lock();
        state.Reset();
        lock.unlock();
        faults.Clear();
        recorder.Clear();
        return Done();
    }
    if (path == QLatin1String("clock")) {
        return Clock(body);
    }
    if (path == QLatin1String("configuration/bump") || path == QLatin1String("configuration/version") ||
        path == QLatin1String("configuration/replace")) {
        return ChangeConfiguration(path.mid(QStringLiteral("configuration/").size()), body);
    }
    if (path == QLatin1String("accounts/block")) {
        return BlockAccount(body);
    }
    if (path == QLatin1String("objects/export")) {
        return ExportObject(body);
    }
    if (path == QLatin1String("tokens/invalidate")) {
        return InvalidateTokens(body);
    }
    if (path == QLatin1String("faults")) {
        return AddFault(body);
    }
    if (path == QLatin1String("faults/clear")) {
        faults.Clear();
        return Done();
    }
    return Refuse(QStringLiteral("unknown control request POST /control/%1").arg(path), 404);
}

Reply ControlHandler::Clock(const QJsonObject& body)
{
    std::optional<int> offset;
    if (body.contains(QStringLiteral("day_offset"))) {
        offset = JsonValues::Integer(body.value(QStringLiteral("day_offset")));
        if (!offset || *offset < -36500 || *offset > 36500) {
            return Refuse(QStringLiteral("\"day_offset\" must be an integer number of days"));
        }
    }
    std::optional<std::optional<QDate>> date;
    if (body.contains(QStringLiteral("date"))) {
        const QJsonValue value = body.value(QStringLiteral("date"));
        const QDate parsed = QDate::fromString(value.toString(), QStringLiteral("dd.MM.yyyy"));
        if (!value.isNull() && !parsed.isValid()) {
            return Refuse(QStringLiteral("\"date\" must be \"dd.MM.yyyy\" or null for the real date"));
        }
        date = value.isNull() ? std::optional<QDate>() : std::optional<QDate>(parsed);
    }
    std::optional<int> shift;
    if (body.contains(QStringLiteral("shift_seconds"))) {
        // Ten years either way is more than any wrong clock a test plays.
        constexpr int tenYears = 10 * 366 * 24 * 3600;
        shift = JsonValues::Integer(body.value(QStringLiteral("shift_seconds")));
        if (!shift || *shift < -tenYears || *shift > tenYears) {
            return Refuse(QStringLiteral("\"shift_seconds\" must be an integer number of seconds"));
        }
    }
    if (!offset && !date && !shift) {
        return Refuse(QStringLiteral("give \"day_offset\", \"date\", \"shift_seconds\" or several"));
    }
    auto lock = state.Lock();
    if (offset) {
        state.dayOffset = *offset;
    }
    if (date) {
        state.fixedToday = *date;
    }
    if (shift) {
        state.clockShiftSeconds = *shift;
    }
    return Done({{QStringLiteral("today"), ConfigurationBuilder::DateText(state.Today())},
                 {QStringLiteral("now"), state.Now().toString(Qt::ISODate)}});
}

Reply ControlHandler::ConfigurationOf(const QString& code)
{
    auto lock = state.Lock();
    const ServiceState::ObjectState* object = state.FindObject(code);
    if (!object) {
        return Refuse(QStringLiteral("no playback object has the code \"%1\"").arg(code), 404);
    }
    const ServiceState::ObjectState copy = *object;
    const QDate today = state.Today();
    lock.unlock();
    const ConfigurationBuilder::Result built = builder.Build(copy, today);
    return Done(
        {{QStringLiteral("version"), built.version}, {QStringLiteral("configuration"), built.configuration}});
}

Reply ControlHandler::ChangeConfiguration(const QString& action, const QJsonObject& body)
{
    const QString code = body.value(QStringLiteral("object")).toString();
    std::optional<ConfigurationTemplate> replacement;
    std::optional<int> version;
    if (action == QLatin1String("replace")) {
        if (!body.value(QStringLiteral("configuration")).isObject()) {
            return Refuse(QStringLiteral("\"configuration\" must be a configuration template object"));
        }
        QString error;
        replacement =
            ConfigurationTemplate::FromJson(body.value(QStringLiteral("configuration")).toObject(), &error);
        if (!replacement) {
            return Refuse(QStringLiteral("the configuration template is refused: %1").arg(error));
        }
    }
    if (action == QLatin1String("version")) {
        version = JsonValues::Integer(body.value(QStringLiteral("version")));
        if (!version || *version < 0) {
            return Refuse(QStringLiteral("\"version\" must be a non-negative integer"));
        }
    }
    auto lock = state.Lock();
    ServiceState::ObjectState* object = state.FindObject(code);
    if (!object) {
        return Refuse(QStringLiteral("no playback object has the code \"%1\"").arg(code), 404);
    }
    if (replacement) {
        object->configuration = replacement;
    } else if (version) {
        object->versionOverride = *version;
        object->versionBump = 0;
    } else {
        ++object->versionBump;
    }
    const ServiceState::ObjectState copy = *object;
    const QDate today = state.Today();
    lock.unlock();
    return Done({{QStringLiteral("version"), builder.Build(copy, today).version}});
}

Reply ControlHandler::BlockAccount(const QJsonObject& body)
{
    const QString login = body.value(QStringLiteral("login")).toString();
    if (!body.value(QStringLiteral("blocked")).isBool()) {
        return Refuse(QStringLiteral("\"blocked\" must be true or false"));
    }
    auto lock = state.Lock();
    ServiceState::AccountState* account = state.FindAccount(login);
    if (!account) {
        return Refuse(QStringLiteral("no account has the login \"%1\"").arg(login), 404);
    }
    account->blocked = body.value(QStringLiteral("blocked")).toBool();
    return Done();
}

Reply ControlHandler::ExportObject(const QJsonObject& body)
{
    const QString code = body.value(QStringLiteral("object")).toString();
    if (!body.value(QStringLiteral("exported")).isBool()) {
        return Refuse(QStringLiteral("\"exported\" must be true or false"));
    }
    auto lock = state.Lock();
    ServiceState::ObjectState* object = state.FindObject(code);
    if (!object) {
        return Refuse(QStringLiteral("no playback object has the code \"%1\"").arg(code), 404);
    }
    object->object.exported = body.value(QStringLiteral("exported")).toBool();
    return Done();
}

Reply ControlHandler::InvalidateTokens(const QJsonObject& body)
{
    auto lock = state.Lock();
    if (body.value(QStringLiteral("token")).isString()) {
        const QString token = body.value(QStringLiteral("token")).toString();
        const int dropped = static_cast<int>(state.tokens.count(token));
        state.InvalidateToken(token);
        return Done({{QStringLiteral("invalidated"), dropped}});
    }
    const QString code = body.value(QStringLiteral("object")).toString();
    if (!state.FindObject(code)) {
        return Refuse(QStringLiteral("give a \"token\" or the \"object\" code of a playback object"), 404);
    }
    return Done({{QStringLiteral("invalidated"), state.InvalidateTokensOf(code)}});
}

Reply ControlHandler::Tokens()
{
    auto lock = state.Lock();
    QJsonArray tokens;
    for (const auto& entry : state.tokens) {
        tokens.append(QJsonObject{{QStringLiteral("token"), entry.first},
                                  {QStringLiteral("login"), entry.second.login},
                                  {QStringLiteral("object"), entry.second.code}});
    }
    return Done({{QStringLiteral("tokens"), tokens}});
}

Reply ControlHandler::AddFault(const QJsonObject& body)
{
    QString error;
    const auto fault = faults.Add(body, &error);
    if (!fault) {
        return Refuse(error);
    }
    return Done({{QStringLiteral("id"), fault->id}});
}

Reply ControlHandler::State()
{
    auto lock = state.Lock();
    return Done({{QStringLiteral("today"), ConfigurationBuilder::DateText(state.Today())},
                 {QStringLiteral("day_offset"), state.dayOffset},
                 {QStringLiteral("shift_seconds"), state.clockShiftSeconds},
                 {QStringLiteral("base_url"), addresses.BaseUrl()},
                 {QStringLiteral("media_domain"), addresses.MediaDomain()},
                 {QStringLiteral("files_url"), addresses.FilesUrl()}});
}

} // namespace ReferenceService
