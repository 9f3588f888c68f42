// Measures a run of stored statistics: 10,000 reports in "db.sqlite" (500 of them
// duplicates of others) read, de-duplicated and sent to the reference service on
// loopback in batches of 1000, each batch deleted once the service has taken it.
// The baseline, in the same run, sends the same batches with the same connection
// one after another without the database, so the ratio is what reading, sorting
// out and deleting the backlog costs on top of the network. Goal: the run within
// 2 s.

#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/database/db_manager.h"
#include "core/networking/server_connection.h"
#include "core/statistics/manager.h"
#include "core/statistics/report.h"
#include "core/utilities/data_directory.h"
#include "tests/support/reference_service.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTime>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

namespace {

using Core::DataBase::DbManager;
using Core::Networking::ServerConnection;
using Core::Statistics::Manager;
using Core::Statistics::Report;

constexpr int kStored = 10'000;
constexpr int kDuplicates = 500;
constexpr int kRepetitions = 3;
constexpr double kGoalSeconds = 2.0;
constexpr int kWaitLimitMs = 120'000;

// Runs the event loop until `done` holds; false when it did not within the limit.
bool RunUntil(const std::function<bool()>& done)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > kWaitLimitMs) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    }
    return true;
}

std::vector<Report> Backlog()
{
    std::vector<Report> reports;
    for (int i = 0; i < kStored - kDuplicates; ++i) {
        Report report;
        report.volume = 70;
        report.type = i % 5 == 0 ? "clip" : "music";
        report.time = QTime(0, 0).addSecs(i * 7 % 86400).toString(QStringLiteral("hh:mm:ss")).toStdString();
        report.date = "21.11.2026";
        report.track_id = i + 1;
        report.shop_id = 101;
        reports.push_back(report);
    }
    // The same start recorded again a few seconds later.
    for (int i = 0; i < kDuplicates; ++i) {
        Report again = reports[static_cast<std::size_t>(i) * 17];
        again.time = again.time.substr(0, 6) + (again.time[6] == '5' ? "00" : "59");
        reports.push_back(again);
    }
    return reports;
}

// One transaction on a connection of its own: storing row by row would measure
// the disk's syncing, which is not the run.
bool StoreBacklog(const std::vector<Report>& reports)
{
    const QString name = QStringLiteral("bench_backlog");
    bool stored = false;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        database.setDatabaseName(DbManager::DataBaseFilePath());
        if (database.open() && database.transaction()) {
            QSqlQuery query(database);
            stored = query.prepare(
                QStringLiteral("INSERT INTO reports (track_id, shop_id, date, time, type, volume) "
                               "VALUES (?, ?, ?, ?, ?, ?)"));
            for (auto report = reports.begin(); stored && report != reports.end(); ++report) {
                query.addBindValue(report->track_id);
                query.addBindValue(report->shop_id);
                query.addBindValue(QString::fromStdString(report->date));
                query.addBindValue(QString::fromStdString(report->time));
                query.addBindValue(QString::fromStdString(report->type));
                query.addBindValue(report->volume);
                stored = query.exec();
            }
            query.finish();
            stored = database.commit() && stored;
        }
        database.close();
    }
    QSqlDatabase::removeDatabase(name);
    return stored;
}

