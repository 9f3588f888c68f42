#include "core/content_playing/player.h"
#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/database/db_manager.h"
#include "core/settings.h"
#include "core/statistics/manager.h"
#include "core/statistics/report.h"
#include "core/user_environment.h"
#include "core/utilities/clock.h"
#include "tests/core/content_playing/recording_player_observer.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/content_playing/test_sinks_keep_alive.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/call_outcome.h"
#include "tests/support/event_log.h"
#include "tests/support/reference_service.h"
#include "tests/support/service_fault.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QElapsedTimer>
#include <QtTest>

#include <algorithm>
#include <limits>

using Core::UserEnvironment;
using Core::ContentPlaying::Player;
using Core::DataBase::DbManager;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Track;
using Tests::ShopSession;

namespace {

// Longer than the 1.5 s short track, shorter than the 8 s music, and longer than
// Timeouts::Quick, so that an ad held like music could not arrive within Quick.
constexpr int ReportDelayMs = 2500;
static_assert(Tests::Timeouts::Quick < ReportDelayMs);
// The shortest update interval (15 minutes) then ticks every 0.75 s.
constexpr int TestMinuteMs = 50;
constexpr unsigned UpdateIntervalMinutes = 15;
constexpr int UpdateTickMs = TestMinuteMs * static_cast<int>(UpdateIntervalMinutes);
// How far from the delay a music change has to be for the test to say whether its
// report was due: the report timer, like every coarse timer, may be 5 % off.
constexpr int JudgingMarginMs = 400;
constexpr int MusicVolume = 90;

const QString TickEntry = QStringLiteral("Сработал таймер обновления по времени");
// An update that could not reach the server goes on with the stored configuration.
const QString FailedUpdateEntry = QStringLiteral("Используем локальную конфигурации воспроизведения");
const QString SuccessfulUpdateEntry =
    QStringLiteral("Версия сохраненной конфигурации совпадает с версией на сервере");

QJsonObject Period(const QString& name, const QString& start, const QString& end, int musicPlaylist)
{
    return ShopSession::Period(name, start, end, musicPlaylist, MusicVolume, 80);
}

QJsonObject Playlist(int id, const QList<int>& tracks)
{
    return ShopSession::MusicPlaylist(id, QStringLiteral("Музыка %1").arg(id), tracks);
}

// Today's schedule with, when `adAt` is set, an interrupting block of the ad at that minute.
QJsonObject Template(const QJsonArray& periods, const QJsonArray& playlists, const QString& adAt = QString(),
                     const QString& firstMusicFile = QStringLiteral("music_a.mp3"))
{
    return ShopSession::Schedule(periods, playlists,
                                 adAt.isEmpty() ? QJsonArray() : QJsonArray{ShopSession::AdBlock(adAt)},
                                 firstMusicFile);
}

// One period around the test clock playing tracks 1, 2, 3.
QJsonObject OnePeriod(const QString& adAt = QString(),
                      const QString& firstMusicFile = QStringLiteral("music_a.mp3"))
{
    return Template({Period("Утро", "10:00", "11:00", 11)}, {Playlist(11, {1, 2, 3})}, adAt, firstMusicFile);
}

// A track start as the player announced it, with the clock then and a monotonic stamp.
struct Start
{
    int id = 0;
    ContentType type = ContentType::Music;
    bool resumed = false;
    QTime clock;
    qint64 atMs = 0;
};

// The player's observer that also notes, for each track start, what the clock read.
class StartLog : public Tests::RecordingPlayerObserver
{
public:
    StartLog()
    {
        monotonic.start();
    }

    void PlayerDidStartPlayingTrack(const Player& player, ContentType type, const Track& track,
                                    bool resumed) override
    {
        RecordingPlayerObserver::PlayerDidStartPlayingTrack(player, type, track, resumed);
        starts.push_back({track.id, type, resumed, Core::Utilities::Clock::CurrentLocalDateTime().time(),
                          monotonic.elapsed()});
    }

