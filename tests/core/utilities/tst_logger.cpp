#include "core/content_playing/playable_period_info.h"
#include "core/data_types/playback/day.h"
#include "core/data_types/playback/track.h"
#include "core/utilities/clock.h"
#include "core/utilities/logger.h"
#include "tests/support/test_data_directory.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QtTest>

#include <memory>

using Core::Utilities::Clock;
using Core::Utilities::Logger;
using namespace Core::DataTypes::Playback;

namespace {

Core::ContentPlaying::PlayablePeriodInfo Period(const std::string& name, const std::string& start,
                                                const std::string& end)
{
    Core::ContentPlaying::PlayablePeriodInfo info;
    info.name = name;
    info.startTime = start;
    info.endTime = end;
    info.date = "21.11.2026";
    info.dayOfWeek = "Суббота";
    return info;
}

} // namespace

// Support staff read nothing but this log, and tools of theirs parse it: every entry's
// text, tabs and blank lines are checked exactly. The clock is set to 21.11.2026
// 11:59:55, and every stamp it produces is replaced by "[T]" before comparing.
class LoggerTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 21), QTime(11, 59, 55)));
    }

    void cleanup()
    {
        Clock::ResetForTesting();
        dataDirectory.reset();
    }

    void logFileLivesInTheDataDirectory()
    {
        QCOMPARE(QString::fromStdString(Logger::GetLogFileName()),
                 dataDirectory->FilePath(QStringLiteral("log.txt")));
    }

    void prefixIsLocalDateAndTime()
    {
        QVERIFY2(QRegularExpression(QStringLiteral("^21\\.11\\.2026 11:59:5\\d: $"))
                     .match(QString::fromStdString(Logger::LocalTimeString()))
                     .hasMatch(),
                 Logger::LocalTimeString().c_str());
    }

    void theStampFollowsAZoneChangedWithinTheSameSecond()
    {
        const bool hadZone = qEnvironmentVariableIsSet("TZ");
        const QByteArray zone = qgetenv("TZ");
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 21), QTime(12, 0, 5), Qt::UTC));
        qputenv("TZ", "UTC0");
        const std::string utc = Logger::LocalTimeString();
        // POSIX zone texts need no zone database: "UTC-3" is three hours east.
        qputenv("TZ", "UTC-3");
        const std::string east = Logger::LocalTimeString();
        if (hadZone) {
            qputenv("TZ", zone);
        } else {
            qunsetenv("TZ");
        }
        QCOMPARE(QString::fromStdString(utc.substr(0, 13)), QStringLiteral("21.11.2026 12"));
        QCOMPARE(QString::fromStdString(east.substr(0, 13)), QStringLiteral("21.11.2026 15"));
    }

    void plainMessagesKeepPercentSequencesAndAppend()
    {
        Logger::Log("Скидка %1 на всё, 100%");
        Logger::Log("второе");
        QCOMPARE(ReadLog(), QStringLiteral("[T]Скидка %1 на всё, 100%\n\n[T]второе\n\n"));
    }

    void startOfTheApplication()
    {
        Logger::LogAppRunned();
        Logger::LogEmptyLine();
        QCOMPARE(ReadLog(),
                 QStringLiteral("\n\n[T]------------------ ЗАПУСК ПРИЛОЖЕНИЯ ------------------\n\n\n\n"));
    }

    void daysAndTheirPeriods()
    {
        Day saturday;
        saturday.dayOfWeek = "Суббота";
        saturday.date = "21.11.2026";
        PlaybackPeriod morning;
        morning.name = "Утро";
        morning.startTime = "08:00";
        morning.endTime = "12:00";
        PlaybackPeriod rest;
        rest.name = "День";
        rest.startTime = "12:00";
        rest.endTime = "00:00";
        saturday.periods = {morning, rest};
        Day sunday;
        sunday.dayOfWeek = "Воскресенье";
        sunday.date = "22.11.2026";

        Logger::LogDays({saturday, sunday});
        QCOMPARE(ReadLog(), QStringLiteral("[T]Периоды воспроизведения:\n"
                                           "\tСуббота 21.11.2026\n"
                                           "\t\t Утро  начало 08:00 конец 12:00\n"
                                           "\t\t День  начало 12:00 конец 00:00\n"
                                           "\tВоскресенье 22.11.2026\n"
                                           "\n"));
    }

    void anEmptyScheduleSaysSoAndNothingElse()
    {
        Logger::LogDays({});
        QCOMPARE(ReadLog(), QStringLiteral("[T]Дни расписания не найдены!\n\n"));
    }

    void trackStarted()
    {
        Track track;
        track.id = 17;
        track.name = "Летний дождь";
        track.author = "Оркестр";
        track.contentType = ContentType::Music;
        Logger::LogTrackStarted(track);
        track.contentType = ContentType::Clip;
        track.name = "Распродажа";
        track.author = "";
        Logger::LogTrackStarted(track);
        QCOMPARE(ReadLog(),
                 QStringLiteral("[T] Начато воспроизведение трека:\n\tЛетний дождь-Оркестр 17 music\n\n"
                                "[T] Начато воспроизведение трека:\n\tРаспродажа- 17 clip\n\n"));
    }

    void periods()
    {
        Logger::LogPeriodStarted(Period("Утро", "08:00", "12:00"));
        Logger::LogPeriodChanged(Period("Утро", "08:00", "12:00"), Period("День", "12:00", "00:00"));
        Logger::LogLastPeriodFinished(Period("Ночь", "22:00", "00:00"));
        QCOMPARE(ReadLog(),
                 QStringLiteral("[T]Начался период без завершения предъидущего: Утро 08:00-12:00\n\n"
                                "[T]Период закончился:Утро 08:00 12:00 Начался:День 12:00 00:00\n\n"
                                "[T]Последний период закончился:Ночь 22:00 00:00\n\n"));
    }

    void adBlocks()
    {
        Logger::LogAdBlockStarted("Скидки", true, false);
        Logger::LogAdBlockStarted("Новинки", false, true);
        Logger::LogAdBlockAdded("Новинки", "Скидки");
        QCOMPARE(ReadLog(),
                 QStringLiteral("[T]Настало время реклманого блока Скидки\n\n"
                                "[T]Блок Скидки должен прерывать контент\n\n"
                                "[T]У блока Скидки нет скачанных файлов\n\n"
                                "[T]Настало время реклманого блока Новинки\n\n"
                                "[T]Блок Новинки НЕ должен прерывать контент\n\n"
                                "[T]У блока Новинки есть скачанные файлы\n\n"
                                "[T]Треки рекламного блока Новинки добавлены к рекламному блоку Скидки\n\n"));
    }

    void hosts()
    {
        Logger::LogHostsAvailabilityStarted({"https://cdn1.example/", "http://127.0.0.1:8091/"});
        Logger::LogHostsAvailabilityStarted({});
        Logger::LogHostAvailable("http://127.0.0.1:8091/");
        Logger::LogNoHostAvailable();
        QCOMPARE(ReadLog(), QStringLiteral("[T]Поиск доступного хоста начат, хосты для проверки (2):\n"
                                           "\thttps://cdn1.example/\n\thttp://127.0.0.1:8091/\n\n"
                                           "[T]Поиск доступного хоста начат, хосты для проверки (0):\n\n"
                                           "[T]Хост доступен: http://127.0.0.1:8091/\n\n"
                                           "[T]Ни один хост не доступен!!!\n\n"));
    }

    void aDeletedLogComesBackWithTheNextEntry()
    {
        Logger::Log("первая");
        QVERIFY(QFile::remove(dataDirectory->FilePath(QStringLiteral("log.txt"))));
        Logger::Log("вторая");
        QCOMPARE(ReadLog(), QStringLiteral("[T]вторая\n\n"));
    }

    void aRemovedDataFolderComesBackWithTheNextEntry()
    {
        Logger::Log("первая");
        QVERIFY(QDir(dataDirectory->Path()).removeRecursively());
        Logger::Log("вторая");
        QCOMPARE(ReadLog(), QStringLiteral("[T]вторая\n\n"));
    }

    void anUnwritableLocationLosesEntriesQuietly()
    {
        // A data "directory" below a regular file can never be created.
        QFile blocker(dataDirectory->FilePath(QStringLiteral("not-a-folder")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        qputenv("ZELMAR_DATA_DIR", blocker.fileName().toLocal8Bit() + "/data");
        Logger::Log("потеряется");
        Logger::LogDays({});
        QVERIFY(!QFile::exists(QString::fromStdString(Logger::GetLogFileName())));
    }

private:
    QString ReadLog() const
    {
        QFile file(dataDirectory->FilePath(QStringLiteral("log.txt")));
        if (!file.open(QIODevice::ReadOnly)) {
            return QStringLiteral("<no log>");
        }
        QString text = QString::fromUtf8(file.readAll());
        text.replace(QRegularExpression(QStringLiteral("21\\.11\\.2026 11:59:5\\d: ")),
                     QStringLiteral("[T]"));
        return text;
    }

    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
};

QTEST_GUILESS_MAIN(LoggerTest)
#include "tst_logger.moc"
