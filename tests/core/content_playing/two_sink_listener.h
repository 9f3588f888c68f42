#pragma once

#include "tests/core/content_playing/test_sinks_keep_alive.h"
#include "tests/support/sink_recorder.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

namespace Tests {

// Listens to both null sinks of the test sound server in real time: each sink is
// kept running with silence and its monitor recorded. Start() returns once both
// recordings flow, so that everything played afterwards is in them, in step with
// the clock.
class TwoSinkListener
{
public:
    TwoSinkListener();

    TwoSinkListener(const TwoSinkListener&) = delete;
    TwoSinkListener& operator=(const TwoSinkListener&) = delete;

    // False, with the reason in ErrorString(), when a tool is missing or a
    // recording does not flow.
    bool Start();
    QString ErrorString() const;

    // The default sink (ZELMAR_TEST_SINK_A) and the other one.
    const std::vector<std::int16_t>& A() const;
    const std::vector<std::int16_t>& B() const;
    double SecondsRecorded() const;
    // Waits until both recordings reach `seconds` from their start; false on a
    // timeout.
    bool WaitUntilRecorded(double seconds, int timeoutMs);
    // Waits until the tone's level on the default sink, over the latest `window`
    // seconds recorded after the call, satisfies `holds`: a pause, a mute or a
    // volume change reaches the sink a moment later, longer on a loaded machine.
    // False on a timeout; `level` receives the last level measured.
    bool WaitForToneLevel(double frequency, const std::function<bool(double)>& holds, double window,
                          int timeoutMs, double* level = nullptr);

private:
    TestSinksKeepAlive sinks;
    SinkRecorder recorderA;
    SinkRecorder recorderB;
    QString errorString;
};

} // namespace Tests
