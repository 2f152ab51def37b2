#pragma once

#include <string>

namespace rb {

// Chance. Main thread only.
class RandomSource {
public:
    virtual ~RandomSource() = default;
    // Uniform among the 10,001 whole numbers 0…10000.
    virtual int upTo10000() = 0;
    // A new UUID of the random kind: upper-case digits, groups of 8, 4, 4, 4 and 12.
    virtual std::string newUUIDString() = 0;

    // Uniform among 10,001 values from low to high.
    double between(double low, double high) { return low + (high - low) * upTo10000() / 10000.0; }
};

} // namespace rb
