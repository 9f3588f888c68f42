#pragma once

#include <QMainWindow>

#include <memory>

class QAction;
class QMenu;
class QStackedWidget;
class QSystemTrayIcon;

namespace Core::ContentPlaying {
class Player;
}
namespace Core::MediaControls {
class MprisService;
}

namespace UI::Desktop {

// The one top-level window: its whole content is a stack of screens. Screens move
// through the static operations below, which act on the single instance; the
// sign-in screen or the player frame is always at the bottom of the stack.
class MainWindowDesktop : public QMainWindow
{
    Q_OBJECT

public:
    static constexpr int MinimumWidth = 1024;
    static constexpr int MinimumHeight = 708;

    explicit MainWindowDesktop(QWidget* parent = nullptr);
    ~MainWindowDesktop() override;

    static MainWindowDesktop* sInstance;

    static void PushWidget(QWidget* widget);
    static void PopCurrentWidget();
    static void PopAllWidgetsAndShowIntro();
    static void ShowSignInWidget();
    static void ShowPlayerWidget();
    static void ShowSignInOrPlayerScreen();
    // The player the screens now follow, for the desktop's media controls; empty
    // when there is none.
    static void FollowPlayerInMediaControls(const std::shared_ptr<Core::ContentPlaying::Player>& player);

    // The screen stack, for the screens' tests and the screenshots.
    QStackedWidget* Stack() const;

    void MinimizeToTray();
    void RestoreFromTray();
    void MinimizeToTrayIfNeeded();
    QSystemTrayIcon* TrayIcon() const;
    QAction* ToggleAction() const;

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void CreateTray();
    void PaintBackground();
    void Quit();

    QStackedWidget* mStack = nullptr;
    QSystemTrayIcon* mTrayIcon = nullptr;
    QMenu* mTrayMenu = nullptr;
    QAction* mQuitAction = nullptr;
    QAction* mToggleAction = nullptr;
    Core::MediaControls::MprisService* mMediaControls = nullptr;
};

} // namespace UI::Desktop
