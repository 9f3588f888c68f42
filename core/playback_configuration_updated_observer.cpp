#include "core/playback_configuration_updated_observer.h"

namespace Core {

PlaybackConfigurationUpdatedObserver::~PlaybackConfigurationUpdatedObserver() = default;

void PlaybackConfigurationUpdatedObserver::PlaybackConfigurationUpdateFailed(const std::string&) {}

} // namespace Core
