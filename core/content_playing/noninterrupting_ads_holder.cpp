#include "core/content_playing/noninterrupting_ads_holder.h"
