#include "bench/playback_bench_observer.h"

#include <QCoreApplication>

namespace Bench {

void PlaybackBenchObserver::TrackListPlayerDidStartPlayingTrack(const Core::DataTypes::Playback::Track&, bool)
{
}

void PlaybackBenchObserver::TrackListPlayerDidChangeProgress(double, double) {}

void PlaybackBenchObserver::TrackListPlayerDidFinishTrackList()
{
    QCoreApplication::quit();
}

void PlaybackBenchObserver::TrackListPlayerDidFailWithError()
{
    failed = true;
    QCoreApplication::quit();
}

void PlaybackBenchObserver::TrackListPlayerDoesntPlayNextTrack()
{
    QCoreApplication::quit();
}

bool PlaybackBenchObserver::Failed() const
{
    return failed;
}

} // namespace Bench
