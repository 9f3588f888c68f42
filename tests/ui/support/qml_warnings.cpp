#include "tests/ui/support/qml_warnings.h"

#include <QMutex>
#include <QtGlobal>

namespace Tests {

namespace {

QMutex mutex;
QStringList recorded;
QtMessageHandler previousHandler = nullptr;
bool recording = false;

void Record(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    // The screens hand QML's warnings to the log with a "QML:" prefix; a document's
    // own address marks the rest.
    if (type != QtDebugMsg && type != QtInfoMsg &&
        (message.startsWith(QLatin1String("QML:")) || message.contains(QLatin1String("qrc:/ui_kit")))) {
        QMutexLocker lock(&mutex);
        recorded.append(message);
    }
    if (previousHandler != nullptr) {
        previousHandler(type, context, message);
    }
}

} // namespace

void QmlWarnings::StartRecording()
{
    QMutexLocker lock(&mutex);
    if (!recording) {
        recording = true;
        previousHandler = qInstallMessageHandler(Record);
    }
}

QStringList QmlWarnings::Take()
{
    QMutexLocker lock(&mutex);
    QStringList taken;
    taken.swap(recorded);
    return taken;
}

} // namespace Tests
