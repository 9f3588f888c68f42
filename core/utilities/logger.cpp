#include "core/utilities/logger.h"

#include "core/utilities/data_directory.h"
#include "core/utilities/local_time_helper.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <unistd.h>

namespace Core::Utilities {

namespace {

// A period's name and its time span, as the entries about periods show it.
std::string PeriodFields(const ContentPlaying::PlayablePeriodInfo& period)
{
    return period.name + " " + period.startTime + " " + period.endTime;
}

// What the entries of a busy moment share: the log file's name as the file
// system wants it, remade only when the data directory changes, and the stamp,
// remade only when the second or the time zone changes. The downloader writes
// several entries for every file it fetches. Never destroyed, so that an entry
// written while the process shuts down still finds it; the lock also keeps
// entries written from two threads apart.
struct SharedState
{
    std::mutex mutex;
    QString directory;
    QByteArray encodedName;
    std::time_t stampedSecond = 0;
    std::string stampedZone;
    std::string stamp;
};

SharedState& Shared()
{
    static SharedState* const state = new SharedState;
    return *state;
}

int OpenForAppending(const QByteArray& name)
{
    return ::open(name.constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
}

} // namespace

std::string Logger::GetLogFileName()
{
    return DataDirectory::FilePath(QStringLiteral("log.txt")).toStdString();
}

std::string Logger::LocalTimeString()
{
    // One reading of the clock serves both halves, so that an entry written at
    // midnight never carries the old date with the new time.
    const std::time_t now = LocalTimeHelper::GetDeviceLocalTimeStamp();
    const char* zone = std::getenv("TZ");
    const std::string currentZone = zone != nullptr ? zone : "";
    SharedState& shared = Shared();
    const std::lock_guard<std::mutex> lock(shared.mutex);
    if (shared.stamp.empty() || now != shared.stampedSecond || currentZone != shared.stampedZone) {
        shared.stamp = LocalTimeHelper::TimeStringFromSeconds(now, "%d.%m.%Y %H:%M:%S") + ": ";
        shared.stampedSecond = now;
        shared.stampedZone = currentZone;
    }
    return shared.stamp;
}

void Logger::Log(const std::string& message)
{
    Append(LocalTimeString() + message + "\n\n");
}

void Logger::LogEmptyLine()
{
    Append("\n\n");
}

void Logger::LogAppRunned()
{
    LogEmptyLine();
    Log("------------------ ЗАПУСК ПРИЛОЖЕНИЯ ------------------");
}

void Logger::LogDays(const std::vector<DataTypes::Playback::Day>& days)
{
    if (days.empty()) {
        Append(LocalTimeString() + "Дни расписания не найдены!\n\n");
        return;
    }
    std::string entry = LocalTimeString() + "Периоды воспроизведения:\n";
    for (const auto& day : days) {
        entry += "\t" + day.dayOfWeek + " " + day.date + "\n";
        for (const auto& period : day.periods) {
            entry += "\t\t " + period.name + " " + " начало " + period.startTime + " конец " +
                     period.endTime + "\n";
        }
    }
    entry += "\n";
    Append(entry);
}

void Logger::LogTrackStarted(const DataTypes::Playback::Track& track)
{
    Append(LocalTimeString() + " Начато воспроизведение трека:\n\t" + track.name + "-" + track.author + " " +
           std::to_string(track.id) + " " + DataTypes::Playback::ContentTypeToString(track.contentType) +
           "\n\n");
}

void Logger::LogPeriodStarted(const ContentPlaying::PlayablePeriodInfo& period)
{
    Append(LocalTimeString() + "Начался период без завершения предъидущего: " + period.name + " " +
           period.startTime + "-" + period.endTime + "\n\n");
}

void Logger::LogPeriodChanged(const ContentPlaying::PlayablePeriodInfo& oldPeriod,
                              const ContentPlaying::PlayablePeriodInfo& newPeriod)
{
    Append(LocalTimeString() + "Период закончился:" + PeriodFields(oldPeriod) + " " +
           "Начался:" + PeriodFields(newPeriod) + "\n\n");
}

void Logger::LogLastPeriodFinished(const ContentPlaying::PlayablePeriodInfo& period)
{
    Append(LocalTimeString() + "Последний период закончился:" + PeriodFields(period) + "\n\n");
}

void Logger::LogAdBlockStarted(const std::string& blockName, bool interruptsContent, bool hasDownloadedFiles)
{
    Log("Настало время реклманого блока " + blockName);
    Log("Блок " + blockName +
        (interruptsContent ? " должен прерывать контент" : " НЕ должен прерывать контент"));
    Log("У блока " + blockName + (hasDownloadedFiles ? " есть скачанные файлы" : " нет скачанных файлов"));
}

void Logger::LogAdBlockAdded(const std::string& addedBlockName, const std::string& targetBlockName)
{
    Log("Треки рекламного блока " + addedBlockName + " добавлены к рекламному блоку " + targetBlockName);
}

void Logger::LogHostsAvailabilityStarted(const std::vector<std::string>& hosts)
{
    std::string entry = LocalTimeString() + "Поиск доступного хоста начат, хосты для проверки (" +
                        std::to_string(hosts.size()) + "):\n";
    for (const auto& host : hosts) {
        entry += "\t" + host + "\n";
    }
    entry += "\n";
    Append(entry);
}

void Logger::LogHostAvailable(const std::string& host)
{
    Log("Хост доступен: " + host);
}

void Logger::LogNoHostAvailable()
{
    Log("Ни один хост не доступен!!!");
}

void Logger::Append(const std::string& text)
{
    // A missing or read-only data folder only loses the entry: the player must go on
    // playing whatever happens to its log.
    const QString directory = DataDirectory::Path();
    SharedState& shared = Shared();
    const std::lock_guard<std::mutex> lock(shared.mutex);
    if (directory != shared.directory || shared.encodedName.isEmpty()) {
        shared.directory = directory;
        shared.encodedName = QFile::encodeName(directory + QStringLiteral("/log.txt"));
    }
    int file = OpenForAppending(shared.encodedName);
    if (file < 0 && errno == ENOENT) {
        // Someone removed the whole data folder; the entry brings it back.
        QDir().mkpath(directory);
        file = OpenForAppending(shared.encodedName);
    }
    if (file < 0) {
        return;
    }
    // Nothing is held back in the process: once this returns the entry is in the
    // file, and a crash right after loses none of it.
    const char* data = text.data();
    std::size_t left = text.size();
    while (left > 0) {
        const ssize_t written = ::write(file, data, left);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            break;
        }
        data += written;
        left -= static_cast<std::size_t>(written);
    }
    ::close(file);
}

} // namespace Core::Utilities
