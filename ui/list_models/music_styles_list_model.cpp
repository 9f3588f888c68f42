#include "ui/list_models/music_styles_list_model.h"

namespace UI {

MusicStylesListModel::MusicStylesListModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

void MusicStylesListModel::SetStyles(
    const std::vector<std::shared_ptr<Core::DataTypes::Auth::MusicStyle>>& styles)
{
    beginResetModel();
    mRows.clear();
    for (const auto& style : styles) {
        if (style && !style->name.empty()) {
            mRows.push_back({*style, false});
        }
    }
    endResetModel();
}

std::vector<std::shared_ptr<Core::DataTypes::Auth::MusicStyle>> MusicStylesListModel::CheckedStyles() const
{
    std::vector<std::shared_ptr<Core::DataTypes::Auth::MusicStyle>> checked;
    for (const Row& row : mRows) {
        if (row.checked) {
            checked.push_back(std::make_shared<Core::DataTypes::Auth::MusicStyle>(row.style));
        }
    }
    return checked;
}

int MusicStylesListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(mRows.size());
}

QVariant MusicStylesListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const Row& row = mRows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return QString::fromStdString(row.style.name);
    case CheckedRole:
        return row.checked;
    default:
        return {};
    }
}

bool MusicStylesListModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || index.row() >= rowCount() || role != CheckedRole) {
        return false;
    }
    Row& row = mRows[static_cast<std::size_t>(index.row())];
    if (row.checked != value.toBool()) {
        row.checked = value.toBool();
        emit dataChanged(index, index, {CheckedRole});
    }
    return true;
}

Qt::ItemFlags MusicStylesListModel::flags(const QModelIndex& index) const
{
    return QAbstractListModel::flags(index) | Qt::ItemIsEditable;
}

QHash<int, QByteArray> MusicStylesListModel::roleNames() const
{
    return {{NameRole, "name"}, {CheckedRole, "checked"}};
}

} // namespace UI
