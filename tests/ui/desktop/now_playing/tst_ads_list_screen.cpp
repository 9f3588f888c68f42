// The period's advertising as a list: which blocks belong to the period playing
// now, in time order, which have played, which interrupt, and whether their spots
// have arrived on this computer; late in the period it opens at the next block.

#include "core/content_playing/player.h"
#include "core/user_environment.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"
#include "tests/ui/support/qml_warnings.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/ads_list_widget_desktop.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/list_models/ad_blocks_list_model.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QJsonArray>
#include <QQuickItem>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Core::DataTypes::Playback::AdBlock;
using Core::DataTypes::Playback::ContentType;
using Tests::ShopSession;
using UI::ListModels::AdBlocksListModel;

namespace {

AdBlock Block(const std::string& start, const std::string& date, std::int32_t track, bool interrupts = true)
{
    AdBlock block;
    block.name = "Блок " + start;
    block.startTime = start;
    block.interruptContent = interrupts;
    block.tracks.push_back({date, track});
    return block;
}

} // namespace

class TestAdsListScreen : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void modelTakesThePeriodsBlocks_data();
    void modelTakesThePeriodsBlocks();
    void showsTheBlocksAndTheirSpots();
    void opensAtTheNextBlock();

private:
    // The list over the window, with `ads` in the 09:00–13:00 period and `now` on
    // the clock; the player plays.
    void Open(const QJsonArray& ads, const QTime& now);

    QTemporaryDir mContent;
    std::unique_ptr<Tests::ReferenceService> mService;
    std::unique_ptr<Tests::TestDataDirectory> mData;
    std::unique_ptr<UI::Desktop::MainWindowDesktop> mWindow;
};

void TestAdsListScreen::initTestCase()
{
    Tests::QmlWarnings::StartRecording();
    QVERIFY(mContent.isValid());
    QString error;
    mService =
        ShopSession::StartedServing(mContent.path(), {"music/music_a.mp3", "clip/ad_short.mp3"}, &error);
    QVERIFY2(mService, qPrintable(error));
}

void TestAdsListScreen::cleanup()
{
    mWindow.reset();
    ShopSession::ForgetSession();
    mData.reset();
    const QStringList warnings = Tests::QmlWarnings::Take();
    QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
}

void TestAdsListScreen::modelTakesThePeriodsBlocks_data()
{
    QTest::addColumn<QString>("now");
    QTest::addColumn<QStringList>("times");
    QTest::addColumn<QList<bool>>("played");
    QTest::addColumn<QList<int>>("downloaded");

    // Period 09:00–13:00 on 24.11.2026; blocks out of order, one before the period,
    // one at its end (the next period's), one of another day.
    QTest::newRow("morning") << "09:30" << QStringList{"10:15", "11:30", "12:59"}
                             << QList<bool>{false, false, false} << QList<int>{1, 0, 0};
    QTest::newRow("late morning") << "11:45" << QStringList{"10:15", "11:30", "12:59"}
                                  << QList<bool>{true, true, false} << QList<int>{1, 0, 0};
}

void TestAdsListScreen::modelTakesThePeriodsBlocks()
{
    QFETCH(QString, now);
    QFETCH(QStringList, times);
    QFETCH(QList<bool>, played);
    QFETCH(QList<int>, downloaded);

    Core::DataTypes::Playback::PlaybackConfiguration configuration;
    Core::DataTypes::Playback::Track spot;
    spot.id = 41;
    spot.name = "Скидки";
    Core::DataTypes::Playback::Track missing;
    missing.id = 42;
    missing.name = "Новинки";
    configuration.tracks[ContentType::Clip] = {spot, missing};
    const std::string today = "24.11.2026";
    configuration.adBlocks = {Block("11:30", today, 42, false), Block("08:45", today, 41),
                              Block("13:00", today, 41),        Block("10:15", today, 41),
                              Block("10:45", "25.11.2026", 41), Block("12:59", today, 99)};

    AdBlocksListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    const int nowSeconds = QTime::fromString(now, "HH:mm").msecsSinceStartOfDay() / 1000;
    model.SetBlocks(configuration, "09:00", "13:00", today, nowSeconds,
                    [](const Core::DataTypes::Playback::Track& track) { return track.id == 41; });

    QCOMPARE(model.rowCount(), times.size());
    for (int row = 0; row < model.rowCount(); ++row) {
        const QModelIndex index = model.index(row);
        QCOMPARE(index.data(AdBlocksListModel::TimeRole).toString(), times[row]);
        QCOMPARE(index.data(AdBlocksListModel::PlayedRole).toBool(), played[row]);
        QCOMPARE(index.data(AdBlocksListModel::DownloadedCountRole).toInt(), downloaded[row]);
        QCOMPARE(index.data(AdBlocksListModel::SpotCountRole).toInt(), 1);
    }
    QVERIFY(model.index(0).data(AdBlocksListModel::InterruptsRole).toBool());
    QVERIFY(!model.index(1).data(AdBlocksListModel::InterruptsRole).toBool());
    // A spot the configuration does not describe is still listed, by its number.
    QCOMPARE(model.index(2).data(AdBlocksListModel::SpotsRole).toStringList(), QStringList{"Ролик 99"});

    // The screen looks again every few seconds. Downloads and the clock change rows
    // in place: a reset would throw the owner's scroll back to the top each time.
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    model.SetBlocks(configuration, "09:00", "13:00", today, QTime(12, 59, 30).msecsSinceStartOfDay() / 1000,
                    [](const Core::DataTypes::Playback::Track&) { return true; });
    QCOMPARE(resets.count(), 0);
    QVERIFY(!changes.isEmpty());
    for (int row = 0; row < model.rowCount(); ++row) {
        QVERIFY(model.index(row).data(AdBlocksListModel::PlayedRole).toBool());
    }
    QCOMPARE(model.index(1).data(AdBlocksListModel::DownloadedCountRole).toInt(), 1);
    // Another schedule's blocks are another list.
    configuration.adBlocks.pop_back();
    model.SetBlocks(configuration, "09:00", "13:00", today, 0, {});
    QCOMPARE(resets.count(), 1);
    QCOMPARE(model.rowCount(), 2);
}

