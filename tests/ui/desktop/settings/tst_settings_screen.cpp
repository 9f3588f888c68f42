// The settings section as a shop owner and support staff use it: every control
// stores its setting within its bounds and shows what is stored, the sound settings
// change what is heard from the track on air, and the event log view shows, finds
// and copies the log without freezing the window on a large one.

#include "core/content_playing/player.h"
#include "core/settings.h"
#include "core/user_environment.h"
#include "core/utilities/logger.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/event_log.h"
#include "tests/support/pcm_analysis.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"
#include "tests/ui/support/qml_warnings.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/settings_widget_desktop.h"
#include "ui/desktop/view_app_log_widget_widget_desktop.h"
#include "ui/list_models/app_log_model.h"
#include "ui/ui_kit/ui_kit.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWidget>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QScreen>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>

using Core::Settings;
using Core::UserEnvironment;
using Core::DataTypes::Playback::ContentType;
using Tests::ShopSession;
using Tests::ToneTimeline;
using UI::Desktop::MainWindowDesktop;

namespace {

const QString kShop = QStringLiteral("shop1");

// What the settings hold now for the setting a control governs.
QVariant Stored(const QString& setting)
{
    static const std::map<QString, std::function<QVariant()>> read = {
        {"useEqualizer",
         [] {
             return QVariant(Settings::GetUseEqualizer());
         }},
        {"useCrossfade",
         [] {
             return QVariant(Settings::GetUseCrossfade());
         }},
        {"shuffleMusic",
         [] {
             return QVariant(Settings::GetShuffle(ContentType::Music));
         }},
        {"shuffleVideo",
         [] {
             return QVariant(Settings::GetShuffle(ContentType::Video));
         }},
        {"shufflePhoto",
         [] {
             return QVariant(Settings::GetShuffle(ContentType::Photo));
         }},
        {"showVideoPhoto",
         [] {
             return QVariant(Settings::AutoShowVideoPhoto());
         }},
        {"autorun",
         [] {
             return QVariant(Settings::AutoRunEnabled());
         }},
        {"minimizeOnAutorun",
         [] {
             return QVariant(Settings::MinimizeOnAutoRun());
         }},
        {"minimizeToTray",
         [] {
             return QVariant(Settings::MinimizeToTrayOnAppStart());
         }},
        {"autoPlay",
         [] {
             return QVariant(Settings::AutoPlayOnAppStart());
         }},
        {"darkTheme",
         [] {
             return QVariant(Settings::DarkTheme());
         }},
        {"delay",
         [] {
             return QVariant(Settings::GetDelayValueSeconds());
         }},
        {"updateInterval",
         [] {
             return QVariant(Settings::GetUpdateIntervalMinutes());
         }},
        {"videoOutput",
         [] {
             return QVariant(Settings::GetVideoOutput().name);
         }},
        {"band0",
         [] {
             return QVariant(Settings::GetBands().at(0));
         }},
        {"band9",
         [] {
             return QVariant(Settings::GetBands().at(9));
         }},
        {"amplifier",
         [] {
             return QVariant(Settings::GetAmplifierValue());
         }},
        {"crossfade",
         [] {
             return QVariant(Settings::GetCrossfadeIntervalSeconds());
         }},
        {"photos",
         [] {
             return QVariant(Settings::GetPhotosDurationSeconds());
         }},
        {"preset",
         [] {
             const auto presets = Settings::GetAudioPresets();
             for (std::size_t row = 0; row < presets.size(); ++row) {
                 if (presets[row].Equal(Settings::GetAmplifierValue(), Settings::GetBands())) {
                     return QVariant(static_cast<int>(row));
                 }
             }
             return QVariant(-1);
         }},
    };
    return read.at(setting)();
}

// Windows of a tenth of a second in which both tones sound, in the longest run
// from `fromSeconds` on.
int LongestOverlap(const std::vector<std::int16_t>& samples, double first, double second, double fromSeconds)
{
    int longest = 0;
    int run = 0;
    const double end = static_cast<double>(samples.size()) / Tests::PcmAnalysis::SampleRate;
    for (double at = fromSeconds; at + ToneTimeline::Window <= end; at += ToneTimeline::Window) {
        const bool both =
            ToneTimeline::Level(samples, first, at, at + ToneTimeline::Window) > ToneTimeline::Heard &&
            ToneTimeline::Level(samples, second, at, at + ToneTimeline::Window) > ToneTimeline::Heard;
        run = both ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
}

} // namespace

class SettingsScreenTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<MainWindowDesktop> window;
    std::unique_ptr<Tests::ScreenDriver> driver;
    std::shared_ptr<UserEnvironment> environment;
    bool darkThemeBefore = true;

