#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/data_types/playback/playback_configuration.h"
#include "core/database/db_manager.h"
#include "core/networking/json_converter.h"
#include "core/statistics/report.h"
#include "core/utilities/clock.h"
#include "core/utilities/logger.h"
#include "tests/support/test_data_directory.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QtTest>

#include <functional>
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

const QString kInspection = QStringLiteral("inspection");

// A second, independent connection to the same file, to see what was really stored.
class Inspection
{
public:
    explicit Inspection(const QString& path)
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), kInspection);
        database.setDatabaseName(path);
        opened = database.open();
    }

    ~Inspection()
    {
        QSqlDatabase::database(kInspection, false).close();
        QSqlDatabase::removeDatabase(kInspection);
    }

    Inspection(const Inspection&) = delete;
    Inspection& operator=(const Inspection&) = delete;

    bool IsOpen() const
    {
        return opened;
    }

    // Every row of the statement, columns joined by "|"; an SQL failure reads as
    // "ERROR: <text>" so that it shows in the comparison.
    QStringList Rows(const QString& statement)
    {
        QSqlQuery query(QSqlDatabase::database(kInspection, false));
        if (!query.exec(statement)) {
            return {QStringLiteral("ERROR: ") + query.lastError().text()};
        }
        QStringList rows;
        while (query.next()) {
            QStringList columns;
            for (int i = 0; i < query.record().count(); ++i) {
                columns << query.value(i).toString();
            }
            rows << columns.join(QLatin1Char('|'));
        }
        return rows;
    }

    bool Execute(const QString& statement)
    {
        QSqlQuery query(QSqlDatabase::database(kInspection, false));
        return query.exec(statement);
    }

private:
    bool opened = false;
};

Server MakeServer(const std::string& name = "Тестовый сервер")
{
    Server server;
    server.id = 7;
    server.name = name;
    server.url = "http://127.0.0.1:1/api/v1/";
    server.email = "help@example.org";
    server.phone = "+7 000 000-00-00";
    server.privacyPolicyUrl = "http://127.0.0.1:1/privacy";
    server.landingUrl = "http://127.0.0.1:1/";
    return server;
}

