#pragma once

// Named waits for QTRY_*_WITH_TIMEOUT. They bound how long a failing test hangs;
// a passing test returns as soon as its condition holds.
namespace Tests::Timeouts {

// Something that follows at once from a queued call or a local process.
constexpr int Quick = 2000;
// A helper process starting up, a file being generated, a loopback request.
constexpr int Process = 10000;
// Real playback of the few-seconds test media, in real time.
constexpr int Playback = 20000;
// How long to listen before concluding that something did not happen: four polls
// of a media player's 250 ms status timer.
constexpr int Silence = 1000;

} // namespace Tests::Timeouts
