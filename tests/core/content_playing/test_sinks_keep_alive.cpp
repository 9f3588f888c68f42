#include "tests/core/content_playing/test_sinks_keep_alive.h"

#include <QtGlobal>

namespace Tests {

TestSinksKeepAlive::TestSinksKeepAlive()
    : keepA(qEnvironmentVariable("ZELMAR_TEST_SINK_A"))
    , keepB(qEnvironmentVariable("ZELMAR_TEST_SINK_B"))
{
}

bool TestSinksKeepAlive::Start()
{
    if (!keepA.Start()) {
        errorString = keepA.ErrorString();
        return false;
    }
    if (!keepB.Start()) {
        errorString = keepB.ErrorString();
        return false;
    }
    return true;
}

QString TestSinksKeepAlive::ErrorString() const
{
    return errorString;
}

} // namespace Tests
