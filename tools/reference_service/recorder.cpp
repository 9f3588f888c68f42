#include "tools/reference_service/recorder.h"

#include <algorithm>

namespace ReferenceService {

namespace {

// A test run never comes near this; a service left running for days must not
// grow without bound.
constexpr int MaximumLoggedRequests = 50000;

} // namespace

const QStringList& Recorder::Sections()
{
    static const QStringList sections = {
        QStringLiteral("statistics"),         QStringLiteral("likes"),
        QStringLiteral("player_versions"),    QStringLiteral("sign_ins"),
        QStringLiteral("sign_outs"),          QStringLiteral("sign_ups"),
        QStringLiteral("confirmation_codes"), QStringLiteral("business_types"),
        QStringLiteral("music_styles"),       QStringLiteral("playlist_changes"),
        QStringLiteral("deleted_accounts")};
    return sections;
}

int Recorder::LogRequest(QJsonObject entry)
{
    std::lock_guard<std::mutex> lock(mutex);
    const int index = requestCount++;
    if (index < MaximumLoggedRequests) {
        entry.insert(QStringLiteral("index"), index);
        requests.push_back(entry);
    }
    return index;
}

void Recorder::Record(const QString& section, QJsonObject record, int logIndex)
{
    record.insert(QStringLiteral("request"), logIndex);
    std::lock_guard<std::mutex> lock(mutex);
    sections[section].push_back(record);
}

QJsonObject Recorder::Received() const
{
    std::lock_guard<std::mutex> lock(mutex);
    QJsonObject received;
    for (const QString& section : Sections()) {
        QJsonArray records;
        const auto found = sections.find(section);
        if (found != sections.end()) {
            for (const QJsonObject& record : found->second) {
                records.append(record);
            }
        }
        received.insert(section, records);
    }
    return received;
}

QJsonObject Recorder::Requests(int from) const
{
    std::lock_guard<std::mutex> lock(mutex);
    QJsonArray list;
    for (size_t i = static_cast<size_t>(std::max(from, 0)); i < requests.size(); ++i) {
        list.append(requests[i]);
    }
    return QJsonObject{{QStringLiteral("requests"), list},
                       {QStringLiteral("total"), requestCount},
                       {QStringLiteral("dropped"), std::max(0, requestCount - MaximumLoggedRequests)}};
}

void Recorder::Clear()
{
    std::lock_guard<std::mutex> lock(mutex);
    requests.clear();
    requestCount = 0;
    sections.clear();
}

} // namespace ReferenceService
