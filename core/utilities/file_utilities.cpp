#include "core/utilities/file_utilities.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QString>

namespace Core::Utilities {

std::string FileUtilities::FileContentsMd5(const std::string& path)
{
    // Media files run to hundreds of megabytes; read them a piece at a time.
    constexpr qint64 chunkSize = 256 * 1024;

    const QString filePath = QString::fromStdString(path);
    // Regular files only: opening a named pipe waits for a writer and a device such
    // as /dev/zero never ends.
    if (path.empty() || !QFileInfo(filePath).isFile()) {
        return {};
    }
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QCryptographicHash hash(QCryptographicHash::Md5);
    QByteArray chunk(static_cast<int>(chunkSize), Qt::Uninitialized);
    while (true) {
        const qint64 read = file.read(chunk.data(), chunkSize);
        if (read < 0) {
            return {};
        }
        if (read == 0) {
            break;
        }
        hash.addData(chunk.constData(), static_cast<int>(read));
    }
    return hash.result().toHex().toStdString();
}

} // namespace Core::Utilities
