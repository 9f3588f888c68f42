#include "core/utilities/awake_helper.h"
#include "tests/support/test_timeouts.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QtTest>

using Core::Utilities::AwakeHelper;

namespace {

QStringList warnings;

void RecordWarnings(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type == QtWarningMsg) {
        warnings << message;
    }
}

// Set in the copy of this test that runs without any session bus.
constexpr const char* noBusChild = "ZELMAR_TEST_NO_SESSION_BUS";

// A bus of our own: no activatable services, nobody else's screen saver.
constexpr const char* busConfiguration =
    "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
    " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
    "<busconfig><type>session</type><auth>EXTERNAL</auth><listen>unix:path=%1</listen>\n"
    "<policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
    "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>\n";

} // namespace

// Stands in for the desktop session's screen saver on the test's private bus.
class FakeScreenSaver : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public:
    QStringList inhibitors;
    QList<uint> issued;
    QList<uint> released;

public slots:
    uint Inhibit(const QString& applicationName, const QString& reason)
    {
        inhibitors << applicationName + QStringLiteral(": ") + reason;
        // Cookies a counter in the helper would not guess.
        issued << 1000u + 7u * static_cast<uint>(issued.size());
        return issued.last();
    }

    void UnInhibit(uint cookie)
    {
        released << cookie;
    }
};

class AwakeHelperTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    QProcess m_busDaemon;
    FakeScreenSaver m_screenSaver;

