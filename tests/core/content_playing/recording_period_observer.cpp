#include "tests/core/content_playing/recording_period_observer.h"

namespace Tests {

using Core::ContentPlaying::PlayablePeriod;
using Core::DataTypes::Playback::ContentType;

void RecordingPeriodObserver::PeriodStarted(std::shared_ptr<PlayablePeriod> period)
{
    Add(Kind::PeriodStarted, period);
}

void RecordingPeriodObserver::LastPeriodFinished(std::shared_ptr<PlayablePeriod> period)
{
    Add(Kind::LastPeriodFinished, period);
}

void RecordingPeriodObserver::CurrentPeriodNotFound()
{
    Add(Kind::CurrentPeriodNotFound, nullptr);
}

void RecordingPeriodObserver::PeriodStartedPlayingTrack(std::shared_ptr<PlayablePeriod> period,
                                                        ContentType type, int,
                                                        const Core::DataTypes::Playback::Track& track,
                                                        bool resumed)
{
    events.push_back({Kind::TrackStarted, period.get(), type, track.id, resumed});
}

void RecordingPeriodObserver::PeriodChangedProgress(std::shared_ptr<PlayablePeriod>, ContentType, double,
                                                    double)
{
}

void RecordingPeriodObserver::PeriodFinishedPlayingAdBlock(std::shared_ptr<PlayablePeriod> period)
{
    Add(Kind::AdBlockFinished, period);
}

bool RecordingPeriodObserver::PeriodShouldPlayNextTrack(std::shared_ptr<PlayablePeriod> period)
{
    Add(Kind::ShouldPlayNextTrack, period);
    return true;
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

void RecordingPeriodObserver::Add(Kind kind, const std::shared_ptr<PlayablePeriod>& period)
{
    events.push_back({kind, period.get(), ContentType::Clip, 0, false});
}

} // namespace Tests
