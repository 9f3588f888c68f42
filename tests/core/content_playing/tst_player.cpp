#include "core/content_playing/player.h"
#include "core/networking/content_files_helper.h"
#include "core/settings.h"
#include "core/utilities/clock.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/recording_player_observer.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/content_playing/test_sinks_keep_alive.h"
#include "tests/support/event_log.h"
#include "tests/support/reference_service.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

using Core::ContentPlaying::Player;
using Core::DataTypes::Playback::AllContentTypes;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::PlaybackConfiguration;
using Core::DataTypes::Playback::Track;
using Tests::EventLog;
using Tests::PlaybackTestTracks;
using Tests::RecordingPlayerObserver;

namespace {

// No days; every kind of track is present, as the configuration reader leaves it.
PlaybackConfiguration WithTracks(const std::vector<Track>& tracks)
{
    PlaybackConfiguration configuration;
    configuration.version = 7;
    for (const ContentType type : AllContentTypes()) {
        configuration.tracks[type];
    }
    for (const auto& track : tracks) {
        configuration.tracks[track.contentType].push_back(track);
    }
    return configuration;
}

// One period of the test day; `others` are in the configuration, not played.
PlaybackConfiguration Schedule(const std::string& periodName, const std::string& end,
                               const std::string& playlistName, const std::vector<Track>& played,
                               const std::vector<Track>& others = {})
{
    std::vector<Track> tracks = played;
    tracks.insert(tracks.end(), others.begin(), others.end());
    PlaybackConfiguration configuration = WithTracks(tracks);
    const ContentType type = played.front().contentType;
    Core::DataTypes::Playback::Playlist playlist;
    playlist.id = 1;
    playlist.contentType = type;
    playlist.name = playlistName;
    playlist.image = playlistName + ".png";
    for (const auto& track : played) {
        playlist.trackIds.push_back(track.id);
    }
    configuration.playlists = {playlist};
    Core::DataTypes::Playback::PlaybackPeriod period;
    period.name = periodName;
    period.startTime = "10:00";
    period.endTime = end;
    period.contentVolume = 100;
    period.adsVolume = 100;
    period.playlistIds[type] = 1;
    Core::DataTypes::Playback::Day day;
    day.dayOfWeek = "Суббота";
    day.date = Tests::TestPeriods::Today();
    day.periods = {period};
    configuration.days = {day};
    return configuration;
}

Track Cached(int id, ContentType type, const char* media, const char* title)
{
    return PlaybackTestTracks::Cached(id, type, QString::fromUtf8(media), QString::fromUtf8(title));
}

const QString DeferredRestart =
    QStringLiteral("Перезапуск воспроизведения отложен до окончания текущего трека");
const QString Restart = QStringLiteral("Перезапуск воспроизведения");

} // namespace

