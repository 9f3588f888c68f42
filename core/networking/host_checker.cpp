#include "core/networking/host_checker.h"

#include "core/utilities/logger.h"

#include <QUrl>

namespace Core::Networking {

HostChecker::HostChecker(QObject* parent)
    : QObject(parent)
{
}

HostChecker::~HostChecker()
{
    // Lookups run on Qt's resolver threads; nobody is left to answer.
    for (const auto& lookup : singleLookups) {
        QHostInfo::abortHostLookup(lookup.first);
    }
    for (const auto& walk : walks) {
        QHostInfo::abortHostLookup(walk.first);
    }
}

void HostChecker::CheckHostAvailability(const std::string& url, std::function<void()> onSuccess,
                                        std::function<void()> onFailure)
{
    const int id = QHostInfo::lookupHost(HostOf(url), this, SLOT(SingleHostLookUpFinished(QHostInfo)));
    singleLookups[id] = SingleLookup{std::move(onSuccess), std::move(onFailure)};
}

void HostChecker::CheckHostsAvailability(const std::vector<std::string>& urls,
                                         std::function<void(std::string)> onHostFound,
                                         std::function<void()> onNoHost)
{
    Utilities::Logger::LogHostsAvailabilityStarted(urls);
    auto walk = std::make_shared<HostsWalk>();
    walk->hosts = urls;
    walk->onHostFound = std::move(onHostFound);
    walk->onNoHost = std::move(onNoHost);
    LookUpCurrentHost(walk);
}

void HostChecker::SingleHostLookUpFinished(const QHostInfo& info)
{
    const auto found = singleLookups.find(info.lookupId());
    if (found == singleLookups.end()) {
        return;
    }
    const SingleLookup lookup = std::move(found->second);
    singleLookups.erase(found);
    const auto& callback = info.error() == QHostInfo::NoError ? lookup.onSuccess : lookup.onFailure;
    if (callback) {
        callback();
    }
}

void HostChecker::CurrentHostLookUpFinished(const QHostInfo& info)
{
    const auto found = walks.find(info.lookupId());
    if (found == walks.end()) {
        return;
    }
    const std::shared_ptr<HostsWalk> walk = found->second;
    walks.erase(found);
    if (info.error() == QHostInfo::NoError) {
        const std::string host = walk->hosts[walk->currentIndex];
        Utilities::Logger::LogHostAvailable(host);
        if (walk->onHostFound) {
            walk->onHostFound(host);
        }
        return;
    }
    ++walk->currentIndex;
    LookUpCurrentHost(walk);
}

QString HostChecker::HostOf(const std::string& url)
{
    return QUrl(QString::fromStdString(url)).host(QUrl::FullyDecoded);
}

void HostChecker::LookUpCurrentHost(const std::shared_ptr<HostsWalk>& walk)
{
    if (walk->currentIndex >= walk->hosts.size()) {
        Utilities::Logger::LogNoHostAvailable();
        if (walk->onNoHost) {
            // Answered on the next pass of the event loop, like every other answer,
            // so that an empty list never calls back into a caller still setting up.
            QMetaObject::invokeMethod(
                this, [onNoHost = walk->onNoHost] { onNoHost(); }, Qt::QueuedConnection);
        }
        return;
    }
    const int id = QHostInfo::lookupHost(HostOf(walk->hosts[walk->currentIndex]), this,
                                         SLOT(CurrentHostLookUpFinished(QHostInfo)));
    walks[id] = walk;
}

} // namespace Core::Networking
