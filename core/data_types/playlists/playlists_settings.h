#pragma once

#include "core/data_types/playlists/content_playlist_settings.h"

namespace Core::DataTypes::Playlists {

struct PlaylistsSettings
{
    ContentPlaylistSettings music;
    ContentPlaylistSettings video;
    ContentPlaylistSettings photo;
};

} // namespace Core::DataTypes::Playlists
