#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/data_types/error.h"
#include "core/database/db_manager.h"
#include "core/networking/json_converter.h"
#include "core/networking/server_connection.h"
#include "core/utilities/clock.h"
#include "core/utilities/logger.h"
#include "core/utilities/playback_configuration_loader.h"
#include "tests/support/reference_service.h"
#include "tests/support/service_fault.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_sign_in.h"
#include "tests/support/test_timeouts.h"

#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QtTest>

#include <memory>
#include <string>

using Core::DataBase::DbManager;
using Core::DataTypes::Error;
using Core::DataTypes::Auth::PlaybackObject;
using Core::DataTypes::Auth::Server;
using Core::DataTypes::Playback::PlaybackConfiguration;
using Core::Networking::ServerConnection;
using Core::Utilities::Clock;
using Core::Utilities::PlaybackConfigurationLoader;

namespace {

// The event log's entries without their time stamps.
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

// What one run handed to its caller.
struct Outcome
{
    int successes = 0, failures = 0;
    bool changed = false;
    std::string updateTime;
    std::shared_ptr<Error> error;

    // One word for the whole answer, so a second call or a wrong kind fails one compare.
    QString Summary() const
    {
        if (successes + failures != 1) {
            return QStringLiteral("%1 successes, %2 failures").arg(successes).arg(failures);
        }
        return failures  ? QStringLiteral("failed")
               : changed ? QStringLiteral("changed")
                         : QStringLiteral("kept");
    }
};

const QString kStart = QStringLiteral("Начало обновления конфигурации воспроизведения");
const QString kAskDatabase =
    QStringLiteral("\tЗапрос версии конфигурации воспроизведения из локальной базы данных");
const QString kNothingStored =
    QStringLiteral("\tВ локальной базе нет сохраненной конфигурации воспроизведения");
const QString kStoredVersion =
    QStringLiteral("\tВ локальной базе есть сохраненная конфигурация воспроизведения с версией %1");
const QString kAskVersion = QStringLiteral("\tНачинаем запрос версии конфигурации с сервера");
const QString kGotVersion = QStringLiteral("\tПолучена версия конфигурации воспроизведения с сервера: %1");
const QString kSameVersion =
    QStringLiteral("\tВерсия сохраненной конфигурации совпадает с версией на сервере");
const QString kOtherVersion =
    QStringLiteral("\tВерсия сохраненной конфигурации НЕ совпадает с версией на сервере");
const QString kVersionFailed =
    QStringLiteral("\tОшибка при получении версии конфигурации воспроизведения с сервера: %1");
const QString kKeepLocal = QStringLiteral(
    "\tИспользуем локальную конфигурации воспроизведения, завершение процесса обновления конфигурации");
const QString kLoad = QStringLiteral("Начинаем загрузку конфигурации воспроизведения с сервера");
const QString kLoaded =
    QStringLiteral("\tКонфигурация воспроизведения успешно получена с сервера (версия %1)");
const QString kSaving = QStringLiteral("\tСохранение конфигурации воспроизведения в локальную базу данных");
const QString kSaved =
    QStringLiteral("\tКонфигурация воспроизведения успешно сохранена в локальную базу данных");
const QString kDone = QStringLiteral("\tПроцесс обновления конфигурации окончен");
const QString kLoadFailed =
    QStringLiteral("\tОшибка получения конфигурации воспроизведения с сервера, вызов обработчика ошибки");
const QString kSaveFailed =
    QStringLiteral("\tОшибка при сохранении конфигурации воспроизведения в локальную базу "
                   "данных, вызов обработчика ошибки");
const QString kNoConnection = QStringLiteral("Отсутствует связь с сервером");
const QString kNoServer = QStringLiteral("Сервер не выбран");

const QString kStopped = QStringLiteral("stopped");
const QString kUnset = QStringLiteral("no server");

QStringList FreshStart()
{
    return {kStart, kAskDatabase, kNothingStored, kLoad};
}

QStringList FromStored(long local)
{
    return {kStart, kAskDatabase, kStoredVersion.arg(local), kAskVersion};
}

} // namespace

