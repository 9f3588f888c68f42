#include "tools/reference_service/media_handler.h"

#include <QFileInfo>

namespace ReferenceService {

namespace {

const QStringList& ContentFolders()
{
    static const QStringList folders = {QStringLiteral("clip"), QStringLiteral("music"),
                                        QStringLiteral("video"), QStringLiteral("photo")};
    return folders;
}

} // namespace

MediaHandler::MediaHandler(const ContentLibrary& library, ServiceState& serviceState)
    : content(library)
    , state(serviceState)
{
}

QString MediaHandler::EndpointOf(const IncomingRequest& request)
{
    const QStringList& segments = request.segments;
    if (segments.size() >= 4 && segments.at(0) == QLatin1String("media")) {
        return QStringLiteral("media/") + segments.mid(2).join(QLatin1Char('/'));
    }
    if (segments.size() >= 2 && segments.at(0) == QLatin1String("files")) {
        return segments.join(QLatin1Char('/'));
    }
    if (!segments.isEmpty() &&
        (segments.at(0) == QLatin1String("media") || segments.at(0) == QLatin1String("files"))) {
        return segments.join(QLatin1Char('/'));
    }
    return QString();
}

Reply MediaHandler::Handle(const IncomingRequest& request) const
{
    if (request.method != "GET" && request.method != "HEAD") {
        return Reply::Text(405, "Only GET and HEAD are served here\n");
    }
    const QStringList& segments = request.segments;
    QStringList relative;
    if (segments.at(0) == QLatin1String("media")) {
        if (segments.size() < 4 || !ContentFolders().contains(segments.at(2))) {
            return Reply::Text(404, "Not found\n");
        }
        auto lock = state.Lock();
        if (!state.FindObject(segments.at(1))) {
            return Reply::Text(404, "No playback object has this code\n");
        }
        lock.unlock();
        relative = segments.mid(2);
    } else {
        relative = segments.mid(1);
    }
    const QString path = content.Resolve(relative);
    if (path.isEmpty()) {
        return Reply::Text(404, "Not found\n");
    }
    return Reply::File(path, QFileInfo(path).size(), ContentTypeOf(path));
}

std::string MediaHandler::ContentTypeOf(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("mp3")) {
        return "audio/mpeg";
    }
    if (suffix == QLatin1String("mp4")) {
        return "video/mp4";
    }
    if (suffix == QLatin1String("jpg") || suffix == QLatin1String("jpeg")) {
        return "image/jpeg";
    }
    if (suffix == QLatin1String("png")) {
        return "image/png";
    }
    if (suffix == QLatin1String("json")) {
        return "application/json";
    }
    return "application/octet-stream";
}

} // namespace ReferenceService
