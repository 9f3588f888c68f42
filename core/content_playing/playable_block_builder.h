#pragma once

#include "core/content_playing/abstract_content_block.h"
#include "core/content_playing/ads_block.h"
#include "core/data_types/playback/ad_block.h"
#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/playback_period.h"
#include "core/data_types/playback/playlist.h"
#include "core/data_types/playback/track.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace Core::ContentPlaying {

// Makes the content blocks of one period and the advertising blocks of a whole
// configuration. Lookups of what the configuration must contain (the period's
// playlist per kind, the tracks of a kind whose playlist was found) are strict and
// throw std::out_of_range; what it may lack (playlists, tracks) only shortens or
// drops blocks.
class PlayableBlockBuilder
{
public:
    using TracksByType = std::map<DataTypes::Playback::ContentType, std::vector<DataTypes::Playback::Track>>;
    using Playlists = std::vector<DataTypes::Playback::Playlist>;

    PlayableBlockBuilder() = delete;

    // A music, video or photo block, or nothing (clip, playlist 0, no such playlist).
    static std::shared_ptr<AbstractContentBlock>
    CreateContentBlock(DataTypes::Playback::ContentType type,
                       const DataTypes::Playback::PlaybackPeriod& period, const TracksByType& tracks,
                       const Playlists& playlists);
    // The first playlist of that identifier and kind, or playlists.end().
    static Playlists::const_iterator FindPlaylist(const Playlists& playlists, long identifier,
                                                  DataTypes::Playback::ContentType type);
    static std::vector<DataTypes::Playback::Track>
    TracksOfPlaylist(const DataTypes::Playback::Playlist& playlist,
                     const std::vector<DataTypes::Playback::Track>& tracks);
    static void ShuffleTracksIfNeeded(std::vector<DataTypes::Playback::Track>& tracks, bool shuffle);
    // One block per configured block and date, dates ascending.
    static std::vector<std::shared_ptr<AdsBlock>>
    CreateAdsBlock(const std::vector<DataTypes::Playback::AdBlock>& adBlocks,
                   const std::vector<DataTypes::Playback::Track>& clipTracks);
    static std::vector<DataTypes::Playback::Track>
    TracksOfAdsBlock(const std::vector<DataTypes::Playback::Track>& tracks,
                     const std::vector<std::int32_t>& identifiers);
    // Audio spots before video spots.
    static void SortAdsTracksByPathExtension(std::vector<DataTypes::Playback::Track>& tracks);

    // Strict lookups: a missing key throws std::out_of_range with the text
    // "map::at:  key not found" whatever the standard library would say, so that
    // the player's log reads the same everywhere.
    static const std::vector<DataTypes::Playback::Track>& TracksOfType(const TracksByType& tracks,
                                                                       DataTypes::Playback::ContentType type);
    static std::int32_t PlaylistIdentifierOfType(const DataTypes::Playback::PlaybackPeriod& period,
                                                 DataTypes::Playback::ContentType type);
};

} // namespace Core::ContentPlaying
