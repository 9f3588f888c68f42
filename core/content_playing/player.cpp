#include "core/content_playing/player.h"
