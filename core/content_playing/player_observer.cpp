#include "core/content_playing/player_observer.h"
