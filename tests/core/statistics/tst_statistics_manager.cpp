#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/data_types/playback/track.h"
#include "core/database/db_manager.h"
#include "core/networking/server_connection.h"
#include "core/statistics/manager.h"
#include "core/statistics/report.h"
#include "tests/support/event_log.h"
#include "tests/support/reference_service.h"
#include "tests/support/service_fault.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_sign_in.h"
#include "tests/support/test_timeouts.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QtTest>

#include <numeric>

using Core::DataBase::DbManager;
using Core::DataTypes::Auth::PlaybackObject;
using Core::DataTypes::Auth::Server;
using Core::Networking::ServerConnection;
using Core::Statistics::Manager;
using Core::Statistics::Report;

Q_DECLARE_METATYPE(std::vector<int>)

namespace {

// Unique by track id, the time walking through the day like a real backlog.
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

// {-1} when the database cannot be read.
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
    std::vector<int> ids(static_cast<std::size_t>(std::max(0, last - first + 1)));
    std::iota(ids.begin(), ids.end(), first);
    return ids;
}

const QString kStoredPrefix = QStringLiteral("Попытка отправки сохраненных отчётов о проигрывании: ");
const QString kOverLimit = QStringLiteral(
    "Количество отчетов к отправке больше чем установленный лимит, отправляем первые: 1000 отчетов");
const QString kBatchDeleted = QStringLiteral("Отправленные отчеты успешно удалены из базы");
const QString kBatchFailed = QStringLiteral("Ошибка отправки отчетов о проигрывании на сервер");
const QString kAlreadySending =
    QStringLiteral("Попытка отправки сохраненных отчётов прервана: уже идет отправка");
const QString kLiveDown = QStringLiteral("Отправка статистики: сервер НЕ доступен");
const QString kLiveFailed = QStringLiteral("Ошибка отправки статистики: ");
const QString kStoredOne = QStringLiteral("Успешная запись отчета о проигрывании в локальную базу");

QString Counts(int stored, int unique, int duplicates)
{
    return kStoredPrefix + QStringLiteral("Сохраненных отчетов: %1 из них уникальных: %2, дубликатов: %3")
                               .arg(stored)
                               .arg(unique)
                               .arg(duplicates);
}

} // namespace

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
        const QStringList entries = Tests::EventLog::Entries();
        const QStringList fresh = entries.mid(logStart);
        logStart = static_cast<int>(entries.size());
        return fresh;
    }

    // The rows MakeReport makes, in one statement: row by row takes seconds of syncing.
    static void Store(int first, int last)
    {
        const QString name = QStringLiteral("backlog");
        {
            QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
            database.setDatabaseName(DbManager::DataBaseFilePath());
            QVERIFY(database.open());
            QSqlQuery query(database);
            QVERIFY2(query.exec(
                         QStringLiteral("WITH RECURSIVE n(id) AS (SELECT %1 UNION ALL SELECT id + 1 FROM n "
                                        "WHERE id < %2) INSERT INTO reports (track_id, shop_id, date, time, "
                                        "type, volume) SELECT id, 101, '21.11.2026', time(id * 7, "
                                        "'unixepoch'), iif(id % 5 = 0, 'clip', 'music'), 70 FROM n")
                             .arg(first)
                             .arg(last)),
                     qPrintable(query.lastError().text()));
        }
        QSqlDatabase::removeDatabase(name);
    }

    // None, "unreachable" (a server whose name does not resolve), or the live one.
    std::shared_ptr<ServerConnection> Connection(const QString& kind) const
    {
        Server unreachable = server;
        unreachable.url = "http://zelmar-unreachable.invalid/api/v1/";
        return kind == QLatin1String("none") ? nullptr
               : kind == QLatin1String("unreachable")
                   ? std::make_shared<ServerConnection>(unreachable, object, token)
                   : connection;
    }

    // The next `count` answers on statistics (0: all) are delayed or refused.
    void AddFault(const QString& kind, int count, int delayMs, int error = 500000)
    {
        Tests::ServiceFault fault(QStringLiteral("statistics"), kind, count);
        fault.delayMs = delayMs;
        fault.error = error;
        QVERIFY2(service->AddFault(fault) > 0, qPrintable(service->ErrorString()));
    }

    static void WaitForTheRunToEnd()
    {
        QTRY_VERIFY_WITH_TIMEOUT(!Manager::IsSendingInProgress(), Tests::Timeouts::Process);
    }

