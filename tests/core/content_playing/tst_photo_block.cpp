#include "core/content_playing/photo_block.h"
#include "core/settings.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/recording_block_observer.h"
#include "tests/support/event_log.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"

#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QWidget>

using Core::ContentPlaying::PhotoBlock;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Track;
using Ids = std::vector<std::int32_t>;

namespace {

// The solid colours of the generated photos.
const QColor Landscape(0x20, 0x60, 0xc0);
const QColor Portrait(0xc0, 0x60, 0x20);
Track Photo(int id, const char* media)
{
    return Tests::PlaybackTestTracks::Cached(id, ContentType::Photo, QString::fromUtf8(media));
}

Track Missing(int id)
{
    return Tests::PlaybackTestTracks::Make(id, ContentType::Photo, QStringLiteral("missing_%1.jpg").arg(id));
}

// All four corners and the centre show the colour.
bool Covers(QWidget& widget, QColor colour)
{
    const QImage image = widget.grab().toImage();
    const int w = image.width() - 1;
    const int h = image.height() - 1;
    for (const QPoint point :
         {QPoint(0, 0), QPoint(w, 0), QPoint(0, h), QPoint(w, h), QPoint(w / 2, h / 2)}) {
        const QColor shown = image.pixelColor(point);
        if (std::abs(shown.red() - colour.red()) >= 12 || std::abs(shown.green() - colour.green()) >= 12 ||
            std::abs(shown.blue() - colour.blue()) >= 12) {
            return false;
        }
    }
    return true;
}

QLabel* PictureLabel(QWidget& widget)
{
    const QLayout* layout = widget.layout();
    return layout && layout->count() > 0 ? qobject_cast<QLabel*>(layout->itemAt(0)->widget()) : nullptr;
}

} // namespace

