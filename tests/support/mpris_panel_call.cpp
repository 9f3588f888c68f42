#include "tests/support/mpris_panel_call.h"

#include "core/media_controls/mpris_service.h"
#include "tests/support/test_timeouts.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTest>

namespace Tests {

QString MprisPanelCall::Gdbus()
{
    return QStandardPaths::findExecutable(QStringLiteral("gdbus"));
}

QString MprisPanelCall::Call(const QString& method, const QStringList& arguments)
{
    using Core::MediaControls::MprisService;
    const QString gdbus = Gdbus();
    if (gdbus.isEmpty()) {
        return QStringLiteral("gdbus is missing: install 'libglib2.0-bin' (scripts/install-deps)");
    }
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(gdbus, QStringList{"call", "--session", "--dest", MprisService::ServiceName,
                                     "--object-path", MprisService::ObjectPath, "--method", method} +
                             arguments);
    if (!QTest::qWaitFor([&process]() { return process.state() == QProcess::NotRunning; },
                         Timeouts::Process)) {
        process.kill();
        process.waitForFinished();
        return QStringLiteral("gdbus did not answer");
    }
    return QString::fromUtf8(process.readAll()).trimmed();
}

QString MprisPanelCall::Get(const QString& interface, const QString& property)
{
    return Call(QStringLiteral("org.freedesktop.DBus.Properties.Get"), {interface, property});
}

} // namespace Tests
