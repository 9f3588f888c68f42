#include "ui/list_models/current_tracks_list_model.h"

namespace UI::ListModels {

CurrentTracksListModel::CurrentTracksListModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

void CurrentTracksListModel::SetTracks(const std::vector<Core::DataTypes::Playback::Track>& tracks)
{
    beginResetModel();
    mTracks = tracks;
    endResetModel();
}

void CurrentTracksListModel::SetPlayingTrack(std::int64_t trackId)
{
    if (trackId == mPlayingTrack) {
        return;
    }
    mPlayingTrack = trackId;
    if (!mTracks.empty()) {
        emit dataChanged(index(0), index(rowCount() - 1), {PlayingRole});
    }
}

int CurrentTracksListModel::PlayingRow() const
{
    for (std::size_t row = 0; row < mTracks.size(); ++row) {
        if (mTracks[row].id == mPlayingTrack) {
            return static_cast<int>(row);
        }
    }
    return -1;
}

int CurrentTracksListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(mTracks.size());
}

QVariant CurrentTracksListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
        return {};
    }
    const auto& track = mTracks[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case TitleRole:
        return QString::fromStdString(track.name);
    case ArtistRole:
        return QString::fromStdString(track.author);
    case LikeStatusRole:
        return static_cast<int>(track.likeStatus);
    case PlayingRole:
        return mPlayingTrack != 0 && track.id == mPlayingTrack;
    default:
        return {};
    }
}

QHash<int, QByteArray> CurrentTracksListModel::roleNames() const
{
    return {{TitleRole, "title"},
            {ArtistRole, "artist"},
            {LikeStatusRole, "likeStatus"},
            {PlayingRole, "playing"}};
}

} // namespace UI::ListModels
