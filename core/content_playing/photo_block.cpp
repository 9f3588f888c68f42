#include "core/content_playing/photo_block.h"

#include "core/networking/content_files_helper.h"
#include "core/settings.h"
#include "core/utilities/logger.h"
#include "core/utilities/math_utils.h"

#include <QBoxLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLayout>
#include <QString>

#include <algorithm>

namespace Core::ContentPlaying {

using DataTypes::Playback::ContentType;
using DataTypes::Playback::LikeStatus;
using DataTypes::Playback::Track;

PhotoBlock::PhotoBlock(const std::vector<Track>& tracks)
    : tracks(tracks)
{
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &timer, [this]() { GoToNextTrack(); });
}

PhotoBlock::~PhotoBlock() = default;

void PhotoBlock::Start()
{
    if (started) {
        // Resuming after a pause: the photo on show gets a fresh full duration.
        if (photoWidget) {
            timer.start();
        }
        return;
    }
    const int first = FindNextIndex(0);
    if (first < 0) {
        return;
    }
    currentIndex = first;
    started = true;
    StartPlayingCurrentTrack();
}

void PhotoBlock::Pause()
{
    if (started) {
        timer.stop();
    }
}

void PhotoBlock::Stop()
{
    started = false;
    timer.stop();
}

void PhotoBlock::GoToNextTrack()
{
    if (!started) {
        return;
    }
    ShowIndex(FindNextIndex(currentIndex + 1));
}

void PhotoBlock::GoToPreviousTrack()
{
    if (!started) {
        return;
    }
    ShowIndex(FindPreviousIndex(currentIndex - 1));
}

void PhotoBlock::ShowIndex(int index)
{
    // The only photo there is stays on show, without a timer to replace it by itself.
    if (index < 0 || index == currentIndex) {
        return;
    }
    timer.stop();
    currentIndex = index;
    StartPlayingCurrentTrack();
}

void PhotoBlock::PlayTrack(long trackId)
{
    if (!started) {
        return;
    }
    const auto track = std::find_if(tracks.begin(), tracks.end(), [trackId](const Track& candidate) {
        return candidate.id == trackId && ContentFilesHelper::FileForTrackExists(candidate);
    });
    if (track == tracks.end()) {
        return;
    }
    timer.stop();
    currentIndex = static_cast<int>(track - tracks.begin());
    StartPlayingCurrentTrack();
}

int PhotoBlock::FindNextIndex(int from) const
{
    const int count = static_cast<int>(tracks.size());
    for (int step = 0; step < count; ++step) {
        const int index = Utilities::MathUtils::Mod(from + step, count);
        if (ContentFilesHelper::FileForTrackExists(tracks[static_cast<std::size_t>(index)])) {
            return index;
        }
    }
    return -1;
}

int PhotoBlock::FindPreviousIndex(int from) const
{
    const int count = static_cast<int>(tracks.size());
    for (int step = 0; step < count; ++step) {
        const int index = Utilities::MathUtils::Mod(from - step, count);
        if (ContentFilesHelper::FileForTrackExists(tracks[static_cast<std::size_t>(index)])) {
            return index;
        }
    }
    return -1;
}

void PhotoBlock::StartPlayingCurrentTrack()
{
    if (currentIndex < 0 || static_cast<std::size_t>(currentIndex) >= tracks.size()) {
        return;
    }
    const Track track = tracks[static_cast<std::size_t>(currentIndex)];
    const QString file = QString::fromStdString(ContentFilesHelper::FilenameForTrack(track));
    NotifyObserverPlayingTrackStarted(track, false);
    if (!photoWidget) {
        return;
    }
    const QPixmap picture(file);
    if (picture.isNull()) {
        // The photo before stays on show rather than a blank area.
        Utilities::Logger::Log("Не удалось открыть изображение " + file.toStdString());
    } else {
        currentPicture = picture;
    }
    ShowCurrentPicture();
    timer.stop();
    timer.setSingleShot(true);
    timer.start(static_cast<int>(Settings::GetPhotosDurationSeconds() * 1000));
}

QLabel* PhotoBlock::PictureLabel()
{
    QLayout* layout = photoWidget->layout();
    if (layout != nullptr && layout->count() > 0) {
        if (auto* label = qobject_cast<QLabel*>(layout->itemAt(0)->widget())) {
            return label;
        }
    }
    auto* label = new QLabel(photoWidget);
    label->setAttribute(Qt::WA_MouseTracking);
    label->setAlignment(Qt::AlignCenter);
    // A picture larger than the widget must not make the layout grow the widget.
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    label->setMinimumSize(1, 1);
    if (layout == nullptr) {
        auto* box = new QHBoxLayout();
        box->setContentsMargins(0, 0, 0, 0);
        box->addWidget(label);
        photoWidget->setLayout(box);
    } else if (auto* box = qobject_cast<QBoxLayout*>(layout)) {
        box->insertWidget(0, label);
    } else {
        layout->addWidget(label);
    }
    // A layout shows a new child of a visible widget only once the event loop
    // runs; the picture is meant to be there at once.
    label->show();
    return label;
}

void PhotoBlock::ShowCurrentPicture()
{
    QLabel* label = PictureLabel();
    label->setGeometry(photoWidget->rect());
    if (currentPicture.isNull()) {
        label->clear();
        return;
    }
    label->setPixmap(
        currentPicture.scaled(photoWidget->size(), Qt::KeepAspectRatioByExpanding, Qt::FastTransformation));
}

ContentType PhotoBlock::GetContentType() const
{
    return ContentType::Photo;
}

std::vector<Track> PhotoBlock::TrackList() const
{
    return tracks;
}

bool PhotoBlock::HasAnyDownloadedFile() const
{
    return AnyFileDownloaded(tracks);
}

void PhotoBlock::SetVideoWidget(QWidget*) {}

void PhotoBlock::SetPhotoWidget(QWidget* widget)
{
    photoWidget = widget;
    if (started) {
        timer.stop();
        StartPlayingCurrentTrack();
    }
}

void PhotoBlock::SetProgress(double) {}

void PhotoBlock::SetDontPlayNextTrack(bool) {}

void PhotoBlock::SetMuted(bool) {}

bool PhotoBlock::CurrentTrackIsVideo() const
{
    return false;
}

void PhotoBlock::RefreshPhoto()
{
    if (started) {
        StartPlayingCurrentTrack();
    }
}

void PhotoBlock::RefreshTrackLikeStatusById(long, LikeStatus) {}

} // namespace Core::ContentPlaying
