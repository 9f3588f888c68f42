#pragma once

#include "core/data_types/playlists/playlist_content_type.h"

#include <QWidget>

class QStackedWidget;

namespace UI::Desktop {

class BaseWidgetDesktop;

// The content section: the tabs "Музыка", "Видео", "Фото" over the catalogue of the
// chosen kind. One catalogue at a time; the one left is not kept.
class ContentTabsWidgetDesktop : public QWidget
{
    Q_OBJECT

public:
    // Stock music opens the music tab, which lists it.
    explicit ContentTabsWidgetDesktop(Core::DataTypes::Playlists::PlaylistContentType type =
                                          Core::DataTypes::Playlists::PlaylistContentType::Music,
                                      QWidget* parent = nullptr);
    ~ContentTabsWidgetDesktop() override;

    Core::DataTypes::Playlists::PlaylistContentType CurrentType() const;
    void Open(Core::DataTypes::Playlists::PlaylistContentType type);
    // The catalogue on show.
    QWidget* CurrentPlaylistsWidget() const;

signals:
    // The owner chose another tab; the side bar follows.
    void TabChosen(Core::DataTypes::Playlists::PlaylistContentType type);

private slots:
    void OnTabChosen(int type);

private:
    BaseWidgetDesktop* mTabs = nullptr;
    QStackedWidget* mStack = nullptr;
    Core::DataTypes::Playlists::PlaylistContentType mType =
        Core::DataTypes::Playlists::PlaylistContentType::Music;
};

} // namespace UI::Desktop
