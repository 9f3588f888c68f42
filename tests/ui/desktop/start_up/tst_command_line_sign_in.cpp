// The command line of the real program, run as a child process: --help and --version
// without a display, and --sign-in against the reference service, from the stored
// sign-in it leaves to the player it starts.

#include "core/database/db_manager.h"
#include "tests/support/event_log.h"
#include "tests/support/reference_service.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/command_line.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QTcpServer>
#include <QtTest>

#include <memory>

namespace {

const QString Login = QStringLiteral("owner");
const QString Password = QStringLiteral("secret");

// The player has started on the schedule: the period playing now was found.
bool PlayerStarted()
{
    const QStringList entries = Tests::EventLog::Entries();
    for (const QString& entry : entries) {
        if (entry.startsWith(QStringLiteral("Период ")) &&
            entry.contains(QStringLiteral(" закончится через "))) {
            return true;
        }
    }
    return false;
}

} // namespace

class TestCommandLineSignIn : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void commandLineIsRead_data();
    void commandLineIsRead();
    void answersWithoutDisplay_data();
    void answersWithoutDisplay();
    void signsInAndPlays_data();
    void signsInAndPlays();
    void failedSignInEndsWithoutWindow_data();
    void failedSignInEndsWithoutWindow();

private:
    void Start(QProcess& player, const QStringList& arguments,
               const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());
    static void Stop(QProcess& player);

    std::unique_ptr<Tests::ReferenceService> mService;
    std::unique_ptr<Tests::TestDataDirectory> mData;
};

void TestCommandLineSignIn::initTestCase()
{
    QString error;
    mService = Tests::ReferenceService::Started(QStringLiteral("basic"), &error);
    QVERIFY2(mService, qPrintable(error));
}

void TestCommandLineSignIn::init()
{
    QVERIFY2(mService->Reset(), qPrintable(mService->ErrorString()));
    mData = std::make_unique<Tests::TestDataDirectory>();
    QVERIFY(mData->IsValid());
}

void TestCommandLineSignIn::cleanup()
{
    mData.reset();
}

void TestCommandLineSignIn::Start(QProcess& player, const QStringList& arguments,
                                  const QProcessEnvironment& environment)
{
    player.setProcessEnvironment(environment);
    player.start(QStringLiteral(ZELMAR_PLAYER_EXECUTABLE), arguments);
    QVERIFY2(player.waitForStarted(Tests::Timeouts::Process), qPrintable(player.errorString()));
}

void TestCommandLineSignIn::Stop(QProcess& player)
{
    if (player.state() != QProcess::NotRunning) {
        player.terminate();
        if (!player.waitForFinished(Tests::Timeouts::Process)) {
            player.kill();
            player.waitForFinished(Tests::Timeouts::Process);
        }
    }
}

void TestCommandLineSignIn::commandLineIsRead_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<bool>("signIn");
    QTest::addColumn<QString>("objectCode");

    // "-autorun" is what the autostart entry has always written: one word, one dash.
    QTest::newRow("autorun") << QStringList{QStringLiteral("-autorun")} << true << false << QString();
    QTest::newRow("sign-in, first point of sale")
        << QStringList{QStringLiteral("--sign-in"), QStringLiteral("http://h/"), Login, Password} << true
        << true << QString();
    QTest::newRow("sign-in with a code, at login")
        << QStringList{QStringLiteral("--sign-in"), QStringLiteral("http://h/"), Login, Password,
                       QStringLiteral("shop2"),     QStringLiteral("-autorun")}
        << true << true << QStringLiteral("shop2");
    QTest::newRow("a password that looks like an option")
        << QStringList{QStringLiteral("--sign-in"), QStringLiteral("http://h/"), Login, QStringLiteral("--"),
                       QStringLiteral("-v")}
        << true << true << QString();
    QTest::newRow("sign-in without a password")
        << QStringList{QStringLiteral("--sign-in"), QStringLiteral("http://h/"), Login} << false << false
        << QString();
    QTest::newRow("a word too many")
        << QStringList{QStringLiteral("--sign-in"), QStringLiteral("http://h/"), Login, Password,
                       QStringLiteral("shop2"),     QStringLiteral("more")}
        << false << false << QString();
    QTest::newRow("a stray word") << QStringList{QStringLiteral("shop2")} << false << false << QString();
    QTest::newRow("an unknown option")
        << QStringList{QStringLiteral("--signin")} << false << false << QString();
}

