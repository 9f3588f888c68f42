#pragma once

#include <QStringList>

namespace Tests {

// QML's own complaints while screens load and run (a misspelt theme property, a
// binding to something not set yet), which no person would see on the screen but
// which leave part of it blank. Screen tests record them and fail on any.
class QmlWarnings
{
public:
    QmlWarnings() = delete;

    // From now on for the rest of the process; messages still reach the handler
    // that was installed before.
    static void StartRecording();
    // What was recorded since the last call.
    static QStringList Take();
};

} // namespace Tests
