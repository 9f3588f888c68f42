#include "tools/reference_service/catalogue_state.h"

#include "tools/reference_service/scenario.h"

#include <QStringList>

namespace ReferenceService {

namespace {

const QStringList& DayParts()
{
    static const QStringList parts = {QStringLiteral("morning"), QStringLiteral("day"),
                                      QStringLiteral("evening"), QStringLiteral("night")};
    return parts;
}

} // namespace

CatalogueState::CatalogueState(const QJsonObject& catalogue)
    : playlists(catalogue.value(QStringLiteral("playlists")).toObject())
{
    const QJsonObject all = catalogue.value(QStringLiteral("settings")).toObject();
    for (auto it = all.begin(); it != all.end(); ++it) {
        const QJsonObject section = it.value().toObject();
        KindSettings kind;
        kind.advanced = section.value(QStringLiteral("advanced")).toBool(false);
        kind.allDay = section.value(QStringLiteral("playlist_id")).toInt(0);
        for (int part = 0; part < 4; ++part) {
            kind.parts[static_cast<size_t>(part)] = section.value(DayParts().at(part)).toInt(0);
        }
        settings[it.key()] = kind;
    }
}

std::optional<QJsonArray> CatalogueState::Playlists(const QString& type) const
{
    if (!Scenario::PlaylistTypes().contains(type)) {
        return std::nullopt;
    }
    const QString kind = Scenario::SettingsKindOf(type);
    QJsonArray reply;
    for (const QJsonValue& value : playlists.value(type).toArray()) {
        const QJsonObject playlist = value.toObject();
        const int id = playlist.value(QStringLiteral("id")).toInt();
        const QJsonArray tracks = playlist.value(QStringLiteral("tracks")).toArray();
        reply.append(
            QJsonObject{{QStringLiteral("id"), id},
                        {QStringLiteral("name"), playlist.value(QStringLiteral("name")).toString()},
                        {QStringLiteral("image"), playlist.value(QStringLiteral("image")).toString()},
                        {QStringLiteral("content_size_bytes"),
                         playlist.value(QStringLiteral("content_size_bytes")).toDouble(0)},
                        {QStringLiteral("tracks_count"),
                         playlist.value(QStringLiteral("tracks_count")).toInt(tracks.size())},
                        {QStringLiteral("active"), IsActive(kind, id)}});
    }
    return reply;
}

std::optional<QJsonArray> CatalogueState::Tracks(const QString& type, int id) const
{
    const auto playlist = FindPlaylist(type, id);
    if (!playlist) {
        return std::nullopt;
    }
    QJsonArray reply;
    for (const QJsonValue& value : playlist->value(QStringLiteral("tracks")).toArray()) {
        const QJsonObject track = value.toObject();
        reply.append(QJsonObject{{QStringLiteral("id"), track.value(QStringLiteral("id")).toInt()},
                                 {QStringLiteral("name"), track.value(QStringLiteral("name")).toString()},
                                 {QStringLiteral("author"), track.value(QStringLiteral("author")).toString()},
                                 {QStringLiteral("image"), track.value(QStringLiteral("image")).toString()}});
    }
    return reply;
}

QJsonObject CatalogueState::Settings() const
{
    QJsonObject reply;
    for (const auto& [kind, values] : settings) {
        QJsonObject section{{QStringLiteral("advanced"), values.advanced},
                            {QStringLiteral("playlist_id"), values.allDay},
                            {QStringLiteral("playlist_name"), PlaylistName(kind, values.allDay)}};
        for (int part = 0; part < 4; ++part) {
            const int id = values.parts[static_cast<size_t>(part)];
            section.insert(DayParts().at(part),
                           QJsonObject{{QStringLiteral("playlist_id"), id},
                                       {QStringLiteral("playlist_name"), PlaylistName(kind, id)}});
        }
        reply.insert(kind, section);
    }
    return reply;
}

int CatalogueState::Activate(const QString& type, int id, const FormData& form)
{
    if (!FindPlaylist(type, id)) {
        return 404005;
    }
    KindSettings& kind = settings[Scenario::SettingsKindOf(type)];
    bool byParts = false;
    std::array<bool, 4> chosen = {false, false, false, false};
    for (int part = 0; part < 4; ++part) {
        const QString& name = DayParts().at(part);
        if (!form.Has(name)) {
            continue;
        }
        const QString value = form.Value(name);
        if (value != QLatin1String("true") && value != QLatin1String("false")) {
            return 400000;
        }
        byParts = true;
        chosen[static_cast<size_t>(part)] = value == QLatin1String("true");
    }
    if (!byParts) {
        if (kind.advanced) {
            return 403005;
        }
        kind.allDay = id;
        return 0;
    }
    if (!kind.advanced) {
        return 403006;
    }
    // The flags describe the playlist's parts completely: where it is no longer
    // wanted it gives its place up.
    for (size_t part = 0; part < 4; ++part) {
        if (chosen[part]) {
            kind.parts[part] = id;
        } else if (kind.parts[part] == id) {
            kind.parts[part] = 0;
        }
    }
    return 0;
}

int CatalogueState::Deactivate(const QString& type, int id)
{
    if (!FindPlaylist(type, id)) {
        return 404005;
    }
    KindSettings& kind = settings[Scenario::SettingsKindOf(type)];
    if (kind.allDay == id) {
        kind.allDay = 0;
    }
    for (int& part : kind.parts) {
        if (part == id) {
            part = 0;
        }
    }
    return 0;
}

std::optional<QJsonObject> CatalogueState::FindPlaylist(const QString& type, int id) const
{
    for (const QJsonValue& value : playlists.value(type).toArray()) {
        if (value.toObject().value(QStringLiteral("id")).toInt() == id) {
            return value.toObject();
        }
    }
    return std::nullopt;
}

QString CatalogueState::PlaylistName(const QString& kind, int id) const
{
    if (id == 0) {
        return QString();
    }
    for (const QString& type : Scenario::PlaylistTypes()) {
        if (Scenario::SettingsKindOf(type) != kind) {
            continue;
        }
        if (const auto playlist = FindPlaylist(type, id)) {
            return playlist->value(QStringLiteral("name")).toString();
        }
    }
    return QString();
}

bool CatalogueState::IsActive(const QString& kind, int id) const
{
    const auto found = settings.find(kind);
    if (found == settings.end()) {
        return false;
    }
    const KindSettings& values = found->second;
    if (!values.advanced) {
        return values.allDay == id;
    }
    for (int part : values.parts) {
        if (part == id) {
            return true;
        }
    }
    return false;
}

} // namespace ReferenceService
