#include "core/networking/content_downloader.h"
#include "core/networking/content_files_helper.h"
#include "core/utilities/data_directory.h"
#include "core/utilities/logger.h"
#include "tests/support/reference_service.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <map>
#include <memory>

using Core::ContentPlaying::ContentFilesHelper;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Track;
using Core::Networking::ContentDownloader;
using Tests::ServiceFault;

Q_DECLARE_METATYPE(Tests::ServiceFault)

namespace {

class RecordingObserver : public Core::Networking::ContentDownloaderObserver
{
public:
    void FileDownloaderDidFinishDownloadingTrack(const Track& track, const ContentType& type) override
    {
        finished << QStringLiteral("%1 %2").arg(
            QString::fromStdString(track.path),
            QString::fromStdString(Core::DataTypes::Playback::ContentTypeToString(type)));
        if (onFinished) {
            auto once = std::move(onFinished);
            onFinished = nullptr;
            once();
        }
    }

    QStringList finished;
    // Runs inside the next callback, as the player's own reactions do.
    std::function<void()> onFinished;
};

QByteArray Pattern(int size, int seed)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = static_cast<quint32>(seed) * 2654435761u + 1u;
    for (int i = 0; i < size; ++i) {
        state = state * 1664525u + 1013904223u;
        bytes[i] = static_cast<char>(state >> 24);
    }
    return bytes;
}

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString EventLog()
{
    return QString::fromUtf8(ReadFile(QString::fromStdString(Core::Utilities::Logger::GetLogFileName())));
}

// Every file under the cache folders, relative to the data directory.
QStringList CachedFiles()
{
    QStringList files;
    const QDir root(Core::Utilities::DataDirectory::Path());
    for (const auto& name : ContentFilesHelper::ContentDirectoryNames()) {
        QDirIterator entries(root.filePath(QString::fromStdString(name)), QDir::Files | QDir::System,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            files << root.relativeFilePath(entries.next());
        }
    }
    files.sort();
    return files;
}

} // namespace

