#include "ui/desktop/ads_list_widget_desktop.h"

#include "core/content_playing/player.h"
#include "core/networking/content_files_helper.h"
#include "core/user_environment.h"
#include "core/utilities/local_time_helper.h"
#include "ui/list_models/ad_blocks_list_model.h"

#include <QPointer>
#include <QTimer>

namespace UI::Desktop {

using Core::DataTypes::Playback::ContentType;

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/player/now_playing/ads_list_widget.qml";
// Blocks turn "played" as the clock passes them and spots arrive as they download;
// a look every few seconds keeps the list true without following every download.
constexpr int RefreshIntervalMs = 5000;

} // namespace

AdsListWidgetDesktop::AdsListWidgetDesktop(QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mBlocks(new ListModels::AdBlocksListModel(this))
    , mRefreshTimer(new QTimer(this))
{
    SetSource(QUrl(QString::fromLatin1(Document)));
    SetPropertyOfRoot("blocksModel", QVariant::fromValue<QObject*>(mBlocks));
    ConnectQmlChild(QStringLiteral("backButton"), "clicked()", this, "OnBack()");
    mRefreshTimer->setInterval(RefreshIntervalMs);
    connect(mRefreshTimer, &QTimer::timeout, this, &AdsListWidgetDesktop::Refresh);

    QPointer<AdsListWidgetDesktop> self(this);
    Core::UserEnvironment::GetSignedInEnvironment([self](std::shared_ptr<Core::UserEnvironment> environment) {
        if (self && environment) {
            self->Follow(environment->GetContentPlayer());
        }
    });
}

AdsListWidgetDesktop::~AdsListWidgetDesktop()
{
    if (const auto player = mPlayer.lock()) {
        player->RemoveObserver(this);
    }
    // The document goes before the model it shows.
    setSource(QUrl());
}

void AdsListWidgetDesktop::Follow(const std::shared_ptr<Core::ContentPlaying::Player>& player)
{
    if (!player) {
        return;
    }
    mPlayer = player;
    player->AddObserver(this);
    Refresh();
    mRefreshTimer->start();
}

void AdsListWidgetDesktop::Refresh()
{
    const auto player = mPlayer.lock();
    if (!player) {
        return;
    }
    mBlocks->SetBlocks(player->Configuration(), player->CurrentPeriodStartTime(),
                       player->CurrentPeriodEndTime(),
                       Core::Utilities::LocalTimeHelper::CurrentDateToString(),
                       Core::Utilities::LocalTimeHelper::LocalTimeToSecondsFromDayStart(),
                       &Core::ContentPlaying::ContentFilesHelper::FileForTrackExists);
}

void AdsListWidgetDesktop::PlayerDidChangePeriod(const Core::ContentPlaying::Player&,
                                                 const Core::ContentPlaying::PlayablePeriod&)
{
    Refresh();
}

void AdsListWidgetDesktop::PlayerDidStartPlayingTrack(const Core::ContentPlaying::Player&, ContentType type,
                                                      const Core::DataTypes::Playback::Track&, bool)
{
    if (type == ContentType::Clip) {
        Refresh();
    }
}

void AdsListWidgetDesktop::OnBack()
{
    emit Close();
}

} // namespace UI::Desktop
