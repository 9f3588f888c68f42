#pragma once

#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/track.h"
#include "core/networking/content_downloader_observer.h"
#include "core/networking/host_checker.h"

#include <QCryptographicHash>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QObject>

#include <deque>
#include <string>
#include <vector>

class QNetworkReply;
class QUrl;

namespace Core::ContentPlaying {
class PlayablePeriod;
}

namespace Core::Networking {

// Fills the media cache. Tasks wait in a queue; the first download domain whose
// host resolves is chosen once, then files come down one at a time, advertising
// first, then music, video and photos, each into "<name>tmp" beside its final
// name. Only a file whose size and MD5 check out is moved into place, so the
// final name never holds half a file, even if the process is killed. A failed
// attempt (network, write, zero size, digest) is retried until the file has
// failed three times; then it waits until it is queued again.
//
// Every step goes to the event log, which support reads to find out why a point
// of sale is missing a file. GUI thread only.
class ContentDownloader : public QObject
{
    Q_OBJECT

public:
    struct DownloadTask
    {
        DownloadTask() = default;
        DownloadTask(const DataTypes::Playback::Track& track, DataTypes::Playback::ContentType type,
                     int priority);

        DataTypes::Playback::Track track;
        DataTypes::Playback::ContentType type = DataTypes::Playback::ContentType::Clip;
        int priority = 0;
        int attempts = 0;
    };

    static constexpr int MaximumAttempts = 3;
    // A download that receives nothing for this long fails and is retried, so a
    // stalled connection cannot hold up the whole queue.
    static constexpr int StallTimeoutMs = 30000;
    // Received data is written and hashed in pieces of at least this size: fewer
    // writes for large files, and a small file's last piece waits until the next
    // request has gone out.
    static constexpr int PendingLimitBytes = 256 * 1024;

    explicit ContentDownloader(ContentDownloaderObserver* observer, QObject* parent = nullptr);
    ~ContentDownloader() override;

    ContentDownloader(const ContentDownloader&) = delete;
    ContentDownloader& operator=(const ContentDownloader&) = delete;

    // The configuration's download domains, tried in this order.
    void SetDomains(const std::vector<std::string>& domains);
    // The signed-in playback object's code, a segment of every download URL; the
    // user environment sets it, and it stays empty without a signed-in object.
    void SetObjectCode(const std::string& code);

    // The media of the period that plays now, each track under its own kind. Queued
    // before the rest of the schedule, it comes down first within each kind.
    void DownloadFilesForPeriod(const ContentPlaying::PlayablePeriod& period);
    void DownloadTracks(const std::vector<DataTypes::Playback::Track>& tracks,
                        const DataTypes::Playback::ContentType& type);
    // Queues the track unless its file is cached or it is queued already.
    void DownloadFileForTrack(const DataTypes::Playback::Track& track,
                              const DataTypes::Playback::ContentType& type);
    // Forgets the queue and abandons the running download with its temporary file.
    void StopDownloading();

    // Neither looking for a domain nor downloading.
    bool IsIdle() const;

    // Advertising 40, music 30, video 20, photo 10.
    static int PriorityFromContentType(const DataTypes::Playback::ContentType& type);
    // A server path that is a whole "http:" or "https:" address is used as it is;
    // any other is looked for under the domain, the object's code and the type.
    static std::string UrlForTask(const DownloadTask& task, const std::string& domain,
                                  const std::string& objectCode);
    // What every download is sent with.
    static QNetworkRequest CreateDownloadRequest(const QUrl& url);

private slots:
    void DownloadReadyRead();
    void DownloadFinished();

private:
    void FindAvailableDomain();
    // Starts the next queued task, skipping and counting those whose file cannot
    // be opened.
    void StartNewDownloadTask();
    // Sends the request of the next queued task; false when none is left.
    bool SendNextRequest();
    // The queued task to start next; the queue must not be empty.
    std::deque<DownloadTask>::iterator NextQueuedTask();
    // After a finished file: opens the file of a request already sent, or
    // starts the next task.
    void ContinueWithNextTask();
    // Opens the current task's temporary file; on failure drops its request and
    // counts the attempt.
    bool OpenCurrentOutputFile();
    // Opens the temporary file for writing, making its folder when missing.
    bool OpenOutputFile(const QString& name);
    // Writes the data held back into the task's file, hashing it when the task
    // has a digest to check; false, with the error logged, when the write failed.
    bool WritePendingData(const DownloadTask& task);
    void HandleReplyFinishedError();
    // Abandons the running transfer with its temporary file, counts the attempt
    // and goes on with the queue.
    void FailCurrentAttempt();
    void HandleReplyFinishedNoError();
    // Size and digest of a finished temporary file; a file that fails is removed.
    bool CheckDownloadedFile(const DownloadTask& task, const QString& temporaryName, qint64 announcedBytes);
    bool MoveIntoPlace(const DownloadTask& task, const QString& temporaryName);
    // Counts a failed attempt and queues the task again while attempts are left.
    // The caller starts the next task.
    void CountFailedAttempt(DownloadTask task);
    void DropReply();
    void DropOutputFile();

    ContentDownloaderObserver* observer;
    bool checkingDomain = false;
    bool downloading = false;
    // Bumped by StopDownloading, so that the answer of an abandoned domain
    // search cannot start a second download beside a newer one.
    unsigned domainSearch = 0;
    HostChecker hostChecker;
    std::vector<std::string> domains;
    std::string domain;
    std::string objectCode;
    std::deque<DownloadTask> queue;
    DownloadTask currentTask;
    std::string currentUrl;
    QNetworkAccessManager networkAccessManager;
    QNetworkReply* currentReply = nullptr;
    QFile outputFile;
    // Received, not yet written nor hashed.
    QByteArray pendingData;
    // The digest is taken as the bytes arrive, which spares reading the file
    // back; it is the digest of exactly what was written.
    QCryptographicHash receivedMd5{QCryptographicHash::Md5};
    qint64 receivedBytes = 0;
};

} // namespace Core::Networking
