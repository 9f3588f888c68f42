#include "core/content_playing/playable_period_builder.h"

#include "core/content_playing/playable_period.h"

namespace Core::ContentPlaying {

using DataTypes::Playback::ContentType;
using DataTypes::Playback::Day;
using DataTypes::Playback::PlaybackConfiguration;
using DataTypes::Playback::PlaybackPeriod;
using DataTypes::Playback::Playlist;

std::vector<std::shared_ptr<PlayablePeriod>>
PlayablePeriodBuilder::BuildPlayablePeriods(const PlaybackConfiguration& configuration)
{
    // The schedule as the server delivered it: the period itself decides later,
    // by its date and times, whether it is the one to play now.
    std::vector<std::shared_ptr<PlayablePeriod>> periods;
    for (const Day& day : configuration.days) {
        for (const PlaybackPeriod& period : day.periods) {
            periods.push_back(BuildPlayablePeriod(period, configuration.tracks, configuration.playlists,
                                                  day.dayOfWeek, day.date));
        }
    }
    for (std::size_t index = 0; index + 1 < periods.size(); ++index) {
        periods[index]->SetNextPeriod(periods[index + 1]);
    }

    // Every period sees every ads block and keeps those of its own date and time
    // span; the blocks themselves are shared, not copied.
    const std::vector<std::shared_ptr<AdsBlock>> adsBlocks = PlayableBlockBuilder::CreateAdsBlock(
        configuration.adBlocks, PlayableBlockBuilder::TracksOfType(configuration.tracks, ContentType::Clip));
    for (const auto& period : periods) {
        period->TryToAddAdvertisingBlocks(adsBlocks);
    }
    return periods;
}

std::shared_ptr<PlayablePeriod> PlayablePeriodBuilder::BuildPlayablePeriod(
    const PlaybackPeriod& period, const PlayableBlockBuilder::TracksByType& tracks,
    const PlayableBlockBuilder::Playlists& playlists, const std::string& dayOfWeek, const std::string& date)
{
    auto playable = std::make_shared<PlayablePeriod>();

    PlayablePeriodInfo info;
    info.adsVolume = period.adsVolume;
    info.contentVolume = period.contentVolume;
    info.name = period.name;
    info.startTime = period.startTime;
    info.endTime = period.endTime;
    info.date = date;
    info.dayOfWeek = dayOfWeek;
    info.scheduleId = period.scheduleId;
    SetPlaylistInfoToPeriod(info, period, playlists);
    playable->SetInfo(info);

    for (const ContentType type : {ContentType::Music, ContentType::Video, ContentType::Photo}) {
        playable->SetBlock(type, PlayableBlockBuilder::CreateContentBlock(type, period, tracks, playlists));
    }
    return playable;
}

void PlayablePeriodBuilder::SetPlaylistInfoToPeriod(PlayablePeriodInfo& info, const PlaybackPeriod& period,
                                                    const PlayableBlockBuilder::Playlists& playlists)
{
    for (const Playlist& playlist : playlists) {
        // A playlist of a kind the period has no entry for is a broken
        // configuration: the lookup throws and the build fails.
        if (PlayableBlockBuilder::PlaylistIdentifierOfType(period, playlist.contentType) == playlist.id) {
            info.SetPlaylistIdentifier(playlist.contentType, playlist.id);
            info.SetPlaylistName(playlist.contentType, playlist.name);
            info.SetPlaylistImage(playlist.contentType, playlist.image);
        }
    }
}

} // namespace Core::ContentPlaying
