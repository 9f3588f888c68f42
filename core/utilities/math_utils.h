#pragma once

namespace Core::Utilities {

class MathUtils
{
public:
    MathUtils() = delete;

    // ((a mod b) + b) mod b: never negative for a positive b, so stepping back from
    // the first item of a list lands on the last. A zero b gives 0 instead of a
    // division fault.
    static int Mod(int a, int b);
    // |a - b| <= epsilon.
    static bool Equal(double a, double b, double epsilon);
};

} // namespace Core::Utilities
