#include "tools/reference_service/configuration_builder.h"

#include "tools/reference_service/json_values.h"

#include <QFileInfo>
#include <QJsonArray>

#include <cstdint>

namespace ReferenceService {

namespace {

const QStringList& ContentFolders()
{
    static const QStringList folders = {QStringLiteral("clip"), QStringLiteral("music"),
                                        QStringLiteral("video"), QStringLiteral("photo")};
    return folders;
}

std::uint32_t Fnv1a(const QByteArray& bytes)
{
    std::uint32_t hash = 2166136261u;
    for (const char byte : bytes) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= 16777619u;
    }
    return hash;
}

bool IsServedFromContent(const QString& type, const QString& path)
{
    return ContentFolders().contains(type) && !ConfigurationTemplate::IsUrl(path);
}

} // namespace

ConfigurationBuilder::ConfigurationBuilder(const ContentLibrary& library,
                                           const ServiceAddresses& serviceAddresses)
    : content(library)
    , addresses(serviceAddresses)
{
}

ConfigurationBuilder::Result ConfigurationBuilder::Build(const ServiceState::ObjectState& object,
                                                         const QDate& today) const
{
    const QJsonObject source = object.configuration ? object.configuration->Json() : QJsonObject();
    QJsonObject configuration;
    configuration.insert(QStringLiteral("domains"), source.contains(QStringLiteral("domains"))
                                                        ? source.value(QStringLiteral("domains")).toArray()
                                                        : QJsonArray{QStringLiteral("@MEDIA_DOMAIN@")});
    configuration.insert(QStringLiteral("schedule"),
                         BuildSchedule(source.value(QStringLiteral("schedule")).toArray(), today));
    configuration.insert(QStringLiteral("playlists"), source.value(QStringLiteral("playlists")).toArray());
    configuration.insert(QStringLiteral("ads"),
                         BuildAds(source.value(QStringLiteral("ads")).toArray(), today));
    configuration.insert(QStringLiteral("content"),
                         BuildContent(source.value(QStringLiteral("content")).toArray(), object.object.id));
    configuration = addresses.Substitute(configuration).toObject();

    Result result;
    if (object.versionOverride) {
        result.version = *object.versionOverride;
    } else if (object.configuration && object.configuration->ExplicitVersion()) {
        result.version = *object.configuration->ExplicitVersion();
    } else {
        result.version = 1 + static_cast<int>(Fnv1a(JsonValues::Compact(configuration)) % 1000000000u);
    }
    result.version += object.versionBump;
    configuration.insert(QStringLiteral("version"), result.version);

    if (!object.likes.empty()) {
        QJsonArray lists = configuration.value(QStringLiteral("content")).toArray();
        for (int i = 0; i < lists.size(); ++i) {
            QJsonObject list = lists.at(i).toObject();
            QJsonArray tracks = list.value(QStringLiteral("tracks")).toArray();
            for (int j = 0; j < tracks.size(); ++j) {
                QJsonObject track = tracks.at(j).toObject();
                const auto like = object.likes.find(track.value(QStringLiteral("id")).toInt());
                if (like != object.likes.end()) {
                    track.insert(QStringLiteral("liked"), like->second < 0 ? QJsonValue(QJsonValue::Null)
                                                                           : QJsonValue(like->second == 1));
                    tracks[j] = track;
                }
            }
            list.insert(QStringLiteral("tracks"), tracks);
            lists[i] = list;
        }
        configuration.insert(QStringLiteral("content"), lists);
    }
    result.configuration = configuration;
    return result;
}

QStringList ConfigurationBuilder::MissingFiles(const ConfigurationTemplate& configuration) const
{
    QStringList missing;
    for (const QJsonValue& listValue : configuration.Json().value(QStringLiteral("content")).toArray()) {
        const QJsonObject list = listValue.toObject();
        const QString type = list.value(QStringLiteral("type")).toString();
        for (const QJsonValue& trackValue : list.value(QStringLiteral("tracks")).toArray()) {
            const QJsonObject track = trackValue.toObject();
            const QString path = track.value(QStringLiteral("path")).toString();
            const bool hasDigest =
                track.contains(QStringLiteral("md5")) && track.contains(QStringLiteral("file_size_bytes"));
            if (IsServedFromContent(type, path) && !hasDigest) {
                const QString relative = type + QLatin1Char('/') + path;
                if (content.Resolve(relative.split(QLatin1Char('/'))).isEmpty()) {
                    missing.append(relative);
                }
            }
        }
    }
    missing.removeDuplicates();
    return missing;
}

QString ConfigurationBuilder::DateText(const QDate& date)
{
    return date.toString(QStringLiteral("dd.MM.yyyy"));
}

