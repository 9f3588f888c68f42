#include "core/networking/content_files_helper.h"

#include "core/utilities/data_directory.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QString>

namespace Core::ContentPlaying {

using DataTypes::Playback::ContentType;
using DataTypes::Playback::Track;

namespace {

QString DirectoryPath(const std::string& name)
{
    return Utilities::DataDirectory::FilePath(QString::fromStdString(name));
}

// The data directory as UTF-8, converted again only when it changes: the
// downloader asks for several names of every file it fetches.
const std::string& DataDirectoryUtf8()
{
    thread_local QString directory;
    thread_local std::string utf8;
    const QString current = Utilities::DataDirectory::Path();
    if (current != directory || utf8.empty()) {
        directory = current;
        utf8 = current.toStdString();
    }
    return utf8;
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
