#pragma once

#include <string>

namespace Core::Vendor {

// One sound device a player can play on. `id` is libvlc's identifier of the device
// (a PulseAudio sink name, an ALSA device string), handed back to
// VlcWrapper::SetAudioOutput; `description` is what the user reads.
struct AudioOutput
{
    std::string id;
    std::string description;
    // Never set by the media backend: the settings mark the device the user chose.
    bool selected = false;
};

} // namespace Core::Vendor
