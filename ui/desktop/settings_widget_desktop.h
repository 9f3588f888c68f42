#pragma once

#include "core/vendor/audio_output.h"
#include "core/video_output.h"
#include "ui/desktop/base_widget_desktop.h"

#include <QString>
#include <QVariant>

#include <memory>
#include <vector>

namespace Core {
class UserEnvironment;
}

namespace UI::Desktop {

// The settings section: sound, playback, start-up, schedule checks and the theme.
// Every change is stored at once and reaches what it governs at once: the sound
// settings the tracks on air (through the environment's player), the check
// interval the environment's update timer, the theme every open screen. Shuffle
// changes the order from the next track on. The page always shows the stored
// values, read back after each change.
class SettingsWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    explicit SettingsWidgetDesktop(QWidget* parent = nullptr);
    ~SettingsWidgetDesktop() override;

    // "31 Гц", "1 кГц", "16 кГц": how an equaliser band is labelled.
    static QString BandLabel(double frequencyHz);

private slots:
    void OnSettingChanged(const QString& name, const QVariant& value);
    void OnTestSound();
    void OnCheckNow();
    void OnOpenLog();

private:
    void ShowChoices();
    void ShowStoredValues();
    void ApplySoundToPlayer();
    void ReshuffleFromNextTrack();
    std::shared_ptr<Core::UserEnvironment> Environment() const;

    std::weak_ptr<Core::UserEnvironment> mEnvironment;
    // The lists as offered when the page opened; the combo boxes' rows.
    std::vector<Core::Vendor::AudioOutput> mAudioOutputs;
    std::vector<Core::VideoOutput> mVideoOutputs;
    bool mChecking = false;
    // A change made before the signed-in environment was found (it is looked up
    // on the event loop) that still has to reach it.
    bool mSoundPending = false;
    bool mReshufflePending = false;
    bool mUpdateIntervalPending = false;
};

} // namespace UI::Desktop