// The media downloader against the reference service: what it fetches, in which
// order, from where, and what it leaves in the cache after every kind of failure.
class ContentDownloaderTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::map<QString, QByteArray> files;
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<RecordingObserver> observer;
    std::unique_ptr<ContentDownloader> downloader;

    // A track as the configuration describes it: `path` under the content folder
    // of its type, its digest and size taken from the file.
    Track MakeTrack(int id, const QString& type, const QString& path, bool withMd5 = true) const
    {
        Track track;
        track.id = id;
        track.path = path.toStdString();
        track.contentType = Core::DataTypes::Playback::ContentTypeFromString(type.toStdString());
        const auto file = files.find(type + "/" + path);
        if (file != files.end()) {
            track.fileSize = file->second.size();
            if (withMd5) {
                track.md5 =
                    QCryptographicHash::hash(file->second, QCryptographicHash::Md5).toHex().toStdString();
            }
        }
        return track;
    }

    QString CachePath(const Track& track) const
    {
        return QString::fromStdString(ContentFilesHelper::FilenameForTrack(track));
    }

    QString TemporaryPath(const Track& track) const
    {
        return QString::fromStdString(ContentFilesHelper::TemporaryFilenameForTrack(track));
    }

    QStringList MediaTargets(int from = 0)
    {
        QStringList targets;
        for (const QJsonValue& request : service->Requests(from)) {
            targets << request.toObject().value(QStringLiteral("target")).toString();
        }
        return targets;
    }

    void AddFault(const ServiceFault& fault)
    {
        QVERIFY2(service->AddFault(fault) > 0, qPrintable(service->ErrorString()));
    }

    void WaitUntilIdle()
    {
        QTRY_VERIFY_WITH_TIMEOUT(downloader->IsIdle(), Tests::Timeouts::Process);
    }

    void WriteContent(const QString& name, const QByteArray& bytes)
    {
        QVERIFY(QDir(content.path()).mkpath(QFileInfo(name).path()));
        QFile file(content.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), bytes.size());
        files[name] = bytes;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(content.isValid());
        WriteContent(QStringLiteral("clip/ad.mp3"), Pattern(30000, 1));
        WriteContent(QStringLiteral("clip/a.mp3"), Pattern(200000, 2));
        WriteContent(QStringLiteral("music/a.mp3"), Pattern(200000, 2));
        WriteContent(QStringLiteral("music/b.mp3"), Pattern(100000, 3));
        WriteContent(QStringLiteral("music/sub/c.mp3"), Pattern(50000, 4));
        WriteContent(QStringLiteral("video/v.mp4"), Pattern(300000, 5));
        WriteContent(QStringLiteral("photo/p.jpg"), Pattern(20000, 6));
        WriteContent(QStringLiteral("music/large.mp3"), Pattern(4 * 1024 * 1024, 8));
        // Big enough that its download is still running when the helper stops.
        WriteContent(QStringLiteral("music/big.mp3"), Pattern(64 * 1024 * 1024, 7));
        service = std::make_unique<Tests::ReferenceService>(
            Tests::ReferenceService::SourceDirectory() + QStringLiteral("/tests/tools/scenarios/basic"),
            content.path());
        QVERIFY2(service->Start(), qPrintable(service->ErrorString()));
    }

    void init()
    {
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        observer = std::make_unique<RecordingObserver>();
        downloader = std::make_unique<ContentDownloader>(observer.get());
        downloader->SetDomains({service->MediaDomain().toStdString()});
        downloader->SetObjectCode("shop1");
    }

    void cleanup()
    {
        downloader.reset();
        observer.reset();
        dataDirectory.reset();
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    // Advertising first, then music, video and photos; the first queued first
    // among equals. Each file lands under its type's folder, checked.
    void downloadsByPriorityIntoTheCache()
    {
        const Track photo = MakeTrack(31, "photo", "p.jpg");
        const Track musicA = MakeTrack(1, "music", "a.mp3");
        const Track ad = MakeTrack(41, "clip", "ad.mp3");
        const Track video = MakeTrack(21, "video", "v.mp4");
        const Track musicC = MakeTrack(3, "music", "sub/c.mp3");
        downloader->DownloadFileForTrack(photo, ContentType::Photo);
        downloader->DownloadTracks({musicA, musicC}, ContentType::Music);
        downloader->DownloadFileForTrack(ad, ContentType::Clip);
        downloader->DownloadFileForTrack(video, ContentType::Video);
        QVERIFY(!downloader->IsIdle());
        WaitUntilIdle();

        QCOMPARE(observer->finished, (QStringList{"ad.mp3 clip", "a.mp3 music", "sub/c.mp3 music",
                                                  "v.mp4 video", "p.jpg photo"}));
        QCOMPARE(MediaTargets(), (QStringList{"/media/shop1/clip/ad.mp3", "/media/shop1/music/a.mp3",
                                              "/media/shop1/music/sub/c.mp3", "/media/shop1/video/v.mp4",
                                              "/media/shop1/photo/p.jpg"}));
        QCOMPARE(CachedFiles(),
                 (QStringList{"ads/ad.mp3", "music/a.mp3", "music/c.mp3", "photo/p.jpg", "video/v.mp4"}));
        QCOMPARE(ReadFile(CachePath(ad)), files.at("clip/ad.mp3"));
        QCOMPARE(ReadFile(CachePath(musicC)), files.at("music/sub/c.mp3"));
        QCOMPARE(ReadFile(CachePath(video)), files.at("video/v.mp4"));

        const QString log = EventLog();
        const QString expectedEntry =
            QStringLiteral("Начато скачивание файла %1shop1/music/a.mp3\n\n").arg(service->MediaDomain());
        QVERIFY2(log.contains(expectedEntry), qPrintable(log));
        const QString md5 = QString::fromStdString(musicA.md5);
        for (const QString& line :
             {QStringLiteral("Завершено скачивание файла ") + TemporaryPath(musicA),
              QStringLiteral("\tmd5 скачанного файла: ") + md5, QStringLiteral("\tтребуемый md5: ") + md5,
              QStringLiteral("\tСовпадение md5, успешное скачивание"),
              QStringLiteral("Хост доступен: ") + service->MediaDomain()}) {
            QVERIFY2(log.contains(line + "\n\n"), qPrintable(line));
        }
    }

    void cachedOrQueuedTracksAreNotQueuedAgain()
    {
        // Every download fails, so each queued task shows as three requests.
        AddFault(ServiceFault(QStringLiteral("media"), QStringLiteral("not_found")));
        const Track musicA = MakeTrack(1, "music", "a.mp3");
        downloader->DownloadFileForTrack(musicA, ContentType::Music);
        downloader->DownloadFileForTrack(musicA, ContentType::Music);
        // The same track under another type is another task.
        downloader->DownloadFileForTrack(musicA, ContentType::Clip);
        WaitUntilIdle();
        QCOMPARE(MediaTargets(), (QStringList{"/media/shop1/clip/a.mp3", "/media/shop1/clip/a.mp3",
                                              "/media/shop1/clip/a.mp3", "/media/shop1/music/a.mp3",
                                              "/media/shop1/music/a.mp3", "/media/shop1/music/a.mp3"}));
        QCOMPARE(EventLog().count(QStringLiteral("Количество попыток скачивания превышено")), 2);

        // A file already in the cache asks for nothing at all.
        const Track musicB = MakeTrack(2, "music", "b.mp3");
        QVERIFY(QDir().mkpath(QFileInfo(CachePath(musicB)).path()));
        QFile cached(CachePath(musicB));
        QVERIFY(cached.open(QIODevice::WriteOnly));
        cached.write("already here");
        cached.close();
        const int before = service->Requests().size();
        downloader->DownloadFileForTrack(musicB, ContentType::Music);
        QVERIFY(downloader->IsIdle());
        QCOMPARE(service->Requests().size(), before);
    }

    void failedAttemptsAreRetried_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("failures");
        QTest::addColumn<QString>("logLine");
        const QString temporary = QStringLiteral("%TMP%");
        for (int failures : {2, 3}) {
            const QString outcome =
                failures == 2 ? QStringLiteral(", then arrives") : QStringLiteral(", given up");
            QTest::addRow("HTTP 500%s", qPrintable(outcome))
                << "status" << failures << "Ошибка скачивания файла " + temporary;
            QTest::addRow("HTTP 404%s", qPrintable(outcome))
                << "not_found" << failures << "Ошибка скачивания файла " + temporary;
            QTest::addRow("wrong bytes%s", qPrintable(outcome))
                << "wrong_md5" << failures << QStringLiteral("\tНеверный md5, ошибка скачивания");
            QTest::addRow("empty%s", qPrintable(outcome))
                << "empty" << failures << "\tФайл имеет нулевой размер: " + temporary;
        }
    }

    void failedAttemptsAreRetried()
    {
        QFETCH(QString, kind);
        QFETCH(int, failures);
        QFETCH(QString, logLine);
        ServiceFault fault(QStringLiteral("media/music/a.mp3"), kind, failures);
        fault.status = 500;
        AddFault(fault);
        const Track musicA = MakeTrack(1, "music", "a.mp3");
        logLine.replace(QStringLiteral("%TMP%"), TemporaryPath(musicA));

        downloader->DownloadFileForTrack(musicA, ContentType::Music);
        WaitUntilIdle();

        QCOMPARE(service->RequestsTo(QStringLiteral("media/music/a.mp3")).size(), 3);
        const QString log = EventLog();
        QVERIFY2(log.count(logLine + "\n\n") == failures, qPrintable(log));
        QCOMPARE(log.count(QStringLiteral("Количество попыток скачивания не превышено, добавляем в очередь")),
                 2);
        if (failures == 2) {
            QCOMPARE(observer->finished, QStringList{"a.mp3 music"});
            QCOMPARE(ReadFile(CachePath(musicA)), files.at("music/a.mp3"));
            QCOMPARE(CachedFiles(), QStringList{"music/a.mp3"});
        } else {
            QVERIFY(observer->finished.isEmpty());
            QCOMPARE(log.count(QStringLiteral(
                         "Количество попыток скачивания превышено, игнорируем скачивание файла")),
                     1);
            // Nothing half-done or wrong is left to be played.
            QCOMPARE(CachedFiles(), QStringList());
        }
    }

    // The next request goes out while a finished file is still being checked;
    // a file that then fails must still be retried in the order the queue gives:
    // before anything of lower priority, after what was queued before it.
    void aFailedFileIsRetriedInQueueOrder()
    {
        AddFault(ServiceFault(QStringLiteral("media/clip/ad.mp3"), QStringLiteral("wrong_md5"), 1));
        AddFault(ServiceFault(QStringLiteral("media/music/a.mp3"), QStringLiteral("wrong_md5"), 1));
        downloader->DownloadFileForTrack(MakeTrack(41, "clip", "ad.mp3"), ContentType::Clip);
        downloader->DownloadTracks({MakeTrack(1, "music", "a.mp3"), MakeTrack(2, "music", "b.mp3"),
                                    MakeTrack(3, "music", "sub/c.mp3")},
                                   ContentType::Music);
        WaitUntilIdle();
        QCOMPARE(MediaTargets(), (QStringList{"/media/shop1/clip/ad.mp3", "/media/shop1/clip/ad.mp3",
                                              "/media/shop1/music/a.mp3", "/media/shop1/music/b.mp3",
                                              "/media/shop1/music/sub/c.mp3", "/media/shop1/music/a.mp3"}));
        QCOMPARE(observer->finished,
                 (QStringList{"ad.mp3 clip", "b.mp3 music", "sub/c.mp3 music", "a.mp3 music"}));
        QCOMPARE(CachedFiles(), (QStringList{"ads/ad.mp3", "music/a.mp3", "music/b.mp3", "music/c.mp3"}));

        // The event log tells one file's story before the next one's begins.
        const QString log = EventLog();
        const int aFailed = log.indexOf(QStringLiteral("\tНеверный md5, ошибка скачивания"),
                                        log.indexOf(QStringLiteral("music/a.mp3")));
        const int bStarted = log.indexOf(QStringLiteral("Начато скачивание файла ") + service->MediaDomain() +
                                         QStringLiteral("shop1/music/b.mp3"));
        QVERIFY2(aFailed >= 0 && bStarted > aFailed, qPrintable(log));
    }

    // A connection dropped mid-body: Qt may send the request again by itself and
    // may then report half a body as complete. Whatever it does, the cache holds
    // the whole file or nothing, with or without a digest to check.
    void cutTransfersNeverReachTheCache_data()
    {
        QTest::addColumn<int>("cuts");
        QTest::addColumn<bool>("withDigest");
        for (int cuts = 1; cuts <= 6; ++cuts) {
            QTest::addRow("%d cuts, digest", cuts) << cuts << true;
            QTest::addRow("%d cuts, no digest", cuts) << cuts << false;
        }
        QTest::addRow("every request cut, no digest") << 0 << false;
    }

    void cutTransfersNeverReachTheCache()
    {
        QFETCH(int, cuts);
        QFETCH(bool, withDigest);
        AddFault(ServiceFault(QStringLiteral("media/music/a.mp3"), QStringLiteral("close_mid_body"), cuts));
        const Track musicA = MakeTrack(1, "music", "a.mp3", withDigest);
        downloader->DownloadFileForTrack(musicA, ContentType::Music);
        WaitUntilIdle();
        const QString log = EventLog();
        if (observer->finished.isEmpty()) {
            QCOMPARE(CachedFiles(), QStringList());
            QCOMPARE(log.count(QStringLiteral("Количество попыток скачивания превышено")), 1);
        } else {
            QCOMPARE(observer->finished, QStringList{"a.mp3 music"});
            QVERIFY2(ReadFile(CachePath(musicA)) == files.at("music/a.mp3"), qPrintable(log));
            QCOMPARE(CachedFiles(), QStringList{"music/a.mp3"});
        }
        if (cuts == 0) {
            QVERIFY(observer->finished.isEmpty());
        }
    }

    void withoutDigestAnyNonEmptyFileIsTaken()
    {
        AddFault(ServiceFault(QStringLiteral("media/music/a.mp3"), QStringLiteral("wrong_md5"), 1));
        AddFault(ServiceFault(QStringLiteral("media/music/b.mp3"), QStringLiteral("empty"), 1));
        const Track musicA = MakeTrack(1, "music", "a.mp3", false);
        const Track musicB = MakeTrack(2, "music", "b.mp3", false);
        downloader->DownloadTracks({musicA, musicB}, ContentType::Music);
        WaitUntilIdle();
        QCOMPARE(service->RequestsTo(QStringLiteral("media/music/a.mp3")).size(), 1);
        QCOMPARE(ReadFile(CachePath(musicA)).size(), files.at("music/a.mp3").size());
        QVERIFY(ReadFile(CachePath(musicA)) != files.at("music/a.mp3"));
        // An empty file is refused all the same.
        QCOMPARE(service->RequestsTo(QStringLiteral("media/music/b.mp3")).size(), 2);
        QCOMPARE(ReadFile(CachePath(musicB)), files.at("music/b.mp3"));
        QVERIFY(!EventLog().contains(QStringLiteral("md5")));
    }

    // The next file's request goes out while the last one is checked: each file
    // is still checked against its own track.
    void filesWithAndWithoutDigestFollowingEachOther()
    {
        const Track withDigest = MakeTrack(1, "music", "a.mp3");
        const Track withoutDigest = MakeTrack(2, "music", "b.mp3", false);
        const Track withDigestAgain = MakeTrack(3, "music", "sub/c.mp3");
        downloader->DownloadTracks({withDigest, withoutDigest, withDigestAgain}, ContentType::Music);
        WaitUntilIdle();
        QCOMPARE(MediaTargets(), (QStringList{"/media/shop1/music/a.mp3", "/media/shop1/music/b.mp3",
                                              "/media/shop1/music/sub/c.mp3"}));
        QCOMPARE(EventLog().count(QStringLiteral("\tСовпадение md5, успешное скачивание")), 2);
        QCOMPARE(ReadFile(CachePath(withDigest)), files.at("music/a.mp3"));
        QCOMPARE(ReadFile(CachePath(withoutDigest)), files.at("music/b.mp3"));
        QCOMPARE(ReadFile(CachePath(withDigestAgain)), files.at("music/sub/c.mp3"));
    }

    void fullAddressIsFetchedAsItIs()
    {
        Track external = MakeTrack(5, "music", "b.mp3");
        external.path = (service->Origin() + QStringLiteral("files/music/b.mp3")).toStdString();
        downloader->DownloadFileForTrack(external, ContentType::Music);
        WaitUntilIdle();
        QCOMPARE(MediaTargets(), QStringList{"/files/music/b.mp3"});
        QCOMPARE(observer->finished.size(), 1);
        QCOMPARE(ReadFile(CachePath(external)), files.at("music/b.mp3"));
        QCOMPARE(CachedFiles(), QStringList{"music/b.mp3"});
    }

    void theFirstResolvableDomainIsUsed()
    {
        const std::string unknown = "http://zelmar-no-such-domain.invalid/media/";
        downloader->SetDomains({unknown, "no scheme at all", service->MediaDomain().toStdString()});
        downloader->DownloadFileForTrack(MakeTrack(1, "music", "a.mp3"), ContentType::Music);
        WaitUntilIdle();
        QCOMPARE(observer->finished, QStringList{"a.mp3 music"});
        const QString log = EventLog();
        QVERIFY2(log.contains(QStringLiteral("Поиск доступного хоста начат, хосты для проверки (3):\n\t") +
                              QString::fromStdString(unknown) + "\n"),
                 qPrintable(log));
        QVERIFY(log.contains(QStringLiteral("Хост доступен: ") + service->MediaDomain() + "\n\n"));
        QVERIFY(!log.contains(QStringLiteral("Хост доступен: http://zelmar-no-such-domain")));
    }

    // Without a reachable domain the queue waits; the next queued track searches
    // again and brings the waiting ones along.
    void queueWaitsForAReachableDomain()
    {
        downloader->SetDomains({"http://zelmar-no-such-domain.invalid/media/"});
        downloader->DownloadFileForTrack(MakeTrack(1, "music", "a.mp3"), ContentType::Music);
        WaitUntilIdle();
        QVERIFY(EventLog().contains(QStringLiteral("Ни один хост не доступен!!!")));
        QVERIFY(service->Requests().isEmpty());

        downloader->SetDomains({});
        downloader->DownloadFileForTrack(MakeTrack(2, "music", "b.mp3"), ContentType::Music);
        WaitUntilIdle();
        QCOMPARE(EventLog().count(QStringLiteral("Ни один хост не доступен!!!")), 2);
        QVERIFY(service->Requests().isEmpty());

        downloader->SetDomains({service->MediaDomain().toStdString()});
        downloader->DownloadFileForTrack(MakeTrack(31, "photo", "p.jpg"), ContentType::Photo);
        WaitUntilIdle();
        QCOMPARE(observer->finished, (QStringList{"a.mp3 music", "b.mp3 music", "p.jpg photo"}));
    }

    void stoppingAbandonsTheRunningDownload()
    {
        ServiceFault slow(QStringLiteral("media/music/a.mp3"), QStringLiteral("delay"), 1);
        slow.delayMs = 1500;
        AddFault(slow);
        const Track musicA = MakeTrack(1, "music", "a.mp3");
        downloader->DownloadTracks({musicA, MakeTrack(2, "music", "b.mp3")}, ContentType::Music);
        QTRY_COMPARE_WITH_TIMEOUT(service->RequestsTo(QStringLiteral("media/music/a.mp3")).size(), 1,
                                  Tests::Timeouts::Process);
        QVERIFY(QFileInfo::exists(TemporaryPath(musicA)));

        downloader->StopDownloading();
        QVERIFY(downloader->IsIdle());
        QCOMPARE(CachedFiles(), QStringList());

        // Stopped, not stuck: what is queued next comes down.
        downloader->DownloadFileForTrack(MakeTrack(31, "photo", "p.jpg"), ContentType::Photo);
        WaitUntilIdle();
        QCOMPARE(observer->finished, QStringList{"p.jpg photo"});
        QCOMPARE(CachedFiles(), QStringList{"photo/p.jpg"});
        QVERIFY(service->RequestsTo(QStringLiteral("media/music/b.mp3")).isEmpty());
    }

    // The player restarts the downloader from inside the callback when a new
    // period begins: what was queued goes, what it queues then comes down.
    void observerMayStopAndRequeueFromItsCallback()
    {
        const Track ad = MakeTrack(41, "clip", "ad.mp3");
        downloader->DownloadFileForTrack(ad, ContentType::Clip);
        downloader->DownloadTracks({MakeTrack(1, "music", "a.mp3"), MakeTrack(2, "music", "b.mp3")},
                                   ContentType::Music);
        observer->onFinished = [this] {
            downloader->StopDownloading();
            downloader->DownloadFileForTrack(MakeTrack(31, "photo", "p.jpg"), ContentType::Photo);
            downloader->DownloadFileForTrack(MakeTrack(21, "video", "v.mp4"), ContentType::Video);
        };
        WaitUntilIdle();
        QCOMPARE(observer->finished, (QStringList{"ad.mp3 clip", "v.mp4 video", "p.jpg photo"}));
        QCOMPARE(CachedFiles(), (QStringList{"ads/ad.mp3", "photo/p.jpg", "video/v.mp4"}));
    }

    void observerMayQueueMoreFromItsCallback()
    {
        downloader->DownloadTracks({MakeTrack(1, "music", "a.mp3"), MakeTrack(2, "music", "b.mp3")},
                                   ContentType::Music);
        observer->onFinished = [this] {
            downloader->DownloadFileForTrack(MakeTrack(41, "clip", "ad.mp3"), ContentType::Clip);
            // Being downloaded already: not queued a second time.
            downloader->DownloadFileForTrack(MakeTrack(2, "music", "b.mp3"), ContentType::Music);
        };
        WaitUntilIdle();
        QCOMPARE(observer->finished.size(), 3);
        QCOMPARE(observer->finished.first(), QStringLiteral("a.mp3 music"));
        QCOMPARE(CachedFiles(), (QStringList{"ads/ad.mp3", "music/a.mp3", "music/b.mp3"}));
        QCOMPARE(service->RequestsTo(QStringLiteral("media/music/b.mp3")).size(), 1);
    }

    void aFileThatAppearedMeanwhileIsKept()
    {
        ServiceFault slow(QStringLiteral("media/music/a.mp3"), QStringLiteral("delay"), 1);
        slow.delayMs = 300;
        AddFault(slow);
        const Track musicA = MakeTrack(1, "music", "a.mp3");
        downloader->DownloadFileForTrack(musicA, ContentType::Music);
        QTRY_COMPARE_WITH_TIMEOUT(service->RequestsTo(QStringLiteral("media/music/a.mp3")).size(), 1,
                                  Tests::Timeouts::Process);
        QFile meanwhile(CachePath(musicA));
        QVERIFY(meanwhile.open(QIODevice::WriteOnly));
        meanwhile.write("put here by someone else");
        meanwhile.close();
        WaitUntilIdle();
        QCOMPARE(ReadFile(CachePath(musicA)), QByteArray("put here by someone else"));
        QCOMPARE(CachedFiles(), QStringList{"music/a.mp3"});
        QCOMPARE(observer->finished, QStringList{"a.mp3 music"});
    }

    // The temporary file is a way onto a device that is always full. A small
    // file is written once it has all arrived, a large one while it arrives.
    void fullDiskIsAFailedAttempt_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("small") << "a.mp3";
        QTest::newRow("large") << "large.mp3";
    }

    void fullDiskIsAFailedAttempt()
    {
        QFETCH(QString, path);
        QVERIFY2(QFileInfo::exists(QStringLiteral("/dev/full")), "this test needs /dev/full");
        const Track music = MakeTrack(1, "music", path);
        QVERIFY(QDir().mkpath(QFileInfo(TemporaryPath(music)).path()));
        QVERIFY(QFile::link(QStringLiteral("/dev/full"), TemporaryPath(music)));
        downloader->DownloadFileForTrack(music, ContentType::Music);
        WaitUntilIdle();
        const QString log = EventLog();
        QVERIFY2(log.contains(QStringLiteral("Ошибка записи в файл ") + TemporaryPath(music) + ": "),
                 qPrintable(log));
        QCOMPARE(log.count(QStringLiteral("Количество попыток скачивания не превышено")), 1);
        QCOMPARE(observer->finished, QStringList{path + " music"});
        QCOMPARE(ReadFile(CachePath(music)), files.at("music/" + path));
        QCOMPARE(CachedFiles(), QStringList{"music/" + path});
    }

    void unwritableCacheFolderDoesNotStopTheOthers()
    {
        QFile blocker(dataDirectory->FilePath(QStringLiteral("music")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        downloader->DownloadFileForTrack(MakeTrack(1, "music", "a.mp3"), ContentType::Music);
        downloader->DownloadFileForTrack(MakeTrack(31, "photo", "p.jpg"), ContentType::Photo);
        WaitUntilIdle();
        const QString log = EventLog();
        QCOMPARE(log.count(QStringLiteral("Ошибка при попытке открытия файла на запись a.mp3tmp\n\n")), 3);
        QCOMPARE(log.count(QStringLiteral("Количество попыток скачивания превышено")), 1);
        QCOMPARE(observer->finished, QStringList{"p.jpg photo"});
        QCOMPARE(CachedFiles(), QStringList{"photo/p.jpg"});
    }

    // A player killed in the middle of a download leaves one temporary file and
    // never a final one; the next cleanup removes the leftover.
    void killedMidDownloadLeavesOnlyATemporaryFile()
    {
        const QString helper = QStringLiteral(ZELMAR_CONTENT_DOWNLOAD_HELPER);
        QVERIFY2(QFileInfo(helper).isExecutable(), qPrintable("missing helper " + helper));
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(helper, {service->MediaDomain(), QStringLiteral("shop1"), QStringLiteral("big.mp3")});
        QVERIFY2(process.waitForStarted(Tests::Timeouts::Process), qPrintable(process.errorString()));
        QByteArray said;
        QTRY_VERIFY_WITH_TIMEOUT((said += process.readAllStandardOutput()).contains('\n') ||
                                     process.state() == QProcess::NotRunning,
                                 Tests::Timeouts::Process);
        QCOMPARE(said, QByteArray("partial\n"));
        process.kill();
        QVERIFY(process.waitForFinished(Tests::Timeouts::Process));

        const Track big = MakeTrack(9, "music", "big.mp3");
        QCOMPARE(CachedFiles(), QStringList{"music/big.mp3tmp"});
        const qint64 partial = QFileInfo(TemporaryPath(big)).size();
        QVERIFY2(partial > 0 && partial < files.at("music/big.mp3").size(),
                 qPrintable(QString::number(partial)));

        ContentFilesHelper::DropUnnecessaryContentFiles({big});
        QCOMPARE(CachedFiles(), QStringList());
        downloader->DownloadFileForTrack(big, ContentType::Music);
        WaitUntilIdle();
        QCOMPARE(observer->finished, QStringList{"big.mp3 music"});
        QCOMPARE(CachedFiles(), QStringList{"music/big.mp3"});
    }

    // Waiting out the real stall timeout would take half a minute: check that every
    // download carries it instead.
    void downloadsGiveUpOnAStalledTransfer()
    {
        const QNetworkRequest request =
            ContentDownloader::CreateDownloadRequest(QUrl(QStringLiteral("http://x/")));
        QCOMPARE(request.transferTimeout(), 30000);
    }
};

QTEST_GUILESS_MAIN(ContentDownloaderTest)
#include "tst_content_downloader.moc"
