#include "core/utilities/clock.h"
#include "core/utilities/data_directory.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

using Core::Utilities::Clock;
using Core::Utilities::DataDirectory;

class ClockAndDataDirectoryTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        Clock::ResetForTesting();
    }

    void aShiftedClockReadsTheGivenTimeAndRunsOn()
    {
        const QDateTime target(QDate(2026, 11, 21), QTime(11, 59, 55));
        Clock::SetCurrentDateTimeForTesting(target);
        const qint64 readBack = Clock::CurrentLocalDateTime().msecsTo(target);
        QVERIFY2(qAbs(readBack) < 1000, qPrintable(QString::number(readBack)));
        QCOMPARE(Clock::CurrentSecsSinceEpoch() / 60, target.toSecsSinceEpoch() / 60);
        QTRY_VERIFY_WITH_TIMEOUT(Clock::CurrentMSecsSinceEpoch() > target.toMSecsSinceEpoch() + 100,
                                 Tests::Timeouts::Quick);
    }

    void resetReturnsToTheSystemClock()
    {
        Clock::SetCurrentDateTimeForTesting(QDateTime(QDate(2001, 1, 1), QTime(0, 0)));
        Clock::ResetForTesting();
        QVERIFY(qAbs(Clock::CurrentMSecsSinceEpoch() - QDateTime::currentMSecsSinceEpoch()) < 1000);
    }

    void theEnvironmentOverrideWinsAndIsCreated()
    {
        QTemporaryDir parent;
        const QString wanted = parent.filePath(QStringLiteral("nested/data"));
        qputenv(DataDirectory::EnvironmentVariable, wanted.toLocal8Bit());
        QCOMPARE(DataDirectory::Path(), wanted);
        QVERIFY(QFileInfo(wanted).isDir());
        QCOMPARE(DataDirectory::FilePath(QStringLiteral("db.sqlite")), wanted + QStringLiteral("/db.sqlite"));
        qunsetenv(DataDirectory::EnvironmentVariable);
    }

    void aRelativeOverrideBecomesAbsolute()
    {
        QTemporaryDir parent;
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(parent.path()));
        qputenv(DataDirectory::EnvironmentVariable, "relative");
        const QString path = DataDirectory::Path();
        QDir::setCurrent(previous);
        qunsetenv(DataDirectory::EnvironmentVariable);
        QCOMPARE(path, QDir(parent.path()).absoluteFilePath(QStringLiteral("relative")));
    }

    void withoutOverrideAWritableExecutableFolderIsUsed()
    {
        const QByteArray saved = qgetenv(DataDirectory::EnvironmentVariable);
        qunsetenv(DataDirectory::EnvironmentVariable);
        const QString path = DataDirectory::Path();
        qputenv(DataDirectory::EnvironmentVariable, saved);
        QCOMPARE(path, QCoreApplication::applicationDirPath());
    }

    void testDataDirectoriesAreFreshAndRestoreTheOverride()
    {
        qputenv(DataDirectory::EnvironmentVariable, "/somewhere/else");
        QString first;
        {
            Tests::TestDataDirectory directory;
            first = DataDirectory::Path();
            QCOMPARE(first, directory.Path());
            QVERIFY(QDir(first).isEmpty());
            Tests::TestDataDirectory another;
            QVERIFY(DataDirectory::Path() != first);
        }
        QCOMPARE(qgetenv(DataDirectory::EnvironmentVariable), QByteArray("/somewhere/else"));
        QVERIFY(!QFileInfo::exists(first));
        qunsetenv(DataDirectory::EnvironmentVariable);
    }
};

QTEST_GUILESS_MAIN(ClockAndDataDirectoryTest)
#include "tst_clock_and_data_directory.moc"
