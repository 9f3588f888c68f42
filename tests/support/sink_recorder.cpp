#include "tests/support/sink_recorder.h"

#include "tests/support/pcm_analysis.h"

#include <QtGlobal>

#include <cstring>
#include <utility>

namespace Tests {

SinkRecorder::SinkRecorder(QString sinkName, QObject* parent)
    : QObject(parent)
    , sinkName(std::move(sinkName))
{
    connect(&process, &QProcess::readyReadStandardOutput, this, &SinkRecorder::ReadAvailable);
}

SinkRecorder::~SinkRecorder()
{
    Stop();
}

bool SinkRecorder::Start()
{
    if (qEnvironmentVariableIsEmpty("PULSE_SERVER")) {
        errorString = QStringLiteral("PULSE_SERVER is not set: register the test with NEEDS sound");
        return false;
    }
    samples.clear();
    pending.clear();
    process.start(QStringLiteral("parec"),
                  {QStringLiteral("--device=") + sinkName + QStringLiteral(".monitor"),
                   QStringLiteral("--format=s16le"), QStringLiteral("--channels=1"),
                   QStringLiteral("--rate=%1").arg(PcmAnalysis::SampleRate), QStringLiteral("--raw"),
                   QStringLiteral("--latency-msec=20")});
    if (!process.waitForStarted(5000)) {
        errorString = QStringLiteral("parec did not start: ") + process.errorString();
        return false;
    }
    return true;
}

void SinkRecorder::Stop()
{
    if (process.state() == QProcess::NotRunning) {
        return;
    }
    process.terminate();
    if (!process.waitForFinished(3000)) {
        process.kill();
        process.waitForFinished(3000);
    }
    ReadAvailable();
}

QString SinkRecorder::ErrorString() const
{
    return errorString;
}

double SinkRecorder::SecondsRecorded() const
{
    return static_cast<double>(samples.size()) / PcmAnalysis::SampleRate;
}

const std::vector<std::int16_t>& SinkRecorder::Samples() const
{
    return samples;
}

void SinkRecorder::ReadAvailable()
{
    pending.append(process.readAllStandardOutput());
    const int whole = pending.size() / 2 * 2;
    const std::size_t oldSize = samples.size();
    samples.resize(oldSize + static_cast<std::size_t>(whole / 2));
    std::memcpy(samples.data() + oldSize, pending.constData(), static_cast<std::size_t>(whole));
    pending.remove(0, whole);
}

} // namespace Tests
