// Now playing in the player frame, against the reference service and the test sink:
// what it says about the period and the track, the controls heard on the sink, a
// like reaching the service, the advertising band, the lists it opens, and what it
// says when no period plays or the period waits for its files.

#include "core/content_playing/player.h"
#include "core/settings.h"
#include "core/user_environment.h"
#include "core/utilities/clock.h"
#include "core/utilities/local_time_helper.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"
#include "tests/ui/support/qml_warnings.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/screen_error_text.h"

#include <QApplication>
#include <QJsonArray>
#include <QLabel>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Core::DataTypes::Playback::ContentType;
using Tests::ShopSession;

class TestNowPlayingScreen : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void showsThePeriodAndTheTrack();
    void controlsChangeWhatIsHeard();
    void aLikeReachesTheService();
    void theAdBandShowsWhileAnAdPlays();
    void listsOpenAndCloseBack_data();
    void listsOpenAndCloseBack();
    void saysWhenTheNextPeriodBegins_data();
    void saysWhenTheNextPeriodBegins();
    void countsThePeriodsOwnFiles();
    void saysWhenTheScheduleWasChecked();
    void saysWhenNoScheduleCouldBeLoaded();
    void saysWhenTodaysScheduleIsOver();
    void asksToSetTheClockWhenItIsWrong();

private:
    // Signed in with `week` on the service, `now` on the clock, and the window open:
    // as after a restart with `week` stored, or right after a sign-in with nothing
    // stored yet.
    void Open(const QJsonObject& week, const QTime& now, bool stored = true);
    QString Text(const QString& item) const;
    bool Hear(int frequency);
    // How far the test has moved the player's clock from the real one.
    static int ServiceShiftSeconds();

    QTemporaryDir mContent;
    std::unique_ptr<Tests::ReferenceService> mService;
    std::unique_ptr<Tests::TestDataDirectory> mData;
    std::unique_ptr<Tests::TwoSinkListener> mListener;
    std::unique_ptr<UI::Desktop::MainWindowDesktop> mWindow;
    std::unique_ptr<Tests::ScreenDriver> mDriver;
};

namespace {

const QColor CoverColour(0x20, 0x80, 0x40);

QJsonObject Day(const QJsonArray& ads = QJsonArray())
{
    QJsonObject playlist = ShopSession::MusicPlaylist(11, QStringLiteral("Музыка"), {1, 2});
    playlist.insert(QStringLiteral("image"), QStringLiteral("@FILES@covers/music.png"));
    return ShopSession::Schedule({ShopSession::Period(QStringLiteral("День"), "09:00", "13:00", 11)},
                                 {playlist}, ads);
}

} // namespace

void TestNowPlayingScreen::initTestCase()
{
    Tests::QmlWarnings::StartRecording();
    QVERIFY(mContent.isValid());
    QString error;
    mService = ShopSession::StartedServing(
        mContent.path(), {"music/music_a.mp3", "music/music_b.mp3", "clip/ad_short.mp3"}, &error);
    QVERIFY2(mService, qPrintable(error));
    QVERIFY(QDir(mContent.path()).mkpath(QStringLiteral("covers")));
    QImage cover(64, 64, QImage::Format_RGB32);
    cover.fill(CoverColour);
    QVERIFY(cover.save(mContent.filePath(QStringLiteral("covers/music.png"))));
}

void TestNowPlayingScreen::init()
{
    QVERIFY(mService->Reset());
    QVERIFY(mService->SetToday(
        QDate::fromString(QString::fromStdString(Tests::TestPeriods::Today()), "dd.MM.yyyy")));
    mData = std::make_unique<Tests::TestDataDirectory>();
    QVERIFY(mData->IsValid());
    Core::Settings::SetShuffle(ContentType::Music, false);
    mListener = std::make_unique<Tests::TwoSinkListener>();
    QVERIFY2(mListener->Start(), qPrintable(mListener->ErrorString()));
}

