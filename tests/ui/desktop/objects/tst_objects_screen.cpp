// The account's points of sale: the one playing is marked, and switching to
// another after the owner confirms plays that one's schedule; cancelling keeps
// everything as it was.

#include "core/content_playing/player.h"
#include "core/database/db_manager.h"
#include "core/user_environment.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"
#include "tests/ui/support/qml_warnings.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/objects_widget_desktop.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Core::UserEnvironment;
using Tests::ShopSession;
using UI::Desktop::MainWindowDesktop;

namespace {

const QString kWarehouse = QStringLiteral("shop2");
constexpr int kWarehouseId = 102;
const QString kWarehousePeriod = QStringLiteral("Склад днём");

int StoredObjectId()
{
    Core::DataTypes::Auth::PlaybackObject object;
    Core::DataTypes::Auth::Server server;
    std::string login;
    std::string password;
    std::string token;
    if (!Core::DataBase::DbManager::GetInstance().SavedAuthData(object, server, login, password, token)) {
        return 0;
    }
    return object.id;
}

} // namespace

class ObjectsScreenTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<MainWindowDesktop> window;
    std::unique_ptr<Tests::ScreenDriver> driver;
    std::shared_ptr<UserEnvironment> environment;

    // The shop's computer plays the shop's schedule in its frame, and the owner
    // opens the objects screen over it.
    void OpenWhilePlaying()
    {
        QString error;
        QVERIFY2(ShopSession::StoredAsAfterRestart(ShopSession::ServerOf(*service), &error),
                 qPrintable(error));
        window.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
        driver = std::make_unique<Tests::ScreenDriver>(window.get());
        UserEnvironment::GetSignedInEnvironment(
            [this](std::shared_ptr<UserEnvironment> found) { environment = std::move(found); });
        QTRY_VERIFY_WITH_TIMEOUT(environment, Tests::Timeouts::Quick);
        QTRY_VERIFY_WITH_TIMEOUT(environment->GetContentPlayer() &&
                                     environment->GetContentPlayer()->CurrentState().playingNow,
                                 Tests::Timeouts::Process);
        MainWindowDesktop::PushWidget(new UI::Desktop::ObjectsWidgetDesktop());
        QTRY_VERIFY_WITH_TIMEOUT(driver->Item("objectRow1"), Tests::Timeouts::Quick);
        QCOMPARE(driver->Property("objectRow0", "title").toString(), QStringLiteral("Кофейня"));
        QCOMPARE(driver->Property("objectRow1", "title").toString(), QStringLiteral("Склад"));
        QVERIFY(driver->Property("objectRow0", "current").toBool());
        QVERIFY(!driver->Property("objectRow1", "current").toBool());
        QVERIFY(driver->UnnamedControls().isEmpty());
    }

    void AskToSwitchToTheWarehouse()
    {
        QVERIFY(driver->Click("objectRow1"));
        QTRY_VERIFY_WITH_TIMEOUT(driver->DocumentShown("skippable_dialog_widget.qml"),
                                 Tests::Timeouts::Quick);
        QCOMPARE(driver->Property("bodyText", "text").toString(),
                 QStringLiteral("Переключиться на «Склад»? Воспроизведение начнётся заново"));
    }

