#include "core/content_playing/player.h"
#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/settings.h"
#include "core/user_environment.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/event_log.h"
#include "tests/support/reference_service.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QtTest>

#include <cstring>
#include <vector>

using Core::Settings;
using Core::UserEnvironment;
using Core::DataTypes::Playback::ContentType;
using Tests::EventLog;
using Tests::ShopSession;
using Tests::ToneTimeline;

namespace {

// Whether this run's command line held the autorun argument, as main() saw it.
bool startedAtLogin = false;

const QString kShop = QStringLiteral("shop1");
const QString kStartFired = QStringLiteral("Сработал таймер запуска плеера");
const QString kTick = QStringLiteral("Сработал таймер обновления по времени");
constexpr double ToneA = Tests::TestMedia::MusicAFrequency;

QString Armed(unsigned delaySeconds)
{
    return QStringLiteral("Автозапуск - включен таймер запуска плеера (%1 сек.)").arg(delaySeconds);
}

// Music all morning of the test day.
QJsonObject MorningOfMusic()
{
    return ShopSession::Schedule({ShopSession::Period("Утро", "09:00", "13:00", 11)},
                                 {ShopSession::MusicPlaylist(11, "Музыка", {1})});
}

} // namespace

// Run twice by CTest, with and without the autorun argument that the desktop's
// autostart entry puts on the command line; each run checks what belongs to it.
class UserEnvironmentAutorunTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;
    Tests::TwoSinkListener listener;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    Core::DataTypes::Auth::Server server;
    Core::DataTypes::Auth::PlaybackObject object;
    std::shared_ptr<UserEnvironment> environment;

    std::shared_ptr<UserEnvironment> SignIn()
    {
        QString error;
        auto signedIn = ShopSession::SignedIn(server, object, &error);
        if (!signedIn) {
            qWarning("%s", qPrintable(error));
        }
        return signedIn;
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
        // The argument reaches the program, whatever Qt Test was handed.
        QCOMPARE(UserEnvironment::AppHasAutorunArgument(), startedAtLogin);
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    void init()
    {
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        QVERIFY(service->SetToday(
            QDate::fromString(QString::fromStdString(Tests::TestPeriods::Today()), "dd.MM.yyyy")));
        QVERIFY(service->ReplaceConfiguration(kShop, MorningOfMusic()) > 0);
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        Tests::TestPeriods::SetNow(QTime(10, 0));
    }

    void cleanup()
    {
        if (environment) {
            environment->StopAndClearPlayer();
        }
        environment.reset();
        ShopSession::ForgetSession();
        // The autostart entry is outside the data directory.
        Settings::SetAutoRunEnabled(false);
        dataDirectory.reset();
    }

    // Only a start at login with autorun switched on and minimising asked for.
    void theWindowIsMinimisedOnlyAtLogin_data()
    {
        QTest::addColumn<bool>("autorun");
        QTest::addColumn<bool>("minimize");
        QTest::newRow("both on") << true << true;
        QTest::newRow("autorun off") << false << true;
        QTest::newRow("minimising off") << true << false;
    }

    void theWindowIsMinimisedOnlyAtLogin()
    {
        QFETCH(bool, autorun);
        QFETCH(bool, minimize);
        Settings::SetAutoRunEnabled(autorun);
        Settings::SetMinimizeOnAutoRun(minimize);
        QCOMPARE(UserEnvironment::MainWindowShouldBeMinimized(), autorun && minimize && startedAtLogin);
    }

    // The computer starts with a stored sign-in: at login the player starts by
    // itself after the delay, once per process; started by hand it waits.
    void theStoredSignInPlaysAfterTheDelayOnlyAtLogin()
    {
        // Signed in and the schedule stored on an earlier day, autorun still off.
        std::shared_ptr<UserEnvironment> earlier = SignIn();
        QVERIFY(earlier);
        QString error;
        QVERIFY2(ShopSession::LoadSchedule(*earlier, &error), qPrintable(error));
        earlier.reset();

        Settings::SetAutoRunEnabled(true);
        Settings::SetDelayValueSeconds(Settings::AvailableDelayValuesSeconds().front());
        const unsigned delay = Settings::GetDelayValueSeconds();
        // The first check of the configuration comes 1.5 s after the delayed start
        // is due: by then it has happened, or it never will.
        Settings::SetUpdateIntervalMinutes(15);
        UserEnvironment::SetMinuteForTesting(static_cast<int>(delay * 1000 + 1500) / 15);
        UserEnvironment::ForgetProcessStateForTesting();
        const double restarted = listener.SecondsRecorded();
        UserEnvironment::GetSignedInEnvironment(
            [this](std::shared_ptr<UserEnvironment> found) { environment = std::move(found); });
        QCOMPARE(EventLog::Count(Armed(delay)), startedAtLogin ? 1 : 0);
        QTRY_VERIFY_WITH_TIMEOUT(environment, Tests::Timeouts::Quick);

        QTRY_VERIFY_WITH_TIMEOUT(EventLog::Count(kTick) > 0, Tests::Timeouts::Playback);
        QCOMPARE(EventLog::Count(kStartFired), startedAtLogin ? 1 : 0);
        const auto player = environment->GetContentPlayer();
        QVERIFY(player);
        if (!startedAtLogin) {
            QVERIFY(!player->CurrentState().playingNow);
            QCOMPARE(ToneTimeline::FirstHeard(listener.A(), ToneA, ToneTimeline::Heard, restarted), -1.0);
            return;
        }
        QVERIFY(player->CurrentState().playingNow);
        double level = 0;
        QVERIFY2(listener.WaitForToneLevel(
                     ToneA, [](double l) { return l > ToneTimeline::Heard; }, 0.3, Tests::Timeouts::Playback,
                     &level),
                 qPrintable(QString::number(level)));

        // Signing in again later in the session is somebody at the keyboard.
        environment = SignIn();
        QVERIFY(environment);
        QCOMPARE(EventLog::Count(Armed(delay)), 1);
    }
};

// Qt Test refuses options it does not know, and QCoreApplication::arguments() is
// the only place the program looks for the autorun argument: the application gets
// the whole command line, Qt Test the rest.
int main(int argc, char** argv)
{
    const std::string autorun = Settings::AutoRunArgumentName();
    std::vector<char*> testArguments;
    for (int i = 0; i < argc; ++i) {
        if (autorun == argv[i]) {
            startedAtLogin = true;
        } else {
            testArguments.push_back(argv[i]);
        }
    }
    int applicationArgc = argc;
    QCoreApplication application(applicationArgc, argv);
    UserEnvironmentAutorunTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, static_cast<int>(testArguments.size()), testArguments.data());
}

#include "tst_user_environment_autorun.moc"
