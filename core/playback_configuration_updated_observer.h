#pragma once

#include <string>

namespace Core {

// Told after each periodic check of the playback configuration, whether a new
// version came or not, so that a screen can show when the schedule was last checked.
class PlaybackConfigurationUpdatedObserver
{
public:
    virtual ~PlaybackConfigurationUpdatedObserver() = default;

    // `message` is the local time of the check as the player screen shows it.
    virtual void PlaybackConfigurationUpdated(bool updated, const std::string& message) = 0;
};

} // namespace Core
