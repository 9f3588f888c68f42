#include "core/utilities/file_utilities.h"
#include "tests/support/test_timeouts.h"

#include <QtTest>

#include <string>
#include <sys/stat.h>

using Core::Utilities::FileUtilities;

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
    // Sizes around the reading chunk, each checked against the system's md5sum
    // rather than anything the code under test builds on.
    void filesOfEverySizeAreHashedWhole_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("size");
        QTest::newRow("empty") << "empty.mp3" << 0;
        QTest::newRow("one byte, Cyrillic name") << "Музыка для зала.mp3" << 1;
        QTest::newRow("256 KiB") << "a.bin" << 256 * 1024;
        QTest::newRow("256 KiB + 1") << "b.bin" << 256 * 1024 + 1;
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
        QProcess md5sum;
        md5sum.start(QStringLiteral("md5sum"), {file.fileName()});
        QVERIFY2(md5sum.waitForStarted(Tests::Timeouts::Process),
                 "md5sum could not be started: install coreutils (scripts/install-deps)");
        QVERIFY(md5sum.waitForFinished(Tests::Timeouts::Process));
        const QString expected =
            QString::fromLatin1(md5sum.readAllStandardOutput()).section(QLatin1Char(' '), 0, 0);
        QCOMPARE(expected.size(), 32);
        QCOMPARE(Md5Of(file.fileName()), expected);
    }

    // Nothing that is not a readable regular file has a digest, and none of them
    // may block: a pipe without a writer included.
    void noDigestWithoutARegularFile()
    {
        const QString pipe = m_folder.filePath(QStringLiteral("pipe"));
        QVERIFY2(mkfifo(QFile::encodeName(pipe).constData(), 0600) == 0, "mkfifo failed");
        for (const QString& path : {QString(), m_folder.filePath(QStringLiteral("missing.mp3")), pipe}) {
            QElapsedTimer timer;
            timer.start();
            QCOMPARE(Md5Of(path), QString());
            QVERIFY(timer.elapsed() < Tests::Timeouts::Quick);
        }
    }
};

QTEST_GUILESS_MAIN(FileUtilitiesTest)
#include "tst_file_utilities.moc"
