#include "core/networking/json_converter.h"
