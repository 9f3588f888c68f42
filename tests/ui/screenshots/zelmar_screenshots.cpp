// Walks every screen of the application the way a shop owner would reach it, against
// the reference service with the demo scenario, and saves the window as
// DIR/<screen>.<theme>.png. One run per theme, each in a fresh data folder:
//   zelmar-screenshots DIR dark|light
// (scripts/screenshots sets up the display, the service and both runs.)

#include "core/settings.h"
#include "core/user_environment.h"
#include "core/utilities/clock.h"
#include "tests/support/reference_service.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/ui_kit/ui_kit.h"

#include <QApplication>
#include <QCursor>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QPixmap>
#include <QQuickItem>
#include <QScreen>
#include <QSet>
#include <QTest>
#include <QTextStream>

#include <functional>
#include <memory>
#include <vector>

namespace {

constexpr int ScreenTimeoutMs = 15000;
// The demo account's first point of sale, the one the walk signs in to.
const char* const ObjectCode = "demo-cafe";
// What a picture waits for (an advertising block, the end of a period) is set this
// far ahead at least, rounded up to its minute, as the schedule counts in minutes:
// the sign-in, the downloads and the period's start come first, and a block whose
// minute has passed when the period starts is not played.
constexpr int LeadSeconds = 20;
constexpr int LeadTimeoutMs = (LeadSeconds + 60) * 1000 + ScreenTimeoutMs;
// The server's clock this far ahead of the computer's: more than the minute it
// accepts reports in.
constexpr int ClockShiftSeconds = 180;

QTime Now()
{
    return Core::Utilities::Clock::CurrentLocalDateTime().time();
}

// The first whole minute at least `seconds` from now, as a schedule names it.
QTime FirstMinuteAfter(int seconds)
{
    const QTime lead = Now().addSecs(seconds);
    return QTime(lead.hour(), lead.minute()).addSecs(60);
}

// Today's periods (the days a configuration names by their offset from today).
QJsonArray TodaysPeriods(const QJsonObject& configuration)
{
    for (const QJsonValue& day : configuration.value(QStringLiteral("schedule")).toArray()) {
        if (day.toObject().value(QStringLiteral("day_offset")).toInt() == 0) {
            return day.toObject().value(QStringLiteral("periods")).toArray();
        }
    }
    return {};
}

// Today's last period, under another time.
QJsonObject LastPeriodOfToday(const QJsonObject& configuration, const QString& start, const QString& end)
{
    const QJsonArray today = TodaysPeriods(configuration);
    QJsonObject period = today.isEmpty() ? QJsonObject() : today.last().toObject();
    period.insert(QStringLiteral("start_time_str"), start);
    period.insert(QStringLiteral("end_time_str"), end);
    return period;
}

// The configuration with today's day holding only `period`, and the other days
// holding only the periods that `keep` leaves.
QJsonObject WithToday(QJsonObject configuration, const QJsonObject& period,
                      const std::function<bool(const QJsonObject&)>& keep)
{
    QJsonArray days;
    for (const QJsonValue& value : configuration.value(QStringLiteral("schedule")).toArray()) {
        QJsonObject day = value.toObject();
        QJsonArray periods;
        if (day.value(QStringLiteral("day_offset")).toInt() == 0) {
            periods.append(period);
        } else {
            for (const QJsonValue& other : day.value(QStringLiteral("periods")).toArray()) {
                if (keep(other.toObject())) {
                    periods.append(other);
                }
            }
        }
        day.insert(QStringLiteral("periods"), periods);
        days.append(day);
    }
    configuration.insert(QStringLiteral("schedule"), days);
    return configuration;
}

class Walk
{
public:
    Walk(QString directory, QString theme, UI::Desktop::MainWindowDesktop* window,
         Tests::ReferenceService* service)
        : mDirectory(std::move(directory))
        , mTheme(std::move(theme))
        , mWindow(window)
        , mDriver(window)
        , mService(service)
    {
    }

    int Run();

private:
    // Now playing in one situation: what the service is made to serve before a
    // sign-in of its own (nothing: the demo as it stands), and when the screen
    // shows the situation.
    struct NowPlayingState
    {
        QString screen;
        std::function<void()> arrange;
        std::function<bool()> ready;
        int timeoutMs = ScreenTimeoutMs;
    };

    void SignedOutScreens();
    void NowPlayingStates();
    void PlayerScreens();
    void NowPlayingLists();
    void ContentScreens();
    void AccountScreens();
    void SettingsScreens();
    void AccountErrors();
    void SignUp();

