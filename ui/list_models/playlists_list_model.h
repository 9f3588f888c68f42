#pragma once

#include "core/data_types/playlists/playlist.h"
#include "core/data_types/playlists/playlist_content_type.h"

#include <QAbstractListModel>
#include <QString>

#include <memory>
#include <vector>

namespace UI {

// The catalogue's playlists of one content section, one card each, narrowed by what
// the owner typed into the search field. The music section lists two catalogues
// (the service's stock music and the account's own uploads), so every row keeps
// the kind it came from: activating it has to name that kind.
class PlaylistsListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role
    {
        NameRole = Qt::UserRole + 1,
        ImageRole,
        TracksCountRole,
        SizeTextRole,
        ActiveRole,
        PlaylistIdRole,
    };

    struct Entry
    {
        Core::DataTypes::Playlists::PlaylistContentType type =
            Core::DataTypes::Playlists::PlaylistContentType::Music;
        Core::DataTypes::Playlists::Playlist playlist;
    };

    explicit PlaylistsListModel(QObject* parent = nullptr);

    void SetPlaylists(std::vector<Entry> entries);
    // Case-insensitive part of a name; empty shows everything.
    void SetFilter(const QString& text);
    // Null for rows out of range (of the filtered list).
    const Entry* EntryAt(int row) const;
    // The row (of the filtered list) of the playlist, or -1.
    int RowOf(Core::DataTypes::Playlists::PlaylistContentType type, int playlistId) const;

    // "1,4 ГБ": the size of the files a playlist brings onto the disk.
    static QString SizeText(double bytes);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    void Refilter();

    std::vector<Entry> mAll;
    std::vector<std::size_t> mShown;
    QString mFilter;
};

} // namespace UI
