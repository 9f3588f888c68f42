#pragma once

#include <QProcess>
#include <QString>

namespace Tests {

// Plays silence into both sinks of the test's lane (ZELMAR_TEST_SINK_A and _B) for as
// long as it lives. An idle null sink renders ahead in blocks of up to two seconds and
// is rewound when a player starts on it, so its monitor drops what it had delivered:
// kept busy, the monitors follow what is played in real time.
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
    QProcess keepA;
    QProcess keepB;
    QString errorString;
};

} // namespace Tests
