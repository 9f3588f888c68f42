#include "ui/desktop/command_line.h"

#include "core/settings.h"
#include "ui/desktop/application_start_up.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QFileInfo>

#include <cstdio>

namespace UI::Desktop {

namespace {

const char* const SignInOption = "sign-in";

QString AutorunOptionName()
{
    // The settings write it with its dash into the autostart entry.
    return QString::fromStdString(Core::Settings::AutoRunArgumentName()).mid(1);
}

void Print(std::FILE* stream, const QString& text)
{
    std::fputs(text.toLocal8Bit().constData(), stream);
    std::fflush(stream);
}

} // namespace

CommandLine::CommandLine(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption help(
        QStringList{QStringLiteral("h"), QStringLiteral("help"), QStringLiteral("?")});
    const QCommandLineOption version(QStringList{QStringLiteral("v"), QStringLiteral("version")});
    const QCommandLineOption signIn(QString::fromLatin1(SignInOption));
    const QCommandLineOption autorun(AutorunOptionName());
    parser.addOptions({help, version, signIn, autorun});

    if (!parser.parse(arguments)) {
        mError = parser.errorText();
    }
    mHelp = parser.isSet(help);
    mVersion = parser.isSet(version);
    mSignIn = parser.isSet(signIn);
    mSignInArguments = parser.positionalArguments();
    if (!mError.isEmpty()) {
        return;
    }
    if (mSignIn) {
        if (mSignInArguments.size() < 3 || mSignInArguments.size() > 4) {
            mError = QStringLiteral("--sign-in takes SERVER_URL LOGIN PASSWORD [OBJECT_CODE].");
        }
    } else if (!mSignInArguments.isEmpty()) {
        mError = QStringLiteral("Unexpected argument '%1'.").arg(mSignInArguments.first());
    }
}

std::optional<int> CommandLine::AnswerWithoutWindow(int argc, char* argv[])
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    const CommandLine line(arguments);
    if (line.AsksForHelp()) {
        Print(stdout, HelpText(QFileInfo(arguments.value(0)).fileName()));
        return 0;
    }
    if (line.AsksForVersion()) {
        Print(stdout, VersionText());
        return 0;
    }
    return std::nullopt;
}

QString CommandLine::ParseError() const
{
    return mError;
}

bool CommandLine::AsksForHelp() const
{
    return mHelp;
}

bool CommandLine::AsksForVersion() const
{
    return mVersion;
}

bool CommandLine::AsksToSignIn() const
{
    return mSignIn && mError.isEmpty();
}

QString CommandLine::ServerUrl() const
{
    return mSignInArguments.value(0);
}

QString CommandLine::Login() const
{
    return mSignInArguments.value(1);
}

QString CommandLine::Password() const
{
    return mSignInArguments.value(2);
}

QString CommandLine::ObjectCode() const
{
    return mSignInArguments.value(3);
}

QString CommandLine::HelpText(const QString& programName)
{
    // Written out rather than QCommandLineParser's: that one would show "-autorun"
    // as "--autorun", and needs the application object, which needs a display.
    return QStringLiteral("Usage: %1 [-autorun]\n"
                          "       %1 --sign-in SERVER_URL LOGIN PASSWORD [OBJECT_CODE] [-autorun]\n"
                          "\n"
                          "Zelmar Player plays a point of sale's music, video, photos and ads on the\n"
                          "schedule its server sets. Without options it resumes the stored sign-in and\n"
                          "plays, or shows the sign-in screen.\n"
                          "\n"
                          "Options:\n"
                          "  --sign-in      Sign in to SERVER_URL, the API base URL (for example\n"
                          "                 http://127.0.0.1:8091/api/v1/), as LOGIN with PASSWORD, choose\n"
                          "                 the point of sale whose code is OBJECT_CODE (the account's\n"
                          "                 first when it is left out), store the sign-in in the data\n"
                          "                 directory and start playing, as after a restart. When the\n"
                          "                 server refuses or cannot be reached, the reason goes to\n"
                          "                 standard error and the program exits with status 1 without\n"
                          "                 opening a window.\n"
                          "  -autorun       Started at login: the player starts after the delay set in\n"
                          "                 the settings, minimised when they ask for it.\n"
                          "  -h, --help     Show this help.\n"
                          "  -v, --version  Show the version.\n"
                          "\n"
                          "Environment:\n"
                          "  ZELMAR_DATA_DIR  the data directory (database, settings, event log, media)\n"
                          "\n"
                          "Exit status: 0, 1 when --sign-in failed, 2 for a command line it cannot read.\n")
        .arg(programName.isEmpty() ? QStringLiteral("zelmar-player") : programName);
}

QString CommandLine::VersionText()
{
    return QStringLiteral("zelmar-player %1\n").arg(QString::fromLatin1(ApplicationStartUp::Version));
}

} // namespace UI::Desktop