PlaybackObject MakeObject(const std::string& name = "Кофейня", std::int32_t id = 101)
{
    PlaybackObject object;
    object.id = id;
    object.name = name;
    object.address = "ул. Садовая, 1";
    object.code = "shop1";
    object.contractNumber = "Д-1";
    object.image = "http://127.0.0.1:1/files/shop.png";
    object.logo = "";
    object.disablePlayerControl = true;
    object.organizationName = "ООО «Кофе»";
    return object;
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

PlaybackConfiguration MakeConfiguration(std::int32_t version, const std::string& playlistName)
{
    PlaybackConfiguration configuration;
    configuration.version = version;
    configuration.domains = {"http://127.0.0.1:1/media/"};
    Core::DataTypes::Playback::Track track;
    track.id = 1001;
    track.path = "music/it's.mp3";
    track.name = "Don't stop";
    track.author = "O'Brien \"Квартет\"";
    track.contentType = ContentType::Music;
    track.shopId = 101;
    for (const ContentType type : Core::DataTypes::Playback::AllContentTypes()) {
        configuration.tracks[type] = {};
    }
    configuration.tracks[ContentType::Music] = {track};
    Core::DataTypes::Playback::Playlist playlist;
    playlist.id = 5;
    playlist.name = playlistName;
    playlist.trackIds = {1001};
    configuration.playlists = {playlist};
    Core::DataTypes::Playback::Day day;
    day.dayOfWeek = "Суббота";
    day.date = "21.11.2026";
    Core::DataTypes::Playback::PlaybackPeriod period;
    period.name = "Утро 'с кофе'";
    period.startTime = "08:00";
    period.endTime = "12:00";
    period.playlistIds.at(ContentType::Music) = 5;
    day.periods = {period};
    configuration.days = {day};
    return configuration;
}

std::vector<std::int32_t> TrackIds(const std::vector<Report>& reports)
{
    std::vector<std::int32_t> ids;
    for (const Report& report : reports) {
        ids.push_back(report.track_id);
    }
    return ids;
}

QStringList capturedMessages;

void CaptureMessage(QtMsgType, const QMessageLogContext&, const QString& message)
{
    capturedMessages << message;
}

// What the code printed to the console while `work` ran.
QStringList CapturedMessages(const std::function<void()>& work)
{
    capturedMessages.clear();
    const QtMessageHandler previous = qInstallMessageHandler(CaptureMessage);
    work();
    qInstallMessageHandler(previous);
    return capturedMessages;
}

// What SavedAuthData hands back, with every output starting from a known value
// so that a failed read that still writes something shows.
struct SignIn
{
    PlaybackObject object = MakeObject("untouched");
    Server server = MakeServer("untouched");
    std::string login = "a", password = "b", token = "c";

    bool Read()
    {
        return DbManager::GetInstance().SavedAuthData(object, server, login, password, token);
    }

    bool Untouched() const
    {
        return object.name == "untouched" && server.name == "untouched" && login + password + token == "abc";
    }
};

// Every field of a sign-in, so one comparison names the field that went wrong.
QStringList Fields(const PlaybackObject& o, const Server& s, const std::string& login,
                   const std::string& password, const std::string& token)
{
    QStringList fields{QString::number(o.id),
                       o.name.c_str(),
                       o.address.c_str(),
                       o.code.c_str(),
                       o.contractNumber.c_str(),
                       o.image.c_str(),
                       o.logo.c_str(),
                       QString::number(o.disablePlayerControl),
                       o.organizationName.c_str(),
                       QString::number(s.id),
                       s.name.c_str(),
                       s.url.c_str(),
                       s.email.c_str(),
                       s.phone.c_str(),
                       s.privacyPolicyUrl.c_str(),
                       s.landingUrl.c_str(),
                       login.c_str(),
                       password.c_str(),
                       token.c_str()};
    return fields;
}

// Runs a statement on a connection of the test's own, for what the product never
// writes itself: triggers that make a statement fail, damaged texts.
bool Tamper(const QString& statement)
{
    Inspection inspection(DbManager::DataBaseFilePath());
    return inspection.Execute(statement);
}

// The track ids of the stored reports, in stored order; {-1} when they cannot be read.
std::vector<std::int32_t> StoredIds()
{
    std::vector<Report> stored;
    return DbManager::GetInstance().SavedReports(stored) ? TrackIds(stored) : std::vector<std::int32_t>{-1};
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
    if (!file.open(QIODevice::ReadOnly)) {
        return QByteArray();
    }
    return file.readAll();
}

QString ReadFile(const QString& path)
{
    return QString::fromUtf8(ReadBytes(path));
}

} // namespace

// The database on real SQLite files, one fresh data directory per case. What is
// stored is checked through a second connection, so a round trip cannot hide a
// wrong column or a wrong type.
class DbManagerTest : public QObject
{
    Q_OBJECT

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

    void fileLivesInTheDataDirectory()
    {
        QCOMPARE(DbManager::DataBaseFilePath(), dataDirectory->FilePath(QStringLiteral("db.sqlite")));
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(QFile::exists(dataDirectory->FilePath(QStringLiteral("db.sqlite"))));
        // Nothing is held open between operations.
        QVERIFY(!database->GetDataBase().isOpen());
    }

    void tablesAndColumnsAreExactlyTheLayout()
    {
        QVERIFY(database->InitEmptyDataBase());
        Inspection inspection(DbManager::DataBaseFilePath());
        QVERIFY(inspection.IsOpen());
        // SQLite keeps each table's CREATE statement as it was written.
        QCOMPARE(inspection.Rows(QStringLiteral("SELECT name, sql FROM sqlite_master ORDER BY rowid")),
                 QStringList({
                     "server|CREATE TABLE server (id integer PRIMARY KEY NOT NULL, name VARCHAR(255), url "
                     "VARCHAR(255), "
                     "email VARCHAR(255), phone VARCHAR(255), privacy_policy_url VARCHAR(255), landing_url "
                     "VARCHAR(255))",
                     "playback_object|CREATE TABLE playback_object (id integer PRIMARY KEY NOT NULL, name "
                     "VARCHAR(255), address VARCHAR(255), code VARCHAR(255), contract_number VARCHAR(255), "
                     "organization_name VARCHAR(255), image VARCHAR(255), logo VARCHAR(255), "
                     "disable_player_control "
                     "integer)",
                     "playback_configuration|CREATE TABLE playback_configuration (configuration TEXT)",
                     "user|CREATE TABLE user (login VARCHAR(255), password VARCHAR(255), token TEXT)",
                     "reports|CREATE TABLE reports (track_id integer,shop_id integer,date VARCHAR(255),time "
                     "VARCHAR(255),type VARCHAR(255),volume integer)",
                 }));
    }