// The player over real periods, blocks and sound, downloading from the reference service.
class PlayerTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(content.isValid());
        QVERIFY(QDir(content.path()).mkpath(QStringLiteral("music")));
        for (const QString& name : {QStringLiteral("short_b.mp3"), QStringLiteral("short_c.mp3")}) {
            const QString source = Tests::TestMedia::Path(name);
            QVERIFY2(!source.isEmpty(), "register the test with NEEDS media");
            QVERIFY(QFile::copy(source, content.filePath(QStringLiteral("music/") + name)));
        }
        QString error;
        service = Tests::ReferenceService::Started(QStringLiteral("basic"), &error, content.path());
        QVERIFY2(service, qPrintable(error));
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        // Three seconds before an ad slot at 10:30, half an hour into a period from 10:00.
        Tests::TestPeriods::SetNow(QTime(10, 29, 57));
        for (const ContentType type : {ContentType::Music, ContentType::Video, ContentType::Photo}) {
            Core::Settings::SetShuffle(type, false);
        }
        sinks = std::make_unique<Tests::TestSinksKeepAlive>();
        QVERIFY2(sinks->Start(), qPrintable(sinks->ErrorString()));
        observer = std::make_unique<RecordingPlayerObserver>();
    }

    void cleanup()
    {
        player.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        observer.reset();
        dataDirectory.reset();
        Core::Utilities::Clock::ResetForTesting();
    }

    // Each real change is reported once; updates while off are only stored.
    void switchingOnAndOffWithAnEmptySchedule()
    {
        player = std::make_unique<Player>(WithTracks({}));
        int stops = 0;
        player->SetPlaybackStopHandler([&stops]() { ++stops; });
        player->AddObserver(observer.get());
        player->AddObserver(observer.get());

        player->Stop(true);
        PlaybackConfiguration newer = WithTracks({});
        newer.version = 8;
        player->UpdateConfiguration(newer, false);
        QCOMPARE(player->Configuration().version, 8);
        QVERIFY(observer->calls.empty());

        player->Start();
        player->Start();
        QCOMPARE(observer->Events(), QStringList{"last period finished"});
        QVERIFY(observer->calls.back().state.playingNow);
        QCOMPARE(EventLog::Count(QStringLiteral("Дни расписания не найдены!")), 1);

        player->Stop(true);
        player->Stop(true);
        QCOMPARE(observer->calls.size(), std::size_t{2});
        QVERIFY(!observer->calls.back().state.playingNow);
        QCOMPARE(stops, 1);

        player->TogglePlayback();
        QVERIFY(player->CurrentState().playingNow);
        player->TogglePlayback();
        QCOMPARE(observer->Events(), (QStringList{"last period finished", "last period finished"}));
        QVERIFY(!player->CurrentState().playingNow);
        QCOMPARE(stops, 2);

        player->RemoveObserver(observer.get());
        player->Start();
        QCOMPARE(observer->calls.size(), std::size_t{4});
    }

    // Logged, and the player stays on with nothing; a corrected schedule plays at once.
    void aScheduleThatFailsToBuild()
    {
        const Track photo = Cached(31, ContentType::Photo, "photo_landscape.jpg", "Пейзаж");
        PlaybackConfiguration broken = Schedule("День", "11:00", "Фото", {photo});
        broken.tracks.erase(ContentType::Clip);
        player = std::make_unique<Player>(broken);
        player->AddObserver(observer.get());
        player->Start();
        QVERIFY(player->CurrentState().playingNow);
        QVERIFY(observer->calls.empty());
        QCOMPARE(player->CurrentPeriodName(), std::string());
        const QString log = EventLog::Text();
        QVERIFY(log.contains("Ошибка построения периодов воспроизведения из конфигурации версии 7: "));
        QVERIFY(!log.contains("Периоды воспроизведения:"));

        player->UpdateConfiguration(Schedule("День", "11:00", "Фото", {photo}), false);
        QCOMPARE(observer->Events(), (QStringList{"period День", "track photo 31"}));
        QCOMPARE(EventLog::Entries().filter(QStringLiteral("Периоды воспроизведения:")).size(), 1);
        const auto& started = observer->calls[observer->IndexOf(QStringLiteral("period День"))].state;
        const auto& shown = started.contentPlayingStates.at(ContentType::Photo);
        QVERIFY(shown.playing);
        QCOMPARE(shown.playlistName, std::string("Фото"));
        QCOMPARE(shown.playlistImage, std::string("Фото.png"));
        QVERIFY(!started.contentPlayingStates.at(ContentType::Music).playing);
    }

    // Nothing on air to wait for: the update restarts at once; after the end a skip wakes nothing.
    void anUpdateWithNoTrackOnAirRestartsAtOnce_data()
    {
        QTest::addColumn<bool>("afterTheEnd");
        QTest::newRow("only photos") << false;
        QTest::newRow("after the last period") << true;
    }

    void anUpdateWithNoTrackOnAirRestartsAtOnce()
    {
        QFETCH(bool, afterTheEnd);
        // Two tracks, so that a skip would have somewhere to go.
        const Track a = Cached(1, ContentType::Music, "music_a.mp3", "Ля");
        const Track b = Cached(2, ContentType::Music, "music_b.mp3", "Ми");
        const Track photo = Cached(31, ContentType::Photo, "photo_landscape.jpg", "Пейзаж");
        player = std::make_unique<Player>(afterTheEnd ? Schedule("Утро", "10:30", "Музыка", {a, b}, {photo})
                                                      : Schedule("Утро", "11:00", "Фото", {photo}));
        player->AddObserver(observer.get());
        player->Start();
        QCOMPARE(player->CurrentPeriodName(), std::string("Утро"));
        if (afterTheEnd) {
            QTRY_VERIFY_WITH_TIMEOUT(observer->IndexOf(QStringLiteral("last period finished")) >= 0,
                                     Tests::Timeouts::Playback);
            QVERIFY(player->CurrentState().playingNow);
            player->GoToNextTrack(ContentType::Music);
            QCOMPARE(observer->Events().filter(QStringLiteral("track music")), QStringList{"track music 1"});
        }
        observer->calls.clear();

        player->UpdateConfiguration(Schedule("Вечер", "11:00", "Другие фото", {photo}), false);
        QCOMPARE(observer->Events(), (QStringList{"period Вечер", "track photo 31"}));
        QCOMPARE(player->CurrentState().contentPlayingStates.at(ContentType::Photo).playlistName,
                 std::string("Другие фото"));
        QCOMPARE(EventLog::Count(DeferredRestart), 0);
        QVERIFY(!player->RestartIfNeeded());
    }

    // The old playlist's next track never starts; a skip carries the waiting restart out at once.
    void anUpdateDuringMusicWaitsForTheTrack_data()
    {
        QTest::addColumn<bool>("skip");
        QTest::newRow("the track ends") << false;
        QTest::newRow("a skip") << true;
    }

    void anUpdateDuringMusicWaitsForTheTrack()
    {
        QFETCH(bool, skip);
        const Track a = Cached(1, ContentType::Music, "short_a.mp3", "Ля");
        const Track b = Cached(2, ContentType::Music, "short_b.mp3", "Ми");
        const Track c = Cached(3, ContentType::Music, "short_c.mp3", "Си");
        // Each schedule names the other's tracks, so that their files stay in the cache.
        player = std::make_unique<Player>(Schedule("Утро", "11:00", "Музыка", {a, b}, {c}));
        player->AddObserver(observer.get());
        player->Start();
        QTRY_VERIFY_WITH_TIMEOUT(observer->IndexOf(QStringLiteral("track music 1")) >= 0,
                                 Tests::Timeouts::Playback);
        player->UpdateConfiguration(Schedule("Вечер", "11:00", "Вечерняя", {c}, {a, b}), false);
        QVERIFY(observer->IndexOf(QStringLiteral("period Вечер")) < 0);
        QCOMPARE(EventLog::Count(DeferredRestart), 1);

        if (skip) {
            player->GoToNextTrack(ContentType::Music);
        } else {
            QTRY_VERIFY_WITH_TIMEOUT(observer->IndexOf(QStringLiteral("track music 3")) >= 0,
                                     Tests::Timeouts::Playback);
        }
        QCOMPARE(observer->Events(),
                 (QStringList{"period Утро", "track music 1", "period Вечер", "track music 3"}));
        const QStringList log = EventLog::Entries();
        QCOMPARE(log.count(Restart), 1);
        QVERIFY(!player->RestartIfNeeded());
        QCOMPARE(player->CurrentState().contentPlayingStates.at(ContentType::Music).playlistName,
                 std::string("Вечерняя"));
        if (!skip) {
            // The restart came from the end of the first track.
            QCOMPARE(log.mid(static_cast<int>(log.indexOf(DeferredRestart)) + 1, 2),
                     (QStringList{"Блок контента остановил воспроизведение после окончания текущего трека",
                                  Restart}));
        }
    }

    // The screens keep the music beneath an ad as it was.
    void anAdBlockEndResetsOnlyTheClipState()
    {
        const Track music = Cached(1, ContentType::Music, "music_a.mp3", "Ля");
        const Track clip = Cached(50, ContentType::Clip, "short_c.mp3", "Скидки");
        Core::DataTypes::Playback::AdBlock adBlock;
        adBlock.name = "Полдень";
        adBlock.interruptContent = true;
        adBlock.startTime = "10:30";
        adBlock.tracks = {{Tests::TestPeriods::Today(), 50}};
        PlaybackConfiguration configuration = Schedule("Утро", "11:00", "Музыка", {music}, {clip});
        configuration.adBlocks = {adBlock};
        player = std::make_unique<Player>(configuration);
        player->AddObserver(observer.get());
        player->Start();

        QTRY_VERIFY_WITH_TIMEOUT(observer->IndexOf(QStringLiteral("track clip 50")) >= 0,
                                 Tests::Timeouts::Playback);
        const int adStart = observer->IndexOf(QStringLiteral("track clip 50"));
        QCOMPARE(observer->calls[adStart].state.contentPlayingStates.at(ContentType::Clip).trackTitle,
                 std::string("Скидки"));
        const auto adEnded = [this, adStart]() {
            for (std::size_t i = adStart; i < observer->calls.size(); ++i) {
                if (!observer->calls[i].state.contentPlayingStates.at(ContentType::Clip).playing) {
                    return static_cast<int>(i);
                }
            }
            return -1;
        };
        QTRY_VERIFY_WITH_TIMEOUT(adEnded() >= 0, Tests::Timeouts::Playback);
        // The clip's entry is reset, the music's is as it was.
        auto before = observer->calls[adEnded() - 1].state.contentPlayingStates;
        const auto after = observer->calls[adEnded()].state.contentPlayingStates;
        QCOMPARE(before.at(ContentType::Music).trackTitle, std::string("Ля"));
        before.at(ContentType::Clip).Reset();
        for (const ContentType type : AllContentTypes()) {
            QCOMPARE(after.at(type).ToString(), before.at(type).ToString());
        }
        const double pausedAt = after.at(ContentType::Music).progress;
        QTRY_VERIFY_WITH_TIMEOUT(player->CurrentState().contentPlayingStates.at(ContentType::Music).progress >
                                     pausedAt + 0.02,
                                 Tests::Timeouts::Playback);
    }

    // The period's own file comes down first; every observer hears each report in turn.
    void aPeriodWaitsForItsMediaToDownload()
    {
        Track wanted = PlaybackTestTracks::Make(1, ContentType::Music, QString(), QStringLiteral("Ми"));
        wanted.path = "short_b.mp3";
        Track later = PlaybackTestTracks::Make(2, ContentType::Music, QString(), QStringLiteral("Си"));
        later.path = "short_c.mp3";
        // The period's track is the configuration's second: it still comes first.
        PlaybackConfiguration configuration = Schedule("Утро", "11:00", "Музыка", {wanted});
        auto& music = configuration.tracks[ContentType::Music];
        music.insert(music.begin(), later);
        configuration.domains = {service->MediaDomain().toStdString()};
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));

        QStringList lines;
        RecordingPlayerObserver first(QStringLiteral("A"), &lines);
        RecordingPlayerObserver second(QStringLiteral("B"), &lines);
        player = std::make_unique<Player>(configuration);
        player->SetObjectCode("shop1");
        player->AddObserver(&first);
        player->AddObserver(&second);
        player->Start();

        QCOMPARE(first.Events(), QStringList{"period Утро"});
        const auto& waiting = first.calls.back().state.downloadsInfo.at(ContentType::Music);
        QVERIFY(waiting.waitingDownload);
        QCOMPARE(waiting.downloaded, 0);
        QCOMPARE(waiting.total, 2);

        QTRY_VERIFY_WITH_TIMEOUT(first.IndexOf(QStringLiteral("track music 1")) >= 0,
                                 Tests::Timeouts::Playback);
        const auto& arrived = first.calls[first.IndexOf(QStringLiteral("track music 1"))].state;
        QVERIFY(!arrived.downloadsInfo.at(ContentType::Music).waitingDownload);
        QTRY_COMPARE_WITH_TIMEOUT(player->CurrentState().downloadsInfo.at(ContentType::Music).downloaded, 2,
                                  Tests::Timeouts::Process);
        QCOMPARE(player->CurrentState().downloadsInfo.at(ContentType::Music).downloadedTracks,
                 (std::vector<Track>{wanted, later}));
        QStringList targets;
        for (const QJsonValue& request : service->Requests()) {
            targets << request.toObject().value(QStringLiteral("target")).toString();
        }
        QCOMPARE(targets, (QStringList{"/media/shop1/music/short_b.mp3", "/media/shop1/music/short_c.mp3"}));

        // Each report reaches A, then B; the state comes before the track start.
        const int trackLine = static_cast<int>(lines.indexOf(QStringLiteral("A: track music 1")));
        QCOMPARE(lines.mid(trackLine - 2, 4),
                 (QStringList{"A: state", "B: state", "A: track music 1", "B: track music 1"}));
    }

    // The cache keeps only what the configuration names; a like is stored for the next rebuild.
    void filesAreCheckedAtConstruction()
    {
        const Track music = Cached(1, ContentType::Music, "short_a.mp3", "Ля");
        const Track missing = PlaybackTestTracks::Make(2, ContentType::Music, QStringLiteral("absent.mp3"));
        const Track clip = Cached(3, ContentType::Clip, "short_b.mp3", "Скидки");
        const Track stray = Cached(4, ContentType::Music, "short_c.mp3", "Старая");
        player = std::make_unique<Player>(WithTracks({music, missing, clip}));
        QVERIFY(!Core::ContentPlaying::ContentFilesHelper::FileForTrackExists(stray));
        const auto state = player->CurrentState();
        const auto& musicFiles = state.downloadsInfo.at(ContentType::Music);
        QCOMPARE(musicFiles.downloaded, 1);
        QCOMPARE(musicFiles.total, 2);
        QCOMPARE(musicFiles.downloadedTracks, std::vector<Track>{music});
        QCOMPARE(state.downloadsInfo.at(ContentType::Clip).downloaded, 1);

        using Core::DataTypes::Playback::LikeStatus;
        player->RefreshTrackLikeStatus(ContentType::Music, 2, LikeStatus::Liked);
        const auto& stored = player->Configuration().tracks.at(ContentType::Music);
        QCOMPARE(stored.at(0).likeStatus, LikeStatus::None);
        QCOMPARE(stored.at(1).likeStatus, LikeStatus::Liked);
    }

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::TestSinksKeepAlive> sinks;
    std::unique_ptr<RecordingPlayerObserver> observer;
    std::unique_ptr<Player> player;
};

QTEST_GUILESS_MAIN(PlayerTest)
#include "tst_player.moc"
