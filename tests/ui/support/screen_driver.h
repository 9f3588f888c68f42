#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

class QObject;
class QWidget;

namespace UI::Desktop {
class BaseWidgetDesktop;
class MainWindowDesktop;
} // namespace UI::Desktop

namespace Tests {

// Drives the application's screens as a person would, through the QML items of the
// screens on show: the top of the window's stack and, inside the player frame, the
// side bar and the open section. Items are found by objectName.
class ScreenDriver
{
public:
    explicit ScreenDriver(UI::Desktop::MainWindowDesktop* window);

    // The top of the window's screen stack.
    QWidget* CurrentScreen() const;
    int StackSize() const;
    // The QML screens on show, the top screen's first.
    QList<UI::Desktop::BaseWidgetDesktop*> VisibleQmlScreens() const;
    // The QML document the top-most visible QML screen shows, such as
    // "qrc:/ui_kit/screens/desktop/auth/sign_in_widget.qml".
    QString CurrentDocument() const;
    bool DocumentShown(const QString& documentEnding) const;

    QObject* Item(const QString& objectName) const;
    QVariant Property(const QString& objectName, const char* property) const;
    // False when the item is missing, hidden or disabled, as it would be to a person.
    bool Click(const QString& objectName) const;
    bool SetText(const QString& objectName, const QString& text) const;
    // A key press to the top-most visible QML screen, which hands it to its focused item.
    void PressKey(int key) const;
    // The visible controls a person can act on (buttons, fields, switches, choosers,
    // links) that lack an objectName or a Russian accessible name, described for a
    // failure message; empty when every control is named.
    QStringList UnnamedControls() const;

private:
    UI::Desktop::MainWindowDesktop* mWindow;
};

} // namespace Tests
