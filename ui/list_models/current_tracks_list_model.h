#pragma once

#include "core/data_types/playback/track.h"

#include <QAbstractListModel>

#include <cstdint>
#include <vector>

namespace UI::ListModels {

// The tracks of the playlist playing now, the playing one marked.
class CurrentTracksListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role
    {
        TitleRole = Qt::UserRole + 1,
        ArtistRole,
        LikeStatusRole,
        PlayingRole,
    };

    explicit CurrentTracksListModel(QObject* parent = nullptr);

    void SetTracks(const std::vector<Core::DataTypes::Playback::Track>& tracks);
    void SetPlayingTrack(std::int64_t trackId);
    int PlayingRow() const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    std::vector<Core::DataTypes::Playback::Track> mTracks;
    std::int64_t mPlayingTrack = 0;
};

} // namespace UI::ListModels
