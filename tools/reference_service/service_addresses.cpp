#include "tools/reference_service/service_addresses.h"

#include <QJsonArray>
#include <QJsonObject>

namespace ReferenceService {

ServiceAddresses::ServiceAddresses(bool tls, int port)
    : origin(QStringLiteral("%1://127.0.0.1:%2/")
                 .arg(tls ? QStringLiteral("https") : QStringLiteral("http"))
                 .arg(port))
{
}

QString ServiceAddresses::Origin() const
{
    return origin;
}

QString ServiceAddresses::BaseUrl() const
{
    return origin + QStringLiteral("api/v1/");
}

QString ServiceAddresses::MediaDomain() const
{
    return origin + QStringLiteral("media/");
}

QString ServiceAddresses::FilesUrl() const
{
    return origin + QStringLiteral("files/");
}

QString ServiceAddresses::Substitute(QString text) const
{
    if (!text.contains(QLatin1Char('@'))) {
        return text;
    }
    text.replace(QStringLiteral("@BASE_URL@"), BaseUrl());
    text.replace(QStringLiteral("@MEDIA_DOMAIN@"), MediaDomain());
    text.replace(QStringLiteral("@FILES@"), FilesUrl());
    text.replace(QStringLiteral("@ORIGIN@"), Origin());
    return text;
}

QJsonValue ServiceAddresses::Substitute(const QJsonValue& value) const
{
    if (value.isString()) {
        return Substitute(value.toString());
    }
    if (value.isArray()) {
        QJsonArray array = value.toArray();
        for (int i = 0; i < array.size(); ++i) {
            array[i] = Substitute(array.at(i));
        }
        return array;
    }
    if (value.isObject()) {
        QJsonObject object = value.toObject();
        for (auto it = object.begin(); it != object.end(); ++it) {
            it.value() = Substitute(it.value());
        }
        return object;
    }
    return value;
}

} // namespace ReferenceService