    // Waits for `ready`, then saves the window.
    bool Shoot(const QString& screen, const std::function<bool()>& ready, int timeoutMs = ScreenTimeoutMs);
    bool WaitFor(const std::function<bool()>& condition, const QString& what,
                 int timeoutMs = ScreenTimeoutMs);
    bool Step(bool done, const QString& what);
    bool ShowsItem(const QString& name) const;
    std::function<bool()> Document(const QString& ending) const;
    bool MusicPlays() const;
    // What now playing's middle shows: "playing", "waiting", "noPeriod" …
    QString Situation() const;
    // "Другой сервер…" with the service's address, on the sign-in or sign-up screen.
    void ChooseService();
    void SignIn();
    // A sign-in on the service as `arrange` leaves it; without an arrangement the
    // plain demo's session on show serves as it is.
    void BeginSession(const std::function<void()>& arrange);
    // Signs out through the side bar and puts the service back as its scenario has it.
    void EndSession();
    void RefreshUpdates();

    // How the service is made to bring about a situation of now playing. Each works
    // on the demo point of sale's configuration as its scenario has it.
    QJsonObject DemoConfiguration();
    void Serve(const QJsonObject& configuration, const QString& what);
    // An interrupting block of the first two spots at the first whole minute
    // LeadSeconds away.
    void ScheduleAdBlockSoon();
    // The music of the period on now is never served, while every other file is:
    // the period waits for its files with the rest of the schedule downloaded.
    void WithholdCurrentMusic();
    // Today's only period begins later today.
    void ScheduleTodayLater();
    // The schedule's only period is under way and ends at the first whole minute
    // LeadSeconds away. (A period of a later day would follow it at once: the
    // periods of a schedule play as one chain.)
    void EndTodaySoon();
    // The server fails every request for the schedule.
    void FailSchedule();
    // The server's clock runs ClockShiftSeconds ahead of the computer's.
    void ShiftServerClock();

    enum class Session
    {
        None,
        Plain,
        Arranged,
    };

