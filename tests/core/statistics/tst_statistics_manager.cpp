#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/data_types/playback/track.h"
#include "core/database/db_manager.h"
#include "core/networking/server_connection.h"
#include "core/statistics/manager.h"
#include "core/statistics/report.h"
#include "core/utilities/logger.h"
#include "tests/support/reference_service.h"
#include "tests/support/service_fault.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_sign_in.h"
#include "tests/support/test_timeouts.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QtTest>

#include <memory>
#include <string>
#include <vector>

using Core::DataBase::DbManager;
using Core::DataTypes::Auth::PlaybackObject;
using Core::DataTypes::Auth::Server;
using Core::Networking::ServerConnection;
using Core::Statistics::Manager;
using Core::Statistics::Report;

Q_DECLARE_METATYPE(std::vector<int>)

namespace {

QStringList LogEntries()
{
    QFile file(QString::fromStdString(Core::Utilities::Logger::GetLogFileName()));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    static const QRegularExpression stamp(QStringLiteral("^\\d\\d\\.\\d\\d\\.\\d{4} \\d\\d:\\d\\d:\\d\\d: "));
    QStringList entries = QString::fromUtf8(file.readAll()).split(QStringLiteral("\n\n"));
    if (!entries.isEmpty() && entries.last().isEmpty()) {
        entries.removeLast();
    }
    for (QString& entry : entries) {
        entry.remove(stamp);
    }
    return entries;
}

// Unique by track id; the time walks through the day so that the reports look
// like a real backlog.
Report MakeReport(int trackId, const std::string& time = std::string())
{
    Report report;
    report.volume = 70;
    report.type = trackId % 5 == 0 ? "clip" : "music";
    report.time = time.empty()
                      ? QTime(0, 0).addSecs(trackId * 7).toString(QStringLiteral("hh:mm:ss")).toStdString()
                      : time;
    report.date = "21.11.2026";
    report.track_id = trackId;
    report.shop_id = 101;
    return report;
}

QJsonObject ReportJson(const Report& report)
{
    return {{QStringLiteral("volume"), report.volume},
            {QStringLiteral("type"), QString::fromStdString(report.type)},
            {QStringLiteral("time"), QString::fromStdString(report.time)},
            {QStringLiteral("date"), QString::fromStdString(report.date)},
            {QStringLiteral("track_id"), report.track_id},
            {QStringLiteral("shop_id"), report.shop_id}};
}

std::vector<int> TrackIds(const QJsonArray& reports)
{
    std::vector<int> ids;
    for (const QJsonValue& report : reports) {
        ids.push_back(report.toObject().value(QStringLiteral("track_id")).toInt());
    }
    return ids;
}

std::vector<int> StoredTrackIds()
{
    std::vector<Report> stored;
    if (!DbManager::GetInstance().SavedReports(stored)) {
        return {-1};
    }
    std::vector<int> ids;
    for (const Report& report : stored) {
        ids.push_back(report.track_id);
    }
    return ids;
}

std::vector<int> Range(int first, int last)
{
    std::vector<int> ids;
    for (int id = first; id <= last; ++id) {
        ids.push_back(id);
    }
    return ids;
}

const QString kStoredPrefix = QStringLiteral("Попытка отправки сохраненных отчётов о проигрывании: ");
const QString kOverLimit = QStringLiteral(
    "Количество отчетов к отправке больше чем установленный лимит, отправляем первые: 1000 отчетов");
const QString kBatchSent = QStringLiteral(
    "Успешная отправка отчетов о проигрывании на сервер, удаление отправленных отчетов из базы");
const QString kBatchDeleted = QStringLiteral("Отправленные отчеты успешно удалены из базы");
const QString kBatchFailed = QStringLiteral("Ошибка отправки отчетов о проигрывании на сервер");
const QString kNoDuplicates = QStringLiteral("дубликатов нет");
const QString kServerUp = kStoredPrefix + QStringLiteral("сервер доступен");
const QString kServerDown = kStoredPrefix + QStringLiteral("сервер НЕ доступен");
const QString kAlreadySending =
    QStringLiteral("Попытка отправки сохраненных отчётов прервана: уже идет отправка");
const QString kLiveCheck = QStringLiteral("Отправка статистики: проверка доступности сервера");
const QString kLiveUp = QStringLiteral("Отправка статистики: сервер доступен");
const QString kLiveDown = QStringLiteral("Отправка статистики: сервер НЕ доступен");
const QString kStoredOne = QStringLiteral("Успешная запись отчета о проигрывании в локальную базу");

QString Counts(int stored, int unique, int duplicates)
{
    return kStoredPrefix + QStringLiteral("Сохраненных отчетов: %1 из них уникальных: %2, дубликатов: %3")
                               .arg(stored)
                               .arg(unique)
                               .arg(duplicates);
}

} // namespace

