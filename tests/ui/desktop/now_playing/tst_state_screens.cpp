// The pages that stand in for the music when the player cannot play: today's
// schedule is over, there is no schedule at all, or the computer's clock is wrong.
// Each shows what it is given in both palettes with every control named in
// Russian, and its main button asks once, by click or Enter, unless it is busy.

#include "core/utilities/clock.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"
#include "tests/ui/support/qml_warnings.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/last_period_finished_widget_desktop.h"
#include "ui/desktop/loading_configuration_error_widget_desktop.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/set_local_time_widget_desktop.h"
#include "ui/ui_kit/ui_kit.h"

#include <QSignalSpy>

#include <memory>
#include <optional>

using Core::Utilities::Clock;
using UI::Desktop::MainWindowDesktop;

Q_DECLARE_METATYPE(std::optional<int>)

class TestStateScreens : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void lastPeriodFinishedSaysWhenMusicReturns_data();
    void lastPeriodFinishedSaysWhenMusicReturns();
    void loadingErrorShowsTheError();
    void wrongClockShowsBothClocks_data();
    void wrongClockShowsBothClocks();
    void mainButtonAsksOnceUnlessBusy_data();
    void mainButtonAsksOnceUnlessBusy();

private:
    // On top of a new main window, drawn in both palettes with its controls named.
    void Show(UI::Desktop::BaseWidgetDesktop* screen);
    QString Text(const char* objectName) const;

    std::unique_ptr<Tests::TestDataDirectory> mData;
    std::unique_ptr<MainWindowDesktop> mWindow;
    std::unique_ptr<Tests::ScreenDriver> mDriver;
};

void TestStateScreens::initTestCase()
{
    Tests::QmlWarnings::StartRecording();
}

void TestStateScreens::init()
{
    mData = std::make_unique<Tests::TestDataDirectory>();
    QVERIFY(mData->IsValid());
    Tests::QmlWarnings::Take();
}

void TestStateScreens::cleanup()
{
    mDriver.reset();
    mWindow.reset();
    Clock::ResetForTesting();
    mData.reset();
    const QStringList warnings = Tests::QmlWarnings::Take();
    QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
}

void TestStateScreens::Show(UI::Desktop::BaseWidgetDesktop* screen)
{
    mWindow.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
    MainWindowDesktop::PushWidget(screen);
    mDriver = std::make_unique<Tests::ScreenDriver>(mWindow.get());
    QCOMPARE(mDriver->CurrentScreen(), screen);
    // Drawn in the palette the case began with and in the other; two switches leave
    // the first one for the next case.
    for (int i = 0; i < 2; ++i) {
        QVERIFY(!screen->grabFramebuffer().isNull());
        UI::UiKit::GetInstance().SwitchTheme();
    }
    const QStringList unnamed = mDriver->UnnamedControls();
    QVERIFY2(unnamed.isEmpty(), qPrintable(unnamed.join(QLatin1Char('\n'))));
}

QString TestStateScreens::Text(const char* objectName) const
{
    return mDriver->Property(QString::fromLatin1(objectName), "text").toString();
}

void TestStateScreens::lastPeriodFinishedSaysWhenMusicReturns_data()
{
    QTest::addColumn<QDateTime>("now");
    QTest::addColumn<QDateTime>("next");
    QTest::addColumn<QString>("expected");
    const QDateTime sundayEvening(QDate(2026, 11, 22), QTime(22, 0));
    const QTime nine(9, 0);
    QTest::newRow("tomorrow") << sundayEvening << QDateTime(QDate(2026, 11, 23), nine) << "завтра в 09:00";
    QTest::newRow("this week, its own preposition")
        << sundayEvening << QDateTime(QDate(2026, 11, 24), QTime(9, 30)) << "во вторник в 09:30";
    QTest::newRow("a week or more ahead")
        << sundayEvening << QDateTime(QDate(2026, 11, 29), nine) << "29.11.2026 в 09:00";
    QTest::newRow("not known") << sundayEvening << QDateTime() << QString();
    // Shown late in the evening, the page must not still say "завтра" after midnight.
    QTest::newRow("over midnight") << QDateTime(QDate(2026, 11, 22), QTime(23, 59, 59, 700))
                                   << QDateTime(QDate(2026, 11, 23), nine) << "сегодня в 09:00";
}

void TestStateScreens::lastPeriodFinishedSaysWhenMusicReturns()
{
    QFETCH(QDateTime, now);
    QFETCH(QDateTime, next);
    QFETCH(QString, expected);
    Clock::SetCurrentDateTimeForTesting(now);
    auto* screen = new UI::Desktop::LastPeriodFinishedWidgetDesktop();
    screen->SetNextStart(next);
    Show(screen);
    QTRY_COMPARE_WITH_TIMEOUT(Text("nextStartText"), expected, Tests::Timeouts::Quick);
    QCOMPARE(mDriver->Property("nextStartText", "visible").toBool(), !expected.isEmpty());
}

