#pragma once

#include "core/data_types/playlists/playlist_content_type.h"
#include "core/networking/object_exported_error_listener.h"
#include "core/networking/unauthorized_error_listener.h"
#include "core/playback_configuration_updated_observer.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>

class QStackedWidget;

namespace Core {
class UserEnvironment;
}

namespace UI::Desktop {

class ContentOutputDesktop;

class BaseWidgetDesktop;
class SideBarWidgetDesktop;

// The frame of the signed-in application: the side bar on the left and, on the
// right, one section at a time. While it exists it is the one that hears the
// account's errors, and it starts the schedule playing as soon as the shop is
// signed in, whether by a person or by a restart.
class PlayerWidgetDesktop : public QWidget,
                            public Core::UnauthorizedErrorListener,
                            public Core::ObjectExportedErrorListener,
                            public Core::PlaybackConfigurationUpdatedObserver
{
    Q_OBJECT

public:
    explicit PlayerWidgetDesktop(QWidget* parent = nullptr);
    ~PlayerWidgetDesktop() override;

    SideBarWidgetDesktop* SideBar() const;
    QStackedWidget* InnerStack() const;

    // The activity indicator over the whole frame; it takes every click until hidden.
    void ShowPreloader();
    void HidePreloader();

    // How to reach the signed-in server's support, in one or two sentences; for the
    // screens that send the owner there.
    QString ContactUsText() const;

    // UnauthorizedErrorListener, ObjectExportedErrorListener
    void OnWrongTokenError() override;
    void OnAccountIsBlockedError() override;
    void OnObjectExportedError() override;

    // PlaybackConfigurationUpdatedObserver
    void PlaybackConfigurationUpdated(bool updated, const std::string& message) override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void OpenPlayerSection();
    void OpenMusicSection();
    void OpenVideoSection();
    void OpenPhotoSection();
    void OpenLicenseSection();
    void OpenObjectsSection();
    void OpenSettingsSection();
    void AskToSignOut();
    void HideBlackout();

private:
    void AttachTo(const std::shared_ptr<Core::UserEnvironment>& environment);
    void DetachFromEnvironment();
    void FollowPlayer();
    void OpenContentSection(const char* section, Core::DataTypes::Playlists::PlaylistContentType type);
    // `make` creates the section's screen; a list opened from now playing stays under
    // the "Плеер" section and closes back to it.
    void ShowInSection(const char* section, const std::function<QWidget*()>& make);
    void OpenNowPlayingList(BaseWidgetDesktop* list);
    void OpenScheduleWidget();
    void ShowBlackout(bool shown);
    void SignOut();
    void PushAccountError(const QString& header, const QString& text, bool contacts);
    void LayOut();

    SideBarWidgetDesktop* mSideBar = nullptr;
    QStackedWidget* mInnerStack = nullptr;
    BaseWidgetDesktop* mPreloader = nullptr;
    QString mCurrentSection;
    std::weak_ptr<Core::UserEnvironment> mEnvironment;
    // Video and photos, kept by the frame so that they go on whatever section is open.
    ContentOutputDesktop* mOutput = nullptr;
    bool mPlayerStartAsked = false;
    // Each account error is shown once, however many requests meet it.
    QPointer<QWidget> mUnauthorizedScreen;
    QPointer<QWidget> mObjectExportedDialog;
    bool mSigningOut = false;
};

} // namespace UI::Desktop
