// Video and photos on the now-playing screen, on the virtual display: libvlc's frames
// reach the native area laid over the document's placeholder, the area follows the
// placeholder when the window changes size, the track and its buttons keep clear of
// the areas in the smallest window, a dialog over the screen shows the video behind
// it, and a video output naming a screen that is not connected keeps them in the
// window. On a display with two monitors, the
// other one chosen in the settings shows them full-screen.

#include "core/settings.h"
#include "core/user_environment.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"
#include "tests/ui/support/qml_warnings.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/content_output_desktop.h"
#include "ui/desktop/main_window_desktop.h"

#include <QGuiApplication>
#include <QJsonArray>
#include <QLabel>
#include <QQuickItem>
#include <QQuickWidget>
#include <QScreen>
#include <QSet>
#include <QTemporaryDir>
#include <QWindow>
#include <QtTest>

#include <memory>

using Tests::ShopSession;

namespace {

const QString NowPlayingDocument = QStringLiteral("player/now_playing/now_playing_widget.qml");

// A day whose period plays music, a video playlist and a photo playlist together.
QJsonObject DayWithVideoAndPhoto()
{
    QJsonObject period = ShopSession::Period(QStringLiteral("День"), "09:00", "13:00", 11);
    period["video_playlist_id"] = 21;
    period["photo_playlist_id"] = 22;
    QJsonObject day =
        ShopSession::Schedule({period}, {ShopSession::MusicPlaylist(11, QStringLiteral("Музыка"), {1, 2}),
                                         QJsonObject{{"id", 21},
                                                     {"name", "Ролики"},
                                                     {"content_type", "video"},
                                                     {"image", ""},
                                                     {"tracks", QJsonArray{31}}},
                                         QJsonObject{{"id", 22},
                                                     {"name", "Витрина"},
                                                     {"content_type", "photo"},
                                                     {"image", ""},
                                                     {"tracks", QJsonArray{32}}}});
    QJsonArray content = day["content"].toArray();
    for (int i = 0; i < content.size(); ++i) {
        QJsonObject kind = content[i].toObject();
        if (kind["type"] == QLatin1String("video")) {
            kind["tracks"] = QJsonArray{QJsonObject{{"id", 31}, {"path", "video.mp4"}}};
        } else if (kind["type"] == QLatin1String("photo")) {
            kind["tracks"] = QJsonArray{QJsonObject{{"id", 32}, {"path", "photo_landscape.jpg"}}};
        }
        content[i] = kind;
    }
    day["content"] = content;
    return day;
}

// How many different colours a picture shows in `area`: the test video has bars of
// many, an empty black area one.
int Colours(const QImage& image, const QRect& area)
{
    const QImage part = image.copy(area);
    QSet<QRgb> colours;
    for (int y = 0; y < part.height(); y += 4) {
        for (int x = 0; x < part.width(); x += 4) {
            colours.insert(part.pixel(x, y));
        }
    }
    return colours.size();
}

// How many different colours a native window shows.
int ColoursShown(QWidget* widget)
{
    const QImage image = widget->screen()->grabWindow(widget->winId()).toImage();
    return Colours(image, image.rect());
}

} // namespace

class TestVideoArea : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void framesReachTheAreaOverThePlaceholder();
    void theAreasFollowTheWindowsSize();
    void theTrackKeepsClearOfTheAreas();
    void aDialogShowsTheVideoBehindIt();
    void anUnpluggedOutputKeepsThemInTheWindow();
    void anotherScreenShowsThemFullScreen();

private:
    void Open();
    QWidget* Output(const char* name) const;
    // A placeholder's (or any item's of the document) rectangle in the main
    // window's coordinates.
    QRect Placeholder(const QString& name) const;
    QRect InWindow(QWidget* widget) const;

    QTemporaryDir mContent;
    std::unique_ptr<Tests::ReferenceService> mService;
    std::unique_ptr<Tests::TestDataDirectory> mData;
    std::unique_ptr<UI::Desktop::MainWindowDesktop> mWindow;
    std::unique_ptr<Tests::ScreenDriver> mDriver;
};

