#include "core/settings.h"
#include "core/utilities/autorun_helper.h"
#include "tests/support/test_data_directory.h"

#include <QGuiApplication>
#include <QScreen>
#include <QtTest>

#include <functional>

using Core::Settings;
using S = Core::Settings;
using Core::DataTypes::Playback::ContentType;

namespace {

QString Text(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
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

template <typename T>
Stored Plain(const char* key, void (*set)(T), T (*get)(), T value, bool reset)
{
    return {key, [set, value] { set(value); }, [get] { return QVariant(get()).toString(); },
            QVariant(value).toString(), reset};
}

Stored Shuffle(const char* key, ContentType type)
{
    return {key, [type] { Settings::SetShuffle(type, false); },
            [type] { return Text(Settings::GetShuffle(type)); }, "false", true};
}

const std::vector<Stored>& AllStored()
{
    static const std::vector<Stored> all{
        Shuffle("shuffle_music", ContentType::Music),
        Shuffle("shuffle_video", ContentType::Video),
        Shuffle("shuffle_photo", ContentType::Photo),
        Plain("use_equalizer", &S::SetUseEqualizer, &S::GetUseEqualizer, true, true),
        {"equalizer_bands",
         [] {
             Settings::SetEqualizerBands({1.5, -2, 3, 0, 0, 0, 0, 0, 0, -20});
         },
         [] {
             return QVariant(Settings::GetBands().front()).toString() + "," +
                    QVariant(Settings::GetBands().back()).toString();
         },
         "1.5,-20", false},
        Plain("equalizer_amplifier", &S::SetAmplifier, &S::GetAmplifierValue, -3.5, false),
        Plain("update_interval", &S::SetUpdateIntervalMinutes, &S::GetUpdateIntervalMinutes, 15u, true),
        Plain("use_crossfade", &S::SetUseCrossfade, &S::GetUseCrossfade, true, true),
        Plain("crossfade_interval", &S::SetCrossfadeIntervalSeconds, &S::GetCrossfadeIntervalSeconds, 7,
              false),
        // Chosen among the devices libvlc lists, which the sound tests cover.
        {"audio_output",
         [] {
             Settings::SetCurrentAudioOutput({"zelmar_sink_b", "B", false});
         },
         [] {
             return QSettings(Settings::SettingsFileName(), QSettings::IniFormat)
                 .value(QStringLiteral("audio_output"))
                 .toString();
         },
         "zelmar_sink_b", false},
        {"video_output", [] { Settings::SetVideoOutput(Settings::GetVideoOutputs().front()); },
         [] { return Text(Settings::GetVideoOutput().selected); }, "true", false},
        Plain("auto_play_on_app_start", &S::SetAutoPlayOnAppStart, &S::AutoPlayOnAppStart, true, true),
        Plain("auto_show_video_photo", &S::SetAutoShowVideoPhoto, &S::AutoShowVideoPhoto, false, true),
        {"auto_run", [] { Settings::SetAutoRunEnabled(true); },
         [] { return Text(Settings::AutoRunEnabled() && QFileInfo::exists(AutostartEntry())); }, "true",
         true},
        Plain("minimize", &S::SetMinimizeOnAutoRun, &S::MinimizeOnAutoRun, true, true),
        Plain("minimize_to_tray", &S::SetMinimizeToTrayOnAppStart, &S::MinimizeToTrayOnAppStart, true, false),
        Plain("delay", &S::SetDelayValueSeconds, &S::GetDelayValueSeconds, 45u, true),
        Plain("photos_duration", &S::SetPhotosDurationSeconds, &S::GetPhotosDurationSeconds, 12u, true),
        Plain("dark_theme", &S::SetDarkTheme, &S::DarkTheme, false, false),
        Plain("dislikes_popup_shown", &S::SetDislikesPopupShown, &S::DislikesPopupShown, true, true),
    };
    return all;
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

    // Under the keys other tools and older versions read; "switch to default" resets only its own.
    void everySettingIsStoredUnderItsKeyAndReadBack()
    {
        ChangeAll();
        QStringList read = Snapshot();
        QStringList keys;
        for (std::size_t i = 0; i < AllStored().size(); ++i) {
            const Stored& setting = AllStored()[i];
            const int index = static_cast<int>(i);
            QVERIFY2(defaults[index] != setting.changed,
                     qPrintable(setting.key + " is changed to its default"));
            QCOMPARE(read[index], setting.changed);
            keys << setting.key;
        }
        keys.sort();
        // Advertising is never shuffled, and there is nothing to store for it.
        Settings::SetShuffle(ContentType::Clip, true);
        QVERIFY(!Settings::GetShuffle(ContentType::Clip));
        QStringList stored = QSettings(Settings::SettingsFileName(), QSettings::IniFormat).allKeys();
        stored.sort();
        QCOMPARE(stored, keys);

        Settings::SwitchToDefault();
        read = Snapshot();
        for (std::size_t i = 0; i < AllStored().size(); ++i) {
            const Stored& setting = AllStored()[i];
            const int index = static_cast<int>(i);
            QVERIFY2(read[index] == (setting.reset ? defaults[index] : setting.changed),
                     qPrintable(setting.key));
        }
        QVERIFY(!QFileInfo::exists(AutostartEntry()));
    }

    // At start the entry follows the program only when autorun is on; with it off,
    // an entry another copy of the program wrote stays as it is.
    void startRefreshesTheEntryOnlyWhenAutorunIsOn_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<bool>("followsThisProgram");
        QTest::newRow("on") << QByteArray("auto_run=true\n") << true;
        QTest::newRow("off") << QByteArray("auto_run=false\n") << false;
    }

    void startRefreshesTheEntryOnlyWhenAutorunIsOn()
    {
        QFETCH(QByteArray, stored);
        QFETCH(bool, followsThisProgram);
        WriteSettingsFile(stored);
        const QByteArray elsewhere =
            "[Desktop Entry]\nType=Application\nExec=/opt/elsewhere/zelmar-player -autorun\n";
        QVERIFY(QDir().mkpath(QFileInfo(AutostartEntry()).absolutePath()));
        QFile entry(AutostartEntry());
        QVERIFY(entry.open(QIODevice::WriteOnly));
        entry.write(elsewhere);
        entry.close();

        Settings::RefreshAutoRunEntry();

        QVERIFY(entry.open(QIODevice::ReadOnly));
        const QByteArray after = entry.readAll();
        const QByteArray thisProgram =
            "\nExec=" + QFile::encodeName(QCoreApplication::applicationFilePath()) + " -autorun\n";
        QCOMPARE(after.contains(thisProgram), followsThisProgram);
        QCOMPARE(after == elsewhere, !followsThisProgram);
    }

    // Out of range, a number reads as the nearest bound the settings screen offers;
    // not a number, or not a yes or a no, as the default; hand-written 1/0 are
    // understood; equaliser bands not one number per band read as flat.
    void damagedOrHandEditedValues()
    {
        const bool shuffle = Settings::GetShuffle(ContentType::Music);
        const unsigned delay = Settings::GetDelayValueSeconds();
        WriteSettingsFile("shuffle_music=perhaps\nuse_equalizer=1\ndark_theme=0\ndelay=abc\n"
                          "equalizer_amplifier=-99\ncrossfade_interval=1000\nphotos_duration=0\n"
                          "update_interval=-5\nequalizer_bands=99, -99, 0, 0, 0, 0, 0, 0, 0, 0\n");
        QCOMPARE(Settings::GetShuffle(ContentType::Music), shuffle);
        QCOMPARE(Settings::GetDelayValueSeconds(), delay);
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
        const std::vector<double> flat(Settings::GetBandsFrequenciesHz().size(), 0.0);
        QCOMPARE(bands.size(), flat.size());
        // The presets offered fit the equaliser they are applied to.
        QCOMPARE(Settings::GetAudioPresets().front().Bands().size(), flat.size());
        WriteSettingsFile("crossfade_interval=-1\nphotos_duration=1e9\ndelay=-3\n");
        QCOMPARE(Settings::GetCrossfadeIntervalSeconds(), Settings::GetMinCrossfadeIntervalSeconds());
        QCOMPARE(Settings::GetPhotosDurationSeconds(), Settings::GetMaxPhotosDurationSeconds());
        QCOMPARE(Settings::GetDelayValueSeconds(), Settings::AvailableDelayValuesSeconds().front());
        for (const QByteArray& wrong : {QByteArray("1, 2, 3"), QByteArray("a, 1, 1, 1, 1, 1, 1, 1, 1, 1")}) {
            WriteSettingsFile("equalizer_bands=" + wrong + "\n");
            QCOMPARE(Settings::GetBands(), flat);
        }
    }

    // A damaged file, or a data folder that cannot be written, reads as a fresh
    // installation: changes are lost, the player is not.
    void damagedOrUnwritableFileReadsAsDefaults()
    {
        QFile file(Settings::SettingsFileName());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QByteArray noise(4096, '\0');
        for (int i = 0; i < noise.size(); ++i) {
            noise[i] = static_cast<char>((i * 131 + 7) % 256);
        }
        file.write(noise);
        file.close();
        QCOMPARE(Snapshot(), defaults);
        // A folder below a regular file can never be made.
        qputenv("ZELMAR_DATA_DIR", QFile::encodeName(file.fileName()) + "/data");
        ChangeAll();
        QVERIFY(!QFileInfo::exists(Settings::SettingsFileName()));
        QCOMPARE(Snapshot(), defaults);
    }

    void videoOutputsAreTheScreens()
    {
        const QList<QScreen*> screens = QGuiApplication::screens();
        QVERIFY(!screens.isEmpty());
        QCOMPARE(Settings::GetVideoOutputs().size(), static_cast<std::size_t>(screens.size()));
        // Nothing stored: the primary screen, not marked.
        QCOMPARE(Settings::GetVideoOutput().name, QGuiApplication::primaryScreen()->name());
        QVERIFY(!Settings::GetVideoOutput().selected);
        // A screen that has been unplugged is not offered as the stored one.
        Settings::SetVideoOutput({QStringLiteral("unplugged-screen"), QSize(800, 600), false});
        QVERIFY(!Settings::GetVideoOutput().selected);
    }

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    QStringList defaults;
};

QTEST_MAIN(SettingsTest)
#include "tst_settings.moc"
