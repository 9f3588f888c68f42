#include "ui/desktop/side_bar_widget_desktop.h"

#include "core/content_playing/player.h"
#include "ui/ui_kit/ui_kit.h"

#include <QCoreApplication>

namespace UI::Desktop {

using Core::ContentPlaying::Player;
using Core::ContentPlaying::PlayerState;
using Core::DataTypes::Playback::ContentType;

namespace {

// What the shop owner hears: content of some kind whose period has it and whose
// files are here. A period still waiting for its first file is silent.
bool SomethingSounds(const PlayerState& state)
{
    for (const ContentType type :
         {ContentType::Clip, ContentType::Music, ContentType::Video, ContentType::Photo}) {
        const auto playback = state.contentPlayingStates.find(type);
        if (playback == state.contentPlayingStates.end() || !playback->second.playing) {
            continue;
        }
        const auto downloads = state.downloadsInfo.find(type);
        if (downloads == state.downloadsInfo.end() || !downloads->second.waitingDownload) {
            return true;
        }
    }
    return false;
}

} // namespace

SideBarWidgetDesktop::SideBarWidgetDesktop(QWidget* parent)
    : BaseWidgetDesktop(parent)
{
    setObjectName(QStringLiteral("sideBarWidget"));
    SetSource(QUrl(QStringLiteral("qrc:/ui_kit/screens/desktop/player/side_bar_widget.qml")));
    SetPropertyOfChild(QStringLiteral("appVersionText"), "text",
                       QStringLiteral("Версия ") + QCoreApplication::applicationVersion());
    ConnectQmlChild(QStringLiteral("playerButton"), "clicked()", this, "PlayerButtonClicked()");
    ConnectQmlChild(QStringLiteral("musicButton"), "clicked()", this, "MusicButtonClicked()");
    ConnectQmlChild(QStringLiteral("videoButton"), "clicked()", this, "VideoButtonClicked()");
    ConnectQmlChild(QStringLiteral("photoButton"), "clicked()", this, "PhotoButtonClicked()");
    ConnectQmlChild(QStringLiteral("licenseButton"), "clicked()", this, "LicenseButtonClicked()");
    ConnectQmlChild(QStringLiteral("objectsButton"), "clicked()", this, "ObjectsButtonClicked()");
    ConnectQmlChild(QStringLiteral("settingsButton"), "clicked()", this, "SettingsButtonClicked()");
    ConnectQmlChild(QStringLiteral("logoutButton"), "clicked()", this, "LogoutButtonClicked()");
    ConnectQmlChild(QStringLiteral("sideBar"), "themeChanged(bool)", this, "OnThemeChanged(bool)");
    ConnectQmlChild(QStringLiteral("sideBar"), "hideBlackout()", this, "HideBlackout()");
}

SideBarWidgetDesktop::~SideBarWidgetDesktop()
{
    StopObserving();
}

void SideBarWidgetDesktop::SetCurrentSection(const QString& section)
{
    SetPropertyOfChild(QStringLiteral("sideBar"), "currentSection", section);
}

void SideBarWidgetDesktop::ObservePlayer(const std::shared_ptr<Player>& player)
{
    if (player != mPlayer.lock()) {
        StopObserving();
        mPlayer = player;
        mIdle = false;
        if (player) {
            player->AddObserver(this);
        }
    }
    ShowPlaybackState(player ? player->CurrentState() : PlayerState());
}

void SideBarWidgetDesktop::StopObserving()
{
    if (const auto player = mPlayer.lock()) {
        player->RemoveObserver(this);
    }
    mPlayer.reset();
}

void SideBarWidgetDesktop::SetServerReachable(bool reachable)
{
    SetPropertyOfChild(QStringLiteral("sideBar"), "serverState",
                       reachable ? QStringLiteral("online") : QStringLiteral("offline"));
}

void SideBarWidgetDesktop::SetBlackoutShown(bool shown)
{
    SetPropertyOfChild(QStringLiteral("sideBar"), "blackoutShown", shown);
}

void SideBarWidgetDesktop::PlayerDidChangePeriod(const Player& player,
                                                 const Core::ContentPlaying::PlayablePeriod&)
{
    mIdle = false;
    ShowPlaybackState(player.CurrentState());
}

void SideBarWidgetDesktop::PlayerDidChangeState(const Player&, PlayerState state)
{
    ShowPlaybackState(state);
}

void SideBarWidgetDesktop::PlayerDidFinishLastPeriod(const Player& player)
{
    mIdle = true;
    ShowPlaybackState(player.CurrentState());
}

void SideBarWidgetDesktop::PlayerCantFindCurrentPeriod(const Player& player)
{
    mIdle = true;
    ShowPlaybackState(player.CurrentState());
}

void SideBarWidgetDesktop::PlayerDidStartPlayingTrack(const Player& player, ContentType,
                                                      const Core::DataTypes::Playback::Track&, bool)
{
    mIdle = false;
    ShowPlaybackState(player.CurrentState());
}

void SideBarWidgetDesktop::ShowPlaybackState(const PlayerState& state)
{
    if (!state.playingNow) {
        // The next start looks for its period afresh.
        mIdle = false;
    }
    // On, with nothing to hear, is a pause to the person in the shop: the player
    // picks up by itself when a period or a file arrives.
    const QString shown = !state.playingNow                  ? QStringLiteral("stopped")
                          : !mIdle && SomethingSounds(state) ? QStringLiteral("playing")
                                                             : QStringLiteral("paused");
    SetPropertyOfChild(QStringLiteral("sideBar"), "playbackState", shown);
}

void SideBarWidgetDesktop::OnThemeChanged(bool dark)
{
    UiKit::GetInstance().SetDarkTheme(dark);
}

} // namespace UI::Desktop
