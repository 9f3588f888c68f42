#pragma once

#include <QObject>
#include <QPointer>
#include <QRect>

#include <memory>

class QScreen;
class QWidget;

namespace Core::ContentPlaying {
class Player;
}

namespace UI::Desktop {

// Where video and photos are seen. libvlc draws a video into a native window and a
// photo is a label, so both are plain widgets: laid over the now-playing screen's
// placeholders while that screen shows them, or full-screen on the screen chosen in
// the settings when it is another one than the window's. They outlive the screens
// that show them, since the player keeps drawing into them whatever section is open.
class ContentOutputDesktop : public QObject
{
    Q_OBJECT

public:
    // `home` keeps the widgets, hidden, while no screen shows them.
    explicit ContentOutputDesktop(QWidget* home);
    ~ContentOutputDesktop() override;

    // The player that draws into the widgets; a null one lets them go.
    void Attach(const std::shared_ptr<Core::ContentPlaying::Player>& player);

    // Lays the widgets over `host` at the given rectangles (host coordinates); an
    // empty rectangle hides that widget. Ignored while they play on another screen.
    void ShowOver(QWidget* host, const QRect& video, const QRect& photo);
    // The host stops showing them (it closes or hides its areas).
    void Release(QWidget* host);
    // Which kinds the playing period has; full-screen, only those take the screen.
    void SetKindsPlaying(bool video, bool photo);

    // Follows the settings' video output: full-screen on the chosen screen when it is
    // connected and not the window's own, otherwise back over the host.
    void ApplyVideoOutput();
    // The name of the screen video and photos play on full-screen; empty when they
    // play in the window.
    QString ExternalScreenName() const;

    QWidget* VideoWidget() const;
    QWidget* PhotoWidget() const;

    // Every output follows a change made in the settings.
    static void VideoOutputSettingChanged();

signals:
    void ExternalScreenChanged(const QString& name);

private:
    QScreen* ChosenExternalScreen() const;
    void MoveTo(QWidget* parent);
    void ShowFullScreenOn(QScreen* screen);
    void LeaveFullScreen();
    void ShowKindsFullScreen();

    QPointer<QWidget> mHome;
    QPointer<QWidget> mHost;
    QWidget* mVideo;
    QWidget* mPhoto;
    std::unique_ptr<QWidget> mFullScreen;
    QRect mVideoRect;
    QRect mPhotoRect;
    bool mVideoPlaying = true;
    bool mPhotoPlaying = false;
    std::weak_ptr<Core::ContentPlaying::Player> mPlayer;
};

} // namespace UI::Desktop
