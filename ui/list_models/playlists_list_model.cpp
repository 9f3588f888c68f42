#include "ui/list_models/playlists_list_model.h"

#include <QLocale>

namespace UI {

PlaylistsListModel::PlaylistsListModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

void PlaylistsListModel::SetPlaylists(std::vector<Entry> entries)
{
    beginResetModel();
    mAll = std::move(entries);
    Refilter();
    endResetModel();
}

void PlaylistsListModel::SetFilter(const QString& text)
{
    const QString filter = text.trimmed();
    if (filter == mFilter) {
        return;
    }
    beginResetModel();
    mFilter = filter;
    Refilter();
    endResetModel();
}

void PlaylistsListModel::Refilter()
{
    mShown.clear();
    for (std::size_t i = 0; i < mAll.size(); ++i) {
        if (mFilter.isEmpty() ||
            QString::fromStdString(mAll[i].playlist.name).contains(mFilter, Qt::CaseInsensitive)) {
            mShown.push_back(i);
        }
    }
}

const PlaylistsListModel::Entry* PlaylistsListModel::EntryAt(int row) const
{
    if (row < 0 || row >= static_cast<int>(mShown.size())) {
        return nullptr;
    }
    return &mAll[mShown[static_cast<std::size_t>(row)]];
}

int PlaylistsListModel::RowOf(Core::DataTypes::Playlists::PlaylistContentType type, int playlistId) const
{
    for (int row = 0; row < static_cast<int>(mShown.size()); ++row) {
        const Entry* entry = EntryAt(row);
        if (entry->type == type && entry->playlist.id == playlistId) {
            return row;
        }
    }
    return -1;
}

QString PlaylistsListModel::SizeText(double bytes)
{
    if (bytes <= 0) {
        return QString();
    }
    static const char* const units[] = {"Б", "КБ", "МБ", "ГБ", "ТБ"};
    int unit = 0;
    while (bytes >= 1024.0 && unit < 4) {
        bytes /= 1024.0;
        ++unit;
    }
    const QLocale russian(QLocale::Russian, QLocale::Russia);
    return QStringLiteral("%1 %2").arg(russian.toString(bytes, 'f', unit == 0 || bytes >= 10.0 ? 0 : 1),
                                       QString::fromUtf8(units[unit]));
}

int PlaylistsListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(mShown.size());
}

QVariant PlaylistsListModel::data(const QModelIndex& index, int role) const
{
    const Entry* entry = index.isValid() ? EntryAt(index.row()) : nullptr;
    if (entry == nullptr) {
        return {};
    }
    const auto& playlist = entry->playlist;
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return QString::fromStdString(playlist.name);
    case ImageRole:
        return QString::fromStdString(playlist.image);
    case TracksCountRole:
        return playlist.tracksCount;
    case SizeTextRole:
        return SizeText(playlist.contentSizeBytes);
    case ActiveRole:
        return playlist.active;
    case PlaylistIdRole:
        return playlist.id;
    default:
        return {};
    }
}

QHash<int, QByteArray> PlaylistsListModel::roleNames() const
{
    return {{NameRole, "name"},         {ImageRole, "image"},   {TracksCountRole, "tracksCount"},
            {SizeTextRole, "sizeText"}, {ActiveRole, "active"}, {PlaylistIdRole, "playlistId"}};
}

} // namespace UI
