#pragma once

#include "core/content_playing/abstract_content_block.h"

#include <QPixmap>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <vector>

class QLabel;

namespace Core::ContentPlaying {

// The period's photo slideshow: each downloaded photo in turn for the number of
// seconds the settings give, wrapping round, drawn into a label that fills the
// photo widget. The picture covers the whole widget and what sticks out is cut off
// evenly on both sides.
class PhotoBlock : public AbstractContentBlock
{
public:
    explicit PhotoBlock(const std::vector<DataTypes::Playback::Track>& tracks);
    ~PhotoBlock() override;

    void Start() override;
    void Pause() override;
    void Stop() override;
    void GoToPreviousTrack() override;
    void GoToNextTrack() override;
    DataTypes::Playback::ContentType GetContentType() const override;
    std::vector<DataTypes::Playback::Track> TrackList() const override;
    bool HasAnyDownloadedFile() const override;
    void SetVideoWidget(QWidget* widget) override;
    void SetPhotoWidget(QWidget* widget) override;
    void SetProgress(double progress) override;
    void SetDontPlayNextTrack(bool dontPlay) override;
    void SetMuted(bool muted) override;
    bool CurrentTrackIsVideo() const override;
    // Draws the photo again, for a widget that has changed size.
    void RefreshPhoto() override;
    void PlayTrack(long trackId) override;
    void RefreshTrackLikeStatusById(long trackId, DataTypes::Playback::LikeStatus status) override;

private:
    void StartPlayingCurrentTrack();
    void ShowCurrentPicture();
    QLabel* PictureLabel();
    int FindNextIndex(int from) const;
    int FindPreviousIndex(int from) const;
    void ShowIndex(int index);

    std::vector<DataTypes::Playback::Track> tracks;
    QTimer timer;
    QPointer<QWidget> photoWidget;
    QPixmap currentPicture;
    bool started = false;
    int currentIndex = -1;
};

} // namespace Core::ContentPlaying
