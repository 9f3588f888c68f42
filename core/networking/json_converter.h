#pragma once

#include "core/data_types/auth/business_type.h"
#include "core/data_types/auth/music_style.h"
#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/data_types/playback/playback_configuration.h"
#include "core/data_types/playlists/content_playlist_settings.h"
#include "core/data_types/playlists/playlist.h"
#include "core/data_types/playlists/playlists_settings.h"
#include "core/data_types/playlists/recommended_playlist.h"
#include "core/data_types/playlists/track.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <memory>
#include <string>
#include <vector>

namespace Core::Networking {

// Turns the server's replies into data types and a configuration back into the
// JSON the database keeps. Reading is lenient by design: a missing or mistyped
// member leaves its default and no reader ever fails; whether a reply was a
// success is decided before these run.
class JsonConverter
{
public:
    JsonConverter() = delete;

    // Playback configuration
    static std::shared_ptr<DataTypes::Playback::PlaybackConfiguration>
    PlaybackConfigurationFromResponse(const QString& body);
    static long PlaybackConfigurationVersionFromResponse(const QString& body);
    static std::vector<std::string> DomainsFromArray(const QJsonArray& array);
    static std::vector<DataTypes::Playback::Day> DaysFromArray(const QJsonArray& array);
    static std::vector<DataTypes::Playback::PlaybackPeriod> PlaybackPeriodsFromArray(const QJsonArray& array);
    static std::vector<DataTypes::Playback::Playlist> PlaylistsWithTracksFromArray(const QJsonArray& array);
    static std::vector<DataTypes::Playback::AdBlock> AdBlocksFromArray(const QJsonArray& array);
    static std::vector<DataTypes::Playback::Track> TracksFromArray(const QJsonArray& contentArray,
                                                                   DataTypes::Playback::ContentType type);

    static QString
    PlaybackConfigurationToString(const DataTypes::Playback::PlaybackConfiguration& configuration);
    static QJsonArray DomainsToArray(const std::vector<std::string>& domains);
    static QJsonArray DaysToArray(const std::vector<DataTypes::Playback::Day>& days);
    static QJsonArray PlaybackPeriodsToArray(const std::vector<DataTypes::Playback::PlaybackPeriod>& periods);
    static QJsonArray PlaylistsWithTracksToArray(const std::vector<DataTypes::Playback::Playlist>& playlists);
    static QJsonArray AdBlocksToArray(const std::vector<DataTypes::Playback::AdBlock>& adBlocks);
    static QJsonArray TracksToArray(const std::vector<DataTypes::Playback::Track>& tracks);

    // Generic accessors on the top-level object of a reply
    static std::string StringFromResponse(const QString& body, const QString& key);
    static int IntFromResponse(const QString& body, const QString& key);
    static QJsonArray ArrayFromDataResponse(const QString& body, const QString& key);
    static QJsonObject JsonObjectFromDataResponse(const QString& body, const QString& key);
    static QJsonObject DataObjectFromDataResponse(const QString& body);

    // Account and catalogue replies
    static std::vector<std::shared_ptr<DataTypes::Auth::Server>> ServersFromResponse(const QString& body);
    static std::string ConfirmationCodeFromResponse(const QString& body);
    static std::string TokenFromResponse(const QString& body);
    static std::vector<std::shared_ptr<DataTypes::Auth::BusinessType>>
    BusinessTypesFromResponse(const QString& body);
    static std::vector<std::shared_ptr<DataTypes::Auth::MusicStyle>>
    MusicStylesFromResponse(const QString& body);
    static std::shared_ptr<DataTypes::Auth::PlaybackObject> PlaybackObjectFromResponse(const QString& body);
    static std::vector<std::shared_ptr<DataTypes::Auth::PlaybackObject>>
    PlaybackObjectsFromResponse(const QString& body);
    static std::shared_ptr<DataTypes::Auth::PlaybackObject>
    PlaybackObjectFromJsonObject(const QJsonObject& object);
    static std::vector<std::shared_ptr<DataTypes::Playlists::RecommendedPlaylist>>
    RecommendedPlaylistsFromResponse(const QString& body);
    static std::vector<std::shared_ptr<DataTypes::Playlists::Playlist>>
    PlaylistsFromResponse(const QString& body);
    static std::vector<std::shared_ptr<DataTypes::Playlists::Playlist>>
    PlaylistsFromArray(const QJsonArray& array);
    static std::shared_ptr<std::vector<DataTypes::Playlists::Track>> TracksFromResponse(const QString& body);
    static std::vector<DataTypes::Playlists::Track> PlaylistTracksFromArray(const QJsonArray& array);
    static std::shared_ptr<DataTypes::Playlists::PlaylistsSettings>
    PlaylistsSettingsFromResponse(const QString& body);
    static std::string CertificateUrlFromResponse(const QString& body);
    static DataTypes::Playback::LikeStatus LikeStatusFromResponse(const QString& body);

    static QJsonObject PlaylistsSettingsToJson(const DataTypes::Playlists::PlaylistsSettings& settings);
};

DataTypes::Playlists::ContentPlaylistSettings ContentPlaylistSettingsFromJson(const QJsonObject& object);
QJsonObject ContentPlaylistSettingsToJson(const DataTypes::Playlists::ContentPlaylistSettings& settings);

} // namespace Core::Networking
