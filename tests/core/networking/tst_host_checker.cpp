#include "core/networking/host_checker.h"
#include "core/networking/test_connect_helper.h"
#include "core/utilities/logger.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"

#include <QFile>
#include <QtTest>

#include <memory>

using Core::Networking::HostChecker;

namespace {

// Resolves nowhere: ".invalid" is reserved for exactly that.
const std::string Unresolvable = "http://zelmar-no-such-host.invalid/media/";

struct Answers
{
    int successes = 0;
    int failures = 0;
    std::vector<std::string> found;

    std::function<void()> Success()
    {
        return [this] {
            ++successes;
        };
    }
    std::function<void()> Failure()
    {
        return [this] {
            ++failures;
        };
    }
    std::function<void(std::string)> Found()
    {
        return [this](std::string host) {
            ++successes;
            found.push_back(std::move(host));
        };
    }
    int Calls() const
    {
        return successes + failures;
    }
};

QString EventLog()
{
    QFile file(QString::fromStdString(Core::Utilities::Logger::GetLogFileName()));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

#define WAIT_FOR(answers) QTRY_COMPARE_WITH_TIMEOUT((answers).Calls(), 1, Tests::Timeouts::Process)

// "Available" is a host name that resolves: loopback names do, ".invalid" ones
// never do, so these tests need no network.
class HostCheckerTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;

private slots:
    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
    }

    void cleanup()
    {
        dataDirectory.reset();
    }

    void singleHostAnswersOnce_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("available");
        QTest::newRow("loopback address") << "http://127.0.0.1:8091/api/v1/" << true;
        QTest::newRow("loopback name") << "https://localhost/api/v1/" << true;
        QTest::newRow("unknown name") << QString::fromStdString(Unresolvable) << false;
        QTest::newRow("without scheme") << "127.0.0.1/api/v1/" << false;
        QTest::newRow("empty") << "" << false;
    }

    void singleHostAnswersOnce()
    {
        QFETCH(QString, url);
        QFETCH(bool, available);
        HostChecker checker;
        Answers answers;
        checker.CheckHostAvailability(url.toStdString(), answers.Success(), answers.Failure());
        QCOMPARE(answers.Calls(), 0);
        WAIT_FOR(answers);
        QCOMPARE(answers.successes, available ? 1 : 0);
        QCOMPARE(answers.failures, available ? 0 : 1);
    }

    // Statistics and the configuration loader may ask at the same moment: each
    // caller gets its own answer.
    void overlappingLookupsAnswerTheirOwnCallers()
    {
        HostChecker checker;
        Answers first;
        Answers second;
        Answers third;
        checker.CheckHostAvailability("http://127.0.0.1/", first.Success(), first.Failure());
        checker.CheckHostAvailability(Unresolvable, second.Success(), second.Failure());
        checker.CheckHostAvailability("http://localhost/", third.Success(), third.Failure());
        WAIT_FOR(first);
        WAIT_FOR(second);
        WAIT_FOR(third);
        QCOMPARE(first.successes, 1);
        QCOMPARE(second.failures, 1);
        QCOMPARE(third.successes, 1);
    }

    void firstResolvableEntryWinsAsWritten()
    {
        HostChecker checker;
        Answers answers;
        const std::vector<std::string> hosts = {Unresolvable, "media without scheme",
                                                "http://127.0.0.1:1/media/", "http://localhost/media/"};
        checker.CheckHostsAvailability(hosts, answers.Found(), answers.Failure());
        WAIT_FOR(answers);
        QCOMPARE(answers.found, std::vector<std::string>{"http://127.0.0.1:1/media/"});
        const QString log = EventLog();
        const QString started = QStringLiteral("Поиск доступного хоста начат, хосты для проверки (4):\n"
                                               "\thttp://zelmar-no-such-host.invalid/media/\n"
                                               "\tmedia without scheme\n"
                                               "\thttp://127.0.0.1:1/media/\n"
                                               "\thttp://localhost/media/\n\n");
        QVERIFY2(log.contains(started), qPrintable(log));
        QVERIFY(log.endsWith(QStringLiteral(": Хост доступен: http://127.0.0.1:1/media/\n\n")));
        QCOMPARE(log.count(QStringLiteral("Хост доступен")), 1);
    }

    void noHostWhenNothingResolves_data()
    {
        QTest::addColumn<int>("entries");
        QTest::newRow("empty list") << 0;
        QTest::newRow("two unknown names") << 2;
    }

    void noHostWhenNothingResolves()
    {
        QFETCH(int, entries);
        HostChecker checker;
        Answers answers;
        checker.CheckHostsAvailability(
            std::vector<std::string>(static_cast<std::size_t>(entries), Unresolvable), answers.Found(),
            answers.Failure());
        QCOMPARE(answers.Calls(), 0);
        WAIT_FOR(answers);
        QCOMPARE(answers.failures, 1);
        const QString log = EventLog();
        QVERIFY(log.contains(QStringLiteral("хосты для проверки (%1):\n").arg(entries)));
        QVERIFY(log.endsWith(QStringLiteral(": Ни один хост не доступен!!!\n\n")));
    }

    // A checker that goes away takes its pending answers with it; nothing arrives
    // at an object that no longer exists (the sanitizer build watches this).
    void destroyedCheckerAnswersNobody()
    {
        Answers abandoned;
        {
            HostChecker checker;
            checker.CheckHostAvailability("http://127.0.0.1/", abandoned.Success(), abandoned.Failure());
            checker.CheckHostsAvailability({Unresolvable, "http://localhost/"}, abandoned.Found(),
                                           abandoned.Failure());
        }
        HostChecker later;
        Answers afterwards;
        later.CheckHostsAvailability({Unresolvable, Unresolvable, "http://127.0.0.1/"}, afterwards.Found(),
                                     afterwards.Failure());
        WAIT_FOR(afterwards);
        QCOMPARE(abandoned.Calls(), 0);
    }

    void connectionTestForScreens()
    {
        auto helper = std::make_shared<Core::Networking::TestConnectHelper>();
        Answers reachable;
        Answers unreachable;
        helper->LookUp("https://127.0.0.1/api/v1/", reachable.Success(), reachable.Failure());
        helper->LookUp(Unresolvable, unreachable.Success(), unreachable.Failure());
        WAIT_FOR(reachable);
        WAIT_FOR(unreachable);
        QCOMPARE(reachable.successes, 1);
        QCOMPARE(unreachable.failures, 1);
    }
};

QTEST_GUILESS_MAIN(HostCheckerTest)
#include "tst_host_checker.moc"