void TestNowPlayingScreen::cleanup()
{
    Core::UserEnvironment::ResetTimingForTesting();
    mDriver.reset();
    mWindow.reset();
    mListener.reset();
    ShopSession::ForgetSession();
    mData.reset();
    const QStringList warnings = Tests::QmlWarnings::Take();
    QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
}

void TestNowPlayingScreen::Open(const QJsonObject& week, const QTime& now, bool stored)
{
    QVERIFY(mService->ReplaceConfiguration(QStringLiteral("shop1"), week) > 0);
    Tests::TestPeriods::SetNow(now);
    QVERIFY(ShopSession::AlignServiceClock(*mService));
    QString error;
    if (stored) {
        QVERIFY2(ShopSession::StoredAsAfterRestart(ShopSession::ServerOf(*mService), &error),
                 qPrintable(error));
    } else {
        auto earlier = ShopSession::SignedIn(ShopSession::ServerOf(*mService), ShopSession::Shop(), &error);
        QVERIFY2(earlier, qPrintable(error));
        earlier.reset();
        Core::UserEnvironment::ForgetProcessStateForTesting();
    }
    mWindow.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
    mDriver = std::make_unique<Tests::ScreenDriver>(mWindow.get());
    QTRY_VERIFY_WITH_TIMEOUT(
        mDriver->DocumentShown(QStringLiteral("player/now_playing/now_playing_widget.qml")),
        Tests::Timeouts::Quick);
}

QString TestNowPlayingScreen::Text(const QString& item) const
{
    return mDriver->Property(item, "text").toString();
}

int TestNowPlayingScreen::ServiceShiftSeconds()
{
    return static_cast<int>(Core::Utilities::Clock::CurrentSecsSinceEpoch() -
                            QDateTime::currentSecsSinceEpoch());
}

bool TestNowPlayingScreen::Hear(int frequency)
{
    return mListener->WaitForToneLevel(
        frequency, [](double level) { return level > Tests::ToneTimeline::Heard; }, 0.3,
        Tests::Timeouts::Playback);
}

void TestNowPlayingScreen::showsThePeriodAndTheTrack()
{
    Open(Day(), QTime(10, 0));
    QVERIFY(Hear(Tests::TestMedia::MusicAFrequency));
    QTRY_COMPARE_WITH_TIMEOUT(Text("periodText"), QStringLiteral("День · 09:00 – 13:00"),
                              Tests::Timeouts::Quick);
    QCOMPARE(Text("objectText"), QString::fromStdString(ShopSession::Shop().name));
    QTRY_COMPARE_WITH_TIMEOUT(
        Text("clockText"),
        QString::fromStdString(Core::Utilities::LocalTimeHelper::GetLocalTimeHoursMinutesString()),
        Tests::Timeouts::Quick);
    QTRY_VERIFY_WITH_TIMEOUT(!Text("trackTitleText").isEmpty(), Tests::Timeouts::Quick);
    QVERIFY(mDriver->Property("nowPlayingScreen", "playing").toBool());
    // The playlist's cover, from the service, on its card.
    QLabel* cover = nullptr;
    QTRY_VERIFY_WITH_TIMEOUT((cover = mWindow->findChild<QLabel*>(QStringLiteral("trackCover"))) != nullptr &&
                                 cover->isVisible() && !cover->pixmap(Qt::ReturnByValue).isNull(),
                             Tests::Timeouts::Quick);
    const QImage shown = cover->pixmap(Qt::ReturnByValue).toImage();
    QCOMPARE(shown.pixelColor(shown.rect().center()), CoverColour);
    QVERIFY(!mDriver->Property("adBand", "visible").toBool());
    const QStringList unnamed = mDriver->UnnamedControls();
    QVERIFY2(unnamed.isEmpty(), qPrintable(unnamed.join(QLatin1Char('\n'))));
}

