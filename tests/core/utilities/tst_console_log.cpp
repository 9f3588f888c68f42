#include "core/utilities/clock.h"
#include "core/utilities/custom_message_handler.h"

#include <QtTest>

#include <cstdio>
#include <unistd.h>

using Core::Utilities::Clock;

namespace {

// Runs `print` with standard output sent to a file, and returns what was printed.
template <typename Emit>
QString CaptureStandardOutput(Emit print)
{
    QTemporaryFile capture;
    if (!capture.open()) {
        return QStringLiteral("<no capture file>");
    }
    std::fflush(stdout);
    const int saved = dup(STDOUT_FILENO);
    dup2(capture.handle(), STDOUT_FILENO);
    print();
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    capture.seek(0);
    return QString::fromLocal8Bit(capture.readAll());
}

} // namespace

class ConsoleLogTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qInstallMessageHandler(Core::Utilities::CustomMessageHandler);
    }

    void cleanupTestCase()
    {
        qInstallMessageHandler(nullptr);
        Clock::ResetForTesting();
    }

    // Every kind of message gets the same stamped line, whatever it is (the kind is
    // not looked at); percent sequences reach the console unchanged.
    void everyKindOfMessageGetsTheSameStampedLine()
    {
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2026, 11, 21), QTime(11, 59, 55)));
        const QString printed = CaptureStandardOutput([] {
            qDebug("отладка");
            qCritical().noquote() << "скидка %1 и %2, 100%";
        });
        const QString stamp = QStringLiteral("\\[2026-11-21 11:59:5\\d\\.\\d{3}\\] ZELMAR_LOG: ");
        const QRegularExpression format(QStringLiteral("^") + stamp + QStringLiteral("отладка\n") + stamp +
                                        QStringLiteral("скидка %1 и %2, 100%\n$"));
        QVERIFY2(format.match(printed).hasMatch(), qPrintable(printed));
    }

    void aClosedStandardOutputLosesTheLineOnly()
    {
        std::fflush(stdout);
        const int saved = dup(STDOUT_FILENO);
        close(STDOUT_FILENO);
        qWarning("никто не услышит");
        dup2(saved, STDOUT_FILENO);
        close(saved);
        std::clearerr(stdout);
        const QString printed = CaptureStandardOutput([] { qDebug("снова слышно"); });
        QVERIFY2(printed.endsWith(QStringLiteral("ZELMAR_LOG: снова слышно\n")), qPrintable(printed));
    }
};

QTEST_GUILESS_MAIN(ConsoleLogTest)
#include "tst_console_log.moc"
