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
    explicit SinkRecorder(QString sinkName, QObject* parent = nullptr);
    ~SinkRecorder() override;

    // Starts parec on "<sink>.monitor"; false (with the reason in ErrorString())
    // when it cannot run.
    bool Start();
    void Stop();
    QString ErrorString() const;

    double SecondsRecorded() const;
    // What was heard so far, at PcmAnalysis::SampleRate; analyse it with PcmAnalysis.
    const std::vector<std::int16_t>& Samples() const;

private:
    void ReadAvailable();

    QString sinkName;
    QProcess process;
    QByteArray pending;
    std::vector<std::int16_t> samples;
    QString errorString;
};

} // namespace Tests
