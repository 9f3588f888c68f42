// Whether the program's memory stays put over a long run: the real zelmar-player,
// signed in to the demo point of sale on the reference service, playing its
// schedule with music, video and photos on a virtual display, its resident set
// sampled every 10 s. Goals: at most 200 MB at the end, and less than 5 % growth
// from half-way to the end. For scale, cvlc playing the player's first video on the
// same display for a minute.
//
//   app_memory_bench [MINUTES]      (10 by default)
//
// Time counts from the moment the player is heard with its start-up downloads over.

#include "bench/demo_stage.h"
#include "bench/measured_process.h"
#include "bench/stored_sign_in.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QTime>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

using Bench::DemoStage;
using Bench::MeasuredProcess;

constexpr int SampleSeconds = 10;
constexpr int ReferenceSeconds = 60;
constexpr double EndGoalMegabytes = 200;
constexpr double GrowthGoalPercent = 5;
constexpr int StillHeardTimeoutMs = 10000;

bool PlaysVideoAndPhotos(const QJsonObject& period)
{
    return period.value("video_playlist_id").toInt() != 0 && period.value("photo_playlist_id").toInt() != 0;
}

// The period of the template's day 0 that covers `time` ("00:00" as an end is
// midnight).
QJsonObject PeriodAt(const QJsonObject& configuration, const QTime& time)
{
    const QString now = time.toString(QStringLiteral("HH:mm"));
    for (const QJsonValue& day : configuration.value("schedule").toArray()) {
        if (day.toObject().value("day_offset").toInt() != 0) {
            continue;
        }
        for (const QJsonValue& period : day.toObject().value("periods").toArray()) {
            const QString start = period.toObject().value("start_time_str").toString();
            QString end = period.toObject().value("end_time_str").toString();
            if (end == QLatin1String("00:00")) {
                end = QStringLiteral("24:00");
            }
            if (start <= now && now < end) {
                return period.toObject();
            }
        }
    }
    return {};
}

// The demo's night periods show photos only. A run that falls into one gives
// those periods the video and photo playlists of the first period that has both,
// so that the run measures what it says at any hour.
bool WithVideoAtNight(QJsonObject* configuration)
{
    QJsonObject donor;
    for (const QJsonValue& day : configuration->value("schedule").toArray()) {
        for (const QJsonValue& period : day.toObject().value("periods").toArray()) {
            if (donor.isEmpty() && PlaysVideoAndPhotos(period.toObject())) {
                donor = period.toObject();
            }
        }
    }
    if (donor.isEmpty()) {
        return false;
    }
    QJsonArray days;
    for (const QJsonValue& day : configuration->value("schedule").toArray()) {
        QJsonObject dayObject = day.toObject();
        QJsonArray periods;
        for (const QJsonValue& period : dayObject.value("periods").toArray()) {
            QJsonObject periodObject = period.toObject();
            if (!PlaysVideoAndPhotos(periodObject)) {
                periodObject.insert("video_playlist_id", donor.value("video_playlist_id"));
                periodObject.insert("photo_playlist_id", donor.value("photo_playlist_id"));
            }
            periods.append(periodObject);
        }
        dayObject.insert("periods", periods);
        days.append(dayObject);
    }
    configuration->insert("schedule", days);
    return true;
}

struct Sample
{
    int seconds = 0;
    double megabytes = 0;
};

// Samples `process` every SampleSeconds for `seconds`, the first sample at once.
bool Sampled(MeasuredProcess& process, int seconds, std::vector<Sample>* samples, QString* error)
{
    for (int at = 0; at <= seconds; at += SampleSeconds) {
        if (at > 0 && !DemoStage::Pass(SampleSeconds * 1000)) {
            return false;
        }
        const double megabytes = process.ResidentMegabytes();
        if (!process.IsRunning() || megabytes < 0) {
            *error = process.Name() +
                     QStringLiteral(" ended after %1 s of the run; its last output:\n").arg(at) +
                     process.OutputTail();
            return false;
        }
        samples->push_back({at, megabytes});
    }
    return true;
}

double ValueAt(const std::vector<Sample>& samples, int seconds)
{
    for (const Sample& sample : samples) {
        if (sample.seconds == seconds) {
            return sample.megabytes;
        }
    }
    return -1;
}

double Largest(const std::vector<Sample>& samples)
{
    double largest = 0;
    for (const Sample& sample : samples) {
        largest = std::max(largest, sample.megabytes);
    }
    return largest;
}

