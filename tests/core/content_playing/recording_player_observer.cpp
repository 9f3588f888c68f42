#include "tests/core/content_playing/recording_player_observer.h"

#include "core/content_playing/playable_period.h"
#include "core/content_playing/player.h"

#include <utility>

namespace Tests {

using Core::ContentPlaying::Player;

RecordingPlayerObserver::RecordingPlayerObserver(QString observerName, QStringList* lines)
    : name(std::move(observerName))
    , sharedLines(lines)
{
}

void RecordingPlayerObserver::PlayerDidChangePeriod(const Player& player,
                                                    const Core::ContentPlaying::PlayablePeriod& period)
{
    Record("period " + QString::fromStdString(period.GetInfo().name), player.CurrentState());
}

void RecordingPlayerObserver::PlayerDidChangeState(const Player&, Core::ContentPlaying::PlayerState state)
{
    Record(QStringLiteral("state"), std::move(state));
}

void RecordingPlayerObserver::PlayerDidFinishLastPeriod(const Player& player)
{
    Record(QStringLiteral("last period finished"), player.CurrentState());
}

void RecordingPlayerObserver::PlayerCantFindCurrentPeriod(const Player& player)
{
    Record(QStringLiteral("no current period"), player.CurrentState());
}

void RecordingPlayerObserver::PlayerDidStartPlayingTrack(const Player& player,
                                                         Core::DataTypes::Playback::ContentType type,
                                                         const Core::DataTypes::Playback::Track& track,
                                                         bool resumed)
{
    Record(QStringLiteral("track %1 %2%3")
               .arg(QString::fromStdString(Core::DataTypes::Playback::ContentTypeToString(type)))
               .arg(track.id)
               .arg(resumed ? " resumed" : ""),
           player.CurrentState());
}

QStringList RecordingPlayerObserver::Events() const
{
    QStringList events;
    for (const auto& call : calls) {
        if (call.event != QLatin1String("state")) {
            events << call.event;
        }
    }
    return events;
}

int RecordingPlayerObserver::IndexOf(const QString& event) const
{
    for (std::size_t i = 0; i < calls.size(); ++i) {
        if (calls[i].event == event) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

void RecordingPlayerObserver::Record(const QString& event, Core::ContentPlaying::PlayerState state)
{
    calls.push_back({event, std::move(state)});
    if (sharedLines) {
        *sharedLines << name + ": " + event;
    }
}

} // namespace Tests
