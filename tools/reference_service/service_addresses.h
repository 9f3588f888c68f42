#pragma once

#include <QJsonValue>
#include <QString>

namespace ReferenceService {

// The service's own addresses, known only once the port is chosen. Scenario files
// refer to them through placeholders inside any string:
//   "@BASE_URL@"      the API base, "http://127.0.0.1:PORT/api/v1/"
//   "@MEDIA_DOMAIN@"  the download domain, "http://127.0.0.1:PORT/media/"
//   "@FILES@"         plain files of the content folder, "http://127.0.0.1:PORT/files/"
//   "@ORIGIN@"        "http://127.0.0.1:PORT/"
class ServiceAddresses
{
public:
    ServiceAddresses() = default;
    ServiceAddresses(bool tls, int port);

    QString Origin() const;
    QString BaseUrl() const;
    QString MediaDomain() const;
    QString FilesUrl() const;

    QString Substitute(QString text) const;
    // Every string inside the value, keys excepted, with the placeholders replaced.
    QJsonValue Substitute(const QJsonValue& value) const;

private:
    QString origin;
};

} // namespace ReferenceService
