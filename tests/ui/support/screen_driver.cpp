#include "tests/ui/support/screen_driver.h"

#include "ui/desktop/base_widget_desktop.h"
#include "ui/desktop/main_window_desktop.h"

#include <QAccessible>
#include <QQuickItem>
#include <QRegularExpression>
#include <QStackedWidget>
#include <QTest>

namespace Tests {

ScreenDriver::ScreenDriver(UI::Desktop::MainWindowDesktop* window)
    : mWindow(window)
{
}

QWidget* ScreenDriver::CurrentScreen() const
{
    return mWindow != nullptr ? mWindow->Stack()->currentWidget() : nullptr;
}

int ScreenDriver::StackSize() const
{
    return mWindow != nullptr ? mWindow->Stack()->count() : 0;
}

QList<UI::Desktop::BaseWidgetDesktop*> ScreenDriver::VisibleQmlScreens() const
{
    QList<UI::Desktop::BaseWidgetDesktop*> screens;
    QWidget* top = CurrentScreen();
    if (top == nullptr) {
        return screens;
    }
    if (auto* screen = qobject_cast<UI::Desktop::BaseWidgetDesktop*>(top)) {
        screens.append(screen);
    }
    for (auto* screen : top->findChildren<UI::Desktop::BaseWidgetDesktop*>()) {
        if (screen->isVisibleTo(top)) {
            screens.append(screen);
        }
    }
    return screens;
}

QString ScreenDriver::CurrentDocument() const
{
    const auto screens = VisibleQmlScreens();
    // Inside the player frame the open section is the last one found; elsewhere the
    // top screen is the only one.
    return screens.isEmpty() ? QString() : screens.last()->source().toString();
}

bool ScreenDriver::DocumentShown(const QString& documentEnding) const
{
    for (auto* screen : VisibleQmlScreens()) {
        if (screen->source().toString().endsWith(documentEnding)) {
            return true;
        }
    }
    return false;
}

QObject* ScreenDriver::Item(const QString& objectName) const
{
    for (auto* screen : VisibleQmlScreens()) {
        if (QObject* item = screen->FindQmlChild(objectName)) {
            return item;
        }
    }
    // The rows of a list view belong to its model, not to the view: they are only
    // found through the visual tree.
    for (auto* screen : VisibleQmlScreens()) {
        QList<QQuickItem*> items;
        if (screen->rootObject() != nullptr) {
            items.append(screen->rootObject());
        }
        while (!items.isEmpty()) {
            QQuickItem* item = items.takeFirst();
            if (item->objectName() == objectName) {
                return item;
            }
            items.append(item->childItems());
        }
    }
    return nullptr;
}

QVariant ScreenDriver::Property(const QString& objectName, const char* property) const
{
    QObject* item = Item(objectName);
    return item != nullptr ? item->property(property) : QVariant();
}

bool ScreenDriver::Click(const QString& objectName) const
{
    auto* item = qobject_cast<QQuickItem*>(Item(objectName));
    if (item == nullptr || !item->isVisible() || !item->isEnabled()) {
        return false;
    }
    return QMetaObject::invokeMethod(item, "clicked");
}

bool ScreenDriver::SetText(const QString& objectName, const QString& text) const
{
    QObject* item = Item(objectName);
    return item != nullptr && item->setProperty("text", text);
}

void ScreenDriver::PressKey(int key) const
{
    const auto screens = VisibleQmlScreens();
    if (!screens.isEmpty()) {
        QTest::keyClick(screens.last(), static_cast<Qt::Key>(key));
    }
}

QStringList ScreenDriver::UnnamedControls() const
{
    static const QRegularExpression cyrillic(QStringLiteral("\\p{Cyrillic}"));
    const QList<QAccessible::Role> interactive = {
        QAccessible::Button,   QAccessible::CheckBox, QAccessible::RadioButton, QAccessible::EditableText,
        QAccessible::ComboBox, QAccessible::Slider,   QAccessible::SpinBox,     QAccessible::Link,
    };
    QStringList unnamed;
    for (auto* screen : VisibleQmlScreens()) {
        QQuickItem* root = screen->rootObject();
        if (root == nullptr) {
            continue;
        }
        QList<QQuickItem*> items = {root};
        while (!items.isEmpty()) {
            QQuickItem* item = items.takeFirst();
            if (!item->isVisible()) {
                continue;
            }
            items.append(item->childItems());
            QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(item);
            if (accessible == nullptr || !interactive.contains(accessible->role())) {
                continue;
            }
            const QString name = accessible->text(QAccessible::Name);
            if (item->objectName().isEmpty() || !name.contains(cyrillic)) {
                unnamed.append(QStringLiteral("%1 '%2' (%3) in %4")
                                   .arg(QString::fromLatin1(item->metaObject()->className()),
                                        item->objectName(), name, screen->source().toString()));
            }
        }
    }
    return unnamed;
}

} // namespace Tests
