#pragma once

#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"

#include <string>

namespace Tests {

// Signs in through the product's own client, for tests that need a real token from
// the reference service before they exercise something else.
class TestSignIn
{
public:
    TestSignIn() = delete;

    // The token, or empty when the sign-in failed or did not answer in time.
    static std::string Token(const Core::DataTypes::Auth::Server& server,
                             const Core::DataTypes::Auth::PlaybackObject& object, const std::string& login,
                             const std::string& password);
};

} // namespace Tests
