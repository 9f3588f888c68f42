#include "core/content_playing/player.h"
#include "core/content_playing/player_observer.h"
#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/database/db_manager.h"
#include "core/networking/object_exported_error_listener.h"
#include "core/networking/unauthorized_error_listener.h"
#include "core/playback_configuration_updated_observer.h"
#include "core/settings.h"
#include "core/user_environment.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/call_outcome.h"
#include "tests/support/event_log.h"
#include "tests/support/pcm_analysis.h"
#include "tests/support/reference_service.h"
#include "tests/support/service_fault.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QElapsedTimer>
#include <QtTest>

using Core::UserEnvironment;
using Core::ContentPlaying::Player;
using Core::DataBase::DbManager;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::LikeStatus;
using Core::DataTypes::Playback::PlaybackConfiguration;
using Core::DataTypes::Playback::Track;
using Tests::EventLog;
using Tests::ShopSession;
using Tests::ToneTimeline;

Q_DECLARE_METATYPE(Core::LikeAction)
Q_DECLARE_METATYPE(Core::DataTypes::Playback::LikeStatus)

namespace {

const QString kShop = QStringLiteral("shop1");
const QString kTick = QStringLiteral("Сработал таймер обновления по времени");
const QString kUpdated = QStringLiteral("\tОбновление по времени: успешно обновлено до новой версии");
const QString kUnchanged =
    QStringLiteral("\tОбновление по времени: версия конфигурации воспроизведения не изменилась");
const QString kFailed =
    QStringLiteral("\tОбновление по времени: ошибка загрузки конфигурации воспроизведения :");
const QString kDeferredRestart =
    QStringLiteral("Перезапуск воспроизведения отложен до окончания текущего трека");

// The test day's schedule as the server keeps it: one period over the whole
// morning playing the music playlist in the order given.
QJsonObject ShopTemplate(const QString& periodName, const QList<int>& musicIds)
{
    return ShopSession::Schedule({ShopSession::Period(periodName, "09:00", "13:00", 11)},
                                 {ShopSession::MusicPlaylist(11, "Музыка", musicIds)});
}

int Count(const QString& entry)
{
    return EventLog::Count(entry);
}

// Entries that begin with `prefix`: an error's text may run over several lines.
QStringList Starting(const QString& prefix)
{
    QStringList found;
    for (const QString& entry : EventLog::Entries()) {
        if (entry.startsWith(prefix)) {
            found.append(entry);
        }
    }
    return found;
}

// Whether `line` was logged by a tick after the first `ticks` ones: the answer to
// a check that began after whatever the test changed on the server.
bool LoggedAfterTick(const QString& line, int ticks)
{
    const QStringList entries = EventLog::Entries();
    int seen = 0;
    for (int i = 0; i < entries.size(); ++i) {
        if (entries.at(i) == kTick && ++seen > ticks) {
            return std::any_of(entries.begin() + i, entries.end(),
                               [&line](const QString& entry) { return entry.startsWith(line); });
        }
    }
    return false;
}

// The like status of a track in a list, or a value no status has when it is not there.
int LikeOf(const std::vector<Track>& tracks, int id)
{
    for (const Track& track : tracks) {
        if (track.id == id) {
            return static_cast<int>(track.likeStatus);
        }
    }
    return -100;
}

int StoredLikeOf(int id)
{
    std::shared_ptr<PlaybackConfiguration> stored;
    if (!DbManager::GetInstance().SavedPlaybackConfiguration(stored) || !stored) {
        return -200;
    }
    return LikeOf(stored->tracks[ContentType::Music], id);
}

bool SignInIsStored()
{
    Core::DataTypes::Auth::PlaybackObject object;
    Core::DataTypes::Auth::Server server;
    std::string login;
    std::string password;
    std::string token;
    return DbManager::GetInstance().SavedAuthData(object, server, login, password, token);
}

class UpdateObserver : public Core::PlaybackConfigurationUpdatedObserver
{
public:
    void PlaybackConfigurationUpdated(bool updated, const std::string& message) override
    {
        flags.push_back(updated);
        messages.push_back(QString::fromStdString(message));
    }

    std::vector<bool> flags;
    QStringList messages;
};

// The like status each music track starts with.
class TrackStarts : public Core::ContentPlaying::PlayerObserver
{
public:
    void PlayerDidStartPlayingTrack(const Player&, ContentType type, const Track& track, bool) override
    {
        if (type == ContentType::Music) {
            likes.emplace_back(track.id, static_cast<int>(track.likeStatus));
        }
    }