void TestNowPlayingScreen::controlsChangeWhatIsHeard()
{
    Open(Day(), QTime(10, 0));
    QVERIFY(Hear(Tests::TestMedia::MusicAFrequency));
    QTRY_VERIFY_WITH_TIMEOUT(!Text("trackTitleText").isEmpty(), Tests::Timeouts::Quick);
    const QString first = Text("trackTitleText");

    QVERIFY(mDriver->Click("nextButton"));
    QVERIFY(Hear(Tests::TestMedia::MusicBFrequency));
    QTRY_VERIFY_WITH_TIMEOUT(Text("trackTitleText") != first, Tests::Timeouts::Quick);

    QVERIFY(mDriver->Click("previousButton"));
    QVERIFY(Hear(Tests::TestMedia::MusicAFrequency));
    QTRY_COMPARE_WITH_TIMEOUT(Text("trackTitleText"), first, Tests::Timeouts::Quick);

    QVERIFY(mDriver->Click("playPauseButton"));
    QTRY_VERIFY_WITH_TIMEOUT(!mDriver->Property("nowPlayingScreen", "playing").toBool(),
                             Tests::Timeouts::Quick);
}

void TestNowPlayingScreen::aLikeReachesTheService()
{
    Open(Day(), QTime(10, 0));
    QVERIFY(Hear(Tests::TestMedia::MusicAFrequency));
    QTRY_VERIFY_WITH_TIMEOUT(!Text("trackTitleText").isEmpty(), Tests::Timeouts::Quick);
    QVERIFY(!mDriver->Property("likeButton", "checked").toBool());

    QVERIFY(mDriver->Click("likeButton"));
    QTRY_VERIFY_WITH_TIMEOUT(mDriver->Property("likeButton", "checked").toBool(), Tests::Timeouts::Process);
    const QJsonArray likes = mService->Received(QStringLiteral("likes"));
    QCOMPARE(likes.size(), 1);
    // The answer is kept with the schedule: the first track (shuffle is off) is liked
    // in what is stored.
    std::shared_ptr<Core::UserEnvironment> environment;
    Core::UserEnvironment::GetSignedInEnvironment(
        [&environment](std::shared_ptr<Core::UserEnvironment> found) { environment = std::move(found); });
    QTRY_VERIFY_WITH_TIMEOUT(environment, Tests::Timeouts::Quick);
    Core::DataTypes::Playback::LikeStatus stored = Core::DataTypes::Playback::LikeStatus::None;
    bool read = false;
    environment->StoredPlaybackConfiguration(
        [&](Core::DataTypes::Playback::PlaybackConfiguration configuration) {
            for (const auto& track : configuration.tracks.at(ContentType::Music)) {
                if (track.id == 1) {
                    stored = track.likeStatus;
                }
            }
            read = true;
        },
        [&read](std::shared_ptr<Core::DataTypes::Error>) { read = true; });
    QTRY_VERIFY_WITH_TIMEOUT(read, Tests::Timeouts::Quick);
    QCOMPARE(stored, Core::DataTypes::Playback::LikeStatus::Liked);
}

void TestNowPlayingScreen::theAdBandShowsWhileAnAdPlays()
{
    Open(Day({ShopSession::AdBlock(QStringLiteral("10:15"))}), QTime(10, 14, 57));
    QTRY_VERIFY_WITH_TIMEOUT(!Text("nextAdText").isEmpty(), Tests::Timeouts::Quick);
    QCOMPARE(Text("nextAdText"), QStringLiteral("Следующая реклама в 10:15"));
    QTRY_VERIFY_WITH_TIMEOUT(mDriver->Property("adBand", "visible").toBool(), Tests::Timeouts::Playback);
    // The band names the block on air, from its first second no longer announced
    // as the next one.
    QVERIFY2(Text("adLabel").startsWith(QStringLiteral("Реклама · блок 10:15")), qPrintable(Text("adLabel")));
    QCOMPARE(Text("nextAdText"), QString());
    QVERIFY(Hear(Tests::TestMedia::AdFrequency));
    // After the block the music comes back and the band goes.
    QVERIFY(Hear(Tests::TestMedia::MusicAFrequency));
    QTRY_VERIFY_WITH_TIMEOUT(!mDriver->Property("adBand", "visible").toBool(), Tests::Timeouts::Quick);
}

