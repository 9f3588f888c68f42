#include "ui/desktop/backdrop_image_provider.h"

namespace UI::Desktop {

BackdropImageProvider::BackdropImageProvider(QImage image)
    : QQuickImageProvider(QQuickImageProvider::Image)
    , mImage(std::move(image))
{
}

QImage BackdropImageProvider::requestImage(const QString& /*id*/, QSize* size, const QSize& requestedSize)
{
    if (size != nullptr) {
        *size = mImage.size();
    }
    if (requestedSize.isValid() && !mImage.isNull()) {
        return mImage.scaled(requestedSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    return mImage;
}

} // namespace UI::Desktop
