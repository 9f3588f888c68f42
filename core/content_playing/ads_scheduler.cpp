#include "core/content_playing/ads_scheduler.h"
