#pragma once

#include "core/vendor/audio_output.h"
#include "core/vendor/audio_preset.h"
#include "core/vendor/vlc_status.h"

#include <QObject>
#include <QPointer>
#include <QSize>
#include <QTimer>
#include <QUrl>
#include <QWidget>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct libvlc_instance_t;
struct libvlc_media_player_t;
struct libvlc_media_t;
struct libvlc_equalizer_t;

namespace Core::Vendor {

// One libvlc media player with its own equaliser: the only code that talks to
// libvlc. libvlc's state is polled every 250 ms on the GUI thread and turned into
// positionChanged/mediaStatusChanged, so libvlc's own threads never call into the
// program. Polling is wired up by Play() and cut by Stop(): nothing is emitted
// between SetMedia() and Play(), nor after Stop().
class VlcWrapper : public QObject
{
    Q_OBJECT

public:
    explicit VlcWrapper(QObject* parent = nullptr);
    ~VlcWrapper() override;

    VlcWrapper(const VlcWrapper&) = delete;
    VlcWrapper& operator=(const VlcWrapper&) = delete;

    // The libvlc instance shared by every player, made on first use and kept for
    // the life of the process; null when libvlc cannot start (plugins missing).
    static libvlc_instance_t* GetVlcInstance();

    static unsigned GetEqualizerBandCount();
    static double GetEqualizerBandFrequency(unsigned index);
    static double GetMinBandValue();
    static double GetMaxBandValue();
    static double GetMinAmplifierValue();
    static double GetMaxAmplifierValue();
    static std::vector<AudioPreset> GetPresets();

    // Devices that only stand for another device or for none: ALSA's "default"
    // and "sysdefault" (whatever the system is set to) and "null" (discard). They
    // are never offered; PulseAudio lists real sinks only.
    static bool IsPseudoAudioDevice(const std::string& id);
    // The scale at which a video of `videoSize` covers a widget of
    // `widgetPixels` device pixels: the larger of the two axis ratios, so that the
    // picture fills the widget and its overflow is cropped. 0 for an empty size.
    static double ScaleToCover(const QSize& widgetPixels, const QSize& videoSize);

    void SetMedia(const QUrl& url);
    void Play();
    // Plays the media from `startMs` on. The start is part of opening the media, so
    // the first position reported is already there; a seek right after Play() can
    // be lost while libvlc is still opening the file.
    void PlayFrom(std::int64_t startMs);
    // Pauses; never toggles, so a second call keeps the player paused.
    void Pause();
    void Stop();

    // 0..100 as the engine uses it.
    void SetVolume(int volume);
    int Volume() const;
    void SetMute(bool mute);
    // Fraction 0..1 of the media's length.
    void SetPosition(float position);
    float Position() const;
    std::int64_t PositionMs() const;
    // Milliseconds; 0 or negative while libvlc has not found the length yet.
    std::int64_t Duration() const;
    // libvlc's state, except that a media with neither an audio nor a video track
    // is never Playing: noise libvlc opens on trust ends without having played.
    VlcStatus GetStatus() const;
    // libvlc's last error text on this thread, empty when there is none.
    std::string GetError() const;

    void SetEqualizerBands(const std::vector<double>& bands);
    void SetAmplifier(double amplifier);
    void RemoveEqualizer();

    std::vector<AudioOutput> GetAudioDevices();
    void SetAudioOutput(const char* id);

    // Draws this player's video into the widget's native window; null detaches
    // it, and the video of a media played without a widget is not shown at all.
    void SetVideoOutput(QWidget* widget);
    void SetScaleForVideo();
    // The scale libvlc applies to the video now (0: fit to the window).
    float VideoScale() const;

signals:
    void positionChanged(float position);
    void mediaStatusChanged(Core::Vendor::VlcStatus status);

public slots:
    void TimerTimeOut();

private:
    struct PlayerRelease
    {
        void operator()(libvlc_media_player_t* handle) const;
    };
    struct MediaRelease
    {
        void operator()(libvlc_media_t* handle) const;
    };
    struct EqualizerRelease
    {
        void operator()(libvlc_equalizer_t* handle) const;
    };

    void CreateMedia();
    void PrepareMediaStartTime();
    void PrepareMediaForVideoOutput();
    void RestoreAudioOutputIfLost();
    bool ReopenAudioOutput();

    static libvlc_instance_t* sInstance;
    static std::string sAudioOutputModule;

    const int timerInterval = 250;
    VlcStatus lastStatus = VlcStatus::NothingSpecial;
    QTimer timer;
    std::unique_ptr<libvlc_media_player_t, PlayerRelease> player;
    std::unique_ptr<libvlc_media_t, MediaRelease> media;
    std::unique_ptr<libvlc_equalizer_t, EqualizerRelease> equalizer;
    QPointer<QWidget> videoWidget;

    // The media's location, to make it anew when its video must be shown again.
    QUrl mediaUrl;
    // The current media was told to leave its video out (no widget to show it).
    bool mediaWithoutVideo = false;
    // Where the next Play() starts, and whether the current media was told to
    // start late (so a later plain Play() must make it anew).
    std::int64_t nextStartMs = 0;
    bool mediaStartsLate = false;

    // libvlc drops a player's audio output on stop and makes a fresh one, on the
    // system's default device at full volume, for the next playback. What was
    // asked of the audio output is kept here and handed to the new one.
    bool audioOutputLost = false;
    std::string audioDevice;
    int requestedVolume = -1;
    int requestedMute = -1;
    bool equalizerApplied = false;
};

} // namespace Core::Vendor
