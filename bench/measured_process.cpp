#include "bench/measured_process.h"

#include <QDateTime>
#include <QFile>

#include <algorithm>
#include <unistd.h>
#include <utility>

namespace Bench {

namespace {

constexpr int StartTimeoutMs = 10000;
constexpr int StopTimeoutMs = 10000;

QString ProcFile(qint64 pid, const char* name)
{
    return QStringLiteral("/proc/%1/%2").arg(pid).arg(QLatin1String(name));
}

} // namespace

MeasuredProcess::MeasuredProcess(QString name, QString outputFile)
    : name(std::move(name))
    , outputFile(std::move(outputFile))
{
}

MeasuredProcess::~MeasuredProcess()
{
    Stop();
}

bool MeasuredProcess::Start(const QString& program, const QStringList& arguments,
                            const QProcessEnvironment& environment)
{
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setStandardOutputFile(outputFile);
    startedMs = QDateTime::currentMSecsSinceEpoch();
    process.start(program, arguments);
    if (!process.waitForStarted(StartTimeoutMs)) {
        return false;
    }
    pid = process.processId();
    return true;
}

void MeasuredProcess::Stop()
{
    if (process.state() == QProcess::NotRunning) {
        return;
    }
    process.terminate();
    if (!process.waitForFinished(StopTimeoutMs)) {
        process.kill();
        process.waitForFinished(StopTimeoutMs);
    }
}

bool MeasuredProcess::IsRunning() const
{
    return process.state() == QProcess::Running;
}

const QString& MeasuredProcess::Name() const
{
    return name;
}

double MeasuredProcess::WallSeconds() const
{
    return static_cast<double>(QDateTime::currentMSecsSinceEpoch() - startedMs) / 1000.0;
}

double MeasuredProcess::CpuSeconds() const
{
    return CpuSecondsOf(pid);
}

double MeasuredProcess::CpuSecondsOf(qint64 processId)
{
    QFile file(ProcFile(processId, "stat"));
    if (processId <= 0 || !file.open(QIODevice::ReadOnly)) {
        return -1;
    }
    // The command name in parentheses may hold spaces; the fields follow its ")".
    const QByteArray stat = file.readAll();
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    // Fields 14-17 of proc(5): utime, stime, cutime, cstime; after ")" the list
    // starts at field 3.
    constexpr int UserTime = 14 - 3;
    if (fields.size() < UserTime + 4) {
        return -1;
    }
    double ticks = 0;
    for (int i = UserTime; i < UserTime + 4; ++i) {
        ticks += fields[i].toDouble();
    }
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

double MeasuredProcess::ResidentMegabytes() const
{
    return StatusMegabytes("VmRSS:");
}

double MeasuredProcess::PeakResidentMegabytes() const
{
    return StatusMegabytes("VmHWM:");
}

QString MeasuredProcess::OutputTail(int lines) const
{
    QFile file(outputFile);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QStringList all = QString::fromLocal8Bit(file.readAll()).split(QLatin1Char('\n'));
    return all.mid(std::max(0, all.size() - lines)).join(QLatin1Char('\n'));
}

double MeasuredProcess::StatusMegabytes(const char* field) const
{
    QFile file(ProcFile(pid, "status"));
    if (pid <= 0 || !file.open(QIODevice::ReadOnly)) {
        return -1;
    }
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith(field)) {
            // "VmRSS:	  123456 kB"
            return line.mid(static_cast<int>(qstrlen(field))).trimmed().split(' ').value(0).toDouble() /
                   1024.0;
        }
    }
    return -1;
}

} // namespace Bench
