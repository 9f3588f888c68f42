#include "ui/list_models/playback_objects_list_model.h"

namespace UI {

PlaybackObjectsListModel::PlaybackObjectsListModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

void PlaybackObjectsListModel::SetObjects(
    const std::vector<std::shared_ptr<Core::DataTypes::Auth::PlaybackObject>>& objects)
{
    beginResetModel();
    mObjects.clear();
    for (const auto& object : objects) {
        if (object) {
            mObjects.push_back(*object);
        }
    }
    endResetModel();
}

const Core::DataTypes::Auth::PlaybackObject* PlaybackObjectsListModel::ObjectAt(int row) const
{
    if (row < 0 || row >= static_cast<int>(mObjects.size())) {
        return nullptr;
    }
    return &mObjects[static_cast<std::size_t>(row)];
}

int PlaybackObjectsListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(mObjects.size());
}

QVariant PlaybackObjectsListModel::data(const QModelIndex& index, int role) const
{
    const Core::DataTypes::Auth::PlaybackObject* object = index.isValid() ? ObjectAt(index.row()) : nullptr;
    if (object == nullptr) {
        return {};
    }
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        // The server may leave a point of sale unnamed; the owner still needs a label
        // to tell it from the others.
        return object->name.empty() ? QStringLiteral("Точка №%1").arg(object->id)
                                    : QString::fromStdString(object->name);
    case AddressRole:
        return QString::fromStdString(object->address);
    default:
        return {};
    }
}

QHash<int, QByteArray> PlaybackObjectsListModel::roleNames() const
{
    return {{NameRole, "name"}, {AddressRole, "address"}};
}

} // namespace UI
