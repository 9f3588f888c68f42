#pragma once

#include "core/data_types/auth/music_style.h"

#include <QAbstractListModel>

#include <memory>
#include <vector>

namespace UI {

// The music styles offered at sign-up, each a chip the user turns on or off. The
// choice lives here, so that the screen reads it without asking the view.
class MusicStylesListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role
    {
        NameRole = Qt::UserRole + 1,
        CheckedRole,
    };

    explicit MusicStylesListModel(QObject* parent = nullptr);

    void SetStyles(const std::vector<std::shared_ptr<Core::DataTypes::Auth::MusicStyle>>& styles);
    std::vector<std::shared_ptr<Core::DataTypes::Auth::MusicStyle>> CheckedStyles() const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    struct Row
    {
        Core::DataTypes::Auth::MusicStyle style;
        bool checked = false;
    };

    std::vector<Row> mRows;
};

} // namespace UI