    // The schedule of `tracks` plays (signed in earlier, then a restart), and the
    // settings are opened over the player.
    void OpenWhilePlaying(const QList<int>& tracks)
    {
        QVERIFY(service->ReplaceConfiguration(
                    kShop, ShopSession::Schedule({ShopSession::Period("Утро", "09:00", "13:00", 11)},
                                                 {ShopSession::MusicPlaylist(11, "Музыка", tracks)})) > 0);
        QString error;
        QVERIFY2(ShopSession::StoredAsAfterRestart(ShopSession::ServerOf(*service), &error),
                 qPrintable(error));
        window.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
        driver = std::make_unique<Tests::ScreenDriver>(window.get());
        UserEnvironment::GetSignedInEnvironment(
            [this](std::shared_ptr<UserEnvironment> found) { environment = std::move(found); });
        QTRY_VERIFY_WITH_TIMEOUT(environment, Tests::Timeouts::Quick);
        const auto player = environment->GetContentPlayer();
        QVERIFY(player);
        QTRY_VERIFY_WITH_TIMEOUT(player->CurrentState().playingNow, Tests::Timeouts::Process);
        OpenSettings();
    }

    void OpenSignedOut()
    {
        window.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
        driver = std::make_unique<Tests::ScreenDriver>(window.get());
        OpenSettings();
    }

    void OpenSettings()
    {
        MainWindowDesktop::PushWidget(new UI::Desktop::SettingsWidgetDesktop());
        QVERIFY(driver->DocumentShown(QStringLiteral("settings_widget.qml")));
    }

    bool SetValue(const QString& item, const char* property, const QVariant& value) const
    {
        QObject* control = driver->Item(item);
        return control != nullptr && control->setProperty(property, value);
    }

    UI::Desktop::ViewAppLogWidgetWidgetDesktop* LogView() const
    {
        return qobject_cast<UI::Desktop::ViewAppLogWidgetWidgetDesktop*>(driver->CurrentScreen());
    }

private slots:
    void initTestCase()
    {
        Tests::QmlWarnings::StartRecording();
        UI::Desktop::ApplicationStartUp::ConfigureApplication();
        QVERIFY(content.isValid());
        QString error;
        service =
            ShopSession::StartedServing(content.path(), {"music/music_a.mp3", "music/music_b.mp3"}, &error);
        QVERIFY2(service, qPrintable(error));
    }

    void init()
    {
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        QVERIFY(service->SetToday(
            QDate::fromString(QString::fromStdString(Tests::TestPeriods::Today()), "dd.MM.yyyy")));
        Tests::TestPeriods::SetNow(QTime(10, 0));
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        darkThemeBefore = UI::UiKit::GetInstance().IsDarkTheme();
        Tests::QmlWarnings::Take();
    }

    void cleanup()
    {
        UI::Desktop::ViewAppLogWidgetWidgetDesktop::SetExportFolderChooserForTesting({});
        driver.reset();
        window.reset();
        environment.reset();
        ShopSession::ForgetSession();
        UI::UiKit::GetInstance().SetDarkTheme(darkThemeBefore);
        dataDirectory.reset();
        const QStringList warnings = Tests::QmlWarnings::Take();
        QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
    }

    // A switch is clicked, a list gets another row, a slider is set (also past its
    // ends, as a held arrow key or an assistive tool would): the setting is stored,
    // within its bounds, and the control shows what was stored.
    void eachControlStoresItsSetting_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QVariant>("input");
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QVariant>("stored");

