#include "ui/desktop/dialog_widget_desktop.h"

#include "ui/desktop/backdrop_image_provider.h"
#include "ui/desktop/main_window_desktop.h"

#include <QPainter>
#include <QPixmap>
#include <QQmlEngine>
#include <QScreen>
#include <QStackedWidget>

namespace UI::Desktop {

namespace {

// The covered screen as it looks. A native window inside it (libvlc's video) is
// drawn by someone else, and the widgets' own rendering leaves it black: that part
// is taken from the display, where there is one.
QImage Backdrop(QWidget* covered)
{
    QPixmap picture = covered->grab();
    for (QWidget* child : covered->findChildren<QWidget*>()) {
        if (child->internalWinId() == 0 || !child->isVisible() || child->screen() == nullptr) {
            continue;
        }
        const QPixmap shown = child->screen()->grabWindow(child->internalWinId());
        if (!shown.isNull()) {
            QPainter painter(&picture);
            painter.drawPixmap(QRect(child->mapTo(covered, QPoint(0, 0)), child->size()), shown);
        }
    }
    return picture.toImage();
}

} // namespace

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
            backdrop = Backdrop(covered);
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
