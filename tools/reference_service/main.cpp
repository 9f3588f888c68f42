#include "tools/reference_service/command_line.h"
#include "tools/reference_service/configuration_builder.h"
#include "tools/reference_service/content_library.h"
#include "tools/reference_service/http_service.h"
#include "tools/reference_service/scenario.h"

#include <QStringList>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <pthread.h>
#include <sys/prctl.h>
#include <thread>
#include <unistd.h>

using namespace ReferenceService;

namespace {

void Complain(const QString& text)
{
    std::fprintf(stderr, "zelmar-reference-service: %s\n", text.toLocal8Bit().constData());
}

} // namespace

int main(int argc, char** argv)
{
    // The stop signals are blocked in every thread, the server's workers included,
    // and taken by the main thread alone with sigwait(); SIGUSR1 is how the server
    // thread says it ended by itself.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGTERM);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGHUP);
    sigaddset(&stopSignals, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    // A client that hangs up while its reply is written must not end the service.
    std::signal(SIGPIPE, SIG_IGN);

    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    CommandLine commandLine;
    if (!commandLine.Parse(arguments)) {
        Complain(commandLine.ErrorText());
        std::fprintf(stderr, "%s", CommandLine::Usage().toLocal8Bit().constData());
        return 2;
    }
    if (commandLine.HelpRequested()) {
        std::printf("%s", CommandLine::Usage().toLocal8Bit().constData());
        return 0;
    }
    // A test that crashes would otherwise leave its service running, and CTest
    // waiting for the output pipe it still holds until the test's time is up. The
    // stop signal goes through the same orderly shutdown as a SIGTERM from outside.
    if (commandLine.ExitWithParent()) {
        const pid_t parent = getppid();
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent) {
            return 1;
        }
    }

    QString error;
    const auto scenario = Scenario::Load(commandLine.ScenarioDirectory(), &error);
    if (!scenario) {
        Complain(QStringLiteral("the scenario is refused: ") + error);
        return 2;
    }
    const ContentLibrary content(commandLine.ContentDirectory());
    if (!content.ManifestProblem().isEmpty()) {
        Complain(QStringLiteral("warning: ") + content.ManifestProblem());
    }

    HttpService service(*scenario, content);
    service.SetVerbose(commandLine.Verbose());
    if (!service.Bind(commandLine.Port(), commandLine.TlsCertificate(), commandLine.TlsKey(), &error)) {
        Complain(error);
        return 1;
    }
    // Without a content folder every file is missing on purpose; with one, a
    // missing file is most likely a slip in the scenario.
    for (const auto& [code, configuration] : scenario->configurations) {
        if (content.Directory().isEmpty()) {
            break;
        }
        for (const QString& missing : service.Builder().MissingFiles(configuration)) {
            Complain(
                QStringLiteral("warning: configurations/%1.json names %2, which is not in the content folder")
                    .arg(code, missing));
        }
    }

    const pthread_t mainThread = pthread_self();
    std::atomic<bool> failed{false};
    std::thread runner([&service, &failed, mainThread] {
        if (!service.Run()) {
            failed = true;
        }
        pthread_kill(mainThread, SIGUSR1);
    });
    // The line below tells scripts that requests will be answered, so it waits
    // until the server loop runs.
    while (!service.IsRunning() && !failed) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (!failed) {
        std::printf("listening on %s\n", service.Addresses().BaseUrl().toLocal8Bit().constData());
        std::fflush(stdout);
    }

    int received = 0;
    sigwait(&stopSignals, &received);
    service.Stop();
    runner.join();
    if (failed) {
        Complain(QStringLiteral("the server stopped listening"));
        return 1;
    }
    return 0;
}
