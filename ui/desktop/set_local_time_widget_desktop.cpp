#include "ui/desktop/set_local_time_widget_desktop.h"

#include "core/utilities/clock.h"

#include <QTimer>

namespace UI::Desktop {

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/player/now_playing/set_local_time_widget.qml";
// The clocks show minutes; a second's tick shows each new minute within a second.
constexpr int TickMs = 1000;

} // namespace

SetLocalTimeWidgetDesktop::SetLocalTimeWidgetDesktop(QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mTicker(new QTimer(this))
{
    setObjectName(QStringLiteral("setLocalTimeWidget"));
    SetSource(QUrl(QString::fromLatin1(Document)));
    // The button's click and Enter anywhere on the page both arrive as this signal.
    ConnectQmlRoot("checkAgainClicked()", this, "OnCheckAgain()");
    connect(mTicker, &QTimer::timeout, this, &SetLocalTimeWidgetDesktop::Tick);
    mTicker->start(TickMs);
    Tick();
}

void SetLocalTimeWidgetDesktop::SetServerTime(const QDateTime& serverNow)
{
    if (serverNow.isValid()) {
        mServerAheadMs = serverNow.toMSecsSinceEpoch() - Core::Utilities::Clock::CurrentMSecsSinceEpoch();
    } else {
        mServerAheadMs.reset();
    }
    Tick();
}

void SetLocalTimeWidgetDesktop::SetBusy(bool busy)
{
    mBusy = busy;
    SetPropertyOfRoot("busy", busy);
}

void SetLocalTimeWidgetDesktop::Tick()
{
    const QString time = QStringLiteral("HH:mm");
    const QString date = QStringLiteral("dd.MM.yyyy");
    const QDateTime local = Core::Utilities::Clock::CurrentLocalDateTime();
    SetPropertyOfRoot("localTime", local.toString(time));
    if (!mServerAheadMs) {
        SetPropertyOfRoot("serverTime", QString());
        SetPropertyOfRoot("serverDate", QString());
        SetPropertyOfRoot("localDate", QString());
        return;
    }
    // The server's time in this computer's time zone: the same instant, so the two
    // differ only by how wrong the clock is.
    const QDateTime server = local.addMSecs(*mServerAheadMs);
    SetPropertyOfRoot("serverTime", server.toString(time));
    // A clock a day off reads like a right one without its date.
    const bool otherDay = server.date() != local.date();
    SetPropertyOfRoot("serverDate", otherDay ? server.toString(date) : QString());
    SetPropertyOfRoot("localDate", otherDay ? local.toString(date) : QString());
}

void SetLocalTimeWidgetDesktop::OnCheckAgain()
{
    if (!mBusy) {
        emit CheckAgainRequested();
    }
}

} // namespace UI::Desktop