// Statistics against the reference service over loopback, with the real database
// in a fresh data directory per case. What the server received, what is left in
// the database and the event log are checked after every run.
class StatisticsManagerTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::shared_ptr<ServerConnection> connection;
    Server server;
    PlaybackObject object;
    std::string token;
    int logStart = 0;

    // The entries logged since the last call.
    QStringList NewLogEntries()
    {
        const QStringList entries = LogEntries();
        const QStringList fresh = entries.mid(logStart);
        logStart = static_cast<int>(entries.size());
        return fresh;
    }

    // A backlog as the player leaves it, written in one transaction on a
    // connection of the test's own: row by row it would take seconds of syncing.
    static void Store(int first, int last)
    {
        const QString name = QStringLiteral("backlog");
        {
            QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
            database.setDatabaseName(DbManager::DataBaseFilePath());
            QVERIFY(database.open());
            QVERIFY(database.transaction());
            QSqlQuery query(database);
            QVERIFY(query.prepare(
                QStringLiteral("INSERT INTO reports (track_id, shop_id, date, time, type, volume) "
                               "VALUES (?, ?, ?, ?, ?, ?)")));
            for (int id = first; id <= last; ++id) {
                const Report r = MakeReport(id);
                for (const QVariant& value :
                     {QVariant(r.track_id), QVariant(r.shop_id), QVariant(r.date.c_str()),
                      QVariant(r.time.c_str()), QVariant(r.type.c_str()), QVariant(r.volume)}) {
                    query.addBindValue(value);
                }
                QVERIFY2(query.exec(), qPrintable(query.lastError().text()));
            }
            query.finish();
            QVERIFY(database.commit());
            database.close();
        }
        QSqlDatabase::removeDatabase(name);
    }

    // A connection to a server whose name does not resolve.
    std::shared_ptr<ServerConnection> UnreachableConnection() const
    {
        Server unreachable = server;
        unreachable.url = "http://zelmar-unreachable.invalid/api/v1/";
        return std::make_shared<ServerConnection>(unreachable, object, token);
    }

    static void WaitForTheRunToEnd()
    {
        QTRY_VERIFY_WITH_TIMEOUT(!Manager::IsSendingInProgress(), Tests::Timeouts::Process);
    }