// The loader against the reference service over loopback, with the real database
// in a fresh data directory per case: each outcome, the requests sent and the exact
// trace support staff read in the event log.
class PlaybackConfigurationLoaderTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<ServerConnection> connection;
    Server server;
    PlaybackObject object;
    std::string token;
    int logStart = 0;
    int requestStart = 0;

    Outcome Run(ServerConnection& on)
    {
        logStart = static_cast<int>(LogEntries().size());
        requestStart = service->Requests().size();
        Outcome outcome;
        PlaybackConfigurationLoader::UpdatePlaybackConfiguration(
            on,
            [&outcome](bool changed, std::string updateTime) {
                ++outcome.successes;
                outcome.changed = changed;
                outcome.updateTime = std::move(updateTime);
            },
            [&outcome](std::shared_ptr<Error> error) {
                ++outcome.failures;
                outcome.error = std::move(error);
            });
        [&] {
            QTRY_VERIFY_WITH_TIMEOUT(outcome.successes + outcome.failures > 0, Tests::Timeouts::Process);
        }();
        // Whatever else was queued has run: still exactly one answer.
        QCoreApplication::processEvents();
        return outcome;
    }

    // Runs cut off as the row says: a fault the service plays on the endpoint, the
    // service gone, or no server chosen.
    Outcome RunCutOff(const QString& kind, const QString& endpoint, int apiError = 0)
    {
        if (kind == kUnset) {
            ServerConnection noServer;
            return Run(noServer);
        }
        if (kind != kStopped) {
            Tests::ServiceFault fault(endpoint, kind);
            fault.error = apiError;
            return service->AddFault(fault) > 0 ? Run(*connection) : Outcome{};
        }
        if (!service->Stop()) {
            return {};
        }
        const Outcome outcome = Run(*connection);
        // The service comes back on another port: later cases connect there.
        service->Start();
        server.url = service->BaseUrl().toStdString();
        return outcome;
    }

    // The loader's own entries of the run: its sub-steps start with a tab, and two
    // steps without one open a run and a download. The connection and the database
    // may add entries of their own in between.
    QStringList RunTrace() const
    {
        QStringList trace;
        for (const QString& entry : LogEntries().mid(logStart)) {
            if (entry.startsWith(QLatin1Char('\t')) || entry == kStart || entry == kLoad) {
                trace << entry;
            }
        }
        return trace;
    }

    // The endpoints the run asked for, in order.
    QStringList RunRequests() const
    {
        QStringList endpoints;
        for (const QJsonValue& request : service->Requests(requestStart)) {
            endpoints << request.toObject().value(QStringLiteral("endpoint")).toString();
        }
        return endpoints;
    }

    static long StoredVersion()
    {
        long version = -1;
        return DbManager::GetInstance().SavedPlaybackConfiguration(version) ? version : -1;
    }

    int ServiceVersion() const
    {
        return service->ConfigurationVersion(QStringLiteral("shop1"));
    }

    // The configuration as the player reads the service's current one.
    PlaybackConfiguration ServiceConfiguration()
    {
        const QJsonObject wrapped{
            {QStringLiteral("configuration"), service->Configuration(QStringLiteral("shop1"))}};
        return *Core::Networking::JsonConverter::PlaybackConfigurationFromResponse(
            QString::fromUtf8(QJsonDocument(wrapped).toJson()));
    }

    // Stores the service's configuration as the first run would, and returns its version.
    long StoreCurrentConfiguration()
    {
        const Outcome first = Run(*connection);
        return first.Summary() == QStringLiteral("changed") ? StoredVersion() : -2;
    }

