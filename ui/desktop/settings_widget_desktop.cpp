#include "ui/desktop/settings_widget_desktop.h"

#include "core/content_playing/player.h"
#include "core/settings.h"
#include "core/user_environment.h"
#include "ui/desktop/content_output_desktop.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/screen_error_text.h"
#include "ui/desktop/view_app_log_widget_widget_desktop.h"
#include "ui/ui_kit/ui_kit.h"

#include <QPointer>
#include <QStringList>
#include <QUrl>
#include <QVariantList>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>

namespace UI::Desktop {

using Core::Settings;
using Core::DataTypes::Playback::ContentType;

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/player/settings/settings_widget.qml";

// libvlc names its presets in English; the shop owner reads Russian. A preset
// this table does not know keeps libvlc's name.
QString PresetName(const std::string& name)
{
    static const std::map<std::string, const char*> names = {
        {"Flat", "Без обработки"},
        {"Classical", "Классика"},
        {"Club", "Клуб"},
        {"Dance", "Танцевальная"},
        {"Full bass", "Мощные басы"},
        {"Full bass and treble", "Басы и высокие"},
        {"Full treble", "Высокие"},
        {"Headphones", "Наушники"},
        {"Large Hall", "Большой зал"},
        {"Live", "Концерт"},
        {"Party", "Вечеринка"},
        {"Pop", "Поп"},
        {"Reggae", "Регги"},
        {"Rock", "Рок"},
        {"Ska", "Ска"},
        {"Soft", "Мягкая"},
        {"Soft rock", "Софт-рок"},
        {"Techno", "Техно"},
    };
    const auto found = names.find(name);
    return found != names.end() ? QString::fromUtf8(found->second) : QString::fromStdString(name);
}

template <typename Value>
int IndexOf(const std::vector<Value>& values, const Value& value)
{
    const auto found = std::find(values.begin(), values.end(), value);
    return found != values.end() ? static_cast<int>(found - values.begin()) : -1;
}

template <typename Value>
bool ValidIndex(const std::vector<Value>& values, int index)
{
    return index >= 0 && static_cast<std::size_t>(index) < values.size();
}

QStringList WithUnit(const std::vector<unsigned>& values, const QString& unit)
{
    QStringList texts;
    for (const unsigned value : values) {
        texts.append(QString::number(value) + QLatin1Char(' ') + unit);
    }
    return texts;
}

} // namespace

SettingsWidgetDesktop::SettingsWidgetDesktop(QWidget* parent)
    : BaseWidgetDesktop(parent)
{
    SetSource(QUrl(QString::fromLatin1(Document)));
    ShowChoices();
    ShowStoredValues();
    ConnectQmlRoot("settingChanged(QString,QVariant)", this, "OnSettingChanged(QString,QVariant)");
    ConnectQmlChild(QStringLiteral("testSoundButton"), "clicked()", this, "OnTestSound()");
    ConnectQmlChild(QStringLiteral("checkNowButton"), "clicked()", this, "OnCheckNow()");
    ConnectQmlChild(QStringLiteral("logButton"), "clicked()", this, "OnOpenLog()");

    QPointer<SettingsWidgetDesktop> self(this);
    Core::UserEnvironment::GetSignedInEnvironment([self](std::shared_ptr<Core::UserEnvironment> environment) {
        if (!self || !environment) {
            return;
        }
        self->mEnvironment = environment;
        self->SetPropertyOfRoot("canCheck", true);
        // Changes made before the environment was found reach it now.
        if (self->mSoundPending) {
            self->ApplySoundToPlayer();
        }
        if (self->mReshufflePending) {
            self->ReshuffleFromNextTrack();
        }
        if (self->mUpdateIntervalPending) {
            environment->RefreshUpdateTimer();
        }
        self->mSoundPending = self->mReshufflePending = self->mUpdateIntervalPending = false;
    });
}

SettingsWidgetDesktop::~SettingsWidgetDesktop()
{
    // The document goes first: while it is torn down its items still signal this screen.
    setSource(QUrl());
}

QString SettingsWidgetDesktop::BandLabel(double frequencyHz)
{
    if (frequencyHz < 1000.0) {
        return QString::number(std::lround(frequencyHz)) + QStringLiteral(" Гц");
    }
    return QString::number(frequencyHz / 1000.0, 'g', 3).replace(QLatin1Char('.'), QLatin1Char(',')) +
           QStringLiteral(" кГц");
}

