// The eight comparisons and the two reductions: which lanes count, and what NaN answers.
#include "support/kernel_call.h"

#include "kernels.h"

#include <limits>
#include <string>

using namespace nodusmath;
using nodus::test::call;

namespace {

using Kernel = void(void const*, void*) noexcept;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// Ports of equal lanes, one value for all lanes of a port but for the odd one out.
struct Lanes {
    std::size_t count;
    std::size_t odd;
};

Bool callWithOddLane(Kernel* kernel, Lanes lanes, std::vector<float> const& values,
                     std::vector<float> const& oddValues, std::vector<float> const& scalars)
{
    std::vector<float> ports;
    for (std::size_t port = 0; port < values.size(); ++port)
        for (std::size_t lane = 0; lane < lanes.count; ++lane)
            ports.push_back(lane == lanes.odd ? oddValues[port] : values[port]);
    ports.insert(ports.end(), scalars.begin(), scalars.end());
    nodus::test::Block in(ports.size() * sizeof(float)), out(1);
    std::memcpy(in.data(), ports.data(), ports.size() * sizeof(float));
    kernel(in.data(), out.data());
    EXPECT_EQ(out.bytes()[1], nodus::test::kGuard) << "wrote behind the result";
    return std::bit_cast<Bool>(out.bytes()[0]);
}

struct Relation {
    std::string name;
    std::vector<float> holds, fails, scalars;
    bool anyLane;
    Kernel* float2;
    Kernel* float3;
    Kernel* float4;
    Kernel* quaternion;
    Kernel* translation;
};

#define NODUS_OF_EACH_TYPE(family)                                                                 \
    Nodus##family##_Float2_Solve, Nodus##family##_Float3_Solve, Nodus##family##_Float4_Solve,      \
        Nodus##family##_Quaternion_Solve, Nodus##family##_Translation_Solve

std::vector<Relation> const& relations()
{
    static std::vector<Relation> const all = {
        {"Equal", {2, 2}, {2, 3}, {}, false, NODUS_OF_EACH_TYPE(Equal)},
        {"AlmostEqual", {2, 2.5f}, {2, 3}, {0.5f}, false, NODUS_OF_EACH_TYPE(AlmostEqual)},
        {"GreaterThan", {3, 2}, {2, 2}, {}, false, NODUS_OF_EACH_TYPE(GreaterThan)},
        {"GreaterThanOrEqual", {2, 2}, {1, 2}, {}, false, NODUS_OF_EACH_TYPE(GreaterThanOrEqual)},
        {"LessThan", {1, 2}, {2, 2}, {}, false, NODUS_OF_EACH_TYPE(LessThan)},
        {"LessThanOrEqual", {2, 2}, {3, 2}, {}, false, NODUS_OF_EACH_TYPE(LessThanOrEqual)},
        {"InRange above", {2, 1, 2}, {3, 1, 2}, {}, false, NODUS_OF_EACH_TYPE(InRange)},
        {"InRange below", {1, 1, 2}, {0, 1, 2}, {}, false, NODUS_OF_EACH_TYPE(InRange)},
        {"InRange of NaN", {1, 1, 2}, {kNaN, 1, 2}, {}, false, NODUS_OF_EACH_TYPE(InRange)},
        {"OutRange above", {3, 1, 2}, {2, 1, 2}, {}, true, NODUS_OF_EACH_TYPE(OutRange)},
        {"OutRange below", {0, 1, 2}, {1, 1, 2}, {}, true, NODUS_OF_EACH_TYPE(OutRange)},
        {"OutRange of NaN", {0, 1, 2}, {kNaN, 1, 2}, {}, true, NODUS_OF_EACH_TYPE(OutRange)},
        {"All",
         {-1},
         {-0.0f},
         {},
         false,
         NodusAll_Float2_Solve,
         NodusAll_Float3_Solve,
         NodusAll_Float4_Solve,
         nullptr,
         nullptr},
        {"All of NaN",
         {kNaN},
         {0},
         {},
         false,
         NodusAll_Float2_Solve,
         NodusAll_Float3_Solve,
         NodusAll_Float4_Solve,
         nullptr,
         nullptr},
        {"Any",
         {1},
         {-0.0f},
         {},
         true,
         NodusAny_Float2_Solve,
         NodusAny_Float3_Solve,
         NodusAny_Float4_Solve,
         nullptr,
         nullptr},
        {"Any of NaN",
         {kNaN},
         {0},
         {},
         true,
         NodusAny_Float2_Solve,
         NodusAny_Float3_Solve,
         NodusAny_Float4_Solve,
         nullptr,
         nullptr},
    };
    return all;
}

void expectThatEveryLaneCounts(std::string const& name, Kernel* kernel, std::size_t count,
                               Relation const& relation)
{
    if (kernel == nullptr)
        return;
    auto const& rest = relation.anyLane ? relation.fails : relation.holds;
    auto const& odd = relation.anyLane ? relation.holds : relation.fails;
    EXPECT_EQ(callWithOddLane(kernel, {count, count}, rest, odd, relation.scalars).byte,
              relation.anyLane ? 0 : 1)
        << name << ", all lanes alike";
    for (std::size_t lane = 0; lane < count; ++lane)
        EXPECT_EQ(callWithOddLane(kernel, {count, lane}, rest, odd, relation.scalars).byte,
                  relation.anyLane ? 1 : 0)
            << name << ", lane " << lane << " decides";
}

}  // namespace

