#include "core/utilities/autorun_helper.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QtGlobal>

namespace Core::Utilities {

namespace {

// The program that a login should start.
QString ExecutablePath()
{
    // An AppImage runs from a mount that is gone after logout; the image itself is
    // what has to be started again.
    const QString appImage = qEnvironmentVariable("APPIMAGE");
    if (!appImage.isEmpty()) {
        return appImage;
    }
    if (QCoreApplication::instance() != nullptr) {
        return QCoreApplication::applicationFilePath();
    }
    return QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath();
}

bool NeedsQuoting(const QString& argument)
{
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    if (argument.isEmpty()) {
        return true;
    }
    for (const QChar character : argument) {
        if (reserved.contains(character)) {
            return true;
        }
    }
    return false;
}

QString QuoteExecArgument(const QString& argument)
{
    QString result;
    const bool quoted = NeedsQuoting(argument);
    if (quoted) {
        result += QLatin1Char('"');
    }
    for (const QChar character : argument) {
        if (character == QLatin1Char('%')) {
            // A lone "%" would start a field code.
            result += QLatin1Char('%');
        } else if (quoted && (character == QLatin1Char('"') || character == QLatin1Char('`') ||
                              character == QLatin1Char('$') || character == QLatin1Char('\\'))) {
            result += QLatin1Char('\\');
        }
        result += character;
    }
    if (quoted) {
        result += QLatin1Char('"');
    }
    return result;
}

// The escapes of a desktop entry string value; readers undo them before the
// quoting of the Exec key, which is why a literal backslash ends up as four.
QString EscapeStringValue(const QString& value)
{
    QString result;
    result.reserve(value.size());
    for (const QChar character : value) {
        if (character == QLatin1Char('\\')) {
            result += QStringLiteral("\\\\");
        } else if (character == QLatin1Char('\n')) {
            result += QStringLiteral("\\n");
        } else if (character == QLatin1Char('\t')) {
            result += QStringLiteral("\\t");
        } else if (character == QLatin1Char('\r')) {
            result += QStringLiteral("\\r");
        } else {
            result += character;
        }
    }
    return result;
}

// The Exec value of an entry that starts this program with `argumentName`; empty
// when it cannot tell where the program is.
QString ExecValueOfThisProgram(const std::string& argumentName)
{
    const QString executable = ExecutablePath();
    if (executable.isEmpty()) {
        qWarning("Autorun: cannot tell where the program is installed");
        return {};
    }
    QStringList arguments{executable};
    if (!argumentName.empty()) {
        arguments << QString::fromStdString(argumentName);
    }
    return AutorunHelper::DesktopEntryExecValue(arguments);
}

// The raw value of the entry's Exec key; empty when there is no entry or no key.
QString ReadExecValue(const QString& entryPath)
{
    QFile file(entryPath);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return {};
    }
    const QString execKey = QStringLiteral("Exec=");
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        if (line.startsWith(execKey)) {
            return line.mid(execKey.size());
        }
    }
    return {};
}

bool WriteEntry(const QString& entryPath, const QString& execValue)
{
    const QString folder = QFileInfo(entryPath).absolutePath();
    if (!QDir().mkpath(folder)) {
        qWarning("Autorun: cannot create the autostart folder %s", qUtf8Printable(folder));
        return false;
    }
    const QString contents = QStringLiteral("[Desktop Entry]\n"
                                            "Type=Application\n"
                                            "Name=Zelmar Player\n"
                                            "Exec=%1\n"
                                            "X-GNOME-Autostart-enabled=true\n")
                                 .arg(execValue);
    // Written beside and renamed over the old entry, so a session starting at the
    // same moment never reads half a file.
    QSaveFile file(entryPath);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents.toUtf8()) < 0 || !file.commit()) {
        qWarning("Autorun: cannot write %s: %s", qUtf8Printable(entryPath),
                 qUtf8Printable(file.errorString()));
        return false;
    }
    return true;
}

bool RemoveEntry(const QString& entryPath)
{
    QFile file(entryPath);
    if (!file.exists()) {
        return true;
    }
    if (!file.remove()) {
        qWarning("Autorun: cannot remove %s: %s", qUtf8Printable(entryPath),
                 qUtf8Printable(file.errorString()));
        return false;
    }
    return true;
}

} // namespace

bool AutorunHelper::SetAutorunEnabled(bool enabled, std::string argumentName)
{
#if defined(Q_OS_LINUX)
    return SetAutorunEnabledLinux(enabled, argumentName);
#else
    Q_UNUSED(enabled)
    Q_UNUSED(argumentName)
    return false;
#endif
}

bool AutorunHelper::SetAutorunEnabledLinux(bool enabled, const std::string& argumentName)
{
    const QString entryPath = LinuxAutostartEntryPath();
    if (entryPath.isEmpty()) {
        qWarning("Autorun: the user has no configuration folder");
        return false;
    }
    if (!enabled) {
        return RemoveEntry(entryPath);
    }
    const QString execValue = ExecValueOfThisProgram(argumentName);
    if (execValue.isEmpty()) {
        return false;
    }
    return WriteEntry(entryPath, execValue);
}

bool AutorunHelper::RefreshAutorun(std::string argumentName)
{
#if defined(Q_OS_LINUX)
    return RefreshAutorunLinux(argumentName);
#else
    Q_UNUSED(argumentName)
    return false;
#endif
}

bool AutorunHelper::RefreshAutorunLinux(const std::string& argumentName)
{
    const QString entryPath = LinuxAutostartEntryPath();
    if (entryPath.isEmpty()) {
        qWarning("Autorun: the user has no configuration folder");
        return false;
    }
    const QString execValue = ExecValueOfThisProgram(argumentName);
    if (execValue.isEmpty()) {
        return false;
    }
    if (ReadExecValue(entryPath) == execValue) {
        return true;
    }
    return WriteEntry(entryPath, execValue);
}

QString AutorunHelper::LinuxAutostartEntryPath()
{
    const QString configFolder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    if (configFolder.isEmpty()) {
        return {};
    }
    return configFolder + QStringLiteral("/autostart/") + QLatin1String(LinuxDesktopEntryFileName);
}

QString AutorunHelper::DesktopEntryExecValue(const QStringList& arguments)
{
    QStringList quoted;
    quoted.reserve(arguments.size());
    for (const QString& argument : arguments) {
        quoted << QuoteExecArgument(argument);
    }
    return EscapeStringValue(quoted.join(QLatin1Char(' ')));
}

} // namespace Core::Utilities
