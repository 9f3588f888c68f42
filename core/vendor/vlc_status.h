#pragma once

#include <QMetaType>

namespace Core::Vendor {

// What a media player is doing, numerically identical to libvlc's player states so
// that a state read from libvlc converts by value.
enum class VlcStatus : int
{
    NothingSpecial = 0,
    Opening = 1,
    Buffering = 2,
    Playing = 3,
    Paused = 4,
    Stopped = 5,
    Ended = 6,
    Error = 7,
};

} // namespace Core::Vendor

Q_DECLARE_METATYPE(Core::Vendor::VlcStatus)
