// Numbers as text beside the standard library's.
#include "nodus/host/shortest.h"

#include <bit>
#include <charconv>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>

using nodus::host::writeShortest;

// Bit patterns of every size, and numbers with few digits and with as many as there can be.
TEST(Shortest, IsTheStandardLibrarysText)
{
    std::minstd_rand random(1);
    auto const compare = [](auto value) {
        char expected[64], written[64];
        std::string const wanted(expected, std::to_chars(expected, std::end(expected), value).ptr);
        ASSERT_EQ(std::string(written, writeShortest(written, value)), wanted);
    };
    for (int i = 0; i < 200000; ++i) {
        std::uint64_t const bits = std::uint64_t{random()} << 33 ^ std::uint64_t{random()} << 10;
        compare(std::bit_cast<float>(static_cast<std::uint32_t>(bits >> 16)));
        compare(std::bit_cast<double>(bits));
        double const whole = static_cast<double>(bits >> random() % 64);
        for (double const scale : {1e-12, 1e-3, 0.1, 1.0, 1e3, 1e7}) {
            compare(-whole * scale);
            compare(static_cast<float>(whole * scale));
        }
    }
    for (double const value :
         {0.0, -0.0, 1e22, 1e23, 123456789012345678e4, 5e-324, 1 / 0.0, -1 / 0.0})
        compare(value);
}
