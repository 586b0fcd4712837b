// The random generators: what they draw, from which numbers, and what they leave in the workspace.
#include "support/kernel_call.h"

#include "kernels.h"
#include "randomgenerator.h"
#include "randomsequence.h"

#include "nodus/runtime/EvaluationScope.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

using namespace nodusmath;
using nodus::runtime::EvaluationScope;
using nodus::test::bits;
using nodus::test::call;
using Workspace = binary::Math::RandomGenerator_Workspace;

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr Int32 kLowest = std::numeric_limits<Int32>::min();
constexpr Int32 kHighest = std::numeric_limits<Int32>::max();
enum Distribution : Int32 { kUniform, kNormal, kNeither };

// The kernels of a type, how many numbers they draw a frame, uniform and normal, and a value.
template <typename T> struct Kernels {
    void (*init)(void const*, void*) noexcept;
    void (*solve)(void const*, void*, void*) noexcept;
    int numbers[2];
    T value;
};
template <typename T> constexpr Kernels<T> kKernels{};
#define KERNELS(Type, uniform, normal, ...)                                                        \
    template <>                                                                                    \
    constexpr Kernels<Type> kKernels<Type> = {NodusRandomGenerator_##Type##_Init,                  \
                                              NodusRandomGenerator_##Type##_Solve,                 \
                                              {uniform, normal},                                   \
                                              Type{__VA_ARGS__}};
KERNELS(Bool, 1, 1, 0)
KERNELS(UInt8, 1, 2, 100)
KERNELS(Int32, 1, 2, -1000)
KERNELS(Float, 1, 2, 0.5f)
KERNELS(Float4, 4, 8, 0.5f, 0.5f, 0.5f, 0.5f)
KERNELS(Color, 3, 6, 0.5f, 0.5f, 0.5f, 7.0f)
KERNELS(Quaternion, 2, 3, 0, 0, 0, 1)
#undef KERNELS

// One node of a graph, with its input ports and its workspace.
template <typename T> struct Node {
    Int32 seed = 0;
    Int32 distribution = kUniform;
    T value = kKernels<T>.value;
    Float range = 0.25f;
    Workspace workspace{};

    template <typename Out, typename Kernel> Out callWithPorts(Kernel kernel) const
    {
        if constexpr (std::is_same_v<T, Bool>)
            return call<Out>(&kernel, seed);
        else
            return call<Out>(&kernel, seed, distribution, value, range);
    }
    void init(Int32 frame)
    {
        EvaluationScope const scope(frame, nullptr);
        workspace = callWithPorts<Workspace>(kKernels<T>.init);
    }
    T solve(Int32 frame)
    {
        EvaluationScope const scope(frame, nullptr);
        return callWithPorts<T>(
            [this](void const* in, void* out) noexcept { kKernels<T>.solve(in, &workspace, out); });
    }
    T at(Int32 frame)
    {
        init(frame);
        return solve(frame);
    }
};

int wrapped(std::int64_t value) { return static_cast<int>(static_cast<std::uint32_t>(value)); }

int numberOfNode(Int32 seed, std::int64_t index)
{
    CRandomNumberSequence const node(CRandomNumberSequence(1911660)[seed] + 12345);
    return node[wrapped(index)];
}

void expectWorkspace(Workspace const& workspace, Int32 seed, std::int64_t last)
{
    EXPECT_EQ(workspace.m_nSeed, seed);
    EXPECT_EQ(workspace.m_nLastIndex, wrapped(last));
    EXPECT_EQ(workspace.m_nLastValue, numberOfNode(seed, last));
}

template <typename T> class EachGenerator : public testing::Test {
};
using Types = testing::Types<Bool, UInt8, Int32, Float, Float4, Color, Quaternion>;
TYPED_TEST_SUITE(EachGenerator, Types);

// The largest distance of the sample's distribution from an even one on [low, high]. Kolmogorov's
// bound for 1 in a million is 2.7 / sqrt(count).
double unevenness(std::vector<double> sample, double low, double high)
{
    std::sort(sample.begin(), sample.end());
    auto const count = static_cast<double>(sample.size());
    double worst = 0;
    for (std::size_t i = 0; i < sample.size(); ++i) {
        double const expected = (sample[i] - low) / (high - low);
        worst = std::max({worst, std::abs(expected - static_cast<double>(i) / count),
                          std::abs(expected - static_cast<double>(i + 1) / count)});
    }
    return worst * std::sqrt(count);
}

}  // namespace

