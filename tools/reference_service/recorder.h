#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <map>
#include <mutex>
#include <vector>

namespace ReferenceService {

// What the service received, for tests to read back: a log of every request with
// its headers and body, in arrival order, and the records the endpoints keep
// (statistics batches, likes, player versions, sign-ins and so on), each tied to
// its request by the log index.
class Recorder
{
public:
    static const QStringList& Sections();

    // Appends a request and returns its index in the log.
    int LogRequest(QJsonObject entry);
    void Record(const QString& section, QJsonObject record, int logIndex);

    // {section: [records...], ...} with every section present.
    QJsonObject Received() const;
    // The log from index `from` on.
    QJsonObject Requests(int from) const;
    void Clear();

private:
    mutable std::mutex mutex;
    std::vector<QJsonObject> requests;
    int requestCount = 0;
    std::map<QString, std::vector<QJsonObject>> sections;
};

} // namespace ReferenceService
