#include "tests/core/content_playing/recording_period_observer.h"

#include <algorithm>

namespace Tests {

using Core::ContentPlaying::PlayablePeriod;
using Core::DataTypes::Playback::ContentType;

void RecordingPeriodObserver::PeriodStarted(std::shared_ptr<PlayablePeriod> period)
{
    events.push_back({Kind::PeriodStarted, period.get()});
}

void RecordingPeriodObserver::LastPeriodFinished(std::shared_ptr<PlayablePeriod> period)
{
    events.push_back({Kind::LastPeriodFinished, period.get()});
}

void RecordingPeriodObserver::CurrentPeriodNotFound()
{
    events.push_back({Kind::CurrentPeriodNotFound, nullptr});
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
    events.push_back({Kind::AdBlockFinished, period.get()});
}

bool RecordingPeriodObserver::PeriodShouldPlayNextTrack(std::shared_ptr<PlayablePeriod> period)
{
    events.push_back({Kind::ShouldPlayNextTrack, period.get()});
    return true;
}

int RecordingPeriodObserver::Count(Kind kind) const
{
    return static_cast<int>(std::count_if(events.begin(), events.end(),
                                          [kind](const Event& event) { return event.kind == kind; }));
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
    const auto found = std::find_if(events.begin(), events.end(), [=](const Event& event) {
        return event.kind == kind && (kind != Kind::TrackStarted || event.trackId == trackId);
    });
    return found == events.end() ? -1 : static_cast<int>(found - events.begin());
}

} // namespace Tests
