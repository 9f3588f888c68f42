#include "tools/reference_service/service_state.h"

#include <QJsonObject>

#include <algorithm>

namespace ReferenceService {

ServiceState::ServiceState(const Scenario& source)
    : scenario(source)
    , random(std::random_device{}())
{
    Reset();
}

std::unique_lock<std::mutex> ServiceState::Lock()
{
    return std::unique_lock<std::mutex>(mutex);
}

void ServiceState::Reset()
{
    accounts.clear();
    objects.clear();
    tokens.clear();
    dayOffset = 0;
    fixedToday.reset();
    clockShiftSeconds = 0;
    signUps = 0;
    const CatalogueState catalogue(scenario.catalogue);
    for (const Scenario::Account& account : scenario.accounts) {
        AccountState state{account.login, account.password, account.phone, account.blocked, {}};
        for (const Scenario::PlaybackObject& object : account.objects) {
            state.objectCodes.append(object.code);
            ObjectState objectState;
            objectState.object = object;
            objectState.login = account.login;
            const auto configuration = scenario.configurations.find(object.code);
            if (configuration != scenario.configurations.end()) {
                objectState.configuration = configuration->second;
            }
            objectState.catalogue = catalogue;
            objects.emplace(object.code, objectState);
        }
        accounts.emplace(account.login, state);
    }
}

QDate ServiceState::Today() const
{
    return (fixedToday ? *fixedToday : QDate::currentDate()).addDays(dayOffset);
}

QDateTime ServiceState::Now() const
{
    return QDateTime::currentDateTimeUtc().addSecs(clockShiftSeconds);
}

QString ServiceState::IssueToken(const QString& login, const QString& code)
{
    for (auto it = tokens.begin(); it != tokens.end();) {
        if (it->second.login == login && it->second.code == code) {
            it = tokens.erase(it);
        } else {
            ++it;
        }
    }
    QString token;
    do {
        token = QStringLiteral("%1%2")
                    .arg(static_cast<qulonglong>(random()), 16, 16, QLatin1Char('0'))
                    .arg(static_cast<qulonglong>(random()), 16, 16, QLatin1Char('0'));
    } while (tokens.count(token) != 0);
    tokens.emplace(token, TokenOwner{login, code});
    return token;
}

int ServiceState::InvalidateTokensOf(const QString& code)
{
    int dropped = 0;
    for (auto it = tokens.begin(); it != tokens.end();) {
        if (it->second.code == code) {
            it = tokens.erase(it);
            ++dropped;
        } else {
            ++it;
        }
    }
    return dropped;
}

void ServiceState::InvalidateToken(const QString& token)
{
    tokens.erase(token);
}

void ServiceState::RemoveAccount(const QString& login)
{
    const auto account = accounts.find(login);
    if (account == accounts.end()) {
        return;
    }
    for (const QString& code : account->second.objectCodes) {
        InvalidateTokensOf(code);
        objects.erase(code);
    }
    accounts.erase(account);
}

ServiceState::AccountState* ServiceState::FindAccount(const QString& login)
{
    const auto found = accounts.find(login);
    return found == accounts.end() ? nullptr : &found->second;
}

ServiceState::ObjectState* ServiceState::FindObject(const QString& code)
{
    const auto found = objects.find(code);
    return found == objects.end() ? nullptr : &found->second;
}

ServiceState::ObjectState& ServiceState::SignUp(const QString& phone, const QString& city)
{
    ++signUps;
    int id = 1000000 + signUps;
    for (const auto& entry : objects) {
        id = std::max(id, entry.second.object.id + 1);
    }
    QString code;
    int suffix = signUps;
    do {
        code = QStringLiteral("signup-%1").arg(suffix++);
    } while (objects.count(code) != 0);

    Scenario::PlaybackObject object;
    object.id = id;
    object.code = code;
    object.reply = QJsonObject{{QStringLiteral("id"), id},
                               {QStringLiteral("code"), code},
                               {QStringLiteral("name"), QStringLiteral("Новая точка")},
                               {QStringLiteral("address"), city},
                               {QStringLiteral("contract_number"), QString()},
                               {QStringLiteral("image"), QString()},
                               {QStringLiteral("logo"), QString()},
                               {QStringLiteral("disable_player_control"), false},
                               {QStringLiteral("organization_name"), QString()}};
    // The phone number is the new account's login. The player signs up with a
    // confirmation code, never a password, so the account gets one nobody knows.
    const QString password = QString::number(static_cast<qulonglong>(random()), 36);
    AccountState account{phone, password, phone, false, {code}};
    accounts[phone] = account;

    ObjectState state;
    state.object = object;
    state.login = phone;
    const auto configuration = scenario.configurations.find(scenario.signUpConfiguration);
    if (configuration != scenario.configurations.end()) {
        state.configuration = configuration->second;
    }
    state.catalogue = CatalogueState(scenario.catalogue);
    return objects.emplace(code, state).first->second;
}

} // namespace ReferenceService