int StoredCount()
{
    std::vector<Report> reports;
    return DbManager::GetInstance().SavedReports(reports) ? static_cast<int>(reports.size()) : -1;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
#ifndef NDEBUG
    std::printf("warning: this is not a release build; the figures mean little\n");
#endif
    if (qEnvironmentVariableIsEmpty("ZELMAR_REFERENCE_SERVICE")) {
        qputenv("ZELMAR_REFERENCE_SERVICE", ZELMAR_BENCH_REFERENCE_SERVICE);
    }
    QTemporaryDir directory;
    if (!directory.isValid()) {
        std::fprintf(stderr, "error: no temporary folder\n");
        return 2;
    }
    qputenv(Core::Utilities::DataDirectory::EnvironmentVariable, directory.path().toLocal8Bit());

    Tests::ReferenceService service(QStringLiteral(ZELMAR_BENCH_SCENARIO));
    if (!service.Start()) {
        std::fprintf(stderr, "error: the reference service did not start: %s\n",
                     qPrintable(service.ErrorString()));
        return 2;
    }
    Core::DataTypes::Auth::Server server;
    server.id = 1;
    server.url = service.BaseUrl().toStdString();
    Core::DataTypes::Auth::PlaybackObject object;
    object.id = 101;
    object.code = "shop1";
    std::string token;
    bool signInFailed = false;
    ServerConnection(server).SignIn(
        "owner", "secret", object, [&](std::string received) { token = std::move(received); },
        [&](std::shared_ptr<Core::DataTypes::NetworkError>) { signInFailed = true; });
    if (!RunUntil([&] { return !token.empty() || signInFailed; }) || token.empty()) {
        std::fprintf(stderr, "error: cannot sign in to the reference service\n");
        return 2;
    }
    const auto connection = std::make_shared<ServerConnection>(server, object, token);

    const std::vector<Report> backlog = Backlog();
    std::vector<std::vector<Report>> batches;
    for (std::size_t first = 0; first < backlog.size() - kDuplicates; first += Manager::BatchLimit) {
        const std::size_t last = std::min(first + Manager::BatchLimit, backlog.size() - kDuplicates);
        batches.emplace_back(backlog.begin() + static_cast<std::ptrdiff_t>(first),
                             backlog.begin() + static_cast<std::ptrdiff_t>(last));
    }

    std::vector<double> runSeconds;
    std::vector<double> baselineSeconds;
    for (int repetition = 0; repetition < kRepetitions; ++repetition) {
        // Baseline: the same batches, one after another, straight from memory.
        int answered = 0;
        bool batchFailed = false;
        std::function<void()> sendNext = [&] {
            connection->SendStatistics(
                batches[static_cast<std::size_t>(answered)],
                [&] {
                    ++answered;
                    if (answered < static_cast<int>(batches.size())) {
                        sendNext();
                    }
                },
                [&](std::shared_ptr<Core::DataTypes::NetworkError>) { batchFailed = true; });
        };
        auto start = std::chrono::steady_clock::now();
        sendNext();
        if (!RunUntil([&] { return batchFailed || answered == static_cast<int>(batches.size()); }) ||
            batchFailed) {
            std::fprintf(stderr, "error: the baseline batches did not go through\n");
            return 2;
        }
        baselineSeconds.push_back(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());

        // The run.
        if (!DbManager::GetInstance().InitEmptyDataBase() || !StoreBacklog(backlog) ||
            StoredCount() != kStored) {
            std::fprintf(stderr, "error: cannot store the backlog\n");
            return 2;
        }
        const int receivedBefore = service.StatisticsReports().size();
        start = std::chrono::steady_clock::now();
        Manager::TryToSendStoredReports(connection);
        if (!RunUntil([] { return !Manager::IsSendingInProgress(); })) {
            std::fprintf(stderr, "error: the run did not end\n");
            return 2;
        }
        runSeconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        const int received = service.StatisticsReports().size() - receivedBefore;
        if (received != kStored - kDuplicates || StoredCount() != 0) {
            std::fprintf(stderr, "error: the run sent %d reports and left %d stored\n", received,
                         StoredCount());
            return 2;
        }
    }

    const double run = *std::min_element(runSeconds.begin(), runSeconds.end());
    const double baseline = *std::min_element(baselineSeconds.begin(), baselineSeconds.end());
    const bool met = run <= kGoalSeconds;
    std::printf("%d stored reports, %d duplicates, %zu batches; fastest of %d alternating runs each\n",
                kStored, kDuplicates, batches.size(), kRepetitions);
    std::printf("stored-report run: %.3f s (goal <= %.1f s) %s\n", run, kGoalSeconds, met ? "met" : "MISSED");
    std::printf("same batches sent from memory: %.3f s; ratio %.2f\n", baseline, run / baseline);
    service.Stop();
    return met ? 0 : 1;
}