TEST(RandomGenerator, KnownValues)
{
    struct Row {
        Int32 frame;
        bool boolean;
        int byte;
        float uniform;
    };
    for (Row const& row : {Row{0, true, 91, -0.47027224f},
                           {1, false, 86, -0.68380147f},
                           {2, true, 95, -0.24797994f}}) {
        EXPECT_EQ(Node<Bool>{}.at(row.frame).byte, row.boolean) << row.frame;
        EXPECT_EQ((Node<UInt8>{.value = 100, .range = 20.0f}.at(row.frame)), row.byte);
        EXPECT_EQ((Node<Float>{.value = 0.0f, .range = 1.0f}.at(row.frame)), row.uniform);
    }
    EXPECT_EQ((Node<Float>{.distribution = kNormal, .value = 0.0f, .range = 1.0f}.at(0)),
              0.22245024f);
}

// A node that is asked for these frames one after the other, through changes of its ports, answers
// each as a fresh node does, and leaves the same workspace. The steps are 0, 1, -1, 15, 16, -15,
// -16 and many times that; at the ends of the frames' range their products with the count of
// numbers wrap around.
TYPED_TEST(EachGenerator, AnyOrderOfFramesGivesTheSame)
{
    constexpr Int32 kFrames[] = {
        0,  0,  1,  2,       1,   0, 15, 31, 16,   0,  -1,       3,       -2,           5, -5,
        10, 11, 12, 1 << 30, 100, 7, 12, 12, 9999, -4, kHighest, kLowest, kHighest - 2, 4};
    Node<TypeParam> node;
    node.init(kFrames[0]);
    for (Int32 const seed : {0, 1, -1, 1234567, kLowest, kHighest}) {
        for (Int32 const distribution : {kUniform, kNormal, kNeither}) {
            node.seed = seed;
            node.distribution = distribution;
            int const numbers = kKernels<TypeParam>.numbers[distribution == kNormal];
            for (Int32 const frame : kFrames) {
                Node<TypeParam> fresh{.seed = seed, .distribution = distribution};
                fresh.init(frame);
                std::int64_t const first = std::int64_t{frame} * numbers;
                expectWorkspace(fresh.workspace, seed, first + numbers - 1);
                auto const expected = fresh.solve(frame);
                expectWorkspace(fresh.workspace, seed, first + numbers - 1);
                EXPECT_EQ(bits(node.solve(frame)), bits(expected)) << frame;
                expectWorkspace(node.workspace, seed, first + numbers - 1);
            }
        }
    }
}

// A number that is not the node's own shows which way was taken.
TEST(RandomGenerator, StepsUpTo15PlacesAndStartsAnewBeyond)
{
    constexpr int kForeign = 123456789;
    for (int step = -40; step <= 40; ++step) {
        Node<Float> node{.seed = 3, .value = 0.0f, .range = 0x1p29f};
        node.workspace = {3, 50, kForeign};
        node.solve(50 + step);
        bool const near = step > -16 && step < 16;
        EXPECT_EQ(node.workspace.m_nLastValue, near ? CRandomNumberSequence::Advance(kForeign, step)
                                                    : numberOfNode(3, 50 + step))
            << step;
        node.workspace = {4, 50, kForeign};
        node.solve(50 + step);
        expectWorkspace(node.workspace, 3, 50 + step);
    }
    Node<Bool> kept;
    kept.workspace = {0, 8, -3};
    EXPECT_EQ(kept.solve(8).byte, 1);
    EXPECT_EQ(kept.workspace.m_nLastValue, -3) << "no step keeps what is no number of a sequence";
}

// All types draw from one sequence by one formula, so each component is some frame of a Float node.
TEST(RandomGenerator, EachComponentHasNumbersOfItsOwn)
{
    for (Int32 const distribution : {kUniform, kNormal}) {
        for (Int32 frame = -20; frame < 20; ++frame) {
            auto const number = [&](Int32 place) {
                return Node<Float>{.distribution = distribution}.at(place);
            };
            auto const four = Node<Float4>{.distribution = distribution}.at(frame);
            EXPECT_EQ(four.x, number(4 * frame));
            EXPECT_EQ(four.y, number(4 * frame + 1));
            EXPECT_EQ(four.z, number(4 * frame + 2));
            EXPECT_EQ(four.w, number(4 * frame + 3));
            auto const color = Node<Color>{.distribution = distribution}.at(frame);
            EXPECT_EQ(color.r, number(3 * frame));
            EXPECT_EQ(color.g, number(3 * frame + 1));
            EXPECT_EQ(color.b, number(3 * frame + 2));
            EXPECT_EQ(color.a, 7.0f);

            Node<Float> wide{.distribution = distribution, .value = 100.0f, .range = 50.0f};
            Node<UInt8> byte{.distribution = distribution, .value = 100, .range = 50.0f};
            EXPECT_EQ(byte.at(frame), std::lround(wide.at(frame)));
            wide.value = -3.0f;
            Node<Int32> integer{.distribution = distribution, .value = -3, .range = 50.0f};
            EXPECT_EQ(integer.at(frame), std::lround(wide.at(frame)));
        }
    }
}

