#include "tests/support/reference_service.h"

#include "tests/support/test_timeouts.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonParseError>

#include <httplib.h>

namespace Tests {

namespace {

const QString ListeningPrefix = QStringLiteral("listening on ");

} // namespace

ReferenceService::ReferenceService(const QString& scenario, const QString& content)
    : scenarioDirectory(scenario)
    , contentDirectory(content)
{
}

ReferenceService::~ReferenceService()
{
    Stop();
}

std::unique_ptr<ReferenceService> ReferenceService::Started(const QString& scenario, QString* error,
                                                            const QString& contentDirectory)
{
    auto service = std::make_unique<ReferenceService>(
        SourceDirectory() + QStringLiteral("/tests/tools/scenarios/") + scenario, contentDirectory);
    if (!service->Start()) {
        *error = service->ErrorString();
        return nullptr;
    }
    return service;
}

void ReferenceService::SetTls(const QString& certificate, const QString& key)
{
    certificateFile = certificate;
    keyFile = key;
}

bool ReferenceService::Start()
{
    const QString executable = ExecutablePath();
    if (executable.isEmpty()) {
        errorString =
            QStringLiteral("ZELMAR_REFERENCE_SERVICE is not set: register the test with NEEDS service");
        return false;
    }
    QStringList arguments = {QStringLiteral("--scenario"), scenarioDirectory, QStringLiteral("--port"),
                             QStringLiteral("0"), QStringLiteral("--exit-with-parent")};
    if (!contentDirectory.isEmpty()) {
        arguments << QStringLiteral("--content") << contentDirectory;
    }
    if (!certificateFile.isEmpty()) {
        arguments << QStringLiteral("--tls-cert") << certificateFile << QStringLiteral("--tls-key")
                  << keyFile;
    }
    // Its complaints go straight to the test's output, where a failure is read.
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(executable, arguments);
    if (!process.waitForStarted(Timeouts::Process)) {
        errorString = QStringLiteral("cannot start %1: %2").arg(executable, process.errorString());
        return false;
    }
    QElapsedTimer timer;
    timer.start();
    QByteArray output;
    while (!output.contains('\n')) {
        const int left = Timeouts::Process - static_cast<int>(timer.elapsed());
        if (left <= 0) {
            errorString = QStringLiteral("the reference service did not say where it listens within %1 ms")
                              .arg(Timeouts::Process);
            return false;
        }
        if (!process.waitForReadyRead(left) && process.state() != QProcess::Running) {
            errorString = QStringLiteral("the reference service ended with status %1 before listening")
                              .arg(process.exitCode());
            return false;
        }
        output += process.readAllStandardOutput();
    }
    const QString line = QString::fromLocal8Bit(output.left(output.indexOf('\n')));
    if (!line.startsWith(ListeningPrefix)) {
        errorString = QStringLiteral("unexpected first line from the reference service: %1").arg(line);
        return false;
    }
    baseUrl = line.mid(ListeningPrefix.size()).trimmed();
    return true;
}

bool ReferenceService::Stop()
{
    if (process.state() == QProcess::NotRunning) {
        return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    }
    process.terminate();
    if (!process.waitForFinished(Timeouts::Process)) {
        errorString =
            QStringLiteral("the reference service ignored SIGTERM for %1 ms").arg(Timeouts::Process);
        process.kill();
        process.waitForFinished(Timeouts::Process);
        return false;
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        errorString = QStringLiteral("the reference service stopped with status %1").arg(process.exitCode());
        return false;
    }
    return true;
}

bool ReferenceService::IsRunning() const
{
    return process.state() == QProcess::Running;
}

QString ReferenceService::ErrorString() const
{
    return errorString;
}

QString ReferenceService::BaseUrl() const
{
    return baseUrl;
}

QString ReferenceService::Origin() const
{
    return baseUrl.left(baseUrl.size() - static_cast<int>(qstrlen("api/v1/")));
}

QString ReferenceService::MediaDomain() const
{
    return Origin() + QStringLiteral("media/");
}

int ReferenceService::Port() const
{
    const int colon = Origin().lastIndexOf(QLatin1Char(':'));
    return Origin().mid(colon + 1).chopped(1).toInt();
}

bool ReferenceService::Reset()
{
    return Control("POST", QStringLiteral("reset")).has_value();
}

bool ReferenceService::SetDayOffset(int days)
{
    return Control("POST", QStringLiteral("clock"), {{QStringLiteral("day_offset"), days}}).has_value();
}

bool ReferenceService::SetToday(const QDate& date)
{
    const QJsonValue value = date.isValid() ? QJsonValue(date.toString(QStringLiteral("dd.MM.yyyy")))
                                            : QJsonValue(QJsonValue::Null);
    return Control("POST", QStringLiteral("clock"), {{QStringLiteral("date"), value}}).has_value();
}

bool ReferenceService::ShiftClock(int seconds)
{
    return Control("POST", QStringLiteral("clock"), {{QStringLiteral("shift_seconds"), seconds}}).has_value();
}

int ReferenceService::ConfigurationVersion(const QString& objectCode)
{
    return VersionFrom(Control("GET", QStringLiteral("configuration?object=") + objectCode));
}

QJsonObject ReferenceService::Configuration(const QString& objectCode)
{
    const auto reply = Control("GET", QStringLiteral("configuration?object=") + objectCode);
    return reply ? reply->value(QStringLiteral("configuration")).toObject() : QJsonObject();
}

int ReferenceService::BumpConfigurationVersion(const QString& objectCode)
{
    return VersionFrom(
        Control("POST", QStringLiteral("configuration/bump"), {{QStringLiteral("object"), objectCode}}));
}

int ReferenceService::SetConfigurationVersion(const QString& objectCode, int version)
{
    return VersionFrom(
        Control("POST", QStringLiteral("configuration/version"),
                {{QStringLiteral("object"), objectCode}, {QStringLiteral("version"), version}}));
}

int ReferenceService::ReplaceConfiguration(const QString& objectCode,
                                           const QJsonObject& configurationTemplate)
{
    return VersionFrom(Control(
        "POST", QStringLiteral("configuration/replace"),
        {{QStringLiteral("object"), objectCode}, {QStringLiteral("configuration"), configurationTemplate}}));
}

bool ReferenceService::SetAccountBlocked(const QString& login, bool blocked)
{
    return Control("POST", QStringLiteral("accounts/block"),
                   {{QStringLiteral("login"), login}, {QStringLiteral("blocked"), blocked}})
        .has_value();
}

bool ReferenceService::SetObjectExported(const QString& objectCode, bool exported)
{
    return Control("POST", QStringLiteral("objects/export"),
                   {{QStringLiteral("object"), objectCode}, {QStringLiteral("exported"), exported}})
        .has_value();
}

int ReferenceService::InvalidateTokens(const QString& objectCode)
{
    const auto reply =
        Control("POST", QStringLiteral("tokens/invalidate"), {{QStringLiteral("object"), objectCode}});
    return reply ? reply->value(QStringLiteral("invalidated")).toInt(-1) : -1;
}

int ReferenceService::AddFault(const ServiceFault& fault)
{
    const auto reply = Control("POST", QStringLiteral("faults"), fault.ToJson());
    return reply ? reply->value(QStringLiteral("id")).toInt(-1) : -1;
}

bool ReferenceService::ClearFaults()
{
    return Control("POST", QStringLiteral("faults/clear")).has_value();
}

QJsonArray ReferenceService::Faults()
{
    const auto reply = Control("GET", QStringLiteral("faults"));
    return reply ? reply->value(QStringLiteral("faults")).toArray() : QJsonArray();
}

QJsonObject ReferenceService::Received()
{
    return Control("GET", QStringLiteral("received")).value_or(QJsonObject());
}

QJsonArray ReferenceService::Received(const QString& section)
{
    return Received().value(section).toArray();
}

QJsonArray ReferenceService::StatisticsReports()
{
    QJsonArray reports;
    for (const QJsonValue& batch : Received(QStringLiteral("statistics"))) {
        for (const QJsonValue& report : batch.toObject().value(QStringLiteral("reports")).toArray()) {
            reports.append(report);
        }
    }
    return reports;
}

QJsonArray ReferenceService::Requests(int from)
{
    const auto reply = Control("GET", QStringLiteral("requests?from=%1").arg(from));
    return reply ? reply->value(QStringLiteral("requests")).toArray() : QJsonArray();
}

QJsonArray ReferenceService::RequestsTo(const QString& endpoint)
{
    QJsonArray matching;
    for (const QJsonValue& request : Requests()) {
        if (request.toObject().value(QStringLiteral("endpoint")).toString() == endpoint) {
            matching.append(request);
        }
    }
    return matching;
}

std::optional<QJsonObject> ReferenceService::Control(const QByteArray& method, const QString& path,
                                                     const QJsonObject& body)
{
    if (baseUrl.isEmpty()) {
        errorString = QStringLiteral("the reference service has not been started");
        return std::nullopt;
    }
    QString origin = Origin();
    origin.chop(1);
    httplib::Client client(origin.toStdString());
    client.enable_server_certificate_verification(false);
    client.set_url_encode(false);
    client.set_connection_timeout(0, Timeouts::Process * 1000);
    client.set_read_timeout(Timeouts::Process / 1000, 0);
    const std::string target = "/control/" + path.toStdString();
    httplib::Result result =
        method == "GET"
            ? client.Get(target)
            : client.Post(target, QJsonDocument(body).toJson(QJsonDocument::Compact).toStdString(),
                          "application/json");
    const QString what = QStringLiteral("control %1 %2").arg(QString::fromLatin1(method), path);
    if (!result) {
        errorString = QStringLiteral("%1 failed: %2")
                          .arg(what, QString::fromStdString(httplib::to_string(result.error())));
        return std::nullopt;
    }
    QJsonParseError parseError;
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray::fromStdString(result->body), &parseError);
    if (result->status != 200 || !document.isObject()) {
        const QString reason = document.object().value(QStringLiteral("error")).toString();
        errorString = QStringLiteral("%1 was refused (HTTP %2): %3")
                          .arg(what)
                          .arg(result->status)
                          .arg(reason.isEmpty() ? QString::fromStdString(result->body) : reason);
        return std::nullopt;
    }
    return document.object();
}

