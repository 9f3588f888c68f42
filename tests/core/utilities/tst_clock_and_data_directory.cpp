#include "core/utilities/clock.h"
#include "core/utilities/data_directory.h"
#include "tests/support/test_timeouts.h"

#include <QtTest>

#include <cstdio>
#include <unistd.h>

using Core::Utilities::Clock;
using Core::Utilities::DataDirectory;

namespace {

// Set in the copy of this test that is started from a folder it may not write to.
constexpr const char* installedChild = "ZELMAR_TEST_INSTALLED_COPY";

} // namespace

class ClockAndDataDirectoryTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        Clock::ResetForTesting();
    }

    void aShiftedClockReadsTheGivenTimeAndRunsOnUntilReset()
    {
        const QDateTime target(QDate(2026, 11, 21), QTime(11, 59, 55));
        Clock::SetCurrentDateTimeForTesting(target);
        QCOMPARE(Clock::CurrentSecsSinceEpoch() / 60, target.toSecsSinceEpoch() / 60);
        QTRY_VERIFY_WITH_TIMEOUT(Clock::CurrentMSecsSinceEpoch() > target.toMSecsSinceEpoch() + 100,
                                 Tests::Timeouts::Quick);
        Clock::ResetForTesting();
        QVERIFY(qAbs(Clock::CurrentMSecsSinceEpoch() - QDateTime::currentMSecsSinceEpoch()) < 1000);
    }

    // The override wins, is created, and a changed value is followed, even back to an
    // earlier one; a relative one follows the working folder; one that cannot be made
    // yet (a missing mount) is not remembered as good.
    void theEnvironmentOverrideWinsAndIsCreated()
    {
        QTemporaryDir parent;
        const QString first = parent.filePath(QStringLiteral("nested/first"));
        const QString second = parent.filePath(QStringLiteral("second"));
        QStringList seen;
        for (const QString& wanted : {first, second, first}) {
            qputenv(DataDirectory::EnvironmentVariable, wanted.toLocal8Bit());
            seen << DataDirectory::FilePath(QStringLiteral("db.sqlite"));
        }
        const QString previous = QDir::currentPath();
        qputenv(DataDirectory::EnvironmentVariable, "relative");
        QVERIFY(QDir::setCurrent(first));
        seen << DataDirectory::Path();
        QVERIFY(QDir::setCurrent(second));
        seen << DataDirectory::Path();
        QDir::setCurrent(previous);
        QFile blocker(parent.filePath(QStringLiteral("blocker")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        const QString blocked = blocker.fileName() + QStringLiteral("/data");
        qputenv(DataDirectory::EnvironmentVariable, blocked.toLocal8Bit());
        seen << DataDirectory::Path();
        const bool madeWhileBlocked = QFileInfo(blocked).isDir();
        QVERIFY(blocker.remove());
        seen << DataDirectory::Path();
        // Without one, a portable copy keeps its data beside itself.
        qunsetenv(DataDirectory::EnvironmentVariable);
        seen << DataDirectory::Path();
        QCOMPARE(seen, QStringList({first + "/db.sqlite", second + "/db.sqlite", first + "/db.sqlite",
                                    first + "/relative", second + "/relative", blocked, blocked,
                                    QCoreApplication::applicationDirPath()}));
        QVERIFY(!madeWhileBlocked && QFileInfo(blocked).isDir() && QFileInfo(second + "/relative").isDir());
    }

    // A portable copy keeps its data beside itself; an installed program never
    // does, not even run by root, who may write in /usr/bin as anywhere else.
    void onlyAPortableCopyKeepsItsDataBesideItself_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<bool>("portable");
        QTest::newRow("a writable folder of its own") << QString() << true;
        QTest::newRow("the system's programs") << "/usr/bin" << false;
        QTest::newRow("the administrator's programs") << "/usr/local/bin" << false;
        QTest::newRow("/bin, a link into /usr") << "/bin" << false;
        QTest::newRow("a path that climbs into /usr") << "/tmp/../usr/bin" << false;
        QTest::newRow("a folder that is not there") << "/nonexistent-zelmar-folder" << false;
    }

    void onlyAPortableCopyKeepsItsDataBesideItself()
    {
        QFETCH(QString, folder);
        QFETCH(bool, portable);
        QTemporaryDir own;
        QCOMPARE(DataDirectory::IsPortableFolder(folder.isEmpty() ? own.path() : folder), portable);
    }

    // An installed player may not write beside itself: its data go to the XDG data
    // folder. A copy of this test, in a read-only folder and run by an unprivileged
    // user (for root every folder is writable), reports where its data went.
    void anUnwritableExecutableFolderFallsBackToXdgData()
    {
        if (qEnvironmentVariableIsSet(installedChild)) {
            std::printf("data directory: %s\n", qPrintable(DataDirectory::Path()));
            return;
        }
        QTemporaryDir root;
        const QString bin = root.filePath(QStringLiteral("bin"));
        const QString xdg = root.filePath(QStringLiteral("xdg"));
        const QString copy = bin + QStringLiteral("/tst_clock_and_data_directory");
        QVERIFY(QDir().mkpath(bin) && QDir().mkpath(xdg));
        QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), copy));
        QVERIFY(QFile::setPermissions(root.path(),
                                      QFile::permissions(root.path()) | QFile::ReadOther | QFile::ExeOther));
        QVERIFY(QFile::setPermissions(bin, QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther |
                                               QFile::ExeOther));
        QVERIFY(QFile::setPermissions(xdg, QFile::permissions(xdg) | QFile::WriteOther | QFile::ExeOther));

        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QString::fromLatin1(DataDirectory::EnvironmentVariable));
        environment.insert(QStringLiteral("XDG_DATA_HOME"), xdg);
        environment.insert(QString::fromLatin1(installedChild), QStringLiteral("1"));
        QProcess child;
        child.setProcessEnvironment(environment);
        const QStringList arguments{copy, QStringLiteral("anUnwritableExecutableFolderFallsBackToXdgData")};
        if (geteuid() == 0) {
            child.start(QStringLiteral("setpriv"),
                        QStringList{"--reuid=65534", "--regid=65534", "--clear-groups"} + arguments);
        } else {
            child.start(arguments.first(), arguments.mid(1));
        }
        QVERIFY2(child.waitForStarted(Tests::Timeouts::Process),
                 "setpriv could not be started: install util-linux (scripts/install-deps)");
        QVERIFY(child.waitForFinished(Tests::Timeouts::Process));
        const QString output = QString::fromLocal8Bit(child.readAllStandardOutput());
        QVERIFY2(child.exitCode() == 0, qPrintable(output + child.readAllStandardError()));
        QVERIFY2(
            output.contains(QStringLiteral("data directory: ") + xdg + QStringLiteral("/zelmar-player\n")),
            qPrintable(output));
        QVERIFY(QFileInfo(xdg + QStringLiteral("/zelmar-player")).isDir());
    }
};

QTEST_GUILESS_MAIN(ClockAndDataDirectoryTest)
#include "tst_clock_and_data_directory.moc"
