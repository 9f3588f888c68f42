#pragma once

#include <QJsonObject>
#include <QString>

namespace Tests {

// A fault for the reference service to inject (see Tests::ReferenceService::AddFault).
// `target` is an endpoint name ("playback/version", "auth/sign_in", ...), "*" for
// every API endpoint, "media" for every download or "media/<type>/<path>" for one
// file. `kind` is one of "delay", "status", "not_json", "no_success", "api_error",
// "close_mid_body", "wrong_md5", "empty", "not_found", "body". A `count` of 0 hits
// every matching request; otherwise only the first `count`.
struct ServiceFault
{
    ServiceFault() = default;
    ServiceFault(const QString& target, const QString& kind, int count = 0);

    QString target;
    QString kind;
    int count = 0;
    int delayMs = 0;
    // For "status".
    int status = 0;
    // For "api_error".
    int error = 0;
    // For "body".
    QString body;

    QJsonObject ToJson() const;
};

} // namespace Tests