private slots:
    void initTestCase()
    {
        service = std::make_unique<Tests::ReferenceService>(Tests::ReferenceService::SourceDirectory() +
                                                            QStringLiteral("/tests/tools/scenarios/basic"));
        QVERIFY2(service->Start(), qPrintable(service->ErrorString()));
        server.id = 1;
        server.url = service->BaseUrl().toStdString();
        object.id = 101;
        object.code = "shop1";
    }

    void init()
    {
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        QVERIFY(DbManager::GetInstance().InitEmptyDataBase());
        token = Tests::TestSignIn::Token(server, object, "owner", "secret");
        QVERIFY(!token.empty());
        connection = std::make_shared<ServerConnection>(server, object, token);
        logStart = 0;
        QVERIFY(!Manager::IsSendingInProgress());
    }

    void cleanup()
    {
        WaitForTheRunToEnd();
        // Whatever the case did, the token never reaches the event log.
        QVERIFY(!LogEntries().join(QLatin1Char('\n')).contains(QString::fromStdString(token)));
        connection.reset();
        dataDirectory.reset();
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    void reportIsBuiltFromTheTrack()
    {
        Core::DataTypes::Playback::Track track;
        track.id = 1001;
        track.shopId = 101;
        track.contentType = Core::DataTypes::Playback::ContentType::Clip;
        const Report report(track, 55, "10:15:30", "21.11.2026");
        QCOMPARE(report.type, std::string("clip"));
        QCOMPARE(report.track_id, 1001);
        QCOMPARE(report.shop_id, 101);
        QCOMPARE(report.volume, 55);
        QCOMPARE(report.time, std::string("10:15:30"));
        QCOMPARE(report.date, std::string("21.11.2026"));
    }

    void duplicatesDifferOnlyInSeconds()
    {
        const Report first = MakeReport(7, "10:15:30");
        Report second = MakeReport(7, "10:15:59");
        second.rowid = 42;
        QVERIFY(first.IsDuplicateOf(second));
        QCOMPARE(first.DuplicateHash(), second.DuplicateHash());
        QVERIFY(first != second);

        const auto differs = [&](const std::function<void(Report&)>& change) {
            Report other = first;
            change(other);
            return !first.IsDuplicateOf(other) && !other.IsDuplicateOf(first);
        };
        QVERIFY(differs([](Report& r) { r.time = "10:16:30"; }));
        QVERIFY(differs([](Report& r) { r.time = "11:15:30"; }));
        QVERIFY(differs([](Report& r) { r.volume = 71; }));
        QVERIFY(differs([](Report& r) { r.type = "clip"; }));
        QVERIFY(differs([](Report& r) { r.date = "22.11.2026"; }));
        QVERIFY(differs([](Report& r) { r.track_id = 8; }));
        QVERIFY(differs([](Report& r) { r.shop_id = 102; }));
    }

    void liveReportGoesOutAndFlushesTheBacklog()
    {
        for (int id = 1; id <= 3; ++id) {
            QVERIFY(DbManager::GetInstance().SaveReport(MakeReport(id)));
        }
        const Report live = MakeReport(501, "12:00:01");
        Manager::TryToSendReport(connection, live);
        QTRY_COMPARE_WITH_TIMEOUT(service->StatisticsReports().size(), 4, Tests::Timeouts::Process);
        WaitForTheRunToEnd();

        const QJsonArray batches = service->Received(QStringLiteral("statistics"));
        QCOMPARE(batches.size(), 2);
        QCOMPARE(batches.at(0).toObject().value(QStringLiteral("reports")).toArray(),
                 QJsonArray({ReportJson(live)}));
        QCOMPARE(TrackIds(batches.at(1).toObject().value(QStringLiteral("reports")).toArray()),
                 std::vector<int>({1, 2, 3}));
        QCOMPARE(StoredTrackIds(), std::vector<int>());
        QCOMPARE(NewLogEntries(),
                 QStringList({kLiveCheck, kLiveUp,
                              QStringLiteral("Успешная отправка статистики по треку: 501 music"),
                              Counts(3, 3, 0), kNoDuplicates, kServerUp, kBatchSent, kBatchDeleted}));
    }

    void liveReportIsKeptWhenTheServerCannotBeReached()
    {
        const auto unreachable = UnreachableConnection();
        Manager::TryToSendReport(unreachable, MakeReport(1));
        QTRY_COMPARE_WITH_TIMEOUT(StoredTrackIds(), std::vector<int>({1}), Tests::Timeouts::Process);
        QCOMPARE(NewLogEntries(), QStringList({kLiveCheck, kLiveDown, kStoredOne}));

        // No connection at all is the same as an unreachable server.
        Manager::TryToSendReport(nullptr, MakeReport(2));
        QCOMPARE(StoredTrackIds(), std::vector<int>({1, 2}));
        QCOMPARE(service->StatisticsReports().size(), 0);
    }

    void liveReportIsKeptWhenTheServerRefusesIt_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("error");
        QTest::newRow("api error") << "api_error" << QStringLiteral("Ошибка: Слишком частая отправка");
        QTest::newRow("connection closed")
            << "close_mid_body" << QStringLiteral("Network error: Отсутствует связь с сервером");
    }

    void liveReportIsKeptWhenTheServerRefusesIt()
    {
        QFETCH(QString, kind);
        QFETCH(QString, error);
        Tests::ServiceFault fault(QStringLiteral("statistics"), kind);
        fault.error = 403011;
        QVERIFY(service->AddFault(fault) > 0);
        Manager::TryToSendReport(connection, MakeReport(9));
        QTRY_COMPARE_WITH_TIMEOUT(StoredTrackIds(), std::vector<int>({9}), Tests::Timeouts::Process);
        const QStringList entries = NewLogEntries();
        QVERIFY2(entries.contains(QStringLiteral("Ошибка отправки статистики: ") + error),
                 qPrintable(entries.join(QLatin1Char('\n'))));
        QCOMPARE(entries.last(), kStoredOne);
        // A refused live report starts no run.
        QVERIFY(!Manager::IsSendingInProgress());
    }

    void storedReportsGoInBatchesOfAThousandDeletedAfterEachAcknowledgement_data()
    {
        QTest::addColumn<int>("stored");
        QTest::addColumn<std::vector<int>>("sizes");
        QTest::newRow("exactly the limit") << 1000 << std::vector<int>({1000});
        QTest::newRow("one over") << 1001 << std::vector<int>({1000, 1});
        QTest::newRow("two and a half") << 2500 << std::vector<int>({1000, 1000, 500});
    }

    void storedReportsGoInBatchesOfAThousandDeletedAfterEachAcknowledgement()
    {
        QFETCH(int, stored);
        QFETCH(std::vector<int>, sizes);
        Store(1, stored);
        // The server holds the first batch: until it answers, no row may leave the database.
        Tests::ServiceFault hold(QStringLiteral("statistics"), QStringLiteral("delay"), 1);
        hold.delayMs = 1000;
        QVERIFY(service->AddFault(hold) > 0);

        Manager::TryToSendStoredReports(connection);
        QVERIFY(Manager::IsSendingInProgress());
        QTRY_COMPARE_WITH_TIMEOUT(service->RequestsTo(QStringLiteral("statistics")).size(), 1,
                                  Tests::Timeouts::Process);
        QCOMPARE(StoredTrackIds().size(), std::size_t(stored));

        QTRY_COMPARE_WITH_TIMEOUT(service->StatisticsReports().size(), stored, Tests::Timeouts::Process);
        WaitForTheRunToEnd();
        std::vector<int> sent;
        for (const QJsonValue& batch : service->Received(QStringLiteral("statistics"))) {
            sent.push_back(batch.toObject().value(QStringLiteral("reports")).toArray().size());
        }
        QCOMPARE(sent, sizes);
        QCOMPARE(TrackIds(service->StatisticsReports()), Range(1, stored));
        QCOMPARE(service->StatisticsReports().at(stored - 1).toObject(), ReportJson(MakeReport(stored)));
        QCOMPARE(StoredTrackIds(), std::vector<int>());
        // Each batch is deleted before the next one leaves; all but the last announce the limit.
        QStringList expected{Counts(stored, stored, 0), kNoDuplicates, kServerUp};
        for (std::size_t batch = 0; batch < sizes.size(); ++batch) {
            if (batch + 1 < sizes.size()) {
                expected << kOverLimit;
            }
            expected << kBatchSent << kBatchDeleted;
        }
        QCOMPARE(NewLogEntries(), expected);
    }

    void aFailedBatchDeletesNothingAndTheNextRunResumes()
    {
        Store(1, 2500);
        // The first batch goes through; the second is refused.
        Tests::ServiceFault pass(QStringLiteral("statistics"), QStringLiteral("delay"), 1);
        pass.delayMs = 1;
        QVERIFY2(service->AddFault(pass) > 0, qPrintable(service->ErrorString()));
        Tests::ServiceFault refuse(QStringLiteral("statistics"), QStringLiteral("api_error"), 1);
        refuse.error = 500000;
        QVERIFY(service->AddFault(refuse) > 0);

        Manager::TryToSendStoredReports(connection);
        WaitForTheRunToEnd();
        QCOMPARE(service->RequestsTo(QStringLiteral("statistics")).size(), 2);
        QCOMPARE(TrackIds(service->StatisticsReports()), Range(1, 1000));
        QCOMPARE(StoredTrackIds(), Range(1001, 2500));
        QCOMPARE(NewLogEntries(), QStringList({Counts(2500, 2500, 0), kNoDuplicates, kServerUp, kOverLimit,
                                               kBatchSent, kBatchDeleted, kOverLimit, kBatchFailed}));

        Manager::TryToSendStoredReports(connection);
        WaitForTheRunToEnd();
        QCOMPARE(TrackIds(service->StatisticsReports()), Range(1, 2500));
        QCOMPARE(StoredTrackIds(), std::vector<int>());
    }

    void duplicatesAreDeletedBeforeSending()
    {
        QVERIFY(DbManager::GetInstance().SaveReport(MakeReport(1, "10:15:30")));
        QVERIFY(DbManager::GetInstance().SaveReport(MakeReport(2, "10:15:31")));
        // The same start of track 1 recorded again 20 seconds later, and again.
        QVERIFY(DbManager::GetInstance().SaveReport(MakeReport(1, "10:15:50")));
        QVERIFY(DbManager::GetInstance().SaveReport(MakeReport(1, "10:15:02")));
        // A minute later it is another play.
        QVERIFY(DbManager::GetInstance().SaveReport(MakeReport(1, "10:16:30")));
        // The server refuses, so what is left in the database after the run shows
        // exactly which rows the de-duplication took.
        Tests::ServiceFault refuse(QStringLiteral("statistics"), QStringLiteral("api_error"));
        refuse.error = 500000;
        QVERIFY(service->AddFault(refuse) > 0);

        Manager::TryToSendStoredReports(connection);
        WaitForTheRunToEnd();
        std::vector<Report> left;
        QVERIFY(DbManager::GetInstance().SavedReports(left));
        QCOMPARE(left.size(), std::size_t(3));
        QCOMPARE(left.at(0).time, std::string("10:15:30"));
        QCOMPARE(left.at(1).track_id, 2);
        QCOMPARE(left.at(2).time, std::string("10:16:30"));
        QCOMPARE(NewLogEntries(),
                 QStringList({Counts(5, 3, 2), QStringLiteral("Успешное удаление дубликатов"), kServerUp,
                              kBatchFailed}));

        QVERIFY(service->ClearFaults());
        Manager::TryToSendStoredReports(connection);
        WaitForTheRunToEnd();
        QCOMPARE(service->StatisticsReports(),
                 QJsonArray({ReportJson(MakeReport(1, "10:15:30")), ReportJson(MakeReport(2, "10:15:31")),
                             ReportJson(MakeReport(1, "10:16:30"))}));
    }

    void onlyOneRunAtATime()
    {
        Store(1, 10);
        Tests::ServiceFault hold(QStringLiteral("statistics"), QStringLiteral("delay"), 1);
        hold.delayMs = 500;
        QVERIFY(service->AddFault(hold) > 0);
        Manager::TryToSendStoredReports(connection);
        NewLogEntries();
        Manager::TryToSendStoredReports(connection);
        QCOMPARE(NewLogEntries(), QStringList({kAlreadySending}));
        WaitForTheRunToEnd();
        QCOMPARE(service->RequestsTo(QStringLiteral("statistics")).size(), 1);
        QCOMPARE(StoredTrackIds(), std::vector<int>());
    }

    void runsThatSendNothing_data()
    {
        QTest::addColumn<int>("stored");
        QTest::addColumn<QString>("connectionKind");
        QTest::addColumn<QStringList>("log");
        QTest::newRow("nothing stored")
            << 0 << "live" << QStringList({kStoredPrefix + QStringLiteral("Сохраненных отчетов нет.")});
        // Without a connection nothing happens at all, not even a log entry.
        QTest::newRow("no connection") << 1 << "none" << QStringList();
        QTest::newRow("unreachable server")
            << 3 << "unreachable" << QStringList({Counts(3, 3, 0), kNoDuplicates, kServerDown});
        // A database without its tables ends the run silently.
        QTest::newRow("unreadable database") << -1 << "live" << QStringList();
    }

    void runsThatSendNothing()
    {
        QFETCH(int, stored);
        QFETCH(QString, connectionKind);
        QFETCH(QStringList, log);
        if (stored < 0) {
            QVERIFY(DbManager::GetInstance().ClearDataBase());
        } else if (stored > 0) {
            Store(1, stored);
        }
        const auto on = connectionKind == QStringLiteral("live")          ? connection
                        : connectionKind == QStringLiteral("unreachable") ? UnreachableConnection()
                                                                          : nullptr;
        Manager::TryToSendStoredReports(on);
        WaitForTheRunToEnd();
        QCOMPARE(NewLogEntries(), log);
        QCOMPARE(service->RequestsTo(QStringLiteral("statistics")).size(), 0);
        if (stored >= 0) {
            QCOMPARE(StoredTrackIds(), Range(1, stored));
        }
    }

    // Signing out while a run is under way: the run must neither use the gone
    // connection nor block the runs of the next sign-in.
    void aConnectionThatGoesAwayEndsItsRun()
    {
        Store(1, 1500);
        Tests::ServiceFault hold(QStringLiteral("statistics"), QStringLiteral("delay"), 1);
        hold.delayMs = 300;
        QVERIFY(service->AddFault(hold) > 0);
        Manager::TryToSendStoredReports(connection);
        QTRY_COMPARE_WITH_TIMEOUT(service->RequestsTo(QStringLiteral("statistics")).size(), 1,
                                  Tests::Timeouts::Process);
        connection.reset();
        // The acknowledged batch still leaves the database; no second batch goes out.
        QTRY_COMPARE_WITH_TIMEOUT(StoredTrackIds(), Range(1001, 1500), Tests::Timeouts::Process);
        WaitForTheRunToEnd();
        QCOMPARE(service->RequestsTo(QStringLiteral("statistics")).size(), 1);

        // A run whose connection went away before the server's availability was
        // known is not waited for.
        auto shortLived = std::make_shared<ServerConnection>(server, object, token);
        Manager::TryToSendStoredReports(shortLived);
        shortLived.reset();
        connection = std::make_shared<ServerConnection>(server, object, token);
        NewLogEntries();
        Manager::TryToSendStoredReports(connection);
        QVERIFY(!NewLogEntries().contains(kAlreadySending));
        QTRY_COMPARE_WITH_TIMEOUT(StoredTrackIds(), std::vector<int>(), Tests::Timeouts::Process);
        WaitForTheRunToEnd();
        QCOMPARE(TrackIds(service->StatisticsReports()), Range(1, 1500));
    }
};

QTEST_GUILESS_MAIN(StatisticsManagerTest)
#include "tst_statistics_manager.moc"