void TestStateScreens::loadingErrorShowsTheError()
{
    auto* screen = new UI::Desktop::LoadingConfigurationErrorWidgetDesktop();
    // Nothing to say yet: no empty error box.
    Show(screen);
    QVERIFY(!mDriver->Property("errorMessage", "visible").toBool());
    screen->SetErrorText(QStringLiteral("Отсутствует связь с сервером"));
    QVERIFY(mDriver->Property("errorMessage", "visible").toBool());
    QCOMPARE(Text("errorMessage"), QStringLiteral("Отсутствует связь с сервером"));
}

void TestStateScreens::wrongClockShowsBothClocks_data()
{
    QTest::addColumn<QDateTime>("now");
    // Seconds the server's clock is ahead; none when its time is not known.
    QTest::addColumn<std::optional<int>>("serverAhead");
    // "server time and date / local time and date", dates only on different days.
    QTest::addColumn<QString>("expected");
    const QDateTime morning(QDate(2026, 11, 24), QTime(10, 0, 30));
    QTest::newRow("server two minutes ahead") << morning << std::optional<int>(120) << "10:02 / 10:00";
    QTest::newRow("server an hour behind, the day before")
        << QDateTime(QDate(2026, 11, 25), QTime(0, 30)) << std::optional<int>(-3600)
        << "23:30 24.11.2026 / 00:30 25.11.2026";
    QTest::newRow("server's time not known") << morning << std::optional<int>() << "— / 10:00";
    // Both clocks run on with the computer's.
    QTest::newRow("ticking") << QDateTime(QDate(2026, 11, 24), QTime(11, 59, 59, 500))
                             << std::optional<int>(120) << "12:02 / 12:00";
}

void TestStateScreens::wrongClockShowsBothClocks()
{
    QFETCH(QDateTime, now);
    QFETCH(std::optional<int>, serverAhead);
    QFETCH(QString, expected);
    Clock::SetCurrentDateTimeForTesting(now);
    auto* screen = new UI::Desktop::SetLocalTimeWidgetDesktop();
    screen->SetServerTime(serverAhead ? Clock::CurrentLocalDateTime().addSecs(*serverAhead) : QDateTime());
    Show(screen);
    const auto clocks = [this] {
        return QStringLiteral("%1 %2 / %3 %4")
            .arg(Text("serverTimeText"), Text("serverDateText"), Text("localTimeText"), Text("localDateText"))
            .simplified();
    };
    QTRY_COMPARE_WITH_TIMEOUT(clocks(), expected, Tests::Timeouts::Quick);
    QCOMPARE(mDriver->Property("serverDateText", "visible").toBool(), expected.contains(QLatin1Char('.')));
    QVERIFY(Text("commandText").contains(QStringLiteral("timedatectl set-ntp true")));
}

void TestStateScreens::mainButtonAsksOnceUnlessBusy_data()
{
    QTest::addColumn<bool>("clock");
    QTest::addColumn<bool>("enter");
    QTest::addColumn<bool>("busy");
    QTest::newRow("Повторить, click") << false << false << false;
    QTest::newRow("Повторить, Enter") << false << true << false;
    QTest::newRow("Повторить while retrying") << false << false << true;
    QTest::newRow("Проверить снова, click") << true << false << false;
    QTest::newRow("Проверить снова, Enter") << true << true << false;
    QTest::newRow("Проверить снова while checking, Enter") << true << true << true;
}

void TestStateScreens::mainButtonAsksOnceUnlessBusy()
{
    QFETCH(bool, clock);
    QFETCH(bool, enter);
    QFETCH(bool, busy);
    std::unique_ptr<QSignalSpy> asked;
    QString button;
    if (clock) {
        auto* screen = new UI::Desktop::SetLocalTimeWidgetDesktop();
        asked = std::make_unique<QSignalSpy>(screen,
                                             &UI::Desktop::SetLocalTimeWidgetDesktop::CheckAgainRequested);
        screen->SetBusy(busy);
        button = QStringLiteral("checkAgainButton");
        Show(screen);
    } else {
        auto* screen = new UI::Desktop::LoadingConfigurationErrorWidgetDesktop();
        asked = std::make_unique<QSignalSpy>(
            screen, &UI::Desktop::LoadingConfigurationErrorWidgetDesktop::RetryRequested);
        screen->SetBusy(busy);
        button = QStringLiteral("retryButton");
        Show(screen);
    }
    QCOMPARE(mDriver->Property(button, "busy").toBool(), busy);
    if (enter) {
        // Keys go where the focus is: on the main button from the start.
        QTRY_VERIFY_WITH_TIMEOUT(mDriver->Property(button, "activeFocus").toBool(), Tests::Timeouts::Quick);
        mDriver->PressKey(Qt::Key_Return);
    } else {
        QVERIFY(mDriver->Click(button));
    }
    QCOMPARE(asked->count(), busy ? 0 : 1);
}

QTEST_MAIN(TestStateScreens)
#include "tst_state_screens.moc"
