#include "ui/desktop/dialog_widget_desktop.h"

#include "ui/desktop/backdrop_image_provider.h"
#include "ui/desktop/main_window_desktop.h"

#include <QQmlEngine>
#include <QStackedWidget>

namespace UI::Desktop {

DialogWidgetDesktop::DialogWidgetDesktop(const QUrl& document, const QString& header, const QString& text,
                                         std::function<void()> onOk, std::function<void()> onCancel,
                                         QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mOnOk(std::move(onOk))
    , mOnCancel(std::move(onCancel))
{
    QImage backdrop;
    if (MainWindowDesktop::sInstance != nullptr) {
        if (QWidget* covered = MainWindowDesktop::sInstance->Stack()->currentWidget()) {
            backdrop = covered->grab().toImage();
        }
    }
    engine()->addImageProvider(QStringLiteral("backdrop"), new BackdropImageProvider(backdrop));
    SetSource(document);
    SetPropertyOfRoot("header", header);
    SetPropertyOfRoot("text", text);
    if (!backdrop.isNull()) {
        SetPropertyOfRoot("backdropSource", QUrl(QStringLiteral("image://backdrop/screen")));
    }
    ConnectQmlRoot("okClicked()", this, "OnOk()");
    ConnectQmlRoot("cancelClicked()", this, "OnCancel()");
    ConnectQmlChild(QStringLiteral("okButton"), "clicked()", this, "OnOk()");
    ConnectQmlChild(QStringLiteral("cancelButton"), "clicked()", this, "OnCancel()");
}

DialogWidgetDesktop::~DialogWidgetDesktop() = default;

void DialogWidgetDesktop::OnOk()
{
    Close(mOnOk);
}

void DialogWidgetDesktop::OnCancel()
{
    Close(mOnCancel);
}

void DialogWidgetDesktop::Close(const std::function<void()>& callback)
{
    // A double click or Enter on a clicked button must not pop a second screen.
    if (mClosed) {
        return;
    }
    mClosed = true;
    const std::function<void()> then = callback;
    if (MainWindowDesktop::sInstance != nullptr &&
        MainWindowDesktop::sInstance->Stack()->currentWidget() == this) {
        MainWindowDesktop::PopCurrentWidget();
    }
    if (then) {
        then();
    }
}

} // namespace UI::Desktop
