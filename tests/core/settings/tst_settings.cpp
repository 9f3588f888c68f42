#include "core/settings.h"
#include "core/utilities/autorun_helper.h"
#include "tests/support/test_data_directory.h"

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>
#include <QSettings>
#include <QtTest>

#include <functional>
#include <memory>

using Core::Settings;
using Core::DataTypes::Playback::ContentType;

namespace {

QString Text(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

QString Number(double value)
{
    return QString::number(value);
}

QString RawValue(const QString& key)
{
    return QSettings(Settings::SettingsFileName(), QSettings::IniFormat).value(key).toString();
}

QString AutostartEntry()
{
    return Core::Utilities::AutorunHelper::LinuxAutostartEntryPath();
}

// Every stored setting under the key older versions wrote, a change of it to a value
// that is not its default, how it reads, and whether "switch to default" resets it.
struct Stored
{
    QString key;
    std::function<void()> change;
    std::function<QString()> read;
    QString changed;
    bool reset;
};

const std::vector<Stored>& AllStored()
{
    static const std::vector<Stored> all{
        {"shuffle_music", [] { Settings::SetShuffle(ContentType::Music, false); },
         [] { return Text(Settings::GetShuffle(ContentType::Music)); }, "false", true},
        {"shuffle_video", [] { Settings::SetShuffle(ContentType::Video, false); },
         [] { return Text(Settings::GetShuffle(ContentType::Video)); }, "false", true},
        {"shuffle_photo", [] { Settings::SetShuffle(ContentType::Photo, false); },
         [] { return Text(Settings::GetShuffle(ContentType::Photo)); }, "false", true},
        {"use_equalizer", [] { Settings::SetUseEqualizer(true); },
         [] { return Text(Settings::GetUseEqualizer()); }, "true", true},
        {"equalizer_bands",
         [] {
             Settings::SetEqualizerBands({1.5, -2, 3, 0, 0, 0, 0, 0, 0, -20});
         },
         [] { return Number(Settings::GetBands().front()) + "," + Number(Settings::GetBands().back()); },
         "1.5,-20", false},
        {"equalizer_amplifier", [] { Settings::SetAmplifier(-3.5); },
         [] { return Number(Settings::GetAmplifierValue()); }, "-3.5", false},
        {"update_interval", [] { Settings::SetUpdateIntervalMinutes(15); },
         [] { return Number(Settings::GetUpdateIntervalMinutes()); }, "15", true},
        {"use_crossfade", [] { Settings::SetUseCrossfade(true); },
         [] { return Text(Settings::GetUseCrossfade()); }, "true", true},
        {"crossfade_interval", [] { Settings::SetCrossfadeIntervalSeconds(7); },
         [] { return Number(Settings::GetCrossfadeIntervalSeconds()); }, "7", false},
        // Chosen among the devices libvlc lists, which the sound tests cover.
        {"audio_output",
         [] {
             Settings::SetCurrentAudioOutput({"zelmar_sink_b", "B", false});
         },
         [] { return RawValue(QStringLiteral("audio_output")); }, "zelmar_sink_b", false},
        {"video_output", [] { Settings::SetVideoOutput(Settings::GetVideoOutputs().front()); },
         [] { return Text(Settings::GetVideoOutput().selected); }, "true", false},
        {"auto_play_on_app_start", [] { Settings::SetAutoPlayOnAppStart(true); },
         [] { return Text(Settings::AutoPlayOnAppStart()); }, "true", true},
        {"auto_show_video_photo", [] { Settings::SetAutoShowVideoPhoto(false); },
         [] { return Text(Settings::AutoShowVideoPhoto()); }, "false", true},
        {"auto_run", [] { Settings::SetAutoRunEnabled(true); },
         [] { return Text(Settings::AutoRunEnabled() && QFileInfo::exists(AutostartEntry())); }, "true",
         true},
        {"minimize", [] { Settings::SetMinimizeOnAutoRun(true); },
         [] { return Text(Settings::MinimizeOnAutoRun()); }, "true", true},
        {"minimize_to_tray", [] { Settings::SetMinimizeToTrayOnAppStart(true); },
         [] { return Text(Settings::MinimizeToTrayOnAppStart()); }, "true", false},
        {"delay", [] { Settings::SetDelayValueSeconds(45); },
         [] { return Number(Settings::GetDelayValueSeconds()); }, "45", true},
        {"photos_duration", [] { Settings::SetPhotosDurationSeconds(12); },
         [] { return Number(Settings::GetPhotosDurationSeconds()); }, "12", true},
        {"dark_theme", [] { Settings::SetDarkTheme(false); }, [] { return Text(Settings::DarkTheme()); },
         "false", false},
        {"dislikes_popup_shown", [] { Settings::SetDislikesPopupShown(true); },
         [] { return Text(Settings::DislikesPopupShown()); }, "true", true},
    };
    return all;
}

// The default of one setting, from a snapshot of a fresh installation.
QString DefaultOf(const QStringList& defaults, const QString& key)
{
    for (std::size_t i = 0; i < AllStored().size(); ++i) {
        if (AllStored()[i].key == key) {
            return defaults.value(static_cast<int>(i));
        }
    }
    return QStringLiteral("<no such setting>");
}

void WriteSettingsFile(const QByteArray& values)
{
    QFile file(Settings::SettingsFileName());
    if (file.open(QIODevice::WriteOnly)) {
        file.write("[General]\n" + values);
    }
}

QStringList Snapshot()
{
    QStringList values;
    for (const Stored& setting : AllStored()) {
        values << setting.read();
    }
    return values;
}

void ChangeAll()
{
    for (const Stored& setting : AllStored()) {
        setting.change();
    }
}

} // namespace

class SettingsTest : public QObject
{
    Q_OBJECT

private slots:
    // Each case starts from a fresh installation: what it reads there are the defaults.
    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        QCOMPARE(Settings::SettingsFileName(), dataDirectory->FilePath(QStringLiteral("settings.ini")));
        defaults = Snapshot();
        // Reading writes nothing.
        QVERIFY(!QFileInfo::exists(Settings::SettingsFileName()));
    }

