// The week's schedule as the owner sees it: built by the user environment from the
// stored configuration, grouped by schedule, and closed with "Назад" or Escape.

#include "core/data_types/playback/user_facing_schedule.h"
#include "core/user_environment.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/call_outcome.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"
#include "tests/ui/support/qml_warnings.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/schedule_widget_desktop.h"
#include "ui/list_models/schedule_periods_list_model.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Core::DataTypes::Playback::UserFacingSchedule;
using Tests::ShopSession;

class TestScheduleScreen : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void modelGroupsPeriodsBySchedule();
    void showsTheStoredWeek();
    void listsTheDemoWeek();
    void closesWithBackOrEscape_data();
    void closesWithBackOrEscape();

private:
    std::vector<UserFacingSchedule> StoredSchedules();

    QTemporaryDir mContent;
    std::unique_ptr<Tests::ReferenceService> mService;
    std::unique_ptr<Tests::TestDataDirectory> mData;
    std::unique_ptr<UI::Desktop::MainWindowDesktop> mWindow;
};

void TestScheduleScreen::initTestCase()
{
    Tests::QmlWarnings::StartRecording();
    QVERIFY(mContent.isValid());
    QString error;
    mService = ShopSession::StartedServing(mContent.path(), {"music/music_a.mp3"}, &error);
    QVERIFY2(mService, qPrintable(error));
}

void TestScheduleScreen::init()
{
    QVERIFY(mService->Reset());
    mData = std::make_unique<Tests::TestDataDirectory>();
    QVERIFY(mData->IsValid());
    Tests::QmlWarnings::Take();
}

void TestScheduleScreen::cleanup()
{
    mWindow.reset();
    ShopSession::ForgetSession();
    mData.reset();
    const QStringList warnings = Tests::QmlWarnings::Take();
    QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
}

std::vector<UserFacingSchedule> TestScheduleScreen::StoredSchedules()
{
    const QJsonObject week =
        ShopSession::Schedule({ShopSession::Period(QStringLiteral("Утро"), "09:00", "13:00", 11, 70, 90),
                               ShopSession::Period(QStringLiteral("Вечер"), "13:00", "21:00", 12)},
                              {ShopSession::MusicPlaylist(11, QStringLiteral("Бодрое утро"), {1, 2}),
                               ShopSession::MusicPlaylist(12, QStringLiteral("Спокойный вечер"), {3})});
    if (mService->ReplaceConfiguration(QStringLiteral("shop1"), week) <= 0) {
        return {};
    }
    QString error;
    auto environment = ShopSession::SignedIn(ShopSession::ServerOf(*mService), ShopSession::Shop(), &error);
    if (!environment || !ShopSession::LoadSchedule(*environment, &error)) {
        qWarning() << error;
        return {};
    }
    std::vector<UserFacingSchedule> schedules;
    bool answered = false;
    environment->UserFacingSchedules(
        [&](std::vector<UserFacingSchedule> found) {
            schedules = std::move(found);
            answered = true;
        },
        [&](std::shared_ptr<Core::DataTypes::Error>) { answered = true; });
    if (!QTest::qWaitFor([&]() { return answered; }, Tests::Timeouts::Quick)) {
        return {};
    }
    return schedules;
}

void TestScheduleScreen::modelGroupsPeriodsBySchedule()
{
    UI::ListModels::SchedulePeriodsListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    UserFacingSchedule weekdays;
    weekdays.name = "Будни";
    weekdays.periods.resize(2);
    weekdays.periods[0].startTime = "09:00";
    weekdays.periods[0].endTime = "13:00";
    weekdays.periods[0].contentVolume = 70;
    weekdays.periods[0].adsVolume = 90;
    weekdays.periods[1].music.name = "Вечер";
    weekdays.periods[1].music.trackCount = 12;
    UserFacingSchedule weekend;
    weekend.name = "Выходные";
    weekend.periods.resize(1);
    model.SetSchedules({weekdays, weekend});

    QCOMPARE(model.rowCount(), 3);
    const QHash<int, QByteArray> roles = model.roleNames();
    auto value = [&](int row, const QByteArray& key) {
        return model.index(row).data(roles.key(key));
    };
    QCOMPARE(value(0, "scheduleName").toString(), QStringLiteral("Будни"));
    QCOMPARE(value(2, "scheduleName").toString(), QStringLiteral("Выходные"));
    QCOMPARE(value(0, "timeInterval").toString(), QStringLiteral("09:00 - 13:00"));
    QCOMPARE(value(0, "volume").toString(), QStringLiteral("Музыки: 70\nРекламы: 90"));
    QCOMPARE(value(1, "musicPlaylistName").toString(), QStringLiteral("Вечер"));
    QCOMPARE(value(1, "musicPlaylisttrackCount").toInt(), 12);
    QVERIFY(value(1, "videoPlaylistName").toString().isEmpty());

    model.SetSchedules({});
    QCOMPARE(model.rowCount(), 0);
}