TEST(Comparison, EveryLaneCounts)
{
    for (Relation const& relation : relations()) {
        expectThatEveryLaneCounts(relation.name + " of Float2", relation.float2, 2, relation);
        expectThatEveryLaneCounts(relation.name + " of Float3", relation.float3, 3, relation);
        expectThatEveryLaneCounts(relation.name + " of Float4", relation.float4, 4, relation);
        expectThatEveryLaneCounts(relation.name + " of Quaternion", relation.quaternion, 4,
                                  relation);
        expectThatEveryLaneCounts(relation.name + " of Translation", relation.translation, 4,
                                  relation);
    }
    Relation const almost{"AlmostEqual", {2, 2.5f}, {3, 2},  {0.5f},  false,
                          nullptr,       nullptr,   nullptr, nullptr, nullptr};
    expectThatEveryLaneCounts("AlmostEqual of Color", NodusAlmostEqual_Color_Solve, 4, almost);
    expectThatEveryLaneCounts("AlmostEqual of Matrix4x4", NodusAlmostEqual_Matrix4x4_Solve, 16,
                              almost);
}

TEST(Comparison, FloatPairs)
{
    // The answers of Equal, GreaterThan, GreaterThanOrEqual, LessThan and LessThanOrEqual.
    struct Row {
        char const* why;
        float a, b;
        char const* expected;
    };
    static constexpr Row kRows[] = {
        {"zeros of two signs are equal", 0.0f, -0.0f, "10101"},
        {"neighbours differ", 1.0f, 0x1.000002p0f, "00011"},
        {"subnormals are not flushed", 0x1p-149f, 0.0f, "01100"},
        {"infinities are equal to themselves", kInfinity, kInfinity, "10101"},
        {"every relation of NaN to itself is false", kNaN, kNaN, "00000"},
        {"NaN on the left", kNaN, -kInfinity, "00000"},
        {"NaN on the right", -kInfinity, kNaN, "00000"},
    };
    for (Row const& row : kRows) {
        Kernel* const floats[] = {NodusEqual_Float_Solve, NodusGreaterThan_Float_Solve,
                                  NodusGreaterThanOrEqual_Float_Solve, NodusLessThan_Float_Solve,
                                  NodusLessThanOrEqual_Float_Solve};
        Kernel* const doubles[] = {NodusEqual_Double_Solve, NodusGreaterThan_Double_Solve,
                                   NodusGreaterThanOrEqual_Double_Solve, NodusLessThan_Double_Solve,
                                   NodusLessThanOrEqual_Double_Solve};
        for (int i = 0; i < 5; ++i) {
            int const expected = row.expected[i] - '0';
            EXPECT_EQ(call<Bool>(floats[i], row.a, row.b).byte, expected) << row.why << " " << i;
            EXPECT_EQ(call<Bool>(doubles[i], Double{row.a}, Double{row.b}).byte, expected)
                << row.why << " " << i;
        }
    }
    EXPECT_EQ(call<Bool>(NodusEqual_Double_Solve, 1.0, 1.0 + 0x1p-52).byte, 0)
        << "doubles are not narrowed";
}