void TestNowPlayingScreen::listsOpenAndCloseBack_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("document");
    QTest::newRow("schedule") << "scheduleButton"
                              << "player/now_playing/schedule_widget.qml";
    QTest::newRow("ads") << "adsButton"
                         << "player/now_playing/ads_list_widget.qml";
    QTest::newRow("tracks") << "tracksButton"
                            << "player/now_playing/music_track_list_widget.qml";
}

void TestNowPlayingScreen::listsOpenAndCloseBack()
{
    QFETCH(QString, button);
    QFETCH(QString, document);
    Open(Day(), QTime(10, 0));
    QVERIFY(mDriver->Click(button));
    QTRY_VERIFY_WITH_TIMEOUT(mDriver->DocumentShown(document), Tests::Timeouts::Quick);
    // Still the "Плеер" section.
    QVERIFY(mDriver->Property("playerButton", "selected").toBool());
    QVERIFY(mDriver->Click("backButton"));
    QTRY_VERIFY_WITH_TIMEOUT(
        mDriver->DocumentShown(QStringLiteral("player/now_playing/now_playing_widget.qml")),
        Tests::Timeouts::Quick);
}

void TestNowPlayingScreen::saysWhenTheNextPeriodBegins_data()
{
    QTest::addColumn<bool>("stored");
    QTest::newRow("after a restart") << true;
    // The player is made and started in one go as the schedule arrives.
    QTest::newRow("right after signing in") << false;
}

void TestNowPlayingScreen::saysWhenTheNextPeriodBegins()
{
    QFETCH(bool, stored);
    const QJsonObject week =
        ShopSession::Schedule({ShopSession::Period(QStringLiteral("Утро"), "09:00", "13:00", 11),
                               ShopSession::Period(QStringLiteral("Вечер"), "15:00", "20:00", 11)},
                              {ShopSession::MusicPlaylist(11, QStringLiteral("Музыка"), {1})});
    Open(week, QTime(14, 0), stored);
    QTRY_COMPARE_WITH_TIMEOUT(
        Text("stateText"), QStringLiteral("Сейчас нет периода воспроизведения. Следующий начнётся в 15:00"),
        Tests::Timeouts::Process);
    QVERIFY(mDriver->Property("stateText", "visible").toBool());
    QCOMPARE(Text("periodText"), QStringLiteral("Период не идёт"));
}

void TestNowPlayingScreen::countsThePeriodsOwnFiles()
{
    // The period plays track 1 alone, which the service never gives; track 2 of the
    // schedule comes down meanwhile.
    Tests::ServiceFault missing(QStringLiteral("media/music/music_a.mp3"), QStringLiteral("not_found"));
    QVERIFY(mService->AddFault(missing) > 0);
    Open(ShopSession::Schedule({ShopSession::Period(QStringLiteral("День"), "09:00", "13:00", 11)},
                               {ShopSession::MusicPlaylist(11, QStringLiteral("Музыка"), {1}),
                                ShopSession::MusicPlaylist(12, QStringLiteral("Другая"), {2})}),
         QTime(10, 0));
    QTRY_COMPARE_WITH_TIMEOUT(Text("downloadsText"), QStringLiteral("Загружено 1 из 3 файлов"),
                              Tests::Timeouts::Process);
    QCOMPARE(mDriver->Property("nowPlayingScreen", "situation").toString(), QStringLiteral("waiting"));
    QCOMPARE(Text("stateText"), QStringLiteral("Загружаем файлы периода: 0 из 1"));
}

