#pragma once

#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/track.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace Tests {

// Tracks for the playback tests, and their files in the content cache of the test's
// data directory: a track is playable once a generated media file has been copied
// to where the cache keeps it.
class PlaybackTestTracks
{
public:
    PlaybackTestTracks() = delete;

    // Tones of the media fixture that the base fixture class does not name.
    static constexpr double ShortSeconds = 1.5;
    static constexpr double MediumSeconds = 4.0;

    // A track whose server path ends in `fileName`; nothing is put in the cache.
    static Core::DataTypes::Playback::Track Make(int id, Core::DataTypes::Playback::ContentType type,
                                                 const QString& fileName, const QString& title = QString());
    // Copies the generated media file into the cache as the track's file; false
    // (with a warning) when the file or the cache folder cannot be made.
    static bool Install(const Core::DataTypes::Playback::Track& track, const QString& mediaName);
    // Make() and Install() in one.
    static Core::DataTypes::Playback::Track Cached(int id, Core::DataTypes::Playback::ContentType type,
                                                   const QString& mediaName,
                                                   const QString& title = QString());
};

} // namespace Tests
