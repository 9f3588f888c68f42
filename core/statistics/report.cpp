#include "core/statistics/report.h"

#include <functional>
#include <tuple>

namespace Core::Statistics {

namespace {

constexpr std::size_t HoursMinutesLength = 5;

} // namespace

Report::Report(const DataTypes::Playback::Track& track, std::int32_t volume_, const std::string& time_,
               const std::string& date_)
    : volume(volume_)
    , type(DataTypes::Playback::ContentTypeToString(track.contentType))
    , time(time_)
    , date(date_)
    , track_id(track.id)
    , shop_id(track.shopId)
{
}

std::string Report::TimeWithoutSeconds() const
{
    return time.substr(0, HoursMinutesLength);
}

bool Report::IsDuplicateOf(const Report& other) const
{
    return volume == other.volume && type == other.type && date == other.date && track_id == other.track_id &&
           shop_id == other.shop_id && TimeWithoutSeconds() == other.TimeWithoutSeconds();
}

std::size_t Report::DuplicateHash() const
{
    const std::hash<std::string> hashText;
    // Unsigned arithmetic throughout: the shifts and products may wrap, which is
    // harmless for a hash and well defined this way.
    return (static_cast<std::size_t>(static_cast<std::uint32_t>(shop_id)) << 5) ^
           (static_cast<std::size_t>(static_cast<std::uint32_t>(track_id)) << 4) ^ (hashText(date) * 8) ^
           (hashText(TimeWithoutSeconds()) * 4) ^ (hashText(type) * 2) ^
           static_cast<std::size_t>(static_cast<std::uint32_t>(volume));
}

bool Report::operator==(const Report& other) const
{
    return std::tie(volume, type, time, date, track_id, shop_id, rowid) ==
           std::tie(other.volume, other.type, other.time, other.date, other.track_id, other.shop_id,
                    other.rowid);
}

bool Report::operator!=(const Report& other) const
{
    return !(*this == other);
}

} // namespace Core::Statistics