    // The starts that are not a pause or an ad ending, from `from` on.
    std::vector<Start> Fresh(ContentType type, std::size_t from = 0) const
    {
        std::vector<Start> fresh;
        for (std::size_t i = from; i < starts.size(); ++i) {
            if (!starts[i].resumed && starts[i].type == type) {
                fresh.push_back(starts[i]);
            }
        }
        return fresh;
    }

    std::vector<Start> starts;

private:
    QElapsedTimer monotonic;
};

QString Describe(const Start& start)
{
    return QStringLiteral("%1 %2 at %3")
        .arg(QString::fromStdString(Core::DataTypes::Playback::ContentTypeToString(start.type)))
        .arg(start.id)
        .arg(start.clock.toString(QStringLiteral("HH:mm:ss.zzz")));
}

QString Describe(const QJsonArray& reports)
{
    QStringList lines;
    for (const QJsonValue& value : reports) {
        const QJsonObject report = value.toObject();
        lines << QStringLiteral("%1 %2 at %3 %4, volume %5, shop %6")
                     .arg(report.value("type").toString())
                     .arg(report.value("track_id").toInt())
                     .arg(report.value("date").toString(), report.value("time").toString())
                     .arg(report.value("volume").toInt())
                     .arg(report.value("shop_id").toInt());
    }
    return lines.isEmpty() ? QStringLiteral("(no reports)") : lines.join(QStringLiteral("; "));
}

// The report of this start, stamped with the clock at the start (give or take the
// second the start may straddle), not at the moment of sending. An ad block announces
// the volume it was built with, whatever its period sets, so only music is held to
// its period's volume.
bool IsReportOf(const QJsonObject& report, const Start& start)
{
    const bool music = start.type == ContentType::Music;
    const QTime stamped = QTime::fromString(report.value("time").toString(), QStringLiteral("HH:mm:ss"));
    return report.value("track_id").toInt() == start.id &&
           report.value("shop_id").toInt() == ShopSession::ShopId &&
           report.value("type").toString() == (music ? "music" : "clip") &&
           (!music || report.value("volume").toInt() == MusicVolume) &&
           report.value("date").toString() == QString::fromStdString(Tests::TestPeriods::Today()) &&
           stamped.isValid() && stamped.msecsTo(start.clock) >= 0 && stamped.msecsTo(start.clock) < 2000;
}

// Pairs each owed start with one report of it, and each start in `either` with at
// most one; what is left on either side, or empty.
QString Unpaired(const std::vector<Start>& owed, QJsonArray reports, const std::vector<Start>& either = {})
{
    const auto reportOf = [&reports](const Start& start) {
        return std::find_if(reports.begin(), reports.end(), [&start](const QJsonValue& report) {
            return IsReportOf(report.toObject(), start);
        });
    };
    QStringList lost;
    for (const Start& start : owed) {
        const auto found = reportOf(start);
        if (found == reports.end()) {
            lost << Describe(start);
        } else {
            reports.erase(found);
        }
    }
    for (const Start& start : either) {
        const auto found = reportOf(start);
        if (found != reports.end()) {
            reports.erase(found);
        }
    }
    if (lost.isEmpty() && reports.isEmpty()) {
        return QString();
    }
    return QStringLiteral("never reported: [%1]; reported without a start of their own: [%2]")
        .arg(lost.join(QStringLiteral("; ")), Describe(reports));
}

} // namespace