void TestCommandLineSignIn::commandLineIsRead()
{
    QFETCH(QStringList, arguments);
    QFETCH(bool, valid);
    QFETCH(bool, signIn);
    QFETCH(QString, objectCode);

    const UI::Desktop::CommandLine line(QStringList{QStringLiteral("zelmar-player")} + arguments);
    QCOMPARE(line.ParseError().isEmpty(), valid);
    QCOMPARE(line.AsksToSignIn(), signIn);
    if (signIn) {
        QCOMPARE(line.ObjectCode(), objectCode);
    }
    QVERIFY(!line.AsksForHelp() && !line.AsksForVersion());
}

void TestCommandLineSignIn::answersWithoutDisplay_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("help") << QStringLiteral("--help")
                          << QStringList{QStringLiteral("--sign-in"), QStringLiteral("  -autorun "),
                                         QStringLiteral("SERVER_URL LOGIN PASSWORD [OBJECT_CODE]")};
    QTest::newRow("version") << QStringLiteral("--version")
                             << QStringList{QString::fromLatin1(UI::Desktop::ApplicationStartUp::Version)};
}

void TestCommandLineSignIn::answersWithoutDisplay()
{
    QFETCH(QString, option);
    QFETCH(QStringList, expected);

    // An X platform with no display: a QApplication would abort here.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    QProcess player;
    Start(player, {option}, environment);
    QVERIFY(player.waitForFinished(Tests::Timeouts::Process));
    const QString output = QString::fromLocal8Bit(player.readAllStandardOutput());
    QCOMPARE(player.exitStatus(), QProcess::NormalExit);
    QVERIFY2(player.exitCode() == 0, qPrintable(QString::fromLocal8Bit(player.readAllStandardError())));
    for (const QString& text : expected) {
        QVERIFY2(output.contains(text), qPrintable(output));
    }
    QVERIFY(!QFile::exists(mData->FilePath(QStringLiteral("db.sqlite"))));
}

void TestCommandLineSignIn::signsInAndPlays_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("expected");

    QTest::newRow("the point of sale named") << QStringLiteral("shop2") << QStringLiteral("shop2");
    QTest::newRow("the first when none is named") << QString() << QStringLiteral("shop1");
}

