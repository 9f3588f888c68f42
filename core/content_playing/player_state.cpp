#include "core/content_playing/player_state.h"
