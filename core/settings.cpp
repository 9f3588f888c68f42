#include "core/settings.h"

#include "core/utilities/autorun_helper.h"
#include "core/utilities/core_resources.h"
#include "core/utilities/data_directory.h"
#include "core/utilities/logger.h"
#include "core/vendor/vlc_wrapper.h"

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>
#include <QSettings>
#include <QTimer>
#include <QUrl>
#include <QVariant>

#include <algorithm>
#include <cmath>

namespace Core {

using DataTypes::Playback::ContentType;

namespace {

const QString ShuffleMusicKey = QStringLiteral("shuffle_music");
const QString ShuffleVideoKey = QStringLiteral("shuffle_video");
const QString ShufflePhotoKey = QStringLiteral("shuffle_photo");
const QString UseEqualizerKey = QStringLiteral("use_equalizer");
const QString EqualizerBandsKey = QStringLiteral("equalizer_bands");
const QString EqualizerAmplifierKey = QStringLiteral("equalizer_amplifier");
const QString UpdateIntervalKey = QStringLiteral("update_interval");
const QString UseCrossfadeKey = QStringLiteral("use_crossfade");
const QString CrossfadeIntervalKey = QStringLiteral("crossfade_interval");
const QString AudioOutputKey = QStringLiteral("audio_output");
const QString VideoOutputKey = QStringLiteral("video_output");
const QString AutoPlayOnAppStartKey = QStringLiteral("auto_play_on_app_start");
const QString AutoShowVideoPhotoKey = QStringLiteral("auto_show_video_photo");
const QString AutoRunKey = QStringLiteral("auto_run");
const QString MinimizeKey = QStringLiteral("minimize");
const QString MinimizeToTrayKey = QStringLiteral("minimize_to_tray");
const QString DelayKey = QStringLiteral("delay");
const QString PhotosDurationKey = QStringLiteral("photos_duration");
const QString DarkThemeKey = QStringLiteral("dark_theme");
const QString DislikesPopupShownKey = QStringLiteral("dislikes_popup_shown");

const QString AudioLogoResource = QStringLiteral(":/sounds/zelmar_audiologo.mp3");
const QString AudioLogoFileName = QStringLiteral("zelmar_audiologo.mp3");

constexpr int MinCrossfadeIntervalSeconds = 3;
constexpr int MaxCrossfadeIntervalSeconds = 20;
constexpr unsigned MinPhotosDurationSeconds = 1;
constexpr unsigned MaxPhotosDurationSeconds = 20;
// A test sound that never reports its end is let go after this long.
constexpr int TestSoundLifetimeMs = 30000;

const std::vector<unsigned> UpdateIntervalsMinutes = {15, 30, 45, 60};
const std::vector<unsigned> DelayValuesSeconds = {15, 30, 45, 60};

QVariant Read(const QString& key)
{
    QSettings settings(Settings::SettingsFileName(), QSettings::IniFormat);
    settings.setIniCodec("UTF-8");
    return settings.value(key);
}

void Write(const QString& key, const QVariant& value)
{
    QSettings settings(Settings::SettingsFileName(), QSettings::IniFormat);
    settings.setIniCodec("UTF-8");
    settings.setValue(key, value);
}

// An INI file holds text: "true"/"false" as QSettings writes them, and "1"/"0" as
// people write them by hand. Anything else is not a yes or a no.
bool ReadBool(const QString& key, bool defaultValue)
{
    const QVariant value = Read(key);
    if (!value.isValid()) {
        return defaultValue;
    }
    const QString text = value.toString().trimmed().toLower();
    if (text == QLatin1String("true") || text == QLatin1String("1")) {
        return true;
    }
    if (text == QLatin1String("false") || text == QLatin1String("0")) {
        return false;
    }
    return defaultValue;
}

template <typename Number>
Number ReadNumber(const QString& key, Number defaultValue, Number minimum, Number maximum)
{
    const QVariant value = Read(key);
    if (!value.isValid()) {
        return defaultValue;
    }
    bool ok = false;
    const double number = value.toString().trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(number)) {
        return defaultValue;
    }
    if (number <= static_cast<double>(minimum)) {
        return minimum;
    }
    if (number >= static_cast<double>(maximum)) {
        return maximum;
    }
    return static_cast<Number>(number);
}

QVariantList ToVariantList(const std::vector<double>& values)
{
    QVariantList list;
    for (const double value : values) {
        list.append(value);
    }
    return list;
}

void EnsureAudioLogoFile(const QString& path)
{
    Utilities::CoreResources::Initialize();
    const QFileInfo existing(path);
    if (existing.isFile() && existing.size() == QFileInfo(AudioLogoResource).size()) {
        return;
    }
    QFile::remove(path);
    if (!QFile::copy(AudioLogoResource, path)) {
        Utilities::Logger::Log("Не удалось подготовить звуковой логотип для проверки звука: " +
                               path.toStdString());
        return;
    }
    // A copy of a resource is read-only; the next copy must be able to replace it.
    QFile::setPermissions(path, QFile::permissions(path) | QFileDevice::WriteOwner);
}

} // namespace

