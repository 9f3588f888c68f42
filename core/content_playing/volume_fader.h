#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>

namespace Core::Vendor {
class VlcWrapper;
}

namespace Core::ContentPlaying {

// Moves one player's volume over a few seconds for a crossfade, a step every
// 200 ms: down in a straight line, up along an out-cubic curve so that the
// incoming track is soon heard. The last step is whatever the clock gave; there is
// no final jump to the exact target.
class VolumeFader : public QObject
{
    Q_OBJECT

public:
    explicit VolumeFader(QObject* parent = nullptr);

    // From the player's volume now down to 0.
    void FadeOut(Vendor::VlcWrapper* player, double seconds);
    // From 0 up to `targetVolume`.
    void FadeIn(Vendor::VlcWrapper* player, double targetVolume, double seconds);
    void Stop();
    // The seconds the fade has run so far (the name is the program's own; callers
    // use it to resume a fade).
    double GetRemainingSeconds() const;
    bool IsFinished() const;

private:
    void Begin(Vendor::VlcWrapper* player, double from, double to, double seconds, bool curved);
    void Tick();

    const double step = 0.2;
    QTimer timer;
    bool finished = true;
    double elapsedSeconds = 0.0;

    QPointer<Vendor::VlcWrapper> player;
    QElapsedTimer clock;
    double fromVolume = 0.0;
    double toVolume = 0.0;
    double durationSeconds = 0.0;
    bool curved = false;
};

} // namespace Core::ContentPlaying
