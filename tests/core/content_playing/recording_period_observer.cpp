#include "tests/core/content_playing/recording_period_observer.h"

namespace Tests {

using Core::ContentPlaying::PlayablePeriod;
using Core::DataTypes::Playback::ContentType;

void RecordingPeriodObserver::PeriodStarted(std::shared_ptr<PlayablePeriod> period)
{
    events.push_back({Kind::PeriodStarted, period.get(), ContentType::Clip, 0, 0, false});
}

void RecordingPeriodObserver::LastPeriodFinished(std::shared_ptr<PlayablePeriod> period)
{
    events.push_back({Kind::LastPeriodFinished, period.get(), ContentType::Clip, 0, 0, false});
}

void RecordingPeriodObserver::CurrentPeriodNotFound()
{
    events.push_back({Kind::CurrentPeriodNotFound, nullptr, ContentType::Clip, 0, 0, false});
}

void RecordingPeriodObserver::PeriodStartedPlayingTrack(std::shared_ptr<PlayablePeriod> period,
                                                        ContentType type, int volume,
                                                        const Core::DataTypes::Playback::Track& track,
                                                        bool resumed)
{
    events.push_back({Kind::TrackStarted, period.get(), type, volume, track.id, resumed});
}

void RecordingPeriodObserver::PeriodChangedProgress(std::shared_ptr<PlayablePeriod>, ContentType type, double,
                                                    double)
{
    ++progressTicks[type];
}

void RecordingPeriodObserver::PeriodFinishedPlayingAdBlock(std::shared_ptr<PlayablePeriod> period)
{
    events.push_back({Kind::AdBlockFinished, period.get(), ContentType::Clip, 0, 0, false});
}

bool RecordingPeriodObserver::PeriodShouldPlayNextTrack(std::shared_ptr<PlayablePeriod> period)
{
    events.push_back({Kind::ShouldPlayNextTrack, period.get(), ContentType::Clip, 0, 0, false});
    return playNextTrack;
}

int RecordingPeriodObserver::Count(Kind kind) const
{
    int count = 0;
    for (const auto& event : events) {
        count += event.kind == kind ? 1 : 0;
    }
    return count;
}

std::vector<std::int32_t> RecordingPeriodObserver::StartedIds(ContentType type) const
{
    std::vector<std::int32_t> ids;
    for (const auto& event : events) {
        if (event.kind == Kind::TrackStarted && event.type == type) {
            ids.push_back(event.trackId);
        }
    }
    return ids;
}

int RecordingPeriodObserver::IndexOf(Kind kind, std::int32_t trackId) const
{
    for (std::size_t i = 0; i < events.size(); ++i) {
        if (events[i].kind == kind && (kind != Kind::TrackStarted || events[i].trackId == trackId)) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

} // namespace Tests
