#include "core/content_playing/ads_block.h"
#include "core/content_playing/playable_block_builder.h"
#include "core/content_playing/playable_period.h"
#include "core/content_playing/playable_period_builder.h"
#include "core/settings.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/support/test_data_directory.h"

#include <QtTest>

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using Core::Settings;
using Core::ContentPlaying::AbstractContentBlock;
using Core::ContentPlaying::PlayableBlockBuilder;
using Core::ContentPlaying::PlayablePeriod;
using Core::ContentPlaying::PlayablePeriodBuilder;
using Core::ContentPlaying::PlayablePeriodInfo;
using Core::DataTypes::Playback::AdBlock;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Day;
using Core::DataTypes::Playback::PlaybackConfiguration;
using Core::DataTypes::Playback::PlaybackPeriod;
using Core::DataTypes::Playback::Playlist;
using Core::DataTypes::Playback::Track;
using Ids = std::vector<std::int32_t>;

namespace {

Track MakeTrack(int id, ContentType type, const char* fileName)
{
    return Tests::PlaybackTestTracks::Make(id, type, QString::fromLatin1(fileName));
}

Playlist MakePlaylist(int id, ContentType type, const Ids& trackIds, const std::string& name = "")
{
    Playlist playlist;
    playlist.id = id;
    playlist.contentType = type;
    playlist.trackIds = trackIds;
    playlist.name = name;
    playlist.image = name.empty() ? "" : "/img/" + std::to_string(id) + ".png";
    return playlist;
}

PlaybackPeriod MakePeriod(const std::string& name, const std::string& start, const std::string& end,
                          int music = 0, int video = 0, int photo = 0)
{
    PlaybackPeriod period;
    period.name = name;
    period.startTime = start;
    period.endTime = end;
    period.scheduleId = 7;
    period.contentVolume = 70;
    period.adsVolume = 40;
    period.playlistIds = {
        {ContentType::Music, music}, {ContentType::Video, video}, {ContentType::Photo, photo}};
    return period;
}

Day MakeDay(const std::string& date, const std::string& dayOfWeek, const std::vector<PlaybackPeriod>& periods)
{
    Day day;
    day.date = date;
    day.dayOfWeek = dayOfWeek;
    day.periods = periods;
    return day;
}

PlaybackConfiguration EmptyConfiguration()
{
    PlaybackConfiguration configuration;
    for (const ContentType type : Core::DataTypes::Playback::AllContentTypes()) {
        configuration.tracks[type] = {};
    }
    return configuration;
}

Ids IdsOf(const std::vector<Track>& tracks)
{
    Ids ids;
    std::transform(tracks.begin(), tracks.end(), std::back_inserter(ids),
                   [](const Track& track) { return track.id; });
    return ids;
}

Ids IdsOf(const std::shared_ptr<AbstractContentBlock>& block)
{
    return block ? IdsOf(block->TrackList()) : Ids{-1};
}

// The text of the std::out_of_range the call throws, or a note of what happened.
std::string OutOfRangeMessage(const std::function<void()>& call)
{
    try {
        call();
    } catch (const std::out_of_range& error) {
        return error.what();
    } catch (...) {
        return "another exception";
    }
    return "no exception";
}

} // namespace