TEST(Comparison, IntegersAreComparedInTheirSignedness)
{
    EXPECT_EQ(call<Bool>(NodusLessThan_Int32_Solve, -1, 0).byte, 1);
    EXPECT_EQ(call<Bool>(NodusLessThan_UInt32_Solve, 0xFFFFFFFFu, 0u).byte, 0);
    EXPECT_EQ(call<Bool>(NodusLessThanOrEqual_Int32_Solve, 3, 3).byte, 1);
    EXPECT_EQ(call<Bool>(NodusLessThanOrEqual_UInt32_Solve, 0x80000000u, 1u).byte, 0);
    EXPECT_EQ(call<Bool>(NodusLessThan_UInt8_Solve, UInt8{3}, UInt8{3}).byte, 0);
    EXPECT_EQ(call<Bool>(NodusLessThanOrEqual_UInt8_Solve, UInt8{200}, UInt8{3}).byte, 0);
    EXPECT_EQ(call<Bool>(NodusGreaterThan_Int32_Solve, 0, -1).byte, 1);
    EXPECT_EQ(call<Bool>(NodusGreaterThan_UInt32_Solve, 0u, 0xFFFFFFFFu).byte, 0);
    EXPECT_EQ(call<Bool>(NodusGreaterThan_UInt8_Solve, UInt8{255}, UInt8{0}).byte, 1);
    EXPECT_EQ(call<Bool>(NodusGreaterThanOrEqual_Int32_Solve, -2, -1).byte, 0);
    EXPECT_EQ(call<Bool>(NodusGreaterThanOrEqual_UInt32_Solve, 7u, 7u).byte, 1);
    EXPECT_EQ(call<Bool>(NodusGreaterThanOrEqual_UInt8_Solve, UInt8{200}, UInt8{100}).byte, 1);
    EXPECT_EQ(call<Bool>(NodusEqual_Int32_Solve, -1, -1).byte, 1);
    EXPECT_EQ(call<Bool>(NodusEqual_UInt32_Solve, 0x80000001u, 1u).byte, 0);
    EXPECT_EQ(call<Bool>(NodusEqual_UInt8_Solve, UInt8{128}, UInt8{128}).byte, 1);
    EXPECT_EQ(call<Bool>(NodusEqual_Bool_Solve, Bool{1}, Bool{2}).byte, 0) << "bytes, not truths";
    EXPECT_EQ(call<Bool>(NodusEqual_Bool_Solve, Bool{2}, Bool{2}).byte, 1);
}

