#include "core/database/db_manager.h"

#include "core/networking/json_converter.h"
#include "core/utilities/clock.h"
#include "core/utilities/data_directory.h"
#include "core/utilities/logger.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace Core::DataBase {

namespace {

using DataTypes::Auth::PlaybackObject;
using DataTypes::Auth::Server;
using DataTypes::Playback::PlaybackConfiguration;
using Statistics::Report;

const QString kFileName = QStringLiteral("db.sqlite");

// SQLite's primary result codes for a file that is not a database at all and for
// one whose pages contradict each other. Extended codes keep the primary one in
// their low byte.
constexpr int kSqliteCorrupt = 11;
constexpr int kSqliteNotADatabase = 26;

// Files SQLite keeps beside the database while it writes; a hot journal left over
// from the damaged file must not be replayed into the new one.
const char* const kCompanionSuffixes[] = {"-journal", "-wal", "-shm"};

const char* const kCreateStatements[] = {
    "CREATE TABLE server (id integer PRIMARY KEY NOT NULL, name VARCHAR(255), url VARCHAR(255), "
    "email VARCHAR(255), phone VARCHAR(255), privacy_policy_url VARCHAR(255), landing_url VARCHAR(255));",
    "CREATE TABLE playback_object (id integer PRIMARY KEY NOT NULL, name VARCHAR(255), "
    "address VARCHAR(255), code VARCHAR(255), contract_number VARCHAR(255), "
    "organization_name VARCHAR(255), image VARCHAR(255), logo VARCHAR(255), "
    "disable_player_control integer);",
    "CREATE TABLE playback_configuration (configuration TEXT);",
    "CREATE TABLE user (login VARCHAR(255), password VARCHAR(255), token TEXT);",
    "CREATE TABLE reports (track_id integer,shop_id integer,date VARCHAR(255),time VARCHAR(255),"
    "type VARCHAR(255),volume integer);",
};

const char* const kTables[] = {"server", "playback_object", "playback_configuration", "user", "reports"};

// An empty std::string must be stored as an empty text, as an SQL literal '' would
// be, and not as NULL, which a null QString binds to.
QVariant Text(const std::string& value)
{
    QString text = QString::fromStdString(value);
    if (text.isNull()) {
        text = QLatin1String("");
    }
    return text;
}

std::string StdString(const QSqlQuery& query, const char* column)
{
    return query.value(QLatin1String(column)).toString().toStdString();
}

int Int(const QSqlQuery& query, const char* column)
{
    return query.value(QLatin1String(column)).toInt();
}

bool IsDamageCode(const QString& nativeErrorCode)
{
    bool isNumber = false;
    const int code = nativeErrorCode.toInt(&isNumber) & 0xff;
    return isNumber && (code == kSqliteCorrupt || code == kSqliteNotADatabase);
}

// "db.sqlite.damaged-20240501-093000", with a counter when that name is taken.
QString FreeDamagedFileName(const QString& path)
{
    const QString stamp =
        Utilities::Clock::CurrentLocalDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss"));
    const QString base = path + QStringLiteral(".damaged-") + stamp;
    QString candidate = base;
    for (int counter = 2; QFileInfo::exists(candidate); ++counter) {
        candidate = base + QLatin1Char('-') + QString::number(counter);
    }
    return candidate;
}

} // namespace

DbManager& DbManager::GetInstance()
{
    // Never destroyed: the database handle must outlive every caller, including
    // ones that run while static objects are being torn down.
    static DbManager* const instance = new DbManager();
    return *instance;
}

DbManager::DbManager()
    : database(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"),
                                         QLatin1String(QSqlDatabase::defaultConnection)))
{
    if (!database.isValid()) {
        Utilities::Logger::Log("Локальная база данных недоступна: не найден драйвер SQLite (QSQLITE)");
    }
}

QString DbManager::DataBaseFilePath()
{
    return Utilities::DataDirectory::FilePath(kFileName);
}

