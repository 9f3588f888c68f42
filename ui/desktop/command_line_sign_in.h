#pragma once

#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/data_types/error.h"
#include "ui/desktop/command_line.h"
#include "ui/desktop/pending_request.h"
#include "ui/desktop/server_choice.h"

#include <QEventLoop>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace UI::Desktop {

// "--sign-in SERVER_URL LOGIN PASSWORD [OBJECT_CODE]": the sign-in a person makes on
// the sign-in and choose-object screens, from a provisioning script. The address is
// taken as the sign-in screen takes one typed under "Другой сервер…", the same
// requests go out in the same order, and the sign-in is stored the same way, so the
// window that opens afterwards finds the player signed in, as after a restart.
// Nothing is shown while it runs: a failure is told on standard error, in the words
// the screens would show, and the program ends without a window.
class CommandLineSignIn : public QObject
{
    Q_OBJECT

public:
    // After the application object exists and before the window: signs in when the
    // command line asks for it. The exit code when the program is to end here; empty
    // when it is to go on and open its window.
    static std::optional<int> RunIfAsked();

    static constexpr int Failed = 1;
    static constexpr int BadCommandLine = 2;

private:
    explicit CommandLineSignIn(const CommandLine& line);
    ~CommandLineSignIn() override;

    // Runs the steps below in a loop of its own until one of them ends it.
    int Run();
    void SignInTo(const Core::DataTypes::Auth::Server& server);
    void ChooseObject(const std::vector<std::shared_ptr<Core::DataTypes::Auth::PlaybackObject>>& objects);
    void Signed(const Core::DataTypes::Auth::PlaybackObject& object);
    void Fail(const QString& message);
    void FailWith(const std::shared_ptr<Core::DataTypes::Error>& error);

    QString mAddress;
    std::string mLogin;
    std::string mPassword;
    QString mObjectCode;
    Core::DataTypes::Auth::Server mServer;
    ServerChoice mServers;
    PendingRequest mRequest;
    QEventLoop mLoop;
};

} // namespace UI::Desktop
