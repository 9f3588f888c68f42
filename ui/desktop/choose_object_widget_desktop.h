#pragma once

#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "ui/desktop/base_widget_desktop.h"
#include "ui/desktop/pending_request.h"
#include "ui/list_models/playback_objects_list_model.h"

#include <memory>
#include <string>
#include <vector>

namespace UI::Desktop {

// After the server has accepted the login and password: the account's points of
// sale. Choosing one signs in for it, stores the sign-in and opens the player.
class ChooseObjectWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    ChooseObjectWidgetDesktop(
        const Core::DataTypes::Auth::Server& server, const std::string& login, const std::string& password,
        const std::vector<std::shared_ptr<Core::DataTypes::Auth::PlaybackObject>>& objects,
        QWidget* parent = nullptr);
    ~ChooseObjectWidgetDesktop() override;

private slots:
    void OnObjectChosen(int index);
    void OnBack();

private:
    void ShowError(const QString& text);

    Core::DataTypes::Auth::Server mServer;
    std::string mLogin;
    std::string mPassword;
    PlaybackObjectsListModel mObjects;
    PendingRequest mRequest;
};

} // namespace UI::Desktop
