#include "tests/core/content_playing/test_periods.h"

#include "core/utilities/clock.h"

#include <QDate>
#include <QDateTime>

namespace Tests {

using Core::ContentPlaying::AdsBlock;
using Core::ContentPlaying::PlayablePeriod;

namespace {

// A day far from any change of summer time.
const QDate testDay(2026, 11, 21);
const char* const testWeekday = "Суббота";

} // namespace

std::string TestPeriods::Today()
{
    return testDay.toString(QStringLiteral("dd.MM.yyyy")).toStdString();
}

void TestPeriods::SetNow(const QTime& time)
{
    Core::Utilities::Clock::SetCurrentDateTimeForTesting(QDateTime(testDay, time));
}

std::shared_ptr<PlayablePeriod> TestPeriods::Make(const std::string& name, const std::string& start,
                                                  const std::string& end, const std::string& date)
{
    Core::ContentPlaying::PlayablePeriodInfo info;
    info.name = name;
    info.startTime = start;
    info.endTime = end;
    info.date = date;
    info.dayOfWeek = testWeekday;
    info.adsVolume = 100;
    info.contentVolume = 100;
    auto period = std::make_shared<PlayablePeriod>();
    period->SetInfo(info);
    return period;
}

void TestPeriods::Chain(const std::vector<std::shared_ptr<PlayablePeriod>>& periods)
{
    for (std::size_t i = 1; i < periods.size(); ++i) {
        periods[i - 1]->SetNextPeriod(periods[i]);
    }
}

QString TestPeriods::Text(const std::string& name, const std::string& start, const std::string& end)
{
    return QString::fromStdString(name + " " + testWeekday + " " + Today() + " " + start + "-" + end);
}

std::shared_ptr<AdsBlock> TestPeriods::Ad(const std::string& name, const std::string& start,
                                          const std::vector<Core::DataTypes::Playback::Track>& tracks,
                                          bool interrupts, const std::string& date)
{
    auto block = std::make_shared<AdsBlock>(tracks, 100, interrupts);
    block->SetName(name);
    block->SetStartTimeStr(start);
    block->SetDate(date);
    return block;
}

} // namespace Tests
