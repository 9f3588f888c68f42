#include "tests/core/content_playing/sink_keep_alive.h"

#include <utility>

namespace Tests {

SinkKeepAlive::SinkKeepAlive(QString sinkName)
    : sinkName(std::move(sinkName))
{
}

SinkKeepAlive::~SinkKeepAlive()
{
    if (process.state() == QProcess::NotRunning) {
        return;
    }
    process.terminate();
    if (!process.waitForFinished(3000)) {
        process.kill();
        process.waitForFinished(3000);
    }
}

bool SinkKeepAlive::Start()
{
    if (qEnvironmentVariableIsEmpty("PULSE_SERVER")) {
        errorString = QStringLiteral("PULSE_SERVER is not set: register the test with NEEDS sound");
        return false;
    }
    process.setStandardInputFile(QStringLiteral("/dev/zero"));
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral("pacat"),
                  {QStringLiteral("--playback"), QStringLiteral("--device=") + sinkName,
                   QStringLiteral("--raw"), QStringLiteral("--format=s16le"), QStringLiteral("--rate=44100"),
                   QStringLiteral("--channels=2"), QStringLiteral("--latency-msec=30")});
    if (!process.waitForStarted(5000)) {
        errorString =
            QStringLiteral("pacat did not start (run scripts/install-deps): ") + process.errorString();
        return false;
    }
    return true;
}

QString SinkKeepAlive::ErrorString() const
{
    return errorString;
}

} // namespace Tests
