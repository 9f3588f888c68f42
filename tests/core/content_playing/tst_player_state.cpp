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

// The player's state as the screens and the event log see it: the exact log texts
// and what each reset clears or keeps.
class PlayerStateTest : public QObject
{
    Q_OBJECT

private slots:
    void aFreshStatePrintsNineLines()
    {
        const std::string playback = "PlaybackState playing: 0 progress: 0.000000 durationSeconds: 0.000000 "
                                     "trackTitle:  trackSubtitle:  playlistName:  playlistImage:  "
                                     "trackIdentifier: 0 trackIsUploadedByUser: 0 isVideo: 0\n";
        const std::string downloads = "DownloadsInfo waitingDownload: 0 progress: 0.000000 downloaded: 0 "
                                      "total: 0 downloadedTracks size: 0\n";
        const std::string expected = "PlayerState playingNow: 0\n"
                                     "    clip: " +
                                     playback + "    music: " + playback + "    video: " + playback +
                                     "    photo: " + playback + "    clip: " + downloads +
                                     "    music: " + downloads + "    video: " + downloads +
                                     "    photo: " + downloads;
        QCOMPARE(PlayerState().ToString(), expected);
    }

    void filledValuesPrintInFieldOrder()
    {
        QCOMPARE(PlayingTrack().ToString(),
                 std::string("PlaybackState playing: 1 progress: 0.250000 durationSeconds: 183.500000 "
                             "trackTitle: Вальс trackSubtitle: Оркестр playlistName: Утро "
                             "playlistImage: /img/morning.png trackIdentifier: 5000000000 "
                             "trackIsUploadedByUser: 1 isVideo: 1"));
        QCOMPARE(TwoOfFiveDownloaded().ToString(),
                 std::string("DownloadsInfo waitingDownload: 1 progress: 0.400000 downloaded: 2 total: 5 "
                             "downloadedTracks size: 2"));

        PlayerState state;
        state.playingNow = true;
        state.contentPlayingStates[ContentType::Video] = PlayingTrack();
        const QStringList lines = QString::fromStdString(state.ToString()).split(QLatin1Char('\n'));
        QCOMPARE(lines.size(), 10); // nine lines, each ending in a line feed
        QCOMPARE(lines.first(), QStringLiteral("PlayerState playingNow: 1"));
        QCOMPARE(lines.at(3),
                 QStringLiteral("    video: ") + QString::fromStdString(PlayingTrack().ToString()));
        QVERIFY(lines.last().isEmpty());
    }

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
        QVERIFY(info.downloadedTracks.empty());
    }

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
        QCOMPARE(partly.contentPlayingStates.at(ContentType::Clip).ToString(), PlayingTrack().ToString());
        for (const ContentType type : {ContentType::Music, ContentType::Video, ContentType::Photo}) {
            QCOMPARE(partly.contentPlayingStates.at(type).ToString(), PlaybackState().ToString());
            QCOMPARE(partly.downloadsInfo.at(type).ToString(), TwoOfFiveDownloaded().ToString());
        }
        QVERIFY(partly.playingNow);

        // Every per-kind entry comes back fresh, playlists included: ResetAll is
        // start and stop, not the end of an ad block.
        state.ResetAll();
        QCOMPARE(state.ToString(), PlayerState().ToString());
    }
};

QTEST_GUILESS_MAIN(PlayerStateTest)
#include "tst_player_state.moc"
