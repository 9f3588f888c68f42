#include "core/utilities/clock.h"
#include "core/utilities/local_time_helper.h"

#include <QtTest>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <string>

using Core::Utilities::Clock;
using Core::Utilities::LocalTimeHelper;

namespace {

// POSIX zone texts need no zone database: "UTC-3" is three hours east of UTC.
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

private:
    QByteArray m_originalZone;
    bool m_hadZone = false;

private slots:
    void initTestCase()
    {
        m_hadZone = qEnvironmentVariableIsSet("TZ");
        m_originalZone = qgetenv("TZ");
    }

    void cleanup()
    {
        Clock::ResetForTesting();
        if (m_hadZone) {
            UseTimeZone(m_originalZone);
        } else {
            qunsetenv("TZ");
            tzset();
        }
    }

    // The same instant reads differently in each zone: the texts and the seconds
    // since midnight must follow the local wall clock, not UTC.
    void nowIsReadInLocalTime_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<int>("secondsFromDayStart");
        // Time, hours and minutes, date.
        QTest::addColumn<QStringList>("texts");
        const QStringList beforeNoon{"11:59:55", "11:59", "21.11.2026"};
        QTest::newRow("UTC, five seconds before noon")
            << QByteArray("UTC0") << Utc(2026, 11, 21, 11, 59, 55) << 43195 << beforeNoon;
        QTest::newRow("three hours east")
            << QByteArray("UTC-3") << Utc(2026, 11, 21, 8, 59, 55) << 43195 << beforeNoon;
        QTest::newRow("five hours west")
            << QByteArray("UTC+5") << Utc(2026, 11, 21, 16, 59, 55) << 43195 << beforeNoon;
        QTest::newRow("local day already tomorrow") << QByteArray("UTC-12") << Utc(2026, 11, 20, 12, 0, 5)
                                                    << 5 << QStringList({"00:00:05", "00:00", "21.11.2026"});
        QTest::newRow("local day still yesterday")
            << QByteArray("UTC+10") << Utc(2026, 1, 1, 9, 59, 59) << 86399
            << QStringList({"23:59:59", "23:59", "31.12.2025"});
        QTest::newRow("single-digit day and month padded")
            << QByteArray("UTC0") << Utc(2027, 3, 5, 7, 8, 9) << 25689
            << QStringList({"07:08:09", "07:08", "05.03.2027"});
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

