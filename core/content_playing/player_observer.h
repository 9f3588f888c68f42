#pragma once

#include "core/content_playing/player_state.h"
#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/track.h"

namespace Core::ContentPlaying {

class Player;
class PlayablePeriod;

// What the player tells the screens and the user environment. Every operation has
// an empty default, so an observer overrides only what it needs.
class PlayerObserver
{
public:
    virtual ~PlayerObserver();

    virtual void PlayerDidChangePeriod(const Player& player, const PlayablePeriod& period);
    virtual void PlayerDidChangeState(const Player& player, PlayerState state);
    virtual void PlayerDidFinishLastPeriod(const Player& player);
    virtual void PlayerCantFindCurrentPeriod(const Player& player);
    virtual void PlayerDidStartPlayingTrack(const Player& player, DataTypes::Playback::ContentType type,
                                            const DataTypes::Playback::Track& track, bool resumed);
};

} // namespace Core::ContentPlaying
