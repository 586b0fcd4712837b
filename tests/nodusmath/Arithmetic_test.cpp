// Add, Sub, Mul, Div, Mod, Negate, Abs and MultiplyByScalar, bit for bit.
#include "support/kernel_call.h"

#include "kernels.h"

#include <cmath>
#include <limits>

using namespace nodusmath;
using nodus::test::bits;
using nodus::test::call;

namespace {

using Kernel = void(void const*, void*) noexcept;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kTiny = std::numeric_limits<float>::denorm_min();
constexpr Int32 kLowest = std::numeric_limits<Int32>::min();

template <typename T> struct BinaryRow {
    char const* why;
    Kernel* kernel;
    T a, b, expected;
};

template <typename T, std::size_t count> void expectRows(BinaryRow<T> const (&rows)[count])
{
    for (BinaryRow<T> const& row : rows)
        EXPECT_EQ(bits(call<T>(row.kernel, row.a, row.b)), bits(row.expected)) << row.why;
}

}  // namespace

TEST(Arithmetic, FloatRows)
{
    static constexpr BinaryRow<Float> kRows[] = {
        {"zeros of two signs add to +0", NodusAdd_Float_Solve, -0.0f, 0.0f, 0.0f},
        {"subnormals are not flushed", NodusAdd_Float_Solve, kTiny, kTiny, 2 * kTiny},
        {"a tie rounds to even", NodusAdd_Float_Solve, 16777216.0f, 1.0f, 16777216.0f},
        {"the left operand is reduced", NodusSub_Float_Solve, 1.0f, 3.0f, -2.0f},
        {"products underflow gradually", NodusMul_Float_Solve, kTiny, 0.5f, 0.0f},
        {"division by +0", NodusDiv_Float_Solve, 1.0f, 0.0f, 0.0f},
        {"division by -0 is +0 too", NodusDiv_Float_Solve, 1.0f, -0.0f, 0.0f},
        {"NaN divided by zero is +0", NodusDiv_Float_Solve, kNaN, 0.0f, 0.0f},
        {"division by an infinity keeps the sign", NodusDiv_Float_Solve, -1.0f, kInfinity, -0.0f},
        {"division by the smallest float is no division by zero", NodusDiv_Float_Solve, kTiny,
         kTiny, 1.0f},
        {"the remainder has the sign of a", NodusMod_Float_Solve, -5.5f, 2.0f, -1.5f},
        {"the remainder ignores the sign of b", NodusMod_Float_Solve, 7.0f, -3.0f, 1.0f},
        {"the remainder of -0 is -0", NodusMod_Float_Solve, -0.0f, 2.0f, -0.0f},
    };
    expectRows(kRows);
    EXPECT_TRUE(std::isnan(call<Float>(NodusDiv_Float_Solve, 1.0f, kNaN)));
    EXPECT_TRUE(std::isnan(call<Float>(NodusMod_Float_Solve, 1.0f, 0.0f)));
    EXPECT_EQ(bits(call<Double>(NodusMod_Double_Solve, -7.0, 3.0)), bits(-1.0));
}

