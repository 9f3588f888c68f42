#include "core/content_playing/ads_block.h"
#include "core/content_playing/ads_scheduler.h"
#include "core/content_playing/ads_scheduler_observer.h"
#include "core/content_playing/noninterrupting_ads_holder.h"
#include "core/content_playing/playable_period.h"
#include "core/utilities/clock.h"
#include "tests/core/content_playing/event_log_messages.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/recording_period_observer.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"

#include <QElapsedTimer>
#include <QtTest>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

using Core::ContentPlaying::AdsBlock;
using Core::ContentPlaying::AdsScheduler;
using Core::ContentPlaying::NoninterruptingAdsHolder;
using Core::ContentPlaying::PlayablePeriod;
using Core::DataTypes::Playback::ContentType;
using Kind = Tests::RecordingPeriodObserver::Kind;
using Tests::TestPeriods;

namespace {

// Which ad blocks a scheduler reported, with their kind.
class RecordingAdsObserver : public Core::ContentPlaying::AdsSchedulerObserver
{
public:
    void InterruptAdBlockStarted(std::shared_ptr<AdsBlock> block) override
    {
        due.emplace_back(block->GetName(), true);
    }
    void NoninterruptAdBlockStarted(std::shared_ptr<AdsBlock> block) override
    {
        due.emplace_back(block->GetName(), false);
    }

    std::vector<std::pair<std::string, bool>> due;
};

// An ad block whose file is not in the cache: when due it is only logged.
std::shared_ptr<AdsBlock> Ad(const std::string& name, const std::string& start, bool interrupts = true)
{
    return TestPeriods::Ad(
        name, start, {Tests::PlaybackTestTracks::Make(1, ContentType::Clip, QStringLiteral("нет_файла.mp3"))},
        interrupts);
}

QString Text(const std::string& name, const std::string& start, const std::string& end)
{
    return QString::fromStdString(TestPeriods::Text(name, start, end));
}

} // namespace

