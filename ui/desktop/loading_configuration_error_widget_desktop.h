#pragma once

#include "ui/desktop/base_widget_desktop.h"

namespace UI::Desktop {

// What the now-playing section shows when there is nothing to play at all: no
// schedule is stored yet and the server could not give one. It says what to check,
// shows the error, and offers "Повторить"; the caller runs the retry and says when
// it is under way.
class LoadingConfigurationErrorWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    explicit LoadingConfigurationErrorWidgetDesktop(QWidget* parent = nullptr);

    // The failure in its own words, under the explanation; empty hides it.
    void SetErrorText(const QString& text);
    // While a retry runs the button shows that it is busy and neither a click nor
    // Enter asks again.
    void SetBusy(bool busy);

signals:
    // "Повторить" was clicked or Enter pressed while not busy.
    void RetryRequested();

private slots:
    void OnRetry();

private:
    bool mBusy = false;
};

} // namespace UI::Desktop