Settings& Settings::GetInstance()
{
    static Settings* const instance = new Settings();
    return *instance;
}

Settings::Settings() = default;

Settings::~Settings() = default;

QString Settings::SettingsFileName()
{
    return Utilities::DataDirectory::FilePath(QStringLiteral("settings.ini"));
}

bool Settings::GetShuffle(ContentType type)
{
    switch (type) {
    case ContentType::Music:
        return ReadBool(ShuffleMusicKey, DefaultShuffle);
    case ContentType::Video:
        return ReadBool(ShuffleVideoKey, DefaultShuffle);
    case ContentType::Photo:
        return ReadBool(ShufflePhotoKey, DefaultShuffle);
    case ContentType::Clip:
        break;
    }
    return false;
}

void Settings::SetShuffle(ContentType type, bool shuffle)
{
    switch (type) {
    case ContentType::Music:
        Write(ShuffleMusicKey, shuffle);
        break;
    case ContentType::Video:
        Write(ShuffleVideoKey, shuffle);
        break;
    case ContentType::Photo:
        Write(ShufflePhotoKey, shuffle);
        break;
    case ContentType::Clip:
        break;
    }
}

bool Settings::GetUseEqualizer()
{
    return ReadBool(UseEqualizerKey, DefaultUseEqualizer);
}

void Settings::SetUseEqualizer(bool use)
{
    Write(UseEqualizerKey, use);
}

std::vector<double> Settings::GetBands()
{
    const std::size_t bandCount = Vendor::VlcWrapper::GetEqualizerBandCount();
    const std::vector<double> flat(bandCount, 0.0);
    const QVariant value = Read(EqualizerBandsKey);
    // QSettings reads a list back as text items; a single value comes back as text.
    const QStringList items = value.toStringList();
    if (static_cast<std::size_t>(items.size()) != bandCount) {
        return flat;
    }
    std::vector<double> bands;
    bands.reserve(bandCount);
    for (const QString& item : items) {
        bool ok = false;
        const double band = item.trimmed().toDouble(&ok);
        if (!ok || !std::isfinite(band)) {
            return flat;
        }
        bands.push_back(std::clamp(band, GetMinBandValue(), GetMaxBandValue()));
    }
    return bands;
}

void Settings::SetEqualizerBands(const std::vector<double>& bands)
{
    Write(EqualizerBandsKey, ToVariantList(bands));
}

double Settings::GetAmplifierValue()
{
    return ReadNumber(EqualizerAmplifierKey, DefaultAmplifierValue, GetMinAmplifierValue(),
                      GetMaxAmplifierValue());
}

void Settings::SetAmplifier(double amplifier)
{
    Write(EqualizerAmplifierKey, amplifier);
}

unsigned Settings::GetUpdateIntervalMinutes()
{
    return ReadNumber(UpdateIntervalKey, DefaultUpdateIntervalMinutes, UpdateIntervalsMinutes.front(),
                      UpdateIntervalsMinutes.back());
}

void Settings::SetUpdateIntervalMinutes(unsigned minutes)
{
    Write(UpdateIntervalKey, minutes);
}

bool Settings::GetUseCrossfade()
{
    return ReadBool(UseCrossfadeKey, DefaultUseCrossfade);
}

void Settings::SetUseCrossfade(bool use)
{
    Write(UseCrossfadeKey, use);
}

int Settings::GetCrossfadeIntervalSeconds()
{
    return ReadNumber(CrossfadeIntervalKey, DefaultCrossfadeIntervalSeconds, MinCrossfadeIntervalSeconds,
                      MaxCrossfadeIntervalSeconds);
}

void Settings::SetCrossfadeIntervalSeconds(int seconds)
{
    Write(CrossfadeIntervalKey, seconds);
}

