#pragma once

#include <QHash>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <mutex>

namespace ReferenceService {

// The content folder the media are served from. It answers what the configuration
// needs to know about a file (whether it is there, its size and MD5, remembered
// while the file stays unchanged) and resolves download paths without ever
// leaving the folder. An optional "manifest.json" in the folder, as the demo
// content generator writes it, supplies titles and artists.
class ContentLibrary
{
public:
    struct FileFacts
    {
        bool exists = false;
        std::int64_t size = 0;
        QString md5;
    };

    // An empty directory means no content at all: every file is missing.
    explicit ContentLibrary(const QString& directory);

    QString Directory() const;
    // Facts about a path relative to the folder ("music/track01.mp3").
    FileFacts Facts(const QString& relativePath) const;
    // The absolute path of a regular file below the folder named by decoded URL
    // segments, or an empty string when there is none or the segments would lead
    // out of the folder.
    QString Resolve(const QStringList& segments) const;
    // The manifest's entry for a relative path; empty when there is none.
    QJsonObject ManifestEntry(const QString& relativePath) const;
    // Problems met while reading the manifest, for the start-up messages.
    QString ManifestProblem() const;

private:
    struct CachedDigest
    {
        std::int64_t size = 0;
        std::int64_t modified = 0;
        QString md5;
    };

    void LoadManifest();

    QString root;
    QString canonicalRoot;
    QHash<QString, QJsonObject> manifest;
    QString manifestProblem;
    mutable std::mutex cacheMutex;
    mutable QHash<QString, CachedDigest> digests;
};

} // namespace ReferenceService
