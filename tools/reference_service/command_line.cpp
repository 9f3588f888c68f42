#include "tools/reference_service/command_line.h"

#include <QFileInfo>

namespace ReferenceService {

QString CommandLine::Usage()
{
    return QStringLiteral(
        "usage: zelmar-reference-service --scenario DIR [--content DIR] [--port N]\n"
        "                                [--tls-cert FILE --tls-key FILE] [--verbose] [--exit-with-parent]\n"
        "Serves the player's server API on 127.0.0.1 and prints \"listening on <base URL>\".\n"
        "  --scenario DIR   folder of scenario JSON files (accounts, configurations, ...)\n"
        "  --content DIR    folder the media are served from (<type>/<path>)\n"
        "  --port N         port to listen on; 0 or none picks a free one\n"
        "  --tls-cert FILE  serve HTTPS with this PEM certificate ...\n"
        "  --tls-key FILE   ... and this PEM private key\n"
        "  --verbose        print one line per request on standard error\n"
        "  --exit-with-parent  stop when the process that started the service ends\n");
}

bool CommandLine::Parse(const QStringList& arguments)
{
    for (int i = 1; i < arguments.size(); ++i) {
        const QString& option = arguments.at(i);
        if (option == QLatin1String("--help") || option == QLatin1String("-h")) {
            help = true;
            return true;
        }
        if (option == QLatin1String("--verbose")) {
            verbose = true;
            continue;
        }
        if (option == QLatin1String("--exit-with-parent")) {
            exitWithParent = true;
            continue;
        }
        const QStringList withValue = {QStringLiteral("--scenario"), QStringLiteral("--content"),
                                       QStringLiteral("--port"), QStringLiteral("--tls-cert"),
                                       QStringLiteral("--tls-key")};
        if (!withValue.contains(option)) {
            errorText = QStringLiteral("unknown option \"%1\"").arg(option);
            return false;
        }
        if (i + 1 >= arguments.size()) {
            errorText = QStringLiteral("%1 needs a value").arg(option);
            return false;
        }
        const QString value = arguments.at(++i);
        if (option == QLatin1String("--scenario")) {
            scenarioDirectory = value;
        } else if (option == QLatin1String("--content")) {
            contentDirectory = value;
        } else if (option == QLatin1String("--port")) {
            bool ok = false;
            port = value.toInt(&ok);
            if (!ok || port < 0 || port > 65535) {
                errorText = QStringLiteral("--port must be a number from 0 to 65535, not \"%1\"").arg(value);
                return false;
            }
        } else if (option == QLatin1String("--tls-cert")) {
            tlsCertificate = value;
        } else {
            tlsKey = value;
        }
    }
    if (scenarioDirectory.isEmpty()) {
        errorText = QStringLiteral("--scenario is required");
        return false;
    }
    if (!contentDirectory.isEmpty() && !QFileInfo(contentDirectory).isDir()) {
        errorText = QStringLiteral("the content folder \"%1\" does not exist").arg(contentDirectory);
        return false;
    }
    if (tlsCertificate.isEmpty() != tlsKey.isEmpty()) {
        errorText = QStringLiteral("--tls-cert and --tls-key go together");
        return false;
    }
    return true;
}

QString CommandLine::ErrorText() const
{
    return errorText;
}

bool CommandLine::HelpRequested() const
{
    return help;
}

QString CommandLine::ScenarioDirectory() const
{
    return scenarioDirectory;
}

QString CommandLine::ContentDirectory() const
{
    return contentDirectory;
}

int CommandLine::Port() const
{
    return port;
}

QString CommandLine::TlsCertificate() const
{
    return tlsCertificate;
}

QString CommandLine::TlsKey() const
{
    return tlsKey;
}

bool CommandLine::Verbose() const
{
    return verbose;
}

bool CommandLine::ExitWithParent() const
{
    return exitWithParent;
}

} // namespace ReferenceService
