#include "tests/support/test_sign_in.h"

#include "core/networking/server_connection.h"
#include "tests/support/test_timeouts.h"

#include <QtTest>

#include <memory>
#include <utility>

namespace Tests {

std::string TestSignIn::Token(const Core::DataTypes::Auth::Server& server,
                              const Core::DataTypes::Auth::PlaybackObject& object, const std::string& login,
                              const std::string& password)
{
    Core::Networking::ServerConnection connection(server);
    std::string received;
    bool failed = false;
    connection.SignIn(
        login, password, object, [&](std::string value) { received = std::move(value); },
        [&](std::shared_ptr<Core::DataTypes::NetworkError>) { failed = true; });
    if (!QTest::qWaitFor([&] { return !received.empty() || failed; }, Timeouts::Process)) {
        return {};
    }
    return received;
}

} // namespace Tests
