// Starts one download into the data directory and freezes as soon as part of it
// is on disk, printing "partial", so that a test can kill a player mid-download.
// Prints "finished" instead if the whole file arrived first.
//
//   content_download_helper DOMAIN OBJECT_CODE MUSIC_PATH

#include "core/networking/content_downloader.h"
#include "core/networking/content_files_helper.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTimer>

#include <cstdio>
#include <unistd.h>

namespace {

class ExitingObserver : public Core::Networking::ContentDownloaderObserver
{
public:
    void FileDownloaderDidFinishDownloadingTrack(const Core::DataTypes::Playback::Track&,
                                                 const Core::DataTypes::Playback::ContentType&) override
    {
        std::puts("finished");
        std::fflush(stdout);
        QCoreApplication::exit(0);
    }
};

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4) {
        std::fprintf(stderr, "usage: content_download_helper DOMAIN OBJECT_CODE MUSIC_PATH\n");
        return 2;
    }
    Core::DataTypes::Playback::Track track;
    track.id = 1;
    track.path = arguments.at(3).toStdString();
    track.contentType = Core::DataTypes::Playback::ContentType::Music;

    ExitingObserver observer;
    Core::Networking::ContentDownloader downloader(&observer);
    downloader.SetDomains({arguments.at(1).toStdString()});
    downloader.SetObjectCode(arguments.at(2).toStdString());
    downloader.DownloadFileForTrack(track, track.contentType);

    const QString temporary =
        QString::fromStdString(Core::ContentPlaying::ContentFilesHelper::TemporaryFilenameForTrack(track));
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&temporary] {
        if (QFileInfo(temporary).size() > 0) {
            std::puts("partial");
            std::fflush(stdout);
            // Frozen with the file half written, until the test kills the process.
            for (;;) {
                pause();
            }
        }
    });
    poll.start(0);
    return application.exec();
}