// From a configuration to the chain of playable periods: which blocks a period
// gets and with which tracks, how ads blocks are cut per date, how the chain is
// linked, and what a broken configuration does. Nothing here plays: blocks only
// touch the media backend when started.
class PeriodBuildingTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        for (const ContentType type : {ContentType::Music, ContentType::Video, ContentType::Photo}) {
            Settings::SetShuffle(type, false);
        }
    }

    void cleanup()
    {
        dataDirectory.reset();
    }

    void blocksFollowThePeriodsPlaylists()
    {
        PlayableBlockBuilder::TracksByType tracks = EmptyConfiguration().tracks;
        tracks[ContentType::Music] = {MakeTrack(3, ContentType::Music, "c.mp3"),
                                      MakeTrack(5, ContentType::Music, "e.mp3"),
                                      MakeTrack(5, ContentType::Music, "e_copy.mp3")};
        tracks[ContentType::Video] = {MakeTrack(21, ContentType::Video, "v.mp4")};
        tracks[ContentType::Photo] = {MakeTrack(31, ContentType::Photo, "p.jpg")};
        const PlayableBlockBuilder::Playlists playlists = {
            MakePlaylist(10, ContentType::Music, {5, 3, 7, 5}, "Утро"),
            MakePlaylist(20, ContentType::Video, {21}),
            MakePlaylist(30, ContentType::Photo, {31}),
            MakePlaylist(40, ContentType::Video, {21}),
            MakePlaylist(41, ContentType::Music, {}),
            // Same identifier and kind again: blocks take the first one.
            MakePlaylist(10, ContentType::Music, {3}, "Утро (копия)"),
        };
        const PlaybackPeriod period = MakePeriod("День", "10:00", "18:00", 10, 20, 30);

        // Unknown 7 skipped, the repeated 5 kept, the first track of an identifier used.
        const auto music =
            PlayableBlockBuilder::CreateContentBlock(ContentType::Music, period, tracks, playlists);
        QVERIFY(music);
        QCOMPARE(music->GetContentType(), ContentType::Music);
        QCOMPARE(IdsOf(music), (Ids{5, 3, 5}));
        QCOMPARE(music->TrackList().front().path, tracks[ContentType::Music][1].path);
        QCOMPARE(music->GetVolume(), 70);
        const auto video =
            PlayableBlockBuilder::CreateContentBlock(ContentType::Video, period, tracks, playlists);
        QVERIFY(video);
        QCOMPARE(video->GetContentType(), ContentType::Video);
        QCOMPARE(IdsOf(video), (Ids{21}));
        QCOMPARE(video->GetVolume(), 70);
        const auto photo =
            PlayableBlockBuilder::CreateContentBlock(ContentType::Photo, period, tracks, playlists);
        QVERIFY(photo);
        QCOMPARE(photo->GetContentType(), ContentType::Photo);
        QCOMPARE(IdsOf(photo), (Ids{31}));
        QVERIFY(!PlayableBlockBuilder::CreateContentBlock(ContentType::Clip, period, tracks, playlists));

        // No playlist, a playlist of another kind, an unknown one: no block. An
        // empty playlist still gives one.
        for (const int id : {0, 40, 99}) {
            const auto none = PlayableBlockBuilder::CreateContentBlock(
                ContentType::Music, MakePeriod("", "", "", id), tracks, playlists);
            QVERIFY2(!none, qPrintable(QString::number(id)));
        }
        QCOMPARE(IdsOf(PlayableBlockBuilder::CreateContentBlock(
                     ContentType::Music, MakePeriod("", "", "", 41), tracks, playlists)),
                 Ids{});

        // The info names the last matching playlist; kinds without one read empty.
        PlayablePeriodInfo info;
        PlayablePeriodBuilder::SetPlaylistInfoToPeriod(info, period, playlists);
        QCOMPARE(info.GetPlaylistIdentifier(ContentType::Music), 10);
        QCOMPARE(info.GetPlaylistName(ContentType::Music), std::string("Утро (копия)"));
        QCOMPARE(info.GetPlaylistImage(ContentType::Music), std::string("/img/10.png"));
        QCOMPARE(info.GetPlaylistIdentifier(ContentType::Video), 20);
        QCOMPARE(info.GetPlaylistIdentifier(ContentType::Photo), 30);
        PlayablePeriodInfo noMusic;
        PlayablePeriodBuilder::SetPlaylistInfoToPeriod(noMusic, MakePeriod("", "", "", 0, 40), playlists);
        QCOMPARE(noMusic.GetPlaylistIdentifier(ContentType::Music), 0);
        QCOMPARE(noMusic.GetPlaylistName(ContentType::Music), std::string());
        QCOMPARE(noMusic.GetPlaylistIdentifier(ContentType::Video), 40);
    }

    void shuffleFollowsTheSettingOfEachKind()
    {
        PlayableBlockBuilder::TracksByType tracks = EmptyConfiguration().tracks;
        const Ids ordered = {1, 2, 3, 4, 5, 6, 7, 8};
        for (const int id : ordered) {
            tracks[ContentType::Music].push_back(MakeTrack(id, ContentType::Music, "m.mp3"));
            tracks[ContentType::Video].push_back(MakeTrack(id, ContentType::Video, "v.mp4"));
        }
        const PlayableBlockBuilder::Playlists playlists = {MakePlaylist(1, ContentType::Music, ordered),
                                                           MakePlaylist(2, ContentType::Video, ordered)};
        const PlaybackPeriod period = MakePeriod("", "", "", 1, 2);
        Settings::SetShuffle(ContentType::Music, true);

        // Each build is a permutation of the playlist; one of 40320 orders is the
        // playlist's own, so twenty builds all in order mean no shuffle at all.
        bool reordered = false;
        for (int build = 0; build < 20 && !reordered; ++build) {
            Ids shuffled = IdsOf(
                PlayableBlockBuilder::CreateContentBlock(ContentType::Music, period, tracks, playlists));
            reordered = shuffled != ordered;
            std::sort(shuffled.begin(), shuffled.end());
            QCOMPARE(shuffled, ordered);
        }
        QVERIFY(reordered);
        QCOMPARE(
            IdsOf(PlayableBlockBuilder::CreateContentBlock(ContentType::Video, period, tracks, playlists)),
            ordered);
    }

    void adsBlocksPerDateAudioFirst()
    {
        const std::vector<Track> clips = {
            MakeTrack(1, ContentType::Clip, "spot1.mp4"), MakeTrack(2, ContentType::Clip, "spot2.mp4"),
            MakeTrack(3, ContentType::Clip, "spot3.mp3"), MakeTrack(4, ContentType::Clip, "spot4.mp3")};
        AdBlock morning;
        morning.name = "Утро";
        morning.interruptContent = true;
        morning.startTime = "09:30";
        // The later date first; 9 is no clip of the configuration.
        morning.tracks = {{"21.11.2026", 1}, {"20.11.2026", 2}, {"20.11.2026", 9}, {"20.11.2026", 3}};
        AdBlock evening;
        evening.name = "Вечер";
        evening.startTime = "19:00";
        evening.tracks = {{"20.11.2026", 4}, {"20.11.2026", 1}};

        const auto blocks = PlayableBlockBuilder::CreateAdsBlock({morning, evening}, clips);
        QCOMPARE(blocks.size(), std::size_t(3));
        struct Expected
        {
            std::string name;
            std::string date;
            std::string start;
            bool interrupts;
            Ids ids;
        };
        const std::vector<Expected> expected = {{"Утро", "20.11.2026", "09:30", true, {3, 2}},
                                                {"Утро", "21.11.2026", "09:30", true, {1}},
                                                {"Вечер", "20.11.2026", "19:00", false, {4, 1}}};
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            QCOMPARE(blocks[i]->GetName(), expected[i].name);
            QCOMPARE(blocks[i]->GetDate(), expected[i].date);
            QCOMPARE(blocks[i]->GetStartTimeStr(), expected[i].start);
            QCOMPARE(blocks[i]->InterruptsContent(), expected[i].interrupts);
            QCOMPARE(IdsOf(blocks[i]->TrackList()), expected[i].ids);
            // Whatever the period's ads volume: the period sets it on start.
            QCOMPARE(blocks[i]->GetVolume(), 99);
        }

        // Audio before video, the unrelated pairs left as equals.
        std::vector<Track> mixed = {
            MakeTrack(1, ContentType::Clip, "a.mp4"), MakeTrack(2, ContentType::Clip, "b.mp3"),
            MakeTrack(3, ContentType::Clip, "c.mp4"), MakeTrack(4, ContentType::Clip, "d.mp3")};
        PlayableBlockBuilder::SortAdsTracksByPathExtension(mixed);
        Ids audioFirst = IdsOf(mixed);
        std::sort(audioFirst.begin(), audioFirst.begin() + 2);
        std::sort(audioFirst.begin() + 2, audioFirst.end());
        QCOMPARE(audioFirst, (Ids{2, 4, 1, 3}));
    }

    void brokenConfigurationsFailTheBuild()
    {
        const std::string missingKey = "map::at:  key not found";
        PlaybackConfiguration noClips = EmptyConfiguration();
        noClips.tracks.erase(ContentType::Clip);
        PlaybackPeriod noMusicEntry = MakePeriod("", "", "", 1);
        noMusicEntry.playlistIds.erase(ContentType::Music);
        PlayableBlockBuilder::TracksByType noMusicTracks = EmptyConfiguration().tracks;
        noMusicTracks.erase(ContentType::Music);
        const PlayableBlockBuilder::Playlists clipPlaylist = {MakePlaylist(5, ContentType::Clip, {})};
        const PlayableBlockBuilder::Playlists musicPlaylist = {MakePlaylist(1, ContentType::Music, {})};

        QCOMPARE(OutOfRangeMessage([&]() { PlayablePeriodBuilder::BuildPlayablePeriods(noClips); }),
                 missingKey);
        QCOMPARE(OutOfRangeMessage([&]() {
                     PlayableBlockBuilder::CreateContentBlock(ContentType::Music, noMusicEntry,
                                                              EmptyConfiguration().tracks, {});
                 }),
                 missingKey);
        QCOMPARE(OutOfRangeMessage([&]() {
                     PlayableBlockBuilder::CreateContentBlock(ContentType::Music, MakePeriod("", "", "", 1),
                                                              noMusicTracks, musicPlaylist);
                 }),
                 missingKey);
        QCOMPARE(OutOfRangeMessage([&]() {
                     PlayablePeriodInfo info;
                     PlayablePeriodBuilder::SetPlaylistInfoToPeriod(info, MakePeriod("", "", ""),
                                                                    clipPlaylist);
                 }),
                 missingKey);
        // Without a playlist to look for, the missing tracks of a kind are no fault.
        QCOMPARE(OutOfRangeMessage([&]() {
                     PlayableBlockBuilder::CreateContentBlock(ContentType::Music, MakePeriod("", "", "", 1),
                                                              noMusicTracks, {});
                 }),
                 std::string("no exception"));
    }

    void theChainIsTheScheduleAsDelivered()
    {
        QVERIFY(PlayablePeriodBuilder::BuildPlayablePeriods(EmptyConfiguration()).empty());

        PlaybackConfiguration configuration = EmptyConfiguration();
        configuration.tracks[ContentType::Music] = {MakeTrack(3, ContentType::Music, "c.mp3")};
        configuration.playlists = {MakePlaylist(10, ContentType::Music, {3}, "Утро")};
        // The second period of the Friday starts before the first.
        configuration.days = {
            MakeDay("20.11.2026", "Пятница",
                    {MakePeriod("После обеда", "12:00", "18:00", 10), MakePeriod("Утро", "09:00", "12:00")}),
            MakeDay("19.11.2026", "Четверг", {MakePeriod("Весь день", "00:00", "00:00", 0, 20)})};

        const auto periods = PlayablePeriodBuilder::BuildPlayablePeriods(configuration);
        QCOMPARE(periods.size(), std::size_t(3));
        QCOMPARE(periods[0]->GetNextPeriod(), periods[1]);
        QCOMPARE(periods[1]->GetNextPeriod(), periods[2]);
        QVERIFY(!periods[2]->GetNextPeriod());

        PlayablePeriodInfo first = periods[0]->GetInfo();
        QCOMPARE(first.name, std::string("После обеда"));
        QCOMPARE(first.startTime, std::string("12:00"));
        QCOMPARE(first.endTime, std::string("18:00"));
        QCOMPARE(first.date, std::string("20.11.2026"));
        QCOMPARE(first.dayOfWeek, std::string("Пятница"));
        QCOMPARE(first.scheduleId, 7);
        QCOMPARE(first.contentVolume, 70);
        QCOMPARE(first.adsVolume, 40);
        QCOMPARE(first.GetPlaylistName(ContentType::Music), std::string("Утро"));
        QCOMPARE(IdsOf(periods[0]->GetTracks(ContentType::Music)), Ids{3});
        QVERIFY(!periods[0]->HasBlock(ContentType::Video));

        QCOMPARE(periods[1]->GetInfo().name, std::string("Утро"));
        QVERIFY(periods[1]->GetAllTracksList().empty());
        // A playlist the configuration lacks leaves the period without that block.
        QCOMPARE(periods[2]->GetInfo().date, std::string("19.11.2026"));
        QVERIFY(!periods[2]->HasBlock(ContentType::Video));
    }

    void periodsKeepTheAdsOfTheirDate()
    {
        PlaybackConfiguration configuration = EmptyConfiguration();
        configuration.tracks[ContentType::Clip] = {MakeTrack(1, ContentType::Clip, "noon.mp3"),
                                                   MakeTrack(2, ContentType::Clip, "noon.mp4")};
        AdBlock noon;
        noon.name = "Полдень";
        noon.startTime = "12:00";
        noon.tracks = {{"22.11.2026", 2}, {"20.11.2026", 1}};
        configuration.adBlocks = {noon};
        configuration.days = {
            MakeDay("20.11.2026", "Пятница",
                    {MakePeriod("Утро", "10:00", "12:00"), MakePeriod("День", "12:00", "14:00")}),
            MakeDay("21.11.2026", "Суббота", {MakePeriod("День", "12:00", "14:00")}),
            MakeDay("22.11.2026", "Воскресенье", {MakePeriod("День", "12:00", "14:00")})};
        const auto periods = PlayablePeriodBuilder::BuildPlayablePeriods(configuration);
        QCOMPARE(periods.size(), std::size_t(4));

        // Running into a period from the one before plays the ads at its start.
        // The clips have no files, so nothing sounds; the event log says whether
        // the period had any.
        for (std::size_t i = 1; i < periods.size(); ++i) {
            periods[i]->StartFromPreviousPeriod(*periods[i - 1]);
        }
        periods.front()->FindAndStopCurrent();
        const QString log = Tests::PlaybackTestTracks::EventLog();
        const auto hasStartAds = [&log](const char* period) -> int {
            const QString text = QString::fromUtf8(period);
            if (log.contains(QStringLiteral("У периода ") + text +
                             QStringLiteral(" есть реклама, совпадающая с началом периода"))) {
                return 1;
            }
            return log.contains(QStringLiteral("У периода ") + text +
                                QStringLiteral(" нет рекламы, совпадающей с началом периода"))
                       ? 0
                       : -1;
        };
        QCOMPARE(hasStartAds("День Пятница 20.11.2026 12:00-14:00"), 1);
        QCOMPARE(hasStartAds("День Суббота 21.11.2026 12:00-14:00"), 0);
        QCOMPARE(hasStartAds("День Воскресенье 22.11.2026 12:00-14:00"), 1);
    }

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
};

QTEST_MAIN(PeriodBuildingTest)
#include "tst_period_building.moc"