void TestScheduleScreen::showsTheStoredWeek()
{
    const std::vector<UserFacingSchedule> schedules = StoredSchedules();
    QVERIFY(!schedules.empty());
    mWindow.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
    UI::Desktop::MainWindowDesktop::PushWidget(new UI::Desktop::ScheduleWidgetDesktop(schedules));
    Tests::ScreenDriver driver(mWindow.get());
    QTRY_VERIFY_WITH_TIMEOUT(driver.Item(QStringLiteral("periodCard1")), Tests::Timeouts::Quick);

    auto textOf = [&](const QString& card, const QString& item) -> QString {
        QObject* found = driver.Item(card);
        QObject* child = found ? found->findChild<QObject*>(item) : nullptr;
        return child ? child->property("text").toString() : QString();
    };
    QCOMPARE(textOf(QStringLiteral("periodCard0"), QStringLiteral("timeText")),
             QStringLiteral("09:00 - 13:00"));
    QCOMPARE(textOf(QStringLiteral("periodCard0"), QStringLiteral("periodNameText")), QStringLiteral("Утро"));
    QCOMPARE(textOf(QStringLiteral("periodCard0"), QStringLiteral("volumeText")),
             QStringLiteral("Музыки: 70\nРекламы: 90"));
    QCOMPARE(textOf(QStringLiteral("periodCard1"), QStringLiteral("periodNameText")),
             QStringLiteral("Вечер"));
    QVERIFY(!driver.Property(QStringLiteral("emptyText"), "visible").toBool());
    const QStringList unnamed = driver.UnnamedControls();
    QVERIFY2(unnamed.isEmpty(), qPrintable(unnamed.join(QLatin1Char('\n'))));
}

// The demo café's week, as the demo server gives it to the demo account: every
// period it plays is on the screen.
void TestScheduleScreen::listsTheDemoWeek()
{
    const QString scenario = Tests::ReferenceService::SourceDirectory() + QStringLiteral("/demo/scenario");
    QFile file(scenario + QStringLiteral("/configurations/demo-cafe.json"));
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
    QSet<QString> expected;
    for (const QJsonValue day :
         QJsonDocument::fromJson(file.readAll()).object()[QStringLiteral("schedule")].toArray()) {
        for (const QJsonValue period : day.toObject()[QStringLiteral("periods")].toArray()) {
            expected.insert(period.toObject()[QStringLiteral("name")].toString());
        }
    }
    QVERIFY(expected.size() > 1);

    Tests::ReferenceService demo(scenario, mContent.path());
    QVERIFY2(demo.Start(), qPrintable(demo.ErrorString()));
    Core::DataTypes::Auth::PlaybackObject cafe;
    cafe.id = 1;
    cafe.code = "demo-cafe";
    Tests::CallOutcome<std::shared_ptr<Core::UserEnvironment>, Core::DataTypes::Error> signIn;
    Core::UserEnvironment::CreateAndStoreEnvironment(ShopSession::ServerOf(demo), cafe, "demo", "demo",
                                                     signIn.Success(), signIn.Failure());
    QTRY_VERIFY_WITH_TIMEOUT(signIn.Calls() > 0, Tests::Timeouts::Process);
    QVERIFY2(signIn.value, qPrintable(signIn.Describe()));
    QString error;
    QVERIFY2(ShopSession::LoadSchedule(*signIn.value, &error), qPrintable(error));
    std::vector<UserFacingSchedule> schedules;
    bool answered = false;
    signIn.value->UserFacingSchedules(
        [&](std::vector<UserFacingSchedule> found) {
            schedules = std::move(found);
            answered = true;
        },
        [&](std::shared_ptr<Core::DataTypes::Error>) { answered = true; });
    QTRY_VERIFY_WITH_TIMEOUT(answered, Tests::Timeouts::Quick);

    mWindow.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
    UI::Desktop::MainWindowDesktop::PushWidget(new UI::Desktop::ScheduleWidgetDesktop(schedules));
    Tests::ScreenDriver driver(mWindow.get());
    QTRY_VERIFY_WITH_TIMEOUT(driver.Item(QStringLiteral("periodCard0")), Tests::Timeouts::Quick);
    QSet<QString> shown;
    for (int card = 0; QObject* found = driver.Item(QStringLiteral("periodCard%1").arg(card)); ++card) {
        if (QObject* name = found->findChild<QObject*>(QStringLiteral("periodNameText"))) {
            shown.insert(name->property("text").toString());
        }
    }
    QCOMPARE(shown, expected);
}

void TestScheduleScreen::closesWithBackOrEscape_data()
{
    QTest::addColumn<bool>("escape");
    QTest::newRow("Назад") << false;
    QTest::newRow("Escape") << true;
}

void TestScheduleScreen::closesWithBackOrEscape()
{
    QFETCH(bool, escape);
    mWindow.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
    auto* screen = new UI::Desktop::ScheduleWidgetDesktop({});
    UI::Desktop::MainWindowDesktop::PushWidget(screen);
    Tests::ScreenDriver driver(mWindow.get());
    // Nothing loaded yet: the screen says so instead of staying blank.
    QVERIFY(driver.Property(QStringLiteral("emptyText"), "visible").toBool());

    QSignalSpy closed(screen, &UI::Desktop::ScheduleWidgetDesktop::Close);
    if (escape) {
        // Keys go where the focus is, once the screen has it.
        QTRY_VERIFY_WITH_TIMEOUT(driver.Property(QStringLiteral("scheduleScreen"), "activeFocus").toBool(),
                                 Tests::Timeouts::Quick);
        driver.PressKey(Qt::Key_Escape);
    } else {
        QVERIFY(driver.Click(QStringLiteral("backButton")));
    }
    QCOMPARE(closed.count(), 1);
}

QTEST_MAIN(TestScheduleScreen)
#include "tst_schedule_screen.moc"
