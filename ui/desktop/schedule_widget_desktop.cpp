#include "ui/desktop/schedule_widget_desktop.h"

#include "ui/list_models/schedule_periods_list_model.h"

namespace UI::Desktop {

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/player/now_playing/schedule_widget.qml";

} // namespace

ScheduleWidgetDesktop::ScheduleWidgetDesktop(
    const std::vector<Core::DataTypes::Playback::UserFacingSchedule>& schedules, QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mPeriods(new ListModels::SchedulePeriodsListModel(this))
{
    mPeriods->SetSchedules(schedules);
    SetSource(QUrl(QString::fromLatin1(Document)));
    SetPropertyOfRoot("periodsModel", QVariant::fromValue<QObject*>(mPeriods));
    ConnectQmlChild(QStringLiteral("backButton"), "clicked()", this, "OnBack()");
}

ScheduleWidgetDesktop::~ScheduleWidgetDesktop()
{
    // The document goes before the model it shows.
    setSource(QUrl());
}

void ScheduleWidgetDesktop::OnBack()
{
    emit Close();
}

} // namespace UI::Desktop
