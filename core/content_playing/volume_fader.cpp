#include "core/content_playing/volume_fader.h"

#include "core/vendor/vlc_wrapper.h"

#include <QEasingCurve>

#include <algorithm>

namespace Core::ContentPlaying {

VolumeFader::VolumeFader(QObject* parent)
    : QObject(parent)
{
    connect(&timer, &QTimer::timeout, this, &VolumeFader::Tick);
}

void VolumeFader::FadeOut(Vendor::VlcWrapper* fadedPlayer, double seconds)
{
    timer.stop();
    if (fadedPlayer == nullptr || seconds <= 0) {
        return;
    }
    // Before libvlc has an audio output the volume reads -1: fade from silence.
    Begin(fadedPlayer, std::max(0, fadedPlayer->Volume()), 0.0, seconds, false);
}

void VolumeFader::FadeIn(Vendor::VlcWrapper* fadedPlayer, double targetVolume, double seconds)
{
    timer.stop();
    if (fadedPlayer == nullptr || seconds <= 0) {
        return;
    }
    Begin(fadedPlayer, 0.0, targetVolume, seconds, true);
}

void VolumeFader::Begin(Vendor::VlcWrapper* fadedPlayer, double from, double to, double seconds, bool curve)
{
    player = fadedPlayer;
    fromVolume = from;
    toVolume = to;
    durationSeconds = seconds;
    curved = curve;
    finished = false;
    elapsedSeconds = 0.0;
    clock.start();
    timer.setSingleShot(false);
    timer.setInterval(static_cast<int>(step * 1000));
    timer.start();
}

void VolumeFader::Stop()
{
    timer.stop();
}

double VolumeFader::GetRemainingSeconds() const
{
    return elapsedSeconds;
}

bool VolumeFader::IsFinished() const
{
    return finished;
}

void VolumeFader::Tick()
{
    elapsedSeconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    if (elapsedSeconds > durationSeconds) {
        finished = true;
        timer.stop();
        return;
    }
    if (!player) {
        timer.stop();
        return;
    }
    int volume = 0;
    if (curved) {
        static const QEasingCurve curve(QEasingCurve::OutCubic);
        volume = static_cast<int>(curve.valueForProgress(elapsedSeconds / durationSeconds) * toVolume);
    } else {
        const float slope = static_cast<float>((toVolume - fromVolume) / durationSeconds);
        volume =
            static_cast<int>(static_cast<float>(elapsedSeconds) * slope + static_cast<float>(fromVolume));
    }
    player->SetVolume(volume);
}

} // namespace Core::ContentPlaying