void TestVideoArea::initTestCase()
{
    Tests::QmlWarnings::StartRecording();
    QVERIFY(mContent.isValid());
    QString error;
    mService = ShopSession::StartedServing(
        mContent.path(),
        {"music/music_a.mp3", "music/music_b.mp3", "video/video.mp4", "photo/photo_landscape.jpg"}, &error);
    QVERIFY2(mService, qPrintable(error));
}

void TestVideoArea::init()
{
    QVERIFY(mService->Reset());
    QVERIFY(mService->SetToday(
        QDate::fromString(QString::fromStdString(Tests::TestPeriods::Today()), "dd.MM.yyyy")));
    mData = std::make_unique<Tests::TestDataDirectory>();
    QVERIFY(mData->IsValid());
}

void TestVideoArea::cleanup()
{
    mDriver.reset();
    mWindow.reset();
    ShopSession::ForgetSession();
    mData.reset();
    const QStringList warnings = Tests::QmlWarnings::Take();
    QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
}

void TestVideoArea::Open()
{
    QVERIFY(mService->ReplaceConfiguration(QStringLiteral("shop1"), DayWithVideoAndPhoto()) > 0);
    Tests::TestPeriods::SetNow(QTime(10, 0));
    QVERIFY(ShopSession::AlignServiceClock(*mService));
    QString error;
    QVERIFY2(ShopSession::StoredAsAfterRestart(ShopSession::ServerOf(*mService), &error), qPrintable(error));
    mWindow.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
    mWindow->show();
    QVERIFY(QTest::qWaitForWindowExposed(mWindow.get()));
    mDriver = std::make_unique<Tests::ScreenDriver>(mWindow.get());
    QTRY_VERIFY_WITH_TIMEOUT(mDriver->DocumentShown(NowPlayingDocument), Tests::Timeouts::Quick);
}

QWidget* TestVideoArea::Output(const char* name) const
{
    return mWindow->findChild<QWidget*>(QString::fromLatin1(name));
}

QRect TestVideoArea::Placeholder(const QString& name) const
{
    auto* item = qobject_cast<QQuickItem*>(mDriver->Item(name));
    if (!item || !item->isVisible()) {
        return {};
    }
    QWidget* host = nullptr;
    for (auto* widget : mWindow->findChildren<QQuickWidget*>()) {
        if (widget->rootObject() && widget->rootObject()->objectName() == QLatin1String("nowPlayingScreen")) {
            host = widget;
        }
    }
    if (!host) {
        return {};
    }
    const QRect inHost =
        QRectF(item->mapToScene(QPointF(0, 0)), QSizeF(item->width(), item->height())).toAlignedRect();
    return inHost.translated(host->mapTo(mWindow.get(), QPoint(0, 0)));
}

QRect TestVideoArea::InWindow(QWidget* widget) const
{
    return QRect(widget->mapTo(mWindow.get(), QPoint(0, 0)), widget->size());
}

void TestVideoArea::framesReachTheAreaOverThePlaceholder()
{
    Open();
    QTRY_VERIFY_WITH_TIMEOUT(!Placeholder(QStringLiteral("videoArea")).isEmpty(), Tests::Timeouts::Process);
    QWidget* video = Output("videoOutput");
    QVERIFY(video);
    QTRY_VERIFY_WITH_TIMEOUT(video->isVisible(), Tests::Timeouts::Quick);
    QCOMPARE(InWindow(video), Placeholder(QStringLiteral("videoArea")));
    QVERIFY(video->testAttribute(Qt::WA_NativeWindow));
    // The test video's bars, drawn by libvlc into the area's own window.
    QTRY_VERIFY_WITH_TIMEOUT(ColoursShown(video) > 4, Tests::Timeouts::Playback);
    QTRY_COMPARE_WITH_TIMEOUT(mDriver->Property(QStringLiteral("videoNameText"), "text").toString(),
                              QStringLiteral("video"), Tests::Timeouts::Quick);

    QWidget* photo = Output("photoOutput");
    QVERIFY(photo);
    QTRY_VERIFY_WITH_TIMEOUT(photo->isVisible(), Tests::Timeouts::Playback);
    QCOMPARE(InWindow(photo), Placeholder(QStringLiteral("photoArea")));
    QTRY_VERIFY_WITH_TIMEOUT(photo->findChild<QLabel*>() &&
                                 !photo->findChild<QLabel*>()->pixmap(Qt::ReturnByValue).isNull(),
                             Tests::Timeouts::Playback);

    // Another section hides them; now playing again shows them over its placeholders.
    QVERIFY(mDriver->Click(QStringLiteral("settingsButton")));
    QTRY_VERIFY_WITH_TIMEOUT(!video->isVisible(), Tests::Timeouts::Quick);
    QVERIFY(!photo->isVisible());
    QVERIFY(mDriver->Click(QStringLiteral("playerButton")));
    QTRY_VERIFY_WITH_TIMEOUT(video->isVisible() &&
                                 InWindow(video) == Placeholder(QStringLiteral("videoArea")),
                             Tests::Timeouts::Quick);
    QVERIFY(mDriver->UnnamedControls().isEmpty());
}