QSqlDatabase DbManager::GetDataBase() const
{
    return database;
}

bool DbManager::InitEmptyDataBase()
{
    if (!ClearDataBase()) {
        return false;
    }
    return Perform("InitEmptyDataBase", [this] { return CreateTables(); });
}

bool DbManager::ClearDataBase()
{
    return Perform("ClearDataBase", [this] { return DropTables(); });
}

bool DbManager::SaveAuthData(const PlaybackObject& object, const Server& server, const std::string& login,
                             const std::string& password, const std::string& token)
{
    return Perform("SaveAuthData", [&] {
        if (!BeginTransaction()) {
            return false;
        }
        const bool saved = DeleteAllFromTable(QStringLiteral("server")) &&
                           DeleteAllFromTable(QStringLiteral("playback_object")) &&
                           DeleteAllFromTable(QStringLiteral("user")) && InsertServer(server) &&
                           InsertPlaybackObjectQuery(object) && InsertUser(login, password, token);
        return CommitOrRollBack(saved);
    });
}

bool DbManager::SavePlaybackObject(const PlaybackObject& object)
{
    return Perform("SavePlaybackObject", [&] {
        if (!BeginTransaction()) {
            return false;
        }
        const bool saved =
            DeleteAllFromTable(QStringLiteral("playback_object")) && InsertPlaybackObjectQuery(object);
        return CommitOrRollBack(saved);
    });
}

bool DbManager::SavedAuthData(PlaybackObject& object, Server& server, std::string& login,
                              std::string& password, std::string& token)
{
    return Perform("SavedAuthData", [&] {
        if (!HoldsTable(QStringLiteral("server"))) {
            return false;
        }
        Server readServer;
        PlaybackObject readObject;
        std::string readLogin;
        std::string readPassword;
        std::string readToken;
        {
            QSqlQuery query(database);
            if (!Execute(query, QStringLiteral("SELECT * FROM server LIMIT 1;")) || !query.next()) {
                return false;
            }
            readServer.id = Int(query, "id");
            readServer.name = StdString(query, "name");
            readServer.url = StdString(query, "url");
            readServer.email = StdString(query, "email");
            readServer.phone = StdString(query, "phone");
            readServer.privacyPolicyUrl = StdString(query, "privacy_policy_url");
            readServer.landingUrl = StdString(query, "landing_url");
        }
        {
            QSqlQuery query(database);
            if (!Execute(query, QStringLiteral("SELECT * FROM playback_object LIMIT 1;")) || !query.next()) {
                return false;
            }
            readObject.id = Int(query, "id");
            readObject.name = StdString(query, "name");
            readObject.address = StdString(query, "address");
            readObject.code = StdString(query, "code");
            readObject.contractNumber = StdString(query, "contract_number");
            readObject.organizationName = StdString(query, "organization_name");
            readObject.image = StdString(query, "image");
            readObject.logo = StdString(query, "logo");
            readObject.disablePlayerControl = query.value(QStringLiteral("disable_player_control")).toBool();
        }
        {
            QSqlQuery query(database);
            if (!Execute(query, QStringLiteral("SELECT * FROM user LIMIT 1;")) || !query.next()) {
                return false;
            }
            readLogin = StdString(query, "login");
            readPassword = StdString(query, "password");
            readToken = StdString(query, "token");
        }
        server = std::move(readServer);
        object = std::move(readObject);
        login = std::move(readLogin);
        password = std::move(readPassword);
        token = std::move(readToken);
        return true;
    });
}

bool DbManager::SavePlaybackConfiguration(const PlaybackConfiguration& configuration)
{
    const QString text = Networking::JsonConverter::PlaybackConfigurationToString(configuration);
    return Perform("SavePlaybackConfiguration", [&] {
        if (!BeginTransaction()) {
            return false;
        }
        bool saved = DeleteAllFromTable(QStringLiteral("playback_configuration"));
        if (saved) {
            QSqlQuery query(database);
            saved = Prepare(query, QStringLiteral("INSERT INTO 'playback_configuration' (configuration) "
                                                  "VALUES (:configuration);"));
            if (saved) {
                query.bindValue(QStringLiteral(":configuration"), text);
                saved = Execute(query);
            }
        }
        return CommitOrRollBack(saved);
    });
}

