#pragma once

#include "core/data_types/playback/track.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace Core::Statistics {

// One playback report: which track started, for which shop, at what local date and
// time, of what kind and at what volume. It travels to the server as is, or waits
// in the database until the server can take it.
struct Report
{
    Report() = default;
    // `time` is the local "%H:%M:%S" and `date` the local "%d.%m.%Y" of the start.
    Report(const DataTypes::Playback::Track& track, std::int32_t volume, const std::string& time,
           const std::string& date);

    std::int32_t volume = 0;
    std::string type;
    std::string time;
    std::string date;
    std::int32_t track_id = 0;
    std::int32_t shop_id = 0;
    // Only meaningful for a report read back from the database.
    std::int64_t rowid = 0;

    // The same start recorded twice within a minute is one play: everything but the
    // seconds of `time` (and the row it is stored in) has to match.
    bool IsDuplicateOf(const Report& other) const;
    // Consistent with IsDuplicateOf: duplicates hash alike.
    std::size_t DuplicateHash() const;
    // Hours and minutes of `time`.
    std::string TimeWithoutSeconds() const;

    // Every field, the row id included.
    bool operator==(const Report& other) const;
    bool operator!=(const Report& other) const;
};

} // namespace Core::Statistics
