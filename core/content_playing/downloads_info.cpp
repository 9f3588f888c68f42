#include "core/content_playing/downloads_info.h"