        const QVariant click;
        QTest::newRow("equaliser") << "equalizerSwitch" << click << "useEqualizer" << QVariant(true);
        QTest::newRow("crossfade") << "crossfadeSwitch" << click << "useCrossfade" << QVariant(true);
        QTest::newRow("shuffle music") << "shuffleMusicSwitch" << click << "shuffleMusic" << QVariant(false);
        QTest::newRow("shuffle video") << "shuffleVideoSwitch" << click << "shuffleVideo" << QVariant(false);
        QTest::newRow("shuffle photo") << "shufflePhotoSwitch" << click << "shufflePhoto" << QVariant(false);
        QTest::newRow("show video") << "showVideoPhotoSwitch" << click << "showVideoPhoto" << QVariant(false);
        QTest::newRow("autorun") << "autorunSwitch" << click << "autorun" << QVariant(true);
        // Only offered with the start at login on.
        QTest::newRow("minimise") << "autorunSwitch,minimizeOnAutorunSwitch" << click << "minimizeOnAutorun"
                                  << QVariant(true);
        QTest::newRow("tray") << "minimizeToTraySwitch" << click << "minimizeToTray" << QVariant(true);
        QTest::newRow("auto play") << "autoPlaySwitch" << click << "autoPlay" << QVariant(true);
        // Whichever theme the run is in: the other one.
        QTest::newRow("theme") << "darkThemeSwitch" << click << "darkTheme" << QVariant();

        const auto delays = Settings::AvailableDelayValuesSeconds();
        const auto intervals = Settings::GetAvailableUpdateIntervalsMinutes();
        QTest::newRow("delay") << "autorunDelayComboBox" << QVariant(2) << "delay" << QVariant(delays.at(2));
        QTest::newRow("interval") << "updateIntervalComboBox" << QVariant(0) << "updateInterval"
                                  << QVariant(intervals.at(0));
        QTest::newRow("preset") << "presetComboBox" << QVariant(3) << "preset" << QVariant(3);
        QTest::newRow("screen") << "videoOutputComboBox" << QVariant(0) << "videoOutput"
                                << QVariant(QGuiApplication::screens().at(0)->name());