    std::vector<std::pair<int, int>> likes;
};

// What the player screen would be told about the account.
class AccountListener : public Core::UnauthorizedErrorListener, public Core::ObjectExportedErrorListener
{
public:
    void OnWrongTokenError() override
    {
        ++wrongToken;
    }
    void OnAccountIsBlockedError() override
    {
        ++blocked;
    }
    void OnObjectExportedError() override
    {
        ++exported;
    }

    int wrongToken = 0;
    int blocked = 0;
    int exported = 0;
};

} // namespace

// A signed-in environment against the reference service, its player playing the
// shop's schedule into the test sink: the periodic check of the configuration,
// likes, and what the account's errors do to the music.
class UserEnvironmentPlaybackTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;
    Tests::TwoSinkListener listener;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    Core::DataTypes::Auth::Server server;
    Core::DataTypes::Auth::PlaybackObject object;
    // Told by the environment and the player; they outlive both.
    UpdateObserver updates;
    TrackStarts starts;
    AccountListener account;
    std::shared_ptr<UserEnvironment> environment;
    std::shared_ptr<Player> player;

    // Signs in with a minute of `minuteMs` for the update interval, loads the
    // schedule and starts the player; with `listen`, returns once music is heard.
    void SignInAndPlay(int minuteMs, bool listen)
    {
        UserEnvironment::SetMinuteForTesting(minuteMs);
        QString error;
        environment = ShopSession::SignedIn(server, object, &error);
        QVERIFY2(environment, qPrintable(error));
        QVERIFY2(ShopSession::LoadSchedule(*environment, &error), qPrintable(error));
        player = environment->GetContentPlayer();
        QVERIFY(player);
        player->Start();
        if (listen) {
            double level = 0;
            QVERIFY2(listener.WaitForToneLevel(
                         Tests::TestMedia::MusicAFrequency, [](double l) { return l > ToneTimeline::Heard; },
                         0.3, Tests::Timeouts::Playback, &level),
                     qPrintable(QString::number(level)));
        }
    }

    void AddFault(const QString& endpoint)
    {
        Tests::ServiceFault fault(endpoint, QStringLiteral("status"));
        fault.status = 500;
        QVERIFY2(service->AddFault(fault) > 0, qPrintable(service->ErrorString()));
    }

