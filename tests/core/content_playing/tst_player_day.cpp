#include "core/content_playing/abstract_content_block.h"
#include "core/content_playing/playable_period.h"
#include "core/content_playing/player.h"
#include "core/settings.h"
#include "core/utilities/clock.h"
#include "core/utilities/local_time_helper.h"
#include "tests/core/content_playing/event_log_messages.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/recording_player_observer.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/support/pcm_analysis.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QtTest>

#include <memory>
#include <string>
#include <vector>

using Core::ContentPlaying::AbstractContentBlock;
using Core::ContentPlaying::PlayablePeriod;
using Core::ContentPlaying::Player;
using Core::DataTypes::Playback::AdBlock;
using Core::DataTypes::Playback::AllContentTypes;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::PlaybackConfiguration;
using Core::DataTypes::Playback::PlaybackPeriod;
using Core::DataTypes::Playback::Playlist;
using Core::DataTypes::Playback::Track;
using Tests::ToneTimeline;

namespace {

constexpr double ToneA = Tests::TestMedia::MusicAFrequency;
constexpr double ToneB = Tests::TestMedia::MusicBFrequency;
constexpr double ToneC = Tests::TestMedia::MusicCFrequency;
constexpr double ToneAd = Tests::TestMedia::AdFrequency;
constexpr double Heard = 0.01;
constexpr double NotHeard = 0.002;
// How long each boundary is listened to after it.
constexpr double After = 1.5;

PlaybackPeriod Period(const std::string& name, const std::string& start, const std::string& end, int music,
                      int volume, int photo = 0)
{
    PlaybackPeriod period;
    period.name = name;
    period.startTime = start;
    period.endTime = end;
    period.contentVolume = volume;
    period.adsVolume = 100;
    period.playlistIds[ContentType::Music] = music;
    period.playlistIds[ContentType::Photo] = photo;
    return period;
}

Playlist List(int id, const Track& track, const std::string& name)
{
    Playlist playlist;
    playlist.id = id;
    playlist.contentType = track.contentType;
    playlist.name = name;
    playlist.trackIds = {track.id};
    return playlist;
}

// Four periods of one day from 09:00 to 13:00, the first two on the same playlist
// at different volumes, the third with photos beside its music, the last with a
// spot at its start; every file is in the cache.
PlaybackConfiguration FourPeriodDay(const std::string& date)
{
    const auto cached = [](int id, ContentType type, const char* media) {
        return Tests::PlaybackTestTracks::Cached(id, type, QString::fromUtf8(media));
    };
    const Track a = cached(1, ContentType::Music, "music_a.mp3");
    const Track b = cached(2, ContentType::Music, "music_b.mp3");
    const Track c = cached(3, ContentType::Music, "music_c.mp3");
    const Track photo = cached(31, ContentType::Photo, "photo_landscape.jpg");
    const Track spot = cached(50, ContentType::Clip, "ad_short.mp3");

    PlaybackConfiguration configuration;
    for (const ContentType type : AllContentTypes()) {
        configuration.tracks[type];
    }
    for (const Track& track : {a, b, c, photo, spot}) {
        configuration.tracks[track.contentType].push_back(track);
    }
    configuration.playlists = {List(1, a, "Утренняя"), List(2, b, "Дневная"), List(3, c, "Обеденная"),
                               List(4, photo, "Витрина")};
    Core::DataTypes::Playback::Day day;
    day.dayOfWeek = "Суббота";
    day.date = date;
    day.periods = {Period("Утро", "09:00", "10:00", 1, 100), Period("Позднее утро", "10:00", "11:00", 1, 70),
                   Period("Перед обедом", "11:00", "12:00", 2, 100, 4),
                   Period("Обед", "12:00", "13:00", 3, 100)};
    configuration.days = {day};
    AdBlock noon;
    noon.name = "Полдень";
    noon.interruptContent = true;
    noon.startTime = "12:00";
    noon.tracks = {{date, spot.id}};
    configuration.adBlocks = {noon};
    return configuration;
}

QString Text(const std::string& name, const std::string& start, const std::string& end)
{
    return QString::fromStdString(Tests::TestPeriods::Text(name, start, end));
}

// What a run logs when started three seconds before the end of `period`, up to
// its finish timer.
QStringList RunUpToTheEnd(const QString& days, const QString& period)
{
    return QStringList{days, "Период " + period + " закончится через 00:03",
                       "\tЗапуск таймера на окончание периода 00:03",
                       "Сработал таймер окончания периода " + period};
}

// `period` taken over at its start with no spot playing then.
QStringList TakenOver(const QString& period, bool adAtStart)
{
    return {"Период " + period + " закончится через 01:00:00",
            "\tЗапуск таймера на окончание периода 01:00:00",
            "\tНет воспроизводящегося рекламного блока в начале периода",
            "У периода " + period +
                (adAtStart ? " есть реклама, совпадающая с началом периода"
                           : " нет рекламы, совпадающей с началом периода")};
}

// The music block of each period the player goes into.
class MusicBlockWatcher : public Core::ContentPlaying::PlayerObserver
{
public:
    void PlayerDidChangePeriod(const Player&, const PlayablePeriod& period) override
    {
        blocks.push_back(period.GetBlock(ContentType::Music));
    }

