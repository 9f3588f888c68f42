#include "ui/list_models/tracks_list_model.h"

namespace UI {

TracksListModel::TracksListModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

void TracksListModel::SetTracks(const std::shared_ptr<std::vector<Core::DataTypes::Playlists::Track>>& tracks)
{
    beginResetModel();
    mTracks = tracks ? *tracks : std::vector<Core::DataTypes::Playlists::Track>();
    endResetModel();
}

void TracksListModel::Clear()
{
    SetTracks(nullptr);
}

int TracksListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(mTracks.size());
}

QVariant TracksListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() < 0 || index.row() >= static_cast<int>(mTracks.size())) {
        return {};
    }
    const auto& track = mTracks[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        // A track the catalogue left unnamed still gets a line of its own.
        return track.name.empty() ? QStringLiteral("Без названия") : QString::fromStdString(track.name);
    case AuthorRole:
        return QString::fromStdString(track.author);
    case ImageRole:
        return QString::fromStdString(track.image);
    default:
        return {};
    }
}

QHash<int, QByteArray> TracksListModel::roleNames() const
{
    return {{NameRole, "name"}, {AuthorRole, "author"}, {ImageRole, "image"}};
}

} // namespace UI
