#include "ui/list_models/servers_list_model.h"

namespace UI {

ServersListModel::ServersListModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

void ServersListModel::SetServers(const std::vector<std::shared_ptr<Core::DataTypes::Auth::Server>>& servers)
{
    beginResetModel();
    mServers.clear();
    for (const auto& server : servers) {
        // An entry without an address could never be reached; it is not offered.
        if (server && !server->url.empty()) {
            mServers.push_back(*server);
        }
    }
    endResetModel();
}

int ServersListModel::PreferredRow() const
{
    for (std::size_t row = 0; row < mServers.size(); ++row) {
        if (mServers[row].isPrimary) {
            return static_cast<int>(row);
        }
    }
    return mServers.empty() ? CustomRow() : 0;
}

int ServersListModel::CustomRow() const
{
    return static_cast<int>(mServers.size());
}

const Core::DataTypes::Auth::Server* ServersListModel::ServerAt(int row) const
{
    if (row < 0 || row >= static_cast<int>(mServers.size())) {
        return nullptr;
    }
    return &mServers[static_cast<std::size_t>(row)];
}

int ServersListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(mServers.size()) + 1;
}

QVariant ServersListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const Core::DataTypes::Auth::Server* server = ServerAt(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        if (server == nullptr) {
            return QString::fromUtf8(CustomServerName);
        }
        // A nameless entry is still told apart by its address.
        return QString::fromStdString(server->name.empty() ? server->url : server->name);
    case UrlRole:
        return server != nullptr ? QString::fromStdString(server->url) : QString();
    case IsCustomRole:
        return server == nullptr;
    default:
        return {};
    }
}

QHash<int, QByteArray> ServersListModel::roleNames() const
{
    return {{NameRole, "name"}, {UrlRole, "url"}, {IsCustomRole, "isCustom"}};
}

} // namespace UI