    std::vector<std::shared_ptr<AbstractContentBlock>> blocks;
};

} // namespace

// One configuration of a whole day, as the server would deliver it, played by the
// player on real sound. Each boundary is reached by switching the player off,
// moving the clock to three seconds before it and switching on again; the boundary
// itself then passes in real time.
class PlayerDayTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
    }

    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
    }

    void cleanup()
    {
        if (QTest::currentTestFailed()) {
            qInfo().noquote() << "The event log:\n" << Tests::PlaybackTestTracks::EventLog();
        }
        player.reset();
        watcher.blocks.clear();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        dataDirectory.reset();
        Core::Utilities::Clock::ResetForTesting();
    }

    void aDayPlaysPeriodByPeriod()
    {
        Core::Settings::SetUseCrossfade(false);
        Tests::TestPeriods::SetNow(QTime(8, 59, 59));
        const std::string today = Core::Utilities::LocalTimeHelper::CurrentDateToString();
        const PlaybackConfiguration configuration = FourPeriodDay(today);
        const QString morning = Text("Утро", "09:00", "10:00");
        const QString lateMorning = Text("Позднее утро", "10:00", "11:00");
        const QString beforeLunch = Text("Перед обедом", "11:00", "12:00");
        const QString lunch = Text("Обед", "12:00", "13:00");
        const QString days = "Периоды воспроизведения:\n\tСуббота " + QString::fromStdString(today) +
                             "\n\t\t Утро  начало 09:00 конец 10:00"
                             "\n\t\t Позднее утро  начало 10:00 конец 11:00"
                             "\n\t\t Перед обедом  начало 11:00 конец 12:00"
                             "\n\t\t Обед  начало 12:00 конец 13:00";

        player = std::make_unique<Player>(configuration);
        player->AddObserver(&observer);
        player->AddObserver(&watcher);

        // Before the first period nothing covers now: the player says so and stays on.
        player->Start();
        QCOMPARE(observer.Events(), QStringList{"no current period"});
        QVERIFY(player->CurrentState().playingNow);
        QCOMPARE(player->CurrentPeriodName(), std::string());
        QCOMPARE(Tests::EventLogMessages::ReadWithoutTrackStarts(),
                 (QStringList{days, "Период " + lunch + " не является текущим и не имеет следующего"}));

        // 10:00, the same playlist on both sides: the block on air goes on, without a
        // gap, at the later period's volume.
        StartAt(QTime(9, 59, 57));
        QCOMPARE(player->CurrentPeriodName(), std::string("Утро"));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneA), Tests::Timeouts::Playback);
        QVERIFY(PassBoundary(QStringLiteral("period Позднее утро")));
        QCOMPARE(observer.Events(), (QStringList{"period Утро", "track music 1", "period Позднее утро"}));
        QCOMPARE(watcher.blocks.size(), std::size_t{2});
        QVERIFY(watcher.blocks[0]);
        QCOMPARE(watcher.blocks[1], watcher.blocks[0]);
        for (double t = boundary - 0.5; t < boundary + 0.5; t += ToneTimeline::Window) {
            const double level = ToneTimeline::Level(listener.A(), ToneA, t, t + ToneTimeline::Window);
            QVERIFY2(level > NotHeard, qPrintable(QStringLiteral("%1 s: %2").arg(t - boundary).arg(level)));
        }
        const double louder = ToneTimeline::Level(listener.A(), ToneA, boundary - 1.3, boundary - 0.3);
        const double quieter = ToneTimeline::Level(listener.A(), ToneA, boundary + 0.4, boundary + 1.4);
        QVERIFY2(quieter < louder * 0.5, qPrintable(QStringLiteral("%1 -> %2").arg(louder).arg(quieter)));
        QCOMPARE(LogSinceStart(), RunUpToTheEnd(days, morning) +
                                      QStringList{"Блок music передан в следующий период"} +
                                      TakenOver(lateMorning, false));

        // 11:00, another playlist, with photos beside it: the old tone stops, the new
        // one takes over.
        StartAt(QTime(10, 59, 57));
        QCOMPARE(player->CurrentPeriodName(), std::string("Позднее утро"));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneA), Tests::Timeouts::Playback);
        QVERIFY(PassBoundary(QStringLiteral("period Перед обедом")));
        QCOMPARE(observer.Events(), (QStringList{"period Позднее утро", "track music 1",
                                                 "period Перед обедом", "track music 2", "track photo 31"}));
        QCOMPARE(player->CurrentState().contentPlayingStates.at(ContentType::Photo).playlistName,
                 std::string("Витрина"));
        QVERIFY(ToneTimeline::Level(listener.A(), ToneA, boundary + 0.5, boundary + After) < NotHeard);
        const double b2 = ToneTimeline::FirstHeard(listener.A(), ToneB, Heard, soundStart);
        QVERIFY2(b2 > boundary - 0.5 && b2 < boundary + 1.0, qPrintable(QString::number(b2 - boundary)));
        QCOMPARE(LogSinceStart(), RunUpToTheEnd(days, lateMorning) +
                                      QStringList{"Блок music НЕ передан в следующий период"} +
                                      TakenOver(beforeLunch, false));

        // 12:00, a spot at the period's start: it plays first, the music after it.
        StartAt(QTime(11, 59, 57));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneB), Tests::Timeouts::Playback);
        QVERIFY(PassBoundary(QStringLiteral("period Обед")));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneC), Tests::Timeouts::Playback);
        QCOMPARE(observer.Events(), (QStringList{"period Перед обедом", "track music 2", "track photo 31",
                                                 "period Обед", "track clip 50", "track music 3"}));
        QVERIFY(ToneTimeline::Level(listener.A(), ToneB, boundary + 0.5, boundary + After) < NotHeard);
        // Nothing else in the recording has the spot's pitch, so its last sound is the
        // spot's end. The music must follow that end, not the spot's nominal length:
        // libvlc starved of processor time at a file's start drops what it is late
        // for, and the spot is then heard shorter than it is.
        const double adHeard = ToneTimeline::FirstHeard(listener.A(), ToneAd, Heard, soundStart);
        const double adEnded = ToneTimeline::LastHeard(listener.A(), ToneAd, Heard);
        const double cHeard = ToneTimeline::FirstHeard(listener.A(), ToneC, Heard, soundStart);
        const QString timeline = QStringLiteral("spot %1 s to %2 s, music from %3 s")
                                     .arg(adHeard - boundary)
                                     .arg(adEnded - boundary)
                                     .arg(cHeard - boundary);
        QVERIFY2(adHeard > boundary - 0.5 && adHeard < boundary + 1.0, qPrintable(timeline));
        QVERIFY2(cHeard >= adEnded - ToneTimeline::Window && cHeard < adEnded + 1.0, qPrintable(timeline));
        QCOMPARE(LogSinceStart(), (RunUpToTheEnd(days, beforeLunch) +
                                   QStringList{"Блок music НЕ передан в следующий период",
                                               "Блок photo НЕ передан в следующий период"} +
                                   TakenOver(lunch, true) +
                                   QStringList{"Начинаем воспроизведение рекламного блока Полдень",
                                               "Завершено воспроизведение рекламного блока Полдень"}));

        // 13:00, the end of the last period: everything stops, the player stays on.
        // Started in the middle of its period, the last one does not play its spot.
        StartAt(QTime(12, 59, 57));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneC), Tests::Timeouts::Playback);
        QVERIFY(PassBoundary(QStringLiteral("last period finished")));
        QCOMPARE(observer.Events(), (QStringList{"period Обед", "track music 3", "last period finished"}));
        QVERIFY(player->CurrentState().playingNow);
        const double silence = Tests::PcmAnalysis::Rms(listener.A(), boundary + 0.5, boundary + After);
        QVERIFY2(silence < NotHeard, qPrintable(QString::number(silence)));
        QCOMPARE(LogSinceStart(),
                 RunUpToTheEnd(days, lunch) + QStringList{"У периода " + lunch + " нет следующего периода"});
    }

