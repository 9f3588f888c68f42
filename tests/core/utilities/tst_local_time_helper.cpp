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
    // never take the player down.
    void scheduleTimeTexts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("end");
        QTest::newRow("midnight starts the day and ends it") << "00:00" << 0 << 86400;
        QTest::newRow("minutes are decimal, not octal") << "08:09" << 29340 << 29340;
        QTest::newRow("24:00 is not range-checked") << "24:00" << 86400 << 86400;
        QTest::newRow("no leading zero") << "9:30" << 0 << 0;
        QTest::newRow("one letter") << "1a:30" << 0 << 0;
        QTest::newRow("no colon") << "09-30" << 0 << 0;
    }

    void scheduleTimeTexts()
    {
        QFETCH(QString, text);
        QFETCH(int, start);
        QFETCH(int, end);
        QCOMPARE(LocalTimeHelper::StartTimeToSecondsFromDayStart(text.toStdString()), start);
        QCOMPARE(LocalTimeHelper::EndTimeToSecondsFromDayStart(text.toStdString()), end);
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

    void timeStringFromSeconds_data()
    {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<QByteArray>("format");
        QTest::addColumn<QString>("expected");
        QTest::newRow("converted to the local zone") << Utc(2026, 11, 21, 22, 30, 0).toSecsSinceEpoch()
                                                     << QByteArray("%d.%m.%Y %H:%M") << "22.11.2026 01:30";
        // The result goes through a 32-byte buffer: 31 characters and the
        // terminator fit, one more does not, and nothing half-written comes back.
        QTest::newRow("31 characters fit")
            << qint64{0} << QByteArray("%Y-%m-%d %H:%M:%S ...........") << "1970-01-01 03:00:00 ...........";
        QTest::newRow("32 characters do not")
            << qint64{0} << QByteArray("%Y-%m-%d %H:%M:%S ............") << "";
        // A year beyond what struct tm can hold, and no format at all.
        QTest::newRow("unconvertible time")
            << qint64{std::numeric_limits<std::time_t>::max()} << QByteArray("%Y") << "";
        QTest::newRow("no format") << qint64{0} << QByteArray() << "";
    }

    void timeStringFromSeconds()
    {
        QFETCH(qint64, seconds);
        QFETCH(QByteArray, format);
        QFETCH(QString, expected);
        UseTimeZone("UTC-3");
        QCOMPARE(Q(LocalTimeHelper::TimeStringFromSeconds(static_cast<std::time_t>(seconds),
                                                          format.isNull() ? nullptr : format.constData())),
                 expected);
    }
};

QTEST_GUILESS_MAIN(LocalTimeHelperTest)
#include "tst_local_time_helper.moc"
