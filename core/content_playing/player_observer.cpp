#include "core/content_playing/player_observer.h"

namespace Core::ContentPlaying {

PlayerObserver::~PlayerObserver() = default;

void PlayerObserver::PlayerDidChangePeriod(const Player&, const PlayablePeriod&) {}

void PlayerObserver::PlayerDidChangeState(const Player&, PlayerState) {}

void PlayerObserver::PlayerDidFinishLastPeriod(const Player&) {}

void PlayerObserver::PlayerCantFindCurrentPeriod(const Player&) {}

void PlayerObserver::PlayerDidStartPlayingTrack(const Player&, DataTypes::Playback::ContentType,
                                                const DataTypes::Playback::Track&, bool)
{
}

} // namespace Core::ContentPlaying
