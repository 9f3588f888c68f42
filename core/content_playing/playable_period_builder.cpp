#include "core/content_playing/playable_period_builder.h"
