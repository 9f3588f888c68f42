#pragma once

#include "ui/desktop/base_widget_desktop.h"

#include <QDateTime>

class QTimer;

namespace UI::Desktop {

// What the now-playing section shows once today's last period has ended: that the
// music has stopped on purpose and comes back by itself, and when, so that nobody
// restarts the program or calls support in the evening.
class LastPeriodFinishedWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    explicit LastPeriodFinishedWidgetDesktop(QWidget* parent = nullptr);

    // When the next period starts, in local time; invalid (the default) when the
    // schedule has no later period. It is said relative to today ("завтра в 09:00",
    // "в среду в 09:00") and said again after midnight.
    void SetNextStart(const QDateTime& start);

private slots:
    void ShowNextStart();

private:
    QDateTime mNextStart;
    QTimer* mMidnight;
};

} // namespace UI::Desktop
