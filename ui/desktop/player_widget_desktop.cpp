#include "ui/desktop/player_widget_desktop.h"

#include "core/content_playing/player.h"
#include "core/user_environment.h"
#include "ui/desktop/ads_list_widget_desktop.h"
#include "ui/desktop/backdrop_image_provider.h"
#include "ui/desktop/base_widget_desktop.h"
#include "ui/desktop/content_output_desktop.h"
#include "ui/desktop/content_tabs_widget_desktop.h"
#include "ui/desktop/license_widget_desktop.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/music_track_list_widget_desktop.h"
#include "ui/desktop/nonskippable_dialog_widget_desktop.h"
#include "ui/desktop/now_playing_widget_desktop.h"
#include "ui/desktop/objects_widget_desktop.h"
#include "ui/desktop/schedule_widget_desktop.h"
#include "ui/desktop/settings_widget_desktop.h"
#include "ui/desktop/side_bar_widget_desktop.h"
#include "ui/desktop/skippable_dialog_widget_desktop.h"
#include "ui/desktop/unauth_error_widget_desktop.h"
#include "ui/ui_kit/ui_kit.h"

#include <QHBoxLayout>
#include <QQmlEngine>
#include <QStackedWidget>

#include <algorithm>
#include <cmath>

namespace UI::Desktop {

using Core::UserEnvironment;
using Core::DataTypes::Playlists::PlaylistContentType;

namespace {

// The frame that registered itself with the environment last. The environment
// cannot be asked whom it tells, and a frame going away must not switch off the
// one that replaced it.
PlayerWidgetDesktop* sListeningFrame = nullptr;

} // namespace

PlayerWidgetDesktop::PlayerWidgetDesktop(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("playerFrame"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    mSideBar = new SideBarWidgetDesktop(this);
    mInnerStack = new QStackedWidget(this);
    mInnerStack->setObjectName(QStringLiteral("innerStack"));
    layout->addWidget(mSideBar);
    layout->addWidget(mInnerStack, 1);
    LayOut();

    connect(mSideBar, &SideBarWidgetDesktop::PlayerButtonClicked, this,
            &PlayerWidgetDesktop::OpenPlayerSection);
    connect(mSideBar, &SideBarWidgetDesktop::MusicButtonClicked, this,
            &PlayerWidgetDesktop::OpenMusicSection);
    connect(mSideBar, &SideBarWidgetDesktop::VideoButtonClicked, this,
            &PlayerWidgetDesktop::OpenVideoSection);
    connect(mSideBar, &SideBarWidgetDesktop::PhotoButtonClicked, this,
            &PlayerWidgetDesktop::OpenPhotoSection);
    connect(mSideBar, &SideBarWidgetDesktop::LicenseButtonClicked, this,
            &PlayerWidgetDesktop::OpenLicenseSection);
    connect(mSideBar, &SideBarWidgetDesktop::ObjectsButtonClicked, this,
            &PlayerWidgetDesktop::OpenObjectsSection);
    connect(mSideBar, &SideBarWidgetDesktop::SettingsButtonClicked, this,
            &PlayerWidgetDesktop::OpenSettingsSection);
    connect(mSideBar, &SideBarWidgetDesktop::LogoutButtonClicked, this, &PlayerWidgetDesktop::AskToSignOut);
    connect(mSideBar, &SideBarWidgetDesktop::HideBlackout, this, &PlayerWidgetDesktop::HideBlackout);
    // The side bar's share of the width is the theme's, which differs by device.
    connect(&UiKit::GetInstance(), &UiKit::sideBarScreenWidthPercentChanged, this,
            &PlayerWidgetDesktop::LayOut);

    mOutput = new ContentOutputDesktop(this);
    OpenPlayerSection();

    QPointer<PlayerWidgetDesktop> self(this);
    UserEnvironment::GetSignedInEnvironment([self](std::shared_ptr<UserEnvironment> environment) {
        if (self && environment) {
            self->AttachTo(environment);
        }
    });
}

PlayerWidgetDesktop::~PlayerWidgetDesktop()
{
    DetachFromEnvironment();
    // Signed out: the panel shows nothing playing rather than the last track.
    MainWindowDesktop::FollowPlayerInMediaControls(nullptr);
    // The player lets go of the video and photo areas before they go.
    delete mOutput;
}

SideBarWidgetDesktop* PlayerWidgetDesktop::SideBar() const
{
    return mSideBar;
}

QStackedWidget* PlayerWidgetDesktop::InnerStack() const
{
    return mInnerStack;
}

void PlayerWidgetDesktop::AttachTo(const std::shared_ptr<UserEnvironment>& environment)
{
    mEnvironment = environment;
    environment->SetUnathorizedErrorListener(this);
    environment->SetObjectExportedErrorListener(this);
    environment->AddConfigurationUpdatedObserver(this);
    // Every request of the sign-in says whether the server answered: the periodic
    // check, reports, the owner's own actions.
    QPointer<SideBarWidgetDesktop> sideBar(mSideBar);
    environment->SetServerReachabilityHandler([sideBar](bool answered) {
        if (sideBar) {
            sideBar->SetServerReachable(answered);
        }
    });
    sListeningFrame = this;
    // The now-playing screen starts the player; one that exists already (a start at
    // login, a switch of object) is followed at once.
    FollowPlayer();
}

void PlayerWidgetDesktop::DetachFromEnvironment()
{
    const auto environment = mEnvironment.lock();
    if (!environment) {
        return;
    }
    environment->RemoveConfigurationUpdatedObserver(this);
    if (sListeningFrame == this) {
        environment->SetUnathorizedErrorListener(nullptr);
        environment->SetObjectExportedErrorListener(nullptr);
        environment->SetServerReachabilityHandler(nullptr);
        sListeningFrame = nullptr;
    }
    mEnvironment.reset();
}

void PlayerWidgetDesktop::FollowPlayer()
{
    const auto environment = mEnvironment.lock();
    const auto player = environment ? environment->GetContentPlayer() : nullptr;
    mSideBar->ObservePlayer(player);
    mOutput->Attach(player);
    MainWindowDesktop::FollowPlayerInMediaControls(player);
}

void PlayerWidgetDesktop::PlaybackConfigurationUpdated(bool, const std::string&)
{
    // A switch of the point of sale may have brought a player of its own.
    FollowPlayer();
}

// --- Sections ---

void PlayerWidgetDesktop::OpenPlayerSection()
{
    const QString name = QString::fromLatin1(SideBarWidgetDesktop::PlayerSection);
    if (name == mCurrentSection && qobject_cast<NowPlayingWidgetDesktop*>(mInnerStack->currentWidget())) {
        return;
    }
    mCurrentSection.clear();
    ShowInSection(SideBarWidgetDesktop::PlayerSection, [this]() {
        auto* nowPlaying = new NowPlayingWidgetDesktop(mInnerStack);
        nowPlaying->SetContentOutput(mOutput);
        connect(nowPlaying, &NowPlayingWidgetDesktop::PlayerReady, this, &PlayerWidgetDesktop::FollowPlayer);
        // The first now-playing screen of the frame starts the player; coming back to
        // it later does not restart what the owner stopped.
        if (!mPlayerStartAsked) {
            mPlayerStartAsked = true;
            nowPlaying->StartPlayer();
        }
        connect(nowPlaying, &NowPlayingWidgetDesktop::ScheduleRequested, this,
                &PlayerWidgetDesktop::OpenScheduleWidget);
        connect(nowPlaying, &NowPlayingWidgetDesktop::AdsRequested, this,
                [this]() { OpenNowPlayingList(new AdsListWidgetDesktop(mInnerStack)); });
        connect(nowPlaying, &NowPlayingWidgetDesktop::TracksRequested, this,
                [this]() { OpenNowPlayingList(new MusicTrackListWidgetDesktop(mInnerStack)); });
        return nowPlaying;
    });
}

void PlayerWidgetDesktop::OpenScheduleWidget()
{
    QPointer<PlayerWidgetDesktop> self(this);
    auto show = [self](std::vector<Core::DataTypes::Playback::UserFacingSchedule> schedules) {
        if (self) {
            self->OpenNowPlayingList(new ScheduleWidgetDesktop(schedules, self->mInnerStack));
        }
    };
    // The current environment, even before the frame has attached to it.
    UserEnvironment::GetSignedInEnvironment([show](std::shared_ptr<UserEnvironment> environment) {
        if (!environment) {
            return;
        }
        // Nothing stored yet: the schedule screen says so itself.
        environment->UserFacingSchedules(show, [show](std::shared_ptr<Core::DataTypes::Error>) { show({}); });
    });
}

void PlayerWidgetDesktop::OpenNowPlayingList(BaseWidgetDesktop* list)
{
    // Each list asks to close with the same signal; it leads back to now playing.
    connect(list, SIGNAL(Close()), this, SLOT(OpenPlayerSection()));
    mCurrentSection.clear();
    ShowInSection(SideBarWidgetDesktop::PlayerSection, [list]() { return list; });
}

void PlayerWidgetDesktop::OpenMusicSection()
{
    OpenContentSection(SideBarWidgetDesktop::MusicSection, PlaylistContentType::Music);
}

void PlayerWidgetDesktop::OpenVideoSection()
{
    OpenContentSection(SideBarWidgetDesktop::VideoSection, PlaylistContentType::Video);
}

void PlayerWidgetDesktop::OpenPhotoSection()
{
    OpenContentSection(SideBarWidgetDesktop::PhotoSection, PlaylistContentType::Photo);
}

void PlayerWidgetDesktop::OpenContentSection(const char* section, PlaylistContentType type)
{
    // The tabs switch among the three kinds within one section; the side bar's three
    // items each open it on their own kind.
    const QString name = QString::fromLatin1(section);
    if (auto* tabs = qobject_cast<ContentTabsWidgetDesktop*>(mInnerStack->currentWidget())) {
        if (name != mCurrentSection) {
            mCurrentSection = name;
            mSideBar->SetCurrentSection(name);
            tabs->Open(type);
        }
        return;
    }
    ShowInSection(section, [this, type]() {
        auto* tabs = new ContentTabsWidgetDesktop(type, mInnerStack);
        connect(tabs, &ContentTabsWidgetDesktop::TabChosen, this, [this](PlaylistContentType chosen) {
            const char* chosenSection =
                chosen == PlaylistContentType::Video   ? SideBarWidgetDesktop::VideoSection
                : chosen == PlaylistContentType::Photo ? SideBarWidgetDesktop::PhotoSection
                                                       : SideBarWidgetDesktop::MusicSection;
            mCurrentSection = QString::fromLatin1(chosenSection);
            mSideBar->SetCurrentSection(mCurrentSection);
        });
        return tabs;
    });
}

void PlayerWidgetDesktop::OpenLicenseSection()
{
    ShowInSection(SideBarWidgetDesktop::LicenseSection,
                  [this]() { return new LicenseWidgetDesktop(mInnerStack); });
}

void PlayerWidgetDesktop::OpenObjectsSection()
{
    ShowInSection(SideBarWidgetDesktop::ObjectsSection,
                  [this]() { return new ObjectsWidgetDesktop(mInnerStack); });
}

void PlayerWidgetDesktop::OpenSettingsSection()
{
    ShowInSection(SideBarWidgetDesktop::SettingsSection,
                  [this]() { return new SettingsWidgetDesktop(mInnerStack); });
}

void PlayerWidgetDesktop::ShowInSection(const char* section, const std::function<QWidget*()>& make)
{
    const QString name = QString::fromLatin1(section);
    if (name == mCurrentSection && mInnerStack->count() > 0) {
        return;
    }
    mCurrentSection = name;
    mSideBar->SetCurrentSection(name);
    ShowBlackout(false);
    QWidget* opened = make();
    if (auto* screen = qobject_cast<BaseWidgetDesktop*>(opened)) {
        screen->SetBlackoutHandler([this](bool shown) { ShowBlackout(shown); });
    }
    mInnerStack->addWidget(opened);
    mInnerStack->setCurrentWidget(opened);
    // One section at a time: the one left is not kept. It may be inside one of its
    // own slots, so it goes on the next pass of the event loop.
    while (mInnerStack->count() > 1) {
        QWidget* left = mInnerStack->widget(0);
        mInnerStack->removeWidget(left);
        left->deleteLater();
    }
}

void PlayerWidgetDesktop::ShowBlackout(bool shown)
{
    mSideBar->SetBlackoutShown(shown);
}

void PlayerWidgetDesktop::HideBlackout()
{
    ShowBlackout(false);
}

// --- Preloader ---

void PlayerWidgetDesktop::ShowPreloader()
{
    if (mPreloader != nullptr) {
        return;
    }
    // The frame's picture behind the indicator rather than a live frame: an
    // opaque cover is what swallows every click and key on the way.
    const QImage backdrop = grab().toImage();
    mPreloader = new BaseWidgetDesktop(this);
    mPreloader->setObjectName(QStringLiteral("preloader"));
    mPreloader->engine()->addImageProvider(QStringLiteral("backdrop"), new BackdropImageProvider(backdrop));
    mPreloader->SetSource(
        QUrl(QStringLiteral("qrc:/ui_kit/screens/desktop/player/full_screen_throbber_widget.qml")));
    if (!backdrop.isNull()) {
        mPreloader->SetPropertyOfRoot("backdropSource", QUrl(QStringLiteral("image://backdrop/frame")));
    }
    mPreloader->setGeometry(rect());
    mPreloader->raise();
    mPreloader->show();
    mPreloader->setFocus(Qt::OtherFocusReason);
}

void PlayerWidgetDesktop::HidePreloader()
{
    if (mPreloader == nullptr) {
        return;
    }
    mPreloader->hide();
    mPreloader->deleteLater();
    mPreloader = nullptr;
}

void PlayerWidgetDesktop::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    LayOut();
}

void PlayerWidgetDesktop::LayOut()
{
    const UiKit& kit = UiKit::GetInstance();
    const int share = static_cast<int>(std::lround(width() * kit.SideBarScreenWidthPercent()));
    mSideBar->setFixedWidth(std::max(kit.SideBarMinimumWidth(), share));
    if (mPreloader != nullptr) {
        mPreloader->setGeometry(rect());
    }
}

// --- Sign-out ---

void PlayerWidgetDesktop::AskToSignOut()
{
    QPointer<PlayerWidgetDesktop> self(this);
    MainWindowDesktop::PushWidget(new SkippableDialogWidgetDesktop(
        QStringLiteral("Выход из аккаунта"), QStringLiteral("Вы уверены, что хотите выйти?"), [self]() {
            if (self) {
                self->SignOut();
            }
        }));
}

void PlayerWidgetDesktop::SignOut()
{
    const auto environment = mEnvironment.lock();
    if (mSigningOut) {
        return;
    }
    if (!environment) {
        // The frame learns its environment on the next pass of the event loop; a
        // sign-out asked before that still signs out the current one.
        mSigningOut = true;
        QPointer<PlayerWidgetDesktop> self(this);
        UserEnvironment::GetSignedInEnvironment([self](std::shared_ptr<UserEnvironment> current) {
            if (!self) {
                return;
            }
            // The frame's own request for its environment came first and has
            // attached it by now, unless there was none.
            self->mSigningOut = false;
            if (self->mEnvironment.expired() && current) {
                self->AttachTo(current);
            }
            if (self->mEnvironment.expired()) {
                MainWindowDesktop::PopAllWidgetsAndShowIntro();
                return;
            }
            self->SignOut();
        });
        return;
    }
    mSigningOut = true;
    ShowPreloader();
    QPointer<PlayerWidgetDesktop> self(this);
    const std::weak_ptr<UserEnvironment> weak = environment;
    environment->SignOut(
        [self]() {
            if (self) {
                MainWindowDesktop::PopAllWidgetsAndShowIntro();
            }
        },
        [self, weak](std::shared_ptr<Core::DataTypes::NetworkError>) {
            // The owner asked to leave: a server that cannot be reached must not
            // keep this computer signed in and playing. The token stays valid on
            // the server until it ends it itself.
            if (const auto kept = weak.lock()) {
                kept->ClearStoredEnvironmentWithoutSigningOut();
            }
            if (self) {
                MainWindowDesktop::PopAllWidgetsAndShowIntro();
            }
        });
}

// --- Account errors ---

QString PlayerWidgetDesktop::ContactUsText() const
{
    std::string name;
    std::string email;
    std::string phone;
    if (const auto environment = mEnvironment.lock()) {
        environment->GetServerInfo(name, email, phone);
    }
    const QString phoneText = QString::fromStdString(phone).trimmed();
    const QString emailText = QString::fromStdString(email).trimmed();
    QString contacts;
    if (!phoneText.isEmpty() && !emailText.isEmpty()) {
        contacts = QStringLiteral(": по телефону %1 или по электронной почте %2").arg(phoneText, emailText);
    } else if (!phoneText.isEmpty()) {
        contacts = QStringLiteral(" по телефону %1").arg(phoneText);
    } else if (!emailText.isEmpty()) {
        contacts = QStringLiteral(" по электронной почте %1").arg(emailText);
    }
    return QStringLiteral("Музыка на этом компьютере остановлена. Чтобы узнать причину и восстановить "
                          "доступ, свяжитесь со службой поддержки") +
           contacts + QLatin1Char('.');
}

void PlayerWidgetDesktop::OnWrongTokenError()
{
    PushAccountError(QStringLiteral("Ошибка авторизации"),
                     QStringLiteral("Выполнен вход на другом устройстве"), false);
}

void PlayerWidgetDesktop::OnAccountIsBlockedError()
{
    PushAccountError(QStringLiteral("Ваш аккаунт заблокирован"), ContactUsText(), true);
}

void PlayerWidgetDesktop::PushAccountError(const QString& header, const QString& text, bool contacts)
{
    // The environment tells once per refused sign-in; a second refusal (another
    // request, or the other kind) while the screen is up adds nothing to it.
    if (mUnauthorizedScreen) {
        return;
    }
    HidePreloader();
    auto* screen = new UnauthErrorWidgetDesktop(header, text);
    if (contacts) {
        std::string name;
        std::string email;
        std::string phone;
        if (const auto environment = mEnvironment.lock()) {
            environment->GetServerInfo(name, email, phone);
        }
        screen->ShowSupportContacts(QString::fromStdString(phone).trimmed(),
                                    QString::fromStdString(email).trimmed());
    }
    mUnauthorizedScreen = screen;
    MainWindowDesktop::PushWidget(screen);
}

void PlayerWidgetDesktop::OnObjectExportedError()
{
    // The point of sale is no longer this account's: its schedule must not go on
    // playing here. Every later check meets the same answer; one dialog is enough.
    if (const auto environment = mEnvironment.lock()) {
        environment->StopAndClearPlayer();
    }
    FollowPlayer();
    if (mObjectExportedDialog || mUnauthorizedScreen) {
        return;
    }
    auto* dialog = new NonskippableDialogWidgetDesktop(
        QStringLiteral("Точка передана в другой аккаунт"),
        QStringLiteral("Эта точка продаж больше не относится к вашему аккаунту, поэтому воспроизведение "
                       "остановлено. Выберите другую точку в разделе «Объекты» или обратитесь в службу "
                       "поддержки."));
    mObjectExportedDialog = dialog;
    MainWindowDesktop::PushWidget(dialog);
}

} // namespace UI::Desktop
