#include "core/data_types/playlists/playlist_content_type.h"

namespace Core::DataTypes::Playlists {

std::string PlaylistContentTypeToString(PlaylistContentType type)
{
    switch (type) {
    case PlaylistContentType::StockMusic:
        return "stock_music";
    case PlaylistContentType::Music:
        return "music";
    case PlaylistContentType::Video:
        return "video";
    case PlaylistContentType::Photo:
        break;
    }
    return "photo";
}

} // namespace Core::DataTypes::Playlists
