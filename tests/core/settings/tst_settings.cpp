#include "core/settings.h"
#include "core/utilities/autorun_helper.h"
#include "core/vendor/vlc_wrapper.h"
#include "tests/support/test_data_directory.h"

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>
#include <QSettings>
#include <QtTest>

#include <memory>

using Core::Settings;
using Core::DataTypes::Playback::ContentType;

// The settings file on disk: defaults of a fresh installation, what is written is
// read back at once, what a damaged or hand-edited file reads as, and what
// "switch to default" resets and keeps.
class SettingsTest : public QObject
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
        dataDirectory.reset();
    }

    void freshInstallationReadsTheDefaults()
    {
        QCOMPARE(Settings::SettingsFileName(), dataDirectory->FilePath(QStringLiteral("settings.ini")));
        QVERIFY(Settings::GetShuffle(ContentType::Music));
        QVERIFY(Settings::GetShuffle(ContentType::Video));
        QVERIFY(Settings::GetShuffle(ContentType::Photo));
        QVERIFY(!Settings::GetUseEqualizer());
        QCOMPARE(Settings::GetBands(), std::vector<double>(10, 0.0));
        QCOMPARE(Settings::GetAmplifierValue(), 5.0);
        QCOMPARE(Settings::GetUpdateIntervalMinutes(), 60u);
        QVERIFY(!Settings::GetUseCrossfade());
        QCOMPARE(Settings::GetCrossfadeIntervalSeconds(), 10);
        QVERIFY(!Settings::AutoPlayOnAppStart());
        QVERIFY(Settings::AutoShowVideoPhoto());
        QVERIFY(!Settings::AutoRunEnabled());
        QVERIFY(!Settings::MinimizeOnAutoRun());
        QVERIFY(!Settings::MinimizeToTrayOnAppStart());
        QCOMPARE(Settings::GetDelayValueSeconds(), 15u);
        QCOMPARE(Settings::GetPhotosDurationSeconds(), 5u);
        QVERIFY(Settings::DarkTheme());
        QVERIFY(!Settings::DislikesPopupShown());
        // Reading writes nothing.
        QVERIFY(!QFileInfo::exists(Settings::SettingsFileName()));
    }

    void advertisingIsNeverShuffled()
    {
        Settings::SetShuffle(ContentType::Clip, true);
        QVERIFY(!Settings::GetShuffle(ContentType::Clip));
        QVERIFY(!QFileInfo::exists(Settings::SettingsFileName()));
    }

    void whatIsWrittenIsReadBackUnderItsKey()
    {
        Settings::SetShuffle(ContentType::Music, false);
        Settings::SetShuffle(ContentType::Photo, false);
        Settings::SetUseEqualizer(true);
        Settings::SetEqualizerBands({1.5, -2, 3, 0, 0, 0, 0, 0, 0, -20});
        Settings::SetAmplifier(-3.5);
        Settings::SetUpdateIntervalMinutes(15);
        Settings::SetUseCrossfade(true);
        Settings::SetCrossfadeIntervalSeconds(7);
        Settings::SetCurrentAudioOutput({"zelmar_sink_b", "Zelmar Sink B", false});
        Settings::SetVideoOutput({QStringLiteral("HDMI-1"), QSize(1920, 1080), false});
        Settings::SetAutoPlayOnAppStart(true);
        Settings::SetAutoShowVideoPhoto(false);
        Settings::SetMinimizeOnAutoRun(true);
        Settings::SetMinimizeToTrayOnAppStart(true);
        Settings::SetDelayValueSeconds(45);
        Settings::SetPhotosDurationSeconds(12);
        Settings::SetDarkTheme(false);
        Settings::SetDislikesPopupShown(true);

        QVERIFY(!Settings::GetShuffle(ContentType::Music));
        QVERIFY(Settings::GetShuffle(ContentType::Video));
        QVERIFY(!Settings::GetShuffle(ContentType::Photo));
        QVERIFY(Settings::GetUseEqualizer());
        QCOMPARE(Settings::GetBands(), (std::vector<double>{1.5, -2, 3, 0, 0, 0, 0, 0, 0, -20}));
        QCOMPARE(Settings::GetAmplifierValue(), -3.5);
        QCOMPARE(Settings::GetUpdateIntervalMinutes(), 15u);
        QVERIFY(Settings::GetUseCrossfade());
        QCOMPARE(Settings::GetCrossfadeIntervalSeconds(), 7);
        QVERIFY(Settings::AutoPlayOnAppStart());
        QVERIFY(!Settings::AutoShowVideoPhoto());
        QVERIFY(Settings::MinimizeOnAutoRun());
        QVERIFY(Settings::MinimizeToTrayOnAppStart());
        QCOMPARE(Settings::GetDelayValueSeconds(), 45u);
        QCOMPARE(Settings::GetPhotosDurationSeconds(), 12u);
        QVERIFY(!Settings::DarkTheme());
        QVERIFY(Settings::DislikesPopupShown());

        // The keys other tools and older versions read.
        QSettings file(Settings::SettingsFileName(), QSettings::IniFormat);
        QCOMPARE(file.value(QStringLiteral("shuffle_music")).toString(), QStringLiteral("false"));
        QCOMPARE(file.value(QStringLiteral("use_equalizer")).toString(), QStringLiteral("true"));
        QCOMPARE(file.value(QStringLiteral("equalizer_amplifier")).toDouble(), -3.5);
        QCOMPARE(file.value(QStringLiteral("update_interval")).toUInt(), 15u);
        QCOMPARE(file.value(QStringLiteral("use_crossfade")).toString(), QStringLiteral("true"));
        QCOMPARE(file.value(QStringLiteral("crossfade_interval")).toInt(), 7);
        QCOMPARE(file.value(QStringLiteral("audio_output")).toString(), QStringLiteral("zelmar_sink_b"));
        QCOMPARE(file.value(QStringLiteral("video_output")).toString(), QStringLiteral("HDMI-1"));
        QCOMPARE(file.value(QStringLiteral("auto_play_on_app_start")).toString(), QStringLiteral("true"));
        QCOMPARE(file.value(QStringLiteral("auto_show_video_photo")).toString(), QStringLiteral("false"));
        QCOMPARE(file.value(QStringLiteral("minimize")).toString(), QStringLiteral("true"));
        QCOMPARE(file.value(QStringLiteral("minimize_to_tray")).toString(), QStringLiteral("true"));
        QCOMPARE(file.value(QStringLiteral("delay")).toUInt(), 45u);
        QCOMPARE(file.value(QStringLiteral("photos_duration")).toUInt(), 12u);
        QCOMPARE(file.value(QStringLiteral("dark_theme")).toString(), QStringLiteral("false"));
        QCOMPARE(file.value(QStringLiteral("dislikes_popup_shown")).toString(), QStringLiteral("true"));
        QCOMPARE(file.value(QStringLiteral("equalizer_bands")).toStringList().size(), 10);
    }

    void bandsOfTheWrongLengthReadAsFlat_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::newRow("too few") << QVariant(QVariantList{1.0, 2.0, 3.0});
        QTest::newRow("too many") << QVariant(
            QVariantList{4.0, 4.0, 4.0, 4.0, 4.0, 4.0, 4.0, 4.0, 4.0, 4.0, 4.0});
        QTest::newRow("empty") << QVariant(QVariantList());
        QTest::newRow("one number") << QVariant(3.0);
        QStringList words;
        for (int i = 0; i < 10; ++i) {
            words << QStringLiteral("loud");
        }
        QTest::newRow("not numbers") << QVariant(words);
    }

    void bandsOfTheWrongLengthReadAsFlat()
    {
        QFETCH(QVariant, stored);
        {
            QSettings file(Settings::SettingsFileName(), QSettings::IniFormat);
            file.setValue(QStringLiteral("equalizer_bands"), stored);
        }
        QCOMPARE(Settings::GetBands(),
                 std::vector<double>(Core::Vendor::VlcWrapper::GetEqualizerBandCount(), 0.0));
    }

    void damagedOrHandEditedValues()
    {
        QFile file(Settings::SettingsFileName());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[General]\n"
                   "shuffle_music=perhaps\n"
                   "use_equalizer=1\n"
                   "dark_theme=0\n"
                   "equalizer_amplifier=loud\n"
                   "crossfade_interval=1000\n"
                   "photos_duration=0\n"
                   "update_interval=-5\n"
                   "delay=abc\n"
                   "equalizer_bands=99, -99, 0, 0, 0, 0, 0, 0, 0, 0\n");
        file.close();

        // Not a yes or a no: the default.
        QVERIFY(Settings::GetShuffle(ContentType::Music));
        // Hand-written 1/0 are understood.
        QVERIFY(Settings::GetUseEqualizer());
        QVERIFY(!Settings::DarkTheme());
        // Not a number: the default; out of range: the nearest bound offered.
        QCOMPARE(Settings::GetAmplifierValue(), 5.0);
        QCOMPARE(Settings::GetCrossfadeIntervalSeconds(), Settings::GetMaxCrossfadeIntervalSeconds());
        QCOMPARE(Settings::GetPhotosDurationSeconds(), Settings::GetMinPhotosDurationSeconds());
        QCOMPARE(Settings::GetUpdateIntervalMinutes(), 15u);
        QCOMPARE(Settings::GetDelayValueSeconds(), 15u);
        const std::vector<double> bands = Settings::GetBands();
        QCOMPARE(bands.front(), 20.0);
        QCOMPARE(bands[1], -20.0);
    }

    void unreadableFileReadsAsDefaults()
    {
        QFile file(Settings::SettingsFileName());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QByteArray noise(4096, '\0');
        for (int i = 0; i < noise.size(); ++i) {
            noise[i] = static_cast<char>((i * 131 + 7) % 256);
        }
        file.write(noise);
        file.close();

        QCOMPARE(Settings::GetCrossfadeIntervalSeconds(), 10);
        QCOMPARE(Settings::GetPhotosDurationSeconds(), 5u);
        QVERIFY(Settings::DarkTheme());
        QCOMPARE(Settings::GetBands(), std::vector<double>(10, 0.0));
    }

    void boundsAndChoices()
    {
        QCOMPARE(Settings::GetMinCrossfadeIntervalSeconds(), 3);
        QCOMPARE(Settings::GetMaxCrossfadeIntervalSeconds(), 20);
        QCOMPARE(Settings::GetMinPhotosDurationSeconds(), 1u);
        QCOMPARE(Settings::GetMaxPhotosDurationSeconds(), 20u);
        QCOMPARE(Settings::GetAvailableUpdateIntervalsMinutes(), (std::vector<unsigned>{15, 30, 45, 60}));
        QCOMPARE(Settings::AvailableDelayValuesSeconds(), (std::vector<unsigned>{15, 30, 45, 60}));
        QCOMPARE(Settings::GetMinBandValue(), -20.0);
        QCOMPARE(Settings::GetMaxBandValue(), 20.0);
        QCOMPARE(Settings::GetMinAmplifierValue(), -20.0);
        QCOMPARE(Settings::GetMaxAmplifierValue(), 20.0);
        const std::vector<double> frequencies = Settings::GetBandsFrequenciesHz();
        QCOMPARE(frequencies.size(), static_cast<std::size_t>(10));
        QCOMPARE(frequencies.front(), 31.25);
        QCOMPARE(frequencies.back(), 16000.0);
        QVERIFY(Settings::GetAudioPresets().size() >= 10);
        QCOMPARE(Settings::AutoRunArgumentName(), std::string("-autorun"));
    }

    void autorunSettingRegistersTheLoginEntry()
    {
        const QString entry = Core::Utilities::AutorunHelper::LinuxAutostartEntryPath();
        QVERIFY(!entry.isEmpty());
        Settings::SetAutoRunEnabled(true);
        QVERIFY(Settings::AutoRunEnabled());
        QVERIFY(QFileInfo::exists(entry));
        QFile file(entry);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(QString::fromUtf8(file.readAll()).contains(QStringLiteral("-autorun")));
        file.close();

        Settings::SetAutoRunEnabled(false);
        QVERIFY(!Settings::AutoRunEnabled());
        QVERIFY(!QFileInfo::exists(entry));
    }

    void switchToDefaultResetsOnlyItsKeys()
    {
        Settings::SetShuffle(ContentType::Music, false);
        Settings::SetShuffle(ContentType::Video, false);
        Settings::SetShuffle(ContentType::Photo, false);
        Settings::SetUseEqualizer(true);
        Settings::SetUseCrossfade(true);
        Settings::SetUpdateIntervalMinutes(30);
        Settings::SetAutoRunEnabled(true);
        Settings::SetMinimizeOnAutoRun(true);
        Settings::SetDelayValueSeconds(60);
        Settings::SetPhotosDurationSeconds(9);
        Settings::SetDislikesPopupShown(true);
        Settings::SetAutoPlayOnAppStart(true);
        Settings::SetAutoShowVideoPhoto(false);
        // Kept by a reset.
        Settings::SetEqualizerBands(std::vector<double>(10, 2.5));
        Settings::SetAmplifier(-7);
        Settings::SetCrossfadeIntervalSeconds(4);
        Settings::SetCurrentAudioOutput({"zelmar_sink_b", "B", false});
        Settings::SetVideoOutput({QStringLiteral("HDMI-1"), QSize(), false});
        Settings::SetMinimizeToTrayOnAppStart(true);
        Settings::SetDarkTheme(false);

        Settings::SwitchToDefault();

        QVERIFY(Settings::GetShuffle(ContentType::Music));
        QVERIFY(Settings::GetShuffle(ContentType::Video));
        QVERIFY(Settings::GetShuffle(ContentType::Photo));
        QVERIFY(!Settings::GetUseEqualizer());
        QVERIFY(!Settings::GetUseCrossfade());
        QCOMPARE(Settings::GetUpdateIntervalMinutes(), 60u);
        QVERIFY(!Settings::AutoRunEnabled());
        QVERIFY(!QFileInfo::exists(Core::Utilities::AutorunHelper::LinuxAutostartEntryPath()));
        QVERIFY(!Settings::MinimizeOnAutoRun());
        QCOMPARE(Settings::GetDelayValueSeconds(), 15u);
        QCOMPARE(Settings::GetPhotosDurationSeconds(), 5u);
        QVERIFY(!Settings::DislikesPopupShown());
        QVERIFY(!Settings::AutoPlayOnAppStart());
        QVERIFY(Settings::AutoShowVideoPhoto());

        QCOMPARE(Settings::GetBands(), std::vector<double>(10, 2.5));
        QCOMPARE(Settings::GetAmplifierValue(), -7.0);
        QCOMPARE(Settings::GetCrossfadeIntervalSeconds(), 4);
        QSettings file(Settings::SettingsFileName(), QSettings::IniFormat);
        QCOMPARE(file.value(QStringLiteral("audio_output")).toString(), QStringLiteral("zelmar_sink_b"));
        QCOMPARE(file.value(QStringLiteral("video_output")).toString(), QStringLiteral("HDMI-1"));
        QVERIFY(Settings::MinimizeToTrayOnAppStart());
        QVERIFY(!Settings::DarkTheme());
    }

    void videoOutputsAreTheScreens()
    {
        const QList<QScreen*> screens = QGuiApplication::screens();
        QVERIFY(!screens.isEmpty());
        auto outputs = Settings::GetVideoOutputs();
        QCOMPARE(outputs.size(), static_cast<std::size_t>(screens.size()));
        QCOMPARE(outputs.front().name, screens.front()->name());
        QCOMPARE(outputs.front().size, screens.front()->size());
        QVERIFY(!outputs.front().selected);
        // Nothing stored: the primary screen, not marked.
        QCOMPARE(Settings::GetVideoOutput().name, QGuiApplication::primaryScreen()->name());
        QVERIFY(!Settings::GetVideoOutput().selected);

        Settings::SetVideoOutput(outputs.front());
        QVERIFY(Settings::GetVideoOutputs().front().selected);
        QVERIFY(Settings::GetVideoOutput().selected);

        // A screen that has been unplugged is not offered as the stored one.
        Settings::SetVideoOutput({QStringLiteral("unplugged-screen"), QSize(800, 600), false});
        outputs = Settings::GetVideoOutputs();
        QVERIFY(
            std::none_of(outputs.begin(), outputs.end(), [](const auto& output) { return output.selected; }));
        QVERIFY(!Settings::GetVideoOutput().selected);
    }

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
};

QTEST_MAIN(SettingsTest)
#include "tst_settings.moc"
