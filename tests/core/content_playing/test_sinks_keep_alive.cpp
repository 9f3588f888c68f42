#include "tests/core/content_playing/test_sinks_keep_alive.h"

#include <utility>

namespace Tests {

TestSinksKeepAlive::~TestSinksKeepAlive()
{
    for (QProcess* process : {&keepA, &keepB}) {
        process->kill();
        process->waitForFinished(3000);
    }
}

bool TestSinksKeepAlive::Start()
{
    if (qEnvironmentVariableIsEmpty("PULSE_SERVER")) {
        errorString = QStringLiteral("PULSE_SERVER is not set: register the test with NEEDS sound");
        return false;
    }
    for (auto [process, sink] :
         {std::pair(&keepA, "ZELMAR_TEST_SINK_A"), std::pair(&keepB, "ZELMAR_TEST_SINK_B")}) {
        process->setStandardInputFile(QStringLiteral("/dev/zero"));
        process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process->start(QStringLiteral("pacat"),
                       {QStringLiteral("--playback"),
                        QStringLiteral("--device=") + qEnvironmentVariable(sink), QStringLiteral("--raw"),
                        QStringLiteral("--format=s16le"), QStringLiteral("--rate=44100"),
                        QStringLiteral("--channels=2"), QStringLiteral("--latency-msec=30")});
        if (!process->waitForStarted(5000)) {
            errorString =
                QStringLiteral("pacat did not start (run scripts/install-deps): ") + process->errorString();
            return false;
        }
    }
    return true;
}

QString TestSinksKeepAlive::ErrorString() const
{
    return errorString;
}

} // namespace Tests
