#include "core/content_playing/playable_block_builder.h"
