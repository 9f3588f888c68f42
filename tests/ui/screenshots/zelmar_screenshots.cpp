// Walks every screen of the application the way a shop owner would reach it, against
// the reference service with the demo scenario, and saves the window as
// DIR/<screen>.<theme>.png. One run per theme, each in a fresh data folder:
//   zelmar-screenshots DIR dark|light
// (scripts/screenshots sets up the display, the service and both runs.)

#include "core/settings.h"
#include "core/user_environment.h"
#include "tests/support/reference_service.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/ui_kit/ui_kit.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>
#include <QTextStream>

#include <functional>
#include <memory>

namespace {

constexpr int ScreenTimeoutMs = 15000;

class Walk
{
public:
    Walk(QString directory, QString theme, UI::Desktop::MainWindowDesktop* window,
         Tests::ReferenceService* service)
        : mDirectory(std::move(directory))
        , mTheme(std::move(theme))
        , mWindow(window)
        , mDriver(window)
        , mService(service)
    {
    }

    int Run();

private:
    // Waits for the screen showing `document` (or the item `name`), then saves it.
    bool Shoot(const QString& screen, const std::function<bool()>& ready);
    bool WaitFor(const std::function<bool()>& condition, const QString& what);
    bool Step(bool done, const QString& what);
    bool ShowsItem(const QString& name) const;
    // "Другой сервер…" with the service's address, on the sign-in or sign-up screen.
    void ChooseService();
    void SignIn();
    void RefreshUpdates();

