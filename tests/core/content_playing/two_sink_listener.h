#pragma once

#include "tests/core/content_playing/test_sinks_keep_alive.h"
#include "tests/support/sink_recorder.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

namespace Tests {

// Records both sinks of the test's lane in real time, kept busy with silence. Start()
// returns once both recordings flow, so that everything played afterwards is in them.
class TwoSinkListener
{
public:
    TwoSinkListener();

    // False, with the reason in ErrorString(), when a tool is missing or a recording
    // does not flow.
    bool Start();
    QString ErrorString() const;

    // The default sink (ZELMAR_TEST_SINK_A) and the other one.
    const std::vector<std::int16_t>& A() const;
    const std::vector<std::int16_t>& B() const;
    double SecondsRecorded() const;
    // False when both recordings have not reached `seconds` within the timeout.
    bool WaitUntilRecorded(double seconds, int timeoutMs);
    // Waits until the tone's level on the default sink over the latest `window` seconds
    // recorded after the call satisfies `holds`; `level` receives the last one measured.
    bool WaitForToneLevel(double frequency, const std::function<bool(double)>& holds, double window,
                          int timeoutMs, double* level = nullptr);

private:
    TestSinksKeepAlive sinks;
    SinkRecorder recorderA;
    SinkRecorder recorderB;
    QString errorString;
};

} // namespace Tests
