#pragma once

#include "core/data_types/auth/server.h"
#include "ui/desktop/base_widget_desktop.h"
#include "ui/desktop/pending_request.h"
#include "ui/list_models/music_styles_list_model.h"

#include <memory>

namespace Core {
class UserEnvironment;
}

namespace UI::Desktop {

// Sign-up, last step: the music styles the owner likes, sent to the account, or
// skipped. "Назад" returns to the business type, which may be chosen again.
class ChooseMusicStyleWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    ChooseMusicStyleWidgetDesktop(const Core::DataTypes::Auth::Server& server,
                                  std::weak_ptr<Core::UserEnvironment> environment,
                                  QWidget* parent = nullptr);
    ~ChooseMusicStyleWidgetDesktop() override;

private slots:
    void OnNext();
    void OnSkip();
    void OnBack();
    void LoadStyles();

private:
    void ShowError(const QString& text);

    Core::DataTypes::Auth::Server mServer;
    std::weak_ptr<Core::UserEnvironment> mEnvironment;
    MusicStylesListModel mStyles;
    PendingRequest mLoad;
    PendingRequest mSave;
};

} // namespace UI::Desktop