    QString mDirectory;
    QString mTheme;
    UI::Desktop::MainWindowDesktop* mWindow;
    Tests::ScreenDriver mDriver;
    Tests::ReferenceService* mService;
    Session mSession = Session::None;
    int mFailures = 0;
    // What now playing says once the withheld music is all that is missing.
    QString mWaitingText;
    QString mDownloadsText;
};

bool Walk::ShowsItem(const QString& name) const
{
    QObject* item = mDriver.Item(name);
    return item != nullptr && item->property("visible").toBool();
}

std::function<bool()> Walk::Document(const QString& ending) const
{
    return [this, ending]() {
        return mDriver.DocumentShown(ending);
    };
}

QString Walk::Situation() const
{
    if (!mDriver.DocumentShown(QStringLiteral("player/now_playing/now_playing_widget.qml"))) {
        return {};
    }
    return mDriver.Property(QStringLiteral("nowPlayingScreen"), "situation").toString();
}

bool Walk::MusicPlays() const
{
    // A track with its title, under way, and no advertising over it.
    return mDriver.DocumentShown(QStringLiteral("player/now_playing/now_playing_widget.qml")) &&
           mDriver.Property(QStringLiteral("nowPlayingScreen"), "situation").toString() ==
               QLatin1String("playing") &&
           mDriver.Property(QStringLiteral("nowPlayingScreen"), "playing").toBool() &&
           !mDriver.Property(QStringLiteral("trackTitleText"), "text").toString().isEmpty() &&
           mDriver.Property(QStringLiteral("nowPlayingScreen"), "progress").toReal() > 0 &&
           !ShowsItem(QStringLiteral("adBand"));
}

bool Walk::WaitFor(const std::function<bool()>& condition, const QString& what, int timeoutMs)
{
    if (QTest::qWaitFor(condition, timeoutMs)) {
        return true;
    }
    QTextStream out(stderr);
    out << "screenshots: " << mTheme << ": gave up waiting for " << what << " (showing "
        << mDriver.CurrentDocument();
    // Now playing says what it waits for itself.
    if (!Situation().isEmpty()) {
        out << ", " << Situation() << ": "
            << mDriver.Property(QStringLiteral("stateText"), "text").toString();
    }
    out << ")\n";
    ++mFailures;
    return false;
}

bool Walk::Step(bool done, const QString& what)
{
    if (!done) {
        QTextStream(stderr) << "screenshots: " << mTheme << ": could not " << what << " (showing "
                            << mDriver.CurrentDocument() << ")\n";
        ++mFailures;
    }
    return done;
}

bool Walk::Shoot(const QString& screen, const std::function<bool()>& ready, int timeoutMs)
{
    if (!WaitFor(ready, screen, timeoutMs)) {
        return false;
    }
    // Let animations that open a screen settle before the picture is taken.
    QTest::qWait(300);
    const QString file =
        QDir(mDirectory).filePath(screen + QLatin1Char('.') + mTheme + QStringLiteral(".png"));
    QPixmap picture = mWindow->grab();
    // libvlc draws the video straight into a native window of its own, which the
    // widgets' rendering leaves black: that area is taken from the display.
    auto* video = mWindow->findChild<QWidget*>(QStringLiteral("videoOutput"));
    if (video != nullptr && video->isVisible() && video->window() == mWindow && video->screen() != nullptr) {
        QPainter painter(&picture);
        painter.drawPixmap(video->mapTo(mWindow, QPoint(0, 0)), video->screen()->grabWindow(video->winId()));
    }
    if (!picture.save(file)) {
        QTextStream(stderr) << "screenshots: cannot write " << file << "\n";
        ++mFailures;
        return false;
    }
    QTextStream(stdout) << file << "\n";
    return true;
}

void Walk::ChooseService()
{
    QObject* chooser = mDriver.Item(QStringLiteral("serverComboBox"));
    if (!Step(chooser != nullptr, QStringLiteral("find the server chooser"))) {
        return;
    }
    // The built-in list arrives a moment after the screen; "Другой сервер…" is its
    // last entry.
    WaitFor([chooser]() { return chooser->property("count").toInt() >= 2; },
            QStringLiteral("the servers list"));
    chooser->setProperty("currentIndex", chooser->property("count").toInt() - 1);
    Step(mDriver.SetText(QStringLiteral("serverAddressField"), mService->BaseUrl()),
         QStringLiteral("type the server address"));
}

void Walk::SignIn()
{
    WaitFor(Document(QStringLiteral("auth/sign_in_widget.qml")), QStringLiteral("the sign-in screen"));
    ChooseService();
    mDriver.SetText(QStringLiteral("loginField"), QStringLiteral("demo"));
    mDriver.SetText(QStringLiteral("passwordField"), QStringLiteral("demo"));
    Step(mDriver.Click(QStringLiteral("signInButton")), QStringLiteral("press Войти"));
    WaitFor([this]() { return mDriver.Item(QStringLiteral("objectCard0")) != nullptr; },
            QStringLiteral("the objects"));
    Step(mDriver.Click(QStringLiteral("objectCard0")), QStringLiteral("choose the first object"));
    WaitFor(Document(QStringLiteral("player/side_bar_widget.qml")), QStringLiteral("the player frame"));
}

void Walk::BeginSession(const std::function<void()>& arrange)
{
    if (!arrange && mSession == Session::Plain) {
        return;
    }
    EndSession();
    if (arrange) {
        arrange();
    }
    SignIn();
    mSession = arrange ? Session::Arranged : Session::Plain;
}

void Walk::EndSession()
{
    if (mSession == Session::None) {
        return;
    }
    Step(mDriver.Click(QStringLiteral("logoutButton")), QStringLiteral("press Выход"));
    WaitFor(Document(QStringLiteral("skippable_dialog_widget.qml")), QStringLiteral("the sign-out dialog"));
    Step(mDriver.Click(QStringLiteral("okButton")), QStringLiteral("press OK on the sign-out dialog"));
    WaitFor(Document(QStringLiteral("auth/sign_in_widget.qml")), QStringLiteral("sign-in after signing out"));
    Step(mService->Reset(), QStringLiteral("reset the service: ") + mService->ErrorString());
    mSession = Session::None;
}

void Walk::RefreshUpdates()
{
    // The next configuration update is the request the server refuses.
    Core::UserEnvironment::GetSignedInEnvironment([](std::shared_ptr<Core::UserEnvironment> environment) {
        if (environment) {
            environment->RefreshUpdateTimer();
        }
    });
}

QJsonObject Walk::DemoConfiguration()
{
    QFile file(Tests::ReferenceService::SourceDirectory() + QStringLiteral("/demo/scenario/configurations/") +
               QLatin1String(ObjectCode) + QStringLiteral(".json"));
    if (!Step(file.open(QIODevice::ReadOnly), QStringLiteral("read the demo configuration"))) {
        return {};
    }
    return QJsonDocument::fromJson(file.readAll()).object();
}

void Walk::Serve(const QJsonObject& configuration, const QString& what)
{
    Step(!configuration.isEmpty() &&
             mService->ReplaceConfiguration(QLatin1String(ObjectCode), configuration) > 0,
         QStringLiteral("give the demo ") + what + QStringLiteral(": ") + mService->ErrorString());
}

void Walk::ScheduleAdBlockSoon()
{
    QJsonObject configuration = DemoConfiguration();
    QJsonArray spots;
    for (const QJsonValue& kind : configuration.value(QStringLiteral("content")).toArray()) {
        if (kind.toObject().value(QStringLiteral("type")).toString() != QLatin1String("clip")) {
            continue;
        }
        for (const QJsonValue& track : kind.toObject().value(QStringLiteral("tracks")).toArray()) {
            if (spots.size() < 2) {
                // Today and tomorrow: a minute past midnight is tomorrow's.
                spots.append(
                    QJsonObject{{QStringLiteral("track"), track.toObject().value(QStringLiteral("id"))},
                                {QStringLiteral("day_offsets"), QJsonArray{0, 1}}});
            }
        }
    }
    if (!Step(!spots.isEmpty(), QStringLiteral("find the demo's spots"))) {
        return;
    }
    const QString start = FirstMinuteAfter(LeadSeconds).toString(QStringLiteral("HH:mm"));
    QJsonArray ads = configuration.value(QStringLiteral("ads")).toArray();
    ads.append(QJsonObject{{QStringLiteral("name"), QStringLiteral("Блок сейчас")},
                           {QStringLiteral("interrupt_content"), true},
                           {QStringLiteral("start_time_str"), start},
                           {QStringLiteral("tracks"), spots}});
    configuration.insert(QStringLiteral("ads"), ads);
    Serve(configuration, QStringLiteral("an advertising block at ") + start);
}

void Walk::WithholdCurrentMusic()
{
    const QJsonObject configuration = DemoConfiguration();
    // The period on now; one that ends at midnight ends at "00:00".
    const QString now = Now().toString(QStringLiteral("HH:mm"));
    int playlist = 0;
    for (const QJsonValue& value : TodaysPeriods(configuration)) {
        const QJsonObject period = value.toObject();
        const QString end = period.value(QStringLiteral("end_time_str")).toString();
        if (period.value(QStringLiteral("start_time_str")).toString() <= now &&
            (now < end || end == QLatin1String("00:00"))) {
            playlist = period.value(QStringLiteral("music_playlist_id")).toInt();
        }
    }
    QSet<int> withheld;
    for (const QJsonValue& value : configuration.value(QStringLiteral("playlists")).toArray()) {
        if (value.toObject().value(QStringLiteral("id")).toInt() == playlist) {
            for (const QJsonValue& track : value.toObject().value(QStringLiteral("tracks")).toArray()) {
                withheld.insert(track.toInt());
            }
        }
    }
    int total = 0;
    int faults = 0;
    for (const QJsonValue& kind : configuration.value(QStringLiteral("content")).toArray()) {
        if (kind.toObject().value(QStringLiteral("type")).toString() != QLatin1String("music")) {
            continue;
        }
        for (const QJsonValue& value : kind.toObject().value(QStringLiteral("tracks")).toArray()) {
            const QJsonObject track = value.toObject();
            ++total;
            if (withheld.contains(track.value(QStringLiteral("id")).toInt()) &&
                mService->AddFault(Tests::ServiceFault(QStringLiteral("media/music/") +
                                                           track.value(QStringLiteral("path")).toString(),
                                                       QStringLiteral("not_found"))) > 0) {
                ++faults;
            }
        }
    }
    Step(faults > 0 && faults == withheld.size(),
         QStringLiteral("withhold the music of the period on now: ") + mService->ErrorString());
    mWaitingText = QStringLiteral("Загружаем файлы периода: 0 из %1").arg(faults);
    mDownloadsText = QStringLiteral("Загружено %1 из %2 файлов").arg(total - faults).arg(total);
}

void Walk::ScheduleTodayLater()
{
    // On the hour an hour or two ahead; late in the evening, in a couple of minutes.
    const QTime now = Now();
    const QTime start = now.hour() < 22 ? QTime(now.hour() + 2, 0) : FirstMinuteAfter(60);
    if (!Step(start > now, QStringLiteral("find a time later today"))) {
        return;
    }
    const QJsonObject configuration = DemoConfiguration();
    Serve(WithToday(configuration,
                    LastPeriodOfToday(configuration, start.toString(QStringLiteral("HH:mm")),
                                      QStringLiteral("00:00")),
                    [](const QJsonObject&) { return true; }),
          QStringLiteral("one period today, at ") + start.toString(QStringLiteral("HH:mm")));
}

void Walk::EndTodaySoon()
{
    const QTime end = FirstMinuteAfter(LeadSeconds);
    if (!Step(end > Now(), QStringLiteral("find a minute before midnight"))) {
        return;
    }
    const QJsonObject configuration = DemoConfiguration();
    // Nothing on the other days.
    Serve(WithToday(configuration,
                    LastPeriodOfToday(configuration, QStringLiteral("00:00"),
                                      end.toString(QStringLiteral("HH:mm"))),
                    [](const QJsonObject&) { return false; }),
          QStringLiteral("a last period that ends at ") + end.toString(QStringLiteral("HH:mm")));
}

void Walk::FailSchedule()
{
    Tests::ServiceFault failing(QStringLiteral("playback/configuration_v2"), QStringLiteral("status"));
    failing.status = 500;
    Step(mService->AddFault(failing) > 0, QStringLiteral("fail the schedule: ") + mService->ErrorString());
}

void Walk::ShiftServerClock()
{
    Step(mService->ShiftClock(ClockShiftSeconds),
         QStringLiteral("move the server's clock: ") + mService->ErrorString());
}

// --- Signed out ---

void Walk::SignedOutScreens()
{
    // Sign-in, then a wrong password.
    Shoot(QStringLiteral("sign_in"), Document(QStringLiteral("auth/sign_in_widget.qml")));
    ChooseService();
    mDriver.SetText(QStringLiteral("loginField"), QStringLiteral("demo"));
    mDriver.SetText(QStringLiteral("passwordField"), QStringLiteral("не тот"));
    Step(mDriver.Click(QStringLiteral("signInButton")), QStringLiteral("press Войти"));
    Shoot(QStringLiteral("sign_in_error"), [this]() { return ShowsItem(QStringLiteral("errorMessage")); });

    // Signed in: choose the object, then the player frame as it first opens.
    mDriver.SetText(QStringLiteral("passwordField"), QStringLiteral("demo"));
    Step(mDriver.Click(QStringLiteral("signInButton")), QStringLiteral("press Войти"));
    Shoot(QStringLiteral("choose_object"), [this]() {
        return mDriver.DocumentShown(QStringLiteral("auth/choose_object_widget.qml")) &&
               mDriver.Item(QStringLiteral("objectCard0")) != nullptr;
    });
    Step(mDriver.Click(QStringLiteral("objectCard0")), QStringLiteral("choose the first object"));
    Shoot(QStringLiteral("player"), Document(QStringLiteral("player/side_bar_widget.qml")));
    mSession = Session::Plain;
}

// --- Now playing ---

void Walk::NowPlayingStates()
{
    // One picture each, in a session of its own unless it needs nothing arranged.
    // Another situation of the screen is one more entry: how the service is made
    // to bring it about (a configuration, a fault, a shifted clock) and when the
    // screen shows it.
    const std::vector<NowPlayingState> states = {
        {QStringLiteral("now_playing"), nullptr,
         [this]() {
             return MusicPlays();
         }},
        {QStringLiteral("now_playing_ad"), [this]() { ScheduleAdBlockSoon(); },
         [this]() { return ShowsItem(QStringLiteral("adBand")); }, LeadTimeoutMs},
        // Once every other file is in: the count no longer moves.
        {QStringLiteral("now_playing_waiting"), [this]() { WithholdCurrentMusic(); },
         [this]() {
             return Situation() == QLatin1String("waiting") &&
                    mDriver.Property(QStringLiteral("stateText"), "text").toString() == mWaitingText &&
                    mDriver.Property(QStringLiteral("downloadsText"), "text").toString() == mDownloadsText;
         }},
        {QStringLiteral("now_playing_no_period"), [this]() { ScheduleTodayLater(); },
         [this]() {
             return Situation() == QLatin1String("noPeriod") &&
                    mDriver.Property(QStringLiteral("stateText"), "text")
                        .toString()
                        .contains(QStringLiteral("Следующий начнётся в"));
         }},
        {QStringLiteral("now_playing_finished"), [this]() { EndTodaySoon(); },
         [this]() {
             return mDriver.DocumentShown(
                 QStringLiteral("player/now_playing/last_period_finished_widget.qml"));
         },
         LeadTimeoutMs},
        {QStringLiteral("now_playing_load_error"), [this]() { FailSchedule(); },
         [this]() {
             return mDriver.DocumentShown(
                        QStringLiteral("player/now_playing/loading_configuration_error_widget.qml")) &&
                    ShowsItem(QStringLiteral("errorMessage"));
         }},
        {QStringLiteral("now_playing_wrong_clock"), [this]() { ShiftServerClock(); },
         [this]() {
             return mDriver.DocumentShown(QStringLiteral("player/now_playing/set_local_time_widget.qml")) &&
                    mDriver.Property(QStringLiteral("serverTimeText"), "text").toString() !=
                        QStringLiteral("—");
         }},
    };
    for (const NowPlayingState& state : states) {
        BeginSession(state.arrange);
        Shoot(state.screen, state.ready, state.timeoutMs);
    }
}

void Walk::PlayerScreens()
{
    BeginSession({});
    NowPlayingLists();
    ContentScreens();
    AccountScreens();
    SettingsScreens();
    Step(mDriver.Click(QStringLiteral("playerButton")), QStringLiteral("open the player section"));
    // The dialogs that follow show now playing behind them as it is once settled.
    WaitFor([this]() { return MusicPlays(); }, QStringLiteral("music on now playing again"));
}

void Walk::NowPlayingLists()
{
    // The lists show what plays: the period, its blocks, the track marked.
    WaitFor([this]() { return MusicPlays(); }, QStringLiteral("music on now playing"));
    struct List
    {
        QString button;
        QString screen;
        QString document;
        QString firstRow;
    };
    const List lists[] = {
        {QStringLiteral("scheduleButton"), QStringLiteral("schedule"), QStringLiteral("schedule_widget.qml"),
         QStringLiteral("periodCard0")},
        {QStringLiteral("adsButton"), QStringLiteral("ads_list"), QStringLiteral("ads_list_widget.qml"),
         QStringLiteral("adBlock0")},
        {QStringLiteral("tracksButton"), QStringLiteral("track_list"),
         QStringLiteral("music_track_list_widget.qml"), QStringLiteral("trackRow0")},
    };
    for (const List& list : lists) {
        if (!Step(mDriver.Click(list.button), QStringLiteral("press ") + list.button)) {
            continue;
        }
        Shoot(list.screen, [this, list]() {
            return mDriver.DocumentShown(list.document) && mDriver.Item(list.firstRow) != nullptr;
        });
        Step(mDriver.Click(QStringLiteral("backButton")), QStringLiteral("press Назад on ") + list.screen);
        WaitFor(Document(QStringLiteral("player/now_playing/now_playing_widget.qml")),
                QStringLiteral("now playing after ") + list.screen);
    }
}

// --- Content ---

void Walk::ContentScreens()
{
    const auto catalogue = [this](const QString& document) {
        return [this, document]() {
            return mDriver.DocumentShown(document) && ShowsItem(QStringLiteral("playlistCard0")) &&
                   !ShowsItem(QStringLiteral("loadingText"));
        };
    };
    Step(mDriver.Click(QStringLiteral("musicButton")), QStringLiteral("open Музыка"));
    Shoot(QStringLiteral("content_music"), catalogue(QStringLiteral("music_playlists_widget.qml")));
    Step(mDriver.Click(QStringLiteral("videoTab")), QStringLiteral("open the Видео tab"));
    Shoot(QStringLiteral("content_video"), catalogue(QStringLiteral("video_playlists_widget.qml")));
    Step(mDriver.Click(QStringLiteral("photoTab")), QStringLiteral("open the Фото tab"));
    Shoot(QStringLiteral("content_photo"), catalogue(QStringLiteral("photo_playlists_widget.qml")));
    Step(mDriver.Click(QStringLiteral("musicTab")), QStringLiteral("open the Музыка tab"));
    WaitFor(catalogue(QStringLiteral("music_playlists_widget.qml")), QStringLiteral("the music catalogue"));

    // A playlist that is not active yet, so that its control offers the parts of the day.
    QString card;
    for (int row = 0; mDriver.Item(QStringLiteral("playlistCard%1").arg(row)) != nullptr; ++row) {
        if (!ShowsItem(QStringLiteral("activeBadge%1").arg(row))) {
            card = QStringLiteral("playlistCard%1").arg(row);
            break;
        }
    }
    if (!Step(!card.isEmpty() && mDriver.Click(card), QStringLiteral("open an inactive music playlist"))) {
        return;
    }
    Shoot(QStringLiteral("content_playlist"), [this]() {
        return ShowsItem(QStringLiteral("openedNameText")) && ShowsItem(QStringLiteral("trackRow0"));
    });
    Step(mDriver.Click(QStringLiteral("activateButton")), QStringLiteral("press Сделать активным"));
    Shoot(QStringLiteral("playlist_control"), Document(QStringLiteral("set_playlist_widget.qml")));
    Step(mDriver.Click(QStringLiteral("partsOfDayButton")), QStringLiteral("press Части дня"));
    QObject* morning = mDriver.Item(QStringLiteral("morningSwitch"));
    Step(morning != nullptr && morning->setProperty("checked", true), QStringLiteral("switch on Утро"));
    Shoot(QStringLiteral("playlist_control_parts"), [this]() {
        return mDriver.Property(QStringLiteral("setPlaylistScreen"), "byParts").toBool() &&
               mDriver.Property(QStringLiteral("okButton"), "enabled").toBool();
    });
    Step(mDriver.Click(QStringLiteral("cancelButton")),
         QStringLiteral("press Отмена on the playlist control"));
    WaitFor(Document(QStringLiteral("music_playlists_widget.qml")), QStringLiteral("the playlist again"));
    Step(mDriver.Click(QStringLiteral("backButton")), QStringLiteral("press Назад on the playlist"));
}

// --- Certificate and objects ---

void Walk::AccountScreens()
{
    Step(mDriver.Click(QStringLiteral("licenseButton")), QStringLiteral("open Сертификат"));
    Shoot(QStringLiteral("certificate"), [this]() {
        return mDriver.DocumentShown(QStringLiteral("license_widget.qml")) &&
               (mDriver.Property(QStringLiteral("certificateImage"), "status").toInt() == 1 ||
                ShowsItem(QStringLiteral("certificateDocumentCard")) ||
                ShowsItem(QStringLiteral("errorMessage")));
    });

    Step(mDriver.Click(QStringLiteral("objectsButton")), QStringLiteral("open Объекты"));
    Shoot(QStringLiteral("objects"), [this]() {
        return mDriver.DocumentShown(QStringLiteral("objects_widget.qml")) &&
               mDriver.Item(QStringLiteral("objectRow1")) != nullptr;
    });
    QString other;
    for (int row = 0; mDriver.Item(QStringLiteral("objectRow%1").arg(row)) != nullptr; ++row) {
        if (!mDriver.Property(QStringLiteral("objectRow%1").arg(row), "current").toBool()) {
            other = QStringLiteral("objectRow%1").arg(row);
            break;
        }
    }
    if (Step(!other.isEmpty() && mDriver.Click(other), QStringLiteral("choose the other object"))) {
        Shoot(QStringLiteral("objects_switch"), Document(QStringLiteral("skippable_dialog_widget.qml")));
        Step(mDriver.Click(QStringLiteral("cancelButton")), QStringLiteral("press Отмена on the switch"));
        WaitFor(Document(QStringLiteral("objects_widget.qml")), QStringLiteral("the objects again"));
    }
}

// --- Settings and the event log ---

void Walk::SettingsScreens()
{
    Step(mDriver.Click(QStringLiteral("settingsButton")), QStringLiteral("open Настройки"));
    Shoot(QStringLiteral("settings"), [this]() {
        return mDriver.DocumentShown(QStringLiteral("settings_widget.qml")) &&
               ShowsItem(QStringLiteral("logButton"));
    });
    // The page scrolls as a whole; its end is where the last groups are.
    QQuickItem* page = nullptr;
    if (auto* root = qobject_cast<QQuickItem*>(mDriver.Item(QStringLiteral("settingsPage")))) {
        for (QQuickItem* child : root->childItems()) {
            if (child->inherits("QQuickFlickable")) {
                page = child;
            }
        }
    }
    if (Step(page != nullptr, QStringLiteral("find the settings page's scrolling"))) {
        const qreal end = page->property("contentHeight").toReal() - page->height();
        page->setProperty("contentY", qMax<qreal>(0, end));
        Shoot(QStringLiteral("settings_end"),
              [page, end]() { return page->property("contentY").toReal() >= end; });
    }
    Step(mDriver.Click(QStringLiteral("logButton")), QStringLiteral("press Журнал событий"));
    Shoot(QStringLiteral("event_log"), [this]() {
        // The view opens at the newest entries, so the first line need not exist.
        return mDriver.DocumentShown(QStringLiteral("view_app_log_widget.qml")) &&
               !mDriver.Property(QStringLiteral("viewAppLog"), "loading").toBool() &&
               mDriver.Property(QStringLiteral("listView"), "count").toInt() > 0;
    });
    Step(mDriver.Click(QStringLiteral("backButton")), QStringLiteral("press Назад on the event log"));
    WaitFor(Document(QStringLiteral("settings_widget.qml")), QStringLiteral("the settings again"));
}

// --- Account errors ---

void Walk::AccountErrors()
{
    BeginSession({});
    // The sign-out dialog over the frame; Cancel keeps the frame.
    Step(mDriver.Click(QStringLiteral("logoutButton")), QStringLiteral("press Выход"));
    Shoot(QStringLiteral("sign_out_dialog"), Document(QStringLiteral("skippable_dialog_widget.qml")));
    Step(mDriver.Click(QStringLiteral("cancelButton")), QStringLiteral("press Отмена"));

    // Another device signs in; the account is blocked; the object is exported. Each
    // ends the session it interrupts, so each starts from a sign-in.
    Core::UserEnvironment::SetMinuteForTesting(100);
    const QString objectCode = QLatin1String(ObjectCode);
    mService->InvalidateTokens(objectCode);
    RefreshUpdates();
    Shoot(QStringLiteral("unauth_error"), Document(QStringLiteral("unauth_error_widget.qml")));
    Step(mDriver.Click(QStringLiteral("okButton")), QStringLiteral("press OK on the error screen"));

    SignIn();
    mService->SetAccountBlocked(QStringLiteral("demo"), true);
    RefreshUpdates();
    Shoot(QStringLiteral("account_blocked"), Document(QStringLiteral("unauth_error_widget.qml")));
    Step(mDriver.Click(QStringLiteral("okButton")), QStringLiteral("press OK on the blocked account screen"));
    mService->SetAccountBlocked(QStringLiteral("demo"), false);

    SignIn();
    mService->SetObjectExported(objectCode, true);
    RefreshUpdates();
    Shoot(QStringLiteral("object_exported"), Document(QStringLiteral("nonskippable_dialog_widget.qml")));
    Step(mDriver.Click(QStringLiteral("okButton")), QStringLiteral("press OK on the object-exported dialog"));
    mService->SetObjectExported(objectCode, false);
    mSession = Session::Arranged;
    EndSession();
}

// --- Sign-up ---

void Walk::SignUp()
{
    // Every step, skipping the music styles.
    WaitFor(Document(QStringLiteral("auth/sign_in_widget.qml")), QStringLiteral("sign-in after the error"));
    Step(mDriver.Click(QStringLiteral("signUpButton")), QStringLiteral("press Регистрация"));
    WaitFor(Document(QStringLiteral("auth/sign_up_phone_city_widget.qml")), QStringLiteral("sign-up step 1"));
    ChooseService();
    mDriver.SetText(QStringLiteral("phoneField"), QStringLiteral("9161234567"));
    mDriver.SetText(QStringLiteral("cityField"), QStringLiteral("Ново"));
    Shoot(QStringLiteral("sign_up_phone_city"),
          [this]() { return ShowsItem(QStringLiteral("citySuggestion0")); });
    Step(mDriver.Click(QStringLiteral("citySuggestion0")), QStringLiteral("choose a city"));
    Step(mDriver.Click(QStringLiteral("nextButton")), QStringLiteral("press Далее on step 1"));
    Shoot(QStringLiteral("sign_up_confirm_phone"),
          Document(QStringLiteral("auth/sign_up_confirm_phone_widget.qml")));
    // The demo service sends every phone the same code, named in its scenario.
    QFile scenario(Tests::ReferenceService::SourceDirectory() +
                   QStringLiteral("/demo/scenario/service.json"));
    scenario.open(QIODevice::ReadOnly);
    const QString code = QJsonDocument::fromJson(scenario.readAll())
                             .object()
                             .value(QStringLiteral("confirmation_code"))
                             .toString();
    mDriver.SetText(QStringLiteral("codeField"), code);
    Step(mDriver.Click(QStringLiteral("nextButton")), QStringLiteral("press Далее on step 2"));
    Shoot(QStringLiteral("sign_up_business_type"),
          [this]() { return ShowsItem(QStringLiteral("businessTypeTile0")); });
    Step(mDriver.Click(QStringLiteral("businessTypeTile0")), QStringLiteral("choose a business type"));
    Step(mDriver.Click(QStringLiteral("nextButton")), QStringLiteral("press Далее on step 3"));
    Shoot(QStringLiteral("sign_up_music_styles"),
          [this]() { return ShowsItem(QStringLiteral("musicStyleChip0")); });
    Step(mDriver.Click(QStringLiteral("skipButton")), QStringLiteral("press Пропустить"));
    Shoot(QStringLiteral("sign_up_success"), Document(QStringLiteral("auth/sign_up_success_widget.qml")));

    Step(mDriver.Click(QStringLiteral("okButton")), QStringLiteral("press OK on sign-up success"));
    WaitFor(Document(QStringLiteral("player/side_bar_widget.qml")),
            QStringLiteral("the player after sign-up"));
}

int Walk::Run()
{
    SignedOutScreens();
    NowPlayingStates();
    PlayerScreens();
    AccountErrors();
    SignUp();
    return mFailures;
}

} // namespace
int main(int argc, char* argv[])
{
    if (argc != 3 || (qstrcmp(argv[2], "dark") != 0 && qstrcmp(argv[2], "light") != 0)) {
        QTextStream(stderr) << "usage: zelmar-screenshots DIR dark|light\n";
        return 2;
    }
    UI::Desktop::ApplicationStartUp::PrepareEnvironment();
    QApplication application(argc, argv);
    UI::Desktop::ApplicationStartUp::ConfigureApplication();
    const QString directory = QString::fromLocal8Bit(argv[1]);
    const QString theme = QString::fromLatin1(argv[2]);
    QDir().mkpath(directory);
    Core::Settings::SetDarkTheme(theme == QLatin1String("dark"));

    QString error;
    const QString scenario = Tests::ReferenceService::SourceDirectory() + QStringLiteral("/demo/scenario");
    std::unique_ptr<Tests::ReferenceService> service(
        new Tests::ReferenceService(scenario, qEnvironmentVariable("ZELMAR_DEMO_CONTENT")));
    if (!service->Start()) {
        QTextStream(stderr) << "screenshots: the reference service did not start: " << service->ErrorString()
                            << "\n";
        return 1;
    }
    std::unique_ptr<UI::Desktop::MainWindowDesktop> window(
        UI::Desktop::ApplicationStartUp::CreateMainWindow());
    window->resize(UI::Desktop::MainWindowDesktop::MinimumWidth,
                   UI::Desktop::MainWindowDesktop::MinimumHeight);
    // The pointer rests outside the window, so that no picture shows a hovered row.
    if (QScreen* display = QGuiApplication::primaryScreen()) {
        QCursor::setPos(display, display->geometry().bottomRight());
    }
    Walk walk(directory, theme, window.get(), service.get());
    const int failures = walk.Run();
    Core::UserEnvironment::ReleaseCurrentEnvironment();
    return failures == 0 ? 0 : 1;
}
