#include "core/statistics/manager.h"

#include "core/database/db_manager.h"
#include "core/utilities/logger.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <unordered_set>

namespace Core::Statistics {

namespace {

using Networking::ServerConnection;
using Utilities::Logger;

const std::string kStoredReportsPrefix = "Попытка отправки сохраненных отчётов о проигрывании: ";

struct DuplicateHash
{
    std::size_t operator()(const Report* report) const
    {
        return report->DuplicateHash();
    }
};

struct DuplicateEqual
{
    bool operator()(const Report* first, const Report* second) const
    {
        return first->IsDuplicateOf(*second);
    }
};

// Keeps the first report of each duplicate group, in stored order.
void SplitDuplicates(const std::vector<Report>& reports, std::vector<Report>& unique,
                     std::vector<Report>& duplicates)
{
    std::unordered_set<const Report*, DuplicateHash, DuplicateEqual> seen;
    seen.max_load_factor(1.0F);
    seen.reserve(reports.size());
    unique.reserve(reports.size());
    for (const Report& report : reports) {
        if (seen.insert(&report).second) {
            unique.push_back(report);
        } else {
            duplicates.push_back(report);
        }
    }
}

} // namespace

bool Manager::sIsSendingInProgress = false;
std::vector<Report> Manager::sPendingReports;
std::vector<Report> Manager::sSendingReports;
std::weak_ptr<ServerConnection> Manager::sRunConnection;
std::uint64_t Manager::sRunNumber = 0;

void Manager::TryToSendReport(const std::shared_ptr<ServerConnection>& connection, const Report& report)
{
    Logger::Log("Отправка статистики: проверка доступности сервера");
    if (!connection) {
        Logger::Log("Отправка статистики: сервер НЕ доступен");
        SaveReport(report);
        return;
    }
    const std::weak_ptr<ServerConnection> weakConnection = connection;
    connection->CheckServerAvailable(
        [weakConnection, report] {
            Logger::Log("Отправка статистики: сервер доступен");
            if (const auto alive = weakConnection.lock()) {
                SendReport(alive, report);
            } else {
                SaveReport(report);
            }
        },
        [report](std::shared_ptr<DataTypes::NetworkError>) {
            Logger::Log("Отправка статистики: сервер НЕ доступен");
            SaveReport(report);
        });
}

void Manager::SendReport(const std::shared_ptr<ServerConnection>& connection, const Report& report)
{
    if (!connection) {
        SaveReport(report);
        return;
    }
    const std::weak_ptr<ServerConnection> weakConnection = connection;
    connection->SendStatistics(
        {report},
        [weakConnection, report] {
            Logger::Log("Успешная отправка статистики по треку: " + std::to_string(report.track_id) + " " +
                        report.type);
            // Every live report that gets through also flushes the backlog.
            if (const auto alive = weakConnection.lock()) {
                TryToSendStoredReports(alive);
            }
        },
        [report](std::shared_ptr<DataTypes::NetworkError> error) {
            Logger::Log("Ошибка отправки статистики: " + (error ? error->ToString() : std::string()));
            SaveReport(report);
        });
}

void Manager::SaveReport(const Report& report)
{
    if (DataBase::DbManager::GetInstance().SaveReport(report)) {
        Logger::Log("Успешная запись отчета о проигрывании в локальную базу");
    } else {
        Logger::Log("Ошибка записи отчета о проигрывании в локальную базу");
    }
}

void Manager::TryToSendStoredReports(const std::shared_ptr<ServerConnection>& connection)
{
    if (sIsSendingInProgress && !sRunConnection.expired()) {
        Logger::Log("Попытка отправки сохраненных отчётов прервана: уже идет отправка");
        return;
    }
    if (!connection) {
        return;
    }
    // A run left behind by a connection that is gone never finishes by itself.
    FinishRun();

    std::vector<Report> stored;
    if (!DataBase::DbManager::GetInstance().SavedReports(stored)) {
        return;
    }
    if (stored.empty()) {
        Logger::Log(kStoredReportsPrefix + "Сохраненных отчетов нет.");
        return;
    }

    std::vector<Report> unique;
    std::vector<Report> duplicates;
    SplitDuplicates(stored, unique, duplicates);
    Logger::Log(kStoredReportsPrefix + "Сохраненных отчетов: " + std::to_string(stored.size()) + " " +
                "из них уникальных: " + std::to_string(unique.size()) + ", " +
                "дубликатов: " + std::to_string(duplicates.size()));
    if (!duplicates.empty()) {
        if (DataBase::DbManager::GetInstance().RemoveReports(duplicates)) {
            Logger::Log("Успешное удаление дубликатов");
        } else {
            Logger::Log("Ошибка при удаление дубликатов");
        }
    } else {
        Logger::Log("дубликатов нет");
    }

    sPendingReports = std::move(unique);
    sIsSendingInProgress = true;
    sRunConnection = connection;
    const std::uint64_t run = ++sRunNumber;
    const std::weak_ptr<ServerConnection> weakConnection = connection;
    connection->CheckServerAvailable(
        [weakConnection, run] {
            Logger::Log(kStoredReportsPrefix + "сервер доступен");
            if (run != sRunNumber) {
                return;
            }
            if (const auto alive = weakConnection.lock()) {
                SendStoredReports(alive);
            } else {
                FinishRun();
            }
        },
        [run](std::shared_ptr<DataTypes::NetworkError>) {
            Logger::Log(kStoredReportsPrefix + "сервер НЕ доступен");
            if (run != sRunNumber) {
                return;
            }
            // The reports stay stored for the next run.
            FinishRun();
        });
}

void Manager::SendStoredReports(const std::shared_ptr<ServerConnection>& connection)
{
    std::vector<Report> batch;
    if (sPendingReports.size() > BatchLimit) {
        Logger::Log("Количество отчетов к отправке больше чем установленный лимит, отправляем первые: " +
                    std::to_string(BatchLimit) + " отчетов");
        batch.assign(sPendingReports.begin(), sPendingReports.begin() + BatchLimit);
    } else {
        batch = sPendingReports;
    }
    sSendingReports = batch;
    if (batch.empty() || !connection) {
        FinishRun();
        return;
    }

    const std::weak_ptr<ServerConnection> weakConnection = connection;
    const std::uint64_t run = sRunNumber;
    connection->SendStatistics(
        batch,
        [weakConnection, run, batch] {
            Logger::Log(
                "Успешная отправка отчетов о проигрывании на сервер, удаление отправленных отчетов из базы");
            // The server has these now, whichever run sent them.
            if (DataBase::DbManager::GetInstance().RemoveReports(batch)) {
                Logger::Log("Отправленные отчеты успешно удалены из базы");
            } else {
                Logger::Log("Ошибка удаления отправленных отчетов из базы!");
            }
            if (run != sRunNumber) {
                return;
            }
            const std::size_t sent = std::min(batch.size(), sPendingReports.size());
            sPendingReports.erase(sPendingReports.begin(),
                                  sPendingReports.begin() + static_cast<std::ptrdiff_t>(sent));
            sSendingReports.clear();
            const auto alive = weakConnection.lock();
            if (sPendingReports.empty() || !alive) {
                FinishRun();
                return;
            }
            SendStoredReports(alive);
        },
        [run](std::shared_ptr<DataTypes::NetworkError>) {
            Logger::Log("Ошибка отправки отчетов о проигрывании на сервер");
            if (run != sRunNumber) {
                return;
            }
            // Nothing was deleted: the next run sends all of them again.
            FinishRun();
        });
}

bool Manager::IsSendingInProgress()
{
    return sIsSendingInProgress;
}

void Manager::FinishRun()
{
    sSendingReports.clear();
    sPendingReports.clear();
    sIsSendingInProgress = false;
    sRunConnection.reset();
}

} // namespace Core::Statistics
