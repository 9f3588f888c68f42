#pragma once

#include <QString>
#include <QtGlobal>

namespace Core::Utilities {

// Stamps every Qt debug, warning and critical message as
// "[yyyy-MM-dd hh:mm:ss.zzz] ZELMAR_LOG: message" on standard output. Installed
// first thing in main, so Qt's own start-up warnings are stamped too. The console
// log is for developers; nothing of it reaches the event log.
void CustomMessageHandler(QtMsgType type, const QMessageLogContext& context, const QString& message);

} // namespace Core::Utilities
