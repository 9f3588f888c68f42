#include "ui/list_models/business_types_list_model.h"

namespace UI {

BusinessTypesListModel::BusinessTypesListModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

void BusinessTypesListModel::SetTypes(
    const std::vector<std::shared_ptr<Core::DataTypes::Auth::BusinessType>>& types)
{
    beginResetModel();
    mTypes.clear();
    for (const auto& type : types) {
        // A tile without a name would be a choice nobody can read.
        if (type && !type->name.empty()) {
            mTypes.push_back(*type);
        }
    }
    endResetModel();
}

const Core::DataTypes::Auth::BusinessType* BusinessTypesListModel::TypeAt(int row) const
{
    if (row < 0 || row >= static_cast<int>(mTypes.size())) {
        return nullptr;
    }
    return &mTypes[static_cast<std::size_t>(row)];
}

int BusinessTypesListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(mTypes.size());
}

QVariant BusinessTypesListModel::data(const QModelIndex& index, int role) const
{
    const Core::DataTypes::Auth::BusinessType* type = index.isValid() ? TypeAt(index.row()) : nullptr;
    if (type == nullptr || (role != NameRole && role != Qt::DisplayRole)) {
        return {};
    }
    return QString::fromStdString(type->name);
}

QHash<int, QByteArray> BusinessTypesListModel::roleNames() const
{
    return {{NameRole, "name"}};
}

} // namespace UI
