// The frame a signed-in shop owner sees: it opens by itself after a restart and
// plays, its side bar leads to each section and tells the truth about the player
// and the server, signing out leaves nothing behind, and the account's errors each
// show one screen over everything.

#include "core/content_playing/player.h"
#include "core/database/db_manager.h"
#include "core/settings.h"
#include "core/user_environment.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/call_outcome.h"
#include "tests/support/service_fault.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"
#include "tests/ui/support/qml_warnings.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/nonskippable_dialog_widget_desktop.h"
#include "ui/desktop/player_widget_desktop.h"
#include "ui/desktop/side_bar_widget_desktop.h"
#include "ui/desktop/sign_in_widget_desktop.h"
#include "ui/desktop/skippable_dialog_widget_desktop.h"
#include "ui/desktop/unauth_error_widget_desktop.h"
#include "ui/ui_kit/ui_kit.h"

#include <QStackedWidget>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Core::UserEnvironment;
using Tests::ShopSession;
using UI::Desktop::MainWindowDesktop;
using UI::Desktop::PlayerWidgetDesktop;

namespace {

const QString kShop = QStringLiteral("shop1");
const QString kSupportPhone = QStringLiteral("+7 800 555-01-02");
const QString kSupportEmail = QStringLiteral("help@zelmar.test");

bool SignInStored()
{
    Core::DataTypes::Auth::PlaybackObject object;
    Core::DataTypes::Auth::Server server;
    std::string login;
    std::string password;
    std::string token;
    return Core::DataBase::DbManager::GetInstance().SavedAuthData(object, server, login, password, token);
}

} // namespace

class PlayerFrameTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    Core::DataTypes::Auth::Server server;
    std::unique_ptr<MainWindowDesktop> window;
    std::unique_ptr<Tests::ScreenDriver> driver;
    std::shared_ptr<UserEnvironment> environment;
    bool darkThemeBefore = true;

    // Signed in on an earlier run with the schedule stored, then the program
    // restarts and opens its window as main() does.
    void OpenAfterRestart()
    {
        QString error;
        QVERIFY2(ShopSession::StoredAsAfterRestart(server, &error), qPrintable(error));
        window.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
        driver = std::make_unique<Tests::ScreenDriver>(window.get());
        UserEnvironment::GetSignedInEnvironment(
            [this](std::shared_ptr<UserEnvironment> found) { environment = std::move(found); });
        QTRY_VERIFY_WITH_TIMEOUT(environment, Tests::Timeouts::Quick);
    }

    PlayerWidgetDesktop* Frame() const
    {
        return qobject_cast<PlayerWidgetDesktop*>(window->Stack()->widget(0));
    }

    QString Text(const QString& item) const
    {
        return driver->Property(item, "text").toString();
    }

