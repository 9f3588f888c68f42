#pragma once

#include <QWidget>

namespace UI::Desktop {

// Placeholder until the screen is written.
class PlayerWidgetDesktop : public QWidget
{
    Q_OBJECT

public:
    explicit PlayerWidgetDesktop(QWidget* parent = nullptr);
};

} // namespace UI::Desktop
