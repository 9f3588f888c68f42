#include "core/utilities/data_directory.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

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

QString ChooseDirectory()
{
    const QString overridden = qEnvironmentVariable(DataDirectory::EnvironmentVariable);
    if (!overridden.isEmpty()) {
        return QDir(overridden).absolutePath();
    }
    const QString executableDirectory = ExecutableDirectory();
    if (!executableDirectory.isEmpty() && QFileInfo(executableDirectory).isWritable()) {
        return executableDirectory;
    }
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/zelmar-player");
}

} // namespace

QString DataDirectory::Path()
{
    const QString path = ChooseDirectory();
    QDir().mkpath(path);
    return path;
}

QString DataDirectory::FilePath(const QString& name)
{
    return Path() + QLatin1Char('/') + name;
}

} // namespace Core::Utilities