void TestAdsListScreen::Open(const QJsonArray& ads, const QTime& now)
{
    mData = std::make_unique<Tests::TestDataDirectory>();
    QVERIFY(mData->IsValid());
    QVERIFY(mService->Reset());
    QVERIFY(mService->SetToday(
        QDate::fromString(QString::fromStdString(Tests::TestPeriods::Today()), "dd.MM.yyyy")));
    QVERIFY(mService->ReplaceConfiguration(
                QStringLiteral("shop1"),
                ShopSession::Schedule({ShopSession::Period(QStringLiteral("День"), "09:00", "13:00", 11)},
                                      {ShopSession::MusicPlaylist(11, QStringLiteral("Музыка"), {1})}, ads)) >
            0);
    Tests::TestPeriods::SetNow(now);
    QString error;
    auto environment = ShopSession::SignedIn(ShopSession::ServerOf(*mService), ShopSession::Shop(), &error);
    QVERIFY2(environment, qPrintable(error));
    QVERIFY2(ShopSession::LoadSchedule(*environment, &error), qPrintable(error));
    const auto player = environment->GetContentPlayer();
    QVERIFY(player);
    player->Start();

    mWindow.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
    UI::Desktop::MainWindowDesktop::PushWidget(new UI::Desktop::AdsListWidgetDesktop());
}

void TestAdsListScreen::showsTheBlocksAndTheirSpots()
{
    Open({ShopSession::AdBlock("11:30"), ShopSession::AdBlock("10:15")}, QTime(11, 0));
    Tests::ScreenDriver driver(mWindow.get());
    QTRY_VERIFY_WITH_TIMEOUT(driver.Item(QStringLiteral("adBlock1")), Tests::Timeouts::Process);

    auto textOf = [&](const QString& block, const QString& item) -> QString {
        QObject* found = driver.Item(block);
        QObject* child = found ? found->findChild<QObject*>(item) : nullptr;
        return child ? child->property("text").toString() : QString();
    };
    QCOMPARE(textOf(QStringLiteral("adBlock0"), QStringLiteral("timeText")), QStringLiteral("10:15"));
    QCOMPARE(textOf(QStringLiteral("adBlock1"), QStringLiteral("timeText")), QStringLiteral("11:30"));
    QCOMPARE(textOf(QStringLiteral("adBlock0"), QStringLiteral("interruptsText")),
             QStringLiteral("прерывает"));
    QVERIFY(driver.Property(QStringLiteral("adBlock0"), "played").toBool());
    QVERIFY(!driver.Property(QStringLiteral("adBlock1"), "played").toBool());
    // The spot arrives with the period's files.
    QTRY_COMPARE_WITH_TIMEOUT(textOf(QStringLiteral("adBlock1"), QStringLiteral("downloadsText")),
                              QStringLiteral("все ролики загружены"), Tests::Timeouts::Playback);
    const QStringList unnamed = driver.UnnamedControls();
    QVERIFY2(unnamed.isEmpty(), qPrintable(unnamed.join(QLatin1Char('\n'))));
}

void TestAdsListScreen::opensAtTheNextBlock()
{
    // A block every ten minutes from 09:10: at 11:05 the twelve before 11:10 have
    // played and fill more than the window.
    QJsonArray ads;
    for (QTime start(9, 10); start <= QTime(12, 50); start = start.addSecs(600)) {
        ads.append(ShopSession::AdBlock(start.toString(QStringLiteral("HH:mm"))));
    }
    Open(ads, QTime(11, 5));
    Tests::ScreenDriver driver(mWindow.get());
    auto* view = qobject_cast<QQuickItem*>(driver.Item(QStringLiteral("listView")));
    QVERIFY(view);
    const auto inView = [&](const QString& block) {
        auto* item = qobject_cast<QQuickItem*>(driver.Item(block));
        if (item == nullptr || !item->isVisible()) {
            return false;
        }
        const QRectF shown = item->mapRectToItem(view, QRectF(0, 0, item->width(), item->height()));
        return shown.top() >= 0 && shown.bottom() <= view->height();
    };
    QTRY_VERIFY_WITH_TIMEOUT(inView(QStringLiteral("adBlock12")), Tests::Timeouts::Process);
    QVERIFY(!driver.Property(QStringLiteral("adBlock12"), "played").toBool());
    QVERIFY(!inView(QStringLiteral("adBlock0")));
}

QTEST_MAIN(TestAdsListScreen)
#include "tst_ads_list_screen.moc"