void TestVideoArea::theAreasFollowTheWindowsSize()
{
    Open();
    QWidget* video = Output("videoOutput");
    QVERIFY(video);
    QTRY_VERIFY_WITH_TIMEOUT(video->isVisible(), Tests::Timeouts::Process);
    const QRect before = InWindow(video);
    mWindow->resize(mWindow->width() + 300, mWindow->height() + 150);
    QTRY_VERIFY_WITH_TIMEOUT(InWindow(video) != before, Tests::Timeouts::Quick);
    QTRY_COMPARE_WITH_TIMEOUT(InWindow(video), Placeholder(QStringLiteral("videoArea")),
                              Tests::Timeouts::Quick);
    // 16:9, as the placeholder.
    QVERIFY(qAbs(video->width() * 9 - video->height() * 16) <= 16);
}

void TestVideoArea::theTrackKeepsClearOfTheAreas()
{
    Open();
    mWindow->resize(UI::Desktop::MainWindowDesktop::MinimumWidth,
                    UI::Desktop::MainWindowDesktop::MinimumHeight);
    QTRY_VERIFY_WITH_TIMEOUT(
        !Placeholder(QStringLiteral("videoArea")).isEmpty() &&
            !Placeholder(QStringLiteral("photoArea")).isEmpty() &&
            !mDriver->Property(QStringLiteral("trackTitleText"), "text").toString().isEmpty(),
        Tests::Timeouts::Process);
    // What lies hidden, outside the window or under an area; the layout settles
    // over a frame or two.
    const auto misplaced = [this]() {
        const QRect areas =
            Placeholder(QStringLiteral("videoArea")) | Placeholder(QStringLiteral("photoArea"));
        QStringList found;
        for (const char* name :
             {"trackTitleText", "progressBar", "elapsedText", "totalText", "previousButton",
              "playPauseButton", "nextButton", "likeButton", "dislikeButton"}) {
            const QRect item = Placeholder(QString::fromLatin1(name));
            if (item.isEmpty() || !mWindow->rect().contains(item) || item.intersects(areas)) {
                found << QStringLiteral("%1 at %2,%3 %4x%5")
                             .arg(QLatin1String(name))
                             .arg(item.x())
                             .arg(item.y())
                             .arg(item.width())
                             .arg(item.height());
            }
        }
        // The likes stay together, wherever they wrap.
        if (Placeholder(QStringLiteral("likeButton")).top() !=
            Placeholder(QStringLiteral("dislikeButton")).top()) {
            found << QStringLiteral("the likes on two rows");
        }
        return found.join(QStringLiteral("; "));
    };
    QTRY_VERIFY2_WITH_TIMEOUT(misplaced().isEmpty(), qPrintable(misplaced()), Tests::Timeouts::Quick);
}

