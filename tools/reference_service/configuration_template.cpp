#include "tools/reference_service/configuration_template.h"

#include "tools/reference_service/json_values.h"

#include <QJsonArray>

namespace ReferenceService {

namespace {

bool IsDayOffset(const QJsonValue& value)
{
    const auto offset = JsonValues::Integer(value);
    return offset && *offset >= 0 && *offset <= 6;
}

// Each check returns an empty text when the member is acceptable, or what is wrong.
QString CheckOptionalArray(const QJsonObject& object, const QString& key, const QString& where)
{
    if (object.contains(key) && !object.value(key).isArray()) {
        return QStringLiteral("%1\"%2\" must be an array").arg(where, key);
    }
    return QString();
}

QString CheckSchedule(const QJsonArray& schedule)
{
    for (int i = 0; i < schedule.size(); ++i) {
        const QString where = QStringLiteral("schedule[%1]: ").arg(i);
        if (!schedule.at(i).isObject()) {
            return where + QStringLiteral("a day must be an object");
        }
        const QJsonObject day = schedule.at(i).toObject();
        if (!IsDayOffset(day.value(QStringLiteral("day_offset")))) {
            return where + QStringLiteral("\"day_offset\" must be an integer from 0 (today) to 6");
        }
        const QString periods = CheckOptionalArray(day, QStringLiteral("periods"), where);
        if (!periods.isEmpty()) {
            return periods;
        }
    }
    return QString();
}

QString CheckAds(const QJsonArray& ads)
{
    for (int i = 0; i < ads.size(); ++i) {
        const QString where = QStringLiteral("ads[%1]: ").arg(i);
        if (!ads.at(i).isObject()) {
            return where + QStringLiteral("an ad block must be an object");
        }
        const QJsonObject block = ads.at(i).toObject();
        const QString tracksError = CheckOptionalArray(block, QStringLiteral("tracks"), where);
        if (!tracksError.isEmpty()) {
            return tracksError;
        }
        const QJsonArray entries = block.value(QStringLiteral("tracks")).toArray();
        for (int j = 0; j < entries.size(); ++j) {
            const QString entryWhere = QStringLiteral("ads[%1].tracks[%2]: ").arg(i).arg(j);
            const QJsonObject entry = entries.at(j).toObject();
            if (!entries.at(j).isObject() || !JsonValues::IsInteger(entry.value(QStringLiteral("track")))) {
                return entryWhere + QStringLiteral("an entry must be an object with an integer \"track\"");
            }
            if (entry.contains(QStringLiteral("day_offset")) &&
                !IsDayOffset(entry.value(QStringLiteral("day_offset")))) {
                return entryWhere + QStringLiteral("\"day_offset\" must be an integer from 0 (today) to 6");
            }
            if (entry.contains(QStringLiteral("day_offsets"))) {
                const QJsonValue offsets = entry.value(QStringLiteral("day_offsets"));
                bool valid = offsets.isArray();
                for (const QJsonValue& offset : offsets.toArray()) {
                    valid = valid && IsDayOffset(offset);
                }
                if (!valid) {
                    return entryWhere +
                           QStringLiteral("\"day_offsets\" must be an array of integers from 0 to 6");
                }
            }
        }
    }
    return QString();
}

QString CheckContent(const QJsonArray& content)
{
    for (int i = 0; i < content.size(); ++i) {
        const QString where = QStringLiteral("content[%1]: ").arg(i);
        const QJsonObject list = content.at(i).toObject();
        if (!content.at(i).isObject() || !list.value(QStringLiteral("type")).isString() ||
            !list.value(QStringLiteral("tracks")).isArray()) {
            return where + QStringLiteral("must be an object with a string \"type\" and an array \"tracks\"");
        }
        const QJsonArray tracks = list.value(QStringLiteral("tracks")).toArray();
        for (int j = 0; j < tracks.size(); ++j) {
            const QString trackWhere = QStringLiteral("content[%1].tracks[%2]: ").arg(i).arg(j);
            const QJsonObject track = tracks.at(j).toObject();
            if (!tracks.at(j).isObject() || !JsonValues::IsInteger(track.value(QStringLiteral("id"))) ||
                !track.value(QStringLiteral("path")).isString()) {
                return trackWhere +
                       QStringLiteral(
                           "a track must be an object with an integer \"id\" and a string \"path\"");
            }
            const QString path = track.value(QStringLiteral("path")).toString();
            if (!ConfigurationTemplate::IsUrl(path) && !ConfigurationTemplate::IsSafeRelativePath(path)) {
                return trackWhere +
                       QStringLiteral("\"path\" \"%1\" must be a relative path inside the content "
                                      "folder (no \"..\", no leading \"/\") or a full URL")
                           .arg(path);
            }
        }
    }
    return QString();
}

} // namespace

std::optional<ConfigurationTemplate> ConfigurationTemplate::FromJson(const QJsonObject& json, QString* error)
{
    if (json.contains(QStringLiteral("version"))) {
        const auto version = JsonValues::Integer(json.value(QStringLiteral("version")));
        if (!version || *version < 0) {
            *error = QStringLiteral("\"version\" must be a non-negative integer");
            return std::nullopt;
        }
    }
    for (const QString& key :
         {QStringLiteral("domains"), QStringLiteral("schedule"), QStringLiteral("playlists"),
          QStringLiteral("ads"), QStringLiteral("content")}) {
        *error = CheckOptionalArray(json, key, QString());
        if (!error->isEmpty()) {
            return std::nullopt;
        }
    }
    for (const QJsonValue& domain : json.value(QStringLiteral("domains")).toArray()) {
        if (!domain.isString()) {
            *error = QStringLiteral("\"domains\" must hold strings");
            return std::nullopt;
        }
    }
    *error = CheckSchedule(json.value(QStringLiteral("schedule")).toArray());
    if (error->isEmpty()) {
        *error = CheckAds(json.value(QStringLiteral("ads")).toArray());
    }
    if (error->isEmpty()) {
        *error = CheckContent(json.value(QStringLiteral("content")).toArray());
    }
    if (!error->isEmpty()) {
        return std::nullopt;
    }
    return ConfigurationTemplate(json);
}

bool ConfigurationTemplate::IsSafeRelativePath(const QString& path)
{
    if (path.isEmpty() || path.contains(QLatin1Char('\\')) || path.contains(QChar(0))) {
        return false;
    }
    for (const QString& segment : path.split(QLatin1Char('/'))) {
        if (segment.isEmpty() || segment == QLatin1String(".") || segment == QLatin1String("..")) {
            return false;
        }
    }
    return true;
}

bool ConfigurationTemplate::IsUrl(const QString& path)
{
    return path.startsWith(QLatin1String("http:")) || path.startsWith(QLatin1String("https:"));
}

const QJsonObject& ConfigurationTemplate::Json() const
{
    return json;
}

std::optional<int> ConfigurationTemplate::ExplicitVersion() const
{
    if (!json.contains(QStringLiteral("version"))) {
        return std::nullopt;
    }
    return JsonValues::Integer(json.value(QStringLiteral("version")));
}

ConfigurationTemplate::ConfigurationTemplate(const QJsonObject& value)
    : json(value)
{
}

} // namespace ReferenceService
