// The random generators: any way to a frame, the numbers of each component, and how draws are
// spread. Known values and edges are rows.
#include "support/rotations.h"

#include "randomgenerator.h"
#include "randomsequence.h"

#include "nodus/runtime/EvaluationScope.h"

#include <numbers>

using namespace nodus::test;
using nodus::runtime::EvaluationScope;
using Workspace = binary::Math::RandomGenerator_Workspace;

namespace {

enum Distribution : Int32 { kUniform, kNormal, kNeither };

// The kernels of a type, how many numbers they draw a frame, uniform and normal, and a value.
template <typename T> struct Kernels {
    Kernel* init;
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

    template <typename Out, typename Function> Out callAt(Int32 frame, Function kernel) const
    {
        EvaluationScope const scope(frame, nullptr);
        if constexpr (std::is_same_v<T, Bool>)
            return call<Out>(&kernel, seed);
        else
            return call<Out>(&kernel, seed, distribution, value, range);
    }
    void init(Int32 frame) { workspace = callAt<Workspace>(frame, kKernels<T>.init); }
    T solve(Int32 frame)
    {
        return callAt<T>(frame, [this](void const* in, void* out) noexcept {
            kKernels<T>.solve(in, &workspace, out);
        });
    }
    T at(Int32 frame)
    {
        init(frame);
        return solve(frame);
    }
};

int numberOfNode(Int32 seed, std::int64_t index)
{
    CRandomNumberSequence const node(CRandomNumberSequence(1911660)[seed] + 12345);
    return node[static_cast<int>(static_cast<std::uint32_t>(index))];
}

void expectWorkspace(Workspace const& workspace, Int32 seed, std::int64_t last)
{
    EXPECT_EQ(workspace.m_nSeed, seed);
    EXPECT_EQ(workspace.m_nLastIndex, static_cast<int>(static_cast<std::uint32_t>(last)));
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
                std::int64_t const last = (std::int64_t{frame} + 1) * numbers - 1;
                Node<TypeParam> fresh{.seed = seed, .distribution = distribution};
                fresh.init(frame);
                expectWorkspace(fresh.workspace, seed, last);
                auto const expected = fresh.solve(frame);
                expectWorkspace(fresh.workspace, seed, last);
                EXPECT_EQ(bits(node.solve(frame)), bits(expected)) << frame;
                expectWorkspace(node.workspace, seed, last);
            }
        }
    }
}

// A number that is not the node's own shows which way was taken.
TEST(RandomGenerator, StepsUpTo15PlacesAndStartsAnewBeyond)
{
    constexpr int kForeign = 123456789;
    for (int step = -40; step <= 40; ++step) {
        Node<Float> node{.seed = 3};
        node.workspace = {3, 50, kForeign};
        node.solve(50 + step);
        EXPECT_EQ(node.workspace.m_nLastValue, std::abs(step) < 16
                                                   ? CRandomNumberSequence::Advance(kForeign, step)
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
            int const four = 4 * frame, three = 3 * frame;
            EXPECT_EQ(
                bits(Node<Float4>{.distribution = distribution}.at(frame)),
                bits(Float4{number(four), number(four + 1), number(four + 2), number(four + 3)}));
            EXPECT_EQ(bits(Node<Color>{.distribution = distribution}.at(frame)),
                      bits(Color{number(three), number(three + 1), number(three + 2), 7.0f}));

            Node<Float> wide{.distribution = distribution, .value = 100.0f, .range = 50.0f};
            Node<UInt8> byte{.distribution = distribution, .value = 100, .range = 50.0f};
            EXPECT_EQ(byte.at(frame), std::lround(wide.at(frame)));
            wide.value = -3.0f;
            Node<Int32> integer{.distribution = distribution, .value = -3, .range = 50.0f};
            EXPECT_EQ(integer.at(frame), std::lround(wide.at(frame)));
        }
    }
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
            auto const q = wide(Node<Quaternion>{.seed = 5, .range = range}.at(frame));
            EXPECT_LT(distance(q, unit(q)), 1e-5);
            EXPECT_EQ(q[0], 0) << "the axis is perpendicular to x";
            Rotation const x = product(product(q, {1, 0, 0, 0}), conjugate(q));
            heights.push_back(x[0]);
            angles.push_back(std::atan2(x[2], x[1]));
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
    for (Int32 const distribution : {kUniform, kNormal, kNeither})
        for (Int32 frame = 0; frame < 50; ++frame) {
            auto const turn = Node<Quaternion>{.distribution = distribution}.at(frame);
            auto const got = Node<Quaternion>{.distribution = distribution, .value = value};
            EXPECT_LT(distance(wide(Node(got).at(frame)), product(wide(value), wide(turn))), 1e-6);
        }
}

// A normal draw rarely leaves the sphere; when it does there is no rotation.
TEST(RandomGenerator, NormalRotationsBeyondTheSphereAreNaN)
{
    int beyond = 0;
    for (Int32 frame = 0; frame < 100000; ++frame) {
        auto const q = Node<Quaternion>{.distribution = kNormal, .range = 1.0f}.at(frame);
        int const lanes = std::isnan(q.x) + std::isnan(q.y) + std::isnan(q.z) + std::isnan(q.w);
        ASSERT_TRUE(lanes == 0 || lanes == 4);
        beyond += lanes / 4;
    }
    double const expected = 100000 * std::erfc(4.0 / std::numbers::sqrt2);
    EXPECT_NEAR(beyond, expected, 5 * std::sqrt(expected));
    EXPECT_GT(beyond, 0);
}
