#include "tests/support/pcm_analysis.h"

#include <QProcess>
#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Tests {

namespace {

// An audible tone: well above dithering and the sink's silence.
constexpr double AudibleLevel = 0.02;

std::pair<std::size_t, std::size_t> WindowBounds(std::size_t size, double fromSeconds, double toSeconds)
{
    const auto index = [size](double seconds) {
        const auto position = std::llround(seconds * PcmAnalysis::SampleRate);
        return static_cast<std::size_t>(std::clamp<long long>(position, 0, static_cast<long long>(size)));
    };
    return {index(fromSeconds), index(toSeconds)};
}

} // namespace

double PcmAnalysis::Rms(const std::vector<std::int16_t>& samples, double fromSeconds, double toSeconds)
{
    const auto [from, to] = WindowBounds(samples.size(), fromSeconds, toSeconds);
    if (from >= to) {
        return 0.0;
    }
    double sum = 0.0;
    for (std::size_t i = from; i < to; ++i) {
        const double value = samples[i] / 32768.0;
        sum += value * value;
    }
    return std::sqrt(sum / static_cast<double>(to - from));
}

double PcmAnalysis::ToneLevel(const std::vector<std::int16_t>& samples, double frequency, double fromSeconds,
                              double toSeconds)
{
    const auto [from, to] = WindowBounds(samples.size(), fromSeconds, toSeconds);
    if (from >= to) {
        return 0.0;
    }
    const double coefficient = 2.0 * std::cos(2.0 * M_PI * frequency / SampleRate);
    double previous = 0.0;
    double beforePrevious = 0.0;
    for (std::size_t i = from; i < to; ++i) {
        const double current = samples[i] / 32768.0 + coefficient * previous - beforePrevious;
        beforePrevious = previous;
        previous = current;
    }
    const double power =
        previous * previous + beforePrevious * beforePrevious - coefficient * previous * beforePrevious;
    // Peak amplitude is 2·sqrt(power)/N; divided by sqrt(2) to read like an RMS.
    return std::sqrt(std::max(power, 0.0)) * 2.0 / static_cast<double>(to - from) / std::sqrt(2.0);
}

int PcmAnalysis::SecondsDominatedBy(const std::vector<std::int16_t>& samples, double frequency,
                                    const std::vector<double>& candidates)
{
    int seconds = 0;
    const int total = static_cast<int>(samples.size() / SampleRate);
    for (int second = 0; second < total; ++second) {
        const double level = ToneLevel(samples, frequency, second, second + 1);
        const bool loudest = std::all_of(candidates.begin(), candidates.end(), [&](double other) {
            return other == frequency || ToneLevel(samples, other, second, second + 1) < level / 4.0;
        });
        if (level > AudibleLevel && loudest) {
            ++seconds;
        }
    }
    return seconds;
}

std::vector<std::int16_t> PcmAnalysis::DecodeFile(const QString& path)
{
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"),
                 {QStringLiteral("-nostdin"), QStringLiteral("-loglevel"), QStringLiteral("error"),
                  QStringLiteral("-i"), path, QStringLiteral("-ac"), QStringLiteral("1"),
                  QStringLiteral("-ar"), QString::number(SampleRate), QStringLiteral("-f"),
                  QStringLiteral("s16le"), QStringLiteral("-")});
    if (!ffmpeg.waitForFinished(30000) || ffmpeg.exitStatus() != QProcess::NormalExit ||
        ffmpeg.exitCode() != 0) {
        qWarning("ffmpeg could not decode %s: %s %s", qUtf8Printable(path),
                 qUtf8Printable(ffmpeg.errorString()), ffmpeg.readAllStandardError().constData());
        return {};
    }
    const QByteArray bytes = ffmpeg.readAllStandardOutput();
    std::vector<std::int16_t> samples(static_cast<std::size_t>(bytes.size() / 2));
    std::memcpy(samples.data(), bytes.constData(), samples.size() * 2);
    return samples;
}

} // namespace Tests
