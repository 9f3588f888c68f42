#include "tests/core/content_playing/playback_test_tracks.h"

#include "core/networking/content_files_helper.h"
#include "tests/support/test_media.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace Tests {

using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Track;

Track PlaybackTestTracks::Make(int id, ContentType type, const QString& fileName, const QString& title)
{
    Track track;
    track.id = id;
    track.contentType = type;
    track.path = QStringLiteral("/media/%1/%2").arg(id).arg(fileName).toStdString();
    track.name = (title.isEmpty() ? fileName : title).toStdString();
    track.author = "Тест";
    return track;
}

Track PlaybackTestTracks::Cached(int id, ContentType type, const QString& mediaName, const QString& title)
{
    const Track track = Make(id, type, mediaName, title);
    const QString source = TestMedia::Path(mediaName);
    const QString target =
        QString::fromStdString(Core::ContentPlaying::ContentFilesHelper::FilenameForTrack(track));
    QFile::remove(target);
    if (source.isEmpty() || !QDir().mkpath(QFileInfo(target).absolutePath()) ||
        !QFile::copy(source, target)) {
        qWarning("cannot copy %s to %s", qUtf8Printable(source), qUtf8Printable(target));
    }
    return track;
}

} // namespace Tests