    void signInRoundTrip_data()
    {
        // Object name, server name, login, password, token, object code.
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("plain") << QStringList(
            {"Кофейня", "Тестовый сервер", "owner", "secret", "tok-123", "shop1"});
        // Text typed by people and codes from the server may hold what an SQL
        // literal cannot: none of it may break or change the stored sign-in.
        QTest::newRow("apostrophes everywhere")
            << QStringList({"Кафе 'У Ивана'", "Server's", "o'neil", "pa'ss'", "to'ken", "sh'op"});
        QTest::newRow("sql in values")
            << QStringList({"x'); DROP TABLE user; --", "'); DELETE FROM server; --", "' OR '1'='1", "\";--",
                            "%1 %2", ":code"});
        QTest::newRow("empty texts") << QStringList({"", "", "", "", "", ""});
    }

    void signInRoundTrip()
    {
        QFETCH(QStringList, texts);
        const std::string login = texts[2].toStdString(), password = texts[3].toStdString(),
                          token = texts[4].toStdString();
        PlaybackObject object = MakeObject(texts[0].toStdString());
        object.code = texts[5].toStdString();
        object.address = texts[0].toStdString();
        const Server server = MakeServer(texts[1].toStdString());
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(database->SaveAuthData(object, server, login, password, token));

        SignIn read;
        QVERIFY(read.Read());
        QCOMPARE(Fields(read.object, read.server, read.login, read.password, read.token),
                 Fields(object, server, login, password, token));

        // Numbers stored as integers, texts as texts (an empty one as '' and never
        // NULL), the flag as 0 or 1: other readers of the file rely on the types.
        Inspection inspection(DbManager::DataBaseFilePath());
        QCOMPARE(inspection.Rows(QStringLiteral("SELECT typeof(id), typeof(name), typeof(landing_url), "
                                                "typeof(privacy_policy_url), landing_url FROM server")),
                 QStringList({"integer|text|text|text|http://127.0.0.1:1/"}));
        QCOMPARE(inspection.Rows(QStringLiteral("SELECT typeof(id), typeof(code), typeof(logo), logo, "
                                                "typeof(disable_player_control), disable_player_control "
                                                "FROM playback_object")),
                 QStringList({"integer|text|text||integer|1"}));
        QCOMPARE(
            inspection.Rows(QStringLiteral("SELECT typeof(login), typeof(password), typeof(token), login "
                                           "FROM user")),
            QStringList({QStringLiteral("text|text|text|") + texts[2]}));
    }

    void signedOutStatesReadAsSignedOut_data()
    {
        QTest::addColumn<QString>("state");
        QTest::newRow("no file") << "no file";
        QTest::newRow("no tables") << "no tables";
        QTest::newRow("no rows") << "no rows";
        QTest::newRow("no user row") << "no user row";
    }

    void signedOutStatesReadAsSignedOut()
    {
        QFETCH(QString, state);
        if (state == QLatin1String("no tables")) {
            QVERIFY(database->ClearDataBase());
            QVERIFY(QFile::exists(DbManager::DataBaseFilePath()));
        } else if (state != QLatin1String("no file")) {
            QVERIFY(database->InitEmptyDataBase());
        }
        if (state == QLatin1String("no user row")) {
            QVERIFY(database->SaveAuthData(MakeObject(), MakeServer(), "owner", "secret", "tok"));
            QVERIFY(Tamper(QStringLiteral("DELETE FROM user")));
        }
        SignIn read;
        QVERIFY(!read.Read());
        QVERIFY(read.Untouched());
    }

