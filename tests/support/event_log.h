#pragma once

#include <QString>
#include <QStringList>

namespace Tests {

// The event log of the current data directory, as the tests read it: its entries
// each without the leading "dd.MM.yyyy hh:mm:ss: " stamp, so that texts compare
// exactly. A log that does not exist yet reads as empty.
class EventLog
{
public:
    EventLog() = delete;

    static QString Text();
    static QStringList Entries();
    // How many entries equal `entry`.
    static int Count(const QString& entry);
};

} // namespace Tests