// The slideshow on an offscreen widget, one second a photo.
class PhotoBlockTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        Core::Settings::SetPhotosDurationSeconds(1);
        observer = std::make_unique<Tests::RecordingBlockObserver>();
        widget = std::make_unique<QWidget>();
        widget->resize(300, 300);
        widget->show();
    }

    void cleanup()
    {
        widget.reset();
        observer.reset();
        dataDirectory.reset();
    }

    void photosCoverTheWidgetInTurnAndWrap()
    {
        PhotoBlock block({Missing(1), Photo(2, "photo_landscape.jpg"), Photo(3, "photo_portrait.jpg")});
        QVERIFY(block.HasAnyDownloadedFile());
        Attach(block);
        QElapsedTimer clock;
        clock.start();
        block.Start();

        QCOMPARE(observer->StartedIds(), Ids{2});
        QLabel* label = PictureLabel(*widget);
        QVERIFY(label != nullptr);
        // 640×360 into 300×300: scaled until the height fits, the sides cut off.
        QCOMPARE(label->pixmap(Qt::ReturnByValue).size(), QSize(533, 300));
        QCOMPARE(label->geometry(), widget->rect());
        QVERIFY(Covers(*widget, Landscape));

        QTRY_COMPARE_WITH_TIMEOUT(observer->StartCount(), 2, Tests::Timeouts::Quick);
        const qint64 firstChange = clock.elapsed();
        QVERIFY2(firstChange >= 900, qPrintable(QString::number(firstChange)));
        QCOMPARE(observer->starts.back().trackId, 3);
        QCOMPARE(label->pixmap(Qt::ReturnByValue).size(), QSize(300, 533));
        QVERIFY(Covers(*widget, Portrait));
        // The same label is used again, not a new one each time.
        QCOMPARE(PictureLabel(*widget), label);
        QCOMPARE(widget->findChildren<QLabel*>().size(), 1);

        QTRY_COMPARE_WITH_TIMEOUT(observer->StartCount(), 3, Tests::Timeouts::Quick);
        QCOMPARE(observer->starts.back().trackId, 2);
        QVERIFY(Covers(*widget, Landscape));
        QVERIFY2(clock.elapsed() - firstChange >= 900, "the photo did not stay for its duration");
    }

    // Not started, nothing moves; a missing or unknown photo changes nothing; an
    // unreadable one is logged and leaves the previous one on show.
    void nextPreviousAndChosenPhoto()
    {
        PhotoBlock block({Missing(1), Photo(2, "photo_landscape.jpg"), Photo(3, "photo_portrait.jpg"),
                          Photo(4, "broken.jpg")});
        Attach(block);
        block.GoToNextTrack();
        block.PlayTrack(3);
        QCOMPARE(observer->StartCount(), 0);

        block.Start();
        block.GoToPreviousTrack();
        QVERIFY(Covers(*widget, Landscape));
        QCOMPARE(Tests::EventLog::Entries().filter(QStringLiteral("Не удалось открыть изображение ")).size(),
                 1);
        block.GoToPreviousTrack();
        block.GoToNextTrack();
        block.PlayTrack(2);
        block.PlayTrack(1);
        block.PlayTrack(99);
        QCOMPARE(observer->StartedIds(), (Ids{2, 4, 3, 4, 2}));
        QVERIFY(Covers(*widget, Landscape));
    }

    // A single photo stays; with none downloaded nothing is shown.
    void aSinglePhotoStaysAndMissingOnesShowNothing()
    {
        PhotoBlock block({Photo(1, "photo_portrait.jpg"), Missing(2)});
        Attach(block);
        block.Start();
        block.GoToNextTrack();
        QVERIFY(!Advances(1));
        QVERIFY(Covers(*widget, Portrait));

        auto emptyWidget = std::make_unique<QWidget>();
        PhotoBlock missing({Missing(1), Missing(2)});
        QVERIFY(!missing.HasAnyDownloadedFile());
        // An empty block has nothing to wait for.
        QVERIFY(PhotoBlock({}).HasAnyDownloadedFile());
        missing.SetObserver(observer.get());
        missing.SetPhotoWidget(emptyWidget.get());
        missing.Start();
        missing.GoToNextTrack();
        QCOMPARE(observer->StartCount(), 1);
        QVERIFY(PictureLabel(*emptyWidget) == nullptr);
    }

    // Without a widget nothing advances; given one, the current photo shows and runs on.
    // Pause holds the photo; stopped, the block starts again from the first photo.
    void aWidgetPauseAndStop()
    {
        PhotoBlock block({Photo(1, "photo_landscape.jpg"), Photo(2, "photo_portrait.jpg")});
        block.SetObserver(observer.get());
        block.Start();
        QCOMPARE(observer->StartCount(), 1);
        QVERIFY(!Advances(1));
        block.Pause();
        block.Start();
        QVERIFY(!Advances(1));

        block.SetPhotoWidget(widget.get());
        QCOMPARE(observer->StartedIds(), (Ids{1, 1}));
        QVERIFY(Covers(*widget, Landscape));
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartCount(), 3, Tests::Timeouts::Quick);
        block.Pause();
        QVERIFY(!Advances(3));
        block.Start();
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartCount(), 4, Tests::Timeouts::Quick);
        QCOMPARE(observer->StartedIds(), (Ids{1, 1, 2, 1}));

        block.Stop();
        QVERIFY(!Advances(4));
        block.Start();
        QCOMPARE(observer->starts.back().trackId, 1);
    }

    // The widget here has a layout of its own: the label goes first in it.
    void refreshFitsAResizedWidget()
    {
        auto* layout = new QHBoxLayout(widget.get());
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(new QWidget(widget.get()));
        PhotoBlock block({Photo(1, "photo_portrait.jpg")});
        block.SetPhotoWidget(widget.get());
        block.Start();
        widget->resize(200, 500);
        block.RefreshPhoto();
        QLabel* label = PictureLabel(*widget);
        QVERIFY(label != nullptr);
        // 360×640 into 200×500: the width is the limit (281×500 would leave a gap).
        QCOMPARE(label->pixmap(Qt::ReturnByValue).size(), QSize(281, 500));
        // A larger picture does not make the widget grow.
        QCOMPARE(widget->size(), QSize(200, 500));
    }

private:
    void Attach(PhotoBlock& block)
    {
        block.SetObserver(observer.get());
        block.SetPhotoWidget(widget.get());
    }

    // Whether more than `starts` photos are reported within one and a half photos' time.
    bool Advances(int starts)
    {
        return QTest::qWaitFor([this, starts]() { return observer->StartCount() > starts; }, 1500);
    }

    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::RecordingBlockObserver> observer;
    std::unique_ptr<QWidget> widget;
};

QTEST_MAIN(PhotoBlockTest)
#include "tst_photo_block.moc"