QString ReferenceService::ExecutablePath()
{
    return qEnvironmentVariable("ZELMAR_REFERENCE_SERVICE");
}

QString ReferenceService::SourceDirectory()
{
    return qEnvironmentVariable("ZELMAR_TEST_SOURCE_DIR");
}

bool ReferenceService::MakeTestCertificates(const QString& directory, QString* error)
{
    const QString script = SourceDirectory() + QStringLiteral("/scripts/make-test-certificates");
    if (!QFileInfo(script).isExecutable()) {
        *error =
            QStringLiteral("%1 is missing or not executable (is ZELMAR_TEST_SOURCE_DIR set?)").arg(script);
        return false;
    }
    QProcess make;
    make.setProcessChannelMode(QProcess::MergedChannels);
    make.start(script, {directory});
    if (!make.waitForFinished(Timeouts::Process) || make.exitStatus() != QProcess::NormalExit ||
        make.exitCode() != 0) {
        *error =
            QStringLiteral("make-test-certificates failed: %1").arg(QString::fromLocal8Bit(make.readAll()));
        return false;
    }
    return true;
}

int ReferenceService::VersionFrom(const std::optional<QJsonObject>& reply)
{
    return reply ? reply->value(QStringLiteral("version")).toInt(-1) : -1;
}

} // namespace Tests
