#include "core/utilities/clock.h"
#include "core/utilities/local_time_helper.h"

#include <QtTest>

#include <cstdint>
#include <ctime>
#include <limits>
#include <string>

using Core::Utilities::Clock;
using Core::Utilities::LocalTimeHelper;

namespace {

// POSIX zone texts need no zone database: "UTC-3" is three hours east of UTC, and
// the central European one carries its own summer-time rule.
constexpr const char* centralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";

void UseTimeZone(const QByteArray& zone)
{
    qputenv("TZ", zone);
    tzset();
}

QDateTime Utc(int year, int month, int day, int hour, int minute, int second)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::UTC);
}

QString Q(const std::string& text)
{
    return QString::fromStdString(text);
}

} // namespace

class LocalTimeHelperTest : public QObject
{
    Q_OBJECT

private slots:
    // Each case sets the zone it needs; this process has no other use for it.
    void cleanup()
    {
        Clock::ResetForTesting();
    }

    // The same instant reads differently in each zone: the texts and the seconds
    // since midnight follow the local wall clock, which is what the schedule's
    // periods are written in, across midnight and summer-time changes too.
    void nowIsReadInLocalTime_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<int>("secondsFromDayStart");
        // Time, hours and minutes, date.
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("local day already tomorrow") << QByteArray("UTC-12") << Utc(2026, 11, 20, 12, 0, 5)
                                                    << 5 << QStringList({"00:00:05", "00:00", "21.11.2026"});
        QTest::newRow("local day still last year")
            << QByteArray("UTC+10") << Utc(2026, 1, 1, 9, 59, 59) << 86399
            << QStringList({"23:59:59", "23:59", "31.12.2025"});
        QTest::newRow("summer time skips an hour")
            << QByteArray(centralEurope) << Utc(2026, 3, 29, 1, 0, 5) << 10805
            << QStringList({"03:00:05", "03:00", "29.03.2026"});
        QTest::newRow("the repeated autumn hour") << QByteArray(centralEurope) << Utc(2026, 10, 25, 1, 30, 0)
                                                  << 9000 << QStringList({"02:30:00", "02:30", "25.10.2026"});
    }

    void nowIsReadInLocalTime()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QDateTime, now);
        QFETCH(int, secondsFromDayStart);
        QFETCH(QStringList, texts);
        UseTimeZone(zone);
        Clock::SetCurrentDateTimeForTesting(now);

        QCOMPARE(LocalTimeHelper::GetDeviceLocalTimeStamp(),
                 static_cast<std::time_t>(now.toSecsSinceEpoch()));
        QCOMPARE(LocalTimeHelper::LocalTimeToSecondsFromDayStart(), secondsFromDayStart);
        // The schedule's day dates come from the server as "dd.mm.yyyy".
        QCOMPARE(QStringList({Q(LocalTimeHelper::GetLocalTimeString()),
                              Q(LocalTimeHelper::GetLocalTimeHoursMinutesString()),
                              Q(LocalTimeHelper::GetLocalDateString()),
                              Q(LocalTimeHelper::CurrentDateToString())}),
                 texts + QStringList{texts.last()});
    }

    // Anything but exactly "HH:MM" is 0: the schedule comes from the server and must
    // never take the player down. Midnight starts the day and ends it; minutes are
    // decimal, not octal; 24:00 is not range-checked.
    void scheduleTimeTexts()
    {
        const auto startAndEnd = [](const char* text) {
            return std::make_pair(LocalTimeHelper::StartTimeToSecondsFromDayStart(text),
                                  LocalTimeHelper::EndTimeToSecondsFromDayStart(text));
        };
        QCOMPARE(startAndEnd("00:00"), std::make_pair(0, 86400));
        QCOMPARE(startAndEnd("08:09"), std::make_pair(29340, 29340));
        QCOMPARE(startAndEnd("24:00"), std::make_pair(86400, 86400));
        for (const char* text : {"9:30", "1a:30", "09-30"}) {
            QCOMPARE(startAndEnd(text), std::make_pair(0, 0));
        }
    }

    // Set on a whole second, so the boundary cannot move while the test runs; a wild
    // timestamp must not overflow into "correct".
    void deviceTimeIsCorrectWithinAMinute()
    {
        const QDateTime now = Utc(2026, 11, 21, 11, 59, 55);
        Clock::SetCurrentDateTimeForTesting(now);
        const std::int64_t at = now.toSecsSinceEpoch();
        QVERIFY(LocalTimeHelper::DeviceTimeIsCorrect(at + 60) &&
                LocalTimeHelper::DeviceTimeIsCorrect(at - 60));
        QVERIFY(!LocalTimeHelper::DeviceTimeIsCorrect(at + 61));
        QVERIFY(!LocalTimeHelper::DeviceTimeIsCorrect(at - 61));
        QVERIFY(!LocalTimeHelper::DeviceTimeIsCorrect(std::numeric_limits<std::int64_t>::min()));
    }

    // The result goes through a 32-byte buffer: 31 characters and the terminator fit,
    // one more does not, and nothing half-written comes back; nor for a year beyond
    // what struct tm holds, or no format at all.
    void timeStringFromSeconds()
    {
        UseTimeZone("UTC-3");
        const auto text = [](qint64 seconds, const char* format) {
            return Q(LocalTimeHelper::TimeStringFromSeconds(static_cast<std::time_t>(seconds), format));
        };
        QCOMPARE(text(Utc(2026, 11, 21, 22, 30, 0).toSecsSinceEpoch(), "%d.%m.%Y %H:%M"),
                 QStringLiteral("22.11.2026 01:30"));
        QCOMPARE(text(0, "%Y-%m-%d %H:%M:%S ..........."), QStringLiteral("1970-01-01 03:00:00 ..........."));
        QCOMPARE(text(0, "%Y-%m-%d %H:%M:%S ............"), QString());
        QCOMPARE(text(std::numeric_limits<std::time_t>::max(), "%Y"), QString());
        QCOMPARE(text(0, nullptr), QString());
    }
};

QTEST_GUILESS_MAIN(LocalTimeHelperTest)
#include "tst_local_time_helper.moc"
