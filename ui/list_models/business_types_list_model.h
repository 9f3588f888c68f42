#pragma once

#include "core/data_types/auth/business_type.h"

#include <QAbstractListModel>

#include <memory>
#include <vector>

namespace UI {

// The kinds of business offered at sign-up, one tile each.
class BusinessTypesListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role
    {
        NameRole = Qt::UserRole + 1,
    };

    explicit BusinessTypesListModel(QObject* parent = nullptr);

    void SetTypes(const std::vector<std::shared_ptr<Core::DataTypes::Auth::BusinessType>>& types);
    // Null for rows out of range.
    const Core::DataTypes::Auth::BusinessType* TypeAt(int row) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    std::vector<Core::DataTypes::Auth::BusinessType> mTypes;
};

} // namespace UI