// The playback reports a signed-in environment makes of its player's track starts,
// delivered to the reference service over real sound and a real database.
class UserEnvironmentReportsTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;
    Core::DataTypes::Auth::Server server;
    Core::DataTypes::Auth::PlaybackObject shop;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::TestSinksKeepAlive> sinks;
    std::unique_ptr<StartLog> startLog;
    std::shared_ptr<UserEnvironment> environment;
    std::shared_ptr<Player> player;

    // Signs in to shop1 with `configurationTemplate` as its schedule, the clock at
    // `now`, and starts the player as the now-playing screen does.
    void SignInAndPlay(const QJsonObject& configurationTemplate, const QTime& now)
    {
        QVERIFY2(service->ReplaceConfiguration(QStringLiteral("shop1"), configurationTemplate) > 0,
                 qPrintable(service->ErrorString()));
        Tests::TestPeriods::SetNow(now);
        QString error;
        environment = ShopSession::SignedIn(server, shop, &error);
        QVERIFY2(environment, qPrintable(error));
        QVERIFY2(ShopSession::LoadSchedule(*environment, &error), qPrintable(error));

        player = environment->GetContentPlayer();
        QVERIFY(player);
        player->AddObserver(startLog.get());
        player->Start();
    }

    QJsonArray Reports() const
    {
        return service->StatisticsReports();
    }

    static std::vector<Core::Statistics::Report> Stored()
    {
        std::vector<Core::Statistics::Report> stored;
        if (!DbManager::GetInstance().SavedReports(stored)) {
            qWarning("the stored reports cannot be read");
        }
        return stored;
    }

    // The player starts as soon as the current period's first file is in.
    void WaitForTheDownloads() const
    {
        const auto downloaded = [this](ContentType type) {
            return player->CurrentState().downloadsInfo.at(type).downloaded;
        };
        QTRY_VERIFY_WITH_TIMEOUT(downloaded(ContentType::Music) == 3 && downloaded(ContentType::Clip) == 1,
                                 Tests::Timeouts::Process);
    }

    // A witness that the report delay and the margin have passed on the environment's
    // own event loop: its update ticks, n + 1 of them span at least n intervals.
    static void WaitPastTheReportDelay()
    {
        const int ticks = (ReportDelayMs + JudgingMarginMs) / UpdateTickMs + 2;
        const int seen = Tests::EventLog::Count(TickEntry);
        QTRY_VERIFY_WITH_TIMEOUT(Tests::EventLog::Count(TickEntry) >= seen + ticks, Tests::Timeouts::Process);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(content.isValid());
        QString error;
        service = ShopSession::StartedServing(content.path(),
                                              {"music/music_a.mp3", "music/music_b.mp3", "music/music_c.mp3",
                                               "music/short_a.mp3", "clip/ad_short.mp3"},
                                              &error);
        QVERIFY2(service, qPrintable(error));
        server = ShopSession::ServerOf(*service);
        shop = ShopSession::Shop();
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    void init()
    {
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        const QDate today = QDate::fromString(QString::fromStdString(Tests::TestPeriods::Today()),
                                              QStringLiteral("dd.MM.yyyy"));
        QVERIFY2(service->SetToday(today), qPrintable(service->ErrorString()));
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        for (const ContentType type : {ContentType::Music, ContentType::Video, ContentType::Photo}) {
            Core::Settings::SetShuffle(type, false);
        }
        Core::Settings::SetUpdateIntervalMinutes(UpdateIntervalMinutes);
        UserEnvironment::SetReportDelayForTesting(ReportDelayMs);
        UserEnvironment::SetMinuteForTesting(TestMinuteMs);
        sinks = std::make_unique<Tests::TestSinksKeepAlive>();
        QVERIFY2(sinks->Start(), qPrintable(sinks->ErrorString()));
        startLog = std::make_unique<StartLog>();
    }

    void cleanup()
    {
        if (environment) {
            environment->StopAndClearPlayer();
        }
        if (player) {
            player->RemoveObserver(startLog.get());
        }
        player.reset();
        environment.reset();
        ShopSession::ForgetSession();
        startLog.reset();
        sinks.reset();
        dataDirectory.reset();
    }

    // Music replaced before the delay was not heard: only the track after it, which
    // plays on, is reported.
    void musicReplacedBeforeTheDelayIsNotReported_data()
    {
        QTest::addColumn<QString>("firstFile");
        QTest::addColumn<bool>("skip");
        QTest::newRow("skipped at its start") << "music_a.mp3" << true;
        QTest::newRow("over before the delay") << "short_a.mp3" << false;
    }

    void musicReplacedBeforeTheDelayIsNotReported()
    {
        QFETCH(QString, firstFile);
        QFETCH(bool, skip);
        SignInAndPlay(OnePeriod(QString(), firstFile), QTime(10, 15));
        if (QTest::currentTestFailed()) {
            return;
        }
        QTRY_VERIFY_WITH_TIMEOUT(!startLog->Fresh(ContentType::Music).empty(), Tests::Timeouts::Playback);
        if (skip) {
            // A skip finds the next track only once its file is in.
            WaitForTheDownloads();
            if (QTest::currentTestFailed()) {
                return;
            }
            player->GoToNextTrack(ContentType::Music);
        }
        // Track 2's report comes after any that track 1 could have had.
        QTRY_VERIFY_WITH_TIMEOUT(!Reports().isEmpty(), Tests::Timeouts::Playback);
        const auto music = startLog->Fresh(ContentType::Music);
        QVERIFY2(music.size() >= 2 && music[1].id == 2, qPrintable(startLog->Events().join(", ")));
        const QString unpaired = Unpaired({music[1]}, Reports());
        QVERIFY2(unpaired.isEmpty(), qPrintable(unpaired));
    }

    // An ad goes out as it starts. The music it interrupted was reported once, when
    // its delay was up, stamped with its start rather than the moment of sending; it
    // picks up again after the ad without another report.
    void adsAreReportedAtOnceAndMusicOnceByItsStart()
    {
        // Three seconds before an ad at 10:30.
        SignInAndPlay(OnePeriod(QStringLiteral("10:30")), QTime(10, 29, 57));
        if (QTest::currentTestFailed()) {
            return;
        }
        QTRY_VERIFY_WITH_TIMEOUT(!startLog->Fresh(ContentType::Clip).empty(), Tests::Timeouts::Playback);
        const auto hasAd = [this]() {
            const QJsonArray reports = Reports();
            return std::any_of(reports.begin(), reports.end(), [](const QJsonValue& report) {
                return report.toObject().value("track_id").toInt() == ShopSession::AdTrack;
            });
        };
        QTRY_VERIFY2_WITH_TIMEOUT(hasAd(), qPrintable(Describe(Reports())), Tests::Timeouts::Quick);

        const auto resumed = [this]() {
            return std::any_of(startLog->starts.begin(), startLog->starts.end(), [](const Start& start) {
                return start.type == ContentType::Music && start.resumed;
            });
        };
        QTRY_VERIFY_WITH_TIMEOUT(resumed(), Tests::Timeouts::Playback);
        // Past the moment a second report of the music would have gone.
        WaitPastTheReportDelay();
        const auto music = startLog->Fresh(ContentType::Music);
        QCOMPARE(music.size(), std::size_t{1});
        const QString unpaired =
            Unpaired({music.front(), startLog->Fresh(ContentType::Clip).front()}, Reports());
        QVERIFY2(unpaired.isEmpty(), qPrintable(unpaired));
    }

    // Music that stops before the delay was not heard: its report is dropped, and
    // playing again is reported as usual.
    void aStopDropsThePendingReport_data()
    {
        QTest::addColumn<bool>("clearPlayer");
        QTest::newRow("player stopped") << false;
        QTest::newRow("player let go and made anew") << true;
    }

    void aStopDropsThePendingReport()
    {
        QFETCH(bool, clearPlayer);
        SignInAndPlay(OnePeriod(), QTime(10, 15));
        if (QTest::currentTestFailed()) {
            return;
        }
        QTRY_VERIFY_WITH_TIMEOUT(!startLog->Fresh(ContentType::Music).empty(), Tests::Timeouts::Playback);
        if (clearPlayer) {
            environment->StopAndClearPlayer();
            player->RemoveObserver(startLog.get());
            player = environment->GetContentPlayer();
            QVERIFY(player);
            player->AddObserver(startLog.get());
        } else {
            player->Stop(true);
        }
        WaitPastTheReportDelay();
        QVERIFY2(Reports().isEmpty(), qPrintable(Describe(Reports())));

        const std::size_t before = startLog->starts.size();
        player->Start();
        QTRY_VERIFY_WITH_TIMEOUT(!Reports().isEmpty(), Tests::Timeouts::Playback);
        const auto again = startLog->Fresh(ContentType::Music, before);
        QVERIFY(!again.empty());
        const QString unpaired = Unpaired({again.front()}, Reports());
        QVERIFY2(unpaired.isEmpty(), qPrintable(unpaired));
    }

    // The service goes away while the shop plays on through failed updates and the
    // next period; what was played meanwhile waits in the database and reaches the
    // service once it answers again, every report once.
    void reportsMadeOfflineAreDeliveredOnceTheServiceIsBack()
    {
        Tests::TwoSinkListener listener;
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
        // Track 1 until 10:30; then the next period opens with the ad and plays 3, 1, 2.
        // The first report goes out live before the service goes away.
        const QJsonObject schedule =
            Template({Period("Утро", "10:00", "10:30", 11), Period("День", "10:30", "11:00", 12)},
                     {Playlist(11, {1, 2}), Playlist(12, {3, 1, 2})}, QStringLiteral("10:30"));
        SignInAndPlay(schedule, QTime(10, 29, 54));
        if (QTest::currentTestFailed()) {
            return;
        }
        QTRY_VERIFY_WITH_TIMEOUT(Reports().size() == 1, Tests::Timeouts::Playback);
        WaitForTheDownloads();
        if (QTest::currentTestFailed()) {
            return;
        }

        // Every request refused as by a server that is down, downloads included.
        Tests::ServiceFault down(QStringLiteral("*"), QStringLiteral("status"));
        down.status = 503;
        QVERIFY2(service->AddFault(down) > 0, qPrintable(service->ErrorString()));
        down.target = QStringLiteral("media");
        QVERIFY2(service->AddFault(down) > 0, qPrintable(service->ErrorString()));
        const auto updates = [](const QString& entry) {
            return Tests::EventLog::Entries().filter(entry).size();
        };
        const int failedUpdates = updates(FailedUpdateEntry);
        const auto heard = [&listener](int frequency) {
            return listener.WaitForToneLevel(
                frequency, [](double level) { return level > Tests::ToneTimeline::Heard; }, 0.3,
                Tests::Timeouts::Playback);
        };
        QVERIFY2(heard(Tests::TestMedia::MusicAFrequency), "the first period went silent");
        QTRY_VERIFY_WITH_TIMEOUT(startLog->IndexOf(QStringLiteral("period День")) >= 0,
                                 Tests::Timeouts::Playback);
        QVERIFY2(heard(Tests::TestMedia::MusicCFrequency), "the next period did not play from the cache");

        // Wait for the ad and the new period's music to be stored, and two failed updates.
        const auto storedOffline = [&]() {
            const auto stored = Stored();
            const bool ad = std::any_of(stored.begin(), stored.end(), [](const auto& report) {
                return report.track_id == ShopSession::AdTrack;
            });
            const bool music = std::any_of(stored.begin(), stored.end(), [](const auto& report) {
                return report.time >= "10:30:00" && report.type == "music";
            });
            return ad && music && updates(FailedUpdateEntry) >= failedUpdates + 2;
        };
        const auto offlineState = [&]() {
            QStringList stored;
            for (const auto& report : Stored()) {
                stored << QStringLiteral("%1 %2 %3")
                              .arg(QString::fromStdString(report.type))
                              .arg(report.track_id)
                              .arg(QString::fromStdString(report.time));
            }
            return QStringLiteral("stored: [%1]; failed updates: %2; starts: %3")
                .arg(stored.join(", "))
                .arg(updates(FailedUpdateEntry) - failedUpdates)
                .arg(startLog->Events().join(", "));
        };
        QTRY_VERIFY2_WITH_TIMEOUT(storedOffline(), qPrintable(offlineState()), Tests::Timeouts::Playback);
        const int stored = static_cast<int>(Stored().size());
        QCOMPARE(Reports().size(), 1);

        QVERIFY2(service->ClearFaults(), qPrintable(service->ErrorString()));
        // The updates find the service again (and the music on air passes its delay).
        const int successfulUpdates = updates(SuccessfulUpdateEntry);
        QTRY_VERIFY_WITH_TIMEOUT(updates(SuccessfulUpdateEntry) >= successfulUpdates + 2,
                                 Tests::Timeouts::Process);
        // The next report to go out live takes the stored ones along: skip to a new track.
        QTRY_VERIFY_WITH_TIMEOUT(!player->CurrentState().contentPlayingStates.at(ContentType::Clip).playing,
                                 Tests::Timeouts::Playback);
        const std::size_t recoveredAt = startLog->starts.size();
        player->GoToNextTrack(ContentType::Music);
        const auto delivered = [&]() {
            const auto later = startLog->Fresh(ContentType::Music, recoveredAt);
            const QJsonArray reports = Reports();
            return !later.empty() && Stored().empty() &&
                   std::any_of(reports.begin(), reports.end(), [&later](const QJsonValue& report) {
                       return IsReportOf(report.toObject(), later.front());
                   });
        };
        QTRY_VERIFY2_WITH_TIMEOUT(delivered(),
                                  qPrintable(offlineState() + "; delivered: " + Describe(Reports())),
                                  Tests::Timeouts::Playback);
        player->Stop(true);
        QTRY_VERIFY_WITH_TIMEOUT(!Core::Statistics::Manager::IsSendingInProgress(), Tests::Timeouts::Process);

        // Owed: every fresh ad start, and every fresh music start that played the delay
        // before the next one (the last one's report was seen above); one replaced too
        // close to the delay to judge may have its report, once.
        std::vector<Start> fresh;
        std::copy_if(startLog->starts.begin(), startLog->starts.end(), std::back_inserter(fresh),
                     [](const Start& start) { return !start.resumed; });
        std::vector<Start> owed;
        std::vector<Start> either;
        for (std::size_t i = 0; i < fresh.size(); ++i) {
            qint64 heardMs = std::numeric_limits<qint64>::max();
            for (std::size_t j = i + 1; j < fresh.size() && fresh[i].type == ContentType::Music; ++j) {
                if (fresh[j].type == ContentType::Music) {
                    heardMs = fresh[j].atMs - fresh[i].atMs;
                    break;
                }
            }
            if (heardMs >= ReportDelayMs + JudgingMarginMs) {
                owed.push_back(fresh[i]);
            } else if (heardMs > ReportDelayMs - JudgingMarginMs) {
                either.push_back(fresh[i]);
            }
        }
        const QJsonArray reports = Reports();
        qInfo("offline: %d tracks started, %d reports stored while offline, %d delivered, %d owed",
              static_cast<int>(fresh.size()), stored, static_cast<int>(reports.size()),
              static_cast<int>(owed.size()));
        const QString unpaired = Unpaired(owed, reports, either);
        QVERIFY2(unpaired.isEmpty(), qPrintable(unpaired + "\nstarts: " + startLog->Events().join(", ")));
        QVERIFY(Stored().empty());
    }
};

QTEST_GUILESS_MAIN(UserEnvironmentReportsTest)
#include "tst_user_environment_reports.moc"
