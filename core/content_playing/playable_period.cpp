#include "core/content_playing/playable_period.h"
