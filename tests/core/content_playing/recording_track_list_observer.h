#pragma once

#include "core/content_playing/track_list_player_observer.h"

#include <QElapsedTimer>

#include <cstdint>
#include <vector>

namespace Tests {

// Writes down everything a track list player reports, with the time it came.
class RecordingTrackListObserver : public Core::ContentPlaying::TrackListPlayerObserver
{
public:
    struct Start
    {
        std::int32_t trackId;
        bool resumed;
        qint64 atMs;
    };
    struct Progress
    {
        double durationSeconds;
        double progress;
        qint64 atMs;
    };

    RecordingTrackListObserver();

    void TrackListPlayerDidStartPlayingTrack(const Core::DataTypes::Playback::Track& track,
                                             bool resumed) override;
    void TrackListPlayerDidChangeProgress(double durationSeconds, double progress) override;
    void TrackListPlayerDidFinishTrackList() override;
    void TrackListPlayerDidFailWithError() override;
    void TrackListPlayerDoesntPlayNextTrack() override;

    std::vector<std::int32_t> StartedIds() const;
    int StartCount() const;

    std::vector<Start> starts;
    std::vector<Progress> progress;
    int finished = 0;
    int failed = 0;
    int doesntPlayNext = 0;

private:
    QElapsedTimer clock;
};

} // namespace Tests
