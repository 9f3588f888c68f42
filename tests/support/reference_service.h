#pragma once

#include "tests/support/service_fault.h"

#include <QDate>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QString>

#include <memory>
#include <optional>

namespace Tests {

// The reference service (tools/reference_service) in a process of its own, for
// tests that talk to the server API over loopback. A test that uses it declares
// NEEDS service. Start() launches it on a free port with a scenario folder and
// waits for its "listening on" line; the destructor stops it (SIGTERM, then kill).
//
// The control calls are synchronous and do not run the event loop, so they never
// let a test's own queued work run in between. Each returns false, -1 or an empty
// value on failure and leaves the reason in ErrorString().
class ReferenceService
{
public:
    explicit ReferenceService(const QString& scenarioDirectory, const QString& contentDirectory = QString());
    ~ReferenceService();

    ReferenceService(const ReferenceService&) = delete;
    ReferenceService& operator=(const ReferenceService&) = delete;

    // Serve HTTPS with this certificate and key (see MakeTestCertificates).
    void SetTls(const QString& certificateFile, const QString& keyFile);
    bool Start();
    // SIGTERM, then wait; true when the service ended by itself, with status 0.
    bool Stop();
    bool IsRunning() const;
    QString ErrorString() const;

    // What a server entry's "url" holds: "http://127.0.0.1:PORT/api/v1/".
    QString BaseUrl() const;
    // "http://127.0.0.1:PORT/"
    QString Origin() const;
    // The download domain the configurations name: Origin() + "media/".
    QString MediaDomain() const;
    int Port() const;

    bool Reset();
    // The service's today is the local date moved by `days`.
    bool SetDayOffset(int days);
    // Pins the service's today (before the day offset); an invalid date unpins it.
    bool SetToday(const QDate& date);
    // The "Date" header of every reply is the real time moved by `seconds`: a
    // server whose clock is ahead (positive) or behind the computer's.
    bool ShiftClock(int seconds);
    // The configuration's version and body as the player would get them now.
    int ConfigurationVersion(const QString& objectCode);
    QJsonObject Configuration(const QString& objectCode);
    // Each returns the new version.
    int BumpConfigurationVersion(const QString& objectCode);
    int SetConfigurationVersion(const QString& objectCode, int version);
    int ReplaceConfiguration(const QString& objectCode, const QJsonObject& configurationTemplate);
    bool SetAccountBlocked(const QString& login, bool blocked);
    bool SetObjectExported(const QString& objectCode, bool exported);
    // Ends every sign-in on the object, as a sign-in on another device would.
    // Returns how many tokens stopped working.
    int InvalidateTokens(const QString& objectCode);
    // The fault's id.
    int AddFault(const ServiceFault& fault);
    bool ClearFaults();
    QJsonArray Faults();

    // Everything recorded, by section: "statistics", "likes", "player_versions",
    // "sign_ins", "sign_outs", "sign_ups", "confirmation_codes", "business_types",
    // "music_styles", "playlist_changes", "deleted_accounts".
    QJsonObject Received();
    QJsonArray Received(const QString& section);
    // Every statistics report received, in order, across batches.
    QJsonArray StatisticsReports();
    // The request log: {"index", "method", "target", "endpoint", "headers", "body",
    // "body_size", "fault"} per request, in arrival order.
    QJsonArray Requests(int from = 0);
    QJsonArray RequestsTo(const QString& endpoint);

    // A control request; the reply object, or nullopt on failure.
    std::optional<QJsonObject> Control(const QByteArray& method, const QString& path,
                                       const QJsonObject& body = QJsonObject());

    // A service started on tests/tools/scenarios/<scenario>, serving `contentDirectory`;
    // null when it did not start, with the reason in *error.
    static std::unique_ptr<ReferenceService> Started(const QString& scenario, QString* error,
                                                     const QString& contentDirectory = QString());
    // The service's executable (ZELMAR_REFERENCE_SERVICE); empty without it.
    static QString ExecutablePath();
    // The repository (ZELMAR_TEST_SOURCE_DIR), for scenario folders and scripts.
    static QString SourceDirectory();
    // Runs scripts/make-test-certificates into `directory`: ca.crt, server.crt,
    // server.key (signed by the CA, for 127.0.0.1 and localhost) and
    // untrusted.crt, untrusted.key (self-signed, same names).
    static bool MakeTestCertificates(const QString& directory, QString* error);

private:
    int VersionFrom(const std::optional<QJsonObject>& reply);

    QString scenarioDirectory;
    QString contentDirectory;
    QString certificateFile;
    QString keyFile;
    QProcess process;
    QString baseUrl;
    QString errorString;
};

} // namespace Tests
