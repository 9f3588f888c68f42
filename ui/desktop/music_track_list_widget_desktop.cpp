#include "ui/desktop/music_track_list_widget_desktop.h"

#include "core/content_playing/player.h"
#include "core/user_environment.h"
#include "ui/list_models/current_tracks_list_model.h"

#include <QPointer>

namespace UI::Desktop {

using Core::DataTypes::Playback::ContentType;

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/player/now_playing/music_track_list_widget.qml";

} // namespace

MusicTrackListWidgetDesktop::MusicTrackListWidgetDesktop(QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mTracks(new ListModels::CurrentTracksListModel(this))
{
    SetSource(QUrl(QString::fromLatin1(Document)));
    SetPropertyOfRoot("tracksModel", QVariant::fromValue<QObject*>(mTracks));
    ConnectQmlChild(QStringLiteral("backButton"), "clicked()", this, "OnBack()");
    ConnectQmlRoot("trackClicked(int)", this, "OnTrackClicked(int)");

    QPointer<MusicTrackListWidgetDesktop> self(this);
    Core::UserEnvironment::GetSignedInEnvironment([self](std::shared_ptr<Core::UserEnvironment> environment) {
        if (self && environment) {
            self->Follow(environment->GetContentPlayer());
        }
    });
}

MusicTrackListWidgetDesktop::~MusicTrackListWidgetDesktop()
{
    if (const auto player = mPlayer.lock()) {
        player->RemoveObserver(this);
    }
    // The document goes before the model it shows.
    setSource(QUrl());
}

void MusicTrackListWidgetDesktop::Follow(const std::shared_ptr<Core::ContentPlaying::Player>& player)
{
    if (!player) {
        return;
    }
    mPlayer = player;
    player->AddObserver(this);
    Refresh();
}

void MusicTrackListWidgetDesktop::Refresh()
{
    const auto player = mPlayer.lock();
    if (!player) {
        return;
    }
    mTracks->SetTracks(player->GetCurrentTracks(ContentType::Music));
    const auto states = player->CurrentState().contentPlayingStates;
    const auto music = states.find(ContentType::Music);
    mTracks->SetPlayingTrack(music != states.end() ? music->second.trackIdentifier : 0);
    SetPropertyOfRoot("playingRow", mTracks->PlayingRow());
}

void MusicTrackListWidgetDesktop::PlayerDidChangePeriod(const Core::ContentPlaying::Player&,
                                                        const Core::ContentPlaying::PlayablePeriod&)
{
    Refresh();
}

void MusicTrackListWidgetDesktop::PlayerDidStartPlayingTrack(const Core::ContentPlaying::Player&,
                                                             ContentType type,
                                                             const Core::DataTypes::Playback::Track& track,
                                                             bool)
{
    if (type == ContentType::Music) {
        mTracks->SetPlayingTrack(track.id);
        SetPropertyOfRoot("playingRow", mTracks->PlayingRow());
    }
}

void MusicTrackListWidgetDesktop::OnBack()
{
    emit Close();
}

void MusicTrackListWidgetDesktop::OnTrackClicked(int row)
{
    if (const auto player = mPlayer.lock()) {
        player->PlayTrack(ContentType::Music, row);
    }
}

} // namespace UI::Desktop
