#pragma once

#include <QQuickWidget>
#include <QUrl>
#include <QVariant>

#include <functional>

namespace UI::Desktop {

// The base of every screen: a Qt Quick view of one QML document of the resources,
// bound to the theme ("UiKit") before it loads. The screen class owns behaviour and
// talks to the user environment; the document owns the look. Screens reach the
// document's items by objectName and connect their QML signals to their own slots.
class BaseWidgetDesktop : public QQuickWidget
{
    Q_OBJECT

public:
    using BlackoutHandler = std::function<void(bool)>;

    explicit BaseWidgetDesktop(QWidget* parent = nullptr);
    ~BaseWidgetDesktop() override;

    void SetSource(const QUrl& url);

    QObject* FindQmlChild(const QString& objectName) const;
    bool SetPropertyOfChild(const QString& objectName, const char* property, const QVariant& value);
    bool SetPropertyOfRoot(const char* property, const QVariant& value);
    QVariant GetPropertyOfChild(const QString& objectName, const char* property) const;

    QVariant CallQmlFunction(const char* name);
    QVariant CallQmlFunction(const char* name, const QVariant& argument);
    QVariant CallQmlFunction(const char* name, const QVariant& first, const QVariant& second);

    // `signal` and `slot` are signatures such as "clicked()" or "itemClicked(int)".
    bool ConnectQmlRoot(const char* signal, const QObject* receiver, const char* slot);
    bool ConnectQmlChild(const QString& objectName, const char* signal, const QObject* receiver,
                         const char* slot);

    // Through this a screen asks the player frame to dim everything behind a pop-up.
    void SetBlackoutHandler(BlackoutHandler handler);

protected:
    void ShowBlackout(bool shown);
    void showEvent(QShowEvent* event) override;

private:
    QVariant Invoke(const char* name, const QVariantList& arguments);
    static bool Connect(QObject* sender, const char* signal, const QObject* receiver, const char* slot);

    BlackoutHandler mBlackoutHandler;
};

} // namespace UI::Desktop
