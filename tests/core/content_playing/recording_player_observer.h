#pragma once

#include "core/content_playing/player_observer.h"
#include "core/content_playing/player_state.h"

#include <QStringList>

#include <vector>

namespace Tests {

// Every report with the player's state then; a shared list of lines shows the order.
class RecordingPlayerObserver : public Core::ContentPlaying::PlayerObserver
{
public:
    struct Call
    {
        // "state", "period <name>", "last period finished", "no current period", "track <kind> <id>[
        // resumed]".
        QString event;
        Core::ContentPlaying::PlayerState state;
    };

    explicit RecordingPlayerObserver(QString name = QString(), QStringList* sharedLines = nullptr);

    void PlayerDidChangePeriod(const Core::ContentPlaying::Player& player,
                               const Core::ContentPlaying::PlayablePeriod& period) override;
    void PlayerDidChangeState(const Core::ContentPlaying::Player& player,
                              Core::ContentPlaying::PlayerState state) override;
    void PlayerDidFinishLastPeriod(const Core::ContentPlaying::Player& player) override;
    void PlayerCantFindCurrentPeriod(const Core::ContentPlaying::Player& player) override;
    void PlayerDidStartPlayingTrack(const Core::ContentPlaying::Player& player,
                                    Core::DataTypes::Playback::ContentType type,
                                    const Core::DataTypes::Playback::Track& track, bool resumed) override;

    // Every call but the state changes, in order.
    QStringList Events() const;
    // The index of the first call with this event, or -1.
    int IndexOf(const QString& event) const;

    std::vector<Call> calls;

private:
    void Record(const QString& event, Core::ContentPlaying::PlayerState state);

    QString name;
    QStringList* sharedLines;
};

} // namespace Tests
