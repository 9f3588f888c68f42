#pragma once

#include "core/data_types/playback/user_facing_schedule.h"
#include "ui/desktop/base_widget_desktop.h"

#include <vector>

namespace UI::ListModels {
class SchedulePeriodsListModel;
}

namespace UI::Desktop {

// The week's schedules as the owner manages them: each period with its time, name,
// volumes and the playlists that play. Opened from the now-playing section; "Назад"
// or Escape asks the player frame to close it.
class ScheduleWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    explicit ScheduleWidgetDesktop(
        const std::vector<Core::DataTypes::Playback::UserFacingSchedule>& schedules,
        QWidget* parent = nullptr);
    ~ScheduleWidgetDesktop() override;

signals:
    void Close();

private slots:
    void OnBack();

private:
    ListModels::SchedulePeriodsListModel* mPeriods;
};

} // namespace UI::Desktop
