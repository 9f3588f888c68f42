#include "tests/core/content_playing/two_sink_listener.h"

#include "tests/core/content_playing/tone_timeline.h"
#include "tests/support/test_timeouts.h"

#include <QDeadlineTimer>
#include <QTest>

#include <algorithm>

namespace Tests {

namespace {

// Recorded before Start() returns: long enough to show that the monitor delivers.
constexpr double FlowingSeconds = 0.2;

} // namespace

TwoSinkListener::TwoSinkListener()
    : recorderA(qEnvironmentVariable("ZELMAR_TEST_SINK_A"))
    , recorderB(qEnvironmentVariable("ZELMAR_TEST_SINK_B"))
{
}

bool TwoSinkListener::Start()
{
    if (qEnvironmentVariableIsEmpty("ZELMAR_TEST_SINK_A") ||
        qEnvironmentVariableIsEmpty("ZELMAR_TEST_SINK_B")) {
        errorString = QStringLiteral("the sink names are not set: register the test with NEEDS sound");
        return false;
    }
    if (!sinks.Start()) {
        errorString = sinks.ErrorString();
        return false;
    }
    if (!recorderA.Start()) {
        errorString = recorderA.ErrorString();
        return false;
    }
    if (!recorderB.Start()) {
        errorString = recorderB.ErrorString();
        return false;
    }
    if (!WaitUntilRecorded(FlowingSeconds, Timeouts::Process)) {
        errorString = QStringLiteral("the sinks' monitors deliver nothing");
        return false;
    }
    return true;
}

QString TwoSinkListener::ErrorString() const
{
    return errorString;
}

const std::vector<std::int16_t>& TwoSinkListener::A() const
{
    return recorderA.Samples();
}

const std::vector<std::int16_t>& TwoSinkListener::B() const
{
    return recorderB.Samples();
}

double TwoSinkListener::SecondsRecorded() const
{
    return std::min(recorderA.SecondsRecorded(), recorderB.SecondsRecorded());
}

bool TwoSinkListener::WaitUntilRecorded(double seconds, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (SecondsRecorded() < seconds) {
        if (deadline.hasExpired()) {
            return false;
        }
        QTest::qWait(20);
    }
    return true;
}

bool TwoSinkListener::WaitForToneLevel(double frequency, const std::function<bool(double)>& holds,
                                       double window, int timeoutMs, double* level)
{
    const double from = SecondsRecorded();
    double measured = -1.0;
    const bool reached = QTest::qWaitFor(
        [&]() {
            const double recorded = SecondsRecorded();
            if (recorded - window < from) {
                return false;
            }
            measured = ToneTimeline::Level(A(), frequency, recorded - window, recorded);
            return holds(measured);
        },
        timeoutMs);
    if (level != nullptr) {
        *level = measured;
    }
    return reached;
}

} // namespace Tests