TEST(Arithmetic, IntegersWrapAroundAndNeverTrap)
{
    static constexpr BinaryRow<Int32> kSigned[] = {
        {"sum past the largest", NodusAdd_Int32_Solve, 2147483647, 1, kLowest},
        {"difference past the lowest", NodusSub_Int32_Solve, kLowest, 1, 2147483647},
        {"product", NodusMul_Int32_Solve, 65536, 65537, 65536},
        {"quotient towards zero", NodusDiv_Int32_Solve, -7, 2, -3},
        {"quotient by zero", NodusDiv_Int32_Solve, 5, 0, 0},
        {"quotient by -1", NodusDiv_Int32_Solve, 5, -1, -5},
        {"quotient that is no Int32", NodusDiv_Int32_Solve, kLowest, -1, kLowest},
        {"remainder with the sign of a", NodusMod_Int32_Solve, -7, 3, -1},
        {"remainder by a negative b", NodusMod_Int32_Solve, 7, -3, 1},
        {"remainder by zero", NodusMod_Int32_Solve, 5, 0, 0},
        {"remainder whose quotient is no Int32", NodusMod_Int32_Solve, kLowest, -1, 0},
    };
    expectRows(kSigned);
    static constexpr BinaryRow<UInt32> kUnsigned[] = {
        {"difference below zero", NodusSub_UInt32_Solve, 0u, 1u, 4294967295u},
        {"quotient of large values", NodusDiv_UInt32_Solve, 4294967295u, 2u, 2147483647u},
        {"quotient by zero", NodusDiv_UInt32_Solve, 5u, 0u, 0u},
        {"remainder by zero", NodusMod_UInt32_Solve, 5u, 0u, 0u},
        {"remainder of large values", NodusMod_UInt32_Solve, 4294967295u, 10u, 5u},
    };
    expectRows(kUnsigned);
    static constexpr BinaryRow<UInt8> kBytes[] = {
        {"sum", NodusAdd_UInt8_Solve, 200, 100, 44},
        {"difference", NodusSub_UInt8_Solve, 3, 5, 254},
        {"product", NodusMul_UInt8_Solve, 16, 16, 0},
        {"quotient", NodusDiv_UInt8_Solve, 255, 2, 127},
        {"quotient by zero", NodusDiv_UInt8_Solve, 5, 0, 0},
        {"remainder", NodusMod_UInt8_Solve, 255, 16, 15},
        {"remainder by zero", NodusMod_UInt8_Solve, 5, 0, 0},
    };
    expectRows(kBytes);
    EXPECT_EQ(call<Int32>(NodusNegate_Int32_Solve, kLowest), kLowest);
    EXPECT_EQ(call<Int32>(NodusNegate_Int32_Solve, 7), -7);
    EXPECT_EQ(call<Int32>(NodusAbs_Int32_Solve, kLowest), kLowest);
    EXPECT_EQ(call<Int32>(NodusAbs_Int32_Solve, -7), 7);
    EXPECT_EQ(call<UInt32>(NodusAbs_UInt32_Solve, 0xFFFFFFFFu), 0xFFFFFFFFu);
    EXPECT_EQ(call<UInt8>(NodusAbs_UInt8_Solve, UInt8{200}), 200);
}

namespace {

using LaneOperation = float (*)(float, float);
constexpr LaneOperation kSum = [](float x, float y) { return x + y; };
constexpr LaneOperation kDifference = [](float x, float y) { return x - y; };
constexpr LaneOperation kProduct = [](float x, float y) { return x * y; };
constexpr LaneOperation kOpposite = [](float x, float) { return -x; };
constexpr LaneOperation kMagnitude = [](float x, float) { return std::abs(x); };

// The lanes of one port, of `count` floats, then those of the second; results likewise.
std::vector<float> callLanes(Kernel* kernel, std::vector<float> const& ports, std::size_t count)
{
    nodus::test::Block in(ports.size() * sizeof(float)), out(count * sizeof(float));
    std::memcpy(in.data(), ports.data(), ports.size() * sizeof(float));
    kernel(in.data(), out.data());
    EXPECT_EQ(out.bytes()[count * sizeof(float)], nodus::test::kGuard);
    std::vector<float> result(count);
    std::memcpy(result.data(), out.data(), count * sizeof(float));
    return result;
}

}  // namespace

// Every lane of both operands is a prime of its own: a lane that reads another's operand shows.
TEST(Arithmetic, EachLaneComputesFromItsOwnPair)
{
    struct Row {
        Kernel* kernel;
        std::size_t lanes;
        LaneOperation operation;
    };
    static constexpr Row kRows[] = {
        {NodusAdd_Float2_Solve, 2, kSum},
        {NodusAdd_Float3_Solve, 3, kSum},
        {NodusAdd_Float4_Solve, 4, kSum},
        {NodusAdd_Translation_Solve, 4, kSum},
        {NodusAdd_Matrix4x4_Solve, 16, kSum},
        {NodusSub_Float2_Solve, 2, kDifference},
        {NodusSub_Float3_Solve, 3, kDifference},
        {NodusSub_Float4_Solve, 4, kDifference},
        {NodusSub_Matrix4x4_Solve, 16, kDifference},
        {NodusMul_Float2_Solve, 2, kProduct},
        {NodusMul_Float3_Solve, 3, kProduct},
        {NodusMul_Float4_Solve, 4, kProduct},
        {NodusNegate_Float2_Solve, 2, kOpposite},
        {NodusNegate_Float3_Solve, 3, kOpposite},
        {NodusNegate_Float4_Solve, 4, kOpposite},
        {NodusNegate_Quaternion_Solve, 4, kOpposite},
        {NodusNegate_Translation_Solve, 4, kOpposite},
        {NodusAbs_Float2_Solve, 2, kMagnitude},
        {NodusAbs_Float3_Solve, 3, kMagnitude},
        {NodusAbs_Float4_Solve, 4, kMagnitude},
        {NodusAbs_Matrix4x4_Solve, 16, kMagnitude},
    };
    constexpr float kPrimes[] = {2,  3,  5,  7,   11,  13,  17,  19,  23,  29, 31,
                                 37, 41, 43, 47,  53,  59,  61,  67,  71,  73, 79,
                                 83, 89, 97, 101, 103, 107, 109, 113, 127, 131};
    for (Row const& row : kRows) {
        std::vector<float> ports, expected;
        for (std::size_t lane = 0; lane < 2 * row.lanes; ++lane)
            ports.push_back(lane % 2 == 0 ? kPrimes[lane] : -kPrimes[lane]);
        for (std::size_t lane = 0; lane < row.lanes; ++lane)
            expected.push_back(row.operation(ports[lane], ports[row.lanes + lane]));
        EXPECT_EQ(callLanes(row.kernel, ports, row.lanes), expected) << &row - kRows;
    }
}