void SettingsWidgetDesktop::ShowChoices()
{
    // The bounds before the values: a slider keeps its value within its bounds.
    SetPropertyOfRoot("bandMin", Settings::GetMinBandValue());
    SetPropertyOfRoot("bandMax", Settings::GetMaxBandValue());
    SetPropertyOfRoot("amplifierMin", Settings::GetMinAmplifierValue());
    SetPropertyOfRoot("amplifierMax", Settings::GetMaxAmplifierValue());
    SetPropertyOfRoot("crossfadeMin", Settings::GetMinCrossfadeIntervalSeconds());
    SetPropertyOfRoot("crossfadeMax", Settings::GetMaxCrossfadeIntervalSeconds());
    SetPropertyOfRoot("photoMin", static_cast<int>(Settings::GetMinPhotosDurationSeconds()));
    SetPropertyOfRoot("photoMax", static_cast<int>(Settings::GetMaxPhotosDurationSeconds()));

    mAudioOutputs = Settings::GetInstance().GetAudioOutputs();
    QStringList audioOutputs;
    for (const auto& output : mAudioOutputs) {
        audioOutputs.append(
            QString::fromStdString(output.description.empty() ? output.id : output.description));
    }
    SetPropertyOfRoot("audioOutputs", audioOutputs);
    // Listing the devices asks the sound server, so it is done once per page and
    // not again for every step of a slider.
    const auto stored = std::find_if(mAudioOutputs.begin(), mAudioOutputs.end(),
                                     [](const Core::Vendor::AudioOutput& output) { return output.selected; });
    SetPropertyOfRoot("audioOutputIndex",
                      stored != mAudioOutputs.end() ? static_cast<int>(stored - mAudioOutputs.begin()) : -1);

    QStringList presets;
    for (const auto& preset : Settings::GetAudioPresets()) {
        presets.append(PresetName(preset.Name()));
    }
    SetPropertyOfRoot("presetNames", presets);

    QStringList bandLabels;
    for (const double frequency : Settings::GetBandsFrequenciesHz()) {
        bandLabels.append(BandLabel(frequency));
    }
    SetPropertyOfRoot("bandLabels", bandLabels);

    mVideoOutputs = Settings::GetVideoOutputs();
    QStringList videoOutputs;
    for (const auto& output : mVideoOutputs) {
        videoOutputs.append(
            QStringLiteral("%1 (%2×%3)").arg(output.name).arg(output.size.width()).arg(output.size.height()));
    }
    SetPropertyOfRoot("videoOutputs", videoOutputs);

    SetPropertyOfRoot("autorunDelays",
                      WithUnit(Settings::AvailableDelayValuesSeconds(), QStringLiteral("секунд")));
    SetPropertyOfRoot("updateIntervals",
                      WithUnit(Settings::GetAvailableUpdateIntervalsMinutes(), QStringLiteral("минут")));
}

void SettingsWidgetDesktop::ShowStoredValues()
{
    const std::vector<double> bands = Settings::GetBands();
    const double amplifier = Settings::GetAmplifierValue();
    QVariantList bandValues;
    for (const double band : bands) {
        bandValues.append(band);
    }
    SetPropertyOfRoot("useEqualizer", Settings::GetUseEqualizer());
    SetPropertyOfRoot("bands", bandValues);
    SetPropertyOfRoot("amplifier", amplifier);
    const auto presets = Settings::GetAudioPresets();
    int presetIndex = -1;
    for (std::size_t row = 0; row < presets.size() && presetIndex < 0; ++row) {
        if (presets[row].Equal(amplifier, bands)) {
            presetIndex = static_cast<int>(row);
        }
    }
    SetPropertyOfRoot("presetIndex", presetIndex);
    SetPropertyOfRoot("useCrossfade", Settings::GetUseCrossfade());
    SetPropertyOfRoot("crossfadeSeconds", Settings::GetCrossfadeIntervalSeconds());

    SetPropertyOfRoot("shuffleMusic", Settings::GetShuffle(ContentType::Music));
    SetPropertyOfRoot("shuffleVideo", Settings::GetShuffle(ContentType::Video));
    SetPropertyOfRoot("shufflePhoto", Settings::GetShuffle(ContentType::Photo));
    SetPropertyOfRoot("photoSeconds", static_cast<int>(Settings::GetPhotosDurationSeconds()));
    SetPropertyOfRoot("showVideoPhoto", Settings::AutoShowVideoPhoto());
    const Core::VideoOutput video = Settings::GetVideoOutput();
    int videoIndex = -1;
    for (std::size_t row = 0; row < mVideoOutputs.size(); ++row) {
        if (video.selected && mVideoOutputs[row].name == video.name) {
            videoIndex = static_cast<int>(row);
        }
    }
    SetPropertyOfRoot("videoOutputIndex", videoIndex);

    SetPropertyOfRoot("autorun", Settings::AutoRunEnabled());
    SetPropertyOfRoot("autorunDelayIndex",
                      IndexOf(Settings::AvailableDelayValuesSeconds(), Settings::GetDelayValueSeconds()));
    SetPropertyOfRoot("minimizeOnAutorun", Settings::MinimizeOnAutoRun());
    SetPropertyOfRoot("minimizeToTray", Settings::MinimizeToTrayOnAppStart());
    SetPropertyOfRoot("autoPlay", Settings::AutoPlayOnAppStart());
    SetPropertyOfRoot("updateIntervalIndex", IndexOf(Settings::GetAvailableUpdateIntervalsMinutes(),
                                                     Settings::GetUpdateIntervalMinutes()));
}

