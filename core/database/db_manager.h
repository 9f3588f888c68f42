#pragma once

#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/data_types/playback/playback_configuration.h"
#include "core/statistics/report.h"

#include <QSqlDatabase>
#include <QString>

#include <functional>
#include <memory>
#include <string>
#include <vector>

class QSqlQuery;

namespace Core::DataBase {

// The local SQLite database "db.sqlite" in the data directory: who is signed in
// (server, playback object, credentials and token), the last playback configuration
// and the playback reports the server has not taken yet. A readable, complete
// sign-in here is what lets the player start straight into playback after a
// restart.
//
// Every operation opens the file, does its work and closes it again, so nothing is
// held open between operations and the file is looked up anew each time: a test
// that moves the data directory gets a fresh database without any reset.
//
// Values always reach SQLite as bound parameters: a login, password, token, name or
// configuration text holding an apostrophe is stored as typed.
//
// A file SQLite reports as damaged (not a database, or a malformed image) would
// otherwise keep the point of sale on the sign-in screen for good: it is moved
// aside under a dated name, the event log says so, and an empty database takes its
// place, which reads as "not signed in" until the next sign-in fills it.
class DbManager
{
public:
    static DbManager& GetInstance();

    DbManager(const DbManager&) = delete;
    DbManager& operator=(const DbManager&) = delete;

    // The path of "db.sqlite" in the current data directory.
    static QString DataBaseFilePath();

    QSqlDatabase GetDataBase() const;

    // Drops everything and creates the five tables empty.
    bool InitEmptyDataBase();
    bool ClearDataBase();

    // Replaces the stored server, playback object and user in one transaction: a
    // failure keeps the previous sign-in whole.
    bool SaveAuthData(const DataTypes::Auth::PlaybackObject& object, const DataTypes::Auth::Server& server,
                      const std::string& login, const std::string& password, const std::string& token);
    bool SavePlaybackObject(const DataTypes::Auth::PlaybackObject& object);
    // True and every output filled, or false and the outputs untouched.
    bool SavedAuthData(DataTypes::Auth::PlaybackObject& object, DataTypes::Auth::Server& server,
                       std::string& login, std::string& password, std::string& token);

    // Replaces the stored configuration; a failed write keeps the previous one.
    bool SavePlaybackConfiguration(const DataTypes::Playback::PlaybackConfiguration& configuration);
    // False when nothing is stored or the stored text is not a JSON object.
    bool
    SavedPlaybackConfiguration(std::shared_ptr<DataTypes::Playback::PlaybackConfiguration>& configuration);
    // Whether a readable configuration is stored, and its version.
    bool SavedPlaybackConfiguration(long& version);
    bool RemovePlaybackConfiguration();

    bool SaveReport(const Statistics::Report& report);
    // In the order SQLite returns them, each with its row id.
    bool SavedReports(std::vector<Statistics::Report>& reports);
    // All of them or none: true only after the deletion has been committed.
    bool RemoveReports(const std::vector<Statistics::Report>& reports);
    bool RemoveAllReports();

    // On the already open database.
    bool DeleteAllFromTable(const QString& table);

private:
    DbManager();

    // Opens the file of the current data directory, runs `work`, closes it. When
    // `work` failed because the file is damaged, the file is moved aside and `work`
    // runs once more on the empty database that replaced it.
    bool Perform(const char* operation, const std::function<bool()>& work);
    bool Open();
    void Close();
    bool Execute(QSqlQuery& query, const QString& statement);
    bool Prepare(QSqlQuery& query, const QString& statement);
    bool Execute(QSqlQuery& query);
    bool BeginTransaction();
    bool CommitOrRollBack(bool succeeded);
    void NoteFailure(const QString& errorCode, const QString& errorText);
    void MoveDamagedFileAside();

    bool DropTables();
    bool CreateTables();
    bool InsertServer(const DataTypes::Auth::Server& server);
    bool InsertPlaybackObjectQuery(const DataTypes::Auth::PlaybackObject& object);
    bool InsertUser(const std::string& login, const std::string& password, const std::string& token);
    bool ReadConfigurationText(QString& text);
    // A data directory never signed in from has no tables yet: nothing is stored
    // there, which is no failure to report.
    // A damaged file fails here like any statement, so that it is noticed.
    bool HoldsTable(const QString& table);

    QSqlDatabase database;
    // The failing statement of the current operation said the file is damaged.
    bool damageFound = false;
    QString damageDescription;
    const char* currentOperation = "";
};

} // namespace Core::DataBase
