#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace Bench {

// A program the benchmarks run and watch from outside, as the kernel sees it:
// processor time and memory are read from /proc while it runs, so a figure can be
// taken at any moment (when music is first heard, every ten seconds) rather than
// only at its end. Its output goes to a file, shown when it fails.
class MeasuredProcess
{
public:
    MeasuredProcess(QString name, QString outputFile);
    ~MeasuredProcess();

    MeasuredProcess(const MeasuredProcess&) = delete;
    MeasuredProcess& operator=(const MeasuredProcess&) = delete;

    bool Start(const QString& program, const QStringList& arguments, const QProcessEnvironment& environment);
    // SIGTERM, then kill; the figures are to be read before.
    void Stop();
    bool IsRunning() const;
    const QString& Name() const;

    // Seconds since Start().
    double WallSeconds() const;
    // User and system time of the process, its threads and any children it has
    // waited for; negative when it cannot be read.
    double CpuSeconds() const;
    // The same of any process, by its id.
    static double CpuSecondsOf(qint64 processId);
    // VmRSS and VmHWM (the peak) in MB; negative when they cannot be read.
    double ResidentMegabytes() const;
    double PeakResidentMegabytes() const;
    // The last lines of its output, for a failure message.
    QString OutputTail(int lines = 20) const;

private:
    double StatusMegabytes(const char* field) const;

    QString name;
    QString outputFile;
    QProcess process;
    qint64 pid = 0;
    qint64 startedMs = 0;
};

} // namespace Bench