private slots:
    void initTestCase()
    {
        QString error;
        service = Tests::ReferenceService::Started(QStringLiteral("basic"), &error);
        QVERIFY2(service, qPrintable(error));
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
        QVERIFY(!Tests::EventLog::Text().contains(QString::fromStdString(token)));
        connection.reset();
        dataDirectory.reset();
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

        // The live report goes alone, the backlog after it.
        QCOMPARE(service->Received(QStringLiteral("statistics")).size(), 2);
        QCOMPARE(service->StatisticsReports().first().toObject(), ReportJson(live));
        QCOMPARE(TrackIds(service->StatisticsReports()), std::vector<int>({501, 1, 2, 3}));
        QCOMPARE(StoredTrackIds(), std::vector<int>());
        const QStringList entries = NewLogEntries();
        QVERIFY2(entries.contains(QStringLiteral("Успешная отправка статистики по треку: 501 music")),
                 qPrintable(entries.join(QLatin1Char('\n'))));
        QCOMPARE(entries.last(), kBatchDeleted);
    }

    void liveReportIsKeptWhenItCannotGoOut_data()
    {
        QTest::addColumn<QString>("kind");
        // The entry that says why.
        QTest::addColumn<QString>("reason");
        QTest::newRow("no connection") << "none" << kLiveDown;
        QTest::newRow("unreachable server") << "unreachable" << kLiveDown;
        QTest::newRow("api error") << "api_error"
                                   << kLiveFailed + QStringLiteral("Ошибка: Слишком частая отправка");
    }

    void liveReportIsKeptWhenItCannotGoOut()
    {
        QFETCH(QString, kind);
        QFETCH(QString, reason);
        if (kind.contains(QLatin1Char('_'))) {
            AddFault(kind, 0, 0, 403011);
        }
        const auto on = Connection(kind);
        Manager::TryToSendReport(on, MakeReport(9));
        QTRY_COMPARE_WITH_TIMEOUT(StoredTrackIds(), std::vector<int>({9}), Tests::Timeouts::Process);
        const QStringList entries = NewLogEntries();
        QVERIFY2(entries.contains(reason) && entries.last() == kStoredOne,
                 qPrintable(entries.join(QLatin1Char('\n'))));
        // A report that did not go out starts no run.
        QVERIFY(!Manager::IsSendingInProgress());
    }

    void storedReportsGoInBatchesDeletedAfterEachAcknowledgement_data()
    {
        QTest::addColumn<int>("stored");
        QTest::addColumn<std::vector<int>>("sizes");
        QTest::newRow("exactly the limit") << 1000 << std::vector<int>({1000});
        QTest::newRow("two and a half") << 2500 << std::vector<int>({1000, 1000, 500});
    }

    void storedReportsGoInBatchesDeletedAfterEachAcknowledgement()
    {
        QFETCH(int, stored);
        QFETCH(std::vector<int>, sizes);
        Store(1, stored);
        // Until the server answers the first batch, no row may leave the database.
        AddFault(QStringLiteral("delay"), 1, 1000);
        Manager::TryToSendStoredReports(connection);
        QVERIFY(Manager::IsSendingInProgress());
        // One run at a time.
        NewLogEntries();
        Manager::TryToSendStoredReports(connection);
        QCOMPARE(NewLogEntries(), QStringList({kAlreadySending}));
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
        QCOMPARE(StoredTrackIds(), std::vector<int>());
        // All but the last batch announce the limit.
        QCOMPARE(Tests::EventLog::Count(kOverLimit), static_cast<int>(sizes.size()) - 1);
    }

    void aFailedBatchDeletesNothingAndTheNextRunResumes()
    {
        Store(1, 2500);
        // The first batch goes through; the second is refused.
        AddFault(QStringLiteral("delay"), 1, 1);
        AddFault(QStringLiteral("api_error"), 1, 0);
        Manager::TryToSendStoredReports(connection);
        WaitForTheRunToEnd();
        QCOMPARE(service->RequestsTo(QStringLiteral("statistics")).size(), 2);
        QCOMPARE(TrackIds(service->StatisticsReports()), Range(1, 1000));
        QCOMPARE(StoredTrackIds(), Range(1001, 2500));
        const QStringList entries = NewLogEntries();
        QCOMPARE(entries.count(kBatchDeleted), 1);
        QCOMPARE(entries.last(), kBatchFailed);

        Manager::TryToSendStoredReports(connection);
        WaitForTheRunToEnd();
        QCOMPARE(TrackIds(service->StatisticsReports()), Range(1, 2500));
        QCOMPARE(StoredTrackIds(), std::vector<int>());
    }

    // The same start twice within a minute is one play: the first in stored order is
    // sent, the others deleted before; anything but the seconds makes another play.
    void duplicatesAreDeletedBeforeSending()
    {
        Core::DataTypes::Playback::Track track;
        track.id = 7;
        track.shopId = 101;
        track.contentType = Core::DataTypes::Playback::ContentType::Music;
        std::vector<Report> plays(7, Report(track, 70, "10:15:30", "21.11.2026"));
        QVERIFY(plays[0] == MakeReport(7, "10:15:30"));
        plays[1].time = "10:16:30";
        plays[2].volume = 71;
        plays[3].type = "clip";
        plays[4].date = "22.11.2026";
        plays[5].track_id = 8;
        plays[6].shop_id = 102;
        std::vector<Report> stored = plays;
        stored.insert(stored.begin() + 2, MakeReport(7, "10:15:59"));
        QVERIFY(stored[2] != plays[0]);
        stored.push_back(MakeReport(7, "10:15:02"));
        QJsonArray expected;
        for (const Report& report : stored) {
            QVERIFY(DbManager::GetInstance().SaveReport(report));
        }
        for (const Report& report : plays) {
            expected.append(ReportJson(report));
        }
        Manager::TryToSendStoredReports(connection);
        WaitForTheRunToEnd();
        QCOMPARE(service->StatisticsReports(), expected);
        QCOMPARE(StoredTrackIds(), std::vector<int>());
        QCOMPARE(NewLogEntries().mid(0, 2),
                 QStringList({Counts(9, 7, 2), QStringLiteral("Успешное удаление дубликатов")}));
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
            << 3 << "unreachable"
            << QStringList({Counts(3, 3, 0), QStringLiteral("дубликатов нет"),
                            kStoredPrefix + QStringLiteral("сервер НЕ доступен")});
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
        const auto on = Connection(connectionKind);
        Manager::TryToSendStoredReports(on);
        WaitForTheRunToEnd();
        QCOMPARE(NewLogEntries(), log);
        QCOMPARE(service->RequestsTo(QStringLiteral("statistics")).size(), 0);
        if (stored >= 0) {
            QCOMPARE(StoredTrackIds(), Range(1, stored));
        }
    }

    // A run must neither use the connection of a sign-out nor block the next sign-in's runs.
    void aConnectionThatGoesAwayEndsItsRun()
    {
        Store(1, 1500);
        AddFault(QStringLiteral("delay"), 1, 300);
        Manager::TryToSendStoredReports(connection);
        QTRY_COMPARE_WITH_TIMEOUT(service->RequestsTo(QStringLiteral("statistics")).size(), 1,
                                  Tests::Timeouts::Process);
        connection.reset();
        // The acknowledged batch still leaves the database; no second batch goes out.
        QTRY_COMPARE_WITH_TIMEOUT(StoredTrackIds(), Range(1001, 1500), Tests::Timeouts::Process);
        WaitForTheRunToEnd();
        QCOMPARE(service->RequestsTo(QStringLiteral("statistics")).size(), 1);

        // Nor does one whose connection went before the server's availability was known.
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
