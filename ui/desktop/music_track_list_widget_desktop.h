#pragma once

#include "core/content_playing/player_observer.h"
#include "ui/desktop/base_widget_desktop.h"

#include <memory>

namespace Core::ContentPlaying {
class Player;
}

namespace UI::ListModels {
class CurrentTracksListModel;
}

namespace UI::Desktop {

// The music playlist playing now, the playing track marked; a click plays the track
// clicked. Opened from the now-playing section; "Назад" or Escape asks to close it.
class MusicTrackListWidgetDesktop : public BaseWidgetDesktop, public Core::ContentPlaying::PlayerObserver
{
    Q_OBJECT

public:
    explicit MusicTrackListWidgetDesktop(QWidget* parent = nullptr);
    ~MusicTrackListWidgetDesktop() override;

    void PlayerDidChangePeriod(const Core::ContentPlaying::Player& player,
                               const Core::ContentPlaying::PlayablePeriod& period) override;
    void PlayerDidStartPlayingTrack(const Core::ContentPlaying::Player& player,
                                    Core::DataTypes::Playback::ContentType type,
                                    const Core::DataTypes::Playback::Track& track, bool resumed) override;

signals:
    void Close();

private slots:
    void OnBack();
    void OnTrackClicked(int row);

private:
    void Follow(const std::shared_ptr<Core::ContentPlaying::Player>& player);
    void Refresh();

    ListModels::CurrentTracksListModel* mTracks;
    std::weak_ptr<Core::ContentPlaying::Player> mPlayer;
};

} // namespace UI::Desktop
