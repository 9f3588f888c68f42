#pragma once

namespace UI::Desktop {

// Where the sign-in and sign-up screens lead once an account is signed in.
class AuthNavigation
{
public:
    AuthNavigation() = delete;

    // The screens that led to the sign-in are done with: they leave the stack, and
    // the player frame is its only screen, as after a start with a stored sign-in.
    // "Назад" from the player must never lead back into signing in again.
    static void ShowPlayerInPlaceOfAuthScreens();
};

} // namespace UI::Desktop
