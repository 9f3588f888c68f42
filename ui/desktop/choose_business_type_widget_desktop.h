#pragma once

#include "core/data_types/auth/server.h"
#include "ui/desktop/base_widget_desktop.h"
#include "ui/desktop/pending_request.h"
#include "ui/list_models/business_types_list_model.h"

#include <memory>

namespace Core {
class UserEnvironment;
}

namespace UI::Desktop {

// Sign-up, third step, for the account just created: its kind of business. There is
// no "Назад": behind it lies the code that has already created the account.
class ChooseBusinessTypeWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    ChooseBusinessTypeWidgetDesktop(const Core::DataTypes::Auth::Server& server,
                                    std::weak_ptr<Core::UserEnvironment> environment,
                                    QWidget* parent = nullptr);
    ~ChooseBusinessTypeWidgetDesktop() override;

private slots:
    void OnNext();
    void LoadTypes();

private:
    void ShowError(const QString& text);

    Core::DataTypes::Auth::Server mServer;
    std::weak_ptr<Core::UserEnvironment> mEnvironment;
    BusinessTypesListModel mTypes;
    PendingRequest mLoad;
    PendingRequest mSave;
};

} // namespace UI::Desktop
