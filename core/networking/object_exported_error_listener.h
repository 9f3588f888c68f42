#pragma once

namespace Core {

// Told when the server says the playback object was moved out of this account
// ("export" switched on). Playback goes on; the screens tell the user.
class ObjectExportedErrorListener
{
public:
    virtual ~ObjectExportedErrorListener() = default;

    virtual void OnObjectExportedError() = 0;
};

} // namespace Core
