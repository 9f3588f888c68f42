#pragma once

#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/track.h"

#include <QString>

namespace Tests {

// Tracks for the playback tests: a track is playable once a generated media file has
// been copied to where the content cache of the test's data directory keeps it.
class PlaybackTestTracks
{
public:
    PlaybackTestTracks() = delete;

    // A track whose server path ends in `fileName`; nothing is put in the cache.
    static Core::DataTypes::Playback::Track Make(int id, Core::DataTypes::Playback::ContentType type,
                                                 const QString& fileName, const QString& title = QString());
    // Make(), with the generated media file copied into the cache (a warning when it
    // cannot be).
    static Core::DataTypes::Playback::Track Cached(int id, Core::DataTypes::Playback::ContentType type,
                                                   const QString& mediaName,
                                                   const QString& title = QString());
};

} // namespace Tests
