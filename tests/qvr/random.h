// Numbers that are the same in every run.
#pragma once

#include <cmath>
#include <random>

namespace nodus::test {

class Random {
public:
    std::uint64_t bits() { return m_engine(); }
    double between(double low, double high)
    {
        return low + (high - low) * std::ldexp(static_cast<double>(m_engine() >> 11), -53);
    }
    int integer(int low, int high) { return static_cast<int>(std::floor(between(low, high + 1))); }
    // Of any size down to 2^-places and up to 2^places.
    double spread(int places) { return std::ldexp(between(-1, 1), integer(-places, places)); }

private:
    std::mt19937_64 m_engine{1};
};

}  // namespace nodus::test
