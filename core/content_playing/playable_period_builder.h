#pragma once

#include "core/content_playing/playable_block_builder.h"
#include "core/content_playing/playable_period_info.h"
#include "core/data_types/playback/playback_configuration.h"

#include <memory>
#include <string>
#include <vector>

namespace Core::ContentPlaying {

class PlayablePeriod;

// Turns a configuration into the linked chain of playable periods, in the order the
// server delivered the schedule: no sorting, no filtering, no overlap checks.
// A configuration missing what it must hold makes the build throw
// std::out_of_range; the caller keeps whatever it played before.
class PlayablePeriodBuilder
{
public:
    PlayablePeriodBuilder() = delete;

    static std::vector<std::shared_ptr<PlayablePeriod>>
    BuildPlayablePeriods(const DataTypes::Playback::PlaybackConfiguration& configuration);
    static std::shared_ptr<PlayablePeriod>
    BuildPlayablePeriod(const DataTypes::Playback::PlaybackPeriod& period,
                        const PlayableBlockBuilder::TracksByType& tracks,
                        const PlayableBlockBuilder::Playlists& playlists, const std::string& dayOfWeek,
                        const std::string& date);
    static void SetPlaylistInfoToPeriod(PlayablePeriodInfo& info,
                                        const DataTypes::Playback::PlaybackPeriod& period,
                                        const PlayableBlockBuilder::Playlists& playlists);
};

} // namespace Core::ContentPlaying
