#pragma once

#include <QProcess>
#include <QString>

namespace Tests {

// Keeps both sinks of the test's lane (ZELMAR_TEST_SINK_A and _B) running at a low
// latency by playing silence into each (pacat from /dev/zero) for as long as it
// lives.
//
// An idle null sink renders ahead in blocks of up to two seconds, and when a player
// starts on it PulseAudio rewinds the sink: what its monitor had already delivered
// is dropped, so a recording misses the start of the playback and loses its
// timeline. With silence streaming all the time the sinks never idle, and their
// monitors follow what is played in real time. Silence adds nothing to what is
// heard.
class TestSinksKeepAlive
{
public:
    TestSinksKeepAlive() = default;
    ~TestSinksKeepAlive();

    TestSinksKeepAlive(const TestSinksKeepAlive&) = delete;
    TestSinksKeepAlive& operator=(const TestSinksKeepAlive&) = delete;

    // False (with the reason in ErrorString()) when pacat cannot run.
    bool Start();
    QString ErrorString() const;

private:
    bool StartOn(QProcess& process, const char* sinkVariable);

    QProcess keepA;
    QProcess keepB;
    QString errorString;
};

} // namespace Tests
