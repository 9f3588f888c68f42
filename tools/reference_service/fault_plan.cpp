#include "tools/reference_service/fault_plan.h"

#include "tools/reference_service/json_values.h"

#include <limits>

namespace ReferenceService {

namespace {

constexpr int MaximumDelayMs = 600000;

bool IsFileTarget(const QString& target)
{
    return target.startsWith(QLatin1String("media/")) || target.startsWith(QLatin1String("files/"));
}

} // namespace

const QStringList& FaultPlan::Kinds()
{
    static const QStringList kinds = {QStringLiteral("delay"),     QStringLiteral("status"),
                                      QStringLiteral("not_json"),  QStringLiteral("no_success"),
                                      QStringLiteral("api_error"), QStringLiteral("close_mid_body"),
                                      QStringLiteral("wrong_md5"), QStringLiteral("empty"),
                                      QStringLiteral("not_found"), QStringLiteral("body")};
    return kinds;
}

bool FaultPlan::IsProcessedUnder(const QString& kind)
{
    return kind == QLatin1String("delay") || kind == QLatin1String("no_success") ||
           kind == QLatin1String("close_mid_body") || kind == QLatin1String("wrong_md5");
}

FaultPlan::FaultPlan(const QStringList& names)
    : endpoints(names)
{
}

std::optional<FaultPlan::Fault> FaultPlan::Add(const QJsonObject& description, QString* error)
{
    Fault fault;
    fault.target = description.value(QStringLiteral("target")).toString();
    fault.kind = description.value(QStringLiteral("kind")).toString();
    if (!IsKnownTarget(fault.target)) {
        *error = QStringLiteral("unknown fault target \"%1\"; use an endpoint (%2), \"*\", \"media\", "
                                "\"media/<type>/<path>\", \"files\" or \"files/<path>\"")
                     .arg(fault.target, endpoints.join(QStringLiteral(", ")));
        return std::nullopt;
    }
    if (!Kinds().contains(fault.kind)) {
        *error = QStringLiteral("unknown fault kind \"%1\"; known: %2")
                     .arg(fault.kind, Kinds().join(QStringLiteral(", ")));
        return std::nullopt;
    }
    const auto readInteger = [&description](const QString& key, int minimum, int maximum, int* value) {
        if (!description.contains(key)) {
            return true;
        }
        const auto number = JsonValues::Integer(description.value(key));
        if (!number || *number < minimum || *number > maximum) {
            return false;
        }
        *value = *number;
        return true;
    };
    if (!readInteger(QStringLiteral("count"), 1, std::numeric_limits<int>::max(), &fault.count)) {
        *error = QStringLiteral("\"count\" must be a positive integer");
        return std::nullopt;
    }
    if (!readInteger(QStringLiteral("delay_ms"), 0, MaximumDelayMs, &fault.delayMs)) {
        *error = QStringLiteral("\"delay_ms\" must be an integer from 0 to %1").arg(MaximumDelayMs);
        return std::nullopt;
    }
    if (fault.kind == QLatin1String("delay") && fault.delayMs == 0) {
        *error = QStringLiteral("a \"delay\" fault needs a positive \"delay_ms\"");
        return std::nullopt;
    }
    if (fault.kind == QLatin1String("status") &&
        (!description.contains(QStringLiteral("status")) ||
         !readInteger(QStringLiteral("status"), 100, 599, &fault.status))) {
        *error = QStringLiteral("a \"status\" fault needs a \"status\" from 100 to 599");
        return std::nullopt;
    }
    if (fault.kind == QLatin1String("api_error")) {
        const auto code = JsonValues::Integer(description.value(QStringLiteral("error")));
        if (!code) {
            *error = QStringLiteral("an \"api_error\" fault needs an integer \"error\"");
            return std::nullopt;
        }
        fault.error = *code;
    }
    if (fault.kind == QLatin1String("body")) {
        if (!description.value(QStringLiteral("body")).isString()) {
            *error = QStringLiteral("a \"body\" fault needs a string \"body\"");
            return std::nullopt;
        }
        fault.body = description.value(QStringLiteral("body")).toString().toUtf8();
    }
    std::lock_guard<std::mutex> lock(mutex);
    fault.id = nextId++;
    faults.push_back(fault);
    return fault;
}

std::optional<FaultPlan::Fault> FaultPlan::Take(const QString& endpoint)
{
    std::lock_guard<std::mutex> lock(mutex);
    for (Fault& fault : faults) {
        if ((fault.count == 0 || fault.fired < fault.count) && Matches(fault.target, endpoint)) {
            ++fault.fired;
            return fault;
        }
    }
    return std::nullopt;
}

QJsonArray FaultPlan::ToJson() const
{
    std::lock_guard<std::mutex> lock(mutex);
    QJsonArray list;
    for (const Fault& fault : faults) {
        QJsonObject entry{{QStringLiteral("id"), fault.id},
                          {QStringLiteral("target"), fault.target},
                          {QStringLiteral("kind"), fault.kind},
                          {QStringLiteral("fired"), fault.fired},
                          {QStringLiteral("delay_ms"), fault.delayMs}};
        if (fault.count > 0) {
            entry.insert(QStringLiteral("count"), fault.count);
            entry.insert(QStringLiteral("remaining"), fault.count - fault.fired);
        }
        if (fault.kind == QLatin1String("status")) {
            entry.insert(QStringLiteral("status"), fault.status);
        }
        if (fault.kind == QLatin1String("api_error")) {
            entry.insert(QStringLiteral("error"), fault.error);
        }
        if (fault.kind == QLatin1String("body")) {
            entry.insert(QStringLiteral("body"), QString::fromUtf8(fault.body));
        }
        list.append(entry);
    }
    return list;
}

void FaultPlan::Clear()
{
    std::lock_guard<std::mutex> lock(mutex);
    faults.clear();
}

bool FaultPlan::Matches(const QString& target, const QString& endpoint)
{
    if (target == endpoint) {
        return true;
    }
    if (target == QLatin1String("*")) {
        return !IsFileTarget(endpoint);
    }
    if (target == QLatin1String("media") || target == QLatin1String("files")) {
        return endpoint.startsWith(target + QLatin1Char('/'));
    }
    return false;
}

bool FaultPlan::IsKnownTarget(const QString& target) const
{
    return endpoints.contains(target) || target == QLatin1String("*") || target == QLatin1String("media") ||
           target == QLatin1String("files") ||
           (IsFileTarget(target) && target.indexOf(QLatin1Char('/')) + 1 < target.size());
}

} // namespace ReferenceService