std::vector<Vendor::AudioOutput> Settings::GetAudioOutputs()
{
    if (!devicesPlayer) {
        devicesPlayer = std::make_unique<Vendor::VlcWrapper>();
    }
    std::vector<Vendor::AudioOutput> outputs = devicesPlayer->GetAudioDevices();
    const std::string stored = Read(AudioOutputKey).toString().toStdString();
    for (auto& output : outputs) {
        output.selected = !stored.empty() && output.id == stored;
    }
    return outputs;
}

void Settings::SetCurrentAudioOutput(const Vendor::AudioOutput& output)
{
    Write(AudioOutputKey, QString::fromStdString(output.id));
}

void Settings::SetAudioOutputToPlayer(Vendor::VlcWrapper* player)
{
    if (player == nullptr) {
        return;
    }
    const std::string stored = Read(AudioOutputKey).toString().toStdString();
    if (stored.empty()) {
        return;
    }
    const std::vector<Vendor::AudioOutput> present = player->GetAudioDevices();
    const bool connected =
        std::any_of(present.begin(), present.end(),
                    [&stored](const Vendor::AudioOutput& output) { return output.id == stored; });
    if (connected) {
        player->SetAudioOutput(stored.c_str());
    }
}

void Settings::PlayTestSound(const Vendor::AudioOutput& output)
{
    const QString path = Utilities::DataDirectory::FilePath(AudioLogoFileName);
    EnsureAudioLogoFile(path);

    if (testSoundPlayer) {
        testSoundPlayer->Stop();
        testSoundPlayer->deleteLater();
    }
    auto* player = new Vendor::VlcWrapper();
    testSoundPlayer = player;
    const auto release = [player]() {
        player->Stop();
        player->deleteLater();
    };
    QObject::connect(player, &Vendor::VlcWrapper::mediaStatusChanged, player,
                     [release](Vendor::VlcStatus status) {
                         if (status == Vendor::VlcStatus::Ended || status == Vendor::VlcStatus::Error ||
                             status == Vendor::VlcStatus::Stopped) {
                             release();
                         }
                     });
    QTimer::singleShot(TestSoundLifetimeMs, player, release);
    if (!output.id.empty()) {
        player->SetAudioOutput(output.id.c_str());
    }
    player->SetMedia(QUrl::fromLocalFile(path));
    player->Play();
}

std::vector<VideoOutput> Settings::GetVideoOutputs()
{
    std::vector<VideoOutput> outputs;
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) == nullptr) {
        return outputs;
    }
    const QString stored = Read(VideoOutputKey).toString();
    for (const QScreen* screen : QGuiApplication::screens()) {
        outputs.push_back({screen->name(), screen->size(), !stored.isEmpty() && screen->name() == stored});
    }
    return outputs;
}

VideoOutput Settings::GetVideoOutput()
{
    const std::vector<VideoOutput> outputs = GetVideoOutputs();
    const auto stored = std::find_if(outputs.begin(), outputs.end(),
                                     [](const VideoOutput& output) { return output.selected; });
    if (stored != outputs.end()) {
        return *stored;
    }
    if (outputs.empty()) {
        return {};
    }
    const QScreen* primary = QGuiApplication::primaryScreen();
    return primary != nullptr ? VideoOutput{primary->name(), primary->size(), false} : outputs.front();
}

void Settings::SetVideoOutput(const VideoOutput& output)
{
    Write(VideoOutputKey, output.name);
}

bool Settings::AutoPlayOnAppStart()
{
    return ReadBool(AutoPlayOnAppStartKey, DefaultAutoPlayOnAppStart);
}

void Settings::SetAutoPlayOnAppStart(bool enabled)
{
    Write(AutoPlayOnAppStartKey, enabled);
}

bool Settings::AutoShowVideoPhoto()
{
    return ReadBool(AutoShowVideoPhotoKey, DefaultAutoShowVideoPhoto);
}

void Settings::SetAutoShowVideoPhoto(bool enabled)
{
    Write(AutoShowVideoPhotoKey, enabled);
}

bool Settings::AutoRunEnabled()
{
    return ReadBool(AutoRunKey, DefaultAutoRunEnabled);
}

void Settings::SetAutoRunEnabled(bool enabled)
{
    Write(AutoRunKey, enabled);
    Utilities::AutorunHelper::SetAutorunEnabled(enabled, AutoRunArgumentName());
}

void Settings::RefreshAutoRunEntry()
{
    if (AutoRunEnabled()) {
        Utilities::AutorunHelper::RefreshAutorun(AutoRunArgumentName());
    }
}

bool Settings::MinimizeOnAutoRun()
{
    return ReadBool(MinimizeKey, DefaultMinimizeOnAutoRun);
}

