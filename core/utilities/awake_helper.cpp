#include "core/utilities/awake_helper.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QObject>
#include <QString>
#include <QtGlobal>

#include <cstdint>
#include <optional>

namespace Core::Utilities {

namespace {

const QString screenSaverService = QStringLiteral("org.freedesktop.ScreenSaver");
const QString screenSaverPath = QStringLiteral("/org/freedesktop/ScreenSaver");
const QString screenSaverInterface = QStringLiteral("org.freedesktop.ScreenSaver");
// A session that does not answer within this long is not going to.
constexpr int callTimeoutMSecs = 5000;

// What the caller asked for last, and what the session holds. Only the GUI thread
// calls KeepAwake and the replies come back on it, so plain statics do.
bool wantAwake = false;
bool inhibitInFlight = false;
std::optional<std::uint32_t> inhibitCookie;

QDBusMessage ScreenSaverCall(const QString& method)
{
    return QDBusMessage::createMethodCall(screenSaverService, screenSaverPath, screenSaverInterface, method);
}

void SendUnInhibit(std::uint32_t cookie)
{
    QDBusMessage message = ScreenSaverCall(QStringLiteral("UnInhibit"));
    message << static_cast<uint>(cookie);
    auto* watcher =
        new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message, callTimeoutMSecs));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [](QDBusPendingCallWatcher* call) {
        const QDBusPendingReply<> reply = *call;
        if (reply.isError()) {
            qWarning("Keep awake: releasing the screen saver inhibit failed: %s",
                     qUtf8Printable(reply.error().message()));
        }
        call->deleteLater();
    });
}

void OnInhibitFinished(QDBusPendingCallWatcher* call)
{
    call->deleteLater();
    inhibitInFlight = false;
    const QDBusPendingReply<uint> reply = *call;
    if (reply.isError()) {
        qWarning("Keep awake: the screen saver cannot be held off: %s",
                 qUtf8Printable(reply.error().message()));
        return;
    }
    const std::uint32_t cookie = reply.value();
    if (!wantAwake) {
        // Playback stopped while the session was answering.
        SendUnInhibit(cookie);
        return;
    }
    inhibitCookie = cookie;
}

void SendInhibit()
{
    QDBusMessage message = ScreenSaverCall(QStringLiteral("Inhibit"));
    message << QStringLiteral("Zelmar Player") << QStringLiteral("Воспроизведение по расписанию");
    inhibitInFlight = true;
    auto* watcher =
        new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message, callTimeoutMSecs));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, OnInhibitFinished);
}

} // namespace

void AwakeHelper::KeepAwake(bool keepAwake)
{
#if defined(Q_OS_LINUX)
    KeepAwakeLinux(keepAwake);
#else
    Q_UNUSED(keepAwake)
#endif
}

void AwakeHelper::KeepAwakeLinux(bool keepAwake)
{
    wantAwake = keepAwake;
    if (keepAwake) {
        if (inhibitCookie || inhibitInFlight) {
            return;
        }
        if (!QDBusConnection::sessionBus().isConnected()) {
            // The player asks on every start; once is enough to say why nothing happens.
            static bool reported = false;
            if (!reported) {
                reported = true;
                qWarning("Keep awake: there is no session bus to ask");
            }
            return;
        }
        SendInhibit();
        return;
    }
    // An inhibit still on its way is released when its reply comes.
    if (inhibitCookie) {
        const std::uint32_t cookie = *inhibitCookie;
        inhibitCookie.reset();
        SendUnInhibit(cookie);
    }
}

bool AwakeHelper::IsKeepingAwake()
{
    return inhibitCookie.has_value();
}

} // namespace Core::Utilities
