#include "core/utilities/file_utilities.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QtTest>

#include <string>
#include <sys/stat.h>
#include <sys/types.h>

using Core::Utilities::FileUtilities;
using Tests::TestMedia;

namespace {

QString Md5Of(const QString& path)
{
    return QString::fromStdString(FileUtilities::FileContentsMd5(path.toStdString()));
}

bool WriteFile(const QString& path, const QByteArray& contents)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

} // namespace

class FileUtilitiesTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

private slots:
    void initTestCase()
    {
        QVERIFY2(m_folder.isValid(), qPrintable(m_folder.errorString()));
    }

    // The reference digest comes from the system's md5sum, not from the code under
    // test: the cache compares these against the server's checksums.
    void generatedMediaMatchMd5sum_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("music") << "music_a.mp3";
        QTest::newRow("video") << "video.mp4";
        QTest::newRow("photo") << "photo_landscape.jpg";
        QTest::newRow("noise") << "broken.mp3";
        QTest::newRow("empty") << "empty.mp3";
    }

    void generatedMediaMatchMd5sum()
    {
        QFETCH(QString, name);
        const QString path = TestMedia::Path(name);
        QVERIFY2(!path.isEmpty(), qPrintable(QStringLiteral("test media %1 is missing").arg(name)));

        QProcess md5sum;
        md5sum.start(QStringLiteral("md5sum"), {path});
        QVERIFY2(md5sum.waitForStarted(Tests::Timeouts::Process),
                 "md5sum could not be started: install coreutils (scripts/install-deps)");
        QVERIFY(md5sum.waitForFinished(Tests::Timeouts::Process));
        QCOMPARE(md5sum.exitCode(), 0);
        const QString expected =
            QString::fromLatin1(md5sum.readAllStandardOutput()).section(QLatin1Char(' '), 0, 0);
        QCOMPARE(expected.size(), 32);

        QCOMPARE(Md5Of(path), expected);
    }

    void knownDigests_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<QString>("expected");
        QTest::newRow("empty") << QByteArray() << "d41d8cd98f00b204e9800998ecf8427e";
        QTest::newRow("abc") << QByteArray("abc") << "900150983cd24fb0d6963f7d28e17f72";
        QTest::newRow("fox") << QByteArray("The quick brown fox jumps over the lazy dog")
                             << "9e107d9d372bb6826bd81d3542a419d6";
    }

    void knownDigests()
    {
        QFETCH(QByteArray, contents);
        QFETCH(QString, expected);
        const QString path = m_folder.filePath(QStringLiteral("known.bin"));
        QVERIFY(WriteFile(path, contents));
        QCOMPARE(Md5Of(path), expected);
    }

    // Sizes around the reading chunks: each piece must be hashed for exactly the
    // bytes read, the last short one included.
    void largeFilesAreHashedWhole_data()
    {
        QTest::addColumn<int>("size");
        QTest::newRow("one byte") << 1;
        QTest::newRow("64 KiB") << 64 * 1024;
        QTest::newRow("256 KiB") << 256 * 1024;
        QTest::newRow("256 KiB + 1") << 256 * 1024 + 1;
        QTest::newRow("three chunks and a bit") << 3 * 256 * 1024 + 17;
        QTest::newRow("five MiB") << 5 * 1024 * 1024;
    }

    void largeFilesAreHashedWhole()
    {
        QFETCH(int, size);
        QByteArray contents(size, Qt::Uninitialized);
        for (int i = 0; i < size; ++i) {
            contents[i] = static_cast<char>((i * 31 + i / 251) & 0xff);
        }
        const QString path = m_folder.filePath(QStringLiteral("large.bin"));
        QVERIFY(WriteFile(path, contents));
        const QString expected =
            QString::fromLatin1(QCryptographicHash::hash(contents, QCryptographicHash::Md5).toHex());
        QCOMPARE(Md5Of(path), expected);
    }

    void cyrillicPath()
    {
        const QString path = m_folder.filePath(QStringLiteral("Музыка для зала.mp3"));
        QVERIFY(WriteFile(path, QByteArray("abc")));
        QCOMPARE(Md5Of(path), QStringLiteral("900150983cd24fb0d6963f7d28e17f72"));
    }

    // Nothing that is not a readable regular file has a digest, and none of them
    // may block: a pipe without a writer and an endless device included.
    void noDigestWithoutARegularFile_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("empty path") << QString();
        QTest::newRow("missing") << m_folder.filePath(QStringLiteral("missing.mp3"));
        QTest::newRow("folder") << m_folder.path();
        QTest::newRow("endless device") << QStringLiteral("/dev/zero");
        QTest::newRow("named pipe") << m_folder.filePath(QStringLiteral("pipe"));
    }

    void noDigestWithoutARegularFile()
    {
        QFETCH(QString, path);
        if (path.endsWith(QLatin1String("/pipe")) && !QFileInfo::exists(path)) {
            QVERIFY2(mkfifo(QFile::encodeName(path).constData(), 0600) == 0, "mkfifo failed");
        }
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(Md5Of(path), QString());
        QVERIFY(timer.elapsed() < Tests::Timeouts::Quick);
    }
};

QTEST_GUILESS_MAIN(FileUtilitiesTest)
#include "tst_file_utilities.moc"