void Settings::SetMinimizeOnAutoRun(bool enabled)
{
    Write(MinimizeKey, enabled);
}

bool Settings::MinimizeToTrayOnAppStart()
{
    return ReadBool(MinimizeToTrayKey, DefaultMinimizeToTrayOnAppStart);
}

void Settings::SetMinimizeToTrayOnAppStart(bool enabled)
{
    Write(MinimizeToTrayKey, enabled);
}

unsigned Settings::GetDelayValueSeconds()
{
    return ReadNumber(DelayKey, DefaultDelayValueSeconds, DelayValuesSeconds.front(),
                      DelayValuesSeconds.back());
}

void Settings::SetDelayValueSeconds(unsigned seconds)
{
    Write(DelayKey, seconds);
}

unsigned Settings::GetPhotosDurationSeconds()
{
    return ReadNumber(PhotosDurationKey, DefaultPhotosDurationSeconds, MinPhotosDurationSeconds,
                      MaxPhotosDurationSeconds);
}

void Settings::SetPhotosDurationSeconds(unsigned seconds)
{
    Write(PhotosDurationKey, seconds);
}

bool Settings::DarkTheme()
{
    return ReadBool(DarkThemeKey, DefaultDarkTheme);
}

void Settings::SetDarkTheme(bool enabled)
{
    Write(DarkThemeKey, enabled);
}

bool Settings::DislikesPopupShown()
{
    return ReadBool(DislikesPopupShownKey, DefaultDislikesPopupShown);
}

void Settings::SetDislikesPopupShown(bool shown)
{
    Write(DislikesPopupShownKey, shown);
}

int Settings::GetMinCrossfadeIntervalSeconds()
{
    return MinCrossfadeIntervalSeconds;
}

int Settings::GetMaxCrossfadeIntervalSeconds()
{
    return MaxCrossfadeIntervalSeconds;
}

unsigned Settings::GetMinPhotosDurationSeconds()
{
    return MinPhotosDurationSeconds;
}

unsigned Settings::GetMaxPhotosDurationSeconds()
{
    return MaxPhotosDurationSeconds;
}

std::vector<unsigned> Settings::GetAvailableUpdateIntervalsMinutes()
{
    return UpdateIntervalsMinutes;
}

std::vector<unsigned> Settings::AvailableDelayValuesSeconds()
{
    return DelayValuesSeconds;
}

double Settings::GetMinBandValue()
{
    return Vendor::VlcWrapper::GetMinBandValue();
}

double Settings::GetMaxBandValue()
{
    return Vendor::VlcWrapper::GetMaxBandValue();
}

double Settings::GetMinAmplifierValue()
{
    return Vendor::VlcWrapper::GetMinAmplifierValue();
}

double Settings::GetMaxAmplifierValue()
{
    return Vendor::VlcWrapper::GetMaxAmplifierValue();
}

std::vector<double> Settings::GetBandsFrequenciesHz()
{
    std::vector<double> frequencies;
    const unsigned bandCount = Vendor::VlcWrapper::GetEqualizerBandCount();
    for (unsigned band = 0; band < bandCount; ++band) {
        frequencies.push_back(Vendor::VlcWrapper::GetEqualizerBandFrequency(band));
    }
    return frequencies;
}

std::vector<Vendor::AudioPreset> Settings::GetAudioPresets()
{
    return Vendor::VlcWrapper::GetPresets();
}

std::string Settings::AutoRunArgumentName()
{
    return "-autorun";
}

void Settings::SwitchToDefault()
{
    Write(ShuffleMusicKey, DefaultShuffle);
    Write(ShuffleVideoKey, DefaultShuffle);
    Write(ShufflePhotoKey, DefaultShuffle);
    Write(UseEqualizerKey, DefaultUseEqualizer);
    Write(UseCrossfadeKey, DefaultUseCrossfade);
    Write(UpdateIntervalKey, DefaultUpdateIntervalMinutes);
    SetAutoRunEnabled(DefaultAutoRunEnabled);
    Write(MinimizeKey, DefaultMinimizeOnAutoRun);
    Write(DelayKey, DefaultDelayValueSeconds);
    Write(PhotosDurationKey, DefaultPhotosDurationSeconds);
    Write(DislikesPopupShownKey, DefaultDislikesPopupShown);
    Write(AutoPlayOnAppStartKey, DefaultAutoPlayOnAppStart);
    Write(AutoShowVideoPhotoKey, DefaultAutoShowVideoPhoto);
}

} // namespace Core
