#pragma once

#include "tests/core/content_playing/sink_keep_alive.h"

#include <QString>

namespace Tests {

// Both sinks of the test's lane (ZELMAR_TEST_SINK_A and _B) kept running, so that
// libvlc plays in real time from its first sample whichever sink it is sent to.
class TestSinksKeepAlive
{
public:
    TestSinksKeepAlive();

    // False (with the reason in ErrorString()) when either cannot be kept running.
    bool Start();
    QString ErrorString() const;

private:
    SinkKeepAlive keepA;
    SinkKeepAlive keepB;
    QString errorString;
};

} // namespace Tests
