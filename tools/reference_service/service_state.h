#pragma once

#include "tools/reference_service/catalogue_state.h"
#include "tools/reference_service/configuration_template.h"
#include "tools/reference_service/scenario.h"

#include <QDate>
#include <QDateTime>
#include <QString>
#include <QVector>

#include <map>
#include <mutex>
#include <optional>
#include <random>

namespace ReferenceService {

// What changes while the service runs: accounts and their sign-ins, the state of
// every playback object, and the service's idea of today. Requests are handled on
// several threads, so every access happens under Lock(); the members are public
// for the handlers that hold it.
class ServiceState
{
public:
    struct ObjectState
    {
        Scenario::PlaybackObject object;
        QString login;
        std::optional<ConfigurationTemplate> configuration;
        // An explicit version set through the control API; bumps add to it.
        std::optional<int> versionOverride;
        int versionBump = 0;
        // Ratings received per track id: 1 liked, 0 disliked, -1 cleared.
        std::map<int, int> likes;
        CatalogueState catalogue;
    };

    struct AccountState
    {
        QString login;
        QString password;
        QString phone;
        bool blocked = false;
        QStringList objectCodes;
    };

    struct TokenOwner
    {
        QString login;
        QString code;
    };

    explicit ServiceState(const Scenario& scenario);

    std::unique_lock<std::mutex> Lock();
    // Back to the scenario as loaded. Call under the lock.
    void Reset();

    // Today as the service sees it: the local date moved by the control API.
    QDate Today() const;
    // What the service's clock reads now, in UTC: the real time moved by
    // `clockShiftSeconds`. Replies carry it in their "Date" header, the only place
    // the player learns the server's time from. Today() does not follow it, so a
    // shifted clock never changes the configuration's dates.
    QDateTime Now() const;
    // A new token for the pair; an earlier token of the same pair stops working,
    // as when the account signs in for this object on another device.
    QString IssueToken(const QString& login, const QString& code);
    // Number of tokens dropped.
    int InvalidateTokensOf(const QString& code);
    void InvalidateToken(const QString& token);
    void RemoveAccount(const QString& login);
    // The account of a login, when it still exists.
    AccountState* FindAccount(const QString& login);
    ObjectState* FindObject(const QString& code);
    // An account and object made by sign-up.
    ObjectState& SignUp(const QString& phone, const QString& city);

    std::map<QString, AccountState> accounts;
    std::map<QString, ObjectState> objects;
    std::map<QString, TokenOwner> tokens;
    int dayOffset = 0;
    std::optional<QDate> fixedToday;
    int clockShiftSeconds = 0;

private:
    const Scenario& scenario;
    std::mutex mutex;
    std::mt19937_64 random;
    int signUps = 0;
};

} // namespace ReferenceService
