#include "tools/reference_service/http_service.h"

#include "tools/reference_service/json_values.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QLocale>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <httplib.h>
#include <vector>

namespace ReferenceService {

namespace {

// Enough for a test that holds a few requests on a delay while others go on.
constexpr size_t WorkerThreads = 32;
// The largest body accepted; statistics batches of a thousand reports are far below.
constexpr size_t MaximumBodySize = 16 * 1024 * 1024;
// How much of a body the request log keeps.
constexpr int MaximumLoggedBody = 1024 * 1024;
constexpr size_t FileChunkSize = 256 * 1024;

// An open file being sent, shared by the calls of one response's content provider.
struct FileSource
{
    std::ifstream in;
    std::vector<char> buffer = std::vector<char>(FileChunkSize);
    size_t position = 0;
};

bool IsConnectionDetail(const std::string& name)
{
    // cpp-httplib adds the peer's and our own address as pseudo headers.
    return name == "REMOTE_ADDR" || name == "REMOTE_PORT" || name == "LOCAL_ADDR" || name == "LOCAL_PORT";
}

} // namespace

HttpService::HttpService(const Scenario& source, const ContentLibrary& library)
    : scenario(source)
    , content(library)
    , state(source)
    , faults(ApiHandler::Endpoints())
    , builder(library, addresses)
    , api(source, state, recorder, builder, addresses)
    , media(library, state)
    , control(state, recorder, faults, builder, addresses)
{
}

HttpService::~HttpService() = default;

bool HttpService::Bind(int port, const QString& certificate, const QString& key, QString* error)
{
    const bool tls = !certificate.isEmpty();
    if (tls) {
        const QByteArray certificatePath = certificate.toLocal8Bit();
        const QByteArray keyPath = key.toLocal8Bit();
        server = std::make_unique<httplib::SSLServer>(certificatePath.constData(), keyPath.constData());
        if (!server->is_valid()) {
            *error = QStringLiteral("cannot use the TLS certificate \"%1\" with the key \"%2\"")
                         .arg(certificate, key);
            return false;
        }
    } else {
        server = std::make_unique<httplib::Server>();
    }
    server->new_task_queue = [] {
        return new httplib::ThreadPool(WorkerThreads);
    };
    // cpp-httplib asks for SO_REUSEPORT by default, which lets a second service
    // bind the same port and take a share of its requests; a taken port must be an
    // error instead.
    server->set_socket_options([](socket_t socket) {
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
    });
    server->set_keep_alive_max_count(1);
    server->set_payload_max_length(MaximumBodySize);
    server->set_exception_handler([](const httplib::Request&, httplib::Response& response,
                                     std::exception_ptr) {
        response.status = 500;
        response.set_content("The reference service failed on this request\n", "text/plain; charset=utf-8");
    });
    const auto handler = [this](const httplib::Request& request, httplib::Response& response) {
        Serve(request, response);
    };
    // Every reply says what the service's clock reads, as a real server's do:
    // the player checks the computer's clock against it. Set after routing, so
    // that refusals cpp-httplib makes itself carry it too.
    server->set_post_routing_handler([this](const httplib::Request&, httplib::Response& response) {
        auto lock = state.Lock();
        const QDateTime now = state.Now();
        lock.unlock();
        response.set_header("Date", HttpDate(now).toStdString());
    });
    server->Get("/.*", handler);
    server->Post("/.*", handler);
    if (verbose) {
        server->set_logger([](const httplib::Request& request, const httplib::Response& response) {
            std::fprintf(stderr, "%s %s -> %d\n", request.method.c_str(), request.target.c_str(),
                         response.status);
        });
    }

    int bound = -1;
    if (port == 0) {
        bound = server->bind_to_any_port("127.0.0.1");
    } else if (server->bind_to_port("127.0.0.1", port)) {
        bound = port;
    }
    if (bound <= 0) {
        *error = QStringLiteral("cannot listen on 127.0.0.1:%1 (is the port taken?)").arg(port);
        return false;
    }
    addresses = ServiceAddresses(tls, bound);
    return true;
}

void HttpService::SetVerbose(bool value)
{
    verbose = value;
}

const ServiceAddresses& HttpService::Addresses() const
{
    return addresses;
}

const ConfigurationBuilder& HttpService::Builder() const
{
    return builder;
}

bool HttpService::Run()
{
    return server && server->listen_after_bind();
}

bool HttpService::IsRunning() const
{
    return server && server->is_running();
}

void HttpService::Stop()
{
    {
        std::lock_guard<std::mutex> lock(stopMutex);
        stopping = true;
    }
    stopCondition.notify_all();
    if (server) {
        server->stop();
    }
}

void HttpService::Serve(const httplib::Request& request, httplib::Response& response)
{
    IncomingRequest incoming = IncomingRequest::FromTarget(request.method, request.target);
    for (const auto& header : request.headers) {
        if (!IsConnectionDetail(header.first)) {
            incoming.headers.emplace_back(header.first, header.second);
        }
    }
    incoming.body = request.body;
    Write(Dispatch(incoming), response);
}

Reply HttpService::Dispatch(IncomingRequest& request)
{
    if (request.pathIsValid && ControlHandler::IsControl(request)) {
        return control.Handle(request);
    }
    QString endpoint = request.pathIsValid ? ApiHandler::EndpointOf(request) : QString();
    const bool isApi = !endpoint.isEmpty();
    if (!isApi && request.pathIsValid) {
        endpoint = MediaHandler::EndpointOf(request);
    }
    const bool isMedia = !isApi && !endpoint.isEmpty();
    const std::optional<FaultPlan::Fault> fault =
        isApi || isMedia ? faults.Take(endpoint) : std::optional<FaultPlan::Fault>();
    request.logIndex = recorder.LogRequest(LogEntry(request, endpoint, fault ? fault->kind : QString()));
    if (!request.pathIsValid) {
        return Reply::Text(400, "The path cannot be decoded safely\n");
    }
    if (!isApi && !isMedia) {
        return Reply::Text(404, "Not found\n");
    }
    if (fault && fault->delayMs > 0 && !WaitUnlessStopping(fault->delayMs)) {
        return Reply::Text(503, "The service is stopping\n");
    }
    if (fault && !FaultPlan::IsProcessedUnder(fault->kind)) {
        return FaultReply(*fault, isMedia);
    }
    Reply reply = isApi ? api.Handle(request, endpoint) : media.Handle(request);
    if (fault) {
        Damage(reply, *fault);
    }
    return reply;
}

QJsonObject HttpService::LogEntry(const IncomingRequest& request, const QString& endpoint,
                                  const QString& fault) const
{
    QJsonObject headers;
    for (const auto& header : request.headers) {
        const QString name = QString::fromStdString(header.first);
        const QString value = QString::fromStdString(header.second);
        const QString earlier = headers.value(name).toString();
        headers.insert(name, earlier.isEmpty() ? value : earlier + QStringLiteral(", ") + value);
    }
    const QByteArray body = request.Body();
    return QJsonObject{{QStringLiteral("method"), QString::fromStdString(request.method)},
                       {QStringLiteral("target"), QString::fromStdString(request.target)},
                       {QStringLiteral("endpoint"), endpoint},
                       {QStringLiteral("headers"), headers},
                       {QStringLiteral("body"), QString::fromUtf8(body.left(MaximumLoggedBody))},
                       {QStringLiteral("body_size"), body.size()},
                       {QStringLiteral("fault"), fault}};
}

Reply HttpService::FaultReply(const FaultPlan::Fault& fault, bool isMedia)
{
    if (fault.kind == QLatin1String("status")) {
        return Reply::Text(fault.status,
                           "Injected fault: HTTP status " + std::to_string(fault.status) + "\n");
    }
    if (fault.kind == QLatin1String("not_json")) {
        Reply reply = Reply::Text(200, "<html><body><h1>502 Bad Gateway</h1></body></html>\n");
        reply.contentType = "text/html; charset=utf-8";
        return reply;
    }
    if (fault.kind == QLatin1String("api_error")) {
        return Reply::ApiError(fault.error);
    }
    if (fault.kind == QLatin1String("empty")) {
        Reply reply = Reply::Text(200, std::string());
        reply.contentType = isMedia ? "application/octet-stream" : "application/json; charset=utf-8";
        return reply;
    }
    if (fault.kind == QLatin1String("body")) {
        Reply reply = Reply::Text(200, fault.body.toStdString());
        reply.contentType = "application/json; charset=utf-8";
        return reply;
    }
    return Reply::Text(404, "Not found\n");
}

void HttpService::Damage(Reply& reply, const FaultPlan::Fault& fault)
{
    if (fault.kind == QLatin1String("close_mid_body")) {
        reply.truncate = true;
    } else if (fault.kind == QLatin1String("wrong_md5")) {
        reply.corrupt = true;
    } else if (fault.kind == QLatin1String("no_success")) {
        QString error;
        auto object = JsonValues::ParseObject(QByteArray::fromStdString(reply.body), &error);
        QJsonObject stripped = object ? *object : QJsonObject();
        stripped.remove(QStringLiteral("success"));
        reply = Reply::Json(stripped, reply.IsFile() ? 200 : reply.status);
    }
}

void HttpService::Write(const Reply& reply, httplib::Response& response)
{
    response.status = reply.status;
    if (!reply.IsFile()) {
        std::string body = reply.body;
        if (reply.corrupt) {
            for (char& byte : body) {
                byte = static_cast<char>(~static_cast<unsigned char>(byte));
            }
        }
        if (!reply.truncate) {
            response.set_content(body, reply.contentType);
            return;
        }
        // The announced length stays the whole body's; half of it goes out, then
        // the provider fails and the connection is closed mid-body.
        const size_t half = body.size() / 2;
        response.set_content_provider(std::max<size_t>(body.size(), 1), reply.contentType,
                                      [body, half](size_t offset, size_t, httplib::DataSink& sink) {
                                          if (offset == 0 && half > 0) {
                                              sink.write(body.data(), half);
                                          }
                                          return false;
                                      });
        return;
    }

    const size_t size = static_cast<size_t>(reply.fileSize);
    if (size == 0 && !reply.truncate) {
        response.set_content(std::string(), reply.contentType);
        return;
    }
    auto source = std::make_shared<FileSource>();
    source->in.open(reply.filePath.toStdString(), std::ios::binary);
    if (!source->in.is_open()) {
        response.status = 500;
        response.set_content("The file cannot be read\n", "text/plain; charset=utf-8");
        return;
    }
    const size_t limit = reply.truncate ? size / 2 : size;
    const bool corrupt = reply.corrupt;
    response.set_content_provider(
        std::max<size_t>(size, 1), reply.contentType,
        [source, limit, corrupt](size_t offset, size_t length, httplib::DataSink& sink) {
            if (offset >= limit) {
                return false;
            }
            if (offset != source->position) {
                source->in.clear();
                source->in.seekg(static_cast<std::streamoff>(offset));
                source->position = offset;
            }
            const size_t wanted = std::min({length, limit - offset, source->buffer.size()});
            source->in.read(source->buffer.data(), static_cast<std::streamsize>(wanted));
            const size_t got = static_cast<size_t>(source->in.gcount());
            if (got == 0) {
                // The file shrank while it was being sent.
                return false;
            }
            if (corrupt) {
                for (size_t i = 0; i < got; ++i) {
                    source->buffer[i] = static_cast<char>(~static_cast<unsigned char>(source->buffer[i]));
                }
            }
            source->position += got;
            return sink.write(source->buffer.data(), got);
        });
}

QString HttpService::HttpDate(const QDateTime& utc)
{
    // The one form a sender may use: "Sun, 06 Nov 1994 08:49:37 GMT", in English
    // whatever the machine's locale.
    return QLocale::c().toString(utc.toUTC(), QStringLiteral("ddd, dd MMM yyyy hh:mm:ss 'GMT'"));
}

bool HttpService::WaitUnlessStopping(int milliseconds)
{
    std::unique_lock<std::mutex> lock(stopMutex);
    return !stopCondition.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                   [this] { return stopping; });
}

} // namespace ReferenceService