private slots:
    void initTestCase()
    {
        Tests::QmlWarnings::StartRecording();
        UI::Desktop::ApplicationStartUp::ConfigureApplication();
        QVERIFY(content.isValid());
        QString error;
        service =
            ShopSession::StartedServing(content.path(), {"music/music_a.mp3", "music/music_b.mp3"}, &error);
        QVERIFY2(service, qPrintable(error));
    }

    void init()
    {
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        QVERIFY(service->SetToday(
            QDate::fromString(QString::fromStdString(Tests::TestPeriods::Today()), "dd.MM.yyyy")));
        // The shop plays track 1 (music A), the warehouse track 2 (music B): what is
        // heard tells the two schedules apart.
        QVERIFY(service->ReplaceConfiguration(
                    QStringLiteral("shop1"),
                    ShopSession::Schedule({ShopSession::Period("Утро", "09:00", "13:00", 11)},
                                          {ShopSession::MusicPlaylist(11, "Музыка", {1})})) > 0);
        QVERIFY(service->ReplaceConfiguration(
                    kWarehouse,
                    ShopSession::Schedule({ShopSession::Period(kWarehousePeriod, "09:00", "13:00", 12)},
                                          {ShopSession::MusicPlaylist(12, "Склад", {2})})) > 0);
        Tests::TestPeriods::SetNow(QTime(10, 0));
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        Tests::QmlWarnings::Take();
    }

    void cleanup()
    {
        driver.reset();
        window.reset();
        environment.reset();
        ShopSession::ForgetSession();
        dataDirectory.reset();
        const QStringList warnings = Tests::QmlWarnings::Take();
        QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
    }

    void switchingAfterConfirmationPlaysTheOtherSchedule()
    {
        Tests::TwoSinkListener listener;
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
        OpenWhilePlaying();
        AskToSwitchToTheWarehouse();
        QVERIFY(driver->Click("okButton"));

        QTRY_COMPARE_WITH_TIMEOUT(environment->CurrentPlaybackObject().id, kWarehouseId,
                                  Tests::Timeouts::Process);
        QTRY_VERIFY_WITH_TIMEOUT(driver->Property("objectRow1", "current").toBool(),
                                 Tests::Timeouts::Process);
        QVERIFY(!driver->Property("objectRow0", "current").toBool());
        QCOMPARE(StoredObjectId(), kWarehouseId);
        const auto player = environment->GetContentPlayer();
        QVERIFY(player);
        QTRY_VERIFY_WITH_TIMEOUT(player->CurrentState().playingNow, Tests::Timeouts::Process);
        QCOMPARE(QString::fromStdString(player->CurrentPeriodName()), kWarehousePeriod);
        double level = 0;
        QVERIFY2(listener.WaitForToneLevel(
                     Tests::TestMedia::MusicBFrequency,
                     [](double l) { return l > Tests::ToneTimeline::Heard; }, 0.3, Tests::Timeouts::Playback,
                     &level),
                 qPrintable(QString::number(level)));
        // Only the warehouse's music: the shop's schedule is gone with the switch.
        QVERIFY2(listener.WaitForToneLevel(
                     Tests::TestMedia::MusicAFrequency,
                     [](double l) { return l < Tests::ToneTimeline::NotHeard; }, 0.3, Tests::Timeouts::Quick,
                     &level),
                 qPrintable(QString::number(level)));
        QCOMPARE(service->Received(QStringLiteral("sign_outs")).size(), 1);
    }

    void cancellingKeepsTheObjectPlaying()
    {
        OpenWhilePlaying();
        // The marked object asks nothing: there is nothing to switch to. The question
        // would be on show at once, as the click's own reply.
        const int stack = driver->StackSize();
        QVERIFY(driver->Click("objectRow0"));
        QCOMPARE(driver->StackSize(), stack);

        AskToSwitchToTheWarehouse();
        QVERIFY(driver->Click("cancelButton"));
        QTRY_VERIFY_WITH_TIMEOUT(driver->DocumentShown("objects_widget.qml"), Tests::Timeouts::Quick);
        // Nothing more happens: no sign-out for a switch that was not asked for.
        QTest::qWait(Tests::Timeouts::Silence);
        QCOMPARE(service->Received(QStringLiteral("sign_outs")).size(), 0);
        QCOMPARE(environment->CurrentPlaybackObject().id, ShopSession::ShopId);
        QCOMPARE(StoredObjectId(), ShopSession::ShopId);
        QVERIFY(driver->Property("objectRow0", "current").toBool());
        const auto player = environment->GetContentPlayer();
        QVERIFY(player->CurrentState().playingNow);
        QCOMPARE(QString::fromStdString(player->CurrentPeriodName()), QStringLiteral("Утро"));
    }
};

QTEST_MAIN(ObjectsScreenTest)
#include "tst_objects_screen.moc"
