#pragma once

#include "core/data_types/auth/server.h"
#include "ui/desktop/base_widget_desktop.h"
#include "ui/desktop/pending_request.h"

#include <string>

namespace UI::Desktop {

// Sign-up, second step: the user types the code sent to the phone. The server
// hands the code to the player too, so the comparison happens here; the right code
// creates the account and signs it in.
class ConfirmPhoneNumberWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    ConfirmPhoneNumberWidgetDesktop(const Core::DataTypes::Auth::Server& server, const std::string& phone,
                                    const std::string& city, const std::string& code,
                                    QWidget* parent = nullptr);
    ~ConfirmPhoneNumberWidgetDesktop() override;

private slots:
    void OnNext();
    void OnBack();
    void OnResend();

private:
    void ShowError(const QString& text);

    Core::DataTypes::Auth::Server mServer;
    std::string mPhone;
    std::string mCity;
    std::string mCode;
    PendingRequest mRequest;
    PendingRequest mResend;
};

} // namespace UI::Desktop
