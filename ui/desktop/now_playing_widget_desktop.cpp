#include "ui/desktop/now_playing_widget_desktop.h"

#include "core/content_playing/player.h"
#include "core/networking/like_action.h"
#include "core/networking/pics_loader.h"
#include "core/settings.h"
#include "core/user_environment.h"
#include "core/utilities/local_time_helper.h"
#include "ui/desktop/content_output_desktop.h"
#include "ui/desktop/last_period_finished_widget_desktop.h"
#include "ui/desktop/loading_configuration_error_widget_desktop.h"
#include "ui/desktop/screen_error_text.h"
#include "ui/desktop/set_local_time_widget_desktop.h"
#include "ui/list_models/ad_blocks_list_model.h"
#include "ui/ui_kit/ui_kit.h"

#include <QLabel>
#include <QPixmap>
#include <QQuickItem>
#include <QSet>
#include <QTimer>

namespace UI::Desktop {

using Core::ContentPlaying::Player;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::LikeStatus;
using Core::Utilities::LocalTimeHelper;

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/player/now_playing/now_playing_widget.qml";

QString Duration(double seconds)
{
    const int whole = seconds > 0 ? static_cast<int>(seconds + 0.5) : 0;
    return QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

} // namespace

NowPlayingWidgetDesktop::NowPlayingWidgetDesktop(QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mClock(new QTimer(this))
    , mCover(NewCoverLabel())
{
    SetSource(QUrl(QString::fromLatin1(Document)));
    ConnectQmlChild(QStringLiteral("previousButton"), "clicked()", this, "OnPrevious()");
    ConnectQmlChild(QStringLiteral("playPauseButton"), "clicked()", this, "OnPlayPause()");
    ConnectQmlChild(QStringLiteral("nextButton"), "clicked()", this, "OnNext()");
    ConnectQmlChild(QStringLiteral("likeButton"), "clicked()", this, "OnLike()");
    ConnectQmlChild(QStringLiteral("dislikeButton"), "clicked()", this, "OnDislike()");
    ConnectQmlChild(QStringLiteral("scheduleButton"), "clicked()", this, "ScheduleRequested()");
    ConnectQmlChild(QStringLiteral("adsButton"), "clicked()", this, "AdsRequested()");
    ConnectQmlChild(QStringLiteral("tracksButton"), "clicked()", this, "TracksRequested()");
    ConnectQmlRoot("seekRequested(qreal)", this, "OnSeek(qreal)");
    // The native areas follow their placeholders wherever the layout moves them.
    for (const QString& name : {QStringLiteral("mediaColumn"), QStringLiteral("videoArea"),
                                QStringLiteral("photoArea"), QStringLiteral("coverArea")}) {
        if (QObject* item = FindQmlChild(name)) {
            for (const char* signal : {SIGNAL(xChanged()), SIGNAL(yChanged()), SIGNAL(widthChanged()),
                                       SIGNAL(heightChanged()), SIGNAL(visibleChanged())}) {
                connect(item, signal, this, SLOT(PlaceMedia()));
            }
        }
    }

    // The clock on screen is the one the schedule runs on; it also picks up the
    // player once the configuration has given the environment one.
    mClock->setInterval(1000);
    connect(mClock, &QTimer::timeout, this, &NowPlayingWidgetDesktop::Tick);
    mClock->start();
    Tick();
}

NowPlayingWidgetDesktop::~NowPlayingWidgetDesktop()
{
    if (const auto environment = mEnvironment.lock()) {
        environment->RemoveConfigurationUpdatedObserver(this);
    }
    if (mOutput) {
        mOutput->Release(this);
    }
    if (const auto player = mPlayer.lock()) {
        player->RemoveObserver(this);
    }
    setSource(QUrl());
}

void NowPlayingWidgetDesktop::StartPlayer()
{
    QPointer<NowPlayingWidgetDesktop> self(this);
    Core::UserEnvironment::GetSignedInEnvironment([self](std::shared_ptr<Core::UserEnvironment> environment) {
        if (!environment) {
            return;
        }
        const std::weak_ptr<Core::UserEnvironment> weak = environment;
        const auto start = [self, weak]() {
            const auto current = weak.lock();
            if (!current) {
                return;
            }
            const auto player = current->GetContentPlayer();
            if (!player) {
                if (self) {
                    self->ShowLoadingError(QString());
                }
                return;
            }
            // Watching before the start: a schedule with no period now says so
            // while the player starts, and only once.
            if (self) {
                self->AttachTo(current);
            }
            // A start at login waits for its delay (the sound system may still be
            // coming up); the environment's timer starts the player then.
            if (!current->PlayerStartIsDelayed()) {
                player->Start();
            }
            if (self) {
                emit self->PlayerReady();
                self->Tick();
            }
        };
        // Right after a sign-in nothing is stored yet; after a restart the stored
        // schedule may be old. Either way the server is asked first, and what is
        // stored plays when it cannot be reached: a shop without network still has
        // music. Only with nothing stored is there nothing to play.
        environment->LoadPlaybackConfiguration(
            [start](bool, const std::string&) { start(); },
            [self, weak, start](std::shared_ptr<Core::DataTypes::Error> error) {
                const auto current = weak.lock();
                if (current && !current->GetContentPlayer()) {
                    if (self) {
                        // The network library's English stays in the event log.
                        self->ShowLoadingError(error ? ScreenErrorText::Wording(error) : QString());
                    }
                    return;
                }
                start();
            });
    });
}

void NowPlayingWidgetDesktop::ShowLoadingError(const QString& text)
{
    mSituation = Situation::LoadingError;
    mLoadingError = text;
    SetPropertyOfRoot("situation", QStringLiteral("loadError"));
    SetPropertyOfRoot("stateText", QStringLiteral("Не удалось загрузить расписание") +
                                       (text.isEmpty() ? QString() : QStringLiteral(": ") + text));
    ShowPage();
}

void NowPlayingWidgetDesktop::ShowPage()
{
    BaseWidgetDesktop* page = nullptr;
    if (mClockWrong) {
        auto* clock = qobject_cast<SetLocalTimeWidgetDesktop*>(mPage);
        if (!clock) {
            clock = new SetLocalTimeWidgetDesktop(this);
            connect(clock, &SetLocalTimeWidgetDesktop::CheckAgainRequested, this,
                    &NowPlayingWidgetDesktop::CheckClockAgain);
        }
        if (const auto environment = mEnvironment.lock()) {
            clock->SetServerTime(environment->ServerDateTimeNow());
        }
        page = clock;
    } else if (mSituation == Situation::LoadingError) {
        auto* error = qobject_cast<LoadingConfigurationErrorWidgetDesktop*>(mPage);
        if (!error) {
            error = new LoadingConfigurationErrorWidgetDesktop(this);
            connect(error, &LoadingConfigurationErrorWidgetDesktop::RetryRequested, this, [this]() {
                if (auto* shown = qobject_cast<LoadingConfigurationErrorWidgetDesktop*>(mPage)) {
                    shown->SetBusy(true);
                }
                StartPlayer();
            });
        }
        error->SetErrorText(mLoadingError);
        error->SetBusy(false);
        page = error;
    } else if (mSituation == Situation::Finished) {
        auto* finished = qobject_cast<LastPeriodFinishedWidgetDesktop*>(mPage);
        if (!finished) {
            finished = new LastPeriodFinishedWidgetDesktop(this);
        }
        finished->SetNextStart(NextDayStart());
        page = finished;
    }
    if (!page) {
        ClosePage();
        return;
    }
    if (mPage != page) {
        ClosePage();
        mPage = page;
    }
    page->setGeometry(rect());
    page->show();
    page->raise();
    page->setFocus();
    PlaceMedia();
}

void NowPlayingWidgetDesktop::ClosePage()
{
    if (mPage) {
        // It may be in one of its own slots.
        mPage->hide();
        mPage->deleteLater();
        mPage = nullptr;
        setFocus();
    }
}

QDateTime NowPlayingWidgetDesktop::NextDayStart() const
{
    const auto player = mPlayer.lock();
    if (!player) {
        return {};
    }
    const QDate today = QDate::fromString(QString::fromStdString(LocalTimeHelper::CurrentDateToString()),
                                          QStringLiteral("dd.MM.yyyy"));
    QDateTime next;
    for (const auto& day : player->Configuration().days) {
        const QDate date = QDate::fromString(QString::fromStdString(day.date), QStringLiteral("dd.MM.yyyy"));
        if (!date.isValid() || date <= today) {
            continue;
        }
        for (const auto& period : day.periods) {
            const QTime start =
                QTime::fromString(QString::fromStdString(period.startTime), QStringLiteral("HH:mm"));
            const QDateTime candidate(date, start.isValid() ? start : QTime(0, 0));
            if (!next.isValid() || candidate < next) {
                next = candidate;
            }
        }
    }
    return next;
}

void NowPlayingWidgetDesktop::CheckClockAgain()
{
    const auto environment = mEnvironment.lock();
    auto* clock = qobject_cast<SetLocalTimeWidgetDesktop*>(mPage);
    if (!environment || !clock) {
        return;
    }
    clock->SetBusy(true);
    // Any answer of the server brings its clock; the schedule check is one that is
    // due anyway.
    QPointer<NowPlayingWidgetDesktop> self(this);
    const auto done = [self]() {
        if (self) {
            self->Tick();
            if (auto* shown = qobject_cast<SetLocalTimeWidgetDesktop*>(self->mPage)) {
                shown->SetBusy(false);
            }
        }
    };
    environment->LoadPlaybackConfiguration([done](bool, const std::string&) { done(); },
                                           [done](std::shared_ptr<Core::DataTypes::Error>) { done(); });
}

void NowPlayingWidgetDesktop::PlaybackConfigurationUpdated(bool, const std::string& message)
{
    SetPropertyOfRoot("checkedText", message.empty() ? QString()
                                                     : QStringLiteral("Расписание проверено в ") +
                                                           QString::fromStdString(message));
    if (mPlayer.expired()) {
        Attach();
    } else {
        ShowPeriod();
    }
}

void NowPlayingWidgetDesktop::SetContentOutput(ContentOutputDesktop* output)
{
    mOutput = output;
    if (output) {
        connect(output, &ContentOutputDesktop::ExternalScreenChanged, this, [this](const QString& name) {
            SetPropertyOfRoot("externalOutputText",
                              name.isEmpty() ? QString() : QStringLiteral("Видео на экране ") + name);
            PlaceMedia();
        });
        const QString name = output->ExternalScreenName();
        SetPropertyOfRoot("externalOutputText",
                          name.isEmpty() ? QString() : QStringLiteral("Видео на экране ") + name);
    }
    PlaceMedia();
}

QRect NowPlayingWidgetDesktop::AreaRect(const QString& objectName) const
{
    auto* item = qobject_cast<QQuickItem*>(FindQmlChild(objectName));
    if (!item || !item->isVisible() || item->width() <= 0 || item->height() <= 0) {
        return {};
    }
    // The document fills the widget, so its scene coordinates are the widget's.
    return QRectF(item->mapToScene(QPointF(0, 0)), QSizeF(item->width(), item->height())).toAlignedRect();
}

QLabel* NowPlayingWidgetDesktop::NewCoverLabel()
{
    auto* label = new QLabel(this);
    label->setObjectName(QStringLiteral("trackCover"));
    label->setAlignment(Qt::AlignCenter);
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    label->hide();
    return label;
}

void NowPlayingWidgetDesktop::ShowCover(const std::string& url)
{
    if (url == mCoverUrl) {
        return;
    }
    if (!mCoverUrl.empty()) {
        Core::Networking::PicsLoader::RemoveTask(mCoverUrl);
    }
    mCoverUrl = url;
    mCoverSize = QSize();
    // A picture still on its way is for the label it was asked for: the next
    // track's cover goes to a new one, so a slow answer never shows a stale cover.
    delete mCover;
    mCover = NewCoverLabel();
    PlaceCover();
}

void NowPlayingWidgetDesktop::PlaceCover()
{
    const QRect area = mPage ? QRect() : AreaRect(QStringLiteral("coverArea"));
    if (area.isEmpty()) {
        mCover->hide();
        return;
    }
    mCover->setGeometry(area);
    mCover->show();
    // The loader fits the picture to the label's size on arrival: a new size takes
    // it again.
    if (!mCoverUrl.empty() && area.size() != mCoverSize) {
        mCoverSize = area.size();
        mCover->clear();
        Core::Networking::PicsLoader::DisplayPic(mCoverUrl, mCover, UiKit::GetInstance().CardRadius());
    }
}

void NowPlayingWidgetDesktop::PlaceMedia()
{
    PlaceCover();
    if (!mOutput) {
        return;
    }
    if (!isVisible()) {
        mOutput->Release(this);
        return;
    }
    if (mPage) {
        mOutput->ShowOver(this, QRect(), QRect());
        return;
    }
    mOutput->ShowOver(this, AreaRect(QStringLiteral("videoArea")), AreaRect(QStringLiteral("photoArea")));
}

void NowPlayingWidgetDesktop::resizeEvent(QResizeEvent* event)
{
    BaseWidgetDesktop::resizeEvent(event);
    if (mPage) {
        mPage->setGeometry(rect());
    }
    PlaceMedia();
}

void NowPlayingWidgetDesktop::showEvent(QShowEvent* event)
{
    BaseWidgetDesktop::showEvent(event);
    PlaceMedia();
}

void NowPlayingWidgetDesktop::hideEvent(QHideEvent* event)
{
    BaseWidgetDesktop::hideEvent(event);
    if (mOutput) {
        mOutput->Release(this);
    }
}

void NowPlayingWidgetDesktop::ShowMedia(const Core::ContentPlaying::PlayerState& state)
{
    const auto player = mPlayer.lock();
    const bool shown = Core::Settings::AutoShowVideoPhoto() && mSituation == Situation::Playing;
    const bool hasVideo = player && !player->GetCurrentTracks(ContentType::Video).empty();
    const bool hasPhoto = player && !player->GetCurrentTracks(ContentType::Photo).empty();
    const auto title = [&state](ContentType type) {
        const auto found = state.contentPlayingStates.find(type);
        return found == state.contentPlayingStates.end() ? QString()
                                                         : QString::fromStdString(found->second.trackTitle);
    };
    SetPropertyOfRoot("videoShown", shown && hasVideo);
    SetPropertyOfRoot("photoShown", shown && hasPhoto);
    SetPropertyOfRoot("videoName", title(ContentType::Video));
    SetPropertyOfRoot("photoName", title(ContentType::Photo));
    if (mOutput) {
        mOutput->SetKindsPlaying(hasVideo, hasPhoto);
    }
    PlaceMedia();
}

void NowPlayingWidgetDesktop::Tick()
{
    SetPropertyOfRoot("clockText", QString::fromStdString(LocalTimeHelper::GetLocalTimeHoursMinutesString()));
    if (mPlayer.expired()) {
        Attach();
    } else {
        ShowNextAd();
    }
    const auto environment = mEnvironment.lock();
    const bool clockWrong = environment && !environment->DeviceTimeIsCorrect();
    if (clockWrong != mClockWrong) {
        mClockWrong = clockWrong;
        ShowPage();
    }
}

void NowPlayingWidgetDesktop::Attach()
{
    QPointer<NowPlayingWidgetDesktop> self(this);
    Core::UserEnvironment::GetSignedInEnvironment([self](std::shared_ptr<Core::UserEnvironment> environment) {
        if (self && environment) {
            self->AttachTo(environment);
        }
    });
}

void NowPlayingWidgetDesktop::AttachTo(const std::shared_ptr<Core::UserEnvironment>& environment)
{
    if (!mPlayer.expired()) {
        return;
    }
    if (mEnvironment.expired()) {
        environment->AddConfigurationUpdatedObserver(this);
    }
    mEnvironment = environment;
    SetPropertyOfRoot("objectText", QString::fromStdString(environment->CurrentPlaybackObject().name));
    const auto player = environment->GetContentPlayer();
    if (!player) {
        return;
    }
    mPlayer = player;
    player->AddObserver(this);
    if (mSituation == Situation::LoadingError) {
        mSituation = Situation::Playing;
        ShowPage();
    }
    ShowPeriod();
    ShowState(player->CurrentState());
}

void NowPlayingWidgetDesktop::ShowPeriod()
{
    const auto player = mPlayer.lock();
    if (!player) {
        return;
    }
    const QString name = QString::fromStdString(player->CurrentPeriodName());
    const QString start = QString::fromStdString(player->CurrentPeriodStartTime());
    const QString end = QString::fromStdString(player->CurrentPeriodEndTime());
    SetPropertyOfRoot("periodText", name.isEmpty()
                                        ? QString()
                                        : name + QStringLiteral(" · ") + start + QStringLiteral(" – ") + end);
    ShowNextAd();
}

void NowPlayingWidgetDesktop::ShowNextAd()
{
    const auto player = mPlayer.lock();
    if (!player || player->CurrentPeriodName().empty()) {
        SetPropertyOfRoot("nextAdText", QString());
        return;
    }
    // A block goes on air in the very second it is due, which does not yet count as
    // past: while one plays, the next is the one after it.
    const auto states = player->CurrentState().contentPlayingStates;
    const auto clip = states.find(ContentType::Clip);
    const bool adOnAir = clip != states.end() && !clip->second.trackTitle.empty();
    ListModels::AdBlocksListModel blocks;
    blocks.SetBlocks(player->Configuration(), player->CurrentPeriodStartTime(),
                     player->CurrentPeriodEndTime(), LocalTimeHelper::CurrentDateToString(),
                     LocalTimeHelper::LocalTimeToSecondsFromDayStart() + (adOnAir ? 1 : 0), nullptr);
    QString next;
    for (int row = 0; row < blocks.rowCount(); ++row) {
        const QModelIndex index = blocks.index(row);
        if (!index.data(ListModels::AdBlocksListModel::PlayedRole).toBool()) {
            next = QStringLiteral("Следующая реклама в ") +
                   index.data(ListModels::AdBlocksListModel::TimeRole).toString();
            break;
        }
    }
    SetPropertyOfRoot("nextAdText", next);
}

QString NowPlayingWidgetDesktop::AdBandText(const QString& spot) const
{
    // The block on air is the latest one begun; which of its spots plays is found by
    // name, as the player's state names it.
    QString text = QStringLiteral("Реклама");
    const auto player = mPlayer.lock();
    if (!player) {
        return text + QStringLiteral(" · ") + spot;
    }
    ListModels::AdBlocksListModel blocks;
    blocks.SetBlocks(player->Configuration(), player->CurrentPeriodStartTime(),
                     player->CurrentPeriodEndTime(), LocalTimeHelper::CurrentDateToString(),
                     LocalTimeHelper::LocalTimeToSecondsFromDayStart() + 1, nullptr);
    QModelIndex onAir;
    for (int row = 0; row < blocks.rowCount(); ++row) {
        const QModelIndex index = blocks.index(row);
        if (index.data(ListModels::AdBlocksListModel::PlayedRole).toBool()) {
            onAir = index;
        }
    }
    if (!onAir.isValid()) {
        return text + QStringLiteral(" · ") + spot;
    }
    text += QStringLiteral(" · блок ") + onAir.data(ListModels::AdBlocksListModel::TimeRole).toString();
    const QStringList spots = onAir.data(ListModels::AdBlocksListModel::SpotsRole).toStringList();
    const int position = spots.indexOf(spot);
    if (position >= 0) {
        text += QStringLiteral(" · %1 из %2").arg(position + 1).arg(spots.size());
    }
    return text;
}

QString NowPlayingWidgetDesktop::PeriodFilesText(const Core::ContentPlaying::DownloadsInfo& downloads) const
{
    // The period waits for its own music, not for the rest of the week's: the count
    // says how far that is.
    const auto player = mPlayer.lock();
    const std::vector<Core::DataTypes::Playback::Track> tracks =
        player ? player->GetCurrentTracks(ContentType::Music)
               : std::vector<Core::DataTypes::Playback::Track>();
    QSet<std::int64_t> needed;
    for (const auto& track : tracks) {
        needed.insert(track.id);
    }
    QSet<std::int64_t> downloaded;
    for (const auto& track : downloads.downloadedTracks) {
        if (needed.contains(track.id)) {
            downloaded.insert(track.id);
        }
    }
    return QStringLiteral("Загружаем файлы периода: %1 из %2").arg(downloaded.size()).arg(needed.size());
}

QString NowPlayingWidgetDesktop::NextPeriodStart() const
{
    const auto player = mPlayer.lock();
    if (!player) {
        return {};
    }
    const std::string today = LocalTimeHelper::CurrentDateToString();
    const int now = LocalTimeHelper::LocalTimeToSecondsFromDayStart();
    int best = -1;
    QString text;
    for (const auto& day : player->Configuration().days) {
        if (day.date != today) {
            continue;
        }
        for (const auto& period : day.periods) {
            const int start = LocalTimeHelper::StartTimeToSecondsFromDayStart(period.startTime);
            if (start > now && (best < 0 || start < best)) {
                best = start;
                text = QString::fromStdString(period.startTime);
            }
        }
    }
    return text;
}

void NowPlayingWidgetDesktop::ShowState(const Core::ContentPlaying::PlayerState& state)
{
    const auto music = state.contentPlayingStates.find(ContentType::Music);
    const auto clip = state.contentPlayingStates.find(ContentType::Clip);
    const auto downloads = state.downloadsInfo.find(ContentType::Music);

    QString situation = QStringLiteral("playing");
    QString message;
    if (mSituation == Situation::LoadingError) {
        return;
    }
    if (mSituation == Situation::Finished) {
        situation = QStringLiteral("finished");
        message = QStringLiteral("На сегодня расписание закончилось. Музыка начнётся завтра по расписанию.");
    } else if (mSituation == Situation::NoPeriod) {
        situation = QStringLiteral("noPeriod");
        const QString next = NextPeriodStart();
        message = next.isEmpty()
                      ? QStringLiteral("Сейчас нет периода воспроизведения.")
                      : QStringLiteral("Сейчас нет периода воспроизведения. Следующий начнётся в ") + next;
    } else if (downloads != state.downloadsInfo.end() && downloads->second.waitingDownload) {
        situation = QStringLiteral("waiting");
        message = PeriodFilesText(downloads->second);
    } else if (!state.playingNow) {
        situation = QStringLiteral("stopped");
        message = QStringLiteral("Воспроизведение остановлено.");
    }
    SetPropertyOfRoot("situation", situation);
    SetPropertyOfRoot("stateText", message);
    SetPropertyOfRoot("playing", state.playingNow);

    if (music != state.contentPlayingStates.end()) {
        const auto& track = music->second;
        mTrackId = track.trackIdentifier;
        SetPropertyOfRoot("trackTitle", QString::fromStdString(track.trackTitle));
        SetPropertyOfRoot("trackArtist", QString::fromStdString(track.trackSubtitle));
        SetPropertyOfRoot("playlistName", QString::fromStdString(track.playlistName));
        SetPropertyOfRoot("progress", track.progress);
        SetPropertyOfRoot("elapsedText", Duration(track.progress * track.durationSeconds));
        SetPropertyOfRoot("totalText", Duration(track.durationSeconds));
    }
    const bool adPlaying = clip != state.contentPlayingStates.end() && !clip->second.trackTitle.empty();
    SetPropertyOfRoot("adText",
                      adPlaying ? AdBandText(QString::fromStdString(clip->second.trackTitle)) : QString());
    int likeStatus = static_cast<int>(LikeStatus::None);
    // The track's own cover, or its playlist's where the track has none.
    std::string cover =
        music != state.contentPlayingStates.end() ? music->second.playlistImage : std::string();
    if (const auto player = mPlayer.lock()) {
        for (const auto& track : player->GetCurrentTracks(ContentType::Music)) {
            if (track.id == mTrackId) {
                likeStatus = static_cast<int>(track.likeStatus);
                if (!track.image.empty()) {
                    cover = track.image;
                }
            }
        }
    }
    SetPropertyOfRoot("likeStatus", likeStatus);
    ShowCover(cover);

    QString downloadsText;
    qreal downloaded = 1;
    if (downloads != state.downloadsInfo.end() && downloads->second.total > 0 &&
        downloads->second.downloaded < downloads->second.total) {
        downloadsText = QStringLiteral("Загружено %1 из %2 файлов")
                            .arg(downloads->second.downloaded)
                            .arg(downloads->second.total);
        downloaded = static_cast<qreal>(downloads->second.downloaded) / downloads->second.total;
    }
    SetPropertyOfRoot("downloadsText", downloadsText);
    SetPropertyOfRoot("downloadsProgress", downloaded);
    ShowMedia(state);
}

void NowPlayingWidgetDesktop::PlayerDidChangeState(const Player&, Core::ContentPlaying::PlayerState state)
{
    // A block begins on the minute: the clock and the next block are brought up to
    // date with it rather than on the screen's next tick.
    SetPropertyOfRoot("clockText", QString::fromStdString(LocalTimeHelper::GetLocalTimeHoursMinutesString()));
    ShowNextAd();
    ShowState(state);
}

void NowPlayingWidgetDesktop::PlayerDidChangePeriod(const Player& player,
                                                    const Core::ContentPlaying::PlayablePeriod&)
{
    mSituation = Situation::Playing;
    ShowPage();
    ShowPeriod();
    ShowState(player.CurrentState());
}

void NowPlayingWidgetDesktop::PlayerDidFinishLastPeriod(const Player& player)
{
    mSituation = Situation::Finished;
    SetPropertyOfRoot("periodText", QString());
    ShowState(player.CurrentState());
    ShowPage();
}

void NowPlayingWidgetDesktop::PlayerCantFindCurrentPeriod(const Player& player)
{
    mSituation = Situation::NoPeriod;
    SetPropertyOfRoot("periodText", QString());
    ShowState(player.CurrentState());
    ShowPage();
}

void NowPlayingWidgetDesktop::OnPrevious()
{
    if (const auto player = mPlayer.lock()) {
        player->GoToPreviousTrack(ContentType::Music);
    }
}

void NowPlayingWidgetDesktop::OnPlayPause()
{
    if (const auto player = mPlayer.lock()) {
        player->TogglePlayback();
    }
}

void NowPlayingWidgetDesktop::OnNext()
{
    if (const auto player = mPlayer.lock()) {
        player->GoToNextTrack(ContentType::Music);
    }
}

void NowPlayingWidgetDesktop::OnSeek(qreal progress)
{
    if (const auto player = mPlayer.lock()) {
        player->SetProgress(ContentType::Music, qBound<qreal>(0, progress, 1));
    }
}

void NowPlayingWidgetDesktop::OnLike()
{
    SendLike(true);
}

void NowPlayingWidgetDesktop::OnDislike()
{
    SendLike(false);
}

void NowPlayingWidgetDesktop::SendLike(bool like)
{
    const auto environment = mEnvironment.lock();
    if (!environment || mTrackId == 0) {
        return;
    }
    QPointer<NowPlayingWidgetDesktop> self(this);
    const std::int64_t trackId = mTrackId;
    environment->SendLikeAction(
        like ? Core::LikeAction::Like : Core::LikeAction::Dislike, static_cast<std::int32_t>(trackId),
        [self, trackId](LikeStatus status) {
            if (self && self->mTrackId == trackId) {
                self->SetPropertyOfRoot("likeStatus", static_cast<int>(status));
            }
        },
        [self](std::shared_ptr<Core::DataTypes::Error>) {
            if (self) {
                self->SetPropertyOfRoot("noticeText",
                                        QStringLiteral("Не удалось отправить оценку: нет связи с сервером."));
            }
        });
}

} // namespace UI::Desktop
