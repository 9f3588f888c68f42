#include "core/utilities/clock.h"
#include "core/utilities/math_utils.h"
#include "core/utilities/string_utils.h"

#include <QtTest>

#include <cstdint>
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

std::string S(const QString& text)
{
    return text.toStdString();
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

    void contentSizeFromBytes_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("expected");
        QTest::newRow("zero") << qint64{0} << "0 байт";
        QTest::newRow("negative stays in bytes") << qint64{-5} << "-5 байт";
        QTest::newRow("most bytes") << qint64{1023} << "1023 байт";
        QTest::newRow("one kilobyte") << qint64{1024} << "1 Кб";
        QTest::newRow("kilobytes truncated") << qint64{2047} << "1 Кб";
        QTest::newRow("most kilobytes") << qint64{1048575} << "1023 Кб";
        QTest::newRow("one megabyte") << qint64{1048576} << "1 Мб";
        QTest::newRow("most megabytes") << qint64{1073741823} << "1023 Мб";
        QTest::newRow("one gigabyte") << qint64{1073741824} << "1 Гб";
        QTest::newRow("gigabyte and a half") << qint64{1610612736} << "1.5 Гб";
        QTest::newRow("gigabytes to two digits") << qint64{1342177280} << "1.25 Гб";
        QTest::newRow("beyond 32 bits") << qint64{10737418240} << "10 Гб";
    }

    void contentSizeFromBytes()
    {
        QFETCH(qint64, bytes);
        QFETCH(QString, expected);
        QCOMPARE(Q(StringUtils::ContentSizeFromBytes(bytes)), expected);
    }

    void stringFrequency_data()
    {
        QTest::addColumn<double>("hertz");
        QTest::addColumn<QString>("expected");
        QTest::newRow("below a kilohertz") << 999.0 << "999";
        QTest::newRow("fraction below a kilohertz") << 31.25 << "31.25";
        QTest::newRow("one kilohertz") << 1000.0 << "1 кГц";
        QTest::newRow("kilohertz and a half") << 1500.0 << "1.5 кГц";
        QTest::newRow("most kilohertz") << 999999.0 << "999.999 кГц";
        QTest::newRow("one megahertz, lower-case m") << 1000000.0 << "1 мГц";
        QTest::newRow("megahertz with a fraction") << 2500000.0 << "2.5 мГц";
        QTest::newRow("negative below a kilohertz") << -999.0 << "-999";
        QTest::newRow("negative kilohertz") << -1500.0 << "-1.5 кГц";
    }

    void stringFrequency()
    {
        QFETCH(double, hertz);
        QFETCH(QString, expected);
        QCOMPARE(Q(StringUtils::StringFrequency(hertz)), expected);
    }

    // A Russian desktop writes "1,5"; the texts must keep their point whatever
    // locale the program runs under. A decimal-comma locale is built here rather
    // than looked for among the installed ones.
    void numbersIgnoreTheProcessLocale()
    {
        const std::locale previous =
            std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
        const std::string precise = StringUtils::ToStringWithPrecision(1.5, 2);
        const std::string frequency = StringUtils::StringFrequency(1500);
        const std::string size = StringUtils::ContentSizeFromBytes(1610612736);
        std::locale::global(previous);
        QCOMPARE(Q(precise), QStringLiteral("1.50"));
        QCOMPARE(Q(frequency), QStringLiteral("1.5 кГц"));
        QCOMPARE(Q(size), QStringLiteral("1.5 Гб"));
    }

    void toStringWithPrecision_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("digits");
        QTest::addColumn<QString>("expected");
        QTest::newRow("pads") << 1.5 << 3 << "1.500";
        QTest::newRow("rounds") << 2.675 << 1 << "2.7";
        QTest::newRow("no fraction") << 2.5 << 0 << "2";
        QTest::newRow("negative digits as none") << 7.25 << -3 << "7";
        QTest::newRow("fixed, not scientific") << 1e7 << 1 << "10000000.0";
        // A wild argument must not build a huge text.
        QTest::newRow("absurd precision capped") << 1.0 << std::numeric_limits<int>::max()
                                                 << QStringLiteral("1.") + QString(100, QLatin1Char('0'));
    }

    void toStringWithPrecision()
    {
        QFETCH(double, value);
        QFETCH(int, digits);
        QFETCH(QString, expected);
        QCOMPARE(Q(StringUtils::ToStringWithPrecision(value, digits)), expected);
    }

    void stringDurationFromSeconds_data()
    {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<QString>("expected");
        QTest::newRow("zero") << qint64{0} << "00:00";
        QTest::newRow("seconds padded") << qint64{7} << "00:07";
        QTest::newRow("minutes padded") << qint64{187} << "03:07";
        QTest::newRow("last second below an hour") << qint64{3599} << "59:59";
        QTest::newRow("an hour") << qint64{3600} << "01:00:00";
        QTest::newRow("hours minutes seconds") << qint64{3723} << "01:02:03";
        QTest::newRow("over a day") << qint64{90000} << "25:00:00";
        QTest::newRow("negative") << qint64{-65} << "-01:05";
        QTest::newRow("negative over an hour") << qint64{-3723} << "-01:02:03";
        QTest::newRow("most negative") << std::numeric_limits<qint64>::min() << "-2562047788015215:30:08";
    }

    void stringDurationFromSeconds()
    {
        QFETCH(qint64, seconds);
        QFETCH(QString, expected);
        QCOMPARE(Q(StringUtils::StringDurationFromSeconds(seconds)), expected);
    }

    void randomLettersString_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("expectedLength");
        QTest::newRow("negative") << -3 << 0;
        QTest::newRow("zero") << 0 << 0;
        QTest::newRow("one") << 1 << 1;
        QTest::newRow("long") << 500 << 500;
    }

    void randomLettersString()
    {
        QFETCH(int, length);
        QFETCH(int, expectedLength);
        const std::string letters = StringUtils::RandomLettersString(length);
        QCOMPARE(static_cast<int>(letters.size()), expectedLength);
        for (const char letter : letters) {
            QVERIFY2((letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z'),
                     qPrintable(QStringLiteral("'%1' is not a letter").arg(QLatin1Char(letter))));
        }
    }

    void randomLettersUseBothCasesAndFollowTheClock()
    {
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 21), QTime(11, 59, 55), Qt::UTC));
        const std::string first = StringUtils::RandomLettersString(2000);
        // 2000 letters from 52 touch nearly all of them; a generator stuck on one
        // letter or one case does not.
        const std::set<char> distinct(first.begin(), first.end());
        QVERIFY2(distinct.size() > 40,
                 qPrintable(QStringLiteral("only %1 distinct letters").arg(distinct.size())));
        QVERIFY(distinct.count('A') + distinct.count('Z') + distinct.count('a') + distinct.count('z') > 0);

        // Seeded from the time: another moment gives other letters.
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 22), QTime(8, 0, 1, 7), Qt::UTC));
        QVERIFY(StringUtils::RandomLettersString(2000) != first);
    }

    // The text-to-text helpers, by name, so that one table holds their cases.
    void textTransforms_data()
    {
        QTest::addColumn<QString>("function");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const QString& function, const QStringList& arguments,
                            const QString& expected) {
            QTest::newRow(name) << function << arguments << expected;
        };
        row("zeroes: one zero", "zeroes", {"1.50"}, "1.5");
        row("zeroes: dangling point removed", "zeroes", {"2.000"}, "2");
        row("zeroes: integer left alone", "zeroes", {"100"}, "100");
        row("zeroes: zero in the middle kept", "zeroes", {"10.05"}, "10.05");
        row("zeroes: zero", "zeroes", {"0.000"}, "0");
        row("zeroes: negative", "zeroes", {"-4.500"}, "-4.5");
        row("zeroes: empty", "zeroes", {""}, "");
        row("track: both", "track", {"Кино", "Группа крови"}, "Кино - Группа крови");
        row("track: no first", "track", {"", "Группа крови"}, "Группа крови");
        row("track: no second", "track", {"Кино", ""}, "Кино");
        row("track: neither", "track", {"", ""}, "");
        row("http: https", "http", {"https://example.com/a?b=https:"}, "http://example.com/a?b=https:");
        row("http: http unchanged", "http", {"http://example.com"}, "http://example.com");
        row("http: https in the middle unchanged", "http", {"ftp://https:"}, "ftp://https:");
        row("http: upper case unchanged", "http", {"HTTPS://example.com"}, "HTTPS://example.com");
        row("http: scheme alone", "http", {"https:"}, "http:");
        row("http: empty", "http", {""}, "");
        row("replace: every occurrence", "replace", {"a-b-c", "-", "+"}, "a+b+c");
        row("replace: overlapping, left to right", "replace", {"aaa", "aa", "b"}, "ba");
        row("replace: replacement contains from", "replace", {"aXa", "a", "aa"}, "aaXaa");
        row("replace: replacement recreates from", "replace", {"abcc", "bc", "b"}, "abc");
        row("replace: removal", "replace", {"a b c", " ", ""}, "abc");
        row("replace: empty from changes nothing", "replace", {"abc", "", "x"}, "abc");
        row("replace: not found", "replace", {"abc", "z", "x"}, "abc");
        row("replace: whole text", "replace", {"abc", "abc", ""}, "");
        row("replace: multi-byte", "replace", {"Ростов-на-Дону", "-", " "}, "Ростов на Дону");
        row("spaces: phone", "spaces", {" +7 (912)\t345 67\n89 "}, "+7(912)3456789");
        row("spaces: cyrillic", "spaces", {"Нижний Новгород"}, "НижнийНовгород");
        row("lower: cyrillic too", "lower", {"Нижний НОВГОРОД, ЁЛКИ и Music"},
            "нижний новгород, ёлки и music");
        row("backslashes", "backslashes", {"C:/Музыка/a/b.mp3"}, "C:\\Музыка\\a\\b.mp3");
        row("backslashes: none", "backslashes", {"no slashes"}, "no slashes");
    }

    void textTransforms()
    {
        QFETCH(QString, function);
        QFETCH(QStringList, arguments);
        QFETCH(QString, expected);
        const auto arg = [&](int i) {
            return S(arguments.value(i));
        };
        std::string result;
        if (function == QLatin1String("zeroes")) {
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

    void startsAndEndsWith_data()
    {
        QTest::addColumn<QStringList>("textAndPart");
        QTest::addColumn<bool>("starts");
        QTest::addColumn<bool>("ends");
        QTest::newRow("prefix") << QStringList({"music/track.mp3", "music/"}) << true << false;
        QTest::newRow("suffix") << QStringList({"music/track.mp3", ".mp3"}) << false << true;
        QTest::newRow("whole text") << QStringList({"abc", "abc"}) << true << true;
        QTest::newRow("empty part") << QStringList({"abc", ""}) << true << true;
        QTest::newRow("longer part") << QStringList({"ab", "abc"}) << false << false;
        QTest::newRow("case matters") << QStringList({"Track.MP3", ".mp3"}) << false << false;
        QTest::newRow("cyrillic bytes") << QStringList({"Москва", "Мос"}) << true << false;
    }

    void startsAndEndsWith()
    {
        QFETCH(QStringList, textAndPart);
        QFETCH(bool, starts);
        QFETCH(bool, ends);
        QCOMPARE(StringUtils::StringStartsWith(S(textAndPart[0]), S(textAndPart[1])), starts);
        QCOMPARE(StringUtils::StringEndsWith(S(textAndPart[0]), S(textAndPart[1])), ends);
    }

    void mod_data()
    {
        QTest::addColumn<int>("a");
        QTest::addColumn<int>("b");
        QTest::addColumn<int>("expected");
        QTest::newRow("minus one wraps to the end") << -1 << 7 << 6;
        QTest::newRow("a whole turn back") << -7 << 7 << 0;
        QTest::newRow("more than a turn back") << -15 << 7 << 6;
        QTest::newRow("positive") << 9 << 7 << 2;
        QTest::newRow("zero") << 0 << 7 << 0;
        QTest::newRow("modulo one") << -5 << 1 << 0;
        QTest::newRow("zero divisor") << 5 << 0 << 0;
        QTest::newRow("int min by minus one") << std::numeric_limits<int>::min() << -1 << 0;
        QTest::newRow("large divisor")
            << -1 << std::numeric_limits<int>::max() << std::numeric_limits<int>::max() - 1;
    }

    void mod()
    {
        QFETCH(int, a);
        QFETCH(int, b);
        QFETCH(int, expected);
        QCOMPARE(MathUtils::Mod(a, b), expected);
    }

    void equal_data()
    {
        QTest::addColumn<double>("a");
        QTest::addColumn<double>("b");
        QTest::addColumn<double>("epsilon");
        QTest::addColumn<bool>("expected");
        QTest::newRow("same") << 1.0 << 1.0 << 0.0 << true;
        QTest::newRow("inside") << 1.0 << 1.05 << 0.1 << true;
        QTest::newRow("exactly epsilon apart") << 0.5 << 0.75 << 0.25 << true;
        QTest::newRow("outside") << 1.0 << 1.2 << 0.1 << false;
        QTest::newRow("order does not matter") << 1.2 << 1.0 << 0.1 << false;
        QTest::newRow("negative") << -3.0 << -3.01 << 0.1 << true;
    }

    void equal()
    {
        QFETCH(double, a);
        QFETCH(double, b);
        QFETCH(double, epsilon);
        QFETCH(bool, expected);
        QCOMPARE(MathUtils::Equal(a, b, epsilon), expected);
    }
};

QTEST_GUILESS_MAIN(StringUtilsTest)
#include "tst_string_utils.moc"