// Which period is current, and the timers of periods and ads, without playing
// anything: the periods here have no content and their ads no files.
class PlayablePeriodTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
    }

    void cleanup()
    {
        Core::Utilities::Clock::ResetForTesting();
        dataDirectory.reset();
    }

    void isCurrent_data()
    {
        QTest::addColumn<QTime>("now");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("end");
        QTest::addColumn<QString>("date");
        QTest::addColumn<bool>("current");

        const QString today = QString::fromStdString(TestPeriods::Today());
        QTest::newRow("the start counts") << QTime(11, 0) << "11:00"
                                          << "12:00" << today << true;
        QTest::newRow("the last second") << QTime(11, 59, 59) << "11:00"
                                         << "12:00" << today << true;
        QTest::newRow("the end does not") << QTime(12, 0) << "11:00"
                                          << "12:00" << today << false;
        QTest::newRow("before the start") << QTime(10, 59, 59) << "11:00"
                                          << "12:00" << today << false;
        QTest::newRow("00:00 ends the day") << QTime(23, 59, 59) << "23:00"
                                            << "00:00" << today << true;
        QTest::newRow("another day") << QTime(11, 30) << "11:00"
                                     << "12:00"
                                     << "22.11.2026" << false;
        QTest::newRow("another date format") << QTime(11, 30) << "11:00"
                                             << "12:00"
                                             << "21/11/2026" << false;
        QTest::newRow("another date order") << QTime(11, 30) << "11:00"
                                            << "12:00"
                                            << "2026.11.21" << false;
    }

    void isCurrent()
    {
        QFETCH(QTime, now);
        QFETCH(QString, start);
        QFETCH(QString, end);
        QFETCH(QString, date);
        QFETCH(bool, current);
        TestPeriods::SetNow(now);
        const auto period =
            TestPeriods::Make("P", start.toStdString(), end.toStdString(), date.toStdString());
        QCOMPARE(period->IsCurrent(), current);
    }

    // The chain itself finds its current period; one started in its middle goes
    // straight to its content, leaving the ads at its start alone.
    void theChainFindsItsCurrentPeriod()
    {
        Tests::RecordingPeriodObserver observer;
        const auto a = TestPeriods::Make("A", "11:00", "12:00");
        const auto b = TestPeriods::Make("B", "12:00", "13:00");
        const auto c = TestPeriods::Make("C", "13:00", "14:00");
        TestPeriods::Chain({a, b, c});
        a->SetObserverForSequence(&observer);
        b->TryToAddAdvertisingBlocks({Ad("Начало B", "12:00"), Ad("Внутри B", "12:40")});

        TestPeriods::SetNow(QTime(12, 30));
        a->FindAndStartCurrent();
        QCOMPARE(observer.events.size(), std::size_t{1});
        QCOMPARE(observer.events[0].kind, Kind::PeriodStarted);
        QCOMPARE(observer.events[0].period, b.get());
        QVERIFY(!a->IsStarted() && b->IsStarted() && !c->IsStarted());
        QVERIFY(!b->IsPlayingAdBlock());
        QCOMPARE(Tests::EventLogMessages::Read(),
                 QStringList({"Период " + Text("B", "12:00", "13:00") + " закончится через 30:00",
                              "\tЗапуск таймера на окончание периода 30:00"}));
        a->FindAndStopCurrent();

        // After the last period's end nothing is current.
        const auto late = TestPeriods::Make("Поздний", "13:00", "14:00");
        TestPeriods::Chain({c, late});
        c->SetObserverForSequence(&observer);
        TestPeriods::SetNow(QTime(15, 0));
        c->FindAndStartCurrent();
        QCOMPARE(observer.events.size(), std::size_t{2});
        QCOMPARE(observer.events[1].kind, Kind::CurrentPeriodNotFound);
        QCOMPARE(Tests::EventLogMessages::Read().last(), "Период " + Text("Поздний", "13:00", "14:00") +
                                                             " не является текущим и не имеет следующего");
        QVERIFY(!c->IsStarted() && !late->IsStarted());
    }

    // Only ads still to come get a timer, read against one reading of the clock;
    // each is reported once, by its kind, and nothing after Cancel().
    void theSchedulerTimesOnlyFutureAds()
    {
        RecordingAdsObserver observer;
        RecordingAdsObserver cancelledObserver;
        AdsScheduler scheduler(&observer);
        AdsScheduler cancelled(&cancelledObserver);

        TestPeriods::SetNow(QTime(11, 30));
        scheduler.ScheduleAds({Ad("прошедший", "11:29"), Ad("сейчас", "11:30"), nullptr});

        TestPeriods::SetNow(QTime(11, 30, 59));
        QElapsedTimer elapsed;
        elapsed.start();
        scheduler.ScheduleAds({Ad("вежливый", "11:31", false), Ad("прерывающий", "11:31")});
        cancelled.ScheduleAds({Ad("отменённый", "11:31")});
        cancelled.Cancel();
        cancelled.Cancel();
        {
            AdsScheduler dropped(&cancelledObserver);
            dropped.ScheduleAds({Ad("забытый", "11:31")});
        }

        QTRY_COMPARE_WITH_TIMEOUT(observer.due.size(), std::size_t{2}, Tests::Timeouts::Process);
        QVERIFY2(elapsed.elapsed() >= 900, qPrintable(QString::number(elapsed.elapsed())));
        QCOMPARE(observer.due,
                 (std::vector<std::pair<std::string, bool>>{{"вежливый", false}, {"прерывающий", true}}));
        QVERIFY(!QTest::qWaitFor([&]() { return observer.due.size() > 2 || !cancelledObserver.due.empty(); },
                                 Tests::Timeouts::Silence));
    }

    // Ads with nothing to play leave the content alone: a spot whose file has not
    // arrived, and a block the server left without spots, which would never end.
    void adsWithoutSpotsArePassedOver()
    {
        TestPeriods::SetNow(QTime(11, 30));
        const auto period = TestPeriods::Make("P", "11:00", "12:00");
        period->StartAsCurrent();
        period->InterruptAdBlockStarted(TestPeriods::Ad("Пустой", "11:30", {}, true));
        period->NoninterruptAdBlockStarted(Ad("Нескачанный", "11:30", false));
        QVERIFY(!period->IsPlayingAdBlock());
        QCOMPARE(
            Tests::EventLogMessages::Read().mid(2),
            QStringList({"Настало время реклманого блока Пустой", "Блок Пустой должен прерывать контент",
                         "У блока Пустой нет скачанных файлов", "Настало время реклманого блока Нескачанный",
                         "Блок Нескачанный НЕ должен прерывать контент",
                         "У блока Нескачанный нет скачанных файлов"}));
        period->FindAndStopCurrent();
    }

    void theHolderMergesIntoItsFirstBlock()
    {
        NoninterruptingAdsHolder holder;
        QVERIFY(holder.IsEmpty());
        QVERIFY(!holder.GetAllTracksBlockAndClear());

        const auto first = Ad("первый", "11:30", false);
        holder.AddAdBlock(first);
        holder.AddAdBlock(nullptr);
        holder.AddAdBlock(Ad("второй", "11:30", false));
        QVERIFY(!holder.IsEmpty());
        // The first block itself, not a copy: it is played once and dropped.
        QCOMPARE(holder.GetAllTracksBlockAndClear(), first);
        QVERIFY(holder.IsEmpty());
        QVERIFY(!holder.GetAllTracksBlockAndClear());

        holder.AddAdBlock(first);
        holder.Clear();
        QVERIFY(holder.IsEmpty());
        QVERIFY(!holder.GetAllTracksBlockAndClear());
    }

    // A stopped or dropped period reports nothing more; the periods left running
    // beside them show that the wait was long enough for their timers to fire.
    void aPeriodsTimersEndWithIt()
    {
        Tests::RecordingPeriodObserver observer;
        TestPeriods::SetNow(QTime(11, 58, 59));
        const auto makeStarted = [&observer](const std::string& name, const std::string& start,
                                             const std::string& end, bool politeAd) {
            const auto period = TestPeriods::Make(name, start, end);
            period->SetObserverForSequence(&observer);
            period->TryToAddAdvertisingBlocks({Ad("Реклама " + name, "11:59", !politeAd)});
            period->StartAsCurrent();
            return period;
        };
        const auto stoppedWithAd = makeStarted("X", "11:00", "12:00", false);
        const auto stoppedAtItsEnd = makeStarted("Y", "10:00", "11:59", false);
        auto dropped = makeStarted("W", "11:00", "12:00", false);
        const auto ending = makeStarted("Z", "10:00", "11:59", false);
        const auto withAd = makeStarted("V", "11:00", "12:00", true);
        stoppedWithAd->FindAndStopCurrent();
        stoppedAtItsEnd->FindAndStopCurrent();
        dropped.reset();

        QTRY_COMPARE_WITH_TIMEOUT(observer.Count(Kind::LastPeriodFinished), 1, Tests::Timeouts::Process);
        QTRY_COMPARE_WITH_TIMEOUT(Tests::EventLogMessages::Read().size(), 15, Tests::Timeouts::Process);
        QVERIFY(!QTest::qWaitFor([&]() { return Tests::EventLogMessages::Read().size() > 15; },
                                 Tests::Timeouts::Silence));
        QCOMPARE(observer.events.back().period, ending.get());
        QCOMPARE(observer.Count(Kind::PeriodStarted), 5);

        QStringList expected;
        for (const auto& [name, start, end] :
             std::vector<std::tuple<std::string, std::string, std::string>>{{"X", "11:00", "12:00"},
                                                                            {"Y", "10:00", "11:59"},
                                                                            {"W", "11:00", "12:00"},
                                                                            {"Z", "10:00", "11:59"},
                                                                            {"V", "11:00", "12:00"}}) {
            const QString left = end == "12:00" ? "01:01" : "00:01";
            expected << "Период " + Text(name, start, end) + " закончится через " + left
                     << "\tЗапуск таймера на окончание периода " + left;
        }
        const QStringList messages = Tests::EventLogMessages::Read();
        QCOMPARE(messages.mid(0, 10), expected);
        // Both fire at the same moment, in either order.
        QStringList fired = messages.mid(10);
        fired.sort();
        QStringList expectedFired = {"Сработал таймер окончания периода " + Text("Z", "10:00", "11:59"),
                                     "У периода " + Text("Z", "10:00", "11:59") + " нет следующего периода",
                                     "Настало время реклманого блока Реклама V",
                                     "Блок Реклама V НЕ должен прерывать контент",
                                     "У блока Реклама V нет скачанных файлов"};
        expectedFired.sort();
        QCOMPARE(fired, expectedFired);
    }

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
};

QTEST_GUILESS_MAIN(PlayablePeriodTest)
#include "tst_playable_period.moc"
