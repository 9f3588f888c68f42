// A shop owner's first day, through the screens only, against the reference
// service: a mistyped password, the right one, the point of sale, every section of
// the player frame, and signing out; then a restart that opens the player directly.
// Every control on the way is named for assistive technology and automation.

#include "core/user_environment.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"
#include "tests/ui/support/qml_warnings.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/player_widget_desktop.h"
#include "ui/desktop/sign_in_widget_desktop.h"

#include <QApplication>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Tests::ShopSession;

namespace {

const QString SignInDocument = QStringLiteral("auth/sign_in_widget.qml");
const QString ChooseObjectDocument = QStringLiteral("auth/choose_object_widget.qml");
const QString SideBarDocument = QStringLiteral("player/side_bar_widget.qml");
const QString SignOutDialogDocument = QStringLiteral("skippable_dialog_widget.qml");

} // namespace

class TestWalkthrough : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void firstDayThroughTheScreens();
    void restartOpensThePlayer();

private:
    void ExpectNamedControls(const Tests::ScreenDriver& driver);

    QTemporaryDir mContent;
    std::unique_ptr<Tests::ReferenceService> mService;
    std::unique_ptr<Tests::TestDataDirectory> mData;
    std::unique_ptr<UI::Desktop::MainWindowDesktop> mWindow;
};

void TestWalkthrough::initTestCase()
{
    Tests::QmlWarnings::StartRecording();
    QCoreApplication::setApplicationVersion(QStringLiteral("3.13"));
    QVERIFY(mContent.isValid());
    QString error;
    mService = ShopSession::StartedServing(mContent.path(), {"music/music_a.mp3"}, &error);
    QVERIFY2(mService, qPrintable(error));
}

void TestWalkthrough::init()
{
    QVERIFY(mService->Reset());
    mData = std::make_unique<Tests::TestDataDirectory>();
    QVERIFY(mData->IsValid());
}

void TestWalkthrough::cleanup()
{
    mWindow.reset();
    ShopSession::ForgetSession();
    mData.reset();
    const QStringList warnings = Tests::QmlWarnings::Take();
    QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
}

void TestWalkthrough::ExpectNamedControls(const Tests::ScreenDriver& driver)
{
    const QStringList unnamed = driver.UnnamedControls();
    QVERIFY2(unnamed.isEmpty(), qPrintable(unnamed.join(QLatin1Char('\n'))));
}

