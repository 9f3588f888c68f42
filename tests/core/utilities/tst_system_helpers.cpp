#include "core/utilities/autorun_helper.h"
#include "core/utilities/cities_helper.h"
#include "core/utilities/device_info_helper.h"

#include <QtTest>

#include <string>
#include <vector>

using Core::Utilities::AutorunHelper;
using Core::Utilities::CitiesHelper;
using Core::Utilities::DeviceInfoHelper;

namespace {

QStringList ReadLines(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return {};
    }
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace

class SystemHelpersTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_home;

    QString ConfigHome() const
    {
        return m_home.filePath(QStringLiteral("config"));
    }

    QString EntryPath() const
    {
        return ConfigHome() + QStringLiteral("/autostart/zelmar-player.desktop");
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(m_home.isValid(), qPrintable(m_home.errorString()));
    }

    // Every autorun case works in a home of its own, never the developer's.
    void init()
    {
        qputenv("HOME", QFile::encodeName(m_home.path()));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(ConfigHome()));
        qunsetenv("APPIMAGE");
        QDir(m_home.path()).removeRecursively();
        QDir().mkpath(m_home.path());
    }

    void autorunEntryIsWrittenOnceAndRemoved()
    {
        QCOMPARE(AutorunHelper::LinuxAutostartEntryPath(), EntryPath());

        QVERIFY(AutorunHelper::SetAutorunEnabled(true, "-autorun"));
        const QStringList expected{
            QStringLiteral("[Desktop Entry]"),
            QStringLiteral("Type=Application"),
            QStringLiteral("Name=Zelmar Player"),
            QStringLiteral("Exec=") + QCoreApplication::applicationFilePath() + QStringLiteral(" -autorun"),
            QStringLiteral("X-GNOME-Autostart-enabled=true"),
        };
        QCOMPARE(ReadLines(EntryPath()), expected);

        // Enabling again leaves one entry, the same, and no temporary file beside it.
        QVERIFY(AutorunHelper::SetAutorunEnabled(true, "-autorun"));
        QCOMPARE(ReadLines(EntryPath()), expected);
        QCOMPARE(QDir(ConfigHome() + QStringLiteral("/autostart")).entryList(QDir::Files | QDir::Hidden),
                 QStringList{QStringLiteral("zelmar-player.desktop")});

        QVERIFY(AutorunHelper::SetAutorunEnabled(false, "-autorun"));
        QVERIFY(!QFileInfo::exists(EntryPath()));
        // Nothing to remove is not a failure.
        QVERIFY(AutorunHelper::SetAutorunEnabled(false, "-autorun"));

        // A packaged player starts its AppImage, quoted.
        qputenv("APPIMAGE", "/opt/Zelmar Player/Zelmar$1.AppImage");
        QVERIFY(AutorunHelper::SetAutorunEnabled(true, "-autorun"));
        QVERIFY(ReadLines(EntryPath())
                    .contains(QStringLiteral("Exec=\"/opt/Zelmar Player/Zelmar\\\\$1.AppImage\" -autorun")));
    }

    // A start with autorun on makes the entry start this program; an entry that
    // already does keeps the session settings' changes to it.
    void autorunRefreshFollowsTheProgram_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<bool>("rewritten");
        const QByteArray thisProgram =
            "Exec=" + QFile::encodeName(QCoreApplication::applicationFilePath()) + " -autorun\n";
        QTest::newRow("no entry") << QByteArray() << true;
        QTest::newRow("moved program") << QByteArray("[Desktop Entry]\nType=Application\nName=Zelmar Player\n"
                                                     "Exec=/home/shop/old/zelmar-player -autorun\n")
                                       << true;
        QTest::newRow("same program without the flag")
            << QByteArray("[Desktop Entry]\nType=Application\nExec=" +
                          QFile::encodeName(QCoreApplication::applicationFilePath()) + "\n")
            << true;
        QTest::newRow("this program, switched off by the session")
            << QByteArray("[Desktop Entry]\nType=Application\nName=Zelmar Player\n" + thisProgram +
                          "X-GNOME-Autostart-enabled=false\n")
            << false;
    }

    void autorunRefreshFollowsTheProgram()
    {
        QFETCH(QByteArray, before);
        QFETCH(bool, rewritten);
        if (!before.isEmpty()) {
            QVERIFY(QDir().mkpath(ConfigHome() + QStringLiteral("/autostart")));
            QFile entry(EntryPath());
            QVERIFY(entry.open(QIODevice::WriteOnly));
            entry.write(before);
            entry.close();
        }

        QVERIFY(AutorunHelper::RefreshAutorun("-autorun"));

        QFile entry(EntryPath());
        QVERIFY(entry.open(QIODevice::ReadOnly));
        const QByteArray after = entry.readAll();
        if (rewritten) {
            QCOMPARE(ReadLines(EntryPath()).filter(QRegularExpression(QStringLiteral("^Exec="))),
                     QStringList{QStringLiteral("Exec=") + QCoreApplication::applicationFilePath() +
                                 QStringLiteral(" -autorun")});
            QVERIFY(after.contains("X-GNOME-Autostart-enabled=true\n"));
        } else {
            QCOMPARE(after, before);
        }
    }

    void autorunFailureIsReportedNotThrown()
    {
        // A regular file where the configuration folder should be.
        const QString blocker = m_home.filePath(QStringLiteral("blocker"));
        QFile file(blocker);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(blocker));

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Autorun: cannot create")));
        QVERIFY(!AutorunHelper::SetAutorunEnabled(true, "-autorun"));
        // Removing from a folder that cannot exist has nothing to do.
        QVERIFY(AutorunHelper::SetAutorunEnabled(false, "-autorun"));
    }

    // The expected texts are the bytes of the entry file; every backslash in them
    // is doubled once more here by C++.
    void execValueQuoting_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("expected");
        QTest::newRow("space") << QStringList({"/opt/Zelmar Player/zelmar", "-autorun"})
                               << "\"/opt/Zelmar Player/zelmar\" -autorun";
        QTest::newRow("double quote and backtick") << QStringList{"/opt/a\"b`c"} << "\"/opt/a\\\\\"b\\\\`c\"";
        QTest::newRow("backslash takes four") << QStringList{"/opt/a\\b"} << "\"/opt/a\\\\\\\\b\"";
        QTest::newRow("percent doubled quoted") << QStringList{"/opt/100% sure"} << "\"/opt/100%% sure\"";
        QTest::newRow("line break escaped") << QStringList{"/opt/a\nb"} << "\"/opt/a\\nb\"";
        QTest::newRow("empty argument kept") << QStringList({"/opt/zelmar", ""}) << "/opt/zelmar \"\"";
    }

    void execValueQuoting()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, expected);
        QCOMPARE(AutorunHelper::DesktopEntryExecValue(arguments), expected);
    }

    // The labels, their order and the final line break are what support reads.
    void platformInfoHasSevenLabelledLines()
    {
        const QStringList expected{
            QStringLiteral("buildAbi: ") + QSysInfo::buildAbi(),
            QStringLiteral("currentCpuArch: ") + QSysInfo::currentCpuArchitecture(),
            QStringLiteral("kernelType: ") + QSysInfo::kernelType(),
            QStringLiteral("kernalVersion: ") + QSysInfo::kernelVersion(),
            QStringLiteral("prettyProductName: ") + QSysInfo::prettyProductName(),
            QStringLiteral("productType: ") + QSysInfo::productType(),
            QStringLiteral("productVersion: ") + QSysInfo::productVersion(),
            QString(),
        };
        QCOMPARE(QString::fromStdString(DeviceInfoHelper::GetPlatformInfo()).split(QLatin1Char('\n')),
                 expected);
        QCOMPARE(QString::fromStdString(DeviceInfoHelper::GetOsInfo()), QStringLiteral("Linux"));
    }

    // Checked against the source list itself: same cities, same order, for every
    // first letter (so nothing was lost on reading) and mixed case; no text, no
    // cities. The list's size is checked too, or an empty one would pass.
    void suitableCities()
    {
        const QStringList cities = ReadLines(qEnvironmentVariable("ZELMAR_TEST_SOURCE_DIR") +
                                             QStringLiteral("/ui/ui_kit/raw/cities.txt"));
        QVERIFY2(cities.size() >= 300, qPrintable(QStringLiteral("only %1 cities").arg(cities.size())));
        QStringList texts{QStringLiteral("мОс"), QStringLiteral("mos")};
        for (char16_t letter = u'а'; letter <= u'я'; ++letter) {
            texts << QString(QChar{letter});
        }
        for (const QString& text : texts) {
            std::vector<std::string> expected;
            for (const QString& city : cities) {
                if (city.startsWith(text, Qt::CaseInsensitive)) {
                    expected.push_back(city.toStdString());
                }
            }
            QCOMPARE(CitiesHelper::GetInstance().SuitableCities(text.toStdString()), expected);
        }
        QVERIFY(CitiesHelper::GetInstance().SuitableCities("").empty());
    }
};

QTEST_GUILESS_MAIN(SystemHelpersTest)
#include "tst_system_helpers.moc"