void TestCommandLineSignIn::signsInAndPlays()
{
    QFETCH(QString, code);
    QFETCH(QString, expected);

    // Both points of sale get shop1's day, so that the player has a period to start.
    QFile schedule(Tests::ReferenceService::SourceDirectory() +
                   QStringLiteral("/tests/tools/scenarios/basic/configurations/shop1.json"));
    QVERIFY(schedule.open(QIODevice::ReadOnly));
    QVERIFY(mService->ReplaceConfiguration(expected, QJsonDocument::fromJson(schedule.readAll()).object()) >
            0);

    QStringList arguments{QStringLiteral("--sign-in"), mService->BaseUrl(), Login, Password};
    if (!code.isEmpty()) {
        arguments.append(code);
    }
    QProcess player;
    Start(player, arguments);
    QTRY_VERIFY_WITH_TIMEOUT(PlayerStarted() || player.state() == QProcess::NotRunning,
                             Tests::Timeouts::Process);
    QVERIFY2(player.state() == QProcess::Running,
             qPrintable(QString::fromLocal8Bit(player.readAllStandardError())));
    Stop(player);
    QVERIFY(QString::fromLocal8Bit(player.readAllStandardOutput()).contains(expected));

    // The sign-in as the program stores it.
    Core::DataTypes::Auth::PlaybackObject object;
    Core::DataTypes::Auth::Server server;
    std::string login;
    std::string password;
    std::string token;
    QVERIFY(Core::DataBase::DbManager::GetInstance().SavedAuthData(object, server, login, password, token));
    QCOMPARE(QString::fromStdString(object.code), expected);
    QCOMPARE(QString::fromStdString(server.url), mService->BaseUrl());
    QCOMPARE(QString::fromStdString(login), Login);
    QVERIFY(!token.empty());
    QCOMPARE(mService->Received(QStringLiteral("sign_ins")).size(), 1);

    // A start without options resumes it: playing again, with no second sign-in.
    QVERIFY(QFile::remove(mData->FilePath(QStringLiteral("log.txt"))));
    QProcess restarted;
    Start(restarted, {});
    QTRY_VERIFY_WITH_TIMEOUT(PlayerStarted() || restarted.state() == QProcess::NotRunning,
                             Tests::Timeouts::Process);
    QCOMPARE(restarted.state(), QProcess::Running);
    Stop(restarted);
    QCOMPARE(mService->Received(QStringLiteral("sign_ins")).size(), 1);
}

void TestCommandLineSignIn::failedSignInEndsWithoutWindow_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QStringList>("expected");

    // A port nobody listens on: taken from the system, then given back.
    QTcpServer closed;
    QVERIFY(closed.listen(QHostAddress::LocalHost));
    const QString closedUrl = QStringLiteral("http://127.0.0.1:%1/api/v1/").arg(closed.serverPort());
    closed.close();
    const QString url = mService->BaseUrl();
    const QString signIn = QStringLiteral("--sign-in");

    QTest::newRow("wrong password") << QStringList{signIn, url, Login, QStringLiteral("wrong")} << 1
                                    << QStringList{QStringLiteral("Неправильный логин или пароль")};
    QTest::newRow("server not listening") << QStringList{signIn, closedUrl, Login, Password} << 1
                                          << QStringList{QStringLiteral("Нет связи с сервером")};
    QTest::newRow("not a server address")
        << QStringList{signIn, QStringLiteral("ftp://127.0.0.1/"), Login, Password} << 1
        << QStringList{QStringLiteral("Это не адрес сервера")};
    QTest::newRow("unknown point of sale")
        << QStringList{signIn, url, Login, Password, QStringLiteral("shop9")} << 1
        << QStringList{QStringLiteral("shop9"), QStringLiteral("shop1, shop2")};
    QTest::newRow("unreadable command line")
        << QStringList{signIn, url, Login} << 2 << QStringList{QStringLiteral("--help")};
}

void TestCommandLineSignIn::failedSignInEndsWithoutWindow()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QStringList, expected);

    QProcess player;
    Start(player, arguments);
    // A window would keep the program running.
    QVERIFY(player.waitForFinished(Tests::Timeouts::Process));
    const QString errors = QString::fromLocal8Bit(player.readAllStandardError());
    QCOMPARE(player.exitStatus(), QProcess::NormalExit);
    QVERIFY2(player.exitCode() == exitCode, qPrintable(errors));
    for (const QString& text : expected) {
        QVERIFY2(errors.contains(text), qPrintable(errors));
    }
    Core::DataTypes::Auth::PlaybackObject object;
    Core::DataTypes::Auth::Server server;
    std::string login;
    std::string password;
    std::string token;
    QVERIFY(!Core::DataBase::DbManager::GetInstance().SavedAuthData(object, server, login, password, token));
    QVERIFY(mService->Received(QStringLiteral("sign_ins")).isEmpty());
}

QTEST_GUILESS_MAIN(TestCommandLineSignIn)

#include "tst_command_line_sign_in.moc"
