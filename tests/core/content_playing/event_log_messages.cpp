#include "tests/core/content_playing/event_log_messages.h"

#include "tests/core/content_playing/playback_test_tracks.h"

#include <QRegularExpression>

#include <algorithm>

namespace Tests {

QStringList EventLogMessages::Read()
{
    static const QRegularExpression stamp(QStringLiteral("^\\d\\d\\.\\d\\d\\.\\d{4} \\d\\d:\\d\\d:\\d\\d: "));
    QStringList messages;
    // Each entry ends with an empty line.
    for (QString entry : PlaybackTestTracks::EventLog().split(QStringLiteral("\n\n"), Qt::SkipEmptyParts)) {
        messages.append(entry.remove(stamp));
    }
    return messages;
}

QStringList EventLogMessages::ReadWithoutTrackStarts()
{
    QStringList messages = Read();
    messages.erase(std::remove_if(messages.begin(), messages.end(),
                                  [](const QString& message) {
                                      return message.startsWith(
                                          QStringLiteral(" Начато воспроизведение трека:"));
                                  }),
                   messages.end());
    return messages;
}

} // namespace Tests
