#pragma once

#include <string>

namespace Core {

// Told after each periodic check of the playback configuration, whether a new
// version came or not, so that a screen can show when the schedule was last checked
// and whether the server could be reached at all.
class PlaybackConfigurationUpdatedObserver
{
public:
    virtual ~PlaybackConfigurationUpdatedObserver();

    // `message` is the local time of the check as the player screen shows it.
    virtual void PlaybackConfigurationUpdated(bool updated, const std::string& message) = 0;
    // The check failed (no answer, or an answer that was not a configuration): the
    // player goes on with what is stored. `error` is the failure's own text. Empty
    // by default, for observers that only care about new versions.
    virtual void PlaybackConfigurationUpdateFailed(const std::string& error);
};

} // namespace Core
