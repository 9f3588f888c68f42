#include "core/networking/content_downloader.h"
#include "core/networking/content_files_helper.h"
#include "core/utilities/data_directory.h"
#include "tests/support/event_log.h"
#include "tests/support/reference_service.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"

#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <unistd.h>

using Core::ContentPlaying::ContentFilesHelper;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Track;
using Core::Networking::ContentDownloader;
using Tests::ServiceFault;

namespace {

const char* const GivenUp = "Количество попыток скачивания превышено, игнорируем скачивание файла";
const char* const Requeued = "Количество попыток скачивания не превышено, добавляем в очередь";
const char* const FreezeFlag = "--freeze-mid-download";

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

// Distinct bytes for each seed; size is a multiple of four.
QByteArray Pattern(int size, int seed)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator(static_cast<quint32>(seed))
        .fillRange(reinterpret_cast<quint32*>(bytes.data()), size / 4);
    return bytes;
}

bool WriteFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
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

// The media downloader against the reference service.
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

    // The track of "<type>/<path>" in the content folder, digest and size from the file.
    Track MakeTrack(const QString& name, bool withMd5 = true) const
    {
        const QString path = name.section(QLatin1Char('/'), 1);
        Track track;
        track.id = static_cast<std::int32_t>(qHash(path) % 100000);
        track.path = path.toStdString();
        track.contentType =
            Core::DataTypes::Playback::ContentTypeFromString(name.section('/', 0, 0).toStdString());
        track.fileSize = files.at(name).size();
        if (withMd5) {
            track.md5 =
                QCryptographicHash::hash(files.at(name), QCryptographicHash::Md5).toHex().toStdString();
        }
        return track;
    }

    void Download(const QStringList& names, bool withMd5 = true)
    {
        for (const QString& name : names) {
            const Track track = MakeTrack(name, withMd5);
            downloader->DownloadFileForTrack(track, track.contentType);
        }
    }

    static QString CachePath(const Track& track, bool temporary = false)
    {
        return QString::fromStdString(temporary ? ContentFilesHelper::TemporaryFilenameForTrack(track)
                                                : ContentFilesHelper::FilenameForTrack(track));
    }

    // Whether the cached file of "<type>/<path>" holds exactly what the server has.
    bool CachedIntact(const QString& name) const
    {
        return ReadFile(CachePath(MakeTrack(name))) == files.at(name);
    }

    QStringList MediaTargets()
    {
        QStringList targets;
        for (const QJsonValue& request : service->Requests()) {
            targets << request.toObject().value(QStringLiteral("target")).toString().remove("/media/shop1/");
        }
        return targets;
    }

    int RequestsFor(const QString& name)
    {
        return service->RequestsTo(QStringLiteral("media/") + name).size();
    }

    void AddFault(const QString& name, const QString& kind, int count, int delayMs = 0)
    {
        ServiceFault fault(QStringLiteral("media/") + name, kind, count);
        fault.status = 500;
        fault.delayMs = delayMs;
        QVERIFY2(service->AddFault(fault) > 0, qPrintable(service->ErrorString()));
    }

    void WaitUntilIdle()
    {
        QTRY_VERIFY_WITH_TIMEOUT(downloader->IsIdle(), Tests::Timeouts::Process);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(content.isValid());
        // Big enough that its download is still running when the helper stops.
        files["music/big.mp3"] = Pattern(64 * 1024 * 1024, 7);
        files["music/large.mp3"] = Pattern(4 * 1024 * 1024, 8);
        files["clip/ad.mp3"] = Pattern(30000, 1);
        files["music/a.mp3"] = Pattern(200000, 2);
        files["music/b.mp3"] = Pattern(100000, 3);
        files["music/sub/c.mp3"] = Pattern(50000, 4);
        files["video/v.mp4"] = Pattern(300000, 5);
        files["photo/p.jpg"] = Pattern(20000, 6);
        for (const auto& [name, bytes] : files) {
            QVERIFY(WriteFile(content.filePath(name), bytes));
        }
        QString error;
        service = Tests::ReferenceService::Started(QStringLiteral("basic"), &error, content.path());
        QVERIFY2(service, qPrintable(error));
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

    // Ads, music, video, photos; first queued first among equals; full addresses as they are.
    void downloadsByPriorityIntoTheCache()
    {
        Track external = MakeTrack("music/b.mp3");
        external.path = (service->Origin() + QStringLiteral("files/music/b.mp3")).toStdString();
        Download({"photo/p.jpg"});
        downloader->DownloadTracks({MakeTrack("music/a.mp3"), MakeTrack("music/sub/c.mp3"), external},
                                   ContentType::Music);
        Download({"clip/ad.mp3", "video/v.mp4"});
        QVERIFY(!downloader->IsIdle());
        WaitUntilIdle();
        QCOMPARE(MediaTargets(), (QStringList{"clip/ad.mp3", "music/a.mp3", "music/sub/c.mp3",
                                              "/files/music/b.mp3", "video/v.mp4", "photo/p.jpg"}));
        QCOMPARE(observer->finished.size(), 6);
        QCOMPARE(CachedFiles(), (QStringList{"ads/ad.mp3", "music/a.mp3", "music/b.mp3", "music/c.mp3",
                                             "photo/p.jpg", "video/v.mp4"}));
        for (const char* name : {"clip/ad.mp3", "music/sub/c.mp3", "music/b.mp3", "video/v.mp4"}) {
            QVERIFY2(CachedIntact(name), name);
        }
        // Waiting out a stalled transfer would take half a minute: every download carries the limit.
        QCOMPARE(ContentDownloader::CreateDownloadRequest(QUrl("http://x/")).transferTimeout(), 30000);
    }

    void cachedOrQueuedTracksAreNotQueuedAgain()
    {
        // Every download fails, so each queued task shows as three requests.
        QVERIFY(service->AddFault(ServiceFault(QStringLiteral("media"), QStringLiteral("not_found"))) > 0);
        Download({"music/a.mp3", "music/a.mp3"});
        // The same track under another type is another task.
        downloader->DownloadFileForTrack(MakeTrack("music/a.mp3"), ContentType::Clip);
        WaitUntilIdle();
        QCOMPARE(MediaTargets(), (QStringList{"clip/a.mp3", "clip/a.mp3", "clip/a.mp3", "music/a.mp3",
                                              "music/a.mp3", "music/a.mp3"}));
        QCOMPARE(Tests::EventLog::Count(GivenUp), 2);

        // A file already in the cache asks for nothing at all.
        QVERIFY(WriteFile(CachePath(MakeTrack("music/b.mp3")), "already here"));
        const int before = service->Requests().size();
        Download({"music/b.mp3"});
        QVERIFY(downloader->IsIdle());
        QCOMPARE(service->Requests().size(), before);
    }

    void failedAttemptsAreRetried_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("faults");
        QTest::addColumn<bool>("withDigest");
        QTest::addColumn<QString>("logLine");
        QTest::addColumn<bool>("arrives");
        QTest::newRow("HTTP 500, then arrives")
            << "status" << 2 << true << "Ошибка скачивания файла %TMP%" << true;
        QTest::newRow("wrong bytes, given up")
            << "wrong_md5" << 3 << true << "\tНеверный md5, ошибка скачивания" << false;
        QTest::newRow("empty, then arrives")
            << "empty" << 2 << true << "\tФайл имеет нулевой размер: %TMP%" << true;
        // Qt resends a cut request itself and may call half a body complete; no digest tells.
        QTest::newRow("two cuts, then arrives") << "close_mid_body" << 2 << false << "" << true;
        QTest::newRow("every request cut") << "close_mid_body" << 0 << false << "" << false;
    }

    // Nothing half-done or wrong is ever left to be played.
    void failedAttemptsAreRetried()
    {
        QFETCH(QString, kind);
        QFETCH(int, faults);
        QFETCH(bool, withDigest);
        QFETCH(QString, logLine);
        QFETCH(bool, arrives);
        AddFault("music/a.mp3", kind, faults);
        Download({"music/a.mp3"}, withDigest);
        WaitUntilIdle();
        QCOMPARE(observer->finished, arrives ? QStringList{"a.mp3 music"} : QStringList());
        QCOMPARE(CachedFiles(), arrives ? QStringList{"music/a.mp3"} : QStringList());
        QVERIFY(!arrives || CachedIntact("music/a.mp3"));
        QCOMPARE(Tests::EventLog::Count(GivenUp), arrives ? 0 : 1);
        if (!logLine.isEmpty()) {
            QCOMPARE(RequestsFor("music/a.mp3"), 3);
            QCOMPARE(
                Tests::EventLog::Count(logLine.replace("%TMP%", CachePath(MakeTrack("music/a.mp3"), true))),
                faults);
            QCOMPARE(Tests::EventLog::Count(Requeued), 2);
        }
    }

    // A file failing its check while the next is fetched is retried in queue order.
    void aFailedFileIsRetriedInQueueOrder()
    {
        AddFault("clip/ad.mp3", "wrong_md5", 1);
        AddFault("music/a.mp3", "wrong_md5", 1);
        Download({"clip/ad.mp3", "music/a.mp3", "music/b.mp3", "music/sub/c.mp3"});
        WaitUntilIdle();
        QCOMPARE(MediaTargets(), (QStringList{"clip/ad.mp3", "clip/ad.mp3", "music/a.mp3", "music/b.mp3",
                                              "music/sub/c.mp3", "music/a.mp3"}));
        QCOMPARE(observer->finished,
                 (QStringList{"ad.mp3 clip", "b.mp3 music", "sub/c.mp3 music", "a.mp3 music"}));
        QCOMPARE(CachedFiles(), (QStringList{"ads/ad.mp3", "music/a.mp3", "music/b.mp3", "music/c.mp3"}));
    }

    // Without a reachable domain the queue waits for the next track's search.
    void queueWaitsForAReachableDomain()
    {
        const std::string unknown = "http://zelmar-no-such-domain.invalid/media/";
        downloader->SetDomains({unknown});
        Download({"music/a.mp3"});
        WaitUntilIdle();
        downloader->SetDomains({});
        Download({"music/b.mp3"});
        WaitUntilIdle();
        QVERIFY(service->Requests().isEmpty() && observer->finished.isEmpty());

        downloader->SetDomains({unknown, "no scheme at all", service->MediaDomain().toStdString()});
        Download({"photo/p.jpg"});
        WaitUntilIdle();
        QCOMPARE(observer->finished, (QStringList{"a.mp3 music", "b.mp3 music", "p.jpg photo"}));
    }

    void stoppingAbandonsTheRunningDownload()
    {
        AddFault("music/a.mp3", "delay", 1, 1500);
        Download({"music/a.mp3", "music/b.mp3"});
        QTRY_COMPARE_WITH_TIMEOUT(RequestsFor("music/a.mp3"), 1, Tests::Timeouts::Process);
        QVERIFY(QFileInfo::exists(CachePath(MakeTrack("music/a.mp3"), true)));
        downloader->StopDownloading();
        QVERIFY(downloader->IsIdle());
        QCOMPARE(CachedFiles(), QStringList());

        // Stopped, not stuck: what is queued next comes down.
        Download({"photo/p.jpg"});
        WaitUntilIdle();
        QCOMPARE(observer->finished, QStringList{"p.jpg photo"});
        QCOMPARE(CachedFiles(), QStringList{"photo/p.jpg"});
        QCOMPARE(RequestsFor("music/b.mp3"), 0);
    }

    // The player restarts the downloader from inside the callback when a period begins.
    void observerMayStopAndRequeueFromItsCallback()
    {
        Download({"clip/ad.mp3", "music/a.mp3", "music/b.mp3"});
        observer->onFinished = [this] {
            downloader->StopDownloading();
            Download({"photo/p.jpg", "video/v.mp4"});
        };
        WaitUntilIdle();
        QCOMPARE(observer->finished, (QStringList{"ad.mp3 clip", "v.mp4 video", "p.jpg photo"}));
        QCOMPARE(CachedFiles(), (QStringList{"ads/ad.mp3", "photo/p.jpg", "video/v.mp4"}));
    }

    void aFileThatAppearedMeanwhileIsKept()
    {
        AddFault("music/a.mp3", "delay", 1, 300);
        Download({"music/a.mp3"});
        QTRY_COMPARE_WITH_TIMEOUT(RequestsFor("music/a.mp3"), 1, Tests::Timeouts::Process);
        QVERIFY(WriteFile(CachePath(MakeTrack("music/a.mp3")), "put here by someone else"));
        WaitUntilIdle();
        QCOMPARE(ReadFile(CachePath(MakeTrack("music/a.mp3"))), QByteArray("put here by someone else"));
        QCOMPARE(CachedFiles(), QStringList{"music/a.mp3"});
        QCOMPARE(observer->finished, QStringList{"a.mp3 music"});
    }

    // A small file is written when complete, a large one while it arrives.
    void fullDiskIsAFailedAttempt_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("small") << "music/a.mp3";
        QTest::newRow("large") << "music/large.mp3";
    }

    void fullDiskIsAFailedAttempt()
    {
        QFETCH(QString, name);
        QVERIFY2(QFileInfo::exists(QStringLiteral("/dev/full")), "this test needs /dev/full");
        const QString temporary = CachePath(MakeTrack(name), true);
        QVERIFY(QDir().mkpath(QFileInfo(temporary).path()));
        QVERIFY(QFile::link(QStringLiteral("/dev/full"), temporary));
        Download({name});
        WaitUntilIdle();
        const QString log = Tests::EventLog::Text();
        QVERIFY2(log.contains("Ошибка записи в файл " + temporary + ": "), qPrintable(log));
        QCOMPARE(Tests::EventLog::Count(Requeued), 1);
        QCOMPARE(CachedFiles(), QStringList{name});
        QVERIFY(CachedIntact(name));
    }

    void unwritableCacheFolderDoesNotStopTheOthers()
    {
        QVERIFY(WriteFile(dataDirectory->FilePath(QStringLiteral("music")), "a file where the folder goes"));
        Download({"music/a.mp3", "photo/p.jpg"});
        WaitUntilIdle();
        QCOMPARE(Tests::EventLog::Count("Ошибка при попытке открытия файла на запись a.mp3tmp"), 3);
        QCOMPARE(Tests::EventLog::Count(GivenUp), 1);
        QCOMPARE(observer->finished, QStringList{"p.jpg photo"});
        QCOMPARE(CachedFiles(), QStringList{"photo/p.jpg"});
    }

    // Killed mid-download: only a temporary file, which the next cleanup removes.
    void killedMidDownloadLeavesOnlyATemporaryFile()
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(QCoreApplication::applicationFilePath(), {FreezeFlag, service->MediaDomain()});
        QVERIFY2(process.waitForStarted(Tests::Timeouts::Process), qPrintable(process.errorString()));
        QByteArray said;
        QTRY_VERIFY_WITH_TIMEOUT((said += process.readAllStandardOutput()).contains('\n') ||
                                     process.state() == QProcess::NotRunning,
                                 Tests::Timeouts::Process);
        QCOMPARE(said, QByteArray("partial\n"));
        process.kill();
        QVERIFY(process.waitForFinished(Tests::Timeouts::Process));

        const Track big = MakeTrack("music/big.mp3");
        QCOMPARE(CachedFiles(), QStringList{"music/big.mp3tmp"});
        const qint64 partial = QFileInfo(CachePath(big, true)).size();
        QVERIFY2(partial > 0 && partial < big.fileSize, qPrintable(QString::number(partial)));
        ContentFilesHelper::DropUnnecessaryContentFiles({big});
        QCOMPARE(CachedFiles(), QStringList());
        Download({"music/big.mp3"});
        WaitUntilIdle();
        QCOMPARE(CachedFiles(), QStringList{"music/big.mp3"});
        QVERIFY(CachedIntact("music/big.mp3"));
    }
};

// The player to kill: prints "partial" and freezes once part of music/big.mp3 is on disk.
int FreezeMidDownload(const QString& domain)
{
    Track track;
    track.path = "big.mp3";
    track.contentType = ContentType::Music;
    ContentDownloader downloader(nullptr);
    downloader.SetDomains({domain.toStdString()});
    downloader.SetObjectCode("shop1");
    downloader.DownloadFileForTrack(track, track.contentType);
    const QString temporary = QString::fromStdString(ContentFilesHelper::TemporaryFilenameForTrack(track));
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&temporary] {
        if (QFileInfo(temporary).size() > 0) {
            std::puts("partial");
            std::fflush(stdout);
            for (;;) {
                pause();
            }
        }
    });
    poll.start(0);
    return QCoreApplication::exec();
}

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    if (argc == 3 && argv[1] == QLatin1String(FreezeFlag)) {
        return FreezeMidDownload(QString::fromLocal8Bit(argv[2]));
    }
    ContentDownloaderTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_content_downloader.moc"
