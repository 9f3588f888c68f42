#include "core/content_playing/playback_state.h"