    void signingInAgainStartsAfresh()
    {
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(database->SaveAuthData(MakeObject("first", 1), MakeServer(), "owner", "secret", "tok1"));
        QVERIFY(database->SavePlaybackConfiguration(MakeConfiguration(3, "list")));
        QVERIFY(database->SaveReport(MakeReport(1)));

        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(database->SaveAuthData(MakeObject("second", 2), MakeServer(), "owner", "secret", "tok2"));

        Inspection inspection(DbManager::DataBaseFilePath());
        QCOMPARE(inspection.Rows(QStringLiteral("SELECT count(*) FROM server")), QStringList({"1"}));
        QCOMPARE(inspection.Rows(QStringLiteral("SELECT name FROM playback_object")),
                 QStringList({"second"}));
        QCOMPARE(inspection.Rows(QStringLiteral("SELECT token FROM user")), QStringList({"tok2"}));
        QCOMPARE(inspection.Rows(QStringLiteral("SELECT count(*) FROM reports")), QStringList({"0"}));
        QCOMPARE(inspection.Rows(QStringLiteral("SELECT count(*) FROM playback_configuration")),
                 QStringList({"0"}));
    }

    void saveAuthDataReplacesTheRowsAndSavePlaybackObjectOnlyTheObject()
    {
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(database->SaveAuthData(MakeObject("first", 1), MakeServer("one"), "owner", "secret", "tok1"));
        QVERIFY(
            database->SaveAuthData(MakeObject("second", 2), MakeServer("two"), "owner2", "secret2", "tok2"));
        QVERIFY(database->SavePlaybackObject(MakeObject("third", 3)));

        SignIn read;
        QVERIFY(read.Read());
        QCOMPARE(Fields(read.object, read.server, read.login, read.password, read.token),
                 Fields(MakeObject("third", 3), MakeServer("two"), "owner2", "secret2", "tok2"));
        Inspection inspection(DbManager::DataBaseFilePath());
        QCOMPARE(inspection.Rows(QStringLiteral("SELECT count(*) FROM playback_object")), QStringList({"1"}));
        QCOMPARE(inspection.Rows(QStringLiteral("SELECT count(*) FROM server")), QStringList({"1"}));
        QCOMPARE(inspection.Rows(QStringLiteral("SELECT count(*) FROM user")), QStringList({"1"}));
    }

    // Switching to another object rewrites the sign-in; if that write fails half
    // way, the point of sale must still be signed in as before, not locked out.
    void failedSignInWriteKeepsThePreviousSignIn()
    {
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(database->SaveAuthData(MakeObject("first", 1), MakeServer(), "owner", "secret", "tok1"));
        QVERIFY(Tamper(QStringLiteral("CREATE TRIGGER refuse_user BEFORE INSERT ON user "
                                      "BEGIN SELECT RAISE(ABORT, 'refused'); END")));
        const QStringList messages = CapturedMessages([&] {
            QVERIFY(!database->SaveAuthData(MakeObject("second", 2), MakeServer(), "owner", "secret",
                                            "SECRET-2"));
        });

        SignIn read;
        QVERIFY(read.Read());
        QCOMPARE(Fields(read.object, read.server, read.login, read.password, read.token),
                 Fields(MakeObject("first", 1), MakeServer(), "owner", "secret", "tok1"));
        // The failure is explained on the console without the secret it carried.
        QVERIFY2(messages.join(QLatin1Char('\n')).contains(QStringLiteral("SaveAuthData")),
                 qPrintable(messages.join(QLatin1Char('\n'))));
        QVERIFY(!messages.join(QLatin1Char('\n')).contains(QStringLiteral("SECRET")));
        QVERIFY(
            !ReadFile(dataDirectory->FilePath(QStringLiteral("log.txt"))).contains(QStringLiteral("SECRET")));
    }