TEST(Comparison, RangesIncludeTheirBoundsAndNaNIsNeitherInNorOut)
{
    struct Row {
        char const* why;
        float value, min, max;
        int in, out;
    };
    static constexpr Row kRows[] = {
        {"a range of one value", 2, 2, 2, 1, 0},
        {"the lower bound", -3, -3, 5, 1, 0},
        {"the upper bound", 5, -3, 5, 1, 0},
        {"below", -4, -3, 5, 0, 1},
        {"above", 6, -3, 5, 0, 1},
        {"reversed bounds", 2, 5, 1, 0, 1},
    };
    for (Row const& r : kRows) {
        auto const expect = [&r]<typename T>(Kernel* in, Kernel* out, T) {
            auto const value = static_cast<T>(r.value), min = static_cast<T>(r.min),
                       max = static_cast<T>(r.max);
            EXPECT_EQ(call<Bool>(in, value, min, max).byte, r.in) << r.why << typeName<T>;
            EXPECT_EQ(call<Bool>(out, value, min, max).byte, r.out) << r.why << typeName<T>;
        };
        expect(NodusInRange_Float_Solve, NodusOutRange_Float_Solve, Float{});
        expect(NodusInRange_Double_Solve, NodusOutRange_Double_Solve, Double{});
        expect(NodusInRange_Int32_Solve, NodusOutRange_Int32_Solve, Int32{});
        if (r.min > 0) {
            expect(NodusInRange_UInt32_Solve, NodusOutRange_UInt32_Solve, UInt32{});
            expect(NodusInRange_UInt8_Solve, NodusOutRange_UInt8_Solve, UInt8{});
        }
    }
    EXPECT_EQ(call<Bool>(NodusInRange_UInt32_Solve, 0x80000000u, 1u, 0xFFFFFFFFu).byte, 1);
    EXPECT_EQ(call<Bool>(NodusOutRange_UInt8_Solve, UInt8{200}, UInt8{0}, UInt8{100}).byte, 1);
    static constexpr Row kNotNumbers[] = {
        {"NaN value", kNaN, 0, 1, 0, 0},
        {"NaN lower bound, value below the upper", 0, kNaN, 1, 0, 0},
        {"NaN lower bound, value above the upper", 2, kNaN, 1, 0, 1},
        {"NaN upper bound, value above the lower", 2, 1, kNaN, 0, 0},
        {"NaN upper bound, value below the lower", 0, 1, kNaN, 0, 1},
    };
    for (Row const& r : kNotNumbers) {
        EXPECT_EQ(call<Bool>(NodusInRange_Float_Solve, r.value, r.min, r.max).byte, r.in) << r.why;
        EXPECT_EQ(call<Bool>(NodusOutRange_Float_Solve, r.value, r.min, r.max).byte, r.out)
            << r.why;
    }
}

TEST(Comparison, AlmostEqualComparesTheRoundedDifference)
{
    struct Row {
        char const* why;
        float a, b, tolerance;
        int expected;
    };
    static constexpr Row kRows[] = {
        {"the tolerance is included", 1.0f, 1.5f, 0.5f, 1},
        {"on either side", 1.5f, 1.0f, 0.5f, 1},
        {"but not more", 1.0f, 1.5f, 0x1.fffffep-2f, 0},
        {"the difference of large values is rounded", 16777216.0f, -1.0f, 16777216.0f, 1},
        {"no tolerance at all", 2.0f, 2.0f, 0.0f, 1},
        {"a negative tolerance", 2.0f, 2.0f, -1.0f, 0},
        {"a NaN tolerance", 2.0f, 2.0f, kNaN, 0},
        {"an infinity is not near itself", kInfinity, kInfinity, kInfinity, 0},
        {"but within an infinity of any number", kInfinity, 0.0f, kInfinity, 1},
        {"NaN is near nothing", kNaN, kNaN, kInfinity, 0},
    };
    for (Row const& r : kRows) {
        Float4 const a{r.a, r.a, r.a, r.a}, b{r.b, r.b, r.b, r.b};
        EXPECT_EQ(call<Bool>(NodusAlmostEqual_Float_Solve, r.a, r.b, r.tolerance).byte, r.expected)
            << r.why;
        EXPECT_EQ(call<Bool>(NodusAlmostEqual_Float4_Solve, a, b, r.tolerance).byte, r.expected)
            << r.why;
    }
    EXPECT_EQ(call<Bool>(NodusAlmostEqual_Double_Solve, 1.0, 1.1, 0.1).byte, 0)
        << "1.1 - 1.0 exceeds 0.1 in doubles";
    EXPECT_EQ(call<Bool>(NodusAlmostEqual_Double_Solve, 1e300, -1e300, 2e300).byte, 1);
}
