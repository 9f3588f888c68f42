#pragma once

namespace Core::Utilities {

// The core is a static library, so its compiled-in resources (":/raw/cities.txt",
// ":/jsons/servers.json", ":/sounds/zelmar_audiologo.mp3") are only registered
// when something asks for them. Every reader of those paths calls Initialize()
// first; repeated calls are harmless.
class CoreResources
{
public:
    CoreResources() = delete;

    static void Initialize();
};

} // namespace Core::Utilities
