#include "core/utilities/awake_helper.h"
#include "tests/support/test_timeouts.h"

#include <QtTest>

using Core::Utilities::AwakeHelper;

namespace {

QStringList warnings;
QtMessageHandler previousHandler = nullptr;

void RecordWarnings(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (type == QtWarningMsg) {
        warnings << message;
    }
    previousHandler(type, context, message);
}

} // namespace

// A shop computer without a desktop session bus: keeping awake must neither block
// nor crash, whatever the player asks.
class AwakeHelperNoBusTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_runtimeFolder;

private slots:
    void initTestCase()
    {
        QVERIFY2(m_runtimeFolder.isValid(), qPrintable(m_runtimeFolder.errorString()));
        // No address, no per-user bus socket, no X display to start one for.
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        qunsetenv("DISPLAY");
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtimeFolder.path()));
        previousHandler = qInstallMessageHandler(RecordWarnings);
    }

    void cleanupTestCase()
    {
        qInstallMessageHandler(previousHandler);
    }

    void keepAwakeReturnsPromptlyAndSaysSoOnce()
    {
        QElapsedTimer timer;
        timer.start();
        AwakeHelper::KeepAwake(true);
        AwakeHelper::KeepAwake(true);
        AwakeHelper::KeepAwake(false);
        AwakeHelper::KeepAwake(true);
        AwakeHelper::KeepAwake(false);
        QVERIFY2(timer.elapsed() < Tests::Timeouts::Quick, qPrintable(QString::number(timer.elapsed())));
        QVERIFY(!AwakeHelper::IsKeepingAwake());
        QCOMPARE(warnings.filter(QStringLiteral("Keep awake: there is no session bus")).size(), 1);
    }
};

QTEST_GUILESS_MAIN(AwakeHelperNoBusTest)
#include "tst_awake_helper_no_bus.moc"
