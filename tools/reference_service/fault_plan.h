#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <mutex>
#include <optional>
#include <vector>

namespace ReferenceService {

// Faults the tests ask for. A fault names its target (an endpoint such as
// "playback/version", "*" for every API endpoint, "media" for every download or
// "media/<type>/<path>" for one file), its kind, and optionally how many requests
// it hits ("count"; without it, all) and a delay before it acts ("delay_ms").
// The first fault that matches a request and still has requests left is used.
//
// Kinds: "delay" (answer normally, late), "status" (the HTTP "status" given),
// "not_json", "no_success" (the real reply without its "success" member),
// "api_error" ({"success": false, "error": <error>}), "close_mid_body" (the
// connection closes after half of the announced body), "wrong_md5" (the right
// length, other bytes), "empty" (a zero-length body), "not_found" (HTTP 404) and
// "body" (this exact "body" with status 200).
class FaultPlan
{
public:
    struct Fault
    {
        int id = 0;
        QString target;
        QString kind;
        // 0: every matching request.
        int count = 0;
        int fired = 0;
        int delayMs = 0;
        int status = 0;
        int error = 0;
        QByteArray body;
    };

    static const QStringList& Kinds();
    // Whether a request is still handled by its endpoint under this kind of fault:
    // the damaging kinds spoil a real reply, the others replace it unprocessed.
    static bool IsProcessedUnder(const QString& kind);

    // `endpoints` are the names a target may use besides the wildcards.
    explicit FaultPlan(const QStringList& endpoints);

    std::optional<Fault> Add(const QJsonObject& description, QString* error);
    // The fault for this request, counted as fired; nullopt when none applies.
    std::optional<Fault> Take(const QString& endpoint);
    QJsonArray ToJson() const;
    void Clear();

private:
    static bool Matches(const QString& target, const QString& endpoint);
    bool IsKnownTarget(const QString& target) const;

    QStringList endpoints;
    mutable std::mutex mutex;
    std::vector<Fault> faults;
    int nextId = 1;
};

} // namespace ReferenceService
