#pragma once

#include "core/data_types/auth/server.h"

#include <QAbstractListModel>

#include <memory>
#include <vector>

namespace UI {

// The servers the user may sign in or sign up on: the built-in list, then one row
// more, "Другой сервер…", for an address typed by hand (support staff point a
// player at a test or regional server that way).
class ServersListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role
    {
        NameRole = Qt::UserRole + 1,
        UrlRole,
        IsCustomRole,
    };

    static constexpr const char* CustomServerName = "Другой сервер…";

    explicit ServersListModel(QObject* parent = nullptr);

    void SetServers(const std::vector<std::shared_ptr<Core::DataTypes::Auth::Server>>& servers);
    // The primary server's row, else the first built-in one, else the custom row.
    int PreferredRow() const;
    int CustomRow() const;
    // Null for the custom row and for rows out of range.
    const Core::DataTypes::Auth::Server* ServerAt(int row) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    std::vector<Core::DataTypes::Auth::Server> mServers;
};

} // namespace UI