    void newConfigurationReplacesTheStoredOneTextForText()
    {
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(database->SavePlaybackConfiguration(MakeConfiguration(7, "old")));
        const PlaybackConfiguration configuration = MakeConfiguration(8, "Jazz 'n' blues");
        QVERIFY(database->SavePlaybackConfiguration(configuration));

        std::shared_ptr<PlaybackConfiguration> read;
        QVERIFY(database->SavedPlaybackConfiguration(read));
        QVERIFY(read != nullptr);
        QVERIFY(*read == configuration);
        long version = 0;
        QVERIFY(database->SavedPlaybackConfiguration(version));
        QCOMPARE(version, 8L);

        // One row, holding exactly the converter's text: nothing doubled or escaped.
        Inspection inspection(DbManager::DataBaseFilePath());
        QCOMPARE(
            inspection.Rows(QStringLiteral("SELECT typeof(configuration), configuration "
                                           "FROM playback_configuration")),
            QStringList({QStringLiteral("text|") +
                         Core::Networking::JsonConverter::PlaybackConfigurationToString(configuration)}));
    }

    void noReadableConfigurationMeansNone()
    {
        long version = 99;
        std::shared_ptr<PlaybackConfiguration> read;
        // No file, then no tables, then no row.
        QVERIFY(!database->SavedPlaybackConfiguration(version));
        QVERIFY(database->ClearDataBase());
        QVERIFY(!database->SavedPlaybackConfiguration(read));
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(!database->SavedPlaybackConfiguration(version));
        QVERIFY(read == nullptr);
        QCOMPARE(version, 99L);

        // A row whose text is not JSON (a half-written or hand-edited one).
        QVERIFY(database->SavePlaybackConfiguration(MakeConfiguration(7, "list")));
        QVERIFY(Tamper(QStringLiteral(
            "UPDATE playback_configuration SET configuration = substr(configuration, 1, 40)")));
        QVERIFY(!database->SavedPlaybackConfiguration(read));
        QVERIFY(!database->SavedPlaybackConfiguration(version));
        QCOMPARE(version, 99L);

        QVERIFY(database->SavePlaybackConfiguration(MakeConfiguration(7, "list")));
        QVERIFY(database->RemovePlaybackConfiguration());
        QVERIFY(!database->SavedPlaybackConfiguration(version));
    }

    void failedConfigurationWriteKeepsTheStoredOne()
    {
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(database->SavePlaybackConfiguration(MakeConfiguration(7, "old")));
        QVERIFY(Tamper(QStringLiteral("CREATE TRIGGER refuse BEFORE INSERT ON playback_configuration "
                                      "BEGIN SELECT RAISE(ABORT, 'x'); END")));
        QVERIFY(!database->SavePlaybackConfiguration(MakeConfiguration(8, "new")));
        long version = 0;
        QVERIFY(database->SavedPlaybackConfiguration(version));
        QCOMPARE(version, 7L);
    }

    void reportsRoundTripInStoredOrderWithTheirRows()
    {
        QVERIFY(database->InitEmptyDataBase());
        std::vector<Report> saved = {MakeReport(3, "10:00:01"), MakeReport(1, "10:00:02", "clip"),
                                     MakeReport(2, "10:00:03", "it's")};
        saved[1].volume = 0;
        saved[2].shop_id = -5;
        for (const Report& report : saved) {
            QVERIFY(database->SaveReport(report));
        }
        std::vector<Report> read;
        QVERIFY(database->SavedReports(read));
        QCOMPARE(read.size(), saved.size());
        for (std::size_t i = 0; i < saved.size(); ++i) {
            Report expected = saved[i];
            expected.rowid = static_cast<std::int64_t>(i) + 1;
            QVERIFY2(read[i] == expected, qPrintable(QStringLiteral("report %1").arg(i)));
        }
        Inspection inspection(DbManager::DataBaseFilePath());
        QCOMPARE(inspection.Rows(QStringLiteral("SELECT typeof(track_id), typeof(shop_id), typeof(date), "
                                                "typeof(time), typeof(type), typeof(volume) FROM reports "
                                                "LIMIT 1")),
                 QStringList({"integer|integer|text|text|text|integer"}));
    }