        QTest::newRow("band above") << "band9Slider" << QVariant(100.0) << "band9"
                                    << QVariant(Settings::GetMaxBandValue());
        QTest::newRow("band below") << "band0Slider" << QVariant(-100.0) << "band0"
                                    << QVariant(Settings::GetMinBandValue());
        QTest::newRow("amplifier") << "amplifierSlider" << QVariant(-3.5) << "amplifier" << QVariant(-3.5);
        QTest::newRow("amplifier above") << "amplifierSlider" << QVariant(90.0) << "amplifier"
                                         << QVariant(Settings::GetMaxAmplifierValue());
        QTest::newRow("crossfade below") << "crossfadeSlider" << QVariant(0.0) << "crossfade"
                                         << QVariant(Settings::GetMinCrossfadeIntervalSeconds());
        QTest::newRow("crossfade above") << "crossfadeSlider" << QVariant(60.0) << "crossfade"
                                         << QVariant(Settings::GetMaxCrossfadeIntervalSeconds());
        QTest::newRow("photo") << "photoDurationSlider" << QVariant(7.0) << "photos" << QVariant(7u);
        QTest::newRow("photo below") << "photoDurationSlider" << QVariant(0.0) << "photos"
                                     << QVariant(Settings::GetMinPhotosDurationSeconds());
    }

    void eachControlStoresItsSetting()
    {
        QFETCH(QString, control);
        QFETCH(QVariant, input);
        QFETCH(QString, setting);
        QFETCH(QVariant, stored);
        OpenSignedOut();
        // "first,control": a switch that makes the control available.
        const QStringList path = control.split(QLatin1Char(','));
        control = path.last();
        QVERIFY2(driver->Item(control), qPrintable(control));
        if (path.size() > 1) {
            QVERIFY(!driver->Property(control, "enabled").toBool());
            QVERIFY(driver->Click(path.first()));
        }

        if (control.endsWith(QLatin1String("Switch"))) {
            if (!stored.isValid()) {
                stored = !driver->Property(control, "checked").toBool();
            }
            QVERIFY(driver->Click(control));
            QCOMPARE(Stored(setting), stored);
            QCOMPARE(driver->Property(control, "checked"), stored);
        } else if (control.endsWith(QLatin1String("ComboBox"))) {
            QVERIFY(SetValue(control, "currentIndex", input));
            QCOMPARE(Stored(setting), stored);
            QCOMPARE(driver->Property(control, "currentIndex"), input);
        } else {
            QVERIFY(SetValue(control, "value", input));
            QCOMPARE(Stored(setting).toDouble(), stored.toDouble());
            QCOMPARE(driver->Property(control, "value").toDouble(), stored.toDouble());
        }
        // The page reads everything back after a change: nothing else moved.
        QVERIFY2(driver->UnnamedControls().isEmpty(), qPrintable(driver->UnnamedControls().join('\n')));
    }

    // Tab walks the page in reading order down to its last control, and the page
    // scrolls along so the focused control is in view.
    void tabReachesTheLogButtonInView()
    {
        OpenSignedOut();
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        auto* page = qobject_cast<QQuickWidget*>(driver->CurrentScreen());
        QVERIFY(page);
        page->setFocus();
        QStringList order;
        for (int press = 0; press < 60 && !order.contains(QStringLiteral("logButton")); ++press) {
            driver->PressKey(Qt::Key_Tab);
            QQuickItem* focused = page->quickWindow()->activeFocusItem();
            if (focused != nullptr && !focused->objectName().isEmpty() &&
                !order.contains(focused->objectName())) {
                order << focused->objectName();
            }
        }
        // The groups' controls in the order a person reads them (those not offered
        // yet, such as the bands with the equaliser off, are passed over).
        const QStringList reading = {"audioOutputComboBox", "testSoundButton",
                                     "equalizerSwitch",     "crossfadeSwitch",
                                     "shuffleMusicSwitch",  "photoDurationSlider",
                                     "autorunSwitch",       "updateIntervalComboBox",
                                     "darkThemeSwitch",     "logButton"};
        QStringList seen = order;
        seen.erase(std::remove_if(seen.begin(), seen.end(),
                                  [&](const QString& name) { return !reading.contains(name); }),
                   seen.end());
        QCOMPARE(seen, reading);
        auto* logButton = qobject_cast<QQuickItem*>(driver->Item("logButton"));
        const QPointF inPage = logButton->mapToItem(page->rootObject(), QPointF(0, logButton->height()));
        QVERIFY2(inPage.y() <= page->rootObject()->height(), qPrintable(QString::number(inPage.y())));
    }

    // Cutting the bands around the tone on air lowers it at once, not from the
    // next track on.
    void theEqualiserActsOnTheTrackOnAir()
    {
        Tests::TwoSinkListener listener;
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
        OpenWhilePlaying({1});
        const double tone = Tests::TestMedia::MusicAFrequency;
        QVERIFY(driver->Click("equalizerSwitch"));
        QVERIFY(SetValue("amplifierSlider", "value", 0.0));
        double before = 0;
        QVERIFY2(listener.WaitForToneLevel(
                     tone, [](double level) { return level > ToneTimeline::Heard; }, 0.3,
                     Tests::Timeouts::Playback, &before),
                 qPrintable(QString::number(before)));

        const auto frequencies = Settings::GetBandsFrequenciesHz();
        for (std::size_t band = 0; band < frequencies.size(); ++band) {
            if (frequencies[band] > tone / 2 && frequencies[band] < tone * 2) {
                QVERIFY(
                    SetValue(QStringLiteral("band%1Slider").arg(band), "value", Settings::GetMinBandValue()));
            }
        }
        double after = 0;
        // Well within the 8 s track: a new track would take the settings anyway.
        QVERIFY2(listener.WaitForToneLevel(
                     tone, [before](double level) { return level < before / 4; }, 0.3,
                     2 * Tests::Timeouts::Quick, &after),
                 qPrintable(QStringLiteral("before %1, after %2").arg(before).arg(after)));
    }

    // Choosing the other sink moves the track on air there.
    void theOutputDeviceMovesTheTrackOnAir()
    {
        Tests::TwoSinkListener listener;
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
        OpenWhilePlaying({1});
        const double tone = Tests::TestMedia::MusicAFrequency;
        QVERIFY(listener.WaitForToneLevel(
            tone, [](double level) { return level > ToneTimeline::Heard; }, 0.3, Tests::Timeouts::Playback));

        const QStringList devices = driver->Property("settingsPage", "audioOutputs").toStringList();
        int sinkB = -1;
        const auto outputs = Settings::GetInstance().GetAudioOutputs();
        for (std::size_t row = 0; row < outputs.size(); ++row) {
            if (QString::fromStdString(outputs[row].id) == qEnvironmentVariable("ZELMAR_TEST_SINK_B")) {
                sinkB = static_cast<int>(row);
            }
        }
        QVERIFY2(sinkB >= 0, qPrintable(devices.join(' ')));
        const double from = listener.SecondsRecorded();
        QVERIFY(SetValue("audioOutputComboBox", "currentIndex", sinkB));
        QCOMPARE(QString::fromStdString(Settings::GetInstance().GetAudioOutputs().at(sinkB).id),
                 qEnvironmentVariable("ZELMAR_TEST_SINK_B"));
        QVERIFY2(
            QTest::qWaitFor(
                [&]() {
                    const double now = listener.SecondsRecorded();
                    return ToneTimeline::FirstHeard(listener.B(), tone, ToneTimeline::Heard, from) >= 0 &&
                           ToneTimeline::Level(listener.A(), tone, now - 0.3, now) < ToneTimeline::NotHeard;
                },
                2 * Tests::Timeouts::Quick),
            "the track on air did not move from sink A to sink B");
    }

    // Crossfade switched on while a track plays: the next track fades in over it.
    void crossfadeSwitchedOnOverlapsTheNextTrack()
    {
        Tests::TwoSinkListener listener;
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
        OpenWhilePlaying({1, 2});
        QVERIFY(driver->Click("crossfadeSwitch"));
        QVERIFY(SetValue("crossfadeSlider", "value", Settings::GetMinCrossfadeIntervalSeconds()));
        const double from = listener.SecondsRecorded();
        // Half a second of both tones at once; back to back they meet in a window or two.
        QVERIFY2(QTest::qWaitFor(
                     [&]() {
                         return LongestOverlap(listener.A(), Tests::TestMedia::MusicAFrequency,
                                               Tests::TestMedia::MusicBFrequency, from) >= 5;
                     },
                     Tests::Timeouts::Playback),
                 "no crossfade was heard");
    }

    // A shuffle change draws the order anew once the track on air has ended, rather
    // than cutting it or waiting for the next period.
    void shuffleChangeRebuildsAfterTheTrackOnAir()
    {
        OpenWhilePlaying({1, 2});
        const QString deferred =
            QStringLiteral("Перезапуск воспроизведения отложен до окончания текущего трека");
        QCOMPARE(Tests::EventLog::Count(deferred), 0);
        // Only a track actually on air is let finish; until its file has arrived the
        // order is drawn anew at once.
        const auto player = environment->GetContentPlayer();
        QTRY_VERIFY_WITH_TIMEOUT(player->CurrentState().contentPlayingStates[ContentType::Music].progress > 0,
                                 Tests::Timeouts::Process);
        QTRY_VERIFY_WITH_TIMEOUT(driver->Property("checkNowButton", "enabled").toBool(),
                                 Tests::Timeouts::Quick);
        QVERIFY(driver->Click("shuffleMusicSwitch"));
        QCOMPARE(Settings::GetShuffle(ContentType::Music), false);
        QTRY_COMPARE_WITH_TIMEOUT(Tests::EventLog::Count(deferred), 1, Tests::Timeouts::Quick);
        QVERIFY(player->CurrentState().playingNow);
    }

    // "Проверить сейчас" says what came of the check: nothing new, then the new
    // schedule the server has since been given.
    void checkNowSaysWhatCame()
    {
        OpenWhilePlaying({1});
        // Offered once the screen knows whom to ask.
        QTRY_VERIFY_WITH_TIMEOUT(driver->Property("checkNowButton", "enabled").toBool(),
                                 Tests::Timeouts::Quick);
        QVERIFY(driver->Click("checkNowButton"));
        QTRY_VERIFY_WITH_TIMEOUT(driver->Property("checkResultText", "text")
                                     .toString()
                                     .startsWith(QStringLiteral("Новое расписание не получено")),
                                 Tests::Timeouts::Process);
        QVERIFY(service->BumpConfigurationVersion(kShop) > 0);
        QVERIFY(driver->Click("checkNowButton"));
        QTRY_VERIFY_WITH_TIMEOUT(driver->Property("checkResultText", "text")
                                     .toString()
                                     .startsWith(QStringLiteral("Получено новое расписание")),
                                 Tests::Timeouts::Process);
        QVERIFY(!driver->Property("checkNowButton", "busy").toBool());
    }

    // Support asks for the log: the line just written is at the bottom, the search
    // finds it, a re-read shows what came since, and Escape goes back.
    void theLogShowsSearchesAndRereads()
    {
        OpenSignedOut();
        Core::Utilities::Logger::Log("Проверка журнала: первая запись");
        Core::Utilities::Logger::Log("Проверка журнала: вторая запись 4711");
        QVERIFY(driver->Click("logButton"));
        QTRY_VERIFY_WITH_TIMEOUT(LogView(), Tests::Timeouts::Quick);
        QVERIFY(driver->DocumentShown(QStringLiteral("view_app_log_widget.qml")));
        auto& model = LogView()->Model();
        QTRY_VERIFY_WITH_TIMEOUT(!model.IsLoading() && model.rowCount() > 0, Tests::Timeouts::Quick);
        // The newer entry below the older one, and the view scrolled to the newest.
        QStringList lines;
        for (int row = 0; row < model.rowCount(); ++row) {
            lines << model.index(row).data().toString();
        }
        const int first = lines.indexOf(QRegularExpression(QStringLiteral(".*первая запись$")));
        const int second = lines.indexOf(QRegularExpression(QStringLiteral(".*вторая запись 4711$")));
        QVERIFY2(first >= 0 && second > first, qPrintable(lines.join('\n')));
        QTRY_VERIFY_WITH_TIMEOUT(driver->Property("listView", "atYEnd").toBool(), Tests::Timeouts::Quick);
        QVERIFY2(driver->UnnamedControls().isEmpty(), qPrintable(driver->UnnamedControls().join('\n')));

        QVERIFY(driver->SetText("searchField", QStringLiteral("ВТОРАЯ")));
        QTRY_COMPARE_WITH_TIMEOUT(model.rowCount(), 1, Tests::Timeouts::Quick);
        QVERIFY(model.index(0).data().toString().endsWith(QStringLiteral("вторая запись 4711")));

        Core::Utilities::Logger::Log("Проверка журнала: вторая запись после");
        QVERIFY(driver->Click("refreshButton"));
        QTRY_COMPARE_WITH_TIMEOUT(model.rowCount(), 2, Tests::Timeouts::Quick);

        QVERIFY(driver->SetText("searchField", QString()));
        QTRY_VERIFY_WITH_TIMEOUT(model.rowCount() > 2, Tests::Timeouts::Quick);
        driver->PressKey(Qt::Key_Escape);
        QTRY_VERIFY_WITH_TIMEOUT(driver->DocumentShown(QStringLiteral("settings_widget.qml")),
                                 Tests::Timeouts::Quick);
    }

    // Two copies into a folder that already holds a "log.txt" of someone else's:
    // three files, the stranger untouched, both copies the log, and the screen
    // says where each went.
    void copiesNeverOverwrite()
    {
        Core::Utilities::Logger::Log("Запись для копии");
        QTemporaryDir folder;
        QVERIFY(folder.isValid());
        const QString foreign = folder.filePath(QStringLiteral("log.txt"));
        {
            QFile file(foreign);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("чужой файл");
        }
        UI::Desktop::ViewAppLogWidgetWidgetDesktop::SetExportFolderChooserForTesting(
            [&folder]() { return folder.path(); });
        OpenSignedOut();
        QVERIFY(driver->Click("logButton"));
        QTRY_VERIFY_WITH_TIMEOUT(LogView(), Tests::Timeouts::Quick);

        QFile log(QString::fromStdString(Core::Utilities::Logger::GetLogFileName()));
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QByteArray original = log.readAll();
        QStringList said;
        for (int copy = 0; copy < 2; ++copy) {
            QVERIFY(driver->Click("saveCopyButton"));
            QTRY_VERIFY_WITH_TIMEOUT(!driver->Property("statusText", "text").toString().isEmpty(),
                                     Tests::Timeouts::Quick);
            said << driver->Property("statusText", "text").toString();
        }
        const QStringList files = QDir(folder.path()).entryList(QDir::Files, QDir::Name);
        QCOMPARE(files.size(), 3);
        QFile stranger(foreign);
        QVERIFY(stranger.open(QIODevice::ReadOnly));
        QCOMPARE(stranger.readAll(), QByteArray("чужой файл"));
        for (const QString& name : files) {
            if (name == QLatin1String("log.txt")) {
                continue;
            }
            QFile copy(folder.filePath(name));
            QVERIFY(copy.open(QIODevice::ReadOnly));
            QCOMPARE(copy.readAll(), original);
            QVERIFY2(said.filter(name).size() == 1, qPrintable(said.join('\n')));
        }
    }

    // The model as views use it: rows, reset, filter, and a file read behind the scenes.
    void theModelKeepsItsContract()
    {
        UI::ListModels::AppLogModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.loadAppLog(QStringLiteral("первая\tстрока\n\nтретья"), true);
        QCOMPARE(model.rowCount(), 3);
        QCOMPARE(model.index(0).data(UI::ListModels::AppLogModel::LineRole).toString(),
                 QStringLiteral("первая строка"));
        QCOMPARE(model.index(1).data().toString(), QString());
        model.setFilterText(QStringLiteral("ТРЕТЬ"));
        QCOMPARE(model.rowCount(), 1);
        QCOMPARE(model.index(0).data().toString(), QStringLiteral("третья"));

        Core::Utilities::Logger::Log("из файла третья");
        QSignalSpy loaded(&model, &UI::ListModels::AppLogModel::loaded);
        model.LoadFile(QString::fromStdString(Core::Utilities::Logger::GetLogFileName()));
        QVERIFY(model.IsLoading());
        QTRY_COMPARE_WITH_TIMEOUT(loaded.count(), 1, Tests::Timeouts::Quick);
        QCOMPARE(model.rowCount(), 1);
        QVERIFY(model.index(0).data().toString().endsWith(QStringLiteral("из файла третья")));
        // A log that is not there shows nothing rather than the last one.
        model.LoadFile(dataDirectory->FilePath(QStringLiteral("absent.txt")));
        QTRY_COMPARE_WITH_TIMEOUT(loaded.count(), 2, Tests::Timeouts::Quick);
        QCOMPARE(model.TotalLineCount(), 0);
    }

    // A shop's log of 50 MB opens while the window keeps turning its event loop
    // (how long its longest stall is, log_view_bench measures), and scrolls to its
    // end once in.
    void aLargeLogDoesNotFreezeTheWindow()
    {
        {
            QFile file(QString::fromStdString(Core::Utilities::Logger::GetLogFileName()));
            QVERIFY(file.open(QIODevice::WriteOnly));
            const QByteArray entry = Core::Utilities::Logger::LocalTimeString()
                                         .append(" Начато воспроизведение трека:\n\tТрек\n\n")
                                         .c_str();
            QByteArray block;
            while (block.size() < 1024 * 1024) {
                block += entry;
            }
            for (int megabyte = 0; megabyte < 50; ++megabyte) {
                QCOMPARE(file.write(block), qint64(block.size()));
            }
        }
        OpenSignedOut();
        int turnsWhileLoading = 0;
        QTimer turn;
        turn.setInterval(0);
        connect(&turn, &QTimer::timeout, [&]() {
            if (LogView() && LogView()->Model().IsLoading()) {
                ++turnsWhileLoading;
            }
        });
        turn.start();
        QVERIFY(driver->Click("logButton"));
        QVERIFY(LogView());
        auto& model = LogView()->Model();
        QTRY_VERIFY_WITH_TIMEOUT(!model.IsLoading(), Tests::Timeouts::Process);
        turn.stop();
        // A read on the window's thread would have let no turn see the log loading.
        QVERIFY(turnsWhileLoading > 0);
        QVERIFY(model.TotalLineCount() > 1000000);
        QTRY_VERIFY_WITH_TIMEOUT(driver->Property("listView", "atYEnd").toBool(), Tests::Timeouts::Quick);
    }
};

QTEST_MAIN(SettingsScreenTest)
#include "tst_settings_screen.moc"