private slots:
    void initTestCase()
    {
        QVERIFY(content.isValid());
        QString error;
        service = ShopSession::StartedServing(
            content.path(),
            {"music/music_a.mp3", "music/music_b.mp3", "music/music_c.mp3", "clip/ad_short.mp3"}, &error);
        QVERIFY2(service, qPrintable(error));
        server = ShopSession::ServerOf(*service);
        object = ShopSession::Shop();
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    void init()
    {
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        const QDate today =
            QDate::fromString(QString::fromStdString(Tests::TestPeriods::Today()), "dd.MM.yyyy");
        QVERIFY(service->SetToday(today));
        QVERIFY(service->ReplaceConfiguration(kShop, ShopTemplate("День", {1, 2})) > 0);
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        Tests::TestPeriods::SetNow(QTime(10, 0));
        updates = UpdateObserver();
        starts = TrackStarts();
        account = AccountListener();
        for (const ContentType type : {ContentType::Music, ContentType::Video, ContentType::Photo}) {
            Core::Settings::SetShuffle(type, false);
        }
    }

    void cleanup()
    {
        if (environment) {
            environment->StopAndClearPlayer();
        }
        if (player) {
            player->Stop(false);
        }
        player.reset();
        environment.reset();
        ShopSession::ForgetSession();
        dataDirectory.reset();
    }

    // Each tick checks the server; what it finds decides the log line, the
    // observers' flag and the configuration the playing player ends up with.
    void theUpdateTimerChecksTheServer_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<QString>("line");
        QTest::newRow("a new configuration") << "replace" << kUpdated;
        QTest::newRow("nothing new") << "none" << kUnchanged;
        // The stored schedule goes on playing: not being able to ask is no news.
        QTest::newRow("the version cannot be asked") << "version fault" << kUnchanged;
        QTest::newRow("the new one cannot be loaded, then can") << "load fault" << kFailed;
    }

    void theUpdateTimerChecksTheServer()
    {
        QFETCH(QString, change);
        QFETCH(QString, line);
        // Fifteen minutes, the shortest interval, pass in 0.6 s.
        Core::Settings::SetUpdateIntervalMinutes(15);
        SignInAndPlay(40, change == QLatin1String("replace"));
        if (QTest::currentTestFailed()) {
            return;
        }
        const int storedVersion = player->Configuration().version;
        // Registered twice, told once.
        environment->AddConfigurationUpdatedObserver(&updates);
        environment->AddConfigurationUpdatedObserver(&updates);
        const int toldBefore = Count(kUpdated) + Count(kUnchanged);

        int expectedVersion = storedVersion;
        if (change == QLatin1String("replace")) {
            expectedVersion = service->ReplaceConfiguration(kShop, ShopTemplate("Вечер", {2, 1}));
        } else if (change == QLatin1String("version fault")) {
            AddFault(QStringLiteral("playback/version"));
        } else if (change == QLatin1String("load fault")) {
            expectedVersion = service->BumpConfigurationVersion(kShop);
            AddFault(QStringLiteral("playback/configuration_v2"));
        }
        QVERIFY(expectedVersion > 0);
        const int ticks = Count(kTick);
        QTRY_VERIFY2_WITH_TIMEOUT(LoggedAfterTick(line, ticks),
                                  qPrintable(EventLog::Entries().join(QLatin1Char('\n')).right(3000)),
                                  Tests::Timeouts::Process);

        if (change == QLatin1String("version fault")) {
            const QJsonArray asked = service->RequestsTo(QStringLiteral("playback/version"));
            QVERIFY(!asked.last().toObject().value("fault").toString().isEmpty());
        } else if (change == QLatin1String("load fault")) {
            const QStringList failures = Starting(kFailed);
            // The error's own text follows: the request that failed.
            QVERIFY2(failures.first().mid(kFailed.size()).contains("playback/configuration_v2"),
                     qPrintable(failures.first()));
            QCOMPARE(player->Configuration().version, storedVersion);
            // The next tick is the retry, and succeeds once the server answers again.
            QTRY_VERIFY_WITH_TIMEOUT(Starting(kFailed).size() >= 2, Tests::Timeouts::Process);
            QVERIFY(service->ClearFaults());
            QTRY_COMPARE_WITH_TIMEOUT(Count(kUpdated), 1, Tests::Timeouts::Process);
        }
        QCOMPARE(player->Configuration().version, expectedVersion);
        const bool updated = expectedVersion != storedVersion;
        QVERIFY(!updates.flags.empty());
        QCOMPARE(updates.flags.back(), updated);
        QVERIFY(updates.messages.back().endsWith(QString::fromStdString(Tests::TestPeriods::Today())));
        QCOMPARE(static_cast<int>(updates.flags.size()), Count(kUpdated) + Count(kUnchanged) - toldBefore);
        if (change == QLatin1String("replace")) {
            // It reached the player while a track was on air.
            QCOMPARE(Count(kDeferredRestart), 1);
            QCOMPARE(player->Configuration().days.front().periods.front().name, std::string("Вечер"));
        }
        QVERIFY(player->CurrentState().playingNow);
    }

    // A long interval is replaced by a short one: the next tick comes the short
    // interval after the change, long before the old one would have come.
    void aNewIntervalCountsFromTheChange()
    {
        constexpr int minute = 200;
        Core::Settings::SetUpdateIntervalMinutes(60);
        QElapsedTimer sinceSignIn;
        sinceSignIn.start();
        SignInAndPlay(minute, false);
        if (QTest::currentTestFailed()) {
            return;
        }
        QCOMPARE(Count(kTick), 0);

        Core::Settings::SetUpdateIntervalMinutes(15);
        QElapsedTimer sinceChange;
        sinceChange.start();
        environment->RefreshUpdateTimer();
        QTRY_COMPARE_WITH_TIMEOUT(Count(kTick), 1, Tests::Timeouts::Process);
        const qint64 first = sinceChange.elapsed();
        const qint64 fromSignIn = sinceSignIn.elapsed();
        // A coarse timer may fire up to 5 % early, and the log is polled.
        QVERIFY2(first >= 15 * minute * 9 / 10, qPrintable(QString::number(first)));
        QVERIFY2(fromSignIn < 60 * minute / 2, qPrintable(QString::number(fromSignIn)));
        // And it keeps that pace.
        QTRY_COMPARE_WITH_TIMEOUT(Count(kTick), 2, Tests::Timeouts::Process);
        const qint64 second = sinceChange.elapsed() - first;
        QVERIFY2(second >= 15 * minute * 9 / 10 && second < 60 * minute / 2,
                 qPrintable(QString::number(second)));
    }

    // The server's answer is the track's status: stored, and carried by the
    // playing schedule into the track's next start; a refused request changes nothing.
    void aLikeReachesTheStoredScheduleAndThePlayer_data()
    {
        QTest::addColumn<Core::LikeAction>("action");
        QTest::addColumn<bool>("refused");
        QTest::addColumn<LikeStatus>("status");
        QTest::newRow("like") << Core::LikeAction::Like << false << LikeStatus::Liked;
        QTest::newRow("dislike") << Core::LikeAction::Dislike << false << LikeStatus::Disliked;
        QTest::newRow("refused") << Core::LikeAction::Like << true << LikeStatus::None;
    }

    void aLikeReachesTheStoredScheduleAndThePlayer()
    {
        QFETCH(Core::LikeAction, action);
        QFETCH(bool, refused);
        QFETCH(LikeStatus, status);
        SignInAndPlay(UserEnvironment::MillisecondsPerMinute, true);
        if (QTest::currentTestFailed()) {
            return;
        }
        player->AddObserver(&starts);
        const auto files = [this]() {
            return player->CurrentState().downloadsInfo.at(ContentType::Music);
        };
        QTRY_COMPARE_WITH_TIMEOUT(files().downloaded, files().total, Tests::Timeouts::Process);
        if (refused) {
            AddFault(QStringLiteral("likes_dislikes"));
        }
        // The track after the one on air.
        constexpr int liked = 2;

        Tests::CallOutcome<LikeStatus, Core::DataTypes::Error> outcome;
        environment->SendLikeAction(action, liked, outcome.Success(), outcome.Failure());
        QTRY_COMPARE_WITH_TIMEOUT(outcome.Calls(), 1, Tests::Timeouts::Process);
        QCOMPARE(outcome.failures, refused ? 1 : 0);
        const QJsonArray received = service->Received(QStringLiteral("likes"));
        QCOMPARE(received.size(), refused ? 0 : 1);
        if (!refused) {
            QCOMPARE(outcome.value, status);
            QCOMPARE(received.first().toObject().value("track_id").toInt(), liked);
            QCOMPARE(received.first().toObject().value("value").toInt(), static_cast<int>(action));
        }
        QCOMPARE(StoredLikeOf(liked), static_cast<int>(status));
        QCOMPARE(LikeOf(player->Configuration().tracks.at(ContentType::Music), liked),
                 static_cast<int>(status));
        // The playing schedule's list, as the track list on screen shows it.
        QCOMPARE(LikeOf(player->GetCurrentTracks(ContentType::Music), liked), static_cast<int>(status));
        player->GoToNextTrack(ContentType::Music);
        QTRY_VERIFY_WITH_TIMEOUT(!starts.likes.empty(), Tests::Timeouts::Process);
        QCOMPARE(starts.likes.front(), (std::pair<int, int>(liked, static_cast<int>(status))));
        // The other tracks keep theirs.
        QCOMPARE(StoredLikeOf(1), static_cast<int>(LikeStatus::None));
    }

    // Found out by the next check of the configuration, with music on air.
    void anAccountErrorWhilePlaying_data()
    {
        QTest::addColumn<QString>("error");
        QTest::newRow("signed in elsewhere") << "wrong token";
        QTest::newRow("account blocked") << "blocked";
        QTest::newRow("object exported") << "exported";
    }

    void anAccountErrorWhilePlaying()
    {
        QFETCH(QString, error);
        Core::Settings::SetUpdateIntervalMinutes(15);
        SignInAndPlay(40, true);
        if (QTest::currentTestFailed()) {
            return;
        }
        environment->SetUnathorizedErrorListener(&account);
        environment->SetObjectExportedErrorListener(&account);
        if (error == QLatin1String("wrong token")) {
            QVERIFY(service->InvalidateTokens(kShop) > 0);
        } else if (error == QLatin1String("blocked")) {
            QVERIFY(service->SetAccountBlocked(QStringLiteral("owner"), true));
        } else {
            QVERIFY(service->SetObjectExported(kShop, true));
        }
        QTRY_VERIFY_WITH_TIMEOUT(account.wrongToken + account.blocked + account.exported > 0,
                                 Tests::Timeouts::Process);
        const double reported = listener.SecondsRecorded();

        if (error == QLatin1String("exported")) {
            // The shop's stored schedule is still its to play.
            QCOMPARE(account.wrongToken + account.blocked, 0);
            QCOMPARE(environment->GetContentPlayer(), player);
            QVERIFY(player->CurrentState().playingNow);
            QTRY_VERIFY_WITH_TIMEOUT(
                listener.SecondsRecorded() > reported + 0.5 &&
                    Tests::PcmAnalysis::Rms(listener.A(), reported + 0.2, listener.SecondsRecorded()) >
                        ToneTimeline::Heard,
                Tests::Timeouts::Playback);
            return;
        }

        QCOMPARE(account.exported, 0);
        QCOMPARE(account.wrongToken, error == QLatin1String("wrong token") ? 1 : 0);
        QCOMPARE(account.blocked, error == QLatin1String("blocked") ? 1 : 0);
        QVERIFY(!player->CurrentState().playingNow);
        QVERIFY(!environment->GetContentPlayer());
        // The user is shown why before the sign-in is forgotten.
        QVERIFY(SignInIsStored());
        QVERIFY(QTest::qWaitFor([this, reported]() { return listener.SecondsRecorded() > reported + 2.0; },
                                Tests::Timeouts::Process));
        const double after = Tests::PcmAnalysis::Rms(listener.A(), reported + 1.0, reported + 2.0);
        QVERIFY2(after < ToneTimeline::NotHeard, qPrintable(QString::number(after)));

        // Further refusals are not told again, and nothing more is asked with the
        // token, not even after the interval is set again.
        Tests::CallOutcome<LikeStatus, Core::DataTypes::Error> like;
        environment->SendLikeAction(Core::LikeAction::Like, 1, like.Success(), like.Failure());
        QTRY_COMPARE_WITH_TIMEOUT(like.failures, 1, Tests::Timeouts::Process);
        QCOMPARE(account.wrongToken + account.blocked, 1);
        environment->RefreshUpdateTimer();
        const int ticks = Count(kTick);
        QVERIFY(!QTest::qWaitFor([ticks]() { return Count(kTick) > ticks; }, Tests::Timeouts::Silence));
    }

    // The user signs out while a check of the configuration still waits for the
    // server. Its answer comes back refused, the token being gone, and has nobody
    // left to tell: the sign-out was the user's own. The test holds the environment
    // a little longer, as a screen finishing its work may; once nobody holds it,
    // the same answer reaches an environment that no longer exists.
    void aCheckAnsweredAfterSigningOutTellsNobody()
    {
        SignInAndPlay(UserEnvironment::MillisecondsPerMinute, false);
        if (QTest::currentTestFailed()) {
            return;
        }
        environment->SetUnathorizedErrorListener(&account);
        environment->SetObjectExportedErrorListener(&account);
        Tests::ServiceFault slow(QStringLiteral("playback/version"), QStringLiteral("delay"), 1);
        slow.delayMs = 1000;
        QVERIFY(service->AddFault(slow) > 0);
        int checks = 0;
        environment->LoadPlaybackConfiguration(
            [&checks](bool, const std::string&) { ++checks; },
            [&checks](std::shared_ptr<Core::DataTypes::Error>) { ++checks; });
        QTRY_COMPARE_WITH_TIMEOUT(service->RequestsTo(QStringLiteral("playback/version")).size(), 1,
                                  Tests::Timeouts::Process);

        Tests::CallOutcome<bool, Core::DataTypes::NetworkError> signOut;
        environment->SignOut(signOut.Done(), signOut.Failure());
        QTRY_COMPARE_WITH_TIMEOUT(signOut.successes, 1, Tests::Timeouts::Process);
        QCOMPARE(service->Received(QStringLiteral("sign_outs")).size(), 1);
        QVERIFY(!player->CurrentState().playingNow);

        // The check's own callback still comes.
        QTRY_COMPARE_WITH_TIMEOUT(checks, 1, Tests::Timeouts::Process);
        QCOMPARE(account.wrongToken + account.blocked + account.exported, 0);
    }
};

QTEST_GUILESS_MAIN(UserEnvironmentPlaybackTest)
#include "tst_user_environment_playback.moc"
