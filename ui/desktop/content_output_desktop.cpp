#include "ui/desktop/content_output_desktop.h"

#include "core/content_playing/player.h"
#include "core/settings.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <vector>

namespace UI::Desktop {

namespace {

std::vector<ContentOutputDesktop*>& Outputs()
{
    static std::vector<ContentOutputDesktop*> outputs;
    return outputs;
}

QWidget* MakeArea(const QString& name, QWidget* parent)
{
    auto* area = new QWidget(parent);
    area->setObjectName(name);
    area->setAutoFillBackground(true);
    QPalette palette = area->palette();
    // Letterboxing around a picture is black on any theme, as on a television.
    palette.setColor(QPalette::Window, Qt::black);
    area->setPalette(palette);
    area->hide();
    return area;
}

} // namespace

ContentOutputDesktop::ContentOutputDesktop(QWidget* home)
    : QObject(home)
    , mHome(home)
    , mVideo(MakeArea(QStringLiteral("videoOutput"), home))
    , mPhoto(MakeArea(QStringLiteral("photoOutput"), home))
{
    // libvlc draws into an X window of its own: the video area has to be one. Its
    // siblings stay plain widgets (the application asks Qt not to make them native).
    mVideo->setAttribute(Qt::WA_NativeWindow);
    mVideo->setAttribute(Qt::WA_DontCreateNativeAncestors);
    Outputs().push_back(this);
    connect(qApp, &QGuiApplication::screenAdded, this, &ContentOutputDesktop::ApplyVideoOutput);
    connect(qApp, &QGuiApplication::screenRemoved, this, &ContentOutputDesktop::ApplyVideoOutput);
    ApplyVideoOutput();
}

ContentOutputDesktop::~ContentOutputDesktop()
{
    Outputs().erase(std::remove(Outputs().begin(), Outputs().end(), this), Outputs().end());
    Attach(nullptr);
    delete mVideo;
    delete mPhoto;
}

void ContentOutputDesktop::VideoOutputSettingChanged()
{
    for (ContentOutputDesktop* output : Outputs()) {
        output->ApplyVideoOutput();
    }
}

void ContentOutputDesktop::Attach(const std::shared_ptr<Core::ContentPlaying::Player>& player)
{
    const auto previous = mPlayer.lock();
    if (previous && previous != player) {
        previous->SetVideoWidget(nullptr);
        previous->SetPhotoWidget(nullptr);
    }
    mPlayer = player;
    if (player) {
        player->SetVideoWidget(mVideo);
        player->SetPhotoWidget(mPhoto);
    }
}

QWidget* ContentOutputDesktop::VideoWidget() const
{
    return mVideo;
}

QWidget* ContentOutputDesktop::PhotoWidget() const
{
    return mPhoto;
}

void ContentOutputDesktop::ShowOver(QWidget* host, const QRect& video, const QRect& photo)
{
    mHost = host;
    mVideoRect = video;
    mPhotoRect = photo;
    if (mFullScreen || !mHome || !host) {
        return;
    }
    // The areas stay children of the frame, so that the native video window is never
    // recreated (libvlc would go on drawing into the old one); they are placed over
    // the host in the frame's coordinates.
    const QPoint offset = host->mapTo(mHome, QPoint(0, 0));
    const auto place = [&](QWidget* area, const QRect& rect) {
        if (rect.isEmpty() || !host->isVisible()) {
            area->hide();
            return;
        }
        area->setGeometry(rect.translated(offset));
        area->show();
        area->raise();
    };
    place(mVideo, video);
    place(mPhoto, photo);
}

void ContentOutputDesktop::SetKindsPlaying(bool video, bool photo)
{
    mVideoPlaying = video;
    mPhotoPlaying = photo;
    if (mFullScreen) {
        ShowKindsFullScreen();
    }
}

void ContentOutputDesktop::ShowKindsFullScreen()
{
    // Nothing of either kind playing leaves the screen black rather than empty.
    mVideo->setVisible(mVideoPlaying || !mPhotoPlaying);
    mPhoto->setVisible(mPhotoPlaying);
}

void ContentOutputDesktop::Release(QWidget* host)
{
    if (mHost != host) {
        return;
    }
    mHost = nullptr;
    if (!mFullScreen) {
        mVideo->hide();
        mPhoto->hide();
    }
}

QScreen* ContentOutputDesktop::ChosenExternalScreen() const
{
    const Core::VideoOutput chosen = Core::Settings::GetVideoOutput();
    if (!chosen.selected || chosen.name.isEmpty() || !mHome) {
        return nullptr;
    }
    QWidget* window = mHome->window();
    QScreen* own = window && window->windowHandle() ? window->windowHandle()->screen() : nullptr;
    for (QScreen* screen : QGuiApplication::screens()) {
        if (screen->name() == chosen.name) {
            return screen == own ? nullptr : screen;
        }
    }
    return nullptr;
}

void ContentOutputDesktop::ApplyVideoOutput()
{
    QScreen* external = ChosenExternalScreen();
    if (external) {
        ShowFullScreenOn(external);
    } else {
        LeaveFullScreen();
    }
}

QString ContentOutputDesktop::ExternalScreenName() const
{
    if (!mFullScreen || !mFullScreen->windowHandle() || !mFullScreen->windowHandle()->screen()) {
        return {};
    }
    return mFullScreen->windowHandle()->screen()->name();
}

void ContentOutputDesktop::MoveTo(QWidget* parent)
{
    mVideo->setParent(parent);
    mPhoto->setParent(parent);
    // A new parent is a new native window for the video: the player is told again.
    if (const auto player = mPlayer.lock()) {
        player->SetVideoWidget(mVideo);
        player->SetPhotoWidget(mPhoto);
    }
}

void ContentOutputDesktop::ShowFullScreenOn(QScreen* screen)
{
    if (mFullScreen && mFullScreen->windowHandle() && mFullScreen->windowHandle()->screen() == screen) {
        return;
    }
    LeaveFullScreen();
    mFullScreen = std::make_unique<QWidget>(nullptr, Qt::Window | Qt::FramelessWindowHint);
    mFullScreen->setObjectName(QStringLiteral("videoOutputWindow"));
    mFullScreen->setWindowTitle(QStringLiteral("ЗЕЛМАР — видео"));
    mFullScreen->setAutoFillBackground(true);
    QPalette palette = mFullScreen->palette();
    palette.setColor(QPalette::Window, Qt::black);
    mFullScreen->setPalette(palette);
    auto* layout = new QHBoxLayout(mFullScreen.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    MoveTo(mFullScreen.get());
    layout->addWidget(mVideo, 1);
    layout->addWidget(mPhoto, 1);
    ShowKindsFullScreen();
    mFullScreen->winId();
    mFullScreen->windowHandle()->setScreen(screen);
    mFullScreen->setGeometry(screen->geometry());
    mFullScreen->showFullScreen();
    emit ExternalScreenChanged(screen->name());
}

void ContentOutputDesktop::LeaveFullScreen()
{
    if (!mFullScreen) {
        return;
    }
    MoveTo(mHome);
    mVideo->hide();
    mPhoto->hide();
    mFullScreen.reset();
    emit ExternalScreenChanged(QString());
    // Back over the screen that showed them before, if it still does.
    if (mHost) {
        ShowOver(mHost, mVideoRect, mPhotoRect);
    }
}

} // namespace UI::Desktop
