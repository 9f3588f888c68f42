#pragma once

#include <QStringList>

namespace Tests {

// The entries of the event log of the current data directory, each without its
// leading "dd.MM.yyyy hh:mm:ss: " stamp, so that tests compare the texts exactly.
class EventLogMessages
{
public:
    EventLogMessages() = delete;

    static QStringList Read();
    // The same without the track-start entries that every played track adds.
    static QStringList ReadWithoutTrackStarts();
};

} // namespace Tests
