#include "core/networking/content_downloader.h"

#include "core/content_playing/playable_period.h"
#include "core/networking/content_files_helper.h"
#include "core/utilities/logger.h"

#include <QDir>
#include <QFileInfo>
#include <QNetworkReply>
#include <QUrl>

#include <algorithm>
#include <exception>

namespace Core::Networking {

using ContentPlaying::ContentFilesHelper;
using DataTypes::Playback::ContentType;
using DataTypes::Playback::Track;
using Utilities::Logger;

namespace {

bool StartsWith(const std::string& text, const char* prefix)
{
    return text.rfind(prefix, 0) == 0;
}

std::string FileNameOf(const QString& path)
{
    return QFileInfo(path).fileName().toStdString();
}

} // namespace

ContentDownloader::DownloadTask::DownloadTask(const Track& taskTrack, ContentType taskType, int taskPriority)
    : track(taskTrack)
    , type(taskType)
    , priority(taskPriority)
{
}

ContentDownloader::ContentDownloader(ContentDownloaderObserver* downloadObserver, QObject* parent)
    : QObject(parent)
    , observer(downloadObserver)
{
}

ContentDownloader::~ContentDownloader()
{
    // Leaves no temporary file behind and no reply calling back into a dead object.
    StopDownloading();
}

void ContentDownloader::SetDomains(const std::vector<std::string>& newDomains)
{
    domains = newDomains;
}

void ContentDownloader::SetObjectCode(const std::string& code)
{
    objectCode = code;
}

void ContentDownloader::DownloadFilesForPeriod(const ContentPlaying::PlayablePeriod& period)
{
    // Each under its own kind: a period's tracks come from several blocks.
    for (const auto& track : period.GetAllTracksList()) {
        DownloadFileForTrack(track, track.contentType);
    }
}

void ContentDownloader::DownloadTracks(const std::vector<Track>& tracks, const ContentType& type)
{
    for (const auto& track : tracks) {
        DownloadFileForTrack(track, type);
    }
}

void ContentDownloader::DownloadFileForTrack(const Track& track, const ContentType& type)
{
    if (ContentFilesHelper::FileForTrackExists(track)) {
        return;
    }
    const auto sameTask = [&track, &type](const DownloadTask& task) {
        return task.track.id == track.id && task.type == type;
    };
    if (std::any_of(queue.begin(), queue.end(), sameTask) || (currentReply && sameTask(currentTask))) {
        return;
    }
    queue.emplace_back(track, type, PriorityFromContentType(type));
    if (!checkingDomain && !downloading) {
        FindAvailableDomain();
    }
}

void ContentDownloader::StopDownloading()
{
    queue.clear();
    checkingDomain = false;
    ++domainSearch;
    DropReply();
    DropOutputFile();
    // Nothing runs any more: the next queued track has to be able to start again.
    downloading = false;
}

bool ContentDownloader::IsIdle() const
{
    return !checkingDomain && !downloading;
}

int ContentDownloader::PriorityFromContentType(const ContentType& type)
{
    const int value = static_cast<int>(type);
    return value < 3 ? 40 - 10 * value : 10;
}

std::string ContentDownloader::UrlForTask(const DownloadTask& task, const std::string& domain,
                                          const std::string& objectCode)
{
    const std::string& path = task.track.path;
    if (StartsWith(path, "http:") || StartsWith(path, "https:")) {
        return path;
    }
    return domain + objectCode + "/" + DataTypes::Playback::ContentTypeToString(task.type) + "/" + path;
}

QNetworkRequest ContentDownloader::CreateDownloadRequest(const QUrl& url)
{
    QNetworkRequest request(url);
    request.setTransferTimeout(StallTimeoutMs);
    // Full addresses may point at a CDN that redirects; never from HTTPS to HTTP.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    return request;
}

void ContentDownloader::FindAvailableDomain()
{
    checkingDomain = true;
    const unsigned search = ++domainSearch;
    hostChecker.CheckHostsAvailability(
        domains,
        [this, search](const std::string& found) {
            if (search != domainSearch) {
                return;
            }
            checkingDomain = false;
            domain = found;
            StartNewDownloadTask();
        },
        [this, search] {
            if (search == domainSearch) {
                checkingDomain = false;
            }
        });
}

void ContentDownloader::StartNewDownloadTask()
{
    // One download at a time: a search that ends while one runs leaves it alone.
    if (currentReply) {
        return;
    }
    while (SendNextRequest()) {
        if (OpenCurrentOutputFile()) {
            return;
        }
    }
}

bool ContentDownloader::SendNextRequest()
{
    while (!queue.empty()) {
        downloading = true;
        const auto next = NextQueuedTask();
        currentTask = *next;
        queue.erase(next);
        // Another track with the same file name may have brought it meanwhile.
        if (ContentFilesHelper::FileForTrackExists(currentTask.track)) {
            continue;
        }
        currentUrl = UrlForTask(currentTask, domain, objectCode);
        currentReply =
            networkAccessManager.get(CreateDownloadRequest(QUrl(QString::fromStdString(currentUrl))));
        connect(currentReply, &QNetworkReply::finished, this, &ContentDownloader::DownloadFinished);
        connect(currentReply, &QNetworkReply::readyRead, this, &ContentDownloader::DownloadReadyRead);
        return true;
    }
    downloading = false;
    return false;
}

std::deque<ContentDownloader::DownloadTask>::iterator ContentDownloader::NextQueuedTask()
{
    // The highest priority wins; among equals the one queued first.
    return std::max_element(queue.begin(), queue.end(),
                            [](const auto& a, const auto& b) { return a.priority < b.priority; });
}

bool ContentDownloader::OpenCurrentOutputFile()
{
    // Nothing of the reply is handled before we are back in the event loop, so
    // the file is always open by the time data arrives.
    const QString temporaryName =
        QString::fromStdString(ContentFilesHelper::TemporaryFilenameForTrack(currentTask.track));
    if (!OpenOutputFile(temporaryName)) {
        DropReply();
        Logger::Log("Ошибка при попытке открытия файла на запись " + FileNameOf(temporaryName));
        CountFailedAttempt(currentTask);
        return false;
    }
    pendingData.clear();
    receivedMd5.reset();
    receivedBytes = 0;
    Logger::Log("Начато скачивание файла " + currentUrl);
    return true;
}

bool ContentDownloader::OpenOutputFile(const QString& name)
{
    outputFile.setFileName(name);
    // Unbuffered, so that a full disk shows at the write that hit it.
    const QIODevice::OpenMode mode = QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered;
    if (outputFile.open(mode)) {
        return true;
    }
    // The folder is made only when missing: the cleanup at sign-out removes it.
    return QDir().mkpath(QFileInfo(name).absolutePath()) && outputFile.open(mode);
}

void ContentDownloader::DownloadReadyRead()
{
    // Until its file is open the data waits in the reply.
    if (sender() != currentReply || !currentReply || !outputFile.isOpen()) {
        return;
    }
    pendingData += currentReply->readAll();
    if (pendingData.size() < PendingLimitBytes || WritePendingData(currentTask)) {
        return;
    }
    // The next attempt may find room once the cleanup has removed files the
    // schedule no longer needs.
    FailCurrentAttempt();
}

bool ContentDownloader::WritePendingData(const DownloadTask& task)
{
    const QByteArray data = pendingData;
    pendingData.clear();
    if (data.isEmpty()) {
        return true;
    }
    if (outputFile.write(data) == data.size()) {
        if (!task.track.md5.empty()) {
            receivedMd5.addData(data);
        }
        receivedBytes += data.size();
        return true;
    }
    // Most often a full disk.
    Logger::Log("Ошибка записи в файл " + outputFile.fileName().toStdString() + ": " +
                outputFile.errorString().toStdString());
    return false;
}

void ContentDownloader::DownloadFinished()
{
    if (sender() != currentReply || !currentReply) {
        return;
    }
    if (currentReply->error() != QNetworkReply::NoError) {
        HandleReplyFinishedError();
        return;
    }
    HandleReplyFinishedNoError();
}

void ContentDownloader::HandleReplyFinishedError()
{
    Logger::Log("Ошибка скачивания файла " + outputFile.fileName().toStdString());
    Logger::Log("\t" + currentReply->errorString().toStdString());
    FailCurrentAttempt();
}

void ContentDownloader::FailCurrentAttempt()
{
    DropReply();
    DropOutputFile();
    CountFailedAttempt(currentTask);
    StartNewDownloadTask();
}

void ContentDownloader::HandleReplyFinishedNoError()
{
    // Qt quietly sends a request again when the server drops the connection
    // mid-body, and may then report half a body as complete: the length the
    // server announced is the only sign of it.
    const QVariant announced = currentReply->header(QNetworkRequest::ContentLengthHeader);
    const qint64 announcedBytes = announced.isValid() ? announced.toLongLong() : -1;
    pendingData += currentReply->readAll();
    DropReply();
    const DownloadTask finished = currentTask;
    const QString temporaryName = outputFile.fileName();

    // The transfer is over, so the next request goes out before this file is
    // written, checked and moved into place: the server and Qt's network thread
    // work meanwhile, and still only one transfer runs at a time. Not when a
    // retry of this file would outrank the next task, since a failed file is
    // retried before any of lower priority.
    if (!queue.empty() && NextQueuedTask()->priority >= finished.priority) {
        SendNextRequest();
    }
    bool accepted = false;
    if (WritePendingData(finished)) {
        outputFile.close();
        try {
            accepted = CheckDownloadedFile(finished, temporaryName, announcedBytes);
        } catch (const std::exception& exception) {
            Logger::Log(std::string("Исключение при скачивании файла: ") + exception.what());
            QFile::remove(temporaryName);
        }
    } else {
        DropOutputFile();
    }
    if (!accepted) {
        CountFailedAttempt(finished);
        ContinueWithNextTask();
        return;
    }

    if (!currentReply) {
        SendNextRequest();
    }
    if (!MoveIntoPlace(finished, temporaryName)) {
        CountFailedAttempt(finished);
    } else if (observer) {
        // The observer may queue more or stop everything.
        observer->FileDownloaderDidFinishDownloadingTrack(finished.track, finished.type);
    }
    ContinueWithNextTask();
}

void ContentDownloader::ContinueWithNextTask()
{
    if (currentReply && !outputFile.isOpen() && OpenCurrentOutputFile()) {
        return;
    }
    StartNewDownloadTask();
}

bool ContentDownloader::CheckDownloadedFile(const DownloadTask& task, const QString& temporaryName,
                                            qint64 announcedBytes)
{
    Logger::Log("Завершено скачивание файла " + temporaryName.toStdString());
    const qint64 size = QFileInfo(temporaryName).size();

    if (size == 0) {
        Logger::Log("\tФайл имеет нулевой размер: " + temporaryName.toStdString());
        QFile::remove(temporaryName);
        return false;
    }
    if (announcedBytes >= 0 && (receivedBytes != announcedBytes || size != announcedBytes)) {
        Logger::Log("\tРазмер скачанного файла (" + std::to_string(size) + ") не совпадает с объявленным (" +
                    std::to_string(announcedBytes) + "): " + temporaryName.toStdString());
        QFile::remove(temporaryName);
        return false;
    }

    const std::string& expectedMd5 = task.track.md5;
    if (!expectedMd5.empty()) {
        const std::string receivedHex = receivedMd5.result().toHex().toStdString();
        Logger::Log("\tmd5 скачанного файла: " + receivedHex);
        Logger::Log("\tтребуемый md5: " + expectedMd5);
        if (receivedHex != expectedMd5) {
            Logger::Log("\tНеверный md5, ошибка скачивания");
            QFile::remove(temporaryName);
            return false;
        }
        Logger::Log("\tСовпадение md5, успешное скачивание");
    }
    return true;
}

bool ContentDownloader::MoveIntoPlace(const DownloadTask& task, const QString& temporaryName)
{
    // A rename is atomic and costs no copying; it only refuses when the final
    // name is taken, and then the file already there is kept, as a copy would.
    const QString finalName = QString::fromStdString(ContentFilesHelper::FilenameForTrack(task.track));
    if (!QFile::rename(temporaryName, finalName)) {
        QFile::copy(temporaryName, finalName);
        QFile::remove(temporaryName);
    }
    if (!QFileInfo(finalName).isFile()) {
        Logger::Log("Ошибка перемещения скачанного файла " + temporaryName.toStdString() + " в " +
                    finalName.toStdString());
        return false;
    }
    return true;
}

void ContentDownloader::CountFailedAttempt(DownloadTask task)
{
    ++task.attempts;
    if (task.attempts < MaximumAttempts) {
        Logger::Log("Количество попыток скачивания не превышено, добавляем в очередь");
        queue.push_back(std::move(task));
    } else {
        Logger::Log("Количество попыток скачивания превышено, игнорируем скачивание файла");
    }
}

void ContentDownloader::DropReply()
{
    if (!currentReply) {
        return;
    }
    QNetworkReply* reply = currentReply;
    currentReply = nullptr;
    disconnect(reply, nullptr, this, nullptr);
    if (reply->isRunning()) {
        reply->abort();
    }
    reply->deleteLater();
}

void ContentDownloader::DropOutputFile()
{
    pendingData.clear();
    if (outputFile.isOpen()) {
        outputFile.close();
        outputFile.remove();
    }
}

} // namespace Core::Networking
