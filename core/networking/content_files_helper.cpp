#include "core/networking/content_files_helper.h"

#include "core/utilities/data_directory.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QString>

#include <mutex>

namespace Core::ContentPlaying {

using DataTypes::Playback::ContentType;
using DataTypes::Playback::Track;

namespace {

QString DirectoryPath(const std::string& name)
{
    return Utilities::DataDirectory::FilePath(QString::fromStdString(name));
}

// The data directory as UTF-8, converted again only when it changes: the
// downloader asks for several names of every file it fetches. Never destroyed,
// so that a file dropped while the process shuts down still finds it.
std::string DataDirectoryUtf8()
{
    struct Converted
    {
        std::mutex mutex;
        QString directory;
        std::string utf8;
    };
    static Converted* const converted = new Converted;
    const QString current = Utilities::DataDirectory::Path();
    const std::lock_guard<std::mutex> lock(converted->mutex);
    if (current != converted->directory || converted->utf8.empty()) {
        converted->directory = current;
        converted->utf8 = current.toStdString();
    }
    return converted->utf8;
}

} // namespace

std::string ContentFilesHelper::FilenameForTrack(const Track& track)
{
    const std::string& path = track.path;
    const std::size_t lastSeparator = path.find_last_of("/\\");
    const std::string fileName = lastSeparator == std::string::npos ? path : path.substr(lastSeparator + 1);
    const std::string directory = track.contentType == ContentType::Clip
                                      ? "ads"
                                      : DataTypes::Playback::ContentTypeToString(track.contentType);
    return DataDirectoryUtf8() + "/" + directory + "/" + fileName;
}

std::string ContentFilesHelper::TemporaryFilenameForTrack(const Track& track)
{
    return FilenameForTrack(track) + "tmp";
}

bool ContentFilesHelper::FileForTrackExists(const Track& track)
{
    return QFileInfo(QString::fromStdString(FilenameForTrack(track))).isFile();
}

void ContentFilesHelper::DropContentFile(const Track& track)
{
    QFile::remove(QString::fromStdString(FilenameForTrack(track)));
}

void ContentFilesHelper::DropContentFiles()
{
    for (const auto& name : ContentDirectoryNames()) {
        QDir(DirectoryPath(name)).removeRecursively();
    }
}

std::vector<std::string> ContentFilesHelper::ContentDirectoryNames()
{
    return {"ads", "music", "video", "photo"};
}

void ContentFilesHelper::DropUnnecessaryContentFiles(const std::vector<Track>& needed)
{
    QSet<QString> keep;
    keep.reserve(static_cast<int>(needed.size()));
    for (const auto& track : needed) {
        keep.insert(QString::fromStdString(FilenameForTrack(track)));
    }
    for (const auto& name : ContentDirectoryNames()) {
        QDirIterator entries(DirectoryPath(name), QDir::Files | QDir::Hidden | QDir::System,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            const QString file = entries.next();
            if (!keep.contains(file)) {
                QFile::remove(file);
            }
        }
    }
}

} // namespace Core::ContentPlaying
