#include "tests/support/test_media.h"

#include <QDir>
#include <QFileInfo>
#include <QtGlobal>

namespace Tests {

QString TestMedia::Directory()
{
    return qEnvironmentVariable("ZELMAR_TEST_MEDIA_DIR");
}

QString TestMedia::Path(const QString& name)
{
    const QString directory = Directory();
    if (directory.isEmpty()) {
        qWarning("ZELMAR_TEST_MEDIA_DIR is not set: register the test with NEEDS media");
        return {};
    }
    const QString path = QDir(directory).filePath(name);
    if (!QFileInfo::exists(path)) {
        qWarning("test media %s is missing: did the fixture.media.make test fail?", qUtf8Printable(path));
        return {};
    }
    return path;
}

} // namespace Tests
