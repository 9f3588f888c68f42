#include "tools/reference_service/scenario.h"

#include "tools/reference_service/json_values.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

namespace ReferenceService {

namespace {

constexpr qint64 MaximumFileSize = 16 * 1024 * 1024;

const QStringList& SettingsKinds()
{
    static const QStringList kinds = {QStringLiteral("music"), QStringLiteral("video"),
                                      QStringLiteral("photo")};
    return kinds;
}

const QStringList& DayParts()
{
    static const QStringList parts = {QStringLiteral("morning"), QStringLiteral("day"),
                                      QStringLiteral("evening"), QStringLiteral("night")};
    return parts;
}

// Reads one optional file; `present` tells whether it was there.
std::optional<QJsonObject> ReadFile(const QString& path, const QString& name, bool* present, QString* error)
{
    QFile file(path);
    *present = file.exists();
    if (!*present) {
        return QJsonObject();
    }
    if (file.size() > MaximumFileSize) {
        *error = QStringLiteral("%1: larger than 16 MiB").arg(name);
        return std::nullopt;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: cannot be read: %2").arg(name, file.errorString());
        return std::nullopt;
    }
    QString parseError;
    auto object = JsonValues::ParseObject(file.readAll(), &parseError);
    if (!object) {
        *error = QStringLiteral("%1: %2").arg(name, parseError);
    }
    return object;
}

bool IsOptionalString(const QJsonObject& object, const QString& key)
{
    return !object.contains(key) || object.value(key).isString();
}

bool IsOptionalBool(const QJsonObject& object, const QString& key)
{
    return !object.contains(key) || object.value(key).isBool();
}

// An array of objects, each with an integer "id" unique in the array.
QString CheckIdentifiedList(const QJsonValue& value, const QString& where)
{
    if (!value.isUndefined() && !value.isArray()) {
        return QStringLiteral("%1 must be an array").arg(where);
    }
    QSet<int> ids;
    const QJsonArray array = value.toArray();
    for (int i = 0; i < array.size(); ++i) {
        const auto id = JsonValues::Integer(array.at(i).toObject().value(QStringLiteral("id")));
        if (!array.at(i).isObject() || !id) {
            return QStringLiteral("%1[%2] must be an object with an integer \"id\"").arg(where).arg(i);
        }
        if (ids.contains(*id)) {
            return QStringLiteral("%1[%2]: the id %3 is used twice").arg(where).arg(i).arg(*id);
        }
        ids.insert(*id);
    }
    return QString();
}

bool LoadService(const QJsonObject& service, Scenario* scenario, QString* error)
{
    const QString name = QStringLiteral("service.json: ");
    const QJsonValue servers = service.value(QStringLiteral("servers"));
    if (!servers.isUndefined() && !servers.isArray()) {
        *error = name + QStringLiteral("\"servers\" must be an array");
        return false;
    }
    for (const QJsonValue& server : servers.toArray()) {
        if (!server.isObject()) {
            *error = name + QStringLiteral("every server must be an object");
            return false;
        }
    }
    for (const QString& key : {QStringLiteral("business_types"), QStringLiteral("music_styles")}) {
        *error = CheckIdentifiedList(service.value(key), QStringLiteral("\"%1\"").arg(key));
        if (!error->isEmpty()) {
            error->prepend(name);
            return false;
        }
    }
    for (const QString& key : {QStringLiteral("certificate_url"), QStringLiteral("confirmation_code"),
                               QStringLiteral("sign_up_configuration")}) {
        if (!IsOptionalString(service, key)) {
            *error = name + QStringLiteral("\"%1\" must be a string").arg(key);
            return false;
        }
    }
    if (servers.isUndefined()) {
        // Without a list of its own the service offers itself.
        scenario->servers =
            QJsonArray{QJsonObject{{QStringLiteral("id"), 1},
                                   {QStringLiteral("name"), QStringLiteral("Эталонный сервер")},
                                   {QStringLiteral("url"), QStringLiteral("@BASE_URL@")},
                                   {QStringLiteral("email"), QStringLiteral("support@localhost")},
                                   {QStringLiteral("phone"), QStringLiteral("+7 000 000-00-00")},
                                   {QStringLiteral("privacy_policy_url"), QStringLiteral("@ORIGIN@privacy")},
                                   {QStringLiteral("landing_url"), QStringLiteral("@ORIGIN@")},
                                   {QStringLiteral("is_primary"), true},
                                   {QStringLiteral("phone_country_code"), QStringLiteral("+7")},
                                   {QStringLiteral("phone_symbol_len"), 10}}};
    } else {
        scenario->servers = servers.toArray();
    }
    scenario->businessTypes = service.value(QStringLiteral("business_types")).toArray();
    scenario->musicStyles = service.value(QStringLiteral("music_styles")).toArray();
    scenario->certificateUrl = service.value(QStringLiteral("certificate_url")).toString();
    scenario->confirmationCode =
        service.value(QStringLiteral("confirmation_code")).toString(QStringLiteral("1234"));
    scenario->signUpConfiguration = service.value(QStringLiteral("sign_up_configuration")).toString();
    return true;
}

std::optional<Scenario::PlaybackObject> LoadObject(const QJsonValue& value, const QString& where,
                                                   QString* error)
{
    const QJsonObject object = value.toObject();
    const QString code = object.value(QStringLiteral("code")).toString();
    const auto id = JsonValues::Integer(object.value(QStringLiteral("id")));
    if (!value.isObject() || !id || !Scenario::IsValidObjectCode(code)) {
        *error = where + QStringLiteral(
                             "a playback object needs an integer \"id\" and a \"code\" of letters, digits, "
                             "'_', '-' and '.' (not \"auth\", not starting with '.')");
        return std::nullopt;
    }
    const QStringList textKeys = {
        QStringLiteral("name"),           QStringLiteral("address"), QStringLiteral("contract_number"),
        QStringLiteral("image"),          QStringLiteral("logo"),    QStringLiteral("organization_name"),
        QStringLiteral("certificate_url")};
    for (const QString& key : textKeys) {
        if (!IsOptionalString(object, key)) {
            *error = where + QStringLiteral("\"%1\" must be a string").arg(key);
            return std::nullopt;
        }
    }
    for (const QString& key : {QStringLiteral("disable_player_control"), QStringLiteral("exported")}) {
        if (!IsOptionalBool(object, key)) {
            *error = where + QStringLiteral("\"%1\" must be true or false").arg(key);
            return std::nullopt;
        }
    }
    Scenario::PlaybackObject result;
    result.code = code;
    result.id = *id;
    result.exported = object.value(QStringLiteral("exported")).toBool(false);
    result.certificateUrl = object.value(QStringLiteral("certificate_url")).toString();
    result.reply = QJsonObject{{QStringLiteral("id"), *id},
                               {QStringLiteral("code"), code},
                               {QStringLiteral("disable_player_control"),
                                object.value(QStringLiteral("disable_player_control")).toBool(false)}};
    for (const QString& key : textKeys) {
        if (key != QLatin1String("certificate_url")) {
            result.reply.insert(key, object.value(key).toString());
        }
    }
    return result;
}

bool LoadAccounts(const QJsonObject& file, Scenario* scenario, QString* error)
{
    const QString name = QStringLiteral("accounts.json: ");
    const QJsonValue accounts = file.value(QStringLiteral("accounts"));
    if (!accounts.isUndefined() && !accounts.isArray()) {
        *error = name + QStringLiteral("\"accounts\" must be an array");
        return false;
    }
    QSet<QString> logins;
    QSet<QString> phones;
    QSet<QString> codes;
    QSet<int> objectIds;
    const QJsonArray list = accounts.toArray();
    for (int i = 0; i < list.size(); ++i) {
        const QString where = name + QStringLiteral("accounts[%1]: ").arg(i);
        const QJsonObject account = list.at(i).toObject();
        Scenario::Account result;
        result.login = account.value(QStringLiteral("login")).toString();
        if (!list.at(i).isObject() || result.login.isEmpty() ||
            !account.value(QStringLiteral("password")).isString()) {
            *error = where + QStringLiteral(
                                 "an account needs a non-empty string \"login\" and a string \"password\"");
            return false;
        }
        if (!IsOptionalString(account, QStringLiteral("phone")) ||
            !IsOptionalBool(account, QStringLiteral("blocked")) ||
            !(account.value(QStringLiteral("objects")).isArray() ||
              !account.contains(QStringLiteral("objects")))) {
            *error =
                where +
                QStringLiteral("\"phone\" must be a string, \"blocked\" true or false, \"objects\" an array");
            return false;
        }
        if (logins.contains(result.login)) {
            *error = where + QStringLiteral("the login \"%1\" is used twice").arg(result.login);
            return false;
        }
        logins.insert(result.login);
        result.password = account.value(QStringLiteral("password")).toString();
        result.phone = account.value(QStringLiteral("phone")).toString();
        result.blocked = account.value(QStringLiteral("blocked")).toBool(false);
        if (!result.phone.isEmpty()) {
            if (phones.contains(result.phone)) {
                *error = where + QStringLiteral("the phone \"%1\" is used twice").arg(result.phone);
                return false;
            }
            phones.insert(result.phone);
        }
        const QJsonArray objects = account.value(QStringLiteral("objects")).toArray();
        for (int j = 0; j < objects.size(); ++j) {
            const QString objectWhere = where + QStringLiteral("objects[%1]: ").arg(j);
            auto object = LoadObject(objects.at(j), objectWhere, error);
            if (!object) {
                return false;
            }
            if (codes.contains(object->code) || objectIds.contains(object->id)) {
                *error = objectWhere + QStringLiteral("the code \"%1\" or the id %2 is already taken")
                                           .arg(object->code)
                                           .arg(object->id);
                return false;
            }
            codes.insert(object->code);
            objectIds.insert(object->id);
            result.objects.push_back(*object);
        }
        scenario->accounts.push_back(result);
    }
    return true;
}

// Every playlist id is unique across the kinds: the settings refer to playlists by
// id alone, and stock music and music share the "music" settings.
bool LoadCatalogue(const QJsonObject& file, Scenario* scenario, QString* error)
{
    const QString name = QStringLiteral("catalogue.json: ");
    const QJsonObject playlists = file.value(QStringLiteral("playlists")).toObject();
    if (file.contains(QStringLiteral("playlists")) && !file.value(QStringLiteral("playlists")).isObject()) {
        *error = name + QStringLiteral("\"playlists\" must be an object keyed by playlist type");
        return false;
    }
    QJsonObject completePlaylists;
    QHash<int, QString> kindOfPlaylist;
    for (auto it = playlists.begin(); it != playlists.end(); ++it) {
        if (!Scenario::PlaylistTypes().contains(it.key())) {
            *error = name + QStringLiteral("unknown playlist type \"%1\" (known: %2)")
                                .arg(it.key(), Scenario::PlaylistTypes().join(QStringLiteral(", ")));
            return false;
        }
        const QString where = QStringLiteral("\"playlists\".\"%1\"").arg(it.key());
        *error = CheckIdentifiedList(it.value(), where);
        if (!error->isEmpty()) {
            error->prepend(name);
            return false;
        }
        const QJsonArray list = it.value().toArray();
        for (int i = 0; i < list.size(); ++i) {
            const QJsonObject playlist = list.at(i).toObject();
            const int id = playlist.value(QStringLiteral("id")).toInt();
            if (kindOfPlaylist.contains(id)) {
                *error = name +
                         QStringLiteral("%1[%2]: the playlist id %3 is used twice").arg(where).arg(i).arg(id);
                return false;
            }
            kindOfPlaylist.insert(id, Scenario::SettingsKindOf(it.key()));
            *error = CheckIdentifiedList(playlist.value(QStringLiteral("tracks")),
                                         QStringLiteral("%1[%2].\"tracks\"").arg(where).arg(i));
            if (!error->isEmpty()) {
                error->prepend(name);
                return false;
            }
        }
        completePlaylists.insert(it.key(), list);
    }
    for (const QString& type : Scenario::PlaylistTypes()) {
        if (!completePlaylists.contains(type)) {
            completePlaylists.insert(type, QJsonArray());
        }
    }

    if (file.contains(QStringLiteral("settings")) && !file.value(QStringLiteral("settings")).isObject()) {
        *error = name + QStringLiteral("\"settings\" must be an object");
        return false;
    }
    const QJsonObject settings = file.value(QStringLiteral("settings")).toObject();
    QJsonObject completeSettings;
    for (const QString& kind : SettingsKinds()) {
        const QJsonObject section = settings.value(kind).toObject();
        QJsonObject complete{
            {QStringLiteral("advanced"), section.value(QStringLiteral("advanced")).toBool(false)}};
        if (!IsOptionalBool(section, QStringLiteral("advanced"))) {
            *error =
                name + QStringLiteral("\"settings\".\"%1\".\"advanced\" must be true or false").arg(kind);
            return false;
        }
        const QStringList keys = QStringList(DayParts()) << QStringLiteral("playlist_id");
        for (const QString& key : keys) {
            const QJsonValue value = section.value(key);
            const auto id = value.isUndefined() ? std::optional<int>(0) : JsonValues::Integer(value);
            if (!id || (*id != 0 && kindOfPlaylist.value(*id) != kind)) {
                *error =
                    name + QStringLiteral("\"settings\".\"%1\".\"%2\" must be 0 or the id of a %1 playlist")
                               .arg(kind, key);
                return false;
            }
            complete.insert(key, *id);
        }
        completeSettings.insert(kind, complete);
    }

    const QJsonValue recommended = file.value(QStringLiteral("recommended"));
    *error = CheckIdentifiedList(recommended, QStringLiteral("\"recommended\""));
    if (!error->isEmpty()) {
        error->prepend(name);
        return false;
    }
    scenario->catalogue = QJsonObject{{QStringLiteral("playlists"), completePlaylists},
                                      {QStringLiteral("settings"), completeSettings},
                                      {QStringLiteral("recommended"), recommended.toArray()}};
    return true;
}

bool LoadConfigurations(const QString& directory, Scenario* scenario, QString* error)
{
    QSet<QString> codes;
    for (const auto& account : scenario->accounts) {
        for (const auto& object : account.objects) {
            codes.insert(object.code);
        }
    }
    const QDir folder(directory + QStringLiteral("/configurations"));
    const QStringList names = folder.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name);
    for (const QString& fileName : names) {
        const QString code = QFileInfo(fileName).completeBaseName();
        const QString name = QStringLiteral("configurations/") + fileName;
        if (!codes.contains(code) && code != scenario->signUpConfiguration) {
            *error = QStringLiteral("%1: no playback object has the code \"%2\", and it is not the "
                                    "\"sign_up_configuration\" of service.json")
                         .arg(name, code);
            return false;
        }
        bool present = false;
        const auto json = ReadFile(folder.filePath(fileName), name, &present, error);
        if (!json) {
            return false;
        }
        QString templateError;
        auto configuration = ConfigurationTemplate::FromJson(*json, &templateError);
        if (!configuration) {
            *error = QStringLiteral("%1: %2").arg(name, templateError);
            return false;
        }
        scenario->configurations.emplace(code, *configuration);
    }
    if (!scenario->signUpConfiguration.isEmpty() &&
        scenario->configurations.find(scenario->signUpConfiguration) == scenario->configurations.end()) {
        *error = QStringLiteral("service.json: \"sign_up_configuration\" names \"%1\", but there is no "
                                "configurations/%1.json")
                     .arg(scenario->signUpConfiguration);
        return false;
    }
    return true;
}

} // namespace