bool DbManager::SavedPlaybackConfiguration(std::shared_ptr<PlaybackConfiguration>& configuration)
{
    QString text;
    if (!Perform("SavedPlaybackConfiguration", [&] { return ReadConfigurationText(text); })) {
        return false;
    }
    // The converter reads leniently and would turn a damaged text into an empty
    // schedule; a text that is not JSON counts as no configuration, so the loader
    // fetches a fresh one.
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject()) {
        qWarning().noquote() << "DbManager: the stored playback configuration is not JSON:"
                             << parseError.errorString();
        return false;
    }
    configuration = Networking::JsonConverter::PlaybackConfigurationFromResponse(text);
    return configuration != nullptr;
}

bool DbManager::SavedPlaybackConfiguration(long& version)
{
    std::shared_ptr<PlaybackConfiguration> configuration;
    if (!SavedPlaybackConfiguration(configuration)) {
        return false;
    }
    version = configuration->version;
    return true;
}

bool DbManager::RemovePlaybackConfiguration()
{
    return Perform("RemovePlaybackConfiguration",
                   [this] { return DeleteAllFromTable(QStringLiteral("playback_configuration")); });
}

bool DbManager::SaveReport(const Report& report)
{
    return Perform("SaveReport", [&] {
        QSqlQuery query(database);
        if (!Prepare(query,
                     QStringLiteral("INSERT INTO reports (track_id, shop_id, date, time, type, volume) "
                                    "VALUES (:track_id, :shop_id, :date, :time, :type, :volume);"))) {
            return false;
        }
        query.bindValue(QStringLiteral(":track_id"), report.track_id);
        query.bindValue(QStringLiteral(":shop_id"), report.shop_id);
        query.bindValue(QStringLiteral(":date"), Text(report.date));
        query.bindValue(QStringLiteral(":time"), Text(report.time));
        query.bindValue(QStringLiteral(":type"), Text(report.type));
        query.bindValue(QStringLiteral(":volume"), report.volume);
        return Execute(query);
    });
}

bool DbManager::SavedReports(std::vector<Report>& reports)
{
    return Perform("SavedReports", [&] {
        QSqlQuery query(database);
        query.setForwardOnly(true);
        if (!Execute(query, QStringLiteral(
                                "SELECT rowid, track_id, shop_id, date, time, volume, type FROM reports"))) {
            return false;
        }
        std::vector<Report> read;
        while (query.next()) {
            Report report;
            report.rowid = query.value(0).toLongLong();
            report.track_id = query.value(1).toInt();
            report.shop_id = query.value(2).toInt();
            report.date = query.value(3).toString().toStdString();
            report.time = query.value(4).toString().toStdString();
            report.volume = query.value(5).toInt();
            report.type = query.value(6).toString().toStdString();
            read.push_back(std::move(report));
        }
        // A damaged page met halfway through ends the loop like the last row would.
        if (query.lastError().isValid()) {
            NoteFailure(query.lastError().nativeErrorCode(), query.lastError().text());
            return false;
        }
        reports = std::move(read);
        return true;
    });
}

bool DbManager::RemoveReports(const std::vector<Report>& reports)
{
    return Perform("RemoveReports", [&] {
        if (!BeginTransaction()) {
            return false;
        }
        bool removed = true;
        {
            QSqlQuery query(database);
            removed = Prepare(query, QStringLiteral("DELETE FROM reports WHERE rowid = :rowid"));
            for (auto report = reports.begin(); removed && report != reports.end(); ++report) {
                query.bindValue(QStringLiteral(":rowid"), static_cast<qlonglong>(report->rowid));
                removed = Execute(query);
            }
        }
        return CommitOrRollBack(removed);
    });
}

