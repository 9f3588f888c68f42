#include "core/vendor/vlc_wrapper.h"

#include "core/utilities/logger.h"

#include <QGuiApplication>
#include <QMetaObject>

#include <vlc/vlc.h>

#include <algorithm>
#include <array>

namespace Core::Vendor {

libvlc_instance_t* VlcWrapper::sInstance = nullptr;
std::string VlcWrapper::sAudioOutputModule;

namespace {

constexpr double MinBandValue = -20.0;
constexpr double MaxBandValue = 20.0;

VlcStatus StatusFromState(int state)
{
    if (state >= static_cast<int>(VlcStatus::Opening) && state <= static_cast<int>(VlcStatus::Error)) {
        return static_cast<VlcStatus>(state);
    }
    return VlcStatus::NothingSpecial;
}

struct EqualizerPresetRelease
{
    void operator()(libvlc_equalizer_t* handle) const
    {
        libvlc_audio_equalizer_release(handle);
    }
};

} // namespace

void VlcWrapper::PlayerRelease::operator()(libvlc_media_player_t* handle) const
{
    libvlc_media_player_release(handle);
}

void VlcWrapper::MediaRelease::operator()(libvlc_media_t* handle) const
{
    libvlc_media_release(handle);
}

void VlcWrapper::EqualizerRelease::operator()(libvlc_equalizer_t* handle) const
{
    libvlc_audio_equalizer_release(handle);
}

VlcWrapper::VlcWrapper(QObject* parent)
    : QObject(parent)
{
    qRegisterMetaType<VlcStatus>();
    libvlc_instance_t* instance = GetVlcInstance();
    if (instance == nullptr) {
        return;
    }
    player.reset(libvlc_media_player_new(instance));
    equalizer.reset(libvlc_audio_equalizer_new());
    if (player) {
        // The picture is for the customers in the shop: a click or a key press on
        // the video must not reach libvlc.
        libvlc_video_set_mouse_input(player.get(), 0);
        libvlc_video_set_key_input(player.get(), 0);
    }
}

VlcWrapper::~VlcWrapper()
{
    timer.disconnect();
    timer.stop();
    media.reset();
    player.reset();
    equalizer.reset();
}

libvlc_instance_t* VlcWrapper::GetVlcInstance()
{
    if (sInstance == nullptr) {
        // The dummy video output keeps the video of a player without a widget
        // invisible instead of opening a window of libvlc's own. A widget's video
        // goes out through XVideo where the display has it and plain X11 where not,
        // never OpenGL: on a shop's computer without a proper GPU driver OpenGL is
        // Mesa's software rasteriser, tens of megabytes and a core's worth of work
        // for what X11 shows as well.
        const std::array<const char*, 9> arguments = {
            "--quiet", "--vout", "dummy", "--no-stats", "--verbose=0", "--gl", "none", "--gles2", "none"};
        sInstance = libvlc_new(static_cast<int>(arguments.size()), arguments.data());
        if (sInstance == nullptr) {
            Utilities::Logger::Log("Не удалось запустить libvlc: воспроизведение невозможно");
        }
    }
    return sInstance;
}

unsigned VlcWrapper::GetEqualizerBandCount()
{
    return libvlc_audio_equalizer_get_band_count();
}

double VlcWrapper::GetEqualizerBandFrequency(unsigned index)
{
    return static_cast<double>(libvlc_audio_equalizer_get_band_frequency(index));
}

double VlcWrapper::GetMinBandValue()
{
    return MinBandValue;
}

double VlcWrapper::GetMaxBandValue()
{
    return MaxBandValue;
}

double VlcWrapper::GetMinAmplifierValue()
{
    return MinBandValue;
}

double VlcWrapper::GetMaxAmplifierValue()
{
    return MaxBandValue;
}

std::vector<AudioPreset> VlcWrapper::GetPresets()
{
    std::vector<AudioPreset> presets;
    const unsigned presetCount = libvlc_audio_equalizer_get_preset_count();
    const unsigned bandCount = libvlc_audio_equalizer_get_band_count();
    for (unsigned index = 0; index < presetCount; ++index) {
        const std::unique_ptr<libvlc_equalizer_t, EqualizerPresetRelease> preset(
            libvlc_audio_equalizer_new_from_preset(index));
        if (!preset) {
            continue;
        }
        const char* name = libvlc_audio_equalizer_get_preset_name(index);
        std::vector<double> bands;
        bands.reserve(bandCount);
        for (unsigned band = 0; band < bandCount; ++band) {
            bands.push_back(static_cast<double>(libvlc_audio_equalizer_get_amp_at_index(preset.get(), band)));
        }
        presets.emplace_back(name != nullptr ? name : "",
                             static_cast<double>(libvlc_audio_equalizer_get_preamp(preset.get())),
                             std::move(bands));
    }
    return presets;
}

bool VlcWrapper::IsPseudoAudioDevice(const std::string& id)
{
    return id == "default" || id == "sysdefault" || id == "null";
}

double VlcWrapper::ScaleToCover(const QSize& widgetPixels, const QSize& videoSize)
{
    if (videoSize.width() <= 0 || videoSize.height() <= 0) {
        return 0.0;
    }
    return std::max(static_cast<double>(widgetPixels.width()) / videoSize.width(),
                    static_cast<double>(widgetPixels.height()) / videoSize.height());
}

void VlcWrapper::SetMedia(const QUrl& url)
{
    media.reset();
    mediaUrl = url;
    CreateMedia();
    timer.start(timerInterval);
}

void VlcWrapper::CreateMedia()
{
    media.reset();
    mediaWithoutVideo = false;
    mediaStartsLate = false;
    libvlc_instance_t* instance = GetVlcInstance();
    if (instance == nullptr || !player) {
        return;
    }
    // Fully encoded, so that a cached file name with "#", "%" or "?" in it still
    // names that file and not a fragment of it.
    media.reset(
        libvlc_media_new_location(instance, mediaUrl.toString(QUrl::FullyEncoded).toUtf8().constData()));
    libvlc_media_player_set_media(player.get(), media.get());
    if (media) {
        libvlc_media_parse_with_options(media.get(), libvlc_media_parse_local, 0);
    }
}

void VlcWrapper::Play()
{
    timer.disconnect();
    timer.stop();
    lastStatus = VlcStatus::NothingSpecial;
    connect(&timer, &QTimer::timeout, this, &VlcWrapper::TimerTimeOut);
    if (player) {
        RestoreAudioOutputIfLost();
        PrepareMediaStartTime();
        PrepareMediaForVideoOutput();
        libvlc_clearerr();
        libvlc_media_player_play(player.get());
    }
    nextStartMs = 0;
    timer.start(timerInterval);
}

void VlcWrapper::PlayFrom(std::int64_t startMs)
{
    nextStartMs = std::max<std::int64_t>(0, startMs);
    Play();
}

void VlcWrapper::PrepareMediaStartTime()
{
    if (!media || GetStatus() == VlcStatus::Paused) {
        // Resuming a paused media goes on from where it paused.
        return;
    }
    if (mediaStartsLate) {
        // Options cannot be taken back from a media: make it anew.
        CreateMedia();
    }
    if (media && nextStartMs > 0) {
        const QByteArray option = QByteArrayLiteral(":start-time=") +
                                  QByteArray::number(static_cast<double>(nextStartMs) / 1000.0, 'f', 3);
        libvlc_media_add_option(media.get(), option.constData());
        mediaStartsLate = true;
    }
}

void VlcWrapper::PrepareMediaForVideoOutput()
{
    if (!media || GetStatus() == VlcStatus::Paused) {
        return;
    }
    if (!videoWidget && !mediaWithoutVideo) {
        // Once a player has been given a window, libvlc no longer falls back to the
        // dummy output: a video without a widget would open a window of its own.
        // Without a widget the video is therefore left out of the playback.
        libvlc_media_add_option(media.get(), ":no-video");
        mediaWithoutVideo = true;
    } else if (videoWidget && mediaWithoutVideo) {
        // Options cannot be taken back from a media: make it anew to show the video.
        CreateMedia();
    }
}

void VlcWrapper::Pause()
{
    if (player) {
        libvlc_media_player_set_pause(player.get(), 1);
    }
}

void VlcWrapper::Stop()
{
    timer.disconnect();
    timer.stop();
    if (player) {
        libvlc_media_player_stop(player.get());
        audioOutputLost = true;
    }
}

void VlcWrapper::SetVolume(int volume)
{
    requestedVolume = volume;
    if (player) {
        RestoreAudioOutputIfLost();
        libvlc_audio_set_volume(player.get(), volume);
    }
}

int VlcWrapper::Volume() const
{
    return player ? libvlc_audio_get_volume(player.get()) : -1;
}

void VlcWrapper::SetMute(bool mute)
{
    requestedMute = mute ? 1 : 0;
    if (player) {
        RestoreAudioOutputIfLost();
        libvlc_audio_set_mute(player.get(), mute ? 1 : 0);
    }
}

void VlcWrapper::SetPosition(float position)
{
    if (player) {
        libvlc_media_player_set_position(player.get(), position);
    }
}

float VlcWrapper::Position() const
{
    return player ? libvlc_media_player_get_position(player.get()) : 0.0f;
}

std::int64_t VlcWrapper::PositionMs() const
{
    return player ? libvlc_media_player_get_time(player.get()) : 0;
}

std::int64_t VlcWrapper::Duration() const
{
    return media ? libvlc_media_get_duration(media.get()) : 0;
}

VlcStatus VlcWrapper::GetStatus() const
{
    if (!player) {
        // A player libvlc could not make has failed, whatever it was asked to play.
        return VlcStatus::Error;
    }
    const VlcStatus status = StatusFromState(static_cast<int>(libvlc_media_player_get_state(player.get())));
    if (status == VlcStatus::Playing && libvlc_audio_get_track_count(player.get()) <= 0 &&
        libvlc_video_get_track_count(player.get()) <= 0) {
        // A file of noise is "playing" for libvlc once some demuxer took it on
        // trust (MPEG-PS takes anything), yet it holds neither sound nor picture
        // and ends at once. Real media has its tracks by the time libvlc plays:
        // until one shows up, the player is still finding what to play.
        return VlcStatus::Buffering;
    }
    return status;
}

std::string VlcWrapper::GetError() const
{
    const char* message = libvlc_errmsg();
    return message != nullptr ? std::string(message) : std::string();
}

void VlcWrapper::SetEqualizerBands(const std::vector<double>& bands)
{
    if (!player || !equalizer) {
        return;
    }
    for (std::size_t index = 0; index < bands.size(); ++index) {
        libvlc_audio_equalizer_set_amp_at_index(equalizer.get(), static_cast<float>(bands[index]),
                                                static_cast<unsigned>(index));
    }
    libvlc_media_player_set_equalizer(player.get(), equalizer.get());
    equalizerApplied = true;
}

void VlcWrapper::SetAmplifier(double amplifier)
{
    if (!player || !equalizer) {
        return;
    }
    libvlc_audio_equalizer_set_preamp(equalizer.get(), static_cast<float>(amplifier));
    libvlc_media_player_set_equalizer(player.get(), equalizer.get());
    equalizerApplied = true;
}

void VlcWrapper::RemoveEqualizer()
{
    if (player) {
        libvlc_media_player_set_equalizer(player.get(), nullptr);
    }
    equalizerApplied = false;
}

std::vector<AudioOutput> VlcWrapper::GetAudioDevices()
{
    std::vector<AudioOutput> outputs;
    if (!player) {
        return outputs;
    }
    RestoreAudioOutputIfLost();
    libvlc_audio_output_device_t* devices = libvlc_audio_output_device_enum(player.get());
    for (const libvlc_audio_output_device_t* device = devices; device != nullptr; device = device->p_next) {
        const std::string id = device->psz_device != nullptr ? device->psz_device : "";
        if (id.empty() || IsPseudoAudioDevice(id)) {
            continue;
        }
        outputs.push_back({id, device->psz_description != nullptr ? device->psz_description : id, false});
    }
    if (devices != nullptr) {
        libvlc_audio_output_device_list_release(devices);
    }
    return outputs;
}

void VlcWrapper::SetAudioOutput(const char* id)
{
    if (!player || id == nullptr) {
        return;
    }
    audioDevice = id;
    RestoreAudioOutputIfLost();
    libvlc_audio_output_device_set(player.get(), nullptr, id);
}

void VlcWrapper::RestoreAudioOutputIfLost()
{
    if (!audioOutputLost || !player) {
        return;
    }
    audioOutputLost = false;
    if (!ReopenAudioOutput()) {
        return;
    }
    if (!audioDevice.empty()) {
        libvlc_audio_output_device_set(player.get(), nullptr, audioDevice.c_str());
    }
    if (requestedVolume >= 0) {
        libvlc_audio_set_volume(player.get(), requestedVolume);
    }
    if (requestedMute >= 0) {
        libvlc_audio_set_mute(player.get(), requestedMute);
    }
    if (equalizerApplied && equalizer) {
        libvlc_media_player_set_equalizer(player.get(), equalizer.get());
    }
}

bool VlcWrapper::ReopenAudioOutput()
{
    // Asking for an audio output module makes libvlc open it at once, so the
    // device, volume and mute can be set before the next playback makes a sound.
    // libvlc has no name for "whichever module works", so the first one that opens
    // here is remembered for every later player.
    const auto opens = [this](const std::string& module) {
        return libvlc_audio_output_set(player.get(), module.c_str()) == 0 &&
               libvlc_audio_get_volume(player.get()) >= 0;
    };
    bool opened = false;
    if (!sAudioOutputModule.empty()) {
        opened = opens(sAudioOutputModule);
    } else {
        for (const char* module : {"pulse", "alsa"}) {
            if (opens(module)) {
                sAudioOutputModule = module;
                opened = true;
                break;
            }
        }
    }
    // The probe's "no audio output" message is ours, not a playback error.
    libvlc_clearerr();
    return opened;
}

void VlcWrapper::SetVideoOutput(QWidget* widget)
{
    // libvlc draws only into X windows. Elsewhere (the offscreen platform, Wayland
    // without XWayland) a widget's id names no X window, the X outputs fail, and
    // libvlc falls through its list to whatever opens, down to the terminal's
    // output, which crashed the process: the video is left out there instead.
    if (widget != nullptr && QGuiApplication::platformName() != QLatin1String("xcb")) {
        widget = nullptr;
    }
    videoWidget = widget;
    if (!player || widget == nullptr) {
        // A null window would make libvlc open a window of its own for the next
        // video; the next playback leaves the video out instead (see Play()).
        return;
    }
    libvlc_media_player_set_xwindow(player.get(), static_cast<std::uint32_t>(widget->winId()));
    SetScaleForVideo();
}

void VlcWrapper::SetScaleForVideo()
{
    if (!player || !videoWidget) {
        return;
    }
    unsigned videoWidth = 0;
    unsigned videoHeight = 0;
    if (libvlc_video_get_size(player.get(), 0, &videoWidth, &videoHeight) != 0 || videoWidth == 0 ||
        videoHeight == 0) {
        return;
    }
    const qreal ratio = videoWidget->devicePixelRatioF();
    const QSize widgetPixels(qRound(videoWidget->width() * ratio), qRound(videoWidget->height() * ratio));
    const double scale =
        ScaleToCover(widgetPixels, QSize(static_cast<int>(videoWidth), static_cast<int>(videoHeight)));
    libvlc_video_set_scale(player.get(), static_cast<float>(scale));

    // The native video surface lays itself out again only when its window changes
    // size: nudge the widget by a pixel and back, once the event loop runs.
    const QPointer<QWidget> widget = videoWidget;
    QMetaObject::invokeMethod(
        videoWidget.data(),
        [widget]() {
            if (!widget) {
                return;
            }
            const QSize size = widget->size();
            widget->resize(size + QSize(1, 1));
            widget->resize(size);
        },
        Qt::QueuedConnection);
}

float VlcWrapper::VideoScale() const
{
    return player ? libvlc_video_get_scale(player.get()) : 0.0f;
}

void VlcWrapper::TimerTimeOut()
{
    emit positionChanged(Position());
    if (!timer.isActive()) {
        // Stopped by whoever heard the position: nothing more is reported.
        return;
    }
    const VlcStatus status = GetStatus();
    // Stored before telling anyone: a listener may start the next media from its
    // slot, and Play() resets the status for that media's reports.
    const VlcStatus previous = lastStatus;
    lastStatus = status;
    if (status == previous) {
        return;
    }
    emit mediaStatusChanged(status);
    if (status == VlcStatus::Playing) {
        SetScaleForVideo();
    }
}

} // namespace Core::Vendor