QString ConfigurationBuilder::WeekdayName(int dayOfWeek)
{
    static const QStringList names = {QStringLiteral("Понедельник"), QStringLiteral("Вторник"),
                                      QStringLiteral("Среда"),       QStringLiteral("Четверг"),
                                      QStringLiteral("Пятница"),     QStringLiteral("Суббота"),
                                      QStringLiteral("Воскресенье")};
    return dayOfWeek >= 1 && dayOfWeek <= 7 ? names.at(dayOfWeek - 1) : QString();
}

QJsonArray ConfigurationBuilder::BuildSchedule(const QJsonArray& days, const QDate& today) const
{
    QJsonArray schedule;
    for (const QJsonValue& value : days) {
        QJsonObject day = value.toObject();
        const QDate date = today.addDays(day.take(QStringLiteral("day_offset")).toInt());
        day.insert(QStringLiteral("date"), DateText(date));
        day.insert(QStringLiteral("day_of_week"), WeekdayName(date.dayOfWeek()));
        day.insert(QStringLiteral("day_of_week_id"), date.dayOfWeek());
        if (!day.contains(QStringLiteral("periods"))) {
            day.insert(QStringLiteral("periods"), QJsonArray());
        }
        schedule.append(day);
    }
    return schedule;
}

QJsonArray ConfigurationBuilder::BuildAds(const QJsonArray& blocks, const QDate& today) const
{
    QJsonArray ads;
    for (const QJsonValue& value : blocks) {
        QJsonObject block = value.toObject();
        QJsonArray entries;
        for (const QJsonValue& entryValue : block.value(QStringLiteral("tracks")).toArray()) {
            QJsonObject entry = entryValue.toObject();
            if (entry.contains(QStringLiteral("day_offsets"))) {
                const QJsonArray offsets = entry.take(QStringLiteral("day_offsets")).toArray();
                for (const QJsonValue& offset : offsets) {
                    QJsonObject dated = entry;
                    dated.insert(QStringLiteral("date"), DateText(today.addDays(offset.toInt())));
                    entries.append(dated);
                }
                continue;
            }
            if (entry.contains(QStringLiteral("day_offset"))) {
                entry.insert(QStringLiteral("date"),
                             DateText(today.addDays(entry.take(QStringLiteral("day_offset")).toInt())));
            }
            entries.append(entry);
        }
        block.insert(QStringLiteral("tracks"), entries);
        ads.append(block);
    }
    return ads;
}

QJsonArray ConfigurationBuilder::BuildContent(const QJsonArray& lists, int shopId) const
{
    QJsonArray result;
    for (const QJsonValue& value : lists) {
        QJsonObject list = value.toObject();
        const QString type = list.value(QStringLiteral("type")).toString();
        QJsonArray tracks;
        for (const QJsonValue& track : list.value(QStringLiteral("tracks")).toArray()) {
            tracks.append(BuildTrack(track.toObject(), type, shopId));
        }
        list.insert(QStringLiteral("tracks"), tracks);
        result.append(list);
    }
    return result;
}

QJsonObject ConfigurationBuilder::BuildTrack(QJsonObject track, const QString& type, int shopId) const
{
    const QString path = track.value(QStringLiteral("path")).toString();
    if (IsServedFromContent(type, path)) {
        const QString relative = type + QLatin1Char('/') + path;
        const bool needsFacts =
            !track.contains(QStringLiteral("md5")) || !track.contains(QStringLiteral("file_size_bytes"));
        if (needsFacts) {
            const ContentLibrary::FileFacts facts = content.Facts(relative);
            if (!track.contains(QStringLiteral("md5"))) {
                track.insert(QStringLiteral("md5"), facts.md5);
            }
            if (!track.contains(QStringLiteral("file_size_bytes"))) {
                track.insert(QStringLiteral("file_size_bytes"), static_cast<double>(facts.size));
            }
        }
        const QJsonObject manifest = content.ManifestEntry(relative);
        if (!track.contains(QStringLiteral("name"))) {
            const QString title = manifest.value(QStringLiteral("title")).toString();
            track.insert(QStringLiteral("name"),
                         title.isEmpty() ? QFileInfo(path).completeBaseName() : title);
        }
        if (!track.contains(QStringLiteral("author"))) {
            track.insert(QStringLiteral("author"), manifest.value(QStringLiteral("artist")).toString());
        }
    }
    // The members a real reply always carries, where the template leaves them out.
    const QJsonObject defaults{
        {QStringLiteral("name"), QString()},         {QStringLiteral("author"), QString()},
        {QStringLiteral("shop_id"), shopId},         {QStringLiteral("image"), QString()},
        {QStringLiteral("md5"), QString()},          {QStringLiteral("file_size_bytes"), 0},
        {QStringLiteral("uploaded_by_user"), false}, {QStringLiteral("liked"), QJsonValue(QJsonValue::Null)}};
    for (auto it = defaults.begin(); it != defaults.end(); ++it) {
        if (!track.contains(it.key())) {
            track.insert(it.key(), it.value());
        }
    }
    return track;
}

} // namespace ReferenceService
