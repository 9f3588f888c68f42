#include "core/networking/test_connect_helper.h"

#include <utility>

namespace Core::Networking {

void TestConnectHelper::LookUp(const std::string& url, std::function<void()> onSuccess,
                               std::function<void()> onFailure)
{
    hostChecker.CheckHostAvailability(url, std::move(onSuccess), std::move(onFailure));
}

} // namespace Core::Networking
