#include "tests/core/content_playing/test_sinks_keep_alive.h"

namespace Tests {

TestSinksKeepAlive::~TestSinksKeepAlive()
{
    for (QProcess* process : {&keepA, &keepB}) {
        if (process->state() != QProcess::NotRunning) {
            process->terminate();
            if (!process->waitForFinished(3000)) {
                process->kill();
                process->waitForFinished(3000);
            }
        }
    }
}

bool TestSinksKeepAlive::Start()
{
    if (qEnvironmentVariableIsEmpty("PULSE_SERVER")) {
        errorString = QStringLiteral("PULSE_SERVER is not set: register the test with NEEDS sound");
        return false;
    }
    return StartOn(keepA, "ZELMAR_TEST_SINK_A") && StartOn(keepB, "ZELMAR_TEST_SINK_B");
}

QString TestSinksKeepAlive::ErrorString() const
{
    return errorString;
}

bool TestSinksKeepAlive::StartOn(QProcess& process, const char* sinkVariable)
{
    process.setStandardInputFile(QStringLiteral("/dev/zero"));
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral("pacat"),
                  {QStringLiteral("--playback"),
                   QStringLiteral("--device=") + qEnvironmentVariable(sinkVariable), QStringLiteral("--raw"),
                   QStringLiteral("--format=s16le"), QStringLiteral("--rate=44100"),
                   QStringLiteral("--channels=2"), QStringLiteral("--latency-msec=30")});
    if (!process.waitForStarted(5000)) {
        errorString =
            QStringLiteral("pacat did not start (run scripts/install-deps): ") + process.errorString();
        return false;
    }
    return true;
}

} // namespace Tests
