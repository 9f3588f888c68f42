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

} // namespace

// The cache compares these digests against the server's checksums: a wrong one
// downloads a file again and again, or keeps a damaged one.
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

    // The reference digest comes from the system's md5sum, not from the code under test.
    void generatedMediaMatchMd5sum_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("music") << "music_a.mp3";
        QTest::newRow("video") << "video.mp4";
        QTest::newRow("photo") << "photo_landscape.jpg";
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

    // Sizes around the reading chunks: each piece must be hashed for exactly the
    // bytes read, the last short one included.
    void filesOfEverySizeAreHashedWhole_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("size");
        QTest::newRow("one byte, Cyrillic name") << "Музыка для зала.mp3" << 1;
        QTest::newRow("256 KiB") << "a.bin" << 256 * 1024;
        QTest::newRow("256 KiB + 1") << "b.bin" << 256 * 1024 + 1;
        QTest::newRow("five MiB and a bit") << "c.bin" << 5 * 1024 * 1024 + 17;
    }

    void filesOfEverySizeAreHashedWhole()
    {
        QFETCH(QString, name);
        QFETCH(int, size);
        QByteArray contents(size, Qt::Uninitialized);
        for (int i = 0; i < size; ++i) {
            contents[i] = static_cast<char>((i * 31 + i / 251) & 0xff);
        }
        QFile file(m_folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(contents), qint64{size});
        file.close();
        const QString expected =
            QString::fromLatin1(QCryptographicHash::hash(contents, QCryptographicHash::Md5).toHex());
        QCOMPARE(Md5Of(file.fileName()), expected);
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
