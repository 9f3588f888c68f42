#pragma once

#include "ui/desktop/base_widget_desktop.h"

#include <functional>

namespace UI::Desktop {

// What the two dialogs share: a card with a header and a text over the dimmed
// picture of the screen they were pushed over. A button pops the dialog first and
// then runs its callback, so the callback may push or pop screens of its own.
class DialogWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    ~DialogWidgetDesktop() override;

protected:
    DialogWidgetDesktop(const QUrl& document, const QString& header, const QString& text,
                        std::function<void()> onOk, std::function<void()> onCancel, QWidget* parent);

private slots:
    void OnOk();
    void OnCancel();

private:
    void Close(const std::function<void()>& callback);

    std::function<void()> mOnOk;
    std::function<void()> mOnCancel;
    bool mClosed = false;
};

} // namespace UI::Desktop