int Fail(const QString& error)
{
    std::fprintf(stderr, "error: %s\n",
                 DemoStage::Interrupted() ? "interrupted; stopping what was started" : qPrintable(error));
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    if (Bench::StoredSignIn::Requested(argc, argv)) {
        return Bench::StoredSignIn::Run(argc, argv);
    }
    QCoreApplication application(argc, argv);
    DemoStage::StopOnInterrupt();
    const int minutes = DemoStage::CountArgument(argc, argv, "MINUTES", 10);
    if (minutes == 0) {
        return 2;
    }
    const int seconds = minutes * 60;
    // Half-way, on a sample: minute 5 of the default ten.
    const int halfway = seconds / 2 / SampleSeconds * SampleSeconds;

    DemoStage stage;
    QString error;
    if (!stage.Start(&error)) {
        return Fail(error);
    }
    QJsonObject configuration = stage.ScenarioConfiguration(&error);
    if (configuration.isEmpty()) {
        return Fail(error);
    }
    // From now to the run's end, with room for the start.
    const QTime now = QTime::currentTime();
    const QTime end = now.addSecs(seconds + DemoStage::StartTimeoutMs / 1000);
    if (!PlaysVideoAndPhotos(PeriodAt(configuration, now)) ||
        !PlaysVideoAndPhotos(PeriodAt(configuration, end))) {
        if (!WithVideoAtNight(&configuration) ||
            stage.Service().ReplaceConfiguration(QLatin1String(DemoStage::ObjectCode), configuration) <= 0) {
            return Fail(QStringLiteral("the schedule with video at night was not taken: ") +
                        stage.Service().ErrorString());
        }
        std::printf(
            "note: the demo's night periods play no video; for this run they play the daytime one's\n");
    }
    const QJsonObject period = PeriodAt(configuration, now);

    QString dataDirectory;
    if (!stage.PrepareDataDirectory(QStringLiteral("player"), false, &dataDirectory, &error)) {
        return Fail(error);
    }
    std::printf("zelmar-player playing the demo point of sale %s with music, video and photos for %d min\n"
                "(period \"%s\" %s-%s; a virtual X display, Qt Quick's software renderer; sound into a "
                "PulseAudio null sink)\n",
                DemoStage::ObjectCode, minutes, qPrintable(period.value("name").toString()),
                qPrintable(period.value("start_time_str").toString()),
                qPrintable(period.value("end_time_str").toString()));
    std::fflush(stdout);

    MeasuredProcess player(QStringLiteral("zelmar-player"), stage.WorkPath(QStringLiteral("player.out")));
    DemoStage::StartUp startUp;
    if (!stage.StartApplication(player, dataDirectory, {QStringLiteral("music"), QStringLiteral("video")},
                                &startUp, &error)) {
        return Fail(error);
    }
    bool viewable = false;
    if (!stage.MainWindowViewable(&viewable, &error)) {
        return Fail(error);
    }
    if (!viewable) {
        return Fail(QStringLiteral("the window is not on the display"));
    }
    const QString video =
        stage.MediaFile(QStringLiteral("video"), startUp.firstTracks.value(QStringLiteral("video")));
    std::printf("start-up: heard after %.1f s, downloads over by %.1f s; first video %s\n",
                startUp.heardSeconds, startUp.cacheFullSeconds, qPrintable(QFileInfo(video).fileName()));
    std::fflush(stdout);

    std::vector<Sample> samples;
    if (!Sampled(player, seconds, &samples, &error)) {
        return Fail(error);
    }
    const double peak = player.PeakResidentMegabytes();
    if (!stage.WaitUntilHeard(player, StillHeardTimeoutMs)) {
        return Fail(QStringLiteral("zelmar-player was no longer heard at the end of the run"));
    }
    player.Stop();

    std::printf("RSS every %d s, MB (one line a minute):\n", SampleSeconds);
    for (const Sample& sample : samples) {
        const bool lineStart = sample.seconds % 60 == 0;
        if (lineStart) {
            std::printf("%s  %2d min:", sample.seconds == 0 ? "" : "\n", sample.seconds / 60);
        }
        std::printf(" %6.1f", sample.megabytes);
    }
    std::printf("\n");
    const double atHalfway = ValueAt(samples, halfway);
    const double atEnd = ValueAt(samples, seconds);
    const double growth = 100.0 * (atEnd - atHalfway) / atHalfway;
    std::printf("RSS at minute %g: %.1f MB\n", halfway / 60.0, atHalfway);
    std::printf("RSS at the end (minute %d): %.1f MB (goal <= %.0f MB: %s)\n", minutes, atEnd,
                EndGoalMegabytes, atEnd <= EndGoalMegabytes ? "met" : "NOT met");
    std::printf("growth from minute %g to the end: %+.1f %% (goal < %.0f %%: %s)\n", halfway / 60.0, growth,
                GrowthGoalPercent, growth < GrowthGoalPercent ? "met" : "NOT met");
    std::printf("peak RSS: %.1f MB sampled, %.1f MB by the kernel (VmHWM, start-up included)\n",
                Largest(samples), peak);
    std::fflush(stdout);

    if (video.isEmpty()) {
        return Fail(QStringLiteral("the first video is not among the served files"));
    }
    MeasuredProcess cvlc(QStringLiteral("cvlc"), stage.WorkPath(QStringLiteral("cvlc.out")));
    if (!stage.StartCvlc(cvlc, video, true, &error)) {
        return Fail(error);
    }
    std::vector<Sample> reference;
    if (!Sampled(cvlc, ReferenceSeconds, &reference, &error)) {
        return Fail(error);
    }
    std::printf("for scale, cvlc repeating %s on the same display for %d s: RSS %.1f MB at the end, "
                "peak %.1f MB (VmHWM)\n",
                qPrintable(QFileInfo(video).fileName()), ReferenceSeconds, reference.back().megabytes,
                cvlc.PeakResidentMegabytes());
    return 0;
}
