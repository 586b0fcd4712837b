// Numbers from text beside the standard library's.
#include "tables/decimal.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

using nodus::host::readDecimal;

// Numbers of every length, some of them half-way between two floats.
TEST(Decimal, IsTheStandardLibrarysNumber)
{
    std::size_t taken = 0;
    auto const compare = [&]<typename Real>(std::string const& text, Real) {
        Real value{}, expected{};
        char const* const end = text.data() + text.size();
        if (readDecimal(text.data(), end, value) == nullptr)
            return;
        ++taken;
        ASSERT_EQ(std::from_chars(text.data(), end, expected).ec, std::errc{}) << text;
        ASSERT_EQ(value, expected) << text;
        ASSERT_EQ(std::signbit(value), std::signbit(expected)) << text;
    };
    auto const both = [&](std::string const& text) {
        compare(text, float{});
        compare(text, double{});
    };
    std::minstd_rand random(1);
    for (int i = 0; i < 300000; ++i) {
        std::uint64_t const digits = (std::uint64_t{random()} << 32 ^ random()) >> random() % 64;
        std::string text = std::to_string(digits);
        text.insert(random() % (text.size() + 1), ".");
        both((i % 2 != 0 ? "-" : "") + text);
        both(std::to_string((digits >> 40) + 16777216));
    }
    // Nearest to these are doubles half-way between two floats, on the wrong side.
    for (char const* const text :
         {"0", "-0", "-0.000", "0.000490337930386886", "0.000923229701584205",
          "0.000713736837496981", "0.000777724984800443"})
        both(text);
    EXPECT_GT(taken, 600000u);
    for (char const* const other : {"", "-", ".", ".5", "1e5", "+1", "1.5 ", "0x1", "inf", "1\"",
                                    "9007199254740992", "0.00000000000000000001"}) {
        float value = 0;
        EXPECT_EQ(readDecimal(other, other + std::strlen(other), value), nullptr) << other;
    }
}