private:
    // Off, the clock to `time` of the test day, and on again; what follows is
    // compared from here on.
    void StartAt(const QTime& time)
    {
        player->Stop(true);
        observer.calls.clear();
        watcher.blocks.clear();
        logStart = static_cast<int>(Tests::EventLogMessages::ReadWithoutTrackStarts().size());
        soundStart = listener.SecondsRecorded();
        Tests::TestPeriods::SetNow(time);
        player->Start();
    }

    bool HeardSinceStart(double frequency) const
    {
        return ToneTimeline::FirstHeard(listener.A(), frequency, Heard, soundStart) >= 0;
    }

    // Waits for the report of the boundary, notes where it falls in the recording
    // and listens on past it; false when it is not reported.
    bool PassBoundary(const QString& event)
    {
        if (!QTest::qWaitFor([&]() { return observer.HasEvent(event); }, Tests::Timeouts::Playback)) {
            qWarning().noquote() << "Not reported:" << event << "after" << observer.Events().join(", ");
            return false;
        }
        boundary = listener.SecondsRecorded();
        return listener.WaitUntilRecorded(boundary + After, Tests::Timeouts::Playback);
    }

    QStringList LogSinceStart() const
    {
        return Tests::EventLogMessages::ReadWithoutTrackStarts().mid(logStart);
    }

    Tests::TwoSinkListener listener;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    Tests::RecordingPlayerObserver observer;
    MusicBlockWatcher watcher;
    std::unique_ptr<Player> player;
    int logStart = 0;
    double soundStart = 0.0;
    double boundary = 0.0;
};

QTEST_GUILESS_MAIN(PlayerDayTest)
#include "tst_player_day.moc"
