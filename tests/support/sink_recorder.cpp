#include "tests/support/sink_recorder.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>
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
                   QStringLiteral("--rate=%1").arg(SampleRate), QStringLiteral("--raw"),
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
    return static_cast<double>(samples.size()) / SampleRate;
}

double SinkRecorder::Rms(double fromSeconds, double toSeconds) const
{
    const auto window = Window(fromSeconds, toSeconds);
    if (window.empty()) {
        return 0.0;
    }
    double sum = 0.0;
    for (const auto sample : window) {
        const double value = sample / 32768.0;
        sum += value * value;
    }
    return std::sqrt(sum / static_cast<double>(window.size()));
}

double SinkRecorder::ToneLevel(double frequency, double fromSeconds, double toSeconds) const
{
    const auto window = Window(fromSeconds, toSeconds);
    if (window.empty()) {
        return 0.0;
    }
    const double omega = 2.0 * M_PI * frequency / SampleRate;
    const double coefficient = 2.0 * std::cos(omega);
    double previous = 0.0;
    double beforePrevious = 0.0;
    for (const auto sample : window) {
        const double current = sample / 32768.0 + coefficient * previous - beforePrevious;
        beforePrevious = previous;
        previous = current;
    }
    const double power =
        previous * previous + beforePrevious * beforePrevious - coefficient * previous * beforePrevious;
    // Peak amplitude is 2·sqrt(power)/N; divided by sqrt(2) to read like an RMS.
    return std::sqrt(std::max(power, 0.0)) * 2.0 / static_cast<double>(window.size()) / std::sqrt(2.0);
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

std::vector<std::int16_t> SinkRecorder::Window(double fromSeconds, double toSeconds) const
{
    const auto clamp = [this](double seconds) {
        const auto index = static_cast<long long>(std::llround(seconds * SampleRate));
        return static_cast<std::size_t>(
            std::clamp<long long>(index, 0, static_cast<long long>(samples.size())));
    };
    const std::size_t from = clamp(fromSeconds);
    const std::size_t to = clamp(toSeconds);
    if (from >= to) {
        return {};
    }
    return {samples.begin() + static_cast<std::ptrdiff_t>(from),
            samples.begin() + static_cast<std::ptrdiff_t>(to)};
}

} // namespace Tests