    // Shifted in the machine's own zone, as the player's schedule tests do.
    void elevenFiftyNineFiftyFiveInTheSystemZone()
    {
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 21), QTime(11, 59, 55), Qt::LocalTime));
        QCOMPARE(LocalTimeHelper::LocalTimeToSecondsFromDayStart(), 11 * 3600 + 59 * 60 + 55);
        QCOMPARE(Q(LocalTimeHelper::GetLocalTimeString()), QStringLiteral("11:59:55"));
        QCOMPARE(Q(LocalTimeHelper::CurrentDateToString()), QStringLiteral("21.11.2026"));
    }

    void scheduleTimeTexts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("end");

        QTest::newRow("midnight starts the day and ends it") << "00:00" << 0 << 86400;
        QTest::newRow("one minute past midnight") << "00:01" << 60 << 60;
        QTest::newRow("morning") << "09:30" << 34200 << 34200;
        QTest::newRow("last minute") << "23:59" << 86340 << 86340;
        QTest::newRow("minutes are decimal, not octal") << "08:09" << 29340 << 29340;
        QTest::newRow("24:00 is not range-checked") << "24:00" << 86400 << 86400;
        QTest::newRow("no leading zero") << "9:30" << 0 << 0;
        QTest::newRow("empty") << "" << 0 << 0;
        QTest::newRow("with seconds") << "09:30:00" << 0 << 0;
        QTest::newRow("six characters") << "009:30" << 0 << 0;
        QTest::newRow("letters") << "ab:cd" << 0 << 0;
        QTest::newRow("one letter") << "1a:30" << 0 << 0;
        QTest::newRow("no colon") << "09-30" << 0 << 0;
        QTest::newRow("leading blank") << " 9:30" << 0 << 0;
        QTest::newRow("sign") << "-1:30" << 0 << 0;
        // Two Cyrillic letters and a colon are five bytes.
        QTest::newRow("five UTF-8 bytes") << "чч:" << 0 << 0;
    }

    void scheduleTimeTexts()
    {
        QFETCH(QString, text);
        QFETCH(int, start);
        QFETCH(int, end);
        const std::string bytes = text.toStdString();
        QCOMPARE(LocalTimeHelper::StartTimeToSecondsFromDayStart(bytes), start);
        QCOMPARE(LocalTimeHelper::EndTimeToSecondsFromDayStart(bytes), end);
    }

    void deviceTimeIsCorrectWithinAMinute_data()
    {
        // On a whole second, so the boundary cannot move while the test runs.
        const std::int64_t now = Utc(2026, 11, 21, 11, 59, 55).toSecsSinceEpoch();
        QTest::addColumn<std::int64_t>("server");
        QTest::addColumn<bool>("correct");
        QTest::newRow("same second") << now << true;
        QTest::newRow("server a minute ahead") << now + 60 << true;
        QTest::newRow("server a minute behind") << now - 60 << true;
        QTest::newRow("server 61 s ahead") << now + 61 << false;
        QTest::newRow("server 61 s behind") << now - 61 << false;
        QTest::newRow("an hour off") << now + 3600 << false;
        // A wild timestamp must not overflow into "correct".
        QTest::newRow("zero") << std::int64_t{0} << false;
        QTest::newRow("most negative") << std::numeric_limits<std::int64_t>::min() << false;
        QTest::newRow("largest") << std::numeric_limits<std::int64_t>::max() << false;
    }

    void deviceTimeIsCorrectWithinAMinute()
    {
        QFETCH(std::int64_t, server);
        QFETCH(bool, correct);
        Clock::SetCurrentDateTimeForTesting(Utc(2026, 11, 21, 11, 59, 55));
        QCOMPARE(LocalTimeHelper::DeviceTimeIsCorrect(server), correct);
    }

    void timeStringFromSeconds_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<QByteArray>("format");
        QTest::addColumn<QString>("expected");

        QTest::newRow("epoch") << QByteArray("UTC0") << qint64{0} << QByteArray("%Y-%m-%d %H:%M:%S")
                               << "1970-01-01 00:00:00";
        QTest::newRow("converted to the local zone")
            << QByteArray("UTC-3") << Utc(2026, 11, 21, 22, 30, 0).toSecsSinceEpoch()
            << QByteArray("%d.%m.%Y %H:%M") << "22.11.2026 01:30";
        QTest::newRow("before the epoch")
            << QByteArray("UTC0") << qint64{-86400} << QByteArray("%d.%m.%Y") << "31.12.1969";
        QTest::newRow("empty format") << QByteArray("UTC0") << qint64{0} << QByteArray("") << "";
        // The result goes through a 32-byte buffer: 31 characters and the
        // terminator fit, one more does not, and nothing half-written comes back.
        QTest::newRow("31 characters fit")
            << QByteArray("UTC0") << qint64{0} << QByteArray("%Y-%m-%d %H:%M:%S ...........")
            << "1970-01-01 00:00:00 ...........";
        QTest::newRow("32 characters do not")
            << QByteArray("UTC0") << qint64{0} << QByteArray("%Y-%m-%d %H:%M:%S ............") << "";
        // A year beyond what struct tm can hold, and no format at all.
        QTest::newRow("unconvertible time")
            << QByteArray("UTC0") << qint64{std::numeric_limits<std::time_t>::max()} << QByteArray("%Y")
            << "";
        QTest::newRow("no format") << QByteArray("UTC0") << qint64{0} << QByteArray() << "";
    }

    void timeStringFromSeconds()
    {
        QFETCH(QByteArray, zone);
        QFETCH(qint64, seconds);
        QFETCH(QByteArray, format);
        QFETCH(QString, expected);
        UseTimeZone(zone);
        QCOMPARE(Q(LocalTimeHelper::TimeStringFromSeconds(static_cast<std::time_t>(seconds),
                                                          format.isNull() ? nullptr : format.constData())),
                 expected);
    }
};

QTEST_GUILESS_MAIN(LocalTimeHelperTest)
#include "tst_local_time_helper.moc"
