#pragma once

#include "tools/reference_service/api_handler.h"
#include "tools/reference_service/configuration_builder.h"
#include "tools/reference_service/content_library.h"
#include "tools/reference_service/control_handler.h"
#include "tools/reference_service/fault_plan.h"
#include "tools/reference_service/incoming_request.h"
#include "tools/reference_service/media_handler.h"
#include "tools/reference_service/recorder.h"
#include "tools/reference_service/reply.h"
#include "tools/reference_service/scenario.h"
#include "tools/reference_service/service_addresses.h"
#include "tools/reference_service/service_state.h"

#include <QDateTime>
#include <QString>

#include <condition_variable>
#include <memory>
#include <mutex>

namespace httplib {
class Server;
struct Request;
struct Response;
} // namespace httplib

namespace ReferenceService {

// The HTTP(S) side: listens on 127.0.0.1 only, turns each request into an
// IncomingRequest, logs it, applies the planned fault and writes the reply, with
// files streamed from disk. Every connection carries one request: the service
// never has idle connections to wait for when it is told to stop.
class HttpService
{
public:
    HttpService(const Scenario& scenario, const ContentLibrary& content);
    ~HttpService();

    HttpService(const HttpService&) = delete;
    HttpService& operator=(const HttpService&) = delete;

    // Binds the port (0 picks a free one); with a certificate and key, HTTPS.
    bool Bind(int port, const QString& certificate, const QString& key, QString* error);
    void SetVerbose(bool verbose);
    const ServiceAddresses& Addresses() const;
    const ConfigurationBuilder& Builder() const;

    // Serves until Stop(); false when listening failed.
    bool Run();
    bool IsRunning() const;
    // Safe from any thread. Delayed replies waiting on a fault give up at once.
    void Stop();

private:
    void Serve(const httplib::Request& request, httplib::Response& response);
    Reply Dispatch(IncomingRequest& request);
    QJsonObject LogEntry(const IncomingRequest& request, const QString& endpoint, const QString& fault) const;
    static Reply FaultReply(const FaultPlan::Fault& fault, bool isMedia);
    static void Damage(Reply& reply, const FaultPlan::Fault& fault);
    static void Write(const Reply& reply, httplib::Response& response);
    // An HTTP date of an instant.
    static QString HttpDate(const QDateTime& utc);
    // Waits for the delay; false when the service is stopping.
    bool WaitUnlessStopping(int milliseconds);

    const Scenario& scenario;
    const ContentLibrary& content;
    ServiceAddresses addresses;
    ServiceState state;
    Recorder recorder;
    FaultPlan faults;
    ConfigurationBuilder builder;
    ApiHandler api;
    MediaHandler media;
    ControlHandler control;
    std::unique_ptr<httplib::Server> server;
    bool verbose = false;

    std::mutex stopMutex;
    std::condition_variable stopCondition;
    bool stopping = false;
};

} // namespace ReferenceService
