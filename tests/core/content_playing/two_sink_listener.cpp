#include "tests/core/content_playing/two_sink_listener.h"

#include "tests/core/content_playing/tone_timeline.h"
#include "tests/support/test_timeouts.h"

#include <QDeadlineTimer>
#include <QTest>

#include <algorithm>

namespace Tests {

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
    } else if (!sinks.Start()) {
        errorString = sinks.ErrorString();
    } else if (!recorderA.Start()) {
        errorString = recorderA.ErrorString();
    } else if (!recorderB.Start()) {
        errorString = recorderB.ErrorString();
    } else if (!WaitUntilRecorded(0.2, Timeouts::Process)) {
        errorString = QStringLiteral("the sinks' monitors deliver nothing");
    }
    return errorString.isEmpty();
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
    return QTest::qWaitFor([&]() { return SecondsRecorded() >= seconds; }, timeoutMs);
}

bool TwoSinkListener::WaitForToneLevel(double frequency, const std::function<bool(double)>& holds,
                                       double window, int timeoutMs, double* level)
{
    const double from = SecondsRecorded();
    double measured = -1.0;
    const bool reached = QTest::qWaitFor(
        [&]() {
            const double recorded = SecondsRecorded();
            measured = recorded - window < from
                           ? -1.0
                           : ToneTimeline::Level(A(), frequency, recorded - window, recorded);
            return measured >= 0 && holds(measured);
        },
        timeoutMs);
    if (level != nullptr) {
        *level = measured;
    }
    return reached;
}

} // namespace Tests
