#pragma once

#include "core/data_types/playlists/track.h"

#include <QAbstractListModel>

#include <memory>
#include <vector>

namespace UI {

// The tracks of a catalogue playlist the owner opened, to see what it would play.
class TracksListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role
    {
        NameRole = Qt::UserRole + 1,
        AuthorRole,
        ImageRole,
    };

    explicit TracksListModel(QObject* parent = nullptr);

    void SetTracks(const std::shared_ptr<std::vector<Core::DataTypes::Playlists::Track>>& tracks);
    void Clear();

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    std::vector<Core::DataTypes::Playlists::Track> mTracks;
};

} // namespace UI
