#pragma once

#include "core/content_playing/player_observer.h"
#include "core/content_playing/player_state.h"
#include "core/playback_configuration_updated_observer.h"
#include "ui/desktop/base_widget_desktop.h"

#include <QDateTime>
#include <QPointer>
#include <QRect>
#include <QSize>

#include <memory>

class QLabel;
class QTimer;

namespace Core {
class UserEnvironment;
}

namespace Core::ContentPlaying {
class Player;
}

namespace UI::Desktop {

class ContentOutputDesktop;

// The heart of the program for the shop owner: the period and its time, the local
// clock and the point of sale; the music track with its cover, likes, progress and
// controls; the advertising band while a block plays; the next block and the
// downloads; and, instead of the track, what the player is waiting for when it is
// not playing. It follows the player's state and asks the frame for the schedule,
// the ads list and the track list.
class NowPlayingWidgetDesktop : public BaseWidgetDesktop,
                                public Core::ContentPlaying::PlayerObserver,
                                public Core::PlaybackConfigurationUpdatedObserver
{
    Q_OBJECT

public:
    explicit NowPlayingWidgetDesktop(QWidget* parent = nullptr);
    ~NowPlayingWidgetDesktop() override;

    // Where video and photos are drawn; this screen lays them over its placeholders.
    void SetContentOutput(ContentOutputDesktop* output);
    // Asks the server for the schedule and starts the player on it, or on the one
    // stored when the server cannot be reached. A start at login is left to the
    // environment's delayed start. Runs to its end even if the screen closes first.
    void StartPlayer();

    void PlaybackConfigurationUpdated(bool updated, const std::string& message) override;

    void PlayerDidChangeState(const Core::ContentPlaying::Player& player,
                              Core::ContentPlaying::PlayerState state) override;
    void PlayerDidChangePeriod(const Core::ContentPlaying::Player& player,
                               const Core::ContentPlaying::PlayablePeriod& period) override;
    void PlayerDidFinishLastPeriod(const Core::ContentPlaying::Player& player) override;
    void PlayerCantFindCurrentPeriod(const Core::ContentPlaying::Player& player) override;

signals:
    // The environment has a player now: the frame follows it.
    void PlayerReady();
    void ScheduleRequested();
    void AdsRequested();
    void TracksRequested();

private slots:
    void OnPrevious();
    void OnPlayPause();
    void OnNext();
    void OnLike();
    void OnDislike();
    void OnSeek(qreal progress);
    void Tick();
    void PlaceMedia();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    enum class Situation
    {
        Playing,
        NoPeriod,
        Finished,
        LoadingError,
    };

    void Attach();
    void AttachTo(const std::shared_ptr<Core::UserEnvironment>& environment);
    void ShowState(const Core::ContentPlaying::PlayerState& state);
    void ShowPeriod();
    void ShowNextAd();
    void SendLike(bool like);
    QString NextPeriodStart() const;
    QString PeriodFilesText(const Core::ContentPlaying::DownloadsInfo& downloads) const;
    QString AdBandText(const QString& spot) const;
    void ShowMedia(const Core::ContentPlaying::PlayerState& state);
    void ShowLoadingError(const QString& text);
    // The page that replaces the screen's content while nothing can play as usual:
    // the clock is wrong, nothing could be loaded, or today's schedule is over.
    void ShowPage();
    void ClosePage();
    QDateTime NextDayStart() const;
    void CheckClockAgain();
    QRect AreaRect(const QString& objectName) const;
    // The track's cover, through the pictures loader, on a label laid over its
    // placeholder in the document (the placeholder's icon shows until it arrives).
    void ShowCover(const std::string& url);
    QLabel* NewCoverLabel();
    void PlaceCover();

    std::weak_ptr<Core::UserEnvironment> mEnvironment;
    std::weak_ptr<Core::ContentPlaying::Player> mPlayer;
    QTimer* mClock;
    QPointer<ContentOutputDesktop> mOutput;
    QPointer<BaseWidgetDesktop> mPage;
    QString mLoadingError;
    bool mClockWrong = false;
    Situation mSituation = Situation::Playing;
    std::int64_t mTrackId = 0;
    QLabel* mCover;
    std::string mCoverUrl;
    QSize mCoverSize;
};

} // namespace UI::Desktop
