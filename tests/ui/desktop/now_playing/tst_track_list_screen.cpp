// The playing music playlist as a list: the playing track marked, and a click on
// another track plays it, as the sink hears.

#include "core/content_playing/player.h"
#include "core/settings.h"
#include "core/user_environment.h"
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
#include "ui/desktop/music_track_list_widget_desktop.h"
#include "ui/list_models/current_tracks_list_model.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Core::DataTypes::Playback::ContentType;
using Tests::ShopSession;

class TestTrackListScreen : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void modelMarksThePlayingTrack();
    void aClickPlaysTheTrack();

private:
    QTemporaryDir mContent;
    std::unique_ptr<Tests::ReferenceService> mService;
    std::unique_ptr<Tests::TestDataDirectory> mData;
    std::unique_ptr<UI::Desktop::MainWindowDesktop> mWindow;
};

void TestTrackListScreen::initTestCase()
{
    Tests::QmlWarnings::StartRecording();
    QVERIFY(mContent.isValid());
    QString error;
    mService =
        ShopSession::StartedServing(mContent.path(), {"music/music_a.mp3", "music/music_b.mp3"}, &error);
    QVERIFY2(mService, qPrintable(error));
}

void TestTrackListScreen::cleanup()
{
    mWindow.reset();
    ShopSession::ForgetSession();
    mData.reset();
    const QStringList warnings = Tests::QmlWarnings::Take();
    QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
}

void TestTrackListScreen::modelMarksThePlayingTrack()
{
    UI::ListModels::CurrentTracksListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    Core::DataTypes::Playback::Track first;
    first.id = 7;
    first.name = "Утро";
    Core::DataTypes::Playback::Track second;
    second.id = 9;
    second.name = "Полдень";
    second.likeStatus = Core::DataTypes::Playback::LikeStatus::Liked;
    model.SetTracks({first, second});
    QCOMPARE(model.PlayingRow(), -1);

    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    model.SetPlayingTrack(9);
    QCOMPARE(model.PlayingRow(), 1);
    QCOMPARE(changed.count(), 1);
    QVERIFY(model.index(1).data(UI::ListModels::CurrentTracksListModel::PlayingRole).toBool());
    QVERIFY(!model.index(0).data(UI::ListModels::CurrentTracksListModel::PlayingRole).toBool());
    QCOMPARE(model.index(1).data(UI::ListModels::CurrentTracksListModel::LikeStatusRole).toInt(), 1);
    // The same track again changes nothing the view would repaint for.
    model.SetPlayingTrack(9);
    QCOMPARE(changed.count(), 1);
}

void TestTrackListScreen::aClickPlaysTheTrack()
{
    Tests::TwoSinkListener listener;
    QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
    mData = std::make_unique<Tests::TestDataDirectory>();
    QVERIFY(mData->IsValid());
    QVERIFY(mService->Reset());
    QVERIFY(mService->SetToday(
        QDate::fromString(QString::fromStdString(Tests::TestPeriods::Today()), "dd.MM.yyyy")));
    QVERIFY(mService->ReplaceConfiguration(
                QStringLiteral("shop1"),
                ShopSession::Schedule({ShopSession::Period(QStringLiteral("День"), "09:00", "13:00", 11)},
                                      {ShopSession::MusicPlaylist(11, QStringLiteral("Музыка"), {1, 2})})) >
            0);
    Tests::TestPeriods::SetNow(QTime(10, 0));
    Core::Settings::SetShuffle(ContentType::Music, false);
    QString error;
    auto environment = ShopSession::SignedIn(ShopSession::ServerOf(*mService), ShopSession::Shop(), &error);
    QVERIFY2(environment, qPrintable(error));
    QVERIFY2(ShopSession::LoadSchedule(*environment, &error), qPrintable(error));
    const auto player = environment->GetContentPlayer();
    QVERIFY(player);
    player->Start();
    const auto heard = [](double level) {
        return level > Tests::ToneTimeline::Heard;
    };
    QVERIFY(
        listener.WaitForToneLevel(Tests::TestMedia::MusicAFrequency, heard, 0.3, Tests::Timeouts::Playback));

    mWindow.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
    UI::Desktop::MainWindowDesktop::PushWidget(new UI::Desktop::MusicTrackListWidgetDesktop());
    Tests::ScreenDriver driver(mWindow.get());
    QTRY_VERIFY_WITH_TIMEOUT(driver.Item(QStringLiteral("trackRow1")), Tests::Timeouts::Quick);
    QVERIFY(driver.Property(QStringLiteral("trackRow0"), "playing").toBool());
    QVERIFY(!driver.Property(QStringLiteral("trackRow1"), "playing").toBool());
    const QStringList unnamed = driver.UnnamedControls();
    QVERIFY2(unnamed.isEmpty(), qPrintable(unnamed.join(QLatin1Char('\n'))));

    QVERIFY(driver.Click(QStringLiteral("trackRow1")));
    QVERIFY(
        listener.WaitForToneLevel(Tests::TestMedia::MusicBFrequency, heard, 0.3, Tests::Timeouts::Playback));
    QTRY_VERIFY_WITH_TIMEOUT(driver.Property(QStringLiteral("trackRow1"), "playing").toBool(),
                             Tests::Timeouts::Quick);
    QVERIFY(!driver.Property(QStringLiteral("trackRow0"), "playing").toBool());
}

QTEST_MAIN(TestTrackListScreen)
#include "tst_track_list_screen.moc"
