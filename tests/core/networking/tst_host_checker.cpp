#include "core/networking/host_checker.h"
#include "core/networking/test_connect_helper.h"
#include "tests/support/call_outcome.h"
#include "tests/support/event_log.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"

#include <memory>

using Core::Networking::HostChecker;

namespace {

// Resolves nowhere: ".invalid" is reserved for exactly that.
const char* const Unresolvable = "http://zelmar-no-such-host.invalid/media/";

// A host check's answers: Done() or Success() (the host found) and Failed().
using Answers = Tests::CallOutcome<std::string, int>;

std::function<void()> Failed(Answers& answers)
{
    return [&answers] {
        ++answers.failures;
    };
}

} // namespace

#define WAIT_FOR(answers) QTRY_COMPARE_WITH_TIMEOUT((answers).Calls(), 1, Tests::Timeouts::Process)

// "Available" means the name resolves: loopback names do, ".invalid" ones never.
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

    // Callers asking at once each get their own answer, once, never from inside the call.
    void eachLookupAnswersItsOwnCaller()
    {
        // Without a scheme there is no host name to look up.
        const std::vector<std::pair<std::string, bool>> hosts = {
            {"https://localhost/api/v1/", true}, {Unresolvable, false}, {"127.0.0.1/api/v1/", false}};
        HostChecker checker;
        // The screens' connection test asks through a checker of its own.
        auto screens = std::make_shared<Core::Networking::TestConnectHelper>();
        std::vector<Answers> answers(2 * hosts.size());
        for (std::size_t i = 0; i < hosts.size(); ++i) {
            checker.CheckHostAvailability(hosts[i].first, answers[i].Done(), Failed(answers[i]));
            Answers& screen = answers[hosts.size() + i];
            screens->LookUp(hosts[i].first, screen.Done(), Failed(screen));
            QCOMPARE(answers[i].Calls() + screen.Calls(), 0);
        }
        for (std::size_t i = 0; i < answers.size(); ++i) {
            const auto& [host, resolves] = hosts[i % hosts.size()];
            WAIT_FOR(answers[i]);
            QVERIFY2(answers[i].successes == (resolves ? 1 : 0), host.c_str());
        }
    }

    void firstResolvableEntryWins_data()
    {
        QTest::addColumn<QStringList>("hosts");
        QTest::addColumn<QString>("found");
        QTest::newRow("empty list") << QStringList() << "";
        QTest::newRow("two unknown names") << QStringList{Unresolvable, Unresolvable} << "";
        QTest::newRow("first that resolves, as written")
            << QStringList{Unresolvable, "media without scheme", "http://127.0.0.1:1/media/",
                           "http://localhost/media/"}
            << "http://127.0.0.1:1/media/";
    }

    void firstResolvableEntryWins()
    {
        QFETCH(QStringList, hosts);
        QFETCH(QString, found);
        std::vector<std::string> urls;
        QString started =
            QStringLiteral("Поиск доступного хоста начат, хосты для проверки (%1):\n").arg(hosts.size());
        for (const QString& host : hosts) {
            urls.push_back(host.toStdString());
            started += "\t" + host + "\n";
        }
        HostChecker checker;
        Answers answers;
        checker.CheckHostsAvailability(urls, answers.Success(), Failed(answers));
        QCOMPARE(answers.Calls(), 0);
        WAIT_FOR(answers);
        QCOMPARE(QString::fromStdString(answers.value), found);
        QCOMPARE(answers.failures, found.isEmpty() ? 1 : 0);
        const QString log = Tests::EventLog::Text();
        QVERIFY2(log.contains(started + "\n"), qPrintable(log));
        QVERIFY2(log.endsWith(found.isEmpty() ? QStringLiteral(": Ни один хост не доступен!!!\n\n")
                                              : ": Хост доступен: " + found + "\n\n"),
                 qPrintable(log));
    }

    // A checker that goes away takes its pending answers with it.
    void destroyedCheckerAnswersNobody()
    {
        Answers abandoned;
        {
            HostChecker checker;
            checker.CheckHostAvailability("http://127.0.0.1/", abandoned.Done(), Failed(abandoned));
            checker.CheckHostsAvailability({Unresolvable, "http://localhost/"}, abandoned.Success(),
                                           Failed(abandoned));
        }
        HostChecker later;
        Answers afterwards;
        later.CheckHostsAvailability({Unresolvable, Unresolvable, "http://127.0.0.1/"}, afterwards.Success(),
                                     Failed(afterwards));
        WAIT_FOR(afterwards);
        QCOMPARE(abandoned.Calls(), 0);
    }
};

QTEST_GUILESS_MAIN(HostCheckerTest)
#include "tst_host_checker.moc"
