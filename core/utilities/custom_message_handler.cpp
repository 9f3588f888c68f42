#include "core/utilities/custom_message_handler.h"

#include "core/utilities/clock.h"

#include <QDateTime>

#include <cstdio>

namespace Core::Utilities {

void CustomMessageHandler(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    Q_UNUSED(type)
    Q_UNUSED(context)
    // The console speaks the locale's encoding; what it cannot show is lost here
    // rather than garbled further down.
    const QString printable = QString::fromLocal8Bit(message.toLocal8Bit());
    const QString stamp = Clock::CurrentLocalDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"));
    // Both substitutions in one pass, so a "%1" inside the message stays as it is.
    const QString line = QStringLiteral("[%1] ZELMAR_LOG: %2").arg(stamp, printable);
    std::printf("%s\n", line.toLocal8Bit().constData());
    std::fflush(stdout);
}

} // namespace Core::Utilities