private slots:
    void initTestCase()
    {
        QVERIFY2(m_folder.isValid(), qPrintable(m_folder.errorString()));
        qInstallMessageHandler(RecordWarnings);
        if (qEnvironmentVariableIsSet(noBusChild)) {
            return;
        }
        const QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
        QVERIFY2(!daemon.isEmpty(),
                 "dbus-daemon is missing: install the 'dbus' package (scripts/install-deps)");
        QFile config(m_folder.filePath(QStringLiteral("bus.conf")));
        QVERIFY(config.open(QIODevice::WriteOnly));
        config.write(
            QString::fromLatin1(busConfiguration).arg(m_folder.filePath(QStringLiteral("bus"))).toUtf8());
        config.close();
        m_busDaemon.start(daemon, {QStringLiteral("--config-file=") + config.fileName(),
                                   QStringLiteral("--nofork"), QStringLiteral("--print-address")});
        QVERIFY2(m_busDaemon.waitForStarted(Tests::Timeouts::Process),
                 "could not start a private dbus-daemon");
        QTRY_VERIFY_WITH_TIMEOUT(m_busDaemon.canReadLine(), Tests::Timeouts::Process);
        const QString address = QString::fromUtf8(m_busDaemon.readLine()).trimmed();
        QVERIFY2(address.startsWith(QLatin1String("unix:")), qPrintable(address));

        // Before anything in the process touches the session bus.
        qputenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8());
        QDBusConnection bus = QDBusConnection::connectToBus(address, QStringLiteral("fake-screen-saver"));
        QVERIFY2(bus.isConnected(), qPrintable(bus.lastError().message()));
    }

    void cleanupTestCase()
    {
        AwakeHelper::KeepAwake(false);
        qInstallMessageHandler(nullptr);
        QDBusConnection::disconnectFromBus(QStringLiteral("fake-screen-saver"));
        m_busDaemon.kill();
        m_busDaemon.waitForFinished(Tests::Timeouts::Process);
    }

    // A shop computer without a session bus (no address, socket or display), tried in a
    // copy of this test: keeping awake neither blocks nor crashes, and says why once.
    void withoutASessionBusOnlyOneWarning()
    {
        if (qEnvironmentVariableIsSet(noBusChild)) {
            QElapsedTimer timer;
            timer.start();
            for (const bool keepAwake : {true, true, false, true, false}) {
                AwakeHelper::KeepAwake(keepAwake);
            }
            QVERIFY2(timer.elapsed() < Tests::Timeouts::Quick, qPrintable(QString::number(timer.elapsed())));
            QVERIFY(!AwakeHelper::IsKeepingAwake());
            QCOMPARE(warnings.filter(QStringLiteral("Keep awake: there is no session bus")).size(), 1);
            return;
        }
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
        environment.remove(QStringLiteral("DISPLAY"));
        // Not the folder of the private bus, whose socket would be found there.
        const QString runtime = m_folder.filePath(QStringLiteral("runtime"));
        QVERIFY(QDir().mkpath(runtime));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
        environment.insert(QString::fromLatin1(noBusChild), QStringLiteral("1"));
        QProcess child;
        child.setProcessEnvironment(environment);
        child.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("withoutASessionBusOnlyOneWarning")});
        QVERIFY(child.waitForFinished(Tests::Timeouts::Process));
        QVERIFY2(child.exitCode() == 0, child.readAllStandardOutput().constData());
    }

    // A session without a screen saver: the request fails on its own time, the
    // caller does not wait for it, and a later request is still made.
    void withoutTheServiceOnlyAWarning()
    {
        QElapsedTimer timer;
        timer.start();
        AwakeHelper::KeepAwake(true);
        QVERIFY(timer.elapsed() < Tests::Timeouts::Quick);
        QTRY_VERIFY_WITH_TIMEOUT(
            warnings.filter(QStringLiteral("Keep awake: the screen saver cannot be held off")).size() == 1,
            Tests::Timeouts::Quick);
        AwakeHelper::KeepAwake(false);
    }

    void inhibitsOnceAndReleasesTheReturnedCookie()
    {
        QDBusConnection bus = QDBusConnection(QStringLiteral("fake-screen-saver"));
        QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/ScreenSaver"), &m_screenSaver,
                                   QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.ScreenSaver")));

        // Already held: asking again changes nothing.
        AwakeHelper::KeepAwake(true);
        AwakeHelper::KeepAwake(true);
        QTRY_VERIFY_WITH_TIMEOUT(AwakeHelper::IsKeepingAwake(), Tests::Timeouts::Quick);
        AwakeHelper::KeepAwake(true);
        QCOMPARE(m_screenSaver.inhibitors.size(), 1);
        QVERIFY2(m_screenSaver.inhibitors.first().startsWith(QStringLiteral("Zelmar Player: ")) &&
                     m_screenSaver.inhibitors.first().size() > 15,
                 "inhibited without the player's name and a reason");

        AwakeHelper::KeepAwake(false);
        QVERIFY(!AwakeHelper::IsKeepingAwake());
        QTRY_COMPARE_WITH_TIMEOUT(m_screenSaver.released, QList<uint>{m_screenSaver.issued.first()},
                                  Tests::Timeouts::Quick);
        // The helper's calls arrive in order, so a second Inhibit would be here by now.
        QCOMPARE(m_screenSaver.issued.size(), 1);

        // Released once only; the next start asks for a new inhibit and releases that.
        AwakeHelper::KeepAwake(false);
        AwakeHelper::KeepAwake(true);
        QTRY_COMPARE_WITH_TIMEOUT(m_screenSaver.issued.size(), 2, Tests::Timeouts::Quick);
        AwakeHelper::KeepAwake(false);
        QTRY_COMPARE_WITH_TIMEOUT(m_screenSaver.released, m_screenSaver.issued, Tests::Timeouts::Quick);
    }

    // Calls faster than the session answers ('+' start, '-' stop): one inhibit is
    // made, kept if the last call was a start, and released once the player stops.
    void changesOfMindBeforeTheAnswer()
    {
        for (const QByteArray& calls : {QByteArray("+-+-"), QByteArray("+-+")}) {
            const int issuedBefore = m_screenSaver.issued.size();
            const int releasedBefore = m_screenSaver.released.size();
            for (const char call : calls) {
                AwakeHelper::KeepAwake(call == '+');
            }
            if (calls.endsWith('+')) {
                QTRY_VERIFY_WITH_TIMEOUT(AwakeHelper::IsKeepingAwake(), Tests::Timeouts::Quick);
                QCOMPARE(m_screenSaver.released.size(), releasedBefore);
                AwakeHelper::KeepAwake(false);
            }
            QTRY_COMPARE_WITH_TIMEOUT(m_screenSaver.released.size(), releasedBefore + 1,
                                      Tests::Timeouts::Quick);
            QCOMPARE(m_screenSaver.issued.size(), issuedBefore + 1);
            QCOMPARE(m_screenSaver.released.last(), m_screenSaver.issued.last());
            QVERIFY(!AwakeHelper::IsKeepingAwake());
        }
    }
};

QTEST_GUILESS_MAIN(AwakeHelperTest)
#include "tst_awake_helper.moc"
