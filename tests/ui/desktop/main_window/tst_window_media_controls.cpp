// The window's media controls on the desktop's session bus: a panel sees the
// music the window's player plays and drives it, and its "raise" brings the window
// back from the tray.

#include "core/content_playing/player.h"
#include "core/user_environment.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/mpris_panel_call.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"
#include "ui/desktop/main_window_desktop.h"

#include <QtTest>

#include <memory>

using Tests::ShopSession;

class TestWindowMediaControls : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void aPanelDrivesTheWindowsPlayer();
    void raiseBringsTheWindowBackFromTheTray();

private:
    QString Status();

    QTemporaryDir mContent;
    std::unique_ptr<Tests::ReferenceService> mService;
    std::unique_ptr<Tests::TestDataDirectory> mData;
    std::unique_ptr<UI::Desktop::MainWindowDesktop> mWindow;
};

QString TestWindowMediaControls::Status()
{
    return Tests::MprisPanelCall::Get(QStringLiteral("org.mpris.MediaPlayer2.Player"),
                                      QStringLiteral("PlaybackStatus"));
}

void TestWindowMediaControls::initTestCase()
{
    QVERIFY2(qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS"),
             "no session bus: register the test with NEEDS session-bus");
    QVERIFY2(!Tests::MprisPanelCall::Gdbus().isEmpty(),
             "gdbus is missing: install 'libglib2.0-bin' (scripts/install-deps)");
    QVERIFY(mContent.isValid());
    QString error;
    mService = ShopSession::StartedServing(mContent.path(), {"music/music_a.mp3"}, &error);
    QVERIFY2(mService, qPrintable(error));
}

void TestWindowMediaControls::init()
{
    mData = std::make_unique<Tests::TestDataDirectory>();
    QVERIFY(mData->IsValid());
}

void TestWindowMediaControls::cleanup()
{
    mWindow.reset();
    ShopSession::ForgetSession();
    mData.reset();
}

// After a restart with a stored sign-in, the window's player is the panel's: it
// plays, a pause from the panel pauses it, and the window closed leaves the bus.
void TestWindowMediaControls::aPanelDrivesTheWindowsPlayer()
{
    QVERIFY(mService->Reset());
    QVERIFY(mService->SetToday(
        QDate::fromString(QString::fromStdString(Tests::TestPeriods::Today()), "dd.MM.yyyy")));
    QVERIFY(mService->ReplaceConfiguration(
                QStringLiteral("shop1"),
                ShopSession::Schedule({ShopSession::Period(QStringLiteral("День"), "09:00", "13:00", 11)},
                                      {ShopSession::MusicPlaylist(11, QStringLiteral("Музыка"), {1})})) > 0);
    Tests::TestPeriods::SetNow(QTime(10, 0));
    QString error;
    QVERIFY2(ShopSession::StoredAsAfterRestart(ShopSession::ServerOf(*mService), &error), qPrintable(error));

    mWindow = std::make_unique<UI::Desktop::MainWindowDesktop>();
    mWindow->show();
    QTRY_COMPARE_WITH_TIMEOUT(Status(), QStringLiteral("(<'Playing'>,)"), Tests::Timeouts::Process);
    // The service names the file when the manifest has no title for it.
    const QString metadataGet = QStringLiteral("org.freedesktop.DBus.Properties.Get");
    QTRY_VERIFY_WITH_TIMEOUT(
        Tests::MprisPanelCall::Call(metadataGet, {"org.mpris.MediaPlayer2.Player", "Metadata"})
            .contains("'xesam:title': <'music_a'>"),
        Tests::Timeouts::Playback);

    QCOMPARE(Tests::MprisPanelCall::Call(QStringLiteral("org.mpris.MediaPlayer2.Player.Pause")),
             QStringLiteral("()"));
    std::shared_ptr<Core::UserEnvironment> environment;
    Core::UserEnvironment::GetSignedInEnvironment(
        [&environment](std::shared_ptr<Core::UserEnvironment> current) { environment = current; });
    QTRY_VERIFY_WITH_TIMEOUT(environment, Tests::Timeouts::Quick);
    QVERIFY(!environment->GetContentPlayer()->CurrentState().playingNow);
    QCOMPARE(Status(), QStringLiteral("(<'Paused'>,)"));

    environment.reset();
    mWindow->close();
    mWindow.reset();
    QVERIFY2(Status().contains("org.freedesktop.DBus.Error.ServiceUnknown"), qPrintable(Status()));
}

void TestWindowMediaControls::raiseBringsTheWindowBackFromTheTray()
{
    mWindow = std::make_unique<UI::Desktop::MainWindowDesktop>();
    mWindow->show();
    mWindow->MinimizeToTray();
    QTRY_VERIFY_WITH_TIMEOUT(!mWindow->isVisible(), Tests::Timeouts::Quick);
    QCOMPARE(Tests::MprisPanelCall::Call(QStringLiteral("org.mpris.MediaPlayer2.Raise")),
             QStringLiteral("()"));
    QTRY_VERIFY_WITH_TIMEOUT(mWindow->isVisible(), Tests::Timeouts::Quick);
}

QTEST_MAIN(TestWindowMediaControls)
#include "tst_window_media_controls.moc"
