#pragma once

#include "core/data_types/playback/content_type.h"
#include "core/vendor/audio_output.h"
#include "core/vendor/audio_preset.h"
#include "core/video_output.h"

#include <QPointer>
#include <QString>

#include <memory>
#include <string>
#include <vector>

namespace Core {

namespace Vendor {
class VlcWrapper;
}

// The user's playback and application preferences, in "settings.ini" in the data
// directory. Every read opens the file and every write stores at once, so a change
// made on the settings screen reaches the next track without anyone being told. A
// missing or unreadable file, or a value that is not of its kind, reads as the
// default; a number outside the range the settings screen offers reads as the
// nearest bound, so a hand-edited file cannot make photos flip a thousand times a
// second or a crossfade outlast its track.
//
// The settings object is one per process, created on first use and never
// destroyed; it owns the media player that lists the sound devices and the
// short-lived player of the test sound. Everything else is static. Tests point the
// settings at a fresh file by changing the data directory: nothing is cached.
class Settings
{
public:
    static Settings& GetInstance();

    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

    static constexpr bool DefaultShuffle = true;
    static constexpr bool DefaultUseEqualizer = false;
    static constexpr double DefaultAmplifierValue = 5.0;
    static constexpr unsigned DefaultUpdateIntervalMinutes = 60;
    static constexpr bool DefaultUseCrossfade = false;
    static constexpr int DefaultCrossfadeIntervalSeconds = 10;
    static constexpr bool DefaultAutoPlayOnAppStart = false;
    static constexpr bool DefaultAutoShowVideoPhoto = true;
    static constexpr bool DefaultAutoRunEnabled = false;
    static constexpr bool DefaultMinimizeOnAutoRun = false;
    static constexpr bool DefaultMinimizeToTrayOnAppStart = false;
    static constexpr unsigned DefaultDelayValueSeconds = 15;
    static constexpr unsigned DefaultPhotosDurationSeconds = 5;
    static constexpr bool DefaultDarkTheme = true;
    static constexpr bool DefaultDislikesPopupShown = false;

    static QString SettingsFileName();

    // Music, video and photo each have their own flag; any other kind of content
    // is never shuffled and is not stored.
    static bool GetShuffle(DataTypes::Playback::ContentType type);
    static void SetShuffle(DataTypes::Playback::ContentType type, bool shuffle);

    static bool GetUseEqualizer();
    static void SetUseEqualizer(bool use);
    // One gain per equaliser band in dB; a flat equaliser (all 0.0) unless exactly
    // one readable value per band is stored.
    static std::vector<double> GetBands();
    static void SetEqualizerBands(const std::vector<double>& bands);
    static double GetAmplifierValue();
    static void SetAmplifier(double amplifier);

    static unsigned GetUpdateIntervalMinutes();
    static void SetUpdateIntervalMinutes(unsigned minutes);

    static bool GetUseCrossfade();
    static void SetUseCrossfade(bool use);
    static int GetCrossfadeIntervalSeconds();
    static void SetCrossfadeIntervalSeconds(int seconds);

    // The sound devices present now, the stored one marked selected.
    std::vector<Vendor::AudioOutput> GetAudioOutputs();
    static void SetCurrentAudioOutput(const Vendor::AudioOutput& output);
    // Sends the player to the stored device when that device is present; otherwise
    // the player stays on the system's default output.
    static void SetAudioOutputToPlayer(Vendor::VlcWrapper* player);
    // Plays the audio logo on the device, so that the user can hear which device is
    // which. A test sound still playing is cut off by the next one.
    void PlayTestSound(const Vendor::AudioOutput& output);

    // The screens in the system's order, the stored one marked selected.
    static std::vector<VideoOutput> GetVideoOutputs();
    // The stored screen (selected) when it is connected; otherwise the primary
    // screen, not selected; an empty output when there is no screen at all.
    static VideoOutput GetVideoOutput();
    static void SetVideoOutput(const VideoOutput& output);

    static bool AutoPlayOnAppStart();
    static void SetAutoPlayOnAppStart(bool enabled);
    static bool AutoShowVideoPhoto();
    static void SetAutoShowVideoPhoto(bool enabled);
    static bool AutoRunEnabled();
    // Also adds or removes the entry that starts the program at login.
    static void SetAutoRunEnabled(bool enabled);
    // At start: with autorun on, the entry that starts the program at login follows
    // the program to wherever it runs from now (see AutorunHelper::RefreshAutorun).
    // With autorun off an entry is left alone: another copy of the program with
    // data of its own may have written it.
    static void RefreshAutoRunEntry();
    static bool MinimizeOnAutoRun();
    static void SetMinimizeOnAutoRun(bool enabled);
    static bool MinimizeToTrayOnAppStart();
    static void SetMinimizeToTrayOnAppStart(bool enabled);
    static unsigned GetDelayValueSeconds();
    static void SetDelayValueSeconds(unsigned seconds);
    static unsigned GetPhotosDurationSeconds();
    static void SetPhotosDurationSeconds(unsigned seconds);
    static bool DarkTheme();
    static void SetDarkTheme(bool enabled);
    static bool DislikesPopupShown();
    static void SetDislikesPopupShown(bool shown);

    static int GetMinCrossfadeIntervalSeconds();
    static int GetMaxCrossfadeIntervalSeconds();
    static unsigned GetMinPhotosDurationSeconds();
    static unsigned GetMaxPhotosDurationSeconds();
    static std::vector<unsigned> GetAvailableUpdateIntervalsMinutes();
    static std::vector<unsigned> AvailableDelayValuesSeconds();
    static double GetMinBandValue();
    static double GetMaxBandValue();
    static double GetMinAmplifierValue();
    static double GetMaxAmplifierValue();
    static std::vector<double> GetBandsFrequenciesHz();
    static std::vector<Vendor::AudioPreset> GetAudioPresets();
    // The command-line argument of a start at login.
    static std::string AutoRunArgumentName();

    // Back to the defaults for everything but the equaliser's values, the crossfade
    // interval, the chosen devices, minimising to the tray and the theme.
    static void SwitchToDefault();

private:
    Settings();
    ~Settings();

    std::unique_ptr<Vendor::VlcWrapper> devicesPlayer;
    QPointer<Vendor::VlcWrapper> testSoundPlayer;
};

} // namespace Core
