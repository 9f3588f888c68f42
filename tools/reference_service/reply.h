#pragma once

#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <string>

namespace ReferenceService {

// What the service answers: a status and a body held in memory, or a file that is
// streamed. The two damage flags are set by injected faults and carried out while
// the body is written.
struct Reply
{
    int status = 200;
    std::string contentType = "text/plain; charset=utf-8";
    std::string body;
    // When not empty the body is this file, `fileSize` bytes long.
    QString filePath;
    std::int64_t fileSize = 0;
    // Announce the whole length, send half of the body, then close the connection.
    bool truncate = false;
    // Send as many bytes as announced, but not the right ones.
    bool corrupt = false;

    static Reply Json(const QJsonObject& object, int status = 200);
    // The API's envelope: {"success": true, ...members}.
    static Reply Success(QJsonObject members = QJsonObject());
    // The API's error envelope {"success": false, "error": code}, with HTTP 200 as
    // the real server sends it.
    static Reply ApiError(int code);
    static Reply Text(int status, const std::string& text);
    static Reply File(const QString& path, std::int64_t size, const std::string& contentType);

    bool IsFile() const;
    std::int64_t BodySize() const;
};

} // namespace ReferenceService
