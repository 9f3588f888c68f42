#pragma once

#include <QSize>
#include <QString>

namespace Core {

// One screen the video and photos can be shown on, as the settings offer it.
struct VideoOutput
{
    // QScreen::name(), which is what the settings store.
    QString name;
    QSize size;
    bool selected = false;
};

} // namespace Core