    void cleanup()
    {
        QFile::remove(AutostartEntry());
        dataDirectory.reset();
    }

    void everySettingIsStoredUnderItsKeyAndReadBack()
    {
        ChangeAll();
        const QStringList read = Snapshot();
        QStringList keys;
        for (std::size_t i = 0; i < AllStored().size(); ++i) {
            const Stored& setting = AllStored()[i];
            const int index = static_cast<int>(i);
            QVERIFY2(defaults[index] != setting.changed,
                     qPrintable(setting.key + " is changed to its default"));
            QCOMPARE(read[index], setting.changed);
            keys << setting.key;
        }
        // The keys other tools and older versions read.
        keys.sort();
        // Advertising is never shuffled, and there is nothing to store for it.
        Settings::SetShuffle(ContentType::Clip, true);
        QVERIFY(!Settings::GetShuffle(ContentType::Clip));
        QStringList stored = QSettings(Settings::SettingsFileName(), QSettings::IniFormat).allKeys();
        stored.sort();
        QCOMPARE(stored, keys);
    }

    void switchToDefaultResetsOnlyItsKeys()
    {
        ChangeAll();
        Settings::SwitchToDefault();
        const QStringList read = Snapshot();
        for (std::size_t i = 0; i < AllStored().size(); ++i) {
            const Stored& setting = AllStored()[i];
            const int index = static_cast<int>(i);
            QVERIFY2(read[index] == (setting.reset ? defaults[index] : setting.changed),
                     qPrintable(setting.key));
        }
        QVERIFY(!QFileInfo::exists(AutostartEntry()));
    }

