#pragma once

#include <QByteArray>
#include <QObject>
#include <QProcess>
#include <QString>

#include <cstdint>
#include <vector>

namespace Tests {

// Listens to what is played on one null sink of the test sound server by recording
// its monitor source with parec (mono, 16-bit). Tests ask how loud the recording
// was, and how strongly a given tone sounded, over a stretch of it.
class SinkRecorder : public QObject
{
    Q_OBJECT

public:
    static constexpr int SampleRate = 16000;

    explicit SinkRecorder(QString sinkName, QObject* parent = nullptr);
    ~SinkRecorder() override;

    // Starts parec on "<sink>.monitor"; false (with the reason in ErrorString())
    // when it cannot run.
    bool Start();
    void Stop();
    QString ErrorString() const;

    double SecondsRecorded() const;
    // Root mean square of the samples in [from, to) seconds, from 0 (silence) to 1.
    double Rms(double fromSeconds, double toSeconds) const;
    // Amplitude of one frequency in [from, to) seconds (Goertzel), comparable with
    // Rms: a pure full-scale sine of that frequency gives about 0.707.
    double ToneLevel(double frequency, double fromSeconds, double toSeconds) const;

private:
    void ReadAvailable();
    std::vector<std::int16_t> Window(double fromSeconds, double toSeconds) const;

    QString sinkName;
    QProcess process;
    QByteArray pending;
    std::vector<std::int16_t> samples;
    QString errorString;
};

} // namespace Tests