// A thousand draws stay in the interval and come near both of its ends.
TEST(RandomGenerator, DrawsFromTheIntervalThatTheTypeAllows)
{
    struct Row {
        float value, range, low, high;
    };
    auto const expectSpread = [](auto node, auto part, Row const& row) {
        float lowest = kInfinity, highest = -kInfinity;
        for (Int32 frame = 0; frame < 1000; ++frame) {
            auto const drawn = static_cast<float>(part(node.at(frame)));
            lowest = std::min(lowest, drawn);
            highest = std::max(highest, drawn);
        }
        float const slack = 0.02f * (row.high - row.low);
        EXPECT_GE(lowest, row.low);
        EXPECT_LE(lowest, row.low + slack);
        EXPECT_LE(highest, row.high);
        EXPECT_GE(highest, row.high - slack);
    };
    auto const same = [](auto drawn) { return drawn; };
    for (Row const& row : {Row{250, 10, 240, 255}, {3, 10, 0, 13}, {100, kInfinity, 0, 255}})
        expectSpread(Node<UInt8>{.value = static_cast<UInt8>(row.value), .range = row.range}, same,
                     row);
    for (Row const& row : {Row{-5, 1, -6, -4}, {-5, -1, -5, -5}, {2e38f, 2e38f, 0, 3.4028235e38f}})
        expectSpread(Node<Float>{.value = row.value, .range = row.range}, same, row);
    expectSpread(Node<Int32>{.value = 7, .range = kInfinity}, same,
                 Row{7, kInfinity, -0x1p31f, 0x1p31f});
    for (Row const& row :
         {Row{0.95f, 0.1f, 0.85f, 1}, {0.05f, 0.1f, 0, 0.15f}, {9, kInfinity, 0, 1}}) {
        Color const value{row.value, row.value, row.value, 0.5f};
        for (auto const channel : {&Color::r, &Color::g, &Color::b})
            expectSpread(
                Node<Color>{.value = value, .range = row.range},
                [channel](Color const& drawn) { return drawn.*channel; }, row);
    }
}

TEST(RandomGenerator, EdgesOfPorts)
{
    struct Row {
        char const* why;
        Int32 distribution, value;
        float range;
        Int32 expected;
    };
    for (Row const& row : {
             Row{"halves are added in single precision", kUniform, 8388609, 0.0f, 8388610},
             {"the largest value has no room for rounding", kUniform, kHighest, 0.0f, kLowest},
             {"a negative range is none", kUniform, -8, -3.0f, -8},
             {"NaN is what the conversion makes of it", kUniform, 5, kNaN, kLowest},
             {"an unknown distribution is zero", kNeither, 5, kNaN, 0},
             {"one below zero too", -1, 5, 3.0f, 0},
         })
        EXPECT_EQ(
            (Node<Int32>{.distribution = row.distribution, .value = row.value, .range = row.range}
                 .at(1)),
            row.expected)
            << row.why;
    EXPECT_EQ((Node<UInt8>{.value = 5, .range = kNaN}.at(1)), 0);
    for (Int32 const distribution : {kUniform, kNormal}) {
        EXPECT_TRUE(std::isnan(Node<Float>{.distribution = distribution, .range = kNaN}.at(1)));
        EXPECT_TRUE(std::isnan(Node<Float>{.distribution = distribution, .value = kNaN}.at(1)));
        EXPECT_TRUE(
            std::isinf(Node<Float>{.distribution = distribution, .range = kInfinity}.at(1)));
        for (float const end : {kInfinity, -kInfinity}) {  // one limit is NaN, the other infinite
            Node<Float> float1{.distribution = distribution, .value = end, .range = kInfinity};
            Node<Float4> float4{.distribution = distribution, .range = kInfinity};
            float4.value.z = end;
            EXPECT_TRUE(std::isnan(float1.at(1)) && std::isnan(float4.at(1).z)) << end;
        }
        Node<Quaternion> turn{.distribution = distribution, .range = kNaN};
        EXPECT_TRUE(std::isnan(turn.at(1).w));
    }
    auto const black = Node<Color>{.distribution = kNeither}.at(1);
    EXPECT_EQ(bits(black), bits(Color{0, 0, 0, 7.0f}));
    EXPECT_EQ(bits(Node<Float4>{.distribution = kNeither}.at(1)), bits(Float4{0, 0, 0, 0}));
}