    QString mDirectory;
    QString mTheme;
    UI::Desktop::MainWindowDesktop* mWindow;
    Tests::ScreenDriver mDriver;
    Tests::ReferenceService* mService;
    int mFailures = 0;
};

bool Walk::ShowsItem(const QString& name) const
{
    QObject* item = mDriver.Item(name);
    return item != nullptr && item->property("visible").toBool();
}

bool Walk::WaitFor(const std::function<bool()>& condition, const QString& what)
{
    if (QTest::qWaitFor(condition, ScreenTimeoutMs)) {
        return true;
    }
    QTextStream(stderr) << "screenshots: " << mTheme << ": gave up waiting for " << what << " (showing "
                        << mDriver.CurrentDocument() << ")\n";
    ++mFailures;
    return false;
}

bool Walk::Step(bool done, const QString& what)
{
    if (!done) {
        QTextStream(stderr) << "screenshots: " << mTheme << ": could not " << what << " (showing "
                            << mDriver.CurrentDocument() << ")\n";
        ++mFailures;
    }
    return done;
}

bool Walk::Shoot(const QString& screen, const std::function<bool()>& ready)
{
    if (!WaitFor(ready, screen)) {
        return false;
    }
    // Let animations that open a screen settle before the picture is taken.
    QTest::qWait(300);
    const QString file =
        QDir(mDirectory).filePath(screen + QLatin1Char('.') + mTheme + QStringLiteral(".png"));
    if (!mWindow->grab().save(file)) {
        QTextStream(stderr) << "screenshots: cannot write " << file << "\n";
        ++mFailures;
        return false;
    }
    QTextStream(stdout) << file << "\n";
    return true;
}

void Walk::ChooseService()
{
    QObject* chooser = mDriver.Item(QStringLiteral("serverComboBox"));
    if (!Step(chooser != nullptr, QStringLiteral("find the server chooser"))) {
        return;
    }
    // The built-in list arrives a moment after the screen; "Другой сервер…" is its
    // last entry.
    WaitFor([chooser]() { return chooser->property("count").toInt() >= 2; },
            QStringLiteral("the servers list"));
    chooser->setProperty("currentIndex", chooser->property("count").toInt() - 1);
    Step(mDriver.SetText(QStringLiteral("serverAddressField"), mService->BaseUrl()),
         QStringLiteral("type the server address"));
}

void Walk::SignIn()
{
    WaitFor([this]() { return mDriver.DocumentShown(QStringLiteral("auth/sign_in_widget.qml")); },
            QStringLiteral("the sign-in screen"));
    ChooseService();
    mDriver.SetText(QStringLiteral("loginField"), QStringLiteral("demo"));
    mDriver.SetText(QStringLiteral("passwordField"), QStringLiteral("demo"));
    Step(mDriver.Click(QStringLiteral("signInButton")), QStringLiteral("press Войти"));
    WaitFor([this]() { return mDriver.Item(QStringLiteral("objectCard0")) != nullptr; },
            QStringLiteral("the objects"));
    Step(mDriver.Click(QStringLiteral("objectCard0")), QStringLiteral("choose the first object"));
    WaitFor([this]() { return mDriver.DocumentShown(QStringLiteral("player/side_bar_widget.qml")); },
            QStringLiteral("the player frame"));
}

void Walk::RefreshUpdates()
{
    // The next configuration update is the request the server refuses.
    Core::UserEnvironment::GetSignedInEnvironment([](std::shared_ptr<Core::UserEnvironment> environment) {
        if (environment) {
            environment->RefreshUpdateTimer();
        }
    });
}

int Walk::Run()
{
    auto document = [this](const QString& ending) {
        return [this, ending]() {
            return mDriver.DocumentShown(ending);
        };
    };

    // Signed out: sign-in, then a wrong password.
    Shoot(QStringLiteral("sign_in"), document(QStringLiteral("auth/sign_in_widget.qml")));
    ChooseService();
    mDriver.SetText(QStringLiteral("loginField"), QStringLiteral("demo"));
    mDriver.SetText(QStringLiteral("passwordField"), QStringLiteral("не тот"));
    Step(mDriver.Click(QStringLiteral("signInButton")), QStringLiteral("press Войти"));
    Shoot(QStringLiteral("sign_in_error"), [this]() { return ShowsItem(QStringLiteral("errorMessage")); });

    // Signed in: choose the object, then the player frame and each of its sections.
    mDriver.SetText(QStringLiteral("passwordField"), QStringLiteral("demo"));
    Step(mDriver.Click(QStringLiteral("signInButton")), QStringLiteral("press Войти"));
    Shoot(QStringLiteral("choose_object"), [this]() {
        return mDriver.DocumentShown(QStringLiteral("auth/choose_object_widget.qml")) &&
               mDriver.Item(QStringLiteral("objectCard0")) != nullptr;
    });
    Step(mDriver.Click(QStringLiteral("objectCard0")), QStringLiteral("choose the first object"));
    Shoot(QStringLiteral("player"), document(QStringLiteral("player/side_bar_widget.qml")));
    const QList<QPair<QString, QString>> sections = {
        {QStringLiteral("musicButton"), QStringLiteral("player_music")},
        {QStringLiteral("videoButton"), QStringLiteral("player_video")},
        {QStringLiteral("photoButton"), QStringLiteral("player_photo")},
        {QStringLiteral("licenseButton"), QStringLiteral("player_license")},
        {QStringLiteral("objectsButton"), QStringLiteral("player_objects")},
        {QStringLiteral("settingsButton"), QStringLiteral("player_settings")},
    };
    for (const auto& [button, screen] : sections) {
        if (Step(mDriver.Click(button), QStringLiteral("open ") + button)) {
            Shoot(screen, []() { return true; });
        }
    }
    Step(mDriver.Click(QStringLiteral("playerButton")), QStringLiteral("open the player section"));

    // The sign-out dialog over the frame; Cancel keeps the frame.
    Step(mDriver.Click(QStringLiteral("logoutButton")), QStringLiteral("press Выход"));
    Shoot(QStringLiteral("sign_out_dialog"), document(QStringLiteral("skippable_dialog_widget.qml")));
    Step(mDriver.Click(QStringLiteral("cancelButton")), QStringLiteral("press Отмена"));

    // Account errors: another device signs in; the account is blocked; the object is
    // exported. Each ends the session it interrupts, so each starts from a sign-in.
    Core::UserEnvironment::SetMinuteForTesting(100);
    const QString objectCode = QStringLiteral("demo-cafe");
    mService->InvalidateTokens(objectCode);
    RefreshUpdates();
    Shoot(QStringLiteral("unauth_error"), document(QStringLiteral("unauth_error_widget.qml")));
    Step(mDriver.Click(QStringLiteral("okButton")), QStringLiteral("press OK on the error screen"));

    SignIn();
    mService->SetAccountBlocked(QStringLiteral("demo"), true);
    RefreshUpdates();
    Shoot(QStringLiteral("account_blocked"), document(QStringLiteral("unauth_error_widget.qml")));
    Step(mDriver.Click(QStringLiteral("okButton")), QStringLiteral("press OK on the blocked account screen"));
    mService->SetAccountBlocked(QStringLiteral("demo"), false);

    SignIn();
    mService->SetObjectExported(objectCode, true);
    RefreshUpdates();
    Shoot(QStringLiteral("object_exported"), document(QStringLiteral("nonskippable_dialog_widget.qml")));
    Step(mDriver.Click(QStringLiteral("okButton")), QStringLiteral("press OK on the object-exported dialog"));
    mService->SetObjectExported(objectCode, false);
    mDriver.Click(QStringLiteral("logoutButton"));
    WaitFor(document(QStringLiteral("skippable_dialog_widget.qml")), QStringLiteral("the sign-out dialog"));
    mDriver.Click(QStringLiteral("okButton"));

    // Sign-up, every step, skipping the music styles.
    WaitFor(document(QStringLiteral("auth/sign_in_widget.qml")), QStringLiteral("sign-in after the error"));
    Step(mDriver.Click(QStringLiteral("signUpButton")), QStringLiteral("press Регистрация"));
    WaitFor(document(QStringLiteral("auth/sign_up_phone_city_widget.qml")), QStringLiteral("sign-up step 1"));
    ChooseService();
    mDriver.SetText(QStringLiteral("phoneField"), QStringLiteral("9161234567"));
    mDriver.SetText(QStringLiteral("cityField"), QStringLiteral("Ново"));
    Shoot(QStringLiteral("sign_up_phone_city"),
          [this]() { return ShowsItem(QStringLiteral("citySuggestion0")); });
    Step(mDriver.Click(QStringLiteral("citySuggestion0")), QStringLiteral("choose a city"));
    Step(mDriver.Click(QStringLiteral("nextButton")), QStringLiteral("press Далее on step 1"));
    Shoot(QStringLiteral("sign_up_confirm_phone"),
          document(QStringLiteral("auth/sign_up_confirm_phone_widget.qml")));
    // The demo service sends every phone the same code, named in its scenario.
    QFile scenario(Tests::ReferenceService::SourceDirectory() +
                   QStringLiteral("/demo/scenario/service.json"));
    scenario.open(QIODevice::ReadOnly);
    const QString code = QJsonDocument::fromJson(scenario.readAll())
                             .object()
                             .value(QStringLiteral("confirmation_code"))
                             .toString();
    mDriver.SetText(QStringLiteral("codeField"), code);
    Step(mDriver.Click(QStringLiteral("nextButton")), QStringLiteral("press Далее on step 2"));
    Shoot(QStringLiteral("sign_up_business_type"),
          [this]() { return ShowsItem(QStringLiteral("businessTypeTile0")); });
    Step(mDriver.Click(QStringLiteral("businessTypeTile0")), QStringLiteral("choose a business type"));
    Step(mDriver.Click(QStringLiteral("nextButton")), QStringLiteral("press Далее on step 3"));
    Shoot(QStringLiteral("sign_up_music_styles"),
          [this]() { return ShowsItem(QStringLiteral("musicStyleChip0")); });
    Step(mDriver.Click(QStringLiteral("skipButton")), QStringLiteral("press Пропустить"));
    Shoot(QStringLiteral("sign_up_success"), document(QStringLiteral("auth/sign_up_success_widget.qml")));

    Step(mDriver.Click(QStringLiteral("okButton")), QStringLiteral("press OK on sign-up success"));
    WaitFor(document(QStringLiteral("player/side_bar_widget.qml")),
            QStringLiteral("the player after sign-up"));
    return mFailures;
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 3 || (qstrcmp(argv[2], "dark") != 0 && qstrcmp(argv[2], "light") != 0)) {
        QTextStream(stderr) << "usage: zelmar-screenshots DIR dark|light\n";
        return 2;
    }
    UI::Desktop::ApplicationStartUp::PrepareEnvironment();
    QApplication application(argc, argv);
    UI::Desktop::ApplicationStartUp::ConfigureApplication();
    const QString directory = QString::fromLocal8Bit(argv[1]);
    const QString theme = QString::fromLatin1(argv[2]);
    QDir().mkpath(directory);
    Core::Settings::SetDarkTheme(theme == QLatin1String("dark"));

    QString error;
    const QString scenario = Tests::ReferenceService::SourceDirectory() + QStringLiteral("/demo/scenario");
    std::unique_ptr<Tests::ReferenceService> service(
        new Tests::ReferenceService(scenario, qEnvironmentVariable("ZELMAR_DEMO_CONTENT")));
    if (!service->Start()) {
        QTextStream(stderr) << "screenshots: the reference service did not start: " << service->ErrorString()
                            << "\n";
        return 1;
    }
    std::unique_ptr<UI::Desktop::MainWindowDesktop> window(
        UI::Desktop::ApplicationStartUp::CreateMainWindow());
    window->resize(UI::Desktop::MainWindowDesktop::MinimumWidth,
                   UI::Desktop::MainWindowDesktop::MinimumHeight);
    Walk walk(directory, theme, window.get(), service.get());
    const int failures = walk.Run();
    Core::UserEnvironment::ReleaseCurrentEnvironment();
    return failures == 0 ? 0 : 1;
}