void SettingsWidgetDesktop::OnSettingChanged(const QString& name, const QVariant& value)
{
    const int index = value.toInt();
    const double number = value.toDouble();
    const bool on = value.toBool();

    if (name == QLatin1String("audioOutput")) {
        if (ValidIndex(mAudioOutputs, index)) {
            Settings::SetCurrentAudioOutput(mAudioOutputs[static_cast<std::size_t>(index)]);
            SetPropertyOfRoot("audioOutputIndex", index);
            ApplySoundToPlayer();
        }
    } else if (name == QLatin1String("useEqualizer")) {
        Settings::SetUseEqualizer(on);
        ApplySoundToPlayer();
    } else if (name == QLatin1String("preset")) {
        const auto presets = Settings::GetAudioPresets();
        if (ValidIndex(presets, index)) {
            const auto& preset = presets[static_cast<std::size_t>(index)];
            Settings::SetEqualizerBands(preset.Bands());
            Settings::SetAmplifier(preset.Amplifier());
            ApplySoundToPlayer();
        }
    } else if (name.startsWith(QLatin1String("band"))) {
        std::vector<double> bands = Settings::GetBands();
        bool ok = false;
        const int band = name.mid(4).toInt(&ok);
        if (ok && ValidIndex(bands, band)) {
            bands[static_cast<std::size_t>(band)] =
                std::clamp(number, Settings::GetMinBandValue(), Settings::GetMaxBandValue());
            Settings::SetEqualizerBands(bands);
            ApplySoundToPlayer();
        }
    } else if (name == QLatin1String("amplifier")) {
        Settings::SetAmplifier(
            std::clamp(number, Settings::GetMinAmplifierValue(), Settings::GetMaxAmplifierValue()));
        ApplySoundToPlayer();
    } else if (name == QLatin1String("useCrossfade")) {
        Settings::SetUseCrossfade(on);
        ApplySoundToPlayer();
    } else if (name == QLatin1String("crossfadeSeconds")) {
        // Read by the playing track itself when its fades are due.
        Settings::SetCrossfadeIntervalSeconds(std::clamp(static_cast<int>(std::lround(number)),
                                                         Settings::GetMinCrossfadeIntervalSeconds(),
                                                         Settings::GetMaxCrossfadeIntervalSeconds()));
    } else if (name == QLatin1String("shuffleMusic") || name == QLatin1String("shuffleVideo") ||
               name == QLatin1String("shufflePhoto")) {
        const ContentType type = name == QLatin1String("shuffleMusic")   ? ContentType::Music
                                 : name == QLatin1String("shuffleVideo") ? ContentType::Video
                                                                         : ContentType::Photo;
        Settings::SetShuffle(type, on);
        ReshuffleFromNextTrack();
    } else if (name == QLatin1String("photoSeconds")) {
        // The slideshow reads it for every photo.
        Settings::SetPhotosDurationSeconds(static_cast<unsigned>(
            std::clamp(std::lround(number), static_cast<long>(Settings::GetMinPhotosDurationSeconds()),
                       static_cast<long>(Settings::GetMaxPhotosDurationSeconds()))));
    } else if (name == QLatin1String("showVideoPhoto")) {
        Settings::SetAutoShowVideoPhoto(on);
    } else if (name == QLatin1String("videoOutput")) {
        if (ValidIndex(mVideoOutputs, index)) {
            Settings::SetVideoOutput(mVideoOutputs[static_cast<std::size_t>(index)]);
            ContentOutputDesktop::VideoOutputSettingChanged();
        }
    } else if (name == QLatin1String("autorun")) {
        Settings::SetAutoRunEnabled(on);
    } else if (name == QLatin1String("autorunDelay")) {
        const auto delays = Settings::AvailableDelayValuesSeconds();
        if (ValidIndex(delays, index)) {
            Settings::SetDelayValueSeconds(delays[static_cast<std::size_t>(index)]);
        }
    } else if (name == QLatin1String("minimizeOnAutorun")) {
        Settings::SetMinimizeOnAutoRun(on);
    } else if (name == QLatin1String("minimizeToTray")) {
        Settings::SetMinimizeToTrayOnAppStart(on);
    } else if (name == QLatin1String("autoPlay")) {
        Settings::SetAutoPlayOnAppStart(on);
    } else if (name == QLatin1String("updateInterval")) {
        const auto intervals = Settings::GetAvailableUpdateIntervalsMinutes();
        if (ValidIndex(intervals, index)) {
            Settings::SetUpdateIntervalMinutes(intervals[static_cast<std::size_t>(index)]);
            if (const auto environment = Environment()) {
                environment->RefreshUpdateTimer();
            } else {
                mUpdateIntervalPending = true;
            }
        }
    } else if (name == QLatin1String("darkTheme")) {
        UiKit::GetInstance().SetDarkTheme(on);
    }
    ShowStoredValues();
}