    void reportsWithoutTablesFailToReadAndToStore()
    {
        std::vector<Report> read = {MakeReport(42)};
        QVERIFY(!database->SavedReports(read));
        QVERIFY(!database->SaveReport(MakeReport(1)));
        QCOMPARE(read.size(), std::size_t(1));
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(database->SavedReports(read));
        QVERIFY(read.empty());
    }

    void removeReportsDeletesExactlyTheGivenRows()
    {
        QVERIFY(database->InitEmptyDataBase());
        for (std::int32_t id = 1; id <= 5; ++id) {
            QVERIFY(database->SaveReport(MakeReport(id)));
        }
        std::vector<Report> stored;
        QVERIFY(database->SavedReports(stored));
        // A row that is gone already matches nothing, which is no failure.
        Report vanished = MakeReport(99);
        vanished.rowid = 1000;
        QVERIFY(database->RemoveReports({stored[1], stored[3], vanished}));
        QCOMPARE(StoredIds(), std::vector<std::int32_t>({1, 3, 5}));

        QVERIFY(database->RemoveReports({}));
        QVERIFY(database->RemoveAllReports());
        QCOMPARE(StoredIds(), std::vector<std::int32_t>());
    }

    // One deletion that fails takes back those before it: a batch is removed
    // whole or not at all.
    void removeReportsIsAllOrNothing()
    {
        QVERIFY(database->InitEmptyDataBase());
        for (std::int32_t id = 1; id <= 4; ++id) {
            QVERIFY(database->SaveReport(MakeReport(id)));
        }
        QVERIFY(Tamper(QStringLiteral("CREATE TRIGGER keep_three BEFORE DELETE ON reports WHEN "
                                      "old.track_id = 3 BEGIN SELECT RAISE(ABORT, 'kept'); END")));
        std::vector<Report> stored;
        QVERIFY(database->SavedReports(stored));
        QVERIFY(!database->RemoveReports(stored));
        QCOMPARE(StoredIds(), std::vector<std::int32_t>({1, 2, 3, 4}));

        // The database is usable right after: the failed transaction is not left open.
        QVERIFY(database->RemoveReports({stored[0], stored[3]}));
        QCOMPARE(StoredIds(), std::vector<std::int32_t>({2, 3}));
    }

    void clearDataBaseDropsEveryTable()
    {
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(database->SaveAuthData(MakeObject(), MakeServer(), "owner", "secret", "tok"));
        QVERIFY(database->ClearDataBase());
        QVERIFY(database->ClearDataBase());
        Inspection inspection(DbManager::DataBaseFilePath());
        QCOMPARE(inspection.Rows(QStringLiteral("SELECT count(*) FROM sqlite_master")), QStringList({"0"}));
    }

    void eachDataDirectoryHasItsOwnDatabase()
    {
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(database->SaveAuthData(MakeObject(), MakeServer(), "owner", "secret", "tok"));
        SignIn read;
        {
            Tests::TestDataDirectory other;
            QVERIFY(!read.Read());
            QCOMPARE(DbManager::DataBaseFilePath(), other.FilePath(QStringLiteral("db.sqlite")));
        }
        QVERIFY(read.Read());
        QCOMPARE(read.token, std::string("tok"));
    }

    void escapeQuotesDoublesApostrophes()
    {
        QCOMPARE(DbManager::EscapeQuotes(QStringLiteral("it's 'x'")), QStringLiteral("it''s ''x''"));
        QCOMPARE(DbManager::EscapeQuotes(QStringLiteral("''")), QStringLiteral("''''"));
        QCOMPARE(DbManager::EscapeQuotes(QString()), QString());
    }

