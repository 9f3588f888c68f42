#include "core/content_playing/playable_period_info.h"
#include "core/data_types/playback/day.h"
#include "core/data_types/playback/track.h"
#include "core/utilities/clock.h"
#include "core/utilities/logger.h"
#include "tests/support/event_log.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"

#include <QtTest>

#include <cstdlib>
#include <thread>

using Core::Utilities::Clock;
using Core::Utilities::Logger;
using namespace Core::DataTypes::Playback;

namespace {

// Set in the copy of this test that is started to log while it exits.
constexpr const char* exitingChild = "ZELMAR_TEST_LOG_WHILE_EXITING";

Core::ContentPlaying::PlayablePeriodInfo Period(const std::string& name, const std::string& start,
                                                const std::string& end)
{
    Core::ContentPlaying::PlayablePeriodInfo info;
    info.name = name;
    info.startTime = start;
    info.endTime = end;
    return info;
}

} // namespace

// Support staff read nothing but this log, and tools of theirs parse it: every entry's
// text, tabs and blank lines are checked exactly, each stamp replaced by "[T]".
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

    void everyKindOfEntryHasItsExactLayout()
    {
        Logger::Log("Скидка %1 на всё, 100%");
        Logger::LogAppRunned();
        Day saturday;
        saturday.dayOfWeek = "Суббота";
        saturday.date = "21.11.2026";
        saturday.periods = {{"Утро", "08:00", "12:00", ""}, {"День", "12:00", "00:00", ""}};
        Day sunday;
        sunday.dayOfWeek = "Воскресенье";
        sunday.date = "22.11.2026";
        Logger::LogDays({saturday, sunday});
        Logger::LogDays({});
        Track track;
        track.id = 17;
        track.name = "Летний дождь";
        track.author = "Оркестр";
        track.contentType = ContentType::Clip;
        Logger::LogTrackStarted(track);
        Logger::LogPeriodStarted(Period("Утро", "08:00", "12:00"));
        Logger::LogPeriodChanged(Period("Утро", "08:00", "12:00"), Period("День", "12:00", "00:00"));
        Logger::LogLastPeriodFinished(Period("Ночь", "22:00", "00:00"));
        Logger::LogAdBlockStarted("Скидки", true, false);
        Logger::LogAdBlockStarted("Новинки", false, true);
        Logger::LogAdBlockAdded("Новинки", "Скидки");
        Logger::LogHostsAvailabilityStarted({"https://cdn1.example/", "http://127.0.0.1:8091/"});
        Logger::LogHostAvailable("http://127.0.0.1:8091/");
        Logger::LogNoHostAvailable();

        QString text = Tests::EventLog::Text();
        text.replace(QRegularExpression(QStringLiteral("21\\.11\\.2026 11:59:5\\d: ")),
                     QStringLiteral("[T]"));
        QCOMPARE(
            text,
            QStringLiteral(
                "[T]Скидка %1 на всё, 100%\n\n"
                "\n\n[T]------------------ ЗАПУСК ПРИЛОЖЕНИЯ ------------------\n\n"
                "[T]Периоды воспроизведения:\n\tСуббота 21.11.2026\n\t\t Утро  начало 08:00 конец 12:00\n"
                "\t\t День  начало 12:00 конец 00:00\n\tВоскресенье 22.11.2026\n\n"
                "[T]Дни расписания не найдены!\n\n"
                "[T] Начато воспроизведение трека:\n\tЛетний дождь-Оркестр 17 clip\n\n"
                "[T]Начался период без завершения предъидущего: Утро 08:00-12:00\n\n"
                "[T]Период закончился:Утро 08:00 12:00 Начался:День 12:00 00:00\n\n"
                "[T]Последний период закончился:Ночь 22:00 00:00\n\n"
                "[T]Настало время реклманого блока Скидки\n\n[T]Блок Скидки должен прерывать контент\n\n"
                "[T]У блока Скидки нет скачанных файлов\n\n[T]Настало время реклманого блока Новинки\n\n"
                "[T]Блок Новинки НЕ должен прерывать контент\n\n[T]У блока Новинки есть скачанные файлы\n\n"
                "[T]Треки рекламного блока Новинки добавлены к рекламному блоку Скидки\n\n"
                "[T]Поиск доступного хоста начат, хосты для проверки (2):\n"
                "\thttps://cdn1.example/\n\thttp://127.0.0.1:8091/\n\n"
                "[T]Хост доступен: http://127.0.0.1:8091/\n\n[T]Ни один хост не доступен!!!\n\n"));
    }

    void theStampFollowsAZoneChangedWithinTheSameSecond()
    {
        // Later cases never read the hour of a stamp, so the zone is left as set here.
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 21), QTime(12, 0, 5), Qt::UTC));
        qputenv("TZ", "UTC0");
        const std::string utc = Logger::LocalTimeString();
        // POSIX zone texts need no zone database: "UTC-3" is three hours east.
        qputenv("TZ", "UTC-3");
        const std::string east = Logger::LocalTimeString();
        // The clock runs on from the time it was set to: compare up to the hour.
        QCOMPARE(QString::fromStdString(utc.substr(0, 13)), QStringLiteral("21.11.2026 12"));
        QCOMPARE(QString::fromStdString(east.substr(0, 13)), QStringLiteral("21.11.2026 15"));
    }

    // Support deletes the log, or the whole folder, while the player runs.
    void aDeletedOrUnwritableLogLosesNothingElse()
    {
        Logger::Log("первая");
        QVERIFY(QFile::remove(dataDirectory->FilePath(QStringLiteral("log.txt"))));
        Logger::Log("вторая");
        QCOMPARE(Tests::EventLog::Entries(), QStringList{QStringLiteral("вторая")});
        QVERIFY(QDir(dataDirectory->Path()).removeRecursively());
        Logger::Log("третья");
        QCOMPARE(Tests::EventLog::Entries(), QStringList{QStringLiteral("третья")});
        // A data "directory" below a regular file can never be created: entries are lost quietly.
        QFile blocker(dataDirectory->FilePath(QStringLiteral("not-a-folder")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        qputenv("ZELMAR_DATA_DIR", blocker.fileName().toLocal8Bit() + "/data");
        Logger::Log("потеряется");
        Logger::LogDays({});
        QVERIFY(!QFile::exists(QString::fromStdString(Logger::GetLogFileName())));
    }

    // The downloader and the player log at once: no entry may be cut into another.
    void entriesFromSeveralThreadsStayWhole()
    {
        QStringList expected;
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            for (int i = 0; i < 200; ++i) {
                expected << QStringLiteral("поток %1, запись %2").arg(t).arg(i);
            }
            threads.emplace_back([t] {
                for (int i = 0; i < 200; ++i) {
                    Logger::Log("поток " + std::to_string(t) + ", запись " + std::to_string(i));
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        QStringList entries = Tests::EventLog::Entries();
        entries.sort();
        expected.sort();
        QCOMPARE(entries, expected);
    }

    // An entry written by an exit handler, after static objects are destroyed, still
    // reaches the file: a copy of this test registers one before the logger starts.
    void anEntryWrittenWhileExitingIsKept()
    {
        if (qEnvironmentVariableIsSet(exitingChild)) {
            std::atexit([] { Logger::Log("при выходе"); });
            Logger::Log("перед выходом");
            return;
        }
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QString::fromLatin1(exitingChild), QStringLiteral("1"));
        child.setProcessEnvironment(environment);
        child.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("anEntryWrittenWhileExitingIsKept")});
        QVERIFY(child.waitForFinished(Tests::Timeouts::Process));
        QCOMPARE(child.exitCode(), 0);
        // At exit the copy's override is back to this case's folder.
        QCOMPARE(Tests::EventLog::Entries(), QStringList{QStringLiteral("при выходе")});
    }

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
};

QTEST_GUILESS_MAIN(LoggerTest)
#include "tst_logger.moc"
