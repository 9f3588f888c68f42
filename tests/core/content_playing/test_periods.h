#pragma once

#include "core/content_playing/ads_block.h"
#include "core/content_playing/playable_period.h"
#include "core/data_types/playback/track.h"

#include <QString>
#include <QTime>

#include <memory>
#include <string>
#include <vector>

namespace Tests {

// Periods and ad blocks of one fixed test day, and the clock moved within it.
class TestPeriods
{
public:
    static std::string Today();
    // The clock reads `time` of the test day and runs on.
    static void SetNow(const QTime& time);
    // A period of the test day (or of `date`) without blocks; both volumes 100.
    static std::shared_ptr<Core::ContentPlaying::PlayablePeriod> Make(const std::string& name,
                                                                      const std::string& start,
                                                                      const std::string& end,
                                                                      const std::string& date = Today());
    static void Chain(const std::vector<std::shared_ptr<Core::ContentPlaying::PlayablePeriod>>& periods);
    // The period's name, weekday, date and times, as its log lines show it.
    static QString Text(const std::string& name, const std::string& start, const std::string& end);
    static std::shared_ptr<Core::ContentPlaying::AdsBlock>
    Ad(const std::string& name, const std::string& start,
       const std::vector<Core::DataTypes::Playback::Track>& tracks, bool interrupts,
       const std::string& date = Today());
};

} // namespace Tests
