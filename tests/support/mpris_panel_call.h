#pragma once

#include <QString>
#include <QStringList>

namespace Tests {

// What a desktop panel does to the player's MPRIS service: a gdbus call on the
// session bus the test was given, run while the event loop turns, since the
// service answers from the test's own process.
class MprisPanelCall
{
public:
    MprisPanelCall() = delete;

    // gdbus's path; empty when it is not installed.
    static QString Gdbus();
    // The method (interface + "." + name) called on the player's object, with its
    // arguments as gdbus takes them; gdbus's answer, trimmed, or why there is none.
    static QString Call(const QString& method, const QStringList& arguments = {});
    // org.freedesktop.DBus.Properties.Get of one property.
    static QString Get(const QString& interface, const QString& property);
};

} // namespace Tests
