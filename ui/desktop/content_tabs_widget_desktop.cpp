#include "ui/desktop/content_tabs_widget_desktop.h"

#include "ui/desktop/base_widget_desktop.h"
#include "ui/desktop/music_playlists_widget_desktop.h"
#include "ui/desktop/photo_playlists_widget_desktop.h"
#include "ui/desktop/video_playlists_widget_desktop.h"
#include "ui/ui_kit/ui_kit.h"

#include <QStackedWidget>
#include <QVBoxLayout>

namespace UI::Desktop {

using Core::DataTypes::Playlists::PlaylistContentType;

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/player/contents/top_frame.qml";

PlaylistContentType TabOf(PlaylistContentType type)
{
    return type == PlaylistContentType::StockMusic ? PlaylistContentType::Music : type;
}

} // namespace

ContentTabsWidgetDesktop::ContentTabsWidgetDesktop(PlaylistContentType type, QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("contentTabs"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    mTabs = new BaseWidgetDesktop(this);
    mTabs->SetSource(QUrl(QString::fromLatin1(Document)));
    mTabs->setFixedHeight(UiKit::GetInstance().TabBarHeight());
    mTabs->ConnectQmlRoot("tabChosen(int)", this, "OnTabChosen(int)");
    mStack = new QStackedWidget(this);
    layout->addWidget(mTabs);
    layout->addWidget(mStack, 1);
    Open(type);
}

ContentTabsWidgetDesktop::~ContentTabsWidgetDesktop() = default;

PlaylistContentType ContentTabsWidgetDesktop::CurrentType() const
{
    return mType;
}

QWidget* ContentTabsWidgetDesktop::CurrentPlaylistsWidget() const
{
    return mStack->currentWidget();
}

void ContentTabsWidgetDesktop::OnTabChosen(int type)
{
    if (type < static_cast<int>(PlaylistContentType::Music) ||
        type > static_cast<int>(PlaylistContentType::Photo)) {
        return;
    }
    Open(static_cast<PlaylistContentType>(type));
    emit TabChosen(mType);
}

void ContentTabsWidgetDesktop::Open(PlaylistContentType type)
{
    type = TabOf(type);
    if (type == mType && mStack->count() > 0) {
        return;
    }
    mType = type;
    mTabs->SetPropertyOfRoot("currentType", static_cast<int>(type));
    QWidget* opened = nullptr;
    switch (type) {
    case PlaylistContentType::Video:
        opened = new VideoPlaylistsWidgetDesktop(mStack);
        break;
    case PlaylistContentType::Photo:
        opened = new PhotoPlaylistsWidgetDesktop(mStack);
        break;
    default:
        opened = new MusicPlaylistsWidgetDesktop(mStack);
        break;
    }
    mStack->addWidget(opened);
    mStack->setCurrentWidget(opened);
    // The catalogue left may be inside one of its own slots: it goes on the next
    // pass of the event loop.
    while (mStack->count() > 1) {
        QWidget* left = mStack->widget(0);
        mStack->removeWidget(left);
        left->deleteLater();
    }
}

} // namespace UI::Desktop
