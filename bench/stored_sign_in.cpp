#include "bench/stored_sign_in.h"

#include "bench/demo_stage.h"
#include "core/settings.h"
#include "core/user_environment.h"
#include "core/utilities/data_directory.h"
#include "tests/support/call_outcome.h"

#include <QCoreApplication>
#include <QEvent>

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace Bench {

namespace {

constexpr int AnswerTimeoutMs = 30000;

using Core::UserEnvironment;
using Core::DataTypes::Auth::PlaybackObject;

} // namespace

bool StoredSignIn::Requested(int argc, char** argv)
{
    return argc >= 2 && std::strcmp(argv[1], "--sign-in") == 0;
}

int StoredSignIn::Run(int argc, char** argv)
{
    if (argc < 5 || argc > 6 || (argc == 6 && std::strcmp(argv[5], "--minimize-to-tray") != 0)) {
        std::fprintf(stderr, "usage: %s --sign-in DATA_DIR API_URL OBJECT_CODE [--minimize-to-tray]\n",
                     argv[0]);
        return 2;
    }
    qputenv(Core::Utilities::DataDirectory::EnvironmentVariable, argv[2]);
    QCoreApplication application(argc, argv);

    Core::DataTypes::Auth::Server server;
    server.id = 1;
    server.name = "Локальный демо-сервер";
    server.url = argv[3];
    const std::string code = argv[4];

    // The account's points of sale first, as the sign-in screen lists them.
    Tests::CallOutcome<std::vector<std::shared_ptr<PlaybackObject>>, Core::DataTypes::NetworkError> objects;
    UserEnvironment::PlaybackObjects(server, DemoStage::Login, DemoStage::Password, objects.Success(),
                                     objects.Failure());
    if (!DemoStage::WaitFor([&objects]() { return objects.Calls() > 0; }, AnswerTimeoutMs) ||
        objects.successes != 1) {
        std::fprintf(stderr, "sign-in: the points of sale did not come: %s\n",
                     qPrintable(objects.Describe()));
        return 1;
    }
    std::shared_ptr<PlaybackObject> object;
    for (const auto& candidate : objects.value) {
        if (candidate && candidate->code == code) {
            object = candidate;
        }
    }
    if (!object) {
        std::fprintf(stderr, "sign-in: the account has no point of sale '%s'\n", code.c_str());
        return 1;
    }

    Tests::CallOutcome<std::shared_ptr<UserEnvironment>, Core::DataTypes::Error> signIn;
    UserEnvironment::CreateAndStoreEnvironment(server, *object, DemoStage::Login, DemoStage::Password,
                                               signIn.Success(), signIn.Failure());
    if (!DemoStage::WaitFor([&signIn]() { return signIn.Calls() > 0; }, AnswerTimeoutMs) || !signIn.value) {
        std::fprintf(stderr, "sign-in: %s\n", qPrintable(signIn.Describe()));
        return 1;
    }
    Core::Settings::SetMinimizeToTrayOnAppStart(argc == 6);

    // What the program does on quitting: the environment goes, the sign-in stays.
    signIn.value.reset();
    UserEnvironment::ReleaseCurrentEnvironment();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return 0;
}

} // namespace Bench
