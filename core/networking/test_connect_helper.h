#pragma once

#include "core/networking/host_checker.h"

#include <functional>
#include <string>

namespace Core::Networking {

// The server check the sign-in screens run before they offer a server: does its
// host name resolve. Keep the helper (the callers hold it by shared pointer)
// until the answer has come; answers pending when it is destroyed are dropped.
class TestConnectHelper
{
public:
    // `url` carries a scheme, like a server's API address.
    void LookUp(const std::string& url, std::function<void()> onSuccess, std::function<void()> onFailure);

private:
    HostChecker hostChecker;
};

} // namespace Core::Networking
