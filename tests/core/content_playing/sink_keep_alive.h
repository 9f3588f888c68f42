#pragma once

#include <QProcess>
#include <QString>

namespace Tests {

// Keeps one null sink of the test sound server running at a low latency by
// playing silence into it (pacat from /dev/zero) for as long as it lives.
//
// An idle null sink renders ahead in blocks of up to two seconds, and when a player
// starts on it PulseAudio rewinds the sink: what its monitor had already delivered
// is dropped, so a recording misses the start of the playback and loses its
// timeline. With silence streaming all the time the sink never idles, and the
// monitor follows what is played in real time, without gaps. Silence adds nothing
// to what is heard.
class SinkKeepAlive
{
public:
    explicit SinkKeepAlive(QString sinkName);
    ~SinkKeepAlive();

    SinkKeepAlive(const SinkKeepAlive&) = delete;
    SinkKeepAlive& operator=(const SinkKeepAlive&) = delete;

    // False (with the reason in ErrorString()) when pacat cannot run.
    bool Start();
    QString ErrorString() const;

private:
    QString sinkName;
    QProcess process;
    QString errorString;
};

} // namespace Tests