// A node has the number 0 at the index that undoes the place of its sequence: log(0), once a
// period.
TEST(RandomGenerator, TheNumberZeroIsInfinitelyFarFromTheMiddle)
{
    int const place = -(CRandomNumberSequence(1911660)[1] + 12345);
    Int32 const frame = place / 2;
    ASSERT_EQ(place % 2, 0);
    ASSERT_EQ(numberOfNode(1, std::int64_t{2} * frame), 0);
    Node<Float> node{.seed = 1, .distribution = kNormal};
    EXPECT_TRUE(std::isinf(node.at(frame)));
    node.range = 0.0f;
    EXPECT_TRUE(std::isnan(node.at(frame)));
}

// Five standard errors of each figure: a right formula would fail one seed in a million.
TEST(RandomGenerator, NormalDrawsHaveTheirMeanAndDeviation)
{
    constexpr double kFrames = 20000, kErrors = 5;
    double sum = 0, squares = 0, inside = 0;
    Node<Float> node{.seed = 11, .distribution = kNormal, .value = 3.0f, .range = 8.0f};
    node.init(0);
    for (Int32 frame = 0; frame < kFrames; ++frame) {
        double const standard = (node.solve(frame) - 3.0) / 2.0;
        sum += standard;
        squares += standard * standard;
        inside += std::abs(standard) < 1.0;
    }
    EXPECT_NEAR(sum / kFrames, 0.0, kErrors / std::sqrt(kFrames));
    EXPECT_NEAR(std::sqrt(squares / kFrames), 1.0, kErrors / std::sqrt(2 * kFrames));
    double const share = std::erf(1.0 / std::numbers::sqrt2);
    EXPECT_NEAR(inside / kFrames, share, kErrors * std::sqrt(share * (1 - share) / kFrames));
}

// Where the x axis goes: evenly over the cap of the sphere which `range` cuts off around it.
TEST(RandomGenerator, RotationsSpreadTheXAxisEvenlyOverACap)
{
    constexpr double kBound = 2.7;
    for (float const range : {1.0f, 2.0f, 0.25f}) {
        std::vector<double> heights, angles;
        for (Int32 frame = 0; frame < 5000; ++frame) {
            auto const [x, y, z, w] = Node<Quaternion>{.seed = 5, .range = range}.at(frame);
            EXPECT_NEAR(x * x + y * y + z * z + w * w, 1.0f, 1e-5f);
            EXPECT_EQ(x, 0.0f) << "the axis is perpendicular to x";
            heights.push_back(w * w + x * x - y * y - z * z);
            angles.push_back(std::atan2(x * z - w * y, x * y + w * z));
        }
        double const lowest = 1.0 - 2.0 * std::min(1.0f, range);
        EXPECT_GE(*std::min_element(heights.begin(), heights.end()), lowest - 1e-4) << range;
        EXPECT_LT(unevenness(heights, lowest, 1.0), kBound) << range;
        EXPECT_LT(unevenness(angles, -std::numbers::pi, std::numbers::pi), kBound) << range;
    }
}

TEST(RandomGenerator, RotationsTurnBeforeTheValueDoes)
{
    Quaternion const value = {0.5f, -0.5f, 0.5f, 0.5f};
    for (Int32 const distribution : {kUniform, kNormal, kNeither}) {
        for (Int32 frame = 0; frame < 50; ++frame) {
            auto const [x, y, z, w] = Node<Quaternion>{.distribution = distribution}.at(frame);
            auto const got =
                Node<Quaternion>{.distribution = distribution, .value = value}.at(frame);
            EXPECT_NEAR(got.x, 0.5f * (w + x - y - z), 1e-6f);
            EXPECT_NEAR(got.y, 0.5f * (-w + x + y - z), 1e-6f);
            EXPECT_NEAR(got.z, 0.5f * (w + x + y + z), 1e-6f);
            EXPECT_NEAR(got.w, 0.5f * (w - x + y - z), 1e-6f);
            if (distribution == kNeither) {
                EXPECT_NEAR(w, 1.0f, 1e-6f);
            }
        }
    }
}

// A normal draw rarely leaves the sphere; when it does there is no rotation.
TEST(RandomGenerator, NormalRotationsBeyondTheSphereAreNaN)
{
    int beyond = 0;
    for (Int32 frame = 0; frame < 100000; ++frame) {
        auto const q = Node<Quaternion>{.distribution = kNormal, .range = 1.0f}.at(frame);
        beyond += std::isnan(q.x) && std::isnan(q.y) && std::isnan(q.z) && std::isnan(q.w);
        ASSERT_EQ(std::isnan(q.x), std::isnan(q.w));
    }
    double const expected = 100000 * std::erfc(4.0 / std::numbers::sqrt2);
    EXPECT_NEAR(beyond, expected, 5 * std::sqrt(expected));
    EXPECT_GT(beyond, 0);
}