void SettingsWidgetDesktop::OnTestSound()
{
    const int index = GetPropertyOfChild(QStringLiteral("audioOutputComboBox"), "currentIndex").toInt();
    // Without a chosen device the sound goes where the players go: the system's default.
    Settings::GetInstance().PlayTestSound(ValidIndex(mAudioOutputs, index)
                                              ? mAudioOutputs[static_cast<std::size_t>(index)]
                                              : Core::Vendor::AudioOutput());
}

void SettingsWidgetDesktop::OnCheckNow()
{
    const auto environment = Environment();
    if (mChecking || !environment) {
        return;
    }
    mChecking = true;
    SetPropertyOfRoot("checking", true);
    SetPropertyOfRoot("checkMessage", QString());
    QPointer<SettingsWidgetDesktop> self(this);
    const auto finish = [self](const QString& text, bool failed) {
        if (!self) {
            return;
        }
        self->mChecking = false;
        self->SetPropertyOfRoot("checking", false);
        self->SetPropertyOfRoot("checkFailed", failed);
        self->SetPropertyOfRoot("checkMessage", text);
    };
    environment->LoadPlaybackConfiguration(
        [finish](bool updated, const std::string& time) {
            // An unreachable server also ends here: the player goes on with what it has.
            finish(updated
                       ? QStringLiteral("Получено новое расписание: плеер перейдёт на него после "
                                        "текущего трека.")
                       : QStringLiteral("Новое расписание не получено, играет сохранённое (проверка в %1).")
                             .arg(QString::fromStdString(time)),
                   false);
        },
        [finish](std::shared_ptr<Core::DataTypes::Error> error) {
            finish(ScreenErrorText::For(error), true);
        });
}

void SettingsWidgetDesktop::OnOpenLog()
{
    MainWindowDesktop::PushWidget(new ViewAppLogWidgetWidgetDesktop());
}

void SettingsWidgetDesktop::ApplySoundToPlayer()
{
    const auto environment = Environment();
    mSoundPending = !environment;
    if (environment) {
        if (const auto player = environment->GetContentPlayer()) {
            player->ApplySettings();
        }
    }
}

void SettingsWidgetDesktop::ReshuffleFromNextTrack()
{
    // The order is drawn when a period's lists are built: the same schedule handed
    // over again rebuilds them once the track on air has ended.
    const auto environment = Environment();
    mReshufflePending = !environment;
    if (environment) {
        if (const auto player = environment->GetContentPlayer()) {
            const auto configuration = player->Configuration();
            player->UpdateConfiguration(configuration, false);
        }
    }
}

std::shared_ptr<Core::UserEnvironment> SettingsWidgetDesktop::Environment() const
{
    return mEnvironment.lock();
}

} // namespace UI::Desktop