void TestWalkthrough::firstDayThroughTheScreens()
{
    mWindow.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
    Tests::ScreenDriver driver(mWindow.get());
    QTRY_VERIFY_WITH_TIMEOUT(driver.DocumentShown(SignInDocument), Tests::Timeouts::Quick);
    QCOMPARE(driver.Property(QStringLiteral("versionText"), "text").toString(),
             QStringLiteral("Версия 3.13"));
    ExpectNamedControls(driver);

    // The service's own address, as support staff would type it.
    QObject* chooser = driver.Item(QStringLiteral("serverComboBox"));
    QVERIFY(chooser);
    // The built-in list arrives a moment after the screen.
    QTRY_VERIFY_WITH_TIMEOUT(chooser->property("count").toInt() >= 2, Tests::Timeouts::Quick);
    chooser->setProperty("currentIndex", chooser->property("count").toInt() - 1);
    QVERIFY(driver.SetText(QStringLiteral("serverAddressField"), mService->BaseUrl()));
    QVERIFY(driver.SetText(QStringLiteral("loginField"), QStringLiteral("owner")));
    QVERIFY(driver.SetText(QStringLiteral("passwordField"), QStringLiteral("wrong")));
    QVERIFY(driver.Click(QStringLiteral("signInButton")));
    QTRY_VERIFY_WITH_TIMEOUT(driver.Property(QStringLiteral("errorMessage"), "visible").toBool(),
                             Tests::Timeouts::Process);
    // The server's own words, not a guess of the screen's.
    const QString refusal = driver.Property(QStringLiteral("errorMessage"), "text").toString();
    QVERIFY2(!refusal.contains(QStringLiteral("Нет связи")), qPrintable(refusal));
    QVERIFY(driver.DocumentShown(SignInDocument));

    // The right password; Enter in the field signs in as the button does.
    QVERIFY(driver.SetText(QStringLiteral("passwordField"), QStringLiteral("secret")));
    QObject* password = driver.Item(QStringLiteral("passwordField"));
    QVERIFY(QMetaObject::invokeMethod(password, "forceActiveFocus"));
    driver.PressKey(Qt::Key_Return);
    QTRY_VERIFY_WITH_TIMEOUT(driver.DocumentShown(ChooseObjectDocument) &&
                                 driver.Item(QStringLiteral("objectCard0")) != nullptr,
                             Tests::Timeouts::Process);
    ExpectNamedControls(driver);
    QVERIFY(driver.Click(QStringLiteral("objectCard0")));

    QTRY_VERIFY_WITH_TIMEOUT(driver.DocumentShown(SideBarDocument), Tests::Timeouts::Process);
    QVERIFY(qobject_cast<UI::Desktop::PlayerWidgetDesktop*>(driver.CurrentScreen()));
    QCOMPARE(driver.Property(QStringLiteral("appVersionText"), "text").toString(),
             QStringLiteral("Версия 3.13"));
    ExpectNamedControls(driver);

    // Every section opens, named controls and all.
    const QList<QPair<QString, QString>> sections = {
        {"musicButton", "player/contents/music/music_playlists_widget.qml"},
        {"videoButton", "player/contents/video/video_playlists_widget.qml"},
        {"photoButton", "player/contents/photo/photo_playlists_widget.qml"},
        {"licenseButton", "player/license/license_widget.qml"},
        {"objectsButton", "player/objects/objects_widget.qml"},
        {"settingsButton", "player/settings/settings_widget.qml"},
        {"playerButton", "player/now_playing/now_playing_widget.qml"},
    };
    for (const auto& [button, document] : sections) {
        QVERIFY2(driver.Click(button), qPrintable(button));
        QTRY_VERIFY2_WITH_TIMEOUT(driver.DocumentShown(document), qPrintable(button), Tests::Timeouts::Quick);
        QVERIFY2(driver.Property(button, "selected").toBool(), qPrintable(button));
        ExpectNamedControls(driver);
    }

    // Signing out asks first; OK leaves the sign-in screen alone on the stack.
    QVERIFY(driver.Click(QStringLiteral("logoutButton")));
    QTRY_VERIFY_WITH_TIMEOUT(driver.DocumentShown(SignOutDialogDocument), Tests::Timeouts::Quick);
    ExpectNamedControls(driver);
    QVERIFY(driver.Click(QStringLiteral("okButton")));
    QTRY_VERIFY_WITH_TIMEOUT(driver.DocumentShown(SignInDocument), Tests::Timeouts::Process);
    QCOMPARE(driver.StackSize(), 1);
    Core::UserEnvironment::ForgetProcessStateForTesting();
    QVERIFY(!Core::UserEnvironment::UserIsSignedIn());
}

void TestWalkthrough::restartOpensThePlayer()
{
    QString error;
    QVERIFY2(ShopSession::SignedIn(ShopSession::ServerOf(*mService), ShopSession::Shop(), &error),
             qPrintable(error));
    // A new process: only the stored sign-in remains.
    Core::UserEnvironment::ForgetProcessStateForTesting();

    mWindow.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
    Tests::ScreenDriver driver(mWindow.get());
    QCOMPARE(driver.StackSize(), 1);
    QVERIFY(qobject_cast<UI::Desktop::PlayerWidgetDesktop*>(driver.CurrentScreen()));
    QTRY_VERIFY_WITH_TIMEOUT(driver.DocumentShown(SideBarDocument), Tests::Timeouts::Quick);
}

QTEST_MAIN(TestWalkthrough)
#include "tst_walkthrough.moc"
