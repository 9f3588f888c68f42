#include "ui/desktop/loading_configuration_error_widget_desktop.h"

namespace UI::Desktop {

namespace {

const char* const Document =
    "qrc:/ui_kit/screens/desktop/player/now_playing/loading_configuration_error_widget.qml";

} // namespace

LoadingConfigurationErrorWidgetDesktop::LoadingConfigurationErrorWidgetDesktop(QWidget* parent)
    : BaseWidgetDesktop(parent)
{
    setObjectName(QStringLiteral("loadingConfigurationErrorWidget"));
    SetSource(QUrl(QString::fromLatin1(Document)));
    // The button's click and Enter anywhere on the page both arrive as this signal.
    ConnectQmlRoot("retryClicked()", this, "OnRetry()");
}

void LoadingConfigurationErrorWidgetDesktop::SetErrorText(const QString& text)
{
    SetPropertyOfRoot("errorText", text);
}

void LoadingConfigurationErrorWidgetDesktop::SetBusy(bool busy)
{
    mBusy = busy;
    SetPropertyOfRoot("busy", busy);
}

void LoadingConfigurationErrorWidgetDesktop::OnRetry()
{
    // The document ignores a busy button too; this also covers a click that was
    // already queued when the retry began.
    if (!mBusy) {
        emit RetryRequested();
    }
}

} // namespace UI::Desktop
