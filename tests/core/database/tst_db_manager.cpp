#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/data_types/playback/playback_configuration.h"
#include "core/database/db_manager.h"
#include "core/networking/json_converter.h"
#include "core/statistics/report.h"
#include "core/utilities/clock.h"
#include "tests/support/event_log.h"
#include "tests/support/test_data_directory.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QtTest>

#include <memory>
#include <string>
#include <vector>

using Core::DataBase::DbManager;
using Core::DataTypes::Auth::PlaybackObject;
using Core::DataTypes::Auth::Server;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::PlaybackConfiguration;
using Core::Statistics::Report;
using Core::Utilities::Clock;

namespace {

// What was really stored, read on a connection of the test's own: rows of columns
// joined by "|", or "ERROR: <text>".
QStringList Rows(const QString& statement)
{
    const QString name = QStringLiteral("inspection");
    QStringList rows;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        database.setDatabaseName(DbManager::DataBaseFilePath());
        const bool opened = database.open();
        QSqlQuery query(database);
        if (!opened || !query.exec(statement)) {
            rows << QStringLiteral("ERROR: ") + query.lastError().text();
        }
        while (query.next()) {
            QStringList columns;
            for (int i = 0; i < query.record().count(); ++i) {
                columns << query.value(i).toString();
            }
            rows << columns.join(QLatin1Char('|'));
        }
    }
    QSqlDatabase::removeDatabase(name);
    return rows;
}

// Triggers that make a statement fail, damaged texts: what the product never writes.
bool Tamper(const QString& statement)
{
    return Rows(statement).filter(QStringLiteral("ERROR: ")).isEmpty();
}

Server MakeServer(const std::string& name = "Тестовый сервер")
{
    return {7,
            name,
            "http://127.0.0.1:1/api/v1/",
            "help@example.org",
            "+7 000 000-00-00",
            "http://127.0.0.1:1/privacy",
            "http://127.0.0.1:1/",
            false,
            ""};
}

PlaybackObject MakeObject(const std::string& name = "Кофейня", std::int32_t id = 101)
{
    return {id, name, "ул. Садовая, 1", "shop1", "Д-1", "http://127.0.0.1:1/files/shop.png",
            "", true, "ООО «Кофе»"};
}

Report MakeReport(std::int32_t trackId, const std::string& time = "10:15:30",
                  const std::string& type = "music")
{
    Report report;
    report.volume = 80;
    report.type = type;
    report.time = time;
    report.date = "21.11.2026";
    report.track_id = trackId;
    report.shop_id = 101;
    return report;
}

// Apostrophes and quotes in the texts it holds.
PlaybackConfiguration MakeConfiguration(std::int32_t version, const std::string& playlistName)
{
    PlaybackConfiguration configuration;
    configuration.version = version;
    configuration.domains = {"http://127.0.0.1:1/media/"};
    Core::DataTypes::Playback::Track track;
    track.id = 1001;
    track.path = "music/it's.mp3";
    track.author = "O'Brien \"Квартет\"";
    track.contentType = ContentType::Music;
    for (const ContentType type : Core::DataTypes::Playback::AllContentTypes()) {
        configuration.tracks[type] = {};
    }
    configuration.tracks[ContentType::Music] = {track};
    Core::DataTypes::Playback::Playlist playlist;
    playlist.id = 5;
    playlist.name = playlistName;
    playlist.trackIds = {1001};
    configuration.playlists = {playlist};
    return configuration;
}

// -1 when no configuration can be read.
long StoredVersion()
{
    long version = -1;
    return DbManager::GetInstance().SavedPlaybackConfiguration(version) ? version : -1;
}

// The track ids of the stored reports, in stored order.
const QString kStoredIds = QStringLiteral("SELECT group_concat(track_id) FROM reports");

// Outputs start from known values, so that a failed read that still writes shows.
struct SignIn
{
    PlaybackObject object = MakeObject("untouched");
    Server server = MakeServer("untouched");
    std::string login = "a", password = "b", token = "c";

    bool Read()
    {
        return DbManager::GetInstance().SavedAuthData(object, server, login, password, token);
    }
    bool Save() const
    {
        return DbManager::GetInstance().SaveAuthData(object, server, login, password, token);
    }
    QStringList Fields() const
    {
        return QStringList() << QString::number(object.id) << object.name.c_str() << object.address.c_str()
                             << object.code.c_str() << object.contractNumber.c_str() << object.image.c_str()
                             << object.logo.c_str() << QString::number(object.disablePlayerControl)
                             << object.organizationName.c_str() << QString::number(server.id)
                             << server.name.c_str() << server.url.c_str() << server.email.c_str()
                             << server.phone.c_str() << server.privacyPolicyUrl.c_str()
                             << server.landingUrl.c_str() << login.c_str() << password.c_str()
                             << token.c_str();
    }
};

