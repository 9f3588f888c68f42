#pragma once

#include "ui/desktop/base_widget_desktop.h"

#include <QDateTime>

#include <cstdint>
#include <optional>

class QTimer;

namespace UI::Desktop {

// What the now-playing section shows while the computer's clock is more than a
// minute off the server's (UserEnvironment::DeviceTimeIsCorrect): both clocks
// ticking side by side, how to set the time right on a Linux desktop, and
// "Проверить снова", after which the caller asks the server again.
class SetLocalTimeWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    explicit SetLocalTimeWidgetDesktop(QWidget* parent = nullptr);

    // What the server's clock reads now (UserEnvironment::ServerDateTimeNow()); the
    // page keeps it running with the local clock. Invalid shows no server time.
    void SetServerTime(const QDateTime& serverNow);
    // While the check runs the button shows that it is busy and neither a click nor
    // Enter asks again.
    void SetBusy(bool busy);

signals:
    // "Проверить снова" was clicked or Enter pressed while not busy.
    void CheckAgainRequested();

private slots:
    void Tick();
    void OnCheckAgain();

private:
    // How far the server's clock is ahead of the local one; empty while unknown.
    std::optional<std::int64_t> mServerAheadMs;
    QTimer* mTicker;
    bool mBusy = false;
};

} // namespace UI::Desktop
