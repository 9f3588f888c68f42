#include "core/content_playing/player_state.h"

#include <QtTest>

#include <string>

using Core::ContentPlaying::DownloadsInfo;
using Core::ContentPlaying::PlaybackState;
using Core::ContentPlaying::PlayerState;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Track;

namespace {

PlaybackState PlayingTrack()
{
    PlaybackState state;
    state.playing = true;
    state.progress = 0.25;
    state.durationSeconds = 183.5;
    state.trackTitle = "Вальс";
    state.trackSubtitle = "Оркестр";
    state.playlistName = "Утро";
    state.playlistImage = "/img/morning.png";
    state.trackIdentifier = 5000000000;
    state.trackIsUploadedByUser = true;
    state.isVideo = true;
    return state;
}

DownloadsInfo TwoOfFiveDownloaded()
{
    DownloadsInfo info;
    info.waitingDownload = true;
    info.progress = 0.4;
    info.downloaded = 2;
    info.total = 5;
    info.downloadedTracks = {Track(), Track()};
    return info;
}

} // namespace

// What each reset of the player's state clears and what it keeps. ToString()
// prints every field, so equal texts mean equal states.
class PlayerStateTest : public QObject
{
    Q_OBJECT

private slots:
    // After an ad block the music's playlist must stay on screen, with the
    // identity of the track the like buttons refer to.
    void aPlaybackResetKeepsThePlaylistAndTheTrackIdentity()
    {
        PlaybackState state = PlayingTrack();
        state.Reset();
        PlaybackState expected;
        expected.playlistName = "Утро";
        expected.playlistImage = "/img/morning.png";
        expected.trackIdentifier = 5000000000;
        expected.trackIsUploadedByUser = true;
        QCOMPARE(state.ToString(), expected.ToString());

        DownloadsInfo info = TwoOfFiveDownloaded();
        info.Reset();
        QCOMPARE(info.ToString(), DownloadsInfo().ToString());
    }

    // The partial reset leaves the clip, the downloads and the on/off flag; the
    // full one (start and stop) brings every entry back fresh, playlists included.
    void playerResets()
    {
        PlayerState state;
        state.playingNow = true;
        for (const ContentType type : Core::DataTypes::Playback::AllContentTypes()) {
            state.contentPlayingStates[type] = PlayingTrack();
            state.downloadsInfo[type] = TwoOfFiveDownloaded();
        }

        PlayerState partly = state;
        partly.ResetMusicVideoPhotoContentPlayingStates();
        QVERIFY(partly.playingNow);
        QCOMPARE(partly.contentPlayingStates.at(ContentType::Clip).ToString(), PlayingTrack().ToString());
        for (const ContentType type : {ContentType::Music, ContentType::Video, ContentType::Photo}) {
            QCOMPARE(partly.contentPlayingStates.at(type).ToString(), PlaybackState().ToString());
            QCOMPARE(partly.downloadsInfo.at(type).ToString(), TwoOfFiveDownloaded().ToString());
        }

        state.ResetAll();
        QCOMPARE(state.ToString(), PlayerState().ToString());
    }
};

QTEST_GUILESS_MAIN(PlayerStateTest)
#include "tst_player_state.moc"
