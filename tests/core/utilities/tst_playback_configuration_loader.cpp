#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/data_types/error.h"
#include "core/database/db_manager.h"
#include "core/networking/server_connection.h"
#include "core/utilities/clock.h"
#include "core/utilities/playback_configuration_loader.h"
#include "tests/support/call_outcome.h"
#include "tests/support/event_log.h"
#include "tests/support/reference_service.h"
#include "tests/support/service_fault.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_sign_in.h"
#include "tests/support/test_timeouts.h"

#include <QtTest>

#include <string>
#include <utility>

using Core::DataBase::DbManager;
using Core::DataTypes::Error;
using Core::DataTypes::Auth::PlaybackObject;
using Core::DataTypes::Auth::Server;
using Core::DataTypes::Playback::PlaybackConfiguration;
using Core::Networking::ServerConnection;
using Core::Utilities::Clock;
using Core::Utilities::PlaybackConfigurationLoader;

namespace {

// Whether the configuration changed, and the update time shown to the user.
using Outcome = Tests::CallOutcome<std::pair<bool, std::string>, Error>;

// The lines that tell support staff how a run ended.
const QString kNothingStored =
    QStringLiteral("\tВ локальной базе нет сохраненной конфигурации воспроизведения");
const QString kSameVersion =
    QStringLiteral("\tВерсия сохраненной конфигурации совпадает с версией на сервере");
const QString kOtherVersion =
    QStringLiteral("\tВерсия сохраненной конфигурации НЕ совпадает с версией на сервере");
const QString kVersionFailed =
    QStringLiteral("\tОшибка при получении версии конфигурации воспроизведения с сервера: %1");
const QString kKeepLocal = QStringLiteral(
    "\tИспользуем локальную конфигурации воспроизведения, завершение процесса обновления конфигурации");
const QString kLoad = QStringLiteral("Начинаем загрузку конфигурации воспроизведения с сервера");
const QString kLoadFailed =
    QStringLiteral("\tОшибка получения конфигурации воспроизведения с сервера, вызов обработчика ошибки");
const QString kSaveFailed = QStringLiteral(
    "\tОшибка при сохранении конфигурации воспроизведения в локальную базу данных, вызов обработчика ошибки");
const QString kNoServer = QStringLiteral("Сервер не выбран");

const QString kVersion = QStringLiteral("playback/version");
const QString kDownload = QStringLiteral("playback/configuration_v2");
const QString kUnset = QStringLiteral("no server");

long StoredVersion()
{
    long version = -1;
    return DbManager::GetInstance().SavedPlaybackConfiguration(version) ? version : -1;
}

} // namespace

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
    Outcome outcome;
    int logStart = 0;
    int requestStart = 0;

    // One word for the whole answer, so that a second call or a wrong kind fails one compare.
    QString Run(ServerConnection& on)
    {
        outcome = Outcome();
        logStart = static_cast<int>(Tests::EventLog::Entries().size());
        requestStart = service->Requests().size();
        const auto success = outcome.Success();
        PlaybackConfigurationLoader::UpdatePlaybackConfiguration(
            on,
            [success](bool changed, std::string time) {
                success({changed, std::move(time)});
            },
            outcome.Failure());
        if (!QTest::qWaitFor([this] { return outcome.Calls() > 0; }, Tests::Timeouts::Process)) {
            return QStringLiteral("no answer");
        }
        // Whatever else was queued has run: still exactly one answer.
        QCoreApplication::processEvents();
        return outcome.Calls() != 1  ? QStringLiteral("%1 answers").arg(outcome.Calls())
               : outcome.failures    ? QStringLiteral("failed")
               : outcome.value.first ? QStringLiteral("changed")
                                     : QStringLiteral("kept");
    }

    QStringList RunLog() const
    {
        return Tests::EventLog::Entries().mid(logStart);
    }

    // Whether the run logged these whole entries, one right after the other.
    bool Logged(const QStringList& lines) const
    {
        const QString log = QLatin1Char('\n') + RunLog().join(QLatin1Char('\n')) + QLatin1Char('\n');
        return log.contains(QLatin1Char('\n') + lines.join(QLatin1Char('\n')) + QLatin1Char('\n'));
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

    // Stores the service's configuration as the first run would, and returns its version.
    long StoreCurrentConfiguration()
    {
        return Run(*connection) == QStringLiteral("changed") ? StoredVersion() : -2;
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
        connection = std::make_unique<ServerConnection>(server, object, token);
    }

    void cleanup()
    {
        // Whatever the case did, the token never reaches the event log.
        QVERIFY(!Tests::EventLog::Text().contains(QString::fromStdString(token)));
        connection.reset();
        Clock::ResetForTesting();
        dataDirectory.reset();
    }

    void aRunEndsWithTheServersConfigurationStored_data()
    {
        QTest::addColumn<int>("step");
        QTest::addColumn<QString>("result");
        QTest::addColumn<QStringList>("proof");
        QTest::addColumn<QStringList>("requests");
        QTest::newRow("no stored copy")
            << 0 << "changed" << QStringList({kNothingStored, kLoad}) << QStringList({kDownload});
        QTest::newRow("same on the server")
            << 0 << "kept" << QStringList({kSameVersion}) << QStringList({kVersion});
        QTest::newRow("newer on the server")
            << 1 << "changed" << QStringList({kOtherVersion, kLoad}) << QStringList({kVersion, kDownload});
        // A server that went back to an older configuration is followed as well.
        QTest::newRow("older on the server")
            << -1 << "changed" << QStringList({kOtherVersion, kLoad}) << QStringList({kVersion, kDownload});
    }

    void aRunEndsWithTheServersConfigurationStored()
    {
        QFETCH(int, step);
        QFETCH(QString, result);
        QFETCH(QStringList, proof);
        QFETCH(QStringList, requests);
        if (proof.first() != kNothingStored) {
            const long local = StoreCurrentConfiguration();
            QVERIFY(local > 0);
            QCOMPARE(service->SetConfigurationVersion(QStringLiteral("shop1"), int(local) + step),
                     int(local) + step);
        }
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 21), QTime(9, 41, 30)));
        QCOMPARE(Run(*connection), result);
        QCOMPARE(QString::fromStdString(outcome.value.second), QStringLiteral("09:41 21.11.2026"));
        QVERIFY2(Logged(proof), qPrintable(RunLog().join(QLatin1Char('\n'))));
        QCOMPARE(RunRequests(), requests);
        // The service's configuration is what is stored; the round trip is the database's test.
        std::shared_ptr<PlaybackConfiguration> stored;
        QVERIFY(DbManager::GetInstance().SavedPlaybackConfiguration(stored));
        QCOMPARE(stored->version, service->ConfigurationVersion(QStringLiteral("shop1")));
        QVERIFY(!stored->days.empty());
    }

    void aCutOffRunEndsAsTheStoredCopyAllows_data()
    {
        QTest::addColumn<QString>("endpoint");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("apiError");
        QTest::addColumn<bool>("stored");
        QTest::addColumn<QStringList>("requests");
        // Without the server's version the stored copy keeps playing; how the
        // connection failed is its own tests' concern.
        QTest::newRow("version, api error")
            << kVersion << "api_error" << 500000 << true << QStringList({kVersion});
        // A failed download reaches the caller with its error, and a stored copy is untouched.
        QTest::newRow("download, wrong token")
            << kDownload << "api_error" << 403010 << true << QStringList({kVersion, kDownload});
        QTest::newRow("download, no server chosen, no copy")
            << kDownload << kUnset << 0 << false << QStringList();
    }

    void aCutOffRunEndsAsTheStoredCopyAllows()
    {
        QFETCH(QString, endpoint);
        QFETCH(QString, kind);
        QFETCH(int, apiError);
        QFETCH(bool, stored);
        QFETCH(QStringList, requests);
        const long local = stored ? StoreCurrentConfiguration() : -1;
        QVERIFY(!stored || local > 0);
        service->BumpConfigurationVersion(QStringLiteral("shop1"));
        Tests::ServiceFault fault(endpoint, kind);
        fault.error = apiError;
        QVERIFY2(kind == kUnset || service->AddFault(fault) > 0, qPrintable(service->ErrorString()));
        ServerConnection noServer;
        const QString result = Run(kind == kUnset ? noServer : *connection);
        const QString log = RunLog().join(QLatin1Char('\n'));
        if (endpoint == kVersion) {
            QCOMPARE(result, QStringLiteral("kept"));
            QVERIFY2(Logged({kVersionFailed.arg(QStringLiteral("Ошибка на сервере")), kKeepLocal}),
                     qPrintable(log));
        } else {
            QCOMPARE(result, QStringLiteral("failed"));
            QCOMPARE(outcome.error->IsWrongTokenError(), apiError == 403010);
            QVERIFY2(apiError != 0 || outcome.Describe().endsWith(kNoServer), qPrintable(outcome.Describe()));
            QVERIFY2(Logged({stored ? kOtherVersion : kNothingStored}) && log.endsWith(kLoadFailed),
                     qPrintable(log));
        }
        QCOMPARE(RunRequests(), requests);
        QCOMPARE(StoredVersion(), local);
    }

    void aFailedSaveIsADatabaseError()
    {
        // A database without its tables cannot take the configuration.
        QVERIFY(DbManager::GetInstance().ClearDataBase());
        QCOMPARE(Run(*connection), QStringLiteral("failed"));
        QCOMPARE(outcome.Describe(), QString::fromStdString(Error::CreateDataBaseError()->ToString()));
        QCOMPARE(RunLog().last(), kSaveFailed);
    }
};

QTEST_GUILESS_MAIN(PlaybackConfigurationLoaderTest)
#include "tst_playback_configuration_loader.moc"
