#pragma once

#include "tools/reference_service/configuration_template.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <map>
#include <optional>
#include <vector>

namespace ReferenceService {

// Everything the service knows when it starts, read from a folder of JSON files:
//   service.json            servers, business types, music styles, certificate URL,
//                           sign-up confirmation code and the sign-up configuration
//   accounts.json           accounts with their playback objects
//   catalogue.json          catalogue playlists and tracks, recommendations, the
//                           playlist settings every object starts with
//   configurations/CODE.json  the configuration template of object CODE
// Every file is optional; whatever is there is checked in full before the service
// listens, and the first problem is reported with the file and the place in it.
class Scenario
{
public:
    struct PlaybackObject
    {
        // The members sent to the player, every key of a playback object present.
        QJsonObject reply;
        QString code;
        int id = 0;
        bool exported = false;
        // Overrides the service-wide certificate URL when not empty.
        QString certificateUrl;
    };

    struct Account
    {
        QString login;
        QString password;
        QString phone;
        bool blocked = false;
        std::vector<PlaybackObject> objects;
    };

    static std::optional<Scenario> Load(const QString& directory, QString* error);

    // The catalogue kinds, as they appear in URLs.
    static const QStringList& PlaylistTypes();
    // The settings section a catalogue kind belongs to: stock music is music.
    static QString SettingsKindOf(const QString& playlistType);
    // A code the service can tell apart from the other segments of an URL.
    static bool IsValidObjectCode(const QString& code);

    QJsonArray servers;
    QJsonArray businessTypes;
    QJsonArray musicStyles;
    QString certificateUrl;
    QString confirmationCode;
    // The code whose configuration template an object made by sign-up receives.
    QString signUpConfiguration;
    std::vector<Account> accounts;
    std::map<QString, ConfigurationTemplate> configurations;
    // {"playlists": {type: [playlist with "tracks"]}, "recommended": [...],
    //  "settings": {"music"|"video"|"photo": {"advanced", "playlist_id", "morning",
    //  "day", "evening", "night"}}}, complete after loading.
    QJsonObject catalogue;
};

} // namespace ReferenceService
