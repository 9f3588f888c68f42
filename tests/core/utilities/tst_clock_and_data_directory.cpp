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

    void aRelativeOverrideFollowsTheWorkingFolder()
    {
        QTemporaryDir first;
        QTemporaryDir second;
        const QString previous = QDir::currentPath();
        qputenv(DataDirectory::EnvironmentVariable, "relative");
        QVERIFY(QDir::setCurrent(first.path()));
        const QString underFirst = DataDirectory::Path();
        QVERIFY(QDir::setCurrent(second.path()));
        const QString underSecond = DataDirectory::Path();
        QDir::setCurrent(previous);
        qunsetenv(DataDirectory::EnvironmentVariable);
        QCOMPARE(underFirst, QDir(first.path()).absoluteFilePath(QStringLiteral("relative")));
        QCOMPARE(underSecond, QDir(second.path()).absoluteFilePath(QStringLiteral("relative")));
        QVERIFY(QFileInfo(underSecond).isDir());
    }

    void aChangedOverrideIsFollowedEvenBackToAnEarlierValue()
    {
        QTemporaryDir parent;
        const QString first = parent.filePath(QStringLiteral("first"));
        const QString second = parent.filePath(QStringLiteral("second"));
        QStringList seen;
        for (const QString& wanted : {first, second, first}) {
            qputenv(DataDirectory::EnvironmentVariable, wanted.toLocal8Bit());
            seen << DataDirectory::Path();
        }
        qunsetenv(DataDirectory::EnvironmentVariable);
        QCOMPARE(seen, QStringList({first, second, first}));
        QVERIFY(QFileInfo(second).isDir());
    }

    void aFolderThatCannotBeMadeYetIsTriedAgain()
    {
        QTemporaryDir parent;
        QFile blocker(parent.filePath(QStringLiteral("blocker")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        const QString wanted = blocker.fileName() + QStringLiteral("/data");
        qputenv(DataDirectory::EnvironmentVariable, wanted.toLocal8Bit());
        const QString whileBlocked = DataDirectory::Path();
        const bool madeWhileBlocked = QFileInfo(wanted).isDir();
        QVERIFY(blocker.remove());
        const QString afterwards = DataDirectory::Path();
        qunsetenv(DataDirectory::EnvironmentVariable);
        QCOMPARE(whileBlocked, wanted);
        QVERIFY(!madeWhileBlocked);
        QCOMPARE(afterwards, wanted);
        QVERIFY(QFileInfo(wanted).isDir());
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
