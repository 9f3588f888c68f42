#include "core/utilities/math_utils.h"

#include <cmath>
#include <cstdint>

namespace Core::Utilities {

int MathUtils::Mod(int a, int b)
{
    if (b == 0) {
        return 0;
    }
    // Wide arithmetic: INT_MIN % -1 and (a % b) + b near INT_MAX overflow an int.
    const std::int64_t wideA = a;
    const std::int64_t wideB = b;
    return static_cast<int>(((wideA % wideB) + wideB) % wideB);
}

bool MathUtils::Equal(double a, double b, double epsilon)
{
    return std::fabs(a - b) <= epsilon;
}

} // namespace Core::Utilities
