// The exact operations that stand for the processor's estimates: NaN, zeros and infinities wherever
// the instructions give them, and elsewhere within the error that the instructions promise.
#include "qvr/estimates.h"

#include "support/kernel_call.h"

#include <gtest/gtest.h>

#include <cmath>

using nodus::test::bits;

namespace {

struct Estimate {
    char const* why;
    qvr::_vec4 (*instruction)(qvr::_vec4);
    qvr::_vec4 (*exact)(qvr::_vec4);
    float lastSure;  // above it the instruction may give zeros where the quotient is still normal
};
Estimate const kEstimates[] = {
    {"1 / v", qvr::estimatedReciprocal, qvr::exactReciprocal, 0x1.8p+125f},
    {"1 / sqrt(v)", [](qvr::_vec4 v) { return qvr::estimatedReciprocalRoot(v); },
     [](qvr::_vec4 v) { return qvr::exactReciprocalSquareRoot(v); }, 0x1.fffffep127f},
};

float lane0Of(qvr::_vec4 (*function)(qvr::_vec4), float v)
{
    return qvr::lane0(function(qvr::broadcast(v)));
}

}  // namespace

// Every exponent, both signs, and fractions at the ends and between.
TEST(Estimates, ExactOnesAnswerAlikeAtTheEdges)
{
    for (Estimate const& estimate : kEstimates)
        for (std::uint32_t high = 0; high < 512; ++high)
            for (std::uint32_t const fraction : {0u, 1u, 0x2AAAAAu, 0x400000u, 0x7FFFFFu}) {
                auto const v = std::bit_cast<float>(high << 23 | fraction);
                float const given = lane0Of(estimate.instruction, v);
                float const exact = lane0Of(estimate.exact, v);
                bool const isEdge = std::isnan(given) || std::isinf(given) || v == 0;
                bool const isAlike = isEdge ? bits(exact) == bits(given)
                                     : std::abs(v) <= estimate.lastSure
                                         ? std::abs(given - exact) <= 0x1.8p-12f * std::abs(exact)
                                         : std::signbit(exact) == std::signbit(given) &&
                                               (std::isnormal(exact) || exact == 0);
                EXPECT_TRUE(isAlike) << estimate.why << " of " << v << ": " << exact;
            }
}
