#include "tests/support/service_fault.h"

namespace Tests {

ServiceFault::ServiceFault(const QString& faultTarget, const QString& faultKind, int faultCount)
    : target(faultTarget)
    , kind(faultKind)
    , count(faultCount)
{
}

QJsonObject ServiceFault::ToJson() const
{
    QJsonObject json{{QStringLiteral("target"), target}, {QStringLiteral("kind"), kind}};
    if (count > 0) {
        json.insert(QStringLiteral("count"), count);
    }
    if (delayMs > 0) {
        json.insert(QStringLiteral("delay_ms"), delayMs);
    }
    if (kind == QLatin1String("status")) {
        json.insert(QStringLiteral("status"), status);
    }
    if (kind == QLatin1String("api_error")) {
        json.insert(QStringLiteral("error"), error);
    }
    if (kind == QLatin1String("body")) {
        json.insert(QStringLiteral("body"), body);
    }
    return json;
}

} // namespace Tests