std::optional<Scenario> Scenario::Load(const QString& directory, QString* error)
{
    if (!QFileInfo(directory).isDir()) {
        *error = QStringLiteral("the scenario folder \"%1\" does not exist").arg(directory);
        return std::nullopt;
    }
    Scenario scenario;
    bool present = false;
    const auto service = ReadFile(directory + QStringLiteral("/service.json"), QStringLiteral("service.json"),
                                  &present, error);
    if (!service || !LoadService(*service, &scenario, error)) {
        return std::nullopt;
    }
    const auto accounts = ReadFile(directory + QStringLiteral("/accounts.json"),
                                   QStringLiteral("accounts.json"), &present, error);
    if (!accounts || !LoadAccounts(*accounts, &scenario, error)) {
        return std::nullopt;
    }
    const auto catalogue = ReadFile(directory + QStringLiteral("/catalogue.json"),
                                    QStringLiteral("catalogue.json"), &present, error);
    if (!catalogue || !LoadCatalogue(*catalogue, &scenario, error)) {
        return std::nullopt;
    }
    if (!LoadConfigurations(directory, &scenario, error)) {
        return std::nullopt;
    }
    return scenario;
}

const QStringList& Scenario::PlaylistTypes()
{
    static const QStringList types = {QStringLiteral("stock_music"), QStringLiteral("music"),
                                      QStringLiteral("video"), QStringLiteral("photo")};
    return types;
}

QString Scenario::SettingsKindOf(const QString& playlistType)
{
    return playlistType == QLatin1String("stock_music") ? QStringLiteral("music") : playlistType;
}

bool Scenario::IsValidObjectCode(const QString& code)
{
    static const QRegularExpression pattern(QStringLiteral("^[A-Za-z0-9_-][A-Za-z0-9_.-]{0,63}$"));
    return code != QLatin1String("auth") && pattern.match(code).hasMatch();
}

} // namespace ReferenceService
