#include "ui/desktop/command_line_sign_in.h"

#include "core/user_environment.h"
#include "ui/desktop/screen_error_text.h"

#include <QCoreApplication>
#include <QPointer>

#include <cstdio>

namespace UI::Desktop {

namespace {

void PrintLine(std::FILE* stream, const QString& text)
{
    std::fputs((QStringLiteral("zelmar-player: ") + text + QLatin1Char('\n')).toLocal8Bit().constData(),
               stream);
    std::fflush(stream);
}

} // namespace

std::optional<int> CommandLineSignIn::RunIfAsked()
{
    const CommandLine line(QCoreApplication::arguments());
    if (!line.ParseError().isEmpty()) {
        PrintLine(stderr, line.ParseError() + QStringLiteral(" See --help."));
        return BadCommandLine;
    }
    if (!line.AsksToSignIn()) {
        return std::nullopt;
    }
    CommandLineSignIn signIn(line);
    const int exitCode = signIn.Run();
    if (exitCode != 0) {
        return exitCode;
    }
    return std::nullopt;
}

CommandLineSignIn::CommandLineSignIn(const CommandLine& line)
    : mAddress(line.ServerUrl())
    , mLogin(line.Login().trimmed().toStdString())
    , mPassword(line.Password().toStdString())
    , mObjectCode(line.ObjectCode())
    , mRequest([](bool) {}, [this]() { Fail(QString::fromUtf8(ScreenErrorText::NoAnswer)); })
{
}

CommandLineSignIn::~CommandLineSignIn() = default;

int CommandLineSignIn::Run()
{
    if (mLogin.empty() || mPassword.empty()) {
        PrintLine(stderr,
                  mLogin.empty() ? QStringLiteral("Введите логин.") : QStringLiteral("Введите пароль."));
        return Failed;
    }
    // The built-in list first: a typed address borrows the contacts and phone rules
    // of its preferred server, as on the sign-in screen.
    mServers.Load([this](int) {
        QString error;
        Core::DataTypes::Auth::Server server;
        if (!mServers.Resolve(mServers.Model()->CustomRow(), mAddress, &server, &error)) {
            Fail(error);
            return;
        }
        SignInTo(server);
    });
    return mLoop.exec();
}

void CommandLineSignIn::SignInTo(const Core::DataTypes::Auth::Server& server)
{
    mServer = server;
    if (ServerChoice::SendsInTheClear(server)) {
        // The screen asks twice; whoever wrote the address into a script has chosen.
        PrintLine(stderr, QStringLiteral("этот сервер работает без шифрования: логин и пароль уходят по "
                                         "сети открытым текстом."));
    }
    const int ticket = mRequest.Start();
    QPointer<CommandLineSignIn> self(this);
    Core::UserEnvironment::PlaybackObjects(
        server, mLogin, mPassword,
        [self, ticket](std::vector<std::shared_ptr<Core::DataTypes::Auth::PlaybackObject>> objects) {
            if (self && self->mRequest.Finish(ticket)) {
                self->ChooseObject(objects);
            }
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::NetworkError> error) {
            if (self && self->mRequest.Finish(ticket)) {
                self->FailWith(error);
            }
        });
}

void CommandLineSignIn::ChooseObject(
    const std::vector<std::shared_ptr<Core::DataTypes::Auth::PlaybackObject>>& objects)
{
    std::shared_ptr<Core::DataTypes::Auth::PlaybackObject> chosen;
    QStringList codes;
    for (const auto& object : objects) {
        if (!object) {
            continue;
        }
        codes.append(QString::fromStdString(object->code));
        if (!chosen && (mObjectCode.isEmpty() || object->code == mObjectCode.toStdString())) {
            chosen = object;
        }
    }
    if (codes.isEmpty()) {
        Fail(QStringLiteral("В этом аккаунте нет ни одной точки продаж. Добавьте точку в личном кабинете или "
                            "позвоните в поддержку."));
        return;
    }
    if (!chosen) {
        Fail(QStringLiteral("the account has no point of sale with the code '%1'; its codes: %2")
                 .arg(mObjectCode, codes.join(QStringLiteral(", "))));
        return;
    }

    const int ticket = mRequest.Start();
    QPointer<CommandLineSignIn> self(this);
    const Core::DataTypes::Auth::PlaybackObject object = *chosen;
    Core::UserEnvironment::CreateAndStoreEnvironment(
        mServer, object, mLogin, mPassword,
        [self, ticket, object](std::shared_ptr<Core::UserEnvironment>) {
            // Signed in and stored even when this gave up waiting: the window that
            // opens next resumes it.
            if (self && self->mRequest.Finish(ticket)) {
                self->Signed(object);
            }
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::Error> error) {
            if (!self || !self->mRequest.Finish(ticket)) {
                return;
            }
            if (error && error->IsObjectExportedError()) {
                self->Fail(
                    QStringLiteral("Для этой точки включена выгрузка: плеер на ней сейчас не работает. "
                                   "Выберите другую точку или позвоните в поддержку."));
                return;
            }
            self->FailWith(error);
        });
}

void CommandLineSignIn::Signed(const Core::DataTypes::Auth::PlaybackObject& object)
{
    PrintLine(stdout, QStringLiteral("signed in to %1 as %2, point of sale %3 (%4)")
                          .arg(QString::fromStdString(mServer.url), QString::fromStdString(mLogin),
                               QString::fromStdString(object.code), QString::fromStdString(object.name)));
    mLoop.exit(0);
}

void CommandLineSignIn::Fail(const QString& message)
{
    PrintLine(stderr, message);
    mLoop.exit(Failed);
}

void CommandLineSignIn::FailWith(const std::shared_ptr<Core::DataTypes::Error>& error)
{
    // Logged as a failed sign-in, worded as the screen would word it.
    Fail(ScreenErrorText::For(error));
}

} // namespace UI::Desktop