private slots:
    void initTestCase()
    {
        service = std::make_unique<Tests::ReferenceService>(Tests::ReferenceService::SourceDirectory() +
                                                            QStringLiteral("/tests/tools/scenarios/basic"));
        QVERIFY2(service->Start(), qPrintable(service->ErrorString()));
        server.id = 1;
        server.name = "Тестовый сервер";
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
        connection = std::make_unique<ServerConnection>(server, object, token);
    }

    void cleanup()
    {
        // Whatever the case did, the token never reaches the event log.
        QVERIFY(!LogEntries().join(QLatin1Char('\n')).contains(QString::fromStdString(token)));
        connection.reset();
        Clock::ResetForTesting();
        dataDirectory.reset();
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    void withoutALocalCopyTheConfigurationIsFetchedAndStored()
    {
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 21), QTime(9, 41, 30)));
        const int serverVersion = ServiceVersion();
        QVERIFY(serverVersion > 0);

        const Outcome outcome = Run(*connection);
        QCOMPARE(outcome.Summary(), QStringLiteral("changed"));
        QCOMPARE(QString::fromStdString(outcome.updateTime), QStringLiteral("09:41 21.11.2026"));
        QCOMPARE(RunTrace(),
                 FreshStart() + QStringList({kLoaded.arg(serverVersion), kSaving, kSaved, kDone}));
        QCOMPARE(RunRequests(), QStringList({"playback/configuration_v2"}));

        std::shared_ptr<PlaybackConfiguration> stored;
        QVERIFY(DbManager::GetInstance().SavedPlaybackConfiguration(stored));
        QCOMPARE(stored->version, serverVersion);
        QVERIFY(*stored == ServiceConfiguration());
        QVERIFY(!stored->days.empty());
    }

    void onlyTheSameVersionSkipsTheDownload_data()
    {
        QTest::addColumn<int>("step");
        QTest::newRow("same on the server") << 0;
        QTest::newRow("newer on the server") << 1;
        // A server that went back to an older configuration is followed as well.
        QTest::newRow("older on the server") << -1;
    }

    void onlyTheSameVersionSkipsTheDownload()
    {
        QFETCH(int, step);
        const long local = StoreCurrentConfiguration();
        QVERIFY(local > 0);
        const int serverVersion = static_cast<int>(local) + step;
        if (step != 0) {
            QCOMPARE(service->SetConfigurationVersion(QStringLiteral("shop1"), serverVersion), serverVersion);
        }

        const Outcome outcome = Run(*connection);
        QStringList trace = FromStored(local) << kGotVersion.arg(serverVersion);
        if (step == 0) {
            QCOMPARE(outcome.Summary(), QStringLiteral("kept"));
            QCOMPARE(RunTrace(), trace << kSameVersion << kDone);
            QCOMPARE(RunRequests(), QStringList({"playback/version"}));
        } else {
            QCOMPARE(outcome.Summary(), QStringLiteral("changed"));
            QCOMPARE(RunTrace(), trace << kOtherVersion << kLoad << kLoaded.arg(serverVersion) << kSaving
                                       << kSaved << kDone);
            QCOMPARE(RunRequests(), QStringList({"playback/version", "playback/configuration_v2"}));
        }
        QCOMPARE(StoredVersion(), long(serverVersion));
    }

    void aFailedVersionCheckKeepsTheLocalCopy_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("apiError");
        // Empty: the parser's own words, which only have to be there.
        QTest::addColumn<QString>("message");
        QTest::newRow("connection closed") << "close_mid_body" << 0 << kNoConnection;
        QTest::newRow("api error") << "api_error" << 500000 << QStringLiteral("Ошибка на сервере");
        QTest::newRow("not json") << "not_json" << 0 << QString();
        QTest::newRow("service stopped") << kStopped << 0 << kNoConnection;
        QTest::newRow("no server chosen") << kUnset << 0 << kNoServer;
    }

    void aFailedVersionCheckKeepsTheLocalCopy()
    {
        QFETCH(QString, kind);
        QFETCH(int, apiError);
        QFETCH(QString, message);
        const long local = StoreCurrentConfiguration();
        QVERIFY(local > 0);
        service->BumpConfigurationVersion(QStringLiteral("shop1"));
        const Outcome outcome = RunCutOff(kind, QStringLiteral("playback/version"), apiError);
        QCOMPARE(outcome.Summary(), QStringLiteral("kept"));
        const QStringList trace = RunTrace();
        QVERIFY2(trace.size() == 6, qPrintable(trace.join(QLatin1Char('\n'))));
        QCOMPARE(trace.mid(0, 4), FromStored(local));
        if (!message.isEmpty()) {
            QCOMPARE(trace.at(4), kVersionFailed.arg(message));
        } else {
            QVERIFY2(trace.at(4).startsWith(kVersionFailed.arg(QString())) &&
                         trace.at(4).size() > kVersionFailed.arg(QString()).size(),
                     qPrintable(trace.at(4)));
        }
        QCOMPARE(trace.at(5), kKeepLocal);
        if (kind != kStopped) {
            QCOMPARE(RunRequests(), kind == kUnset ? QStringList() : QStringList({"playback/version"}));
        }
        QCOMPARE(StoredVersion(), local);
    }

    void aFailedDownloadReachesTheCaller_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("apiError");
        QTest::addColumn<bool>("stored");
        // Empty: any message will do.
        QTest::addColumn<QString>("message");
        QTest::newRow("wrong token") << "api_error" << 403010 << true << QString();
        QTest::newRow("no success member") << "no_success" << 0 << true << QString();
        QTest::newRow("empty body") << "empty" << 0 << true << QString();
        QTest::newRow("service stopped, no copy") << kStopped << 0 << false << kNoConnection;
        QTest::newRow("no server chosen, no copy") << kUnset << 0 << false << kNoServer;
    }

    void aFailedDownloadReachesTheCaller()
    {
        QFETCH(QString, kind);
        QFETCH(int, apiError);
        QFETCH(bool, stored);
        QFETCH(QString, message);
        const long local = stored ? StoreCurrentConfiguration() : -1;
        QVERIFY(!stored || local > 0);
        const int serverVersion = stored ? service->BumpConfigurationVersion(QStringLiteral("shop1")) : 0;
        const Outcome outcome = RunCutOff(kind, QStringLiteral("playback/configuration_v2"), apiError);
        QCOMPARE(outcome.Summary(), QStringLiteral("failed"));
        QVERIFY(outcome.error != nullptr);
        QCOMPARE(outcome.error->IsWrongTokenError(), apiError == 403010);
        if (!message.isEmpty()) {
            QCOMPARE(QString::fromStdString(outcome.error->message), message);
            QCOMPARE(QString::fromStdString(outcome.error->ToString()),
                     QStringLiteral("Network error: ") + message);
        }
        const QStringList trace = stored ? FromStored(local)
                                               << kGotVersion.arg(serverVersion) << kOtherVersion << kLoad
                                         : FreshStart();
        QCOMPARE(RunTrace(), trace + QStringList{kLoadFailed});
        if (kind == kUnset) {
            QCOMPARE(RunRequests(), QStringList());
        }
        // A stored configuration is untouched and keeps playing.
        QCOMPARE(StoredVersion(), local);
    }

    void aFailedSaveIsADatabaseError()
    {
        // A database without its tables cannot take the configuration.
        QVERIFY(DbManager::GetInstance().ClearDataBase());
        const Outcome outcome = Run(*connection);
        QCOMPARE(outcome.Summary(), QStringLiteral("failed"));
        QCOMPARE(QString::fromStdString(outcome.error->ToString()),
                 QStringLiteral("Error: Ошибка чтения/записи базы данных"));
        QCOMPARE(RunTrace(),
                 FreshStart() + QStringList({kLoaded.arg(ServiceVersion()), kSaving, kSaveFailed}));
    }

    void aDamagedStoredCopyIsReplaced()
    {
        QVERIFY(StoreCurrentConfiguration() > 0);
        {
            QFile file(DbManager::DataBaseFilePath());
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(QByteArray(8192, '#'));
        }
        const Outcome outcome = Run(*connection);
        QCOMPARE(outcome.Summary(), QStringLiteral("changed"));
        const QStringList entries = LogEntries().mid(logStart);
        QVERIFY2(entries.size() > 3, qPrintable(entries.join(QLatin1Char('\n'))));
        // The database explains itself, then the loader goes on as without a copy.
        QCOMPARE(entries.mid(0, 2), QStringList({kStart, kAskDatabase}));
        QVERIFY2(entries.at(2).startsWith(QStringLiteral("Файл локальной базы данных поврежден")),
                 qPrintable(entries.at(2)));
        QCOMPARE(RunTrace(),
                 FreshStart() + QStringList({kLoaded.arg(ServiceVersion()), kSaving, kSaved, kDone}));
        QCOMPARE(StoredVersion(), long(ServiceVersion()));
    }
};

QTEST_GUILESS_MAIN(PlaybackConfigurationLoaderTest)
#include "tst_playback_configuration_loader.moc"
