#pragma once

#include "core/data_types/auth/server.h"
#include "ui/list_models/servers_list_model.h"

#include <QObject>
#include <QString>

#include <functional>

namespace UI::Desktop {

// The server chooser the sign-in and sign-up screens share: the built-in servers
// plus an address typed by hand, and the checks that address needs before any
// request goes to it.
class ServerChoice : public QObject
{
    Q_OBJECT

public:
    explicit ServerChoice(QObject* parent = nullptr);
    ~ServerChoice() override;

    ServersListModel* Model();

    // Reads the built-in list; `onLoaded` comes later with the row to preselect.
    void Load(std::function<void(int row)> onLoaded);
    // The server of `row`. For the custom row it is the typed address, with the
    // contacts and phone rules of the preselected built-in server: an address typed
    // by support staff is another door to the same service. False with the reason in
    // *error when the address is not one.
    bool Resolve(int row, const QString& address, Core::DataTypes::Auth::Server* server,
                 QString* error) const;

    // "host:port/api/v1" and the like, completed to an API base URL ending in "/";
    // empty with the reason in *error when it cannot be one.
    static QString NormalisedAddress(const QString& text, QString* error);
    // Neither HTTPS nor this machine: the password would cross the network readable.
    static bool SendsInTheClear(const Core::DataTypes::Auth::Server& server);

private:
    ServersListModel mModel;
};

} // namespace UI::Desktop
