#include "ui/desktop/base_widget_desktop.h"

#include "ui/ui_kit/ui_kit.h"
#include "ui/ui_kit/ui_resources.h"

#include <QMetaMethod>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QtDebug>

namespace UI::Desktop {

BaseWidgetDesktop::BaseWidgetDesktop(QWidget* parent)
    : QQuickWidget(parent)
{
    UiResources::Initialize();
    setResizeMode(QQuickWidget::SizeRootObjectToView);
    setFocusPolicy(Qt::StrongFocus);
    // Until the document has painted, the view shows the theme's background rather
    // than a white flash on the dark palette.
    setClearColor(UiKit::GetInstance().ScreenBackgroundColor());
    // QML's warnings go through the program's own log handler, stamped like every
    // other console line, and only once.
    engine()->setOutputWarningsToStandardError(false);
    connect(engine(), &QQmlEngine::warnings, this, [](const QList<QQmlError>& warnings) {
        for (const QQmlError& warning : warnings) {
            qWarning().noquote() << "QML:" << warning.toString();
        }
    });
}

BaseWidgetDesktop::~BaseWidgetDesktop()
{
    // With the software renderer, QQuickWidget frees the textures of its images only
    // at the end of a frame: destroyed as it is, a screen would leave every picture it
    // drew behind. So the document goes first, and one empty frame lets the scene
    // graph drop what it held while it still can.
    setSource(QUrl());
    grabFramebuffer();
}

void BaseWidgetDesktop::SetSource(const QUrl& url)
{
    rootContext()->setContextProperty(QStringLiteral("UiKit"), &UiKit::GetInstance());
    setSource(url);
    if (status() == QQuickWidget::Error) {
        for (const QQmlError& error : errors()) {
            qWarning().noquote() << "QML:" << error.toString();
        }
    }
}

QObject* BaseWidgetDesktop::FindQmlChild(const QString& objectName) const
{
    QQuickItem* root = rootObject();
    if (root == nullptr) {
        return nullptr;
    }
    if (root->objectName() == objectName) {
        return root;
    }
    return root->findChild<QObject*>(objectName);
}

bool BaseWidgetDesktop::SetPropertyOfChild(const QString& objectName, const char* property,
                                           const QVariant& value)
{
    QObject* child = FindQmlChild(objectName);
    if (child == nullptr) {
        qWarning().noquote() << "QML item not found:" << objectName << "in" << source().toString();
        return false;
    }
    return child->setProperty(property, value);
}

bool BaseWidgetDesktop::SetPropertyOfRoot(const char* property, const QVariant& value)
{
    QQuickItem* root = rootObject();
    return root != nullptr && root->setProperty(property, value);
}

QVariant BaseWidgetDesktop::GetPropertyOfChild(const QString& objectName, const char* property) const
{
    QObject* child = FindQmlChild(objectName);
    return child != nullptr ? child->property(property) : QVariant();
}

QVariant BaseWidgetDesktop::CallQmlFunction(const char* name)
{
    return Invoke(name, {});
}

QVariant BaseWidgetDesktop::CallQmlFunction(const char* name, const QVariant& argument)
{
    return Invoke(name, {argument});
}

QVariant BaseWidgetDesktop::CallQmlFunction(const char* name, const QVariant& first, const QVariant& second)
{
    return Invoke(name, {first, second});
}

QVariant BaseWidgetDesktop::Invoke(const char* name, const QVariantList& arguments)
{
    QQuickItem* root = rootObject();
    if (root == nullptr) {
        return {};
    }
    // QML functions take and return QVariant whatever their JavaScript types.
    QVariant result;
    bool invoked = false;
    switch (arguments.size()) {
    case 0:
        invoked = QMetaObject::invokeMethod(root, name, Q_RETURN_ARG(QVariant, result));
        break;
    case 1:
        invoked = QMetaObject::invokeMethod(root, name, Q_RETURN_ARG(QVariant, result),
                                            Q_ARG(QVariant, arguments.at(0)));
        break;
    default:
        invoked =
            QMetaObject::invokeMethod(root, name, Q_RETURN_ARG(QVariant, result),
                                      Q_ARG(QVariant, arguments.at(0)), Q_ARG(QVariant, arguments.at(1)));
        break;
    }
    if (!invoked) {
        qWarning().noquote() << "QML function not found:" << name << "in" << source().toString();
    }
    return result;
}

bool BaseWidgetDesktop::ConnectQmlRoot(const char* signal, const QObject* receiver, const char* slot)
{
    return Connect(rootObject(), signal, receiver, slot);
}

bool BaseWidgetDesktop::ConnectQmlChild(const QString& objectName, const char* signal,
                                        const QObject* receiver, const char* slot)
{
    QObject* child = FindQmlChild(objectName);
    if (child == nullptr) {
        qWarning().noquote() << "QML item not found:" << objectName << "in" << source().toString();
        return false;
    }
    return Connect(child, signal, receiver, slot);
}

bool BaseWidgetDesktop::Connect(QObject* sender, const char* signal, const QObject* receiver,
                                const char* slot)
{
    if (sender == nullptr || receiver == nullptr) {
        return false;
    }
    const QByteArray signalSignature = QMetaObject::normalizedSignature(signal);
    const QByteArray slotSignature = QMetaObject::normalizedSignature(slot);
    const int signalIndex = sender->metaObject()->indexOfSignal(signalSignature.constData());
    const int slotIndex = receiver->metaObject()->indexOfMethod(slotSignature.constData());
    if (signalIndex < 0 || slotIndex < 0) {
        qWarning().noquote() << "Cannot connect" << sender->objectName() << signalSignature << "to"
                             << receiver->metaObject()->className() << slotSignature;
        return false;
    }
    return static_cast<bool>(QObject::connect(sender, sender->metaObject()->method(signalIndex), receiver,
                                              receiver->metaObject()->method(slotIndex)));
}

void BaseWidgetDesktop::SetBlackoutHandler(BlackoutHandler handler)
{
    mBlackoutHandler = std::move(handler);
}

void BaseWidgetDesktop::ShowBlackout(bool shown)
{
    if (mBlackoutHandler) {
        mBlackoutHandler(shown);
    }
}

void BaseWidgetDesktop::showEvent(QShowEvent* event)
{
    QQuickWidget::showEvent(event);
    // Keyboard users land in the document: Tab moves through its controls and
    // Enter and Escape reach the screen's handlers without a click first.
    setFocus(Qt::OtherFocusReason);
}

} // namespace UI::Desktop
