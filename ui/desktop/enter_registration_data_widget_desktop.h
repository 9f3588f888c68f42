#pragma once

#include "ui/desktop/base_widget_desktop.h"
#include "ui/desktop/pending_request.h"
#include "ui/desktop/server_choice.h"

namespace UI::Desktop {

// Sign-up, first step: the server, the phone number and the city. Going on asks
// the server to send a confirmation code to the phone.
class EnterRegistrationDataWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    explicit EnterRegistrationDataWidgetDesktop(QWidget* parent = nullptr);
    ~EnterRegistrationDataWidgetDesktop() override;

private slots:
    void OnNext();
    void OnBack();
    void OnServerChanged();
    void OnCityEdited(const QString& text);

private:
    bool ChosenServer(Core::DataTypes::Auth::Server* server);
    void ShowError(const QString& text);

    ServerChoice mServers;
    PendingRequest mRequest;
};

} // namespace UI::Desktop
