#pragma once

namespace Core {

// Told when the server refuses the sign-in itself: the token was ended by a sign-in
// elsewhere, or the account was blocked. Either way the whole application has to
// stop playing and go back to the sign-in screen, whichever request noticed it.
class UnauthorizedErrorListener
{
public:
    virtual ~UnauthorizedErrorListener() = default;

    virtual void OnWrongTokenError() = 0;
    virtual void OnAccountIsBlockedError() = 0;
};

} // namespace Core
