#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace UI::Desktop {

// What the program was asked for on its command line. Besides the plain start it
// knows "-autorun" (the start at login, which the settings' autostart entry
// writes), --help, --version and --sign-in, with which a script provisioning a
// shop's computer signs it in without anyone at the screen.
//
// "-autorun" is one word after a single dash, so single-dash words are read as
// long options: "-h" and "-v" still work, being names of their own.
class CommandLine
{
public:
    // Reads `arguments` (the program's name first, as QCoreApplication::arguments()).
    explicit CommandLine(const QStringList& arguments);

    // Before the application object exists, so that neither needs a display:
    // prints the help or the version when asked and returns the exit code; empty
    // when the program is to start. Anything else wrong on the line is left for
    // ParseError, once the application has taken its own options (-platform …) out.
    static std::optional<int> AnswerWithoutWindow(int argc, char* argv[]);

    // Empty when the line makes sense.
    QString ParseError() const;
    bool AsksForHelp() const;
    bool AsksForVersion() const;
    bool AsksToSignIn() const;
    QString ServerUrl() const;
    QString Login() const;
    QString Password() const;
    // Empty: the account's first point of sale.
    QString ObjectCode() const;

    static QString HelpText(const QString& programName);
    static QString VersionText();

private:
    QString mError;
    bool mHelp = false;
    bool mVersion = false;
    bool mSignIn = false;
    QStringList mSignInArguments;
};

} // namespace UI::Desktop
