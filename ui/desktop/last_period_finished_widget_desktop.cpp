#include "ui/desktop/last_period_finished_widget_desktop.h"

#include "core/utilities/clock.h"

#include <QTimer>

namespace UI::Desktop {

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/player/now_playing/last_period_finished_widget.qml";

// The words for `start` seen on `today`: "сегодня в 09:00", "завтра в 09:00", the
// weekday within a week ("во вторник в 09:00"), the date further on.
QString WhenText(const QDateTime& start, const QDate& today)
{
    // Accusative with its preposition, Monday first as QDate counts.
    static const char* const weekdays[] = {"в понедельник", "во вторник", "в среду",      "в четверг",
                                           "в пятницу",     "в субботу",  "в воскресенье"};
    const QString time = start.toString(QStringLiteral("HH:mm"));
    const qint64 days = today.daysTo(start.date());
    if (days == 0) {
        return QStringLiteral("сегодня в ") + time;
    }
    if (days == 1) {
        return QStringLiteral("завтра в ") + time;
    }
    if (days > 1 && days < 7) {
        return QString::fromUtf8(weekdays[start.date().dayOfWeek() - 1]) + QStringLiteral(" в ") + time;
    }
    return start.toString(QStringLiteral("dd.MM.yyyy")) + QStringLiteral(" в ") + time;
}

} // namespace

LastPeriodFinishedWidgetDesktop::LastPeriodFinishedWidgetDesktop(QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mMidnight(new QTimer(this))
{
    setObjectName(QStringLiteral("lastPeriodFinishedWidget"));
    SetSource(QUrl(QString::fromLatin1(Document)));
    mMidnight->setSingleShot(true);
    // A coarse timer may be off by a twentieth of its interval: over an hour here.
    mMidnight->setTimerType(Qt::PreciseTimer);
    connect(mMidnight, &QTimer::timeout, this, &LastPeriodFinishedWidgetDesktop::ShowNextStart);
}

void LastPeriodFinishedWidgetDesktop::SetNextStart(const QDateTime& start)
{
    mNextStart = start;
    ShowNextStart();
}

void LastPeriodFinishedWidgetDesktop::ShowNextStart()
{
    const QDateTime now = Core::Utilities::Clock::CurrentLocalDateTime();
    SetPropertyOfRoot("nextStart", mNextStart.isValid() ? WhenText(mNextStart, now.date()) : QString());
    if (!mNextStart.isValid()) {
        mMidnight->stop();
        return;
    }
    // "завтра" turns into "сегодня" at midnight; a little after it, so that the new
    // day has surely begun.
    constexpr qint64 afterMidnightMs = 100;
    const qint64 untilMidnight = now.msecsTo(QDateTime(now.date().addDays(1), QTime(0, 0))) + afterMidnightMs;
    mMidnight->start(static_cast<int>(untilMidnight));
}

} // namespace UI::Desktop