private slots:
    void initTestCase()
    {
        Tests::QmlWarnings::StartRecording();
        UI::Desktop::ApplicationStartUp::ConfigureApplication();
        QVERIFY(content.isValid());
        QString error;
        service = ShopSession::StartedServing(content.path(), {"music/music_a.mp3"}, &error);
        QVERIFY2(service, qPrintable(error));
    }

    void init()
    {
        // A case that took the server away gets a new one (on a new port).
        if (!service->IsRunning()) {
            QVERIFY2(service->Start(), qPrintable(service->ErrorString()));
        }
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        QVERIFY(service->SetToday(
            QDate::fromString(QString::fromStdString(Tests::TestPeriods::Today()), "dd.MM.yyyy")));
        QVERIFY(service->ReplaceConfiguration(
                    kShop, ShopSession::Schedule({ShopSession::Period("Утро", "09:00", "13:00", 11)},
                                                 {ShopSession::MusicPlaylist(11, "Музыка", {1})})) > 0);
        Tests::TestPeriods::SetNow(QTime(10, 0));
        server = ShopSession::ServerOf(*service);
        server.phone = kSupportPhone.toStdString();
        server.email = kSupportEmail.toStdString();
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        darkThemeBefore = UI::UiKit::GetInstance().IsDarkTheme();
        Tests::QmlWarnings::Take();
    }

    void cleanup()
    {
        driver.reset();
        window.reset();
        environment.reset();
        ShopSession::ForgetSession();
        UI::UiKit::GetInstance().SetDarkTheme(darkThemeBefore);
        dataDirectory.reset();
        const QStringList warnings = Tests::QmlWarnings::Take();
        QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
    }

    // Nobody at the keyboard after a power cut: the frame opens straight away and
    // the music plays.
    void aRestartOpensTheFrameAndPlays()
    {
        Tests::TwoSinkListener listener;
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
        OpenAfterRestart();
        QCOMPARE(driver->StackSize(), 1);
        QVERIFY(Frame());
        QCOMPARE(Text("appVersionText"), QStringLiteral("Версия 3.13"));
        QVERIFY(driver->DocumentShown("player/now_playing/now_playing_widget.qml"));
        QVERIFY(driver->Property("playerButton", "selected").toBool());

        double level = 0;
        QVERIFY2(listener.WaitForToneLevel(
                     Tests::TestMedia::MusicAFrequency,
                     [](double l) { return l > Tests::ToneTimeline::Heard; }, 0.3, Tests::Timeouts::Playback,
                     &level),
                 qPrintable(QString::number(level)));
        QTRY_COMPARE_WITH_TIMEOUT(Text("playbackStatusText"), QStringLiteral("Играет"),
                                  Tests::Timeouts::Quick);
        QCOMPARE(Text("serverStatusText"), QStringLiteral("Сервер доступен"));
        // Now playing names the track the sink hears.
        QTRY_VERIFY_WITH_TIMEOUT(!Text("trackTitleText").isEmpty(), Tests::Timeouts::Quick);
    }

    void eachSectionOpensHighlighted_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("document");
        QTest::newRow("player") << "playerButton"
                                << "player/now_playing/now_playing_widget.qml";
        QTest::newRow("music") << "musicButton"
                               << "player/contents/music/music_playlists_widget.qml";
        QTest::newRow("video") << "videoButton"
                               << "player/contents/video/video_playlists_widget.qml";
        QTest::newRow("photo") << "photoButton"
                               << "player/contents/photo/photo_playlists_widget.qml";
        QTest::newRow("certificate") << "licenseButton"
                                     << "player/license/license_widget.qml";
        QTest::newRow("objects") << "objectsButton"
                                 << "player/objects/objects_widget.qml";
        QTest::newRow("settings") << "settingsButton"
                                  << "player/settings/settings_widget.qml";
    }

    void eachSectionOpensHighlighted()
    {
        QFETCH(QString, button);
        QFETCH(QString, document);
        OpenAfterRestart();
        // From another section, so that the player's own button has somewhere to come
        // back from; from a content kind, so that the other kinds replace its tab.
        const QString from = button == QLatin1String("musicButton") ? QStringLiteral("settingsButton")
                                                                    : QStringLiteral("musicButton");
        QVERIFY(driver->Click(from));
        QVERIFY(driver->Click(button));
        QTRY_VERIFY2_WITH_TIMEOUT(driver->DocumentShown(document), qPrintable(driver->CurrentDocument()),
                                  Tests::Timeouts::Quick);
        QVERIFY(driver->Property(button, "selected").toBool());
        QVERIFY(!driver->Property(from, "selected").toBool());
        // One section at a time: the one left is gone.
        QCOMPARE(Frame()->InnerStack()->count(), 1);
        QCOMPARE(driver->StackSize(), 1);
    }

    // The content tabs and the side bar say the same kind.
    void contentTabsMoveTheSideBar()
    {
        OpenAfterRestart();
        QVERIFY(driver->Click("musicButton"));
        QVERIFY(driver->Click("photoTab"));
        QTRY_VERIFY_WITH_TIMEOUT(driver->DocumentShown("player/contents/photo/photo_playlists_widget.qml"),
                                 Tests::Timeouts::Quick);
        QVERIFY(driver->Property("photoButton", "selected").toBool());
        QVERIFY(!driver->Property("musicButton", "selected").toBool());
        // The side bar's own item for the kind on show leaves the tabs as they are.
        QVERIFY(driver->Click("photoButton"));
        QVERIFY(driver->Property("photoTab", "selected").toBool());
    }

    void signingOut_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("signedOut");
        QTest::newRow("cancelled") << "cancel" << false;
        QTest::newRow("server answers") << "ok" << true;
        // The owner asked to leave; the computer must not stay signed in for want of a network.
        QTest::newRow("server unreachable") << "ok, no server" << true;
    }

    void signingOut()
    {
        QFETCH(QString, answer);
        QFETCH(bool, signedOut);
        OpenAfterRestart();
        const auto player = environment->GetContentPlayer();
        QVERIFY(player);
        QTRY_VERIFY_WITH_TIMEOUT(player->CurrentState().playingNow, Tests::Timeouts::Process);
        QVERIFY(driver->Click("settingsButton"));

        QVERIFY(driver->Click("logoutButton"));
        QVERIFY(driver->DocumentShown("skippable_dialog_widget.qml"));
        QCOMPARE(Text("headerText"), QStringLiteral("Выход из аккаунта"));
        QCOMPARE(Text("bodyText"), QStringLiteral("Вы уверены, что хотите выйти?"));
        // Asking is not leaving: the music goes on under the dialog.
        QVERIFY(player->CurrentState().playingNow);

        if (answer == QLatin1String("cancel")) {
            QVERIFY(driver->Click("cancelButton"));
            QTRY_COMPARE_WITH_TIMEOUT(driver->StackSize(), 1, Tests::Timeouts::Quick);
            QCOMPARE(driver->CurrentScreen(), Frame());
            QVERIFY(driver->DocumentShown(QStringLiteral("player/settings/settings_widget.qml")));
            QVERIFY(player->CurrentState().playingNow);
            QVERIFY(SignInStored());
            return;
        }
        if (answer == QLatin1String("ok, no server")) {
            QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
        } else {
            // Slow enough to see the frame wait for it.
            Tests::ServiceFault slow(QStringLiteral("sign_out"), QStringLiteral("delay"));
            slow.delayMs = 1500;
            QVERIFY2(service->AddFault(slow) > 0, qPrintable(service->ErrorString()));
        }
        QVERIFY(driver->Click("okButton"));
        if (answer == QLatin1String("ok")) {
            QTRY_VERIFY_WITH_TIMEOUT(driver->Item("fullScreenThrobber"), Tests::Timeouts::Quick);
        }
        QTRY_VERIFY_WITH_TIMEOUT(qobject_cast<UI::Desktop::SignInWidgetDesktop*>(driver->CurrentScreen()),
                                 Tests::Timeouts::Process);
        QCOMPARE(driver->StackSize(), 1);
        QCOMPARE(SignInStored(), !signedOut);
        QVERIFY(!player->CurrentState().playingNow);
        if (answer == QLatin1String("ok")) {
            QCOMPARE(service->Received(QStringLiteral("sign_outs")).size(), 1);
        }
    }

    // The frame learns its environment on the next pass of the event loop; an
    // owner who signs out before that is signed out all the same.
    void signingOutAtOnce()
    {
        QString error;
        QVERIFY2(ShopSession::SignedIn(server, ShopSession::Shop(), &error), qPrintable(error));
        UserEnvironment::ForgetProcessStateForTesting();
        window.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
        driver = std::make_unique<Tests::ScreenDriver>(window.get());
        QVERIFY(driver->Click("logoutButton"));
        QVERIFY(driver->Click("okButton"));
        QTRY_VERIFY_WITH_TIMEOUT(qobject_cast<UI::Desktop::SignInWidgetDesktop*>(driver->CurrentScreen()),
                                 Tests::Timeouts::Process);
        QVERIFY(!SignInStored());
        QCOMPARE(service->Received(QStringLiteral("sign_outs")).size(), 1);
    }

    void theAccountRefusedShowsOneScreenThenSignIn_data()
    {
        QTest::addColumn<QString>("refusal");
        QTest::addColumn<QString>("header");
        QTest::addColumn<bool>("contacts");
        QTest::newRow("signed in elsewhere") << "wrong token"
                                             << "Ошибка авторизации" << false;
        QTest::newRow("account blocked") << "blocked"
                                         << "Ваш аккаунт заблокирован" << true;
    }

    void theAccountRefusedShowsOneScreenThenSignIn()
    {
        QFETCH(QString, refusal);
        QFETCH(QString, header);
        QFETCH(bool, contacts);
        // The hour between checks of the configuration passes in a third of a second.
        UserEnvironment::SetMinuteForTesting(5);
        OpenAfterRestart();
        QTRY_COMPARE_WITH_TIMEOUT(Text("serverStatusText"), QStringLiteral("Сервер доступен"),
                                  Tests::Timeouts::Process);
        QVERIFY(driver->Click("settingsButton"));
        if (refusal == QLatin1String("wrong token")) {
            QVERIFY(service->InvalidateTokens(kShop) > 0);
        } else {
            QVERIFY(service->SetAccountBlocked(QStringLiteral("owner"), true));
        }

        QTRY_VERIFY_WITH_TIMEOUT(
            qobject_cast<UI::Desktop::UnauthErrorWidgetDesktop*>(driver->CurrentScreen()),
            Tests::Timeouts::Process);
        QCOMPARE(Text("headerText"), header);
        QCOMPARE(driver->Property("unauthErrorScreen", "contactVariant").toBool(), contacts);
        if (contacts) {
            QCOMPARE(Text("bodyText"), Frame()->ContactUsText());
            QVERIFY(Text("bodyText").contains(kSupportPhone));
            QVERIFY(Text("bodyText").contains(kSupportEmail));
            QCOMPARE(Text("supportPhoneText"), kSupportPhone);
            QCOMPARE(Text("supportEmailText"), kSupportEmail);
        } else {
            QCOMPARE(Text("bodyText"), QStringLiteral("Выполнен вход на другом устройстве"));
        }
        // Another request refused the same way adds no second screen.
        Tests::CallOutcome<int, Core::DataTypes::Error> again;
        environment->LoadPlaybackConfiguration([&again](bool, const std::string&) { again.Done()(); },
                                               again.Failure());
        QTRY_COMPARE_WITH_TIMEOUT(again.Calls(), 1, Tests::Timeouts::Process);
        QCOMPARE(driver->StackSize(), 2);
        // Until the owner has read why, a restart would still find the sign-in.
        QVERIFY(SignInStored());

        QVERIFY(driver->Click("okButton"));
        QTRY_VERIFY_WITH_TIMEOUT(qobject_cast<UI::Desktop::SignInWidgetDesktop*>(driver->CurrentScreen()),
                                 Tests::Timeouts::Quick);
        QCOMPARE(driver->StackSize(), 1);
        QVERIFY(!SignInStored());
    }

    void anExportedObjectStopsThePlayerWithOneDialog()
    {
        UserEnvironment::SetMinuteForTesting(5);
        OpenAfterRestart();
        const auto player = environment->GetContentPlayer();
        QVERIFY(player);
        QTRY_VERIFY_WITH_TIMEOUT(player->CurrentState().playingNow, Tests::Timeouts::Process);
        QVERIFY(service->SetObjectExported(kShop, true));

        QTRY_VERIFY_WITH_TIMEOUT(
            qobject_cast<UI::Desktop::NonskippableDialogWidgetDesktop*>(driver->CurrentScreen()),
            Tests::Timeouts::Process);
        QVERIFY(!player->CurrentState().playingNow);
        QVERIFY(!Text("headerText").isEmpty());
        QVERIFY(Text("bodyText").contains(QStringLiteral("остановлено")));
        // The checks that follow meet the same answer and add no second dialog.
        const int checks = service->RequestsTo(QStringLiteral("playback/version")).size();
        QTRY_VERIFY_WITH_TIMEOUT(service->RequestsTo(QStringLiteral("playback/version")).size() >= checks + 2,
                                 Tests::Timeouts::Process);
        QCOMPARE(driver->StackSize(), 2);

        QVERIFY(driver->Click("okButton"));
        QTRY_COMPARE_WITH_TIMEOUT(driver->CurrentScreen(), Frame(), Tests::Timeouts::Quick);
        QCOMPARE(driver->StackSize(), 1);
        QCOMPARE(Text("playbackStatusText"), QStringLiteral("Остановлено"));
    }

    void theThemeSwitchFlipsAndIsStored()
    {
        OpenAfterRestart();
        const bool before = UI::UiKit::GetInstance().IsDarkTheme();
        QCOMPARE(driver->Property("sideBar", "isDarkTheme").toBool(), before);
        for (const bool expected : {!before, before}) {
            QVERIFY(driver->Click("themeSwitch"));
            QCOMPARE(UI::UiKit::GetInstance().IsDarkTheme(), expected);
            QCOMPARE(Core::Settings::DarkTheme(), expected);
            QCOMPARE(driver->Property("sideBar", "isDarkTheme").toBool(), expected);
        }
    }

    void theStatusesFollowThePlayerAndTheServer()
    {
        UserEnvironment::SetMinuteForTesting(5);
        OpenAfterRestart();
        const auto player = environment->GetContentPlayer();
        QVERIFY(player);
        QTRY_COMPARE_WITH_TIMEOUT(Text("playbackStatusText"), QStringLiteral("Играет"),
                                  Tests::Timeouts::Process);
        QCOMPARE(Text("serverStatusText"), QStringLiteral("Сервер доступен"));

        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
        QTRY_COMPARE_WITH_TIMEOUT(Text("serverStatusText"),
                                  QStringLiteral("Нет связи с сервером — играем из памяти"),
                                  Tests::Timeouts::Process);
        // From memory indeed: the music goes on without the server.
        QCOMPARE(Text("playbackStatusText"), QStringLiteral("Играет"));

        player->Stop(true);
        QCOMPARE(Text("playbackStatusText"), QStringLiteral("Остановлено"));
    }

    // Switched on, with no period covering this moment: nothing to hear until the next one.
    void outsideTheScheduleThePlayerWaits()
    {
        Tests::TestPeriods::SetNow(QTime(15, 0));
        OpenAfterRestart();
        const auto player = environment->GetContentPlayer();
        QVERIFY(player);
        QTRY_COMPARE_WITH_TIMEOUT(Text("playbackStatusText"), QStringLiteral("Пауза"),
                                  Tests::Timeouts::Process);
        QVERIFY(player->CurrentState().playingNow);
    }

    // While a long request runs the frame is covered: a click lands on the cover.
    void thePreloaderCoversTheFrame()
    {
        OpenAfterRestart();
        PlayerWidgetDesktop* frame = Frame();
        const QPoint onSettings = frame->SideBar()->geometry().center();
        QCOMPARE(frame->childAt(onSettings), frame->SideBar());

        frame->ShowPreloader();
        QVERIFY(driver->Item("fullScreenThrobber"));
        QWidget* covering = frame->childAt(onSettings);
        QVERIFY(covering != nullptr && covering != frame->SideBar());
        QVERIFY(frame->childAt(frame->InnerStack()->geometry().center()) == covering);

        frame->HidePreloader();
        QVERIFY(!driver->Item("fullScreenThrobber"));
        QCOMPARE(frame->childAt(onSettings), frame->SideBar());
    }
};

QTEST_MAIN(PlayerFrameTest)
#include "tst_player_frame.moc"
