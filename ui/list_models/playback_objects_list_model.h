#pragma once

#include "core/data_types/auth/playback_object.h"

#include <QAbstractListModel>

#include <memory>
#include <vector>

namespace UI {

// The account's points of sale, one card each on the choose-object screen.
class PlaybackObjectsListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role
    {
        NameRole = Qt::UserRole + 1,
        AddressRole,
    };

    explicit PlaybackObjectsListModel(QObject* parent = nullptr);

    void SetObjects(const std::vector<std::shared_ptr<Core::DataTypes::Auth::PlaybackObject>>& objects);
    // Null for rows out of range.
    const Core::DataTypes::Auth::PlaybackObject* ObjectAt(int row) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    std::vector<Core::DataTypes::Auth::PlaybackObject> mObjects;
};

} // namespace UI
