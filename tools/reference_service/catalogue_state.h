#pragma once

#include "tools/reference_service/form_data.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <array>
#include <map>
#include <optional>

namespace ReferenceService {

// The playlist catalogue as one playback object sees it: which playlists play all
// day or in which part of the day. A playlist is "active" exactly when the settings
// name it, so the two replies can never disagree.
class CatalogueState
{
public:
    CatalogueState() = default;
    // `catalogue` is a scenario's completed catalogue (see Scenario::catalogue).
    explicit CatalogueState(const QJsonObject& catalogue);

    // Reply form of the playlists of one type; nullopt for an unknown type.
    std::optional<QJsonArray> Playlists(const QString& type) const;
    // The tracks of a playlist; nullopt when the type has no such playlist.
    std::optional<QJsonArray> Tracks(const QString& type, int id) const;
    // Reply form of the settings: {"music": {...}, "video": {...}, "photo": {...}}.
    QJsonObject Settings() const;

    // 0 on success or the API error code: 404005 for an unknown playlist, 403005
    // when a whole-day choice meets advanced settings, 403006 when parts of the day
    // are chosen without them, 400000 for a part flag that is not "true"/"false".
    int Activate(const QString& type, int id, const FormData& form);
    int Deactivate(const QString& type, int id);

private:
    struct KindSettings
    {
        bool advanced = false;
        int allDay = 0;
        // morning, day, evening, night
        std::array<int, 4> parts = {0, 0, 0, 0};
    };

    std::optional<QJsonObject> FindPlaylist(const QString& type, int id) const;
    QString PlaylistName(const QString& kind, int id) const;
    bool IsActive(const QString& kind, int id) const;

    QJsonObject playlists;
    std::map<QString, KindSettings> settings;
};

} // namespace ReferenceService
