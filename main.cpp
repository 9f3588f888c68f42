#include "core/user_environment.h"
#include "core/utilities/custom_message_handler.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/command_line.h"
#include "ui/desktop/command_line_sign_in.h"
#include "ui/desktop/main_window_desktop.h"

#include <QApplication>

#include <memory>
#include <optional>

int main(int argc, char* argv[])
{
    // First of all, so that even Qt's own start-up warnings are stamped.
    qInstallMessageHandler(Core::Utilities::CustomMessageHandler);
    // --help and --version need no display.
    if (const std::optional<int> answered = UI::Desktop::CommandLine::AnswerWithoutWindow(argc, argv)) {
        return *answered;
    }
    UI::Desktop::ApplicationStartUp::PrepareEnvironment();
    QApplication application(argc, argv);
    UI::Desktop::ApplicationStartUp::ConfigureApplication();
    // A sign-in asked for on the command line ends here when it fails, before any window.
    if (const std::optional<int> failed = UI::Desktop::CommandLineSignIn::RunIfAsked()) {
        return *failed;
    }
    std::unique_ptr<UI::Desktop::MainWindowDesktop> window(
        UI::Desktop::ApplicationStartUp::CreateMainWindow());
    // The player stops and the signed-in environment goes while Qt is still whole;
    // the stored sign-in stays for the next start.
    QObject::connect(&application, &QCoreApplication::aboutToQuit,
                     []() { Core::UserEnvironment::ReleaseCurrentEnvironment(); });
    return QApplication::exec();
}
