#pragma once

#include <QString>
#include <QStringList>

namespace ReferenceService {

// zelmar-reference-service --scenario DIR [--content DIR] [--port N]
//                          [--tls-cert FILE --tls-key FILE] [--verbose] [--exit-with-parent]
// Scripts and tests depend on these options; keep them stable.
class CommandLine
{
public:
    static QString Usage();

    // False with a reason in ErrorText() when the arguments cannot be used.
    bool Parse(const QStringList& arguments);
    QString ErrorText() const;
    bool HelpRequested() const;

    QString ScenarioDirectory() const;
    QString ContentDirectory() const;
    int Port() const;
    QString TlsCertificate() const;
    QString TlsKey() const;
    bool Verbose() const;
    bool ExitWithParent() const;

private:
    QString scenarioDirectory;
    QString contentDirectory;
    int port = 0;
    QString tlsCertificate;
    QString tlsKey;
    bool verbose = false;
    bool exitWithParent = false;
    bool help = false;
    QString errorText;
};

} // namespace ReferenceService
