#include "core/utilities/data_directory.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <mutex>

namespace Core::Utilities {

namespace {

QString ExecutableDirectory()
{
    if (QCoreApplication::instance() != nullptr) {
        return QCoreApplication::applicationDirPath();
    }
    // Before the application object exists (the console handler can run that
    // early) the kernel still knows where we were started from.
    return QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath().section(QLatin1Char('/'), 0, -2);
}

QString ChooseDirectory(const QString& overridden)
{
    if (!overridden.isEmpty()) {
        return QDir(overridden).absolutePath();
    }
    const QString executableDirectory = ExecutableDirectory();
    if (!executableDirectory.isEmpty() && DataDirectory::IsPortableFolder(executableDirectory)) {
        return executableDirectory;
    }
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/zelmar-player");
}

// The last location chosen and the override it was chosen for. Tests give every
// case a folder of its own through the override, so a changed value is a new
// choice and gets its folder made. Never destroyed: entries logged while the
// process shuts down still ask for the folder.
struct Choice
{
    std::mutex mutex;
    bool known = false;
    QByteArray overridden;
    QString path;
};

Choice& LastChoice()
{
    static Choice* const choice = new Choice;
    return *choice;
}

} // namespace

QString DataDirectory::Path()
{
    const QByteArray overridden = qgetenv(EnvironmentVariable);
    Choice& last = LastChoice();
    const std::lock_guard<std::mutex> lock(last.mutex);
    if (last.known && last.overridden == overridden) {
        return last.path;
    }
    const QString decoded = QString::fromLocal8Bit(overridden);
    const QString path = ChooseDirectory(decoded);
    // A folder that cannot be made now (a read-only or missing mount) is tried
    // again on the next call rather than remembered as good.
    const bool created = QDir().mkpath(path);
    if (created && (decoded.isEmpty() || QDir::isAbsolutePath(decoded))) {
        last.known = true;
        last.overridden = overridden;
        last.path = path;
    }
    return path;
}

bool DataDirectory::IsPortableFolder(const QString& folder)
{
    const QString path = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    if (path == QLatin1String("/usr") || path.startsWith(QLatin1String("/usr/")) ||
        path == QLatin1String("/bin") || path == QLatin1String("/sbin")) {
        return false;
    }
    const QFileInfo info(path);
    return info.isDir() && info.isWritable();
}

QString DataDirectory::FilePath(const QString& name)
{
    return Path() + QLatin1Char('/') + name;
}

} // namespace Core::Utilities
