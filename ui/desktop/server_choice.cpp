#include "ui/desktop/server_choice.h"

#include "core/user_environment.h"

#include <QHostAddress>
#include <QPointer>
#include <QUrl>

#include <memory>
#include <vector>

namespace UI::Desktop {

ServerChoice::ServerChoice(QObject* parent)
    : QObject(parent)
{
}

ServerChoice::~ServerChoice() = default;

ServersListModel* ServerChoice::Model()
{
    return &mModel;
}

void ServerChoice::Load(std::function<void(int row)> onLoaded)
{
    QPointer<ServerChoice> self(this);
    Core::UserEnvironment::Servers(
        [self, onLoaded](std::vector<std::shared_ptr<Core::DataTypes::Auth::Server>> servers) {
            if (!self) {
                return;
            }
            self->mModel.SetServers(servers);
            if (onLoaded) {
                onLoaded(self->mModel.PreferredRow());
            }
        },
        [self, onLoaded](std::shared_ptr<Core::DataTypes::Error>) {
            // Without the built-in list only a typed address is left.
            if (self && onLoaded) {
                onLoaded(self->mModel.CustomRow());
            }
        });
}

bool ServerChoice::Resolve(int row, const QString& address, Core::DataTypes::Auth::Server* server,
                           QString* error) const
{
    if (const Core::DataTypes::Auth::Server* builtIn = mModel.ServerAt(row)) {
        *server = *builtIn;
        return true;
    }
    const QString url = NormalisedAddress(address, error);
    if (url.isEmpty()) {
        return false;
    }
    const Core::DataTypes::Auth::Server* preferred = mModel.ServerAt(mModel.PreferredRow());
    *server = preferred != nullptr ? *preferred : Core::DataTypes::Auth::Server();
    server->id = 0;
    server->isPrimary = false;
    server->url = url.toStdString();
    server->name = url.toStdString();
    // The landing page of another server is not this one's.
    server->landingUrl.clear();
    if (server->phoneSymbolLen <= 0) {
        server->phoneSymbolLen = 10;
    }
    return true;
}

QString ServerChoice::NormalisedAddress(const QString& text, QString* error)
{
    QString address = text.trimmed();
    if (address.isEmpty()) {
        *error = QStringLiteral("Введите адрес сервера, например http://127.0.0.1:8091/api/v1/");
        return {};
    }
    if (!address.contains(QLatin1String("://"))) {
        address.prepend(QLatin1String("https://"));
    }
    const QUrl url(address, QUrl::StrictMode);
    const QString scheme = url.scheme().toLower();
    if (!url.isValid() || url.host().isEmpty() ||
        (scheme != QLatin1String("http") && scheme != QLatin1String("https")) || url.hasQuery() ||
        url.hasFragment()) {
        *error = QStringLiteral("Это не адрес сервера. Пример: http://127.0.0.1:8091/api/v1/");
        return {};
    }
    // Request paths are appended to the address, so it has to end with "/".
    if (!address.endsWith(QLatin1Char('/'))) {
        address.append(QLatin1Char('/'));
    }
    error->clear();
    return address;
}

bool ServerChoice::SendsInTheClear(const Core::DataTypes::Auth::Server& server)
{
    const QUrl url(QString::fromStdString(server.url));
    if (url.scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) == 0) {
        return false;
    }
    const QString host = url.host().toLower();
    if (host == QLatin1String("localhost")) {
        return false;
    }
    // Only the loopback addresses this machine answers on itself stay off the wire.
    const QHostAddress hostAddress(host);
    return hostAddress.isNull() || !hostAddress.isLoopback();
}

} // namespace UI::Desktop
