#pragma once

#include "core/content_playing/player_observer.h"
#include "ui/desktop/base_widget_desktop.h"

#include <memory>

namespace Core::ContentPlaying {
class Player;
}

namespace UI::Desktop {

// The navigation column of the player frame: the sections, what the player is
// doing, whether the server answers, the theme switch, sign-out and the version.
// The playback status follows the player it is given; the server status is told
// by the frame, which hears the outcome of the configuration checks.
class SideBarWidgetDesktop : public BaseWidgetDesktop, public Core::ContentPlaying::PlayerObserver
{
    Q_OBJECT

public:
    // The section names the document highlights, as the frame opens them.
    static constexpr const char* PlayerSection = "player";
    static constexpr const char* MusicSection = "music";
    static constexpr const char* VideoSection = "video";
    static constexpr const char* PhotoSection = "photo";
    static constexpr const char* LicenseSection = "license";
    static constexpr const char* ObjectsSection = "objects";
    static constexpr const char* SettingsSection = "settings";

    explicit SideBarWidgetDesktop(QWidget* parent = nullptr);
    ~SideBarWidgetDesktop() override;

    void SetCurrentSection(const QString& section);
    // Null: no player (nothing stored to play yet, or it was released).
    void ObservePlayer(const std::shared_ptr<Core::ContentPlaying::Player>& player);
    void SetServerReachable(bool reachable);
    void SetBlackoutShown(bool shown);

    // PlayerObserver
    void PlayerDidChangePeriod(const Core::ContentPlaying::Player& player,
                               const Core::ContentPlaying::PlayablePeriod& period) override;
    void PlayerDidChangeState(const Core::ContentPlaying::Player& player,
                              Core::ContentPlaying::PlayerState state) override;
    void PlayerDidFinishLastPeriod(const Core::ContentPlaying::Player& player) override;
    void PlayerCantFindCurrentPeriod(const Core::ContentPlaying::Player& player) override;
    void PlayerDidStartPlayingTrack(const Core::ContentPlaying::Player& player,
                                    Core::DataTypes::Playback::ContentType type,
                                    const Core::DataTypes::Playback::Track& track, bool resumed) override;

signals:
    void PlayerButtonClicked();
    void MusicButtonClicked();
    void VideoButtonClicked();
    void PhotoButtonClicked();
    void LicenseButtonClicked();
    void ObjectsButtonClicked();
    void SettingsButtonClicked();
    void LogoutButtonClicked();
    void HideBlackout();

private slots:
    void OnThemeChanged(bool dark);

private:
    void ShowPlaybackState(const Core::ContentPlaying::PlayerState& state);
    void StopObserving();

    std::weak_ptr<Core::ContentPlaying::Player> mPlayer;
    // The player is on but has nothing to play now: no period covers this moment,
    // or the day's last one has ended.
    bool mIdle = false;
};

} // namespace UI::Desktop
