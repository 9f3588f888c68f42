#include "tools/reference_service/reply.h"

#include "tools/reference_service/json_values.h"

namespace ReferenceService {

Reply Reply::Json(const QJsonObject& object, int status)
{
    Reply reply;
    reply.status = status;
    reply.contentType = "application/json; charset=utf-8";
    reply.body = JsonValues::Compact(object).toStdString();
    return reply;
}

Reply Reply::Success(QJsonObject members)
{
    members.insert(QStringLiteral("success"), true);
    return Json(members);
}

Reply Reply::ApiError(int code)
{
    return Json(QJsonObject{{QStringLiteral("success"), false}, {QStringLiteral("error"), code}});
}

Reply Reply::Text(int status, const std::string& text)
{
    Reply reply;
    reply.status = status;
    reply.body = text;
    return reply;
}

Reply Reply::File(const QString& path, std::int64_t size, const std::string& contentType)
{
    Reply reply;
    reply.filePath = path;
    reply.fileSize = size;
    reply.contentType = contentType;
    return reply;
}

bool Reply::IsFile() const
{
    return !filePath.isEmpty();
}

std::int64_t Reply::BodySize() const
{
    return IsFile() ? fileSize : static_cast<std::int64_t>(body.size());
}

} // namespace ReferenceService
