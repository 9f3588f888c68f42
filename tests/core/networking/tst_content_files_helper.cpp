#include "core/networking/content_files_helper.h"
#include "tests/support/test_data_directory.h"

#include <memory>

using Core::ContentPlaying::ContentFilesHelper;
using namespace Core::DataTypes::Playback;

namespace {

Track MakeTrack(ContentType type, const std::string& path)
{
    Track track;
    track.contentType = type;
    track.path = path;
    return track;
}

bool Touch(const QString& path)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write("x") == 1;
}

} // namespace

class ContentFilesHelperTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
    }

    void cleanup()
    {
        dataDirectory.reset();
    }

    void cachePathIsTheTypeFolderAndTheLastPathComponent()
    {
        const auto cached = [](ContentType type, const std::string& serverPath) {
            return QString::fromStdString(ContentFilesHelper::FilenameForTrack(MakeTrack(type, serverPath)));
        };
        QCOMPARE(cached(ContentType::Clip, "shops/12/promo.mp3"), dataDirectory->FilePath("ads/promo.mp3"));
        QCOMPARE(cached(ContentType::Video, "video\\winter\\clip.mp4"),
                 dataDirectory->FilePath("video/clip.mp4"));
        QCOMPARE(cached(ContentType::Music, "../../etc/passwd"), dataDirectory->FilePath("music/passwd"));
        QCOMPARE(QString::fromStdString(ContentFilesHelper::TemporaryFilenameForTrack(
                     MakeTrack(ContentType::Photo, "shelf.jpg"))),
                 dataDirectory->FilePath("photo/shelf.jpgtmp"));
    }

    void onlyARegularFileCountsAsDownloaded()
    {
        const Track song = MakeTrack(ContentType::Music, "a/song.mp3");
        QVERIFY(!ContentFilesHelper::FileForTrackExists(song));
        QVERIFY(Touch(QString::fromStdString(ContentFilesHelper::FilenameForTrack(song))));
        QVERIFY(ContentFilesHelper::FileForTrackExists(song));

        // Server paths that name the folder itself.
        QVERIFY(QDir().mkpath(dataDirectory->FilePath(QStringLiteral("music"))));
        QVERIFY(!ContentFilesHelper::FileForTrackExists(MakeTrack(ContentType::Music, "x/..")));

        ContentFilesHelper::DropContentFile(song);
        QVERIFY(!ContentFilesHelper::FileForTrackExists(song));
    }

    void unnecessaryFilesAndLeftoverDownloadsAreDropped()
    {
        const Track kept = MakeTrack(ContentType::Clip, "ad.mp3");
        const Track sharedName = MakeTrack(ContentType::Music, "other/folder/ad.mp3");
        const Track gone = MakeTrack(ContentType::Video, "old.mp4");
        for (const auto& track : {kept, sharedName, gone}) {
            QVERIFY(Touch(QString::fromStdString(ContentFilesHelper::FilenameForTrack(track))));
        }
        const QString leftover = QString::fromStdString(ContentFilesHelper::TemporaryFilenameForTrack(kept));
        const QString nested = dataDirectory->FilePath(QStringLiteral("photo/sub/stray.jpg"));
        const QString outside = dataDirectory->FilePath(QStringLiteral("db.sqlite"));
        QVERIFY(Touch(leftover) && Touch(nested) && Touch(outside));

        ContentFilesHelper::DropUnnecessaryContentFiles({kept, sharedName});

        QVERIFY(ContentFilesHelper::FileForTrackExists(kept) &&
                ContentFilesHelper::FileForTrackExists(sharedName));
        QVERIFY(!ContentFilesHelper::FileForTrackExists(gone));
        QVERIFY(!QFile::exists(leftover) && !QFile::exists(nested));
        QVERIFY2(QFile::exists(outside), "only the content folders are cleaned");
    }

    void droppingAllContentKeepsTheRestOfTheDataDirectory()
    {
        for (const auto& name : ContentFilesHelper::ContentDirectoryNames()) {
            QVERIFY(Touch(dataDirectory->FilePath(QString::fromStdString(name) + QStringLiteral("/f"))));
        }
        QVERIFY(Touch(dataDirectory->FilePath(QStringLiteral("settings.ini"))));
        ContentFilesHelper::DropContentFiles();
        QCOMPARE(QDir(dataDirectory->Path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList{QStringLiteral("settings.ini")});
    }

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
};

QTEST_GUILESS_MAIN(ContentFilesHelperTest)
#include "tst_content_files_helper.moc"