TEST(Arithmetic, TheScalarReachesEveryLane)
{
    EXPECT_EQ(callLanes(NodusMultiplyByScalar_Float2_Solve, {2, 3, 5}, 2),
              (std::vector<float>{10, 15}));
    EXPECT_EQ(callLanes(NodusMultiplyByScalar_Float3_Solve, {2, 3, 5, 7}, 3),
              (std::vector<float>{14, 21, 35}));
    EXPECT_EQ(callLanes(NodusMultiplyByScalar_Float4_Solve, {2, 3, 5, 7, 11}, 4),
              (std::vector<float>{22, 33, 55, 77}));
}

TEST(Arithmetic, NegateAndAbsTouchTheSignBitAlone)
{
    constexpr std::uint32_t kPatterns[] = {0x00000000u, 0x80000000u, 0x7FC00001u, 0xFFA00005u,
                                           0x00000001u, 0xFF800000u, 0x3F800000u};
    for (std::uint32_t const pattern : kPatterns) {
        auto const value = std::bit_cast<float>(pattern);
        Float4 const four = std::bit_cast<Float4>(std::array{pattern, pattern, pattern, pattern});
        EXPECT_EQ(bits(call<Float4>(NodusNegate_Float4_Solve, four))[3], pattern ^ 0x80000000u);
        EXPECT_EQ(bits(call<Float4>(NodusAbs_Float4_Solve, four))[3], pattern & 0x7FFFFFFFu);
        Float3 const three = std::bit_cast<Float3>(std::array{pattern, pattern, pattern});
        EXPECT_EQ(bits(call<Float3>(NodusNegate_Float3_Solve, three))[2], pattern ^ 0x80000000u);
        EXPECT_EQ(bits(call<Float>(NodusNegate_Float_Solve, value)), pattern ^ 0x80000000u);
        EXPECT_EQ(bits(call<Float>(NodusAbs_Float_Solve, value)), pattern & 0x7FFFFFFFu);
    }
    EXPECT_EQ(bits(call<Double>(NodusNegate_Double_Solve, 0.0)), 0x8000000000000000u);
    EXPECT_EQ(bits(call<Double>(NodusAbs_Double_Solve, -0.0)), 0u);
}

TEST(Arithmetic, MatrixProductAppliesTheSecondOperandFirst)
{
    Matrix4x4 const move = {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {3, 5, 7, 1}}};
    Matrix4x4 const grow = {{{2, 0, 0, 0}, {0, 2, 0, 0}, {0, 0, 2, 0}, {0, 0, 0, 1}}};
    Matrix4x4 const growThenMove = {{{2, 0, 0, 0}, {0, 2, 0, 0}, {0, 0, 2, 0}, {3, 5, 7, 1}}};
    Matrix4x4 const moveThenGrow = {{{2, 0, 0, 0}, {0, 2, 0, 0}, {0, 0, 2, 0}, {6, 10, 14, 1}}};
    EXPECT_EQ(bits(call<Matrix4x4>(NodusMul_Matrix4x4_Solve, move, grow)), bits(growThenMove));
    EXPECT_EQ(bits(call<Matrix4x4>(NodusMul_Matrix4x4_Solve, grow, move)), bits(moveThenGrow));
}

// Sums from the left: (1 + 2^-24) + 2^-24 loses both small terms, any other grouping keeps them.
TEST(Arithmetic, MatrixProductSumsFromTheLeft)
{
    constexpr float kHalfUlp = 0x1p-24f;
    for (int column = 0; column < 4; ++column) {
        Matrix4x4 a{}, b{};
        float const terms[] = {1.0f, kHalfUlp, kHalfUlp, 0x1p-23f};
        for (int row = 0; row < 4; ++row) {
            (&a.rows[row].x)[column] = terms[row];
            b.rows[row] = {1, 1, 1, 1};
        }
        auto const product = call<Matrix4x4>(NodusMul_Matrix4x4_Solve, a, b);
        for (auto const& row : product.rows)
            EXPECT_EQ((&row.x)[column], 1.0f + 0x1p-23f);
    }
}
