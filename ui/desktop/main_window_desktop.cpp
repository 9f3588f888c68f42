#include "ui/desktop/main_window_desktop.h"

#include "core/media_controls/mpris_service.h"
#include "core/settings.h"
#include "core/user_environment.h"
#include "ui/desktop/player_widget_desktop.h"
#include "ui/desktop/sign_in_widget_desktop.h"
#include "ui/ui_kit/ui_kit.h"
#include "ui/ui_kit/ui_resources.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QMenu>
#include <QPointer>
#include <QStackedWidget>
#include <QSystemTrayIcon>
#include <QTimer>

namespace UI::Desktop {

MainWindowDesktop* MainWindowDesktop::sInstance = nullptr;

namespace {

const char* const LogoResource = ":/ui_kit/icons/logo.svg";

} // namespace

MainWindowDesktop::MainWindowDesktop(QWidget* parent)
    : QMainWindow(parent)
{
    sInstance = this;
    UiKit::GetInstance().SetDeviceType(UiKit::Desktop);
    UiResources::Initialize();
    setWindowTitle(QStringLiteral("ЗЕЛМАР"));
    setWindowIcon(QIcon(QString::fromLatin1(LogoResource)));
    mStack = new QStackedWidget(this);
    mStack->setObjectName(QStringLiteral("screenStack"));
    setCentralWidget(mStack);
    CreateTray();
    connect(&UiKit::GetInstance(), &UiKit::screenBackgroundColorChanged, this,
            &MainWindowDesktop::PaintBackground);
    PaintBackground();
    // Desktop panels and media keys show and drive the music; a panel that asks to
    // see the program gets the window back, from the tray too. Without a session
    // bus the service says so in the event log and the program goes on.
    mMediaControls = new Core::MediaControls::MprisService(this);
    connect(mMediaControls, &Core::MediaControls::MprisService::raiseRequested, this,
            &MainWindowDesktop::RestoreFromTray);
    mMediaControls->Start();

    ShowSignInOrPlayerScreen();

    QPointer<MainWindowDesktop> self(this);
    Core::UserEnvironment::GetSignedInEnvironment([self](std::shared_ptr<Core::UserEnvironment> environment) {
        if (self && environment && Core::UserEnvironment::MainWindowShouldBeMinimized()) {
            self->setWindowState(self->windowState() | Qt::WindowMinimized);
        }
    });
}

MainWindowDesktop::~MainWindowDesktop()
{
    if (sInstance == this) {
        sInstance = nullptr;
    }
}

QStackedWidget* MainWindowDesktop::Stack() const
{
    return mStack;
}

void MainWindowDesktop::PushWidget(QWidget* widget)
{
    if (sInstance == nullptr || widget == nullptr) {
        return;
    }
    sInstance->mStack->addWidget(widget);
    sInstance->mStack->setCurrentWidget(widget);
    widget->setFocus(Qt::OtherFocusReason);
}

void MainWindowDesktop::PopCurrentWidget()
{
    if (sInstance == nullptr || sInstance->mStack->count() == 0) {
        return;
    }
    QStackedWidget* stack = sInstance->mStack;
    QWidget* last = stack->widget(stack->count() - 1);
    stack->removeWidget(last);
    last->setParent(nullptr);
    // The popped screen may be inside one of its own slots (a "Назад" click), so it
    // goes on the next pass of the event loop.
    last->deleteLater();
    if (stack->count() > 0) {
        stack->setCurrentIndex(stack->count() - 1);
        stack->currentWidget()->setFocus(Qt::OtherFocusReason);
    }
}

void MainWindowDesktop::PopAllWidgetsAndShowIntro()
{
    if (sInstance == nullptr) {
        return;
    }
    QStackedWidget* stack = sInstance->mStack;
    while (stack->count() > 0) {
        QWidget* bottom = stack->widget(0);
        stack->removeWidget(bottom);
        bottom->setParent(nullptr);
        bottom->deleteLater();
    }
    ShowSignInWidget();
}

void MainWindowDesktop::ShowSignInWidget()
{
    PushWidget(new SignInWidgetDesktop());
}

void MainWindowDesktop::ShowPlayerWidget()
{
    PushWidget(new PlayerWidgetDesktop());
}

void MainWindowDesktop::ShowSignInOrPlayerScreen()
{
    if (Core::UserEnvironment::UserIsSignedIn()) {
        ShowPlayerWidget();
    } else {
        ShowSignInWidget();
    }
}

void MainWindowDesktop::FollowPlayerInMediaControls(
    const std::shared_ptr<Core::ContentPlaying::Player>& player)
{
    if (sInstance != nullptr) {
        sInstance->mMediaControls->Follow(player);
    }
}

void MainWindowDesktop::CreateTray()
{
    mTrayMenu = new QMenu(this);
    mQuitAction = mTrayMenu->addAction(QStringLiteral("Выход"));
    mTrayMenu->addSeparator();
    mToggleAction = mTrayMenu->addAction(QStringLiteral("Свернуть"));
    connect(mQuitAction, &QAction::triggered, this, &MainWindowDesktop::Quit);
    connect(mToggleAction, &QAction::triggered, this, [this]() {
        if (isVisible()) {
            MinimizeToTray();
        } else {
            RestoreFromTray();
        }
    });

    mTrayIcon = new QSystemTrayIcon(QIcon(QString::fromLatin1(LogoResource)), this);
    mTrayIcon->setToolTip(QStringLiteral("ЗЕЛМАР"));
    mTrayIcon->setContextMenu(mTrayMenu);
    connect(mTrayIcon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason != QSystemTrayIcon::Context) {
            RestoreFromTray();
        }
    });
    mTrayIcon->show();
}

QSystemTrayIcon* MainWindowDesktop::TrayIcon() const
{
    return mTrayIcon;
}

QAction* MainWindowDesktop::ToggleAction() const
{
    return mToggleAction;
}

void MainWindowDesktop::MinimizeToTray()
{
    // A tool window leaves the task bar; hiding it waits for the next pass of the
    // event loop so that the flag change has reached the window system.
    setWindowFlags(windowFlags() | Qt::Tool);
    QPointer<MainWindowDesktop> self(this);
    QTimer::singleShot(0, this, [self]() {
        if (self) {
            self->hide();
        }
    });
    mToggleAction->setText(QStringLiteral("Развернуть"));
}

void MainWindowDesktop::RestoreFromTray()
{
    setWindowFlags((windowFlags() & ~Qt::Tool) | Qt::Window);
    setWindowIcon(QIcon(QString::fromLatin1(LogoResource)));
    showNormal();
    activateWindow();
    raise();
    setFocus(Qt::ActiveWindowFocusReason);
    mToggleAction->setText(QStringLiteral("Свернуть"));
}

void MainWindowDesktop::MinimizeToTrayIfNeeded()
{
    if (Core::Settings::MinimizeToTrayOnAppStart()) {
        MinimizeToTray();
    }
}

void MainWindowDesktop::closeEvent(QCloseEvent* event)
{
    // Closing ends the program rather than hiding it: a shop that closes the window
    // expects the music to stop.
    event->accept();
    Quit();
}

void MainWindowDesktop::Quit()
{
    Core::UserEnvironment::ReleaseCurrentEnvironment();
    mTrayIcon->hide();
    QApplication::quit();
}

void MainWindowDesktop::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    PaintBackground();
}

void MainWindowDesktop::PaintBackground()
{
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, UiKit::GetInstance().ScreenBackgroundColor());
    setPalette(palette);
    setAutoFillBackground(true);
}

} // namespace UI::Desktop