    // Out of range, a number reads as the nearest bound the settings screen offers;
    // not a number, or not a yes or a no, as the default; hand-written 1/0 are understood.
    void damagedOrHandEditedValues()
    {
        WriteSettingsFile("shuffle_music=perhaps\nuse_equalizer=1\ndark_theme=0\ndelay=abc\n"
                          "equalizer_amplifier=-99\ncrossfade_interval=1000\nphotos_duration=0\n"
                          "update_interval=-5\nequalizer_bands=99, -99, 0, 0, 0, 0, 0, 0, 0, 0\n");
        QCOMPARE(Text(Settings::GetShuffle(ContentType::Music)), DefaultOf(defaults, "shuffle_music"));
        QCOMPARE(Number(Settings::GetDelayValueSeconds()), DefaultOf(defaults, "delay"));
        QVERIFY(Settings::GetUseEqualizer());
        QVERIFY(!Settings::DarkTheme());
        QCOMPARE(Settings::GetAmplifierValue(), Settings::GetMinAmplifierValue());
        QCOMPARE(Settings::GetCrossfadeIntervalSeconds(), Settings::GetMaxCrossfadeIntervalSeconds());
        QCOMPARE(Settings::GetPhotosDurationSeconds(), Settings::GetMinPhotosDurationSeconds());
        QCOMPARE(Settings::GetUpdateIntervalMinutes(),
                 Settings::GetAvailableUpdateIntervalsMinutes().front());
        const std::vector<double> bands = Settings::GetBands();
        QCOMPARE(bands.front(), Settings::GetMaxBandValue());
        QCOMPARE(bands[1], Settings::GetMinBandValue());
        QCOMPARE(Settings::GetBandsFrequenciesHz().size(), bands.size());

        WriteSettingsFile("equalizer_amplifier=99\ncrossfade_interval=-1\nphotos_duration=1e9\n"
                          "update_interval=100000\ndelay=-3\n");
        QCOMPARE(Settings::GetAmplifierValue(), Settings::GetMaxAmplifierValue());
        QCOMPARE(Settings::GetCrossfadeIntervalSeconds(), Settings::GetMinCrossfadeIntervalSeconds());
        QCOMPARE(Settings::GetPhotosDurationSeconds(), Settings::GetMaxPhotosDurationSeconds());
        QCOMPARE(Settings::GetUpdateIntervalMinutes(), Settings::GetAvailableUpdateIntervalsMinutes().back());
        QCOMPARE(Settings::GetDelayValueSeconds(), Settings::AvailableDelayValuesSeconds().front());
    }

    // The presets the settings screen offers must fit its equaliser.
    void presetsFitTheEqualizer()
    {
        const auto presets = Settings::GetAudioPresets();
        QVERIFY(!presets.empty());
        for (const auto& preset : presets) {
            QVERIFY2(!preset.Name().empty(), "a preset without a name");
            QCOMPARE(preset.Bands().size(), Settings::GetBandsFrequenciesHz().size());
            QVERIFY(preset.Amplifier() >= Settings::GetMinAmplifierValue() &&
                    preset.Amplifier() <= Settings::GetMaxAmplifierValue());
        }
    }

    void bandsOfTheWrongLengthReadAsFlat_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::newRow("too few") << QVariant(QVariantList{1.0, 2.0, 3.0});
        QTest::newRow("too many") << QVariant(
            QVariantList{4.0, 4.0, 4.0, 4.0, 4.0, 4.0, 4.0, 4.0, 4.0, 4.0, 4.0});
        QTest::newRow("one number") << QVariant(3.0);
        QTest::newRow("not numbers") << QVariant(
            QStringLiteral("loud,").repeated(10).split(QLatin1Char(','), Qt::SkipEmptyParts));
    }

    void bandsOfTheWrongLengthReadAsFlat()
    {
        QFETCH(QVariant, stored);
        QSettings(Settings::SettingsFileName(), QSettings::IniFormat)
            .setValue(QStringLiteral("equalizer_bands"), stored);
        QCOMPARE(Settings::GetBands(), std::vector<double>(Settings::GetBandsFrequenciesHz().size(), 0.0));
    }

    // A damaged file, or a data folder that cannot be written, reads as a fresh
    // installation: changes are lost, the player is not.
    void damagedOrUnwritableFileReadsAsDefaults_data()
    {
        QTest::addColumn<bool>("unwritable");
        QTest::newRow("noise") << false;
        QTest::newRow("folder below a regular file") << true;
    }

    void damagedOrUnwritableFileReadsAsDefaults()
    {
        QFETCH(bool, unwritable);
        QFile file(Settings::SettingsFileName());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QByteArray noise(4096, '\0');
        for (int i = 0; i < noise.size(); ++i) {
            noise[i] = static_cast<char>((i * 131 + 7) % 256);
        }
        file.write(noise);
        file.close();
        if (unwritable) {
            qputenv("ZELMAR_DATA_DIR", QFile::encodeName(file.fileName()) + "/data");
            ChangeAll();
            QVERIFY(!QFileInfo::exists(Settings::SettingsFileName()));
        }
        QCOMPARE(Snapshot(), defaults);
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

        // A screen that has been unplugged is not offered as the stored one.
        Settings::SetVideoOutput({QStringLiteral("unplugged-screen"), QSize(800, 600), false});
        outputs = Settings::GetVideoOutputs();
        QVERIFY(
            std::none_of(outputs.begin(), outputs.end(), [](const auto& output) { return output.selected; }));
        QVERIFY(!Settings::GetVideoOutput().selected);
    }

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    QStringList defaults;
};

QTEST_MAIN(SettingsTest)
#include "tst_settings.moc"