void TestNowPlayingScreen::saysWhenTheScheduleWasChecked()
{
    // A minute of the update interval lasts a fraction of a second here.
    Core::UserEnvironment::SetMinuteForTesting(40);
    Open(Day(), QTime(10, 0));
    QCOMPARE(Text("checkedText"), QString());
    QTRY_VERIFY2_WITH_TIMEOUT(Text("checkedText").startsWith(QStringLiteral("Расписание проверено в ")),
                              qPrintable(Text("checkedText")), Tests::Timeouts::Process);
}

void TestNowPlayingScreen::saysWhenNoScheduleCouldBeLoaded()
{
    // Signed in, nothing stored yet, and the server fails the schedule once: the
    // retry then gets it.
    Tests::ServiceFault failing(QStringLiteral("playback/configuration_v2"), QStringLiteral("status"), 1);
    failing.status = 500;
    QVERIFY(mService->AddFault(failing) > 0);
    Open(Day(), QTime(10, 0), false);
    QTRY_VERIFY2_WITH_TIMEOUT(Text("stateText").startsWith(QStringLiteral("Не удалось загрузить расписание")),
                              qPrintable(Text("stateText")), Tests::Timeouts::Process);
    QVERIFY(!mDriver->Property("trackTitleText", "visible").toBool());
    QVERIFY(
        mDriver->DocumentShown(QStringLiteral("player/now_playing/loading_configuration_error_widget.qml")));
    // In words the owner can act on; the network library's English is for the log.
    QCOMPARE(Text("errorMessage"), QString::fromUtf8(UI::Desktop::ScreenErrorText::RequestFailed));
    QVERIFY(mDriver->Click(QStringLiteral("retryButton")));
    QVERIFY(Hear(Tests::TestMedia::MusicAFrequency));
    QTRY_VERIFY_WITH_TIMEOUT(
        !mDriver->DocumentShown(QStringLiteral("player/now_playing/loading_configuration_error_widget.qml")),
        Tests::Timeouts::Quick);
    QTRY_COMPARE_WITH_TIMEOUT(Text("periodText"), QStringLiteral("День · 09:00 – 13:00"),
                              Tests::Timeouts::Quick);
}

void TestNowPlayingScreen::saysWhenTodaysScheduleIsOver()
{
    // Tomorrow's day is the same week's next one in the service's schedule.
    Open(Day(), QTime(12, 59, 57));
    QVERIFY(Hear(Tests::TestMedia::MusicAFrequency));
    QTRY_VERIFY2_WITH_TIMEOUT(
        mDriver->DocumentShown(QStringLiteral("player/now_playing/last_period_finished_widget.qml")),
        qPrintable(Text("stateText") + " / " + mDriver->CurrentDocument()), Tests::Timeouts::Playback);
    QVERIFY(mDriver->UnnamedControls().isEmpty());
}

void TestNowPlayingScreen::asksToSetTheClockWhenItIsWrong()
{
    // The schedule is checked every couple of seconds here: each check brings the
    // server's clock.
    Core::UserEnvironment::SetMinuteForTesting(40);
    Open(Day(), QTime(10, 0));
    QVERIFY(Hear(Tests::TestMedia::MusicAFrequency));
    // The server's clock three minutes ahead of the computer's.
    QVERIFY(mService->ShiftClock(ServiceShiftSeconds() + 180));
    const QString page = QStringLiteral("player/now_playing/set_local_time_widget.qml");
    QTRY_VERIFY_WITH_TIMEOUT(mDriver->DocumentShown(page), Tests::Timeouts::Process);
    // The music goes on meanwhile: only the reports and the hours are at stake.
    QVERIFY(Hear(Tests::TestMedia::MusicAFrequency));
    QVERIFY(mService->ShiftClock(ServiceShiftSeconds()));
    QVERIFY(mDriver->Click(QStringLiteral("checkAgainButton")));
    QTRY_VERIFY_WITH_TIMEOUT(!mDriver->DocumentShown(page), Tests::Timeouts::Process);
}

QTEST_MAIN(TestNowPlayingScreen)
#include "tst_now_playing_screen.moc"
