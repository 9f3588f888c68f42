#pragma once

#include <QWidget>

namespace UI::Desktop {

// Placeholder until the screen is written.
class SignInWidgetDesktop : public QWidget
{
    Q_OBJECT

public:
    explicit SignInWidgetDesktop(QWidget* parent = nullptr);
};

} // namespace UI::Desktop