bool DbManager::RemoveAllReports()
{
    return Perform("RemoveAllReports", [this] { return DeleteAllFromTable(QStringLiteral("reports")); });
}

bool DbManager::DeleteAllFromTable(const QString& table)
{
    QSqlQuery query(database);
    return Execute(query, QStringLiteral("DELETE FROM '") + table + QStringLiteral("' WHERE 1;"));
}

bool DbManager::Perform(const char* operation, const std::function<bool()>& work)
{
    currentOperation = operation;
    damageFound = false;
    if (!Open()) {
        return false;
    }
    bool succeeded = work();
    Close();
    if (succeeded || !damageFound) {
        return succeeded;
    }

    MoveDamagedFileAside();
    damageFound = false;
    if (!Open()) {
        return false;
    }
    succeeded = CreateTables() && work();
    Close();
    return succeeded;
}

bool DbManager::Open()
{
    if (!database.isValid()) {
        return false;
    }
    const QString path = DataBaseFilePath();
    if (database.databaseName() != path) {
        database.setDatabaseName(path);
    }
    if (!database.open()) {
        NoteFailure(database.lastError().nativeErrorCode(), database.lastError().text());
        return false;
    }
    return true;
}

void DbManager::Close()
{
    database.close();
}

bool DbManager::Execute(QSqlQuery& query, const QString& statement)
{
    if (!query.exec(statement)) {
        NoteFailure(query.lastError().nativeErrorCode(), query.lastError().text());
        return false;
    }
    return true;
}

bool DbManager::Prepare(QSqlQuery& query, const QString& statement)
{
    if (!query.prepare(statement)) {
        NoteFailure(query.lastError().nativeErrorCode(), query.lastError().text());
        return false;
    }
    return true;
}

bool DbManager::Execute(QSqlQuery& query)
{
    if (!query.exec()) {
        NoteFailure(query.lastError().nativeErrorCode(), query.lastError().text());
        return false;
    }
    return true;
}

bool DbManager::BeginTransaction()
{
    if (!database.transaction()) {
        NoteFailure(database.lastError().nativeErrorCode(), database.lastError().text());
        return false;
    }
    return true;
}

bool DbManager::CommitOrRollBack(bool succeeded)
{
    if (succeeded && database.commit()) {
        return true;
    }
    if (succeeded) {
        NoteFailure(database.lastError().nativeErrorCode(), database.lastError().text());
    }
    database.rollback();
    return false;
}

void DbManager::NoteFailure(const QString& errorCode, const QString& errorText)
{
    // Statements carry their values as bound parameters, so the driver's text
    // never holds a password or a token.
    qWarning().noquote() << "DbManager:" << currentOperation << "failed:" << errorText;
    if (IsDamageCode(errorCode)) {
        damageFound = true;
        damageDescription = errorText;
    }
}

void DbManager::MoveDamagedFileAside()
{
    const QString path = DataBaseFilePath();
    const QString damagedPath = FreeDamagedFileName(path);
    if (!QFile::rename(path, damagedPath)) {
        // Keeping a damaged file would keep the point of sale signed out for good;
        // it holds nothing that can still be read.
        const bool removed = QFile::remove(path);
        Utilities::Logger::Log("Файл локальной базы данных " + path.toStdString() + " поврежден (" +
                               damageDescription.toStdString() + ") и не может быть перемещен" +
                               (removed ? ", файл удален" : " или удален"));
    } else {
        Utilities::Logger::Log("Файл локальной базы данных поврежден (" + damageDescription.toStdString() +
                               "), он перемещен в " + damagedPath.toStdString() +
                               "; создана новая пустая база, потребуется повторный вход");
    }
    for (const char* suffix : kCompanionSuffixes) {
        const QString companion = path + QLatin1String(suffix);
        if (QFileInfo::exists(companion) && !QFile::rename(companion, damagedPath + QLatin1String(suffix))) {
            QFile::remove(companion);
        }
    }
}

