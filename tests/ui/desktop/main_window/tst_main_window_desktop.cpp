// The main window's screen stack and its end: closing the window while music plays
// stops the music before the program ends.

#include "core/content_playing/player.h"
#include "core/user_environment.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/pcm_analysis.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/sign_in_widget_desktop.h"

#include <QApplication>
#include <QPointer>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Tests::ShopSession;

class TestMainWindowDesktop : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void stackPushesAndPopsScreens();
    void signOutLeavesOnlySignIn();
    void closingStopsTheMusic();

private:
    QTemporaryDir mContent;
    std::unique_ptr<Tests::ReferenceService> mService;
    std::unique_ptr<Tests::TestDataDirectory> mData;
    std::unique_ptr<UI::Desktop::MainWindowDesktop> mWindow;
};

void TestMainWindowDesktop::initTestCase()
{
    QVERIFY(mContent.isValid());
    QString error;
    mService = ShopSession::StartedServing(mContent.path(), {"music/music_a.mp3"}, &error);
    QVERIFY2(mService, qPrintable(error));
}

void TestMainWindowDesktop::init()
{
    mData = std::make_unique<Tests::TestDataDirectory>();
    QVERIFY(mData->IsValid());
}

void TestMainWindowDesktop::cleanup()
{
    mWindow.reset();
    ShopSession::ForgetSession();
    mData.reset();
}

void TestMainWindowDesktop::stackPushesAndPopsScreens()
{
    using UI::Desktop::MainWindowDesktop;
    mWindow = std::make_unique<MainWindowDesktop>();
    Tests::ScreenDriver driver(mWindow.get());
    // Signed out: the sign-in screen alone.
    QCOMPARE(driver.StackSize(), 1);
    QVERIFY(qobject_cast<UI::Desktop::SignInWidgetDesktop*>(driver.CurrentScreen()));

    QPointer<QWidget> first = new QWidget();
    QPointer<QWidget> second = new QWidget();
    MainWindowDesktop::PushWidget(first);
    MainWindowDesktop::PushWidget(second);
    QCOMPARE(driver.StackSize(), 3);
    QCOMPARE(driver.CurrentScreen(), second.data());

    MainWindowDesktop::PopCurrentWidget();
    QCOMPARE(driver.StackSize(), 2);
    QCOMPARE(driver.CurrentScreen(), first.data());
    // A popped screen is destroyed, not kept for later.
    QTRY_VERIFY_WITH_TIMEOUT(second.isNull(), Tests::Timeouts::Quick);

    MainWindowDesktop::PopCurrentWidget();
    MainWindowDesktop::PopCurrentWidget();
    QCOMPARE(driver.StackSize(), 0);
    // Popping an empty stack is harmless.
    MainWindowDesktop::PopCurrentWidget();
    QCOMPARE(driver.StackSize(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(first.isNull(), Tests::Timeouts::Quick);
}

void TestMainWindowDesktop::signOutLeavesOnlySignIn()
{
    using UI::Desktop::MainWindowDesktop;
    mWindow = std::make_unique<MainWindowDesktop>();
    Tests::ScreenDriver driver(mWindow.get());
    QList<QPointer<QWidget>> pushed;
    for (int i = 0; i < 3; ++i) {
        pushed.append(new QWidget());
        MainWindowDesktop::PushWidget(pushed.last());
    }
    QPointer<QWidget> bottom = mWindow->Stack()->widget(0);

    MainWindowDesktop::PopAllWidgetsAndShowIntro();
    QCOMPARE(driver.StackSize(), 1);
    QVERIFY(qobject_cast<UI::Desktop::SignInWidgetDesktop*>(driver.CurrentScreen()));
    QVERIFY(driver.CurrentScreen() != bottom.data());
    QTRY_VERIFY_WITH_TIMEOUT(bottom.isNull() && pushed[0].isNull() && pushed[1].isNull() &&
                                 pushed[2].isNull(),
                             Tests::Timeouts::Quick);
}

void TestMainWindowDesktop::closingStopsTheMusic()
{
    Tests::TwoSinkListener listener;
    QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
    QVERIFY(mService->Reset());
    QVERIFY(mService->SetToday(
        QDate::fromString(QString::fromStdString(Tests::TestPeriods::Today()), "dd.MM.yyyy")));
    QVERIFY(mService->ReplaceConfiguration(
                QStringLiteral("shop1"),
                ShopSession::Schedule({ShopSession::Period(QStringLiteral("День"), "09:00", "13:00", 11)},
                                      {ShopSession::MusicPlaylist(11, QStringLiteral("Музыка"), {1})})) > 0);
    Tests::TestPeriods::SetNow(QTime(10, 0));
    QString error;
    auto environment = ShopSession::SignedIn(ShopSession::ServerOf(*mService), ShopSession::Shop(), &error);
    QVERIFY2(environment, qPrintable(error));
    QVERIFY2(ShopSession::LoadSchedule(*environment, &error), qPrintable(error));
    const auto player = environment->GetContentPlayer();
    QVERIFY(player);

    mWindow = std::make_unique<UI::Desktop::MainWindowDesktop>();
    mWindow->show();
    player->Start();
    double level = 0;
    QVERIFY2(listener.WaitForToneLevel(
                 Tests::TestMedia::MusicAFrequency, [](double l) { return l > Tests::ToneTimeline::Heard; },
                 0.3, Tests::Timeouts::Playback, &level),
             qPrintable(QString::number(level)));

    mWindow->close();
    QVERIFY(!player->CurrentState().playingNow);
    const double closed = listener.SecondsRecorded();
    QVERIFY(listener.WaitUntilRecorded(closed + 1.5, Tests::Timeouts::Process));
    const double after = Tests::PcmAnalysis::Rms(listener.A(), closed + 0.5, closed + 1.5);
    QVERIFY2(after < Tests::ToneTimeline::NotHeard, qPrintable(QString::number(after)));
}

QTEST_MAIN(TestMainWindowDesktop)
#include "tst_main_window_desktop.moc"
