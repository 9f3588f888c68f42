#include "tools/reference_service/content_library.h"

#include "tools/reference_service/configuration_template.h"
#include "tools/reference_service/json_values.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

namespace ReferenceService {

namespace {

constexpr qint64 MaximumManifestSize = 16 * 1024 * 1024;

} // namespace

ContentLibrary::ContentLibrary(const QString& directory)
    : root(directory.isEmpty() ? QString() : QDir(directory).absolutePath())
    , canonicalRoot(directory.isEmpty() ? QString() : QFileInfo(directory).canonicalFilePath())
{
    if (!canonicalRoot.isEmpty()) {
        LoadManifest();
    }
}

QString ContentLibrary::Directory() const
{
    return root;
}

ContentLibrary::FileFacts ContentLibrary::Facts(const QString& relativePath) const
{
    FileFacts facts;
    if (canonicalRoot.isEmpty() || !ConfigurationTemplate::IsSafeRelativePath(relativePath)) {
        return facts;
    }
    const QString path = Resolve(relativePath.split(QLatin1Char('/')));
    if (path.isEmpty()) {
        return facts;
    }
    const QFileInfo info(path);
    facts.exists = true;
    facts.size = info.size();
    const std::int64_t modified = info.lastModified().toMSecsSinceEpoch();
    {
        std::lock_guard<std::mutex> lock(cacheMutex);
        const auto cached = digests.constFind(path);
        if (cached != digests.constEnd() && cached->size == facts.size && cached->modified == modified) {
            facts.md5 = cached->md5;
            return facts;
        }
    }
    // Hashing runs without the lock, so one large new file does not hold up the
    // replies about the others; two threads hashing the same file agree anyway.
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        facts.exists = false;
        facts.size = 0;
        return facts;
    }
    QCryptographicHash hash(QCryptographicHash::Md5);
    if (!hash.addData(&file)) {
        facts.exists = false;
        facts.size = 0;
        return facts;
    }
    facts.md5 = QString::fromLatin1(hash.result().toHex());
    std::lock_guard<std::mutex> lock(cacheMutex);
    digests.insert(path, CachedDigest{facts.size, modified, facts.md5});
    return facts;
}

QString ContentLibrary::Resolve(const QStringList& segments) const
{
    if (canonicalRoot.isEmpty() || segments.isEmpty()) {
        return QString();
    }
    for (const QString& segment : segments) {
        if (segment.isEmpty() || segment == QLatin1String(".") || segment == QLatin1String("..") ||
            segment.contains(QLatin1Char('/')) || segment.contains(QLatin1Char('\\')) ||
            segment.contains(QChar(0))) {
            return QString();
        }
    }
    const QFileInfo info(canonicalRoot + QLatin1Char('/') + segments.join(QLatin1Char('/')));
    if (!info.isFile()) {
        return QString();
    }
    // A symbolic link inside the folder must not lead out of it.
    const QString canonical = info.canonicalFilePath();
    if (!canonical.startsWith(canonicalRoot + QLatin1Char('/'))) {
        return QString();
    }
    return canonical;
}

QJsonObject ContentLibrary::ManifestEntry(const QString& relativePath) const
{
    return manifest.value(relativePath);
}

QString ContentLibrary::ManifestProblem() const
{
    return manifestProblem;
}

void ContentLibrary::LoadManifest()
{
    QFile file(canonicalRoot + QStringLiteral("/manifest.json"));
    if (!file.exists()) {
        return;
    }
    if (file.size() > MaximumManifestSize || !file.open(QIODevice::ReadOnly)) {
        manifestProblem =
            QStringLiteral("manifest.json is unreadable or larger than 16 MiB; titles are not taken from it");
        return;
    }
    QString error;
    const auto document = JsonValues::ParseObject(file.readAll(), &error);
    if (!document || !document->value(QStringLiteral("files")).isArray()) {
        manifestProblem =
            QStringLiteral("manifest.json is not an object with a \"files\" array (%1); titles are "
                           "not taken from it")
                .arg(error.isEmpty() ? QStringLiteral("no \"files\"") : error);
        return;
    }
    for (const QJsonValue& value : document->value(QStringLiteral("files")).toArray()) {
        const QJsonObject entry = value.toObject();
        const QString path = entry.value(QStringLiteral("path")).toString();
        if (!path.isEmpty()) {
            manifest.insert(path, entry);
        }
    }
}

} // namespace ReferenceService
