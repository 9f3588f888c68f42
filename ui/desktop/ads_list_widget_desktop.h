#pragma once

#include "core/content_playing/player_observer.h"
#include "ui/desktop/base_widget_desktop.h"

#include <memory>

class QTimer;

namespace Core::ContentPlaying {
class Player;
}

namespace UI::ListModels {
class AdBlocksListModel;
}

namespace UI::Desktop {

// The advertising of the period playing now: each block's time, whether it
// interrupts the music, its spots and how many are downloaded; blocks already played
// are dimmed. Opened from the now-playing section; "Назад" or Escape asks to close it.
class AdsListWidgetDesktop : public BaseWidgetDesktop, public Core::ContentPlaying::PlayerObserver
{
    Q_OBJECT

public:
    explicit AdsListWidgetDesktop(QWidget* parent = nullptr);
    ~AdsListWidgetDesktop() override;

    void PlayerDidChangePeriod(const Core::ContentPlaying::Player& player,
                               const Core::ContentPlaying::PlayablePeriod& period) override;
    void PlayerDidStartPlayingTrack(const Core::ContentPlaying::Player& player,
                                    Core::DataTypes::Playback::ContentType type,
                                    const Core::DataTypes::Playback::Track& track, bool resumed) override;

signals:
    void Close();

private slots:
    void OnBack();
    void Refresh();

private:
    void Follow(const std::shared_ptr<Core::ContentPlaying::Player>& player);

    ListModels::AdBlocksListModel* mBlocks;
    QTimer* mRefreshTimer;
    std::weak_ptr<Core::ContentPlaying::Player> mPlayer;
};

} // namespace UI::Desktop
