// MatrixToQuaternion, QuaternionToMatrix, MatrixToMat44Float and Mat44FloatToMatrix.
#include "support/kernel_call.h"
#include "support/rotations.h"

#include "kernels.h"

#include <limits>

using namespace nodusmath;
using namespace nodus::test;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

Quaternion quaternionOf(Matrix4x4 const& matrix)
{
    return call<Quaternion>(NodusMatrixToQuaternion_Solve, matrix);
}

Matrix4x4 diagonal(float x, float y, float z)
{
    return {{{x, 0, 0, 0}, {0, y, 0, 0}, {0, 0, z, 0}, {0, 0, 0, 1}}};
}

}  // namespace

TEST(Matrix, TransposeMovesEveryWordAsBits)
{
    Matrix4x4 matrix;
    std::array<std::uint32_t, 16> words;
    for (std::uint32_t i = 0; i < 16; ++i)
        words[i] = 0x7F800001u + i;  // signalling NaNs, each its own
    words[6] = 0x80000000u;
    std::memcpy(&matrix, words.data(), sizeof matrix);

    auto const transposed = call<Mat44Float>(NodusMatrixToMat44Float_Solve, matrix);
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_EQ(bits(transposed)[i % 4 * 4 + i / 4], words[i]) << i;
    EXPECT_EQ(bits(call<Matrix4x4>(NodusMat44FloatToMatrix_Solve, transposed)), words);
}

TEST(Matrix, RowsAreTheImagesOfTheAxes)
{
    EXPECT_EQ(bits(call<Matrix4x4>(NodusQuaternionToMatrix_Solve, Quaternion{0, 0, 0, 1})),
              bits(diagonal(1, 1, 1)));
    EXPECT_EQ(bits(call<Matrix4x4>(NodusQuaternionToMatrix_Solve, Quaternion{0, 0, 0, 2})),
              bits(diagonal(7, 7, 7)));
    Random random;
    constexpr Float4 kAxes[] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};
    for (int i = 0; i < 2000; ++i) {
        Quaternion const q = random.quaternion();
        auto const matrix = call<Matrix4x4>(NodusQuaternionToMatrix_Solve, q);
        for (int axis = 0; axis < 3; ++axis) {
            Float4 const& row = matrix.rows[axis];
            auto const image = call<Float4>(NodusRotateVector_Float4_Solve, kAxes[axis], q);
            EXPECT_NEAR(row.x, image.x, 1e-6);
            EXPECT_NEAR(row.y, image.y, 1e-6);
            EXPECT_NEAR(row.z, image.z, 1e-6);
            EXPECT_EQ(bits(row.w), 0u);
        }
        EXPECT_EQ(bits(matrix.rows[3]), bits(Float4{0, 0, 0, 1}));
    }
}

TEST(Matrix, RoundTripTakesEveryBranch)
{
    Random random;
    int branches[4] = {};
    for (int i = 0; i < 4000; ++i) {
        Quaternion const q = random.quaternion();
        auto matrix = call<Matrix4x4>(NodusQuaternionToMatrix_Solve, q);
        Float4 const x = matrix.rows[0], y = matrix.rows[1], z = matrix.rows[2];
        ++branches[x.x >= 0 ? (y.y + z.z >= 0 ? 0 : 1) : (y.y - z.z >= 0 ? 2 : 3)];
        auto const back = quaternionOf(matrix);
        EXPECT_LT(difference(wide(back), wide(q)), 2e-6);

        matrix.rows[3] = {kNaN, 5, 6, 7};
        for (int row = 0; row < 3; ++row)
            matrix.rows[row].w = kNaN;
        EXPECT_EQ(bits(quaternionOf(matrix)), bits(back)) << "translation or column taken in";
    }
    for (int const count : branches)
        EXPECT_GT(count, 100);
}

// Off the rotations the four ways give different quaternions: each row shows which one is taken.
TEST(Matrix, ZeroTakesTheFirstWayOfBothTests)
{
    constexpr float kStep = std::numeric_limits<float>::denorm_min();
    struct Row {
        char const* why;
        float x, y, z;
        int largest;  // the lane that is positive, alone
    };
    constexpr Row kRows[] = {
        {"zero matrix", 0, 0, 0, 3},
        {"-0 is not below zero", -0.0f, 0, -0.0f, 3},
        {"second sum a step below zero", 0, -kStep, 0, 0},
        {"first a step below zero, difference zero", -kStep, 1, 1, 1},
        {"first a step below zero, difference a step below zero", -kStep, 0, kStep, 2},
        {"first NaN and difference zero", kNaN, 1, 1, 1},
        {"half a turn about x", 1, -1, -1, 0},
        {"half a turn about y", -1, 1, -1, 1},
        {"half a turn about z", -1, -1, 1, 2},
    };
    for (auto const& [why, x, y, z, largest] : kRows) {
        auto const q = wide(quaternionOf(diagonal(x, y, z)));
        if (std::isnan(x)) {
            EXPECT_TRUE(std::isnan(q[1])) << why;
            continue;
        }
        for (int lane = 0; lane < 4; ++lane)
            EXPECT_NEAR(q[static_cast<std::size_t>(lane)], lane == largest ? 1 : 0, kEstimated)
                << why;
    }
}
