#include "core/utilities/clock.h"
#include "core/utilities/math_utils.h"
#include "core/utilities/string_utils.h"

#include <QtTest>

#include <cctype>
#include <limits>
#include <locale>
#include <set>
#include <string>

using Core::Utilities::Clock;
using Core::Utilities::MathUtils;
using Core::Utilities::StringUtils;

namespace {

QString Q(const std::string& text)
{
    return QString::fromStdString(text);
}

class CommaNumbers : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override
    {
        return ',';
    }
};

} // namespace

class StringUtilsTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        Clock::ResetForTesting();
    }

    // A Russian desktop writes "1,5"; the texts must keep their point whatever
    // locale the program runs under. A decimal-comma locale is built here rather
    // than looked for among the installed ones.
    void numbersIgnoreTheProcessLocale()
    {
        const std::locale previous =
            std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
        const std::string frequency = StringUtils::StringFrequency(1500);
        const std::string size = StringUtils::ContentSizeFromBytes(1610612736);
        std::locale::global(previous);
        QCOMPARE(Q(frequency), QStringLiteral("1.5 кГц"));
        QCOMPARE(Q(size), QStringLiteral("1.5 Гб"));
    }

    void randomLettersUseBothCasesAndFollowTheClock()
    {
        QVERIFY(StringUtils::RandomLettersString(-3).empty());
        QCOMPARE(StringUtils::RandomLettersString(1).size(), std::size_t(1));
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 21), QTime(11, 59, 55), Qt::UTC));
        const std::string first = StringUtils::RandomLettersString(2000);
        QCOMPARE(first.size(), std::size_t(2000));
        // 2000 letters from 52 touch nearly all of them; a generator stuck on one
        // letter or one case, or reaching past the alphabet, does not.
        const std::set<char> distinct(first.begin(), first.end());
        QVERIFY2(distinct.size() > 40, qPrintable(QStringLiteral("only %1 letters").arg(distinct.size())));
        for (const char letter : distinct) {
            QVERIFY2(std::isalpha(static_cast<unsigned char>(letter)), std::string(1, letter).c_str());
        }
        // Seeded from the time: another moment gives other letters.
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 22), QTime(8, 0, 1, 7), Qt::UTC));
        QVERIFY(StringUtils::RandomLettersString(2000) != first);
    }

    // Every text-making helper, by name, so that one table holds their edges.
    void texts_data()
    {
        QTest::addColumn<QString>("function");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const QString& function, const QStringList& arguments,
                            const QString& expected) {
            QTest::newRow(name) << function << arguments << expected;
        };
        row("size: most bytes", "size", {"1023"}, "1023 байт");
        row("size: most kilobytes", "size", {"1048575"}, "1023 Кб");
        row("size: most megabytes", "size", {"1073741823"}, "1023 Мб");
        row("size: gigabytes to two digits", "size", {"1342177280"}, "1.25 Гб");
        row("size: beyond 32 bits", "size", {"10737418240"}, "10 Гб");
        row("hertz: fraction below a kilohertz", "hertz", {"31.25"}, "31.25");
        row("hertz: most kilohertz", "hertz", {"999999"}, "999.999 кГц");
        row("hertz: megahertz, lower-case m", "hertz", {"2500000"}, "2.5 мГц");
        row("hertz: negative kilohertz", "hertz", {"-1500"}, "-1.5 кГц");
        row("precision: rounds", "precision", {"2.675", "1"}, "2.7");
        row("precision: fixed, not scientific", "precision", {"1e7", "1"}, "10000000.0");
        // A wild argument must not build a huge text.
        row("precision: absurd digits capped", "precision", {"1", "2147483647"},
            QStringLiteral("1.") + QString(100, QLatin1Char('0')));
        row("duration: last second below an hour", "duration", {"3599"}, "59:59");
        row("duration: an hour", "duration", {"3600"}, "01:00:00");
        row("duration: negative", "duration", {"-3723"}, "-01:02:03");
        // Negating the most negative count would overflow.
        row("duration: most negative", "duration", {"-9223372036854775808"}, "-2562047788015215:30:08");
        row("zeroes: dangling point removed", "zeroes", {"2.000"}, "2");
        row("zeroes: integer left alone", "zeroes", {"100"}, "100");
        row("track: both", "track", {"Кино", "Группа крови"}, "Кино - Группа крови");
        row("track: no first", "track", {"", "Группа крови"}, "Группа крови");
        row("track: no second", "track", {"Кино", ""}, "Кино");
        row("http: https", "http", {"https://example.com/a?b=https:"}, "http://example.com/a?b=https:");
        row("http: https in the middle unchanged", "http", {"ftp://https:"}, "ftp://https:");
        row("replace: overlapping, left to right", "replace", {"aaa", "aa", "b"}, "ba");
        row("replace: replacement contains from", "replace", {"aXa", "a", "aa"}, "aaXaa");
        row("replace: empty from changes nothing", "replace", {"abc", "", "x"}, "abc");
        row("spaces: phone", "spaces", {" +7 (912)\t345 67\n89\r\v\f"}, "+7(912)3456789");
        row("lower: cyrillic too", "lower", {"Нижний НОВГОРОД, ЁЛКИ и Music"},
            "нижний новгород, ёлки и music");
        row("backslashes", "backslashes", {"C:/Музыка/a/b.mp3"}, "C:\\Музыка\\a\\b.mp3");
    }

    void texts()
    {
        QFETCH(QString, function);
        QFETCH(QStringList, arguments);
        QFETCH(QString, expected);
        const auto arg = [&](int i) {
            return arguments.value(i).toStdString();
        };
        std::string result;
        if (function == QLatin1String("size")) {
            result = StringUtils::ContentSizeFromBytes(arguments[0].toLongLong());
        } else if (function == QLatin1String("hertz")) {
            result = StringUtils::StringFrequency(arguments[0].toDouble());
        } else if (function == QLatin1String("precision")) {
            result = StringUtils::ToStringWithPrecision(arguments[0].toDouble(), arguments[1].toInt());
        } else if (function == QLatin1String("duration")) {
            result = StringUtils::StringDurationFromSeconds(arguments[0].toLongLong());
        } else if (function == QLatin1String("zeroes")) {
            result = StringUtils::RemoveTrailingZeroes(arg(0));
        } else if (function == QLatin1String("track")) {
            result = StringUtils::TrackDisplayString(arg(0), arg(1));
        } else if (function == QLatin1String("http")) {
            result = StringUtils::MoveHttpsToHttp(arg(0));
        } else if (function == QLatin1String("replace")) {
            result = StringUtils::ReplaceAll(arg(0), arg(1), arg(2));
        } else if (function == QLatin1String("spaces")) {
            result = StringUtils::RemoveSpaces(arg(0));
        } else if (function == QLatin1String("lower")) {
            result = StringUtils::ToLowerCase(arg(0));
        } else {
            QCOMPARE(function, QStringLiteral("backslashes"));
            result = StringUtils::SlashesToBackSlashes(arg(0));
        }
        QCOMPARE(Q(result), expected);
    }

    void startsAndEndsWith()
    {
        const std::string path = "music/track.mp3";
        QVERIFY(StringUtils::StringStartsWith(path, "music/") &&
                !StringUtils::StringEndsWith(path, "music/"));
        QVERIFY(StringUtils::StringEndsWith(path, ".mp3") && !StringUtils::StringStartsWith(path, ".mp3"));
        QVERIFY(!StringUtils::StringStartsWith("ab", "abc") && !StringUtils::StringEndsWith("ab", "abc"));
    }

    // Mod steps backwards through a playlist, so it must wrap, not go negative or overflow.
    void mod()
    {
        QCOMPARE(MathUtils::Mod(-15, 7), 6);
        QCOMPARE(MathUtils::Mod(5, 0), 0);
        QCOMPARE(MathUtils::Mod(std::numeric_limits<int>::min(), -1), 0);
        QCOMPARE(MathUtils::Mod(-1, std::numeric_limits<int>::max()), std::numeric_limits<int>::max() - 1);
    }

    void equal()
    {
        QVERIFY(MathUtils::Equal(0.5, 0.75, 0.25));
        QVERIFY(!MathUtils::Equal(1.2, 1.0, 0.1));
        QVERIFY(!MathUtils::Equal(1.0, 1.2, 0.1));
    }
};

QTEST_GUILESS_MAIN(StringUtilsTest)
#include "tst_string_utils.moc"
