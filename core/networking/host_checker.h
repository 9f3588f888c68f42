#pragma once

#include <QHostInfo>
#include <QObject>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Core::Networking {

// Answers whether a host name resolves: for one address (the chosen server), or by
// walking a list of download domains in order until one does. Nothing is
// connected to; a name that resolves counts as available.
//
// Every call gets its own answer exactly once, later, on this object's thread,
// even when several lookups overlap (statistics and the configuration loader may
// ask about the server at the same moment). Answers still pending when the checker
// is destroyed are dropped.
class HostChecker : public QObject
{
    Q_OBJECT

public:
    explicit HostChecker(QObject* parent = nullptr);
    ~HostChecker() override;

    // `url` must carry a scheme ("https://host/api/v1/"): its host part is looked up.
    void CheckHostAvailability(const std::string& url, std::function<void()> onSuccess,
                               std::function<void()> onFailure);
    // Looks the entries up one at a time, in order; `onHostFound` gets the first one
    // that resolves, exactly as it stands in the list. An empty list, or one where
    // nothing resolves, answers `onNoHost`.
    void CheckHostsAvailability(const std::vector<std::string>& urls,
                                std::function<void(std::string)> onHostFound, std::function<void()> onNoHost);

private slots:
    void SingleHostLookUpFinished(const QHostInfo& info);
    void CurrentHostLookUpFinished(const QHostInfo& info);

private:
    struct SingleLookup
    {
        std::function<void()> onSuccess;
        std::function<void()> onFailure;
    };

    struct HostsWalk
    {
        std::vector<std::string> hosts;
        std::size_t currentIndex = 0;
        std::function<void(std::string)> onHostFound;
        std::function<void()> onNoHost;
    };

    static QString HostOf(const std::string& url);
    // Starts the lookup of the walk's current entry, or answers `onNoHost` when the
    // list is used up.
    void LookUpCurrentHost(const std::shared_ptr<HostsWalk>& walk);

    std::map<int, SingleLookup> singleLookups;
    std::map<int, std::shared_ptr<HostsWalk>> walks;
};

} // namespace Core::Networking
