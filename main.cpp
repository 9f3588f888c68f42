#include "core/user_environment.h"
#include "core/utilities/custom_message_handler.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/main_window_desktop.h"

#include <QApplication>

#include <memory>

int main(int argc, char* argv[])
{
    // First of all, so that even Qt's own start-up warnings are stamped.
    qInstallMessageHandler(Core::Utilities::CustomMessageHandler);
    UI::Desktop::ApplicationStartUp::PrepareEnvironment();
    QApplication application(argc, argv);
    UI::Desktop::ApplicationStartUp::ConfigureApplication();
    std::unique_ptr<UI::Desktop::MainWindowDesktop> window(
        UI::Desktop::ApplicationStartUp::CreateMainWindow());
    // The player stops and the signed-in environment goes while Qt is still whole;
    // the stored sign-in stays for the next start.
    QObject::connect(&application, &QCoreApplication::aboutToQuit,
                     []() { Core::UserEnvironment::ReleaseCurrentEnvironment(); });
    return QApplication::exec();
}