bool DbManager::DropTables()
{
    for (const char* table : kTables) {
        QSqlQuery query(database);
        if (!Execute(query,
                     QStringLiteral("DROP TABLE IF EXISTS ") + QLatin1String(table) + QLatin1Char(';'))) {
            return false;
        }
    }
    return true;
}

bool DbManager::CreateTables()
{
    for (const char* statement : kCreateStatements) {
        QSqlQuery query(database);
        if (!Execute(query, QLatin1String(statement))) {
            return false;
        }
    }
    return true;
}

bool DbManager::InsertServer(const Server& server)
{
    QSqlQuery query(database);
    if (!Prepare(query, QStringLiteral("INSERT INTO server (id, name, url, email, phone, landing_url, "
                                       "privacy_policy_url) VALUES (:id, :name, :url, :email, :phone, "
                                       ":landing_url, :privacy_policy_url);"))) {
        return false;
    }
    query.bindValue(QStringLiteral(":id"), server.id);
    query.bindValue(QStringLiteral(":name"), Text(server.name));
    query.bindValue(QStringLiteral(":url"), Text(server.url));
    query.bindValue(QStringLiteral(":email"), Text(server.email));
    query.bindValue(QStringLiteral(":phone"), Text(server.phone));
    query.bindValue(QStringLiteral(":landing_url"), Text(server.landingUrl));
    query.bindValue(QStringLiteral(":privacy_policy_url"), Text(server.privacyPolicyUrl));
    return Execute(query);
}

bool DbManager::InsertPlaybackObjectQuery(const PlaybackObject& object)
{
    QSqlQuery query(database);
    if (!Prepare(query,
                 QStringLiteral("INSERT INTO playback_object (id, name, address, code, contract_number, "
                                "organization_name, image, logo, disable_player_control) VALUES (:id, "
                                ":name, :address, :code, :contract_number, :organization_name, :image, "
                                ":logo, :disable_player_control);"))) {
        return false;
    }
    query.bindValue(QStringLiteral(":id"), object.id);
    query.bindValue(QStringLiteral(":name"), Text(object.name));
    query.bindValue(QStringLiteral(":address"), Text(object.address));
    query.bindValue(QStringLiteral(":code"), Text(object.code));
    query.bindValue(QStringLiteral(":contract_number"), Text(object.contractNumber));
    query.bindValue(QStringLiteral(":organization_name"), Text(object.organizationName));
    query.bindValue(QStringLiteral(":image"), Text(object.image));
    query.bindValue(QStringLiteral(":logo"), Text(object.logo));
    query.bindValue(QStringLiteral(":disable_player_control"), object.disablePlayerControl ? 1 : 0);
    return Execute(query);
}

bool DbManager::InsertUser(const std::string& login, const std::string& password, const std::string& token)
{
    QSqlQuery query(database);
    if (!Prepare(query,
                 QStringLiteral(
                     "INSERT INTO user (login, password, token) VALUES (:login, :password, :token);"))) {
        return false;
    }
    query.bindValue(QStringLiteral(":login"), Text(login));
    query.bindValue(QStringLiteral(":password"), Text(password));
    query.bindValue(QStringLiteral(":token"), Text(token));
    return Execute(query);
}

bool DbManager::HoldsTable(const QString& table)
{
    QSqlQuery query(database);
    if (!Prepare(query, QStringLiteral("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?;"))) {
        return false;
    }
    query.addBindValue(table);
    return Execute(query) && query.next();
}

bool DbManager::ReadConfigurationText(QString& text)
{
    if (!HoldsTable(QStringLiteral("playback_configuration"))) {
        return false;
    }
    QSqlQuery query(database);
    query.setForwardOnly(true);
    if (!Execute(query, QStringLiteral("SELECT configuration FROM playback_configuration LIMIT 1;")) ||
        !query.next()) {
        return false;
    }
    text = query.value(0).toString();
    return true;
}

} // namespace Core::DataBase
