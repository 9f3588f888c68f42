#include "core/content_playing/player_state.h"

using Core::ContentPlaying::DownloadsInfo;
using Core::ContentPlaying::PlaybackState;
using Core::DataTypes::Playback::ContentType;

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
    info.downloadedTracks = {{}, {}};
    return info;
}

} // namespace

// ToString() prints every field, so equal texts mean equal states.
class PlayerStateTest : public QObject
{
    Q_OBJECT

private slots:
    void resets()
    {
        // After an ad block the screens keep the playlist and the track the like buttons mean.
        PlaybackState track = PlayingTrack();
        track.Reset();
        PlaybackState expected;
        expected.playlistName = "Утро";
        expected.playlistImage = "/img/morning.png";
        expected.trackIdentifier = 5000000000;
        expected.trackIsUploadedByUser = true;
        QCOMPARE(track.ToString(), expected.ToString());
        DownloadsInfo info = TwoOfFiveDownloaded();
        info.Reset();
        QCOMPARE(info.ToString(), DownloadsInfo().ToString());

        // The partial reset leaves the clip, the downloads and the on/off flag.
        Core::ContentPlaying::PlayerState state;
        state.playingNow = true;
        for (const ContentType type : Core::DataTypes::Playback::AllContentTypes()) {
            state.contentPlayingStates[type] = PlayingTrack();
            state.downloadsInfo[type] = TwoOfFiveDownloaded();
        }
        auto partly = state;
        partly.ResetMusicVideoPhotoContentPlayingStates();
        QVERIFY(partly.playingNow);
        QCOMPARE(partly.contentPlayingStates.at(ContentType::Clip).ToString(), PlayingTrack().ToString());
        for (const ContentType type : {ContentType::Music, ContentType::Video, ContentType::Photo}) {
            QCOMPARE(partly.contentPlayingStates.at(type).ToString(), PlaybackState().ToString());
            QCOMPARE(partly.downloadsInfo.at(type).ToString(), TwoOfFiveDownloaded().ToString());
        }
        state.ResetAll();
        QCOMPARE(state.ToString(), Core::ContentPlaying::PlayerState().ToString());
    }
};

QTEST_GUILESS_MAIN(PlayerStateTest)
#include "tst_player_state.moc"