const SignIn kFirst{MakeObject("first", 1), MakeServer("one"), "owner", "secret", "tok1"};

QStringList consoleMessages;

void CaptureMessage(QtMsgType, const QMessageLogContext&, const QString& message)
{
    consoleMessages << message;
}

void WriteBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

QByteArray ReadBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class DbManagerTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    DbManager* database = nullptr;

private slots:
    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        database = &DbManager::GetInstance();
    }

    void cleanup()
    {
        Clock::ResetForTesting();
        dataDirectory.reset();
    }

    // Text typed by people and codes from the server may hold what an SQL literal
    // cannot; an empty text is stored as '', not NULL, which other readers would
    // take for a missing value. Texts: object, server, login, password, token, code.
    void hostileTextIsStoredAndReadBackIntact()
    {
        for (const QStringList& texts : {QStringList({"Кафе 'У Ивана' ☕", "'); DELETE FROM server; --",
                                                      "' OR '1'='1", "\";--", "%1 :code", "т\tк\\n"}),
                                         QStringList({"", "", "", "", "", ""})}) {
            SignIn written{MakeObject(texts[0].toStdString()), MakeServer(texts[1].toStdString()),
                           texts[2].toStdString(), texts[3].toStdString(), texts[4].toStdString()};
            written.object.address = texts[0].toStdString();
            written.object.code = texts[5].toStdString();
            QVERIFY(database->InitEmptyDataBase());
            QVERIFY(written.Save());
            SignIn read;
            QVERIFY(read.Read());
            QCOMPARE(read.Fields(), written.Fields());
            QCOMPARE(Rows(QStringLiteral(
                         "SELECT typeof(o.logo), typeof(u.token), u.login FROM playback_object o, user u")),
                     QStringList({QStringLiteral("text|text|") + texts[2]}));
        }
    }

    // A sign-in replaces the one before, changing the object keeps the rest, a fresh
    // database forgets everything, and an incomplete sign-in reads as none, the
    // outputs untouched.
    void aNewSignInReplacesThePreviousOne()
    {
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(!SignIn().Read());
        QVERIFY(kFirst.Save());
        SignIn second{MakeObject("second", 2), MakeServer("two"), "owner2", "secret2", "tok2"};
        QVERIFY(second.Save());
        second.object = MakeObject("third", 3);
        QVERIFY(database->SavePlaybackObject(second.object));
        SignIn read;
        QVERIFY(read.Read());
        QCOMPARE(read.Fields(), second.Fields());
        const QString counts =
            QStringLiteral("SELECT (SELECT count(*) FROM server), (SELECT count(*) FROM "
                           "playback_object), (SELECT count(*) FROM user), (SELECT count(*) "
                           "FROM reports), (SELECT count(*) FROM playback_configuration)");
        QVERIFY(database->SavePlaybackConfiguration(MakeConfiguration(3, "list")));
        QVERIFY(database->SaveReport(MakeReport(1)));
        QCOMPARE(Rows(counts), QStringList({"1|1|1|1|1"}));
        QVERIFY(Tamper(QStringLiteral("DELETE FROM user")));
        SignIn none;
        QVERIFY(!none.Read());
        QCOMPARE(none.Fields(), SignIn().Fields());
        QVERIFY(database->InitEmptyDataBase());
        QCOMPARE(Rows(counts), QStringList({"0|0|0|0|0"}));
    }

    // The first start on a shop's computer: no sign-in and no schedule stored, and
    // no "failed" line on the console that support would chase.
    void aFreshDataDirectoryHoldsNothingAndSaysSoQuietly()
    {
        consoleMessages.clear();
        const QtMessageHandler previous = qInstallMessageHandler(CaptureMessage);
        SignIn none;
        const bool signInRead = none.Read();
        std::shared_ptr<PlaybackConfiguration> configuration;
        const bool configurationRead = database->SavedPlaybackConfiguration(configuration);
        qInstallMessageHandler(previous);
        QVERIFY(!signInRead);
        QVERIFY(!configurationRead);
        QVERIFY2(consoleMessages.isEmpty(), qPrintable(consoleMessages.join(QLatin1Char('\n'))));
    }

    void failedWriteKeepsThePreviousData_data()
    {
        // A write that fails half way leaves the point of sale signed in as before,
        // with the configuration that plays.
        QTest::addColumn<QString>("table");
        QTest::newRow("sign-in") << "user";
        QTest::newRow("object") << "playback_object";
        QTest::newRow("configuration") << "playback_configuration";
    }

    void failedWriteKeepsThePreviousData()
    {
        QFETCH(QString, table);
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(kFirst.Save());
        QVERIFY(database->SavePlaybackConfiguration(MakeConfiguration(7, "old")));
        QVERIFY(Tamper(
            QStringLiteral("CREATE TRIGGER refuse BEFORE INSERT ON %1 BEGIN SELECT RAISE(ABORT, 'no'); END")
                .arg(table)));
        consoleMessages.clear();
        const QtMessageHandler previous = qInstallMessageHandler(CaptureMessage);
        const bool saved = table == QLatin1String("user")
                               ? SignIn{MakeObject("second", 2), MakeServer(), "o", "p", "SECRET"}.Save()
                           : table == QLatin1String("playback_object")
                               ? database->SavePlaybackObject(MakeObject("second", 2))
                               : database->SavePlaybackConfiguration(MakeConfiguration(8, "new"));
        qInstallMessageHandler(previous);
        QVERIFY(!saved);
        SignIn read;
        QVERIFY(read.Read());
        QCOMPARE(read.Fields(), kFirst.Fields());
        QCOMPARE(StoredVersion(), 7L);
        // The failure is explained on the console, never with the secret it carried.
        const QString console = consoleMessages.join(QLatin1Char('\n'));
        QVERIFY2(console.contains(QStringLiteral("failed")) && !console.contains(QStringLiteral("SECRET")),
                 qPrintable(console));
        QVERIFY(!Tests::EventLog::Text().contains(QStringLiteral("SECRET")));
    }

    void configurationIsReplacedTextForTextAndUnreadableMeansNone()
    {
        long version = 99;
        std::shared_ptr<PlaybackConfiguration> read;
        // No tables, then no row.
        QVERIFY(!database->SavedPlaybackConfiguration(read));
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(!database->SavedPlaybackConfiguration(version));

        QVERIFY(database->SavePlaybackConfiguration(MakeConfiguration(7, "old")));
        const PlaybackConfiguration configuration = MakeConfiguration(8, "Jazz 'n' blues");
        QVERIFY(database->SavePlaybackConfiguration(configuration));
        QVERIFY(database->SavedPlaybackConfiguration(read));
        QVERIFY(*read == configuration);
        QCOMPARE(StoredVersion(), 8L);
        // One row, holding exactly the converter's text: nothing doubled or escaped.
        QCOMPARE(
            Rows(QStringLiteral("SELECT typeof(configuration), configuration FROM playback_configuration")),
            QStringList({QStringLiteral("text|") +
                         Core::Networking::JsonConverter::PlaybackConfigurationToString(configuration)}));

        // A row whose text is not JSON (a half-written or hand-edited one).
        QVERIFY(Tamper(QStringLiteral(
            "UPDATE playback_configuration SET configuration = substr(configuration, 1, 40)")));
        read.reset();
        QVERIFY(!database->SavedPlaybackConfiguration(read));
        QVERIFY(!database->SavedPlaybackConfiguration(version));
        QVERIFY(read == nullptr);
        QCOMPARE(version, 99L);

        QVERIFY(database->SavePlaybackConfiguration(configuration));
        QVERIFY(database->RemovePlaybackConfiguration());
        QCOMPARE(StoredVersion(), -1L);
    }

    // Reports come back in stored order with their rows; a sent batch leaves whole or not at all.
    void reportsRoundTripAndAreRemovedAllOrNothing()
    {
        std::vector<Report> read = {MakeReport(42)};
        // Without tables nothing is read or stored, and the output is left alone.
        QVERIFY(!database->SavedReports(read));
        QVERIFY(!database->SaveReport(MakeReport(1)));
        QCOMPARE(read.size(), std::size_t(1));

        QVERIFY(database->InitEmptyDataBase());
        std::vector<Report> saved = {MakeReport(1, "10:00:01"), MakeReport(2, "10:00:02", "clip"),
                                     MakeReport(3, "10:00:03", "it's"), MakeReport(4), MakeReport(5)};
        saved[1].volume = 0;
        saved[2].shop_id = -5;
        for (std::size_t i = 0; i < saved.size(); ++i) {
            QVERIFY(database->SaveReport(saved[i]));
            saved[i].rowid = static_cast<std::int64_t>(i) + 1;
        }
        QVERIFY(database->SavedReports(read));
        QVERIFY(read == saved);

        QVERIFY(Tamper(QStringLiteral("CREATE TRIGGER keep_three BEFORE DELETE ON reports WHEN "
                                      "old.track_id = 3 BEGIN SELECT RAISE(ABORT, 'kept'); END")));
        QVERIFY(!database->RemoveReports(read));
        QCOMPARE(Rows(kStoredIds), QStringList({"1,2,3,4,5"}));
        // No transaction left open; a row gone already is no failure.
        Report vanished = MakeReport(99);
        vanished.rowid = 1000;
        QVERIFY(database->RemoveReports({read[1], read[3], vanished}));
        QCOMPARE(Rows(kStoredIds), QStringList({"1,3,5"}));
        QVERIFY(database->RemoveReports({}));
        QVERIFY(Tamper(QStringLiteral("DROP TRIGGER keep_three")));
        QVERIFY(database->RemoveAllReports());
        QCOMPARE(Rows(kStoredIds), QStringList({""}));
    }

    // The file follows the data directory, is not held open, and clearing drops every table.
    void eachDataDirectoryHasItsOwnFile()
    {
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(kFirst.Save());
        QVERIFY(!database->GetDataBase().isOpen());
        {
            Tests::TestDataDirectory other;
            QCOMPARE(DbManager::DataBaseFilePath(), other.FilePath(QStringLiteral("db.sqlite")));
            QVERIFY(!SignIn().Read());
        }
        SignIn read;
        QVERIFY(read.Read());
        QCOMPARE(read.Fields(), kFirst.Fields());
        QVERIFY(database->ClearDataBase());
        QVERIFY(database->ClearDataBase());
        QCOMPARE(Rows(QStringLiteral("SELECT count(*) FROM sqlite_master")), QStringList({"0"}));
    }

    // A damaged file reads as signed out, is kept aside under a dated name for support,
    // the event log says where, and the next sign-in works.
    void damagedFileIsMovedAsideAndSignInWorksAgain()
    {
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 21), QTime(9, 30, 5)));
        const QString path = DbManager::DataBaseFilePath();
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY((SignIn{MakeObject(), MakeServer(), "owner", "secret", "SECRET-TOKEN"}.Save()));
        QVERIFY(database->SavePlaybackConfiguration(MakeConfiguration(7, std::string(20000, 'x'))));
        const QByteArray contents = ReadBytes(path);
        QVERIFY(contents.size() > 8192);
        // Cut short as by a full disk; garbage bytes are the next case's.
        const QByteArray damaged = contents.left(contents.size() / 2);
        WriteBytes(path, damaged);
        // A journal left beside the damaged file must not be replayed into the new one.
        WriteBytes(path + QStringLiteral("-journal"), QByteArray(512, 'j'));

        SignIn read;
        QVERIFY(!read.Read());
        const QString aside = path + QStringLiteral(".damaged-20261121-093005");
        QCOMPARE(ReadBytes(aside), damaged);
        QVERIFY(!QFile::exists(path + QStringLiteral("-journal")));
        const QString log = Tests::EventLog::Text();
        QVERIFY2(log.contains(QStringLiteral("Файл локальной базы данных поврежден")) &&
                     log.contains(aside) && !log.contains(QStringLiteral("SECRET")),
                 qPrintable(log));

        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(kFirst.Save());
        QVERIFY(read.Read());
        QCOMPARE(read.Fields(), kFirst.Fields());
        QCOMPARE(QDir(dataDirectory->Path()).entryList({QStringLiteral("db.sqlite.damaged-*")}),
                 QStringList({QFileInfo(aside).fileName()}));
    }

    // Damage found by a write is recovered within the same call, and the report
    // of the running session is kept; a damaged file goes aside under a name of
    // its own when another one took the dated name within the same second.
    void damageFoundWhileStoringAReportKeepsTheReport()
    {
        const QString path = DbManager::DataBaseFilePath();
        WriteBytes(path, QByteArray(10000, '\x5a'));
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 21), QTime(9, 30, 5)));
        WriteBytes(path + QStringLiteral(".damaged-20261121-093005"), QByteArray());
        QVERIFY(database->InitEmptyDataBase());
        QCOMPARE(QFileInfo(path + QStringLiteral(".damaged-20261121-093005-2")).size(), qint64(10000));
        WriteBytes(path, QByteArray(6000, '\x01'));
        QVERIFY(database->SaveReport(MakeReport(77)));
        QCOMPARE(Rows(kStoredIds), QStringList({"77"}));
        QCOMPARE(QFileInfo(path + QStringLiteral(".damaged-20261121-093005-3")).size(), qint64(6000));
    }
};

QTEST_GUILESS_MAIN(DbManagerTest)
#include "tst_db_manager.moc"
