#include "tests/support/event_log.h"

#include "core/utilities/logger.h"

#include <QFile>
#include <QRegularExpression>

namespace Tests {

QString EventLog::Text()
{
    QFile file(QString::fromStdString(Core::Utilities::Logger::GetLogFileName()));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QString::fromUtf8(file.readAll());
}

QStringList EventLog::Entries()
{
    static const QRegularExpression stamp(QStringLiteral("^\\d\\d\\.\\d\\d\\.\\d{4} \\d\\d:\\d\\d:\\d\\d: "));
    QStringList entries;
    // Each entry ends with an empty line.
    for (QString entry : Text().split(QStringLiteral("\n\n"), Qt::SkipEmptyParts)) {
        entries.append(entry.remove(stamp));
    }
    return entries;
}

int EventLog::Count(const QString& entry)
{
    return Entries().count(entry);
}

} // namespace Tests
