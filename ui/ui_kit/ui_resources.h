#pragma once

namespace UI {

// The screens' resources (QML documents, fonts, icons) are compiled into the static
// UI library, so they are only registered when something asks for them: the theme
// and every screen call Initialize() before they load a resource. Repeated calls are
// harmless.
class UiResources
{
public:
    UiResources() = delete;
    static void Initialize();
};

} // namespace UI