void TestVideoArea::aDialogShowsTheVideoBehindIt()
{
    Open();
    QWidget* video = Output("videoOutput");
    QVERIFY(video);
    QTRY_VERIFY_WITH_TIMEOUT(video->isVisible() && ColoursShown(video) > 4, Tests::Timeouts::Playback);
    const QRect area = InWindow(video);
    QVERIFY(mDriver->Click(QStringLiteral("logoutButton")));
    QTRY_VERIFY_WITH_TIMEOUT(mDriver->DocumentShown(QStringLiteral("skippable_dialog_widget.qml")),
                             Tests::Timeouts::Quick);
    // The dialog is a picture of the screen it covers, dimmed: the frames there too,
    // not the black of a native window that the widgets' own rendering leaves.
    auto* dialog = qobject_cast<QQuickWidget*>(mDriver->CurrentScreen());
    QVERIFY(dialog);
    const QRect inDialog(dialog->mapFrom(mWindow.get(), area.topLeft()), area.size());
    QTRY_VERIFY_WITH_TIMEOUT(Colours(dialog->grabFramebuffer(), inDialog) > 4, Tests::Timeouts::Quick);
    QVERIFY(mDriver->Click(QStringLiteral("cancelButton")));
}

void TestVideoArea::anUnpluggedOutputKeepsThemInTheWindow()
{
    Core::VideoOutput gone;
    gone.name = QStringLiteral("HDMI-9");
    gone.selected = true;
    Core::Settings::SetVideoOutput(gone);
    Open();
    QWidget* video = Output("videoOutput");
    QVERIFY(video);
    QTRY_VERIFY_WITH_TIMEOUT(video->isVisible(), Tests::Timeouts::Process);
    QCOMPARE(video->window(), static_cast<QWidget*>(mWindow.get()));
    QVERIFY(!mDriver->Property(QStringLiteral("videoOutputNote"), "visible").toBool());
    QTRY_VERIFY_WITH_TIMEOUT(ColoursShown(video) > 4, Tests::Timeouts::Playback);
}

void TestVideoArea::anotherScreenShowsThemFullScreen()
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    QVERIFY2(screens.size() == 2, "this case runs on the two-monitor virtual display (NEEDS two-screens)");
    Open();
    QWidget* video = Output("videoOutput");
    QVERIFY(video);
    QTRY_VERIFY_WITH_TIMEOUT(video->isVisible(), Tests::Timeouts::Process);
    QScreen* own = mWindow->windowHandle()->screen();
    QScreen* other = screens.first() == own ? screens.last() : screens.first();

    // What the settings screen does when the owner picks the other monitor.
    Core::VideoOutput chosen;
    chosen.name = other->name();
    chosen.selected = true;
    Core::Settings::SetVideoOutput(chosen);
    UI::Desktop::ContentOutputDesktop::VideoOutputSettingChanged();
    QTRY_VERIFY_WITH_TIMEOUT(video->window() != mWindow.get(), Tests::Timeouts::Quick);
    QWidget* fullScreen = video->window();
    QVERIFY(fullScreen->isFullScreen());
    QCOMPARE(fullScreen->windowHandle()->screen(), other);
    QTRY_COMPARE_WITH_TIMEOUT(mDriver->Property(QStringLiteral("videoOutputNote"), "text").toString(),
                              QStringLiteral("Видео на экране ") + other->name(), Tests::Timeouts::Quick);
    QVERIFY(!mDriver->Property(QStringLiteral("videoArea"), "visible").toBool());
    QTRY_VERIFY_WITH_TIMEOUT(ColoursShown(video) > 4, Tests::Timeouts::Playback);

    // Back to the window's own monitor: back over the placeholder.
    chosen.name = own->name();
    Core::Settings::SetVideoOutput(chosen);
    UI::Desktop::ContentOutputDesktop::VideoOutputSettingChanged();
    QTRY_COMPARE_WITH_TIMEOUT(video->window(), static_cast<QWidget*>(mWindow.get()), Tests::Timeouts::Quick);
    QTRY_COMPARE_WITH_TIMEOUT(InWindow(video), Placeholder(QStringLiteral("videoArea")),
                              Tests::Timeouts::Quick);
    QVERIFY(!mDriver->Property(QStringLiteral("videoOutputNote"), "visible").toBool());
    QTRY_VERIFY_WITH_TIMEOUT(ColoursShown(video) > 4, Tests::Timeouts::Playback);
}

QTEST_MAIN(TestVideoArea)
#include "tst_video_area.moc"