    void damagedFileIsMovedAsideAndSignInWorksAgain_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::newRow("garbage bytes") << "garbage";
        QTest::newRow("truncated to its header") << "header";
        QTest::newRow("truncated to the first page") << "first page";
        QTest::newRow("truncated to half") << "half";
    }

    // A damaged file must not keep the point of sale on the sign-in screen for
    // good: it reads as signed out, is kept aside under a dated name for support,
    // the event log says where, and the next sign-in works.
    void damagedFileIsMovedAsideAndSignInWorksAgain()
    {
        QFETCH(QString, damage);
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 21), QTime(9, 30, 5)));
        const QString path = DbManager::DataBaseFilePath();
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(database->SaveAuthData(MakeObject(), MakeServer(), "owner", "secret", "SECRET-TOKEN"));
        QVERIFY(database->SavePlaybackConfiguration(MakeConfiguration(7, std::string(20000, 'x'))));
        const QByteArray contents = ReadBytes(path);
        QVERIFY(contents.size() > 8192);
        QByteArray damaged;
        if (damage == QLatin1String("garbage")) {
            damaged = QByteArray(contents.size(), 'g');
        } else if (damage == QLatin1String("header")) {
            damaged = contents.left(100);
        } else if (damage == QLatin1String("first page")) {
            damaged = contents.left(4096);
        } else {
            damaged = contents.left(contents.size() / 2);
        }
        WriteBytes(path, damaged);
        // A journal left beside the damaged file must not be replayed into the new one.
        WriteBytes(path + QStringLiteral("-journal"), QByteArray(512, 'j'));

        SignIn read;
        QVERIFY(!read.Read());

        const QStringList aside =
            QDir(dataDirectory->Path())
                .entryList({QStringLiteral("db.sqlite.damaged-*")}, QDir::Files, QDir::Name);
        QVERIFY2(!aside.isEmpty(), "nothing was moved aside");
        QCOMPARE(aside.at(0), QStringLiteral("db.sqlite.damaged-20261121-093005"));
        QCOMPARE(ReadBytes(dataDirectory->FilePath(aside.at(0))), damaged);
        QVERIFY(!QFile::exists(path + QStringLiteral("-journal")));
        const QString log = ReadFile(dataDirectory->FilePath(QStringLiteral("log.txt")));
        QVERIFY2(log.contains(QStringLiteral("Файл локальной базы данных поврежден")), qPrintable(log));
        QVERIFY2(log.contains(dataDirectory->FilePath(aside.at(0))), qPrintable(log));
        QVERIFY(!log.contains(QStringLiteral("SECRET-TOKEN")));

        // Signed out but working: reports of the running session are kept, and
        // signing in again stores a complete sign-in.
        QVERIFY(!read.Read());
        QVERIFY(database->SaveReport(MakeReport(1)));
        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(database->SaveAuthData(MakeObject(), MakeServer(), "owner", "secret", "tok2"));
        QVERIFY(read.Read());
        QCOMPARE(read.token, std::string("tok2"));
        QCOMPARE(QDir(dataDirectory->Path())
                     .entryList({QStringLiteral("db.sqlite.damaged-*")}, QDir::Files, QDir::Name)
                     .first(),
                 aside.at(0));
    }

    void damageFoundBySignInIsRecoveredInTheSameCall()
    {
        const QString path = DbManager::DataBaseFilePath();
        WriteBytes(path, QByteArray(10000, '\x5a'));
        // A second damaged file within the same second gets a name of its own.
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 21), QTime(9, 30, 5)));
        WriteBytes(path + QStringLiteral(".damaged-20261121-093005"), QByteArray());

        QVERIFY(database->InitEmptyDataBase());
        QVERIFY(database->SaveAuthData(MakeObject(), MakeServer(), "owner", "secret", "tok"));
        QVERIFY(SignIn().Read());
        QVERIFY(QFile::exists(path + QStringLiteral(".damaged-20261121-093005-2")));
        QCOMPARE(QFileInfo(path + QStringLiteral(".damaged-20261121-093005-2")).size(), qint64(10000));
    }

    void damageFoundWhileStoringAReportKeepsTheReport()
    {
        WriteBytes(DbManager::DataBaseFilePath(), QByteArray(6000, '\x01'));
        QVERIFY(database->SaveReport(MakeReport(77)));
        QCOMPARE(StoredIds(), std::vector<std::int32_t>({77}));
    }

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    DbManager* database = nullptr;
};

QTEST_GUILESS_MAIN(DbManagerTest)
#include "tst_db_manager.moc"
