#pragma once

#include <QImage>
#include <QQuickImageProvider>

namespace UI::Desktop {

// Hands a dialog's document the picture of the screen it covers ("image://backdrop/"),
// so the dialog can show that screen dimmed behind its card.
class BackdropImageProvider : public QQuickImageProvider
{
public:
    explicit BackdropImageProvider(QImage image);

    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

private:
    QImage mImage;
};

} // namespace UI::Desktop
