// The distance from a rotation to one in the box has its minimum inside, at 0, or where some of the
// angles are at ends of their ranges and it is least in those that are not. All these places are
// tried. Where angles do not move the rotation every way, at a quarter turn of the middle one,
// there is no minimum of its own: that is the middle of a polar grid.
#include "qvr/angle_box.h"

#include "qvr/circular.h"
#include "qvr/nearest_found.h"
#include "qvr/swing_curve.h"
#include "qvr/turns.h"

#include <algorithm>
#include <limits>

namespace qvr::angleBox {

namespace {

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

struct HalfAngle {
    double angle, sine, cosine;  // the whole angle, and sine and cosine of its half
};
HalfAngle halfOf(double angle) noexcept
{
    auto const [sine, cosine] = sinCos(0.5 * angle);
    return {angle, sine, cosine};
}

// The values at which an angle stands still: the ends of its range.
struct Stops {
    HalfAngle values[2];
    int count = 0;

    Stops(Range const& range, double turns) noexcept
    {
        if (isWhole(range, turns))
            return;
        values[count++] = halfOf(range.lowest);
        if (range.highest > range.lowest)
            values[count++] = halfOf(range.highest);
    }
};

// The angle brought into the range, or as near to it as whole periods bring it.
double clampedInto(Range const& range, double angle, double turns) noexcept
{
    return bringInto(range, angle, turns) ? angle
           : angle < range.lowest         ? range.lowest
                                          : range.highest;
}

// Keeps the best of the triples that it is shown.
class Best {
public:
    // Begins with what comes of clamping the angles of q: all there is to do inside, and the
    // nearest or next to it where q is hardly outside.
    Best(Box const& box, Quatd const& q) noexcept : m_box(box), m_nearest(q)
    {
        forBranches(box.order, anglesOf(box.order, q), [&](Eulerd const& branch) {
            Eulerd const triple{clampedInto(box.ranges[0], branch.x, 1),
                                clampedInto(box.ranges[1], branch.y, turns()),
                                clampedInto(box.ranges[2], branch.z, turns())};
            take(triple, rotationOf(box.order, triple));
        });
    }

    // The triple with its free angles brought into their ranges; closeness is the cosine of half
    // the angle that is left, of either sign.
    void offer(Eulerd triple, bool const (&isFree)[3], double closeness) noexcept
    {
        if (!m_nearest.mayBeNearer(magnitude(closeness)))
            return;
        for (int axis = 0; axis < 3; ++axis)
            if (isFree[axis] &&
                !bringInto(m_box.ranges[axis], laneOf(triple, axis), axis == 0 ? 1 : turns()))
                return;
        take(triple, rotationOf(m_box.order, triple));
    }
    Eulerd const& triple() const noexcept { return m_triple; }
    double left() const noexcept { return m_nearest.left(); }

private:
    // In a period of the angles about Y and Z.
    double turns() const noexcept { return m_box.order == rotationOrder::kTwistSwing ? 2 : 1; }

    void take(Eulerd const& triple, Quatd const& rotation) noexcept
    {
        if (m_nearest.take(rotation))
            m_triple = triple;
    }

    Box const& m_box;
    NearestFound m_nearest;
    Eulerd m_triple{kNothing, kNothing, kNothing};
};

// Orders 0 to 11. The scalar product of q with the quaternion of a triple is linear in sine and
// cosine of each half angle; it is the sum over both for each axis of terms[first][second][third].
class SequenceSearch {
public:
    SequenceSearch(Box const& box, Quatd const& q, Best& best) noexcept
        : m_box(box), m_axes(axisOrderOf(box.order)), m_best(best)
    {
        double const lanes[] = {q.x, q.y, q.z};
        double const e = m_axes.sign, i = lanes[m_axes.first], j = lanes[m_axes.second];
        double const k = lanes[m_axes.third];
        double const terms[2][2][2] = {{{q.w, k}, {j, -e * i}}, {{i, e * j}, {-e * k, e * q.w}}};
        int const axes[] = {m_axes.first, m_axes.second, m_axes.third};
        Stops const first(box.ranges[axes[0]], 1), second(box.ranges[axes[1]], 1);
        Stops const third(box.ranges[axes[2]], 1);
        // -1 is an angle that may move; one whose range is a point may not.
        for (int a = beginOf(axes[0]); a < first.count; ++a)
            for (int b = beginOf(axes[1]); b < second.count; ++b)
                for (int c = beginOf(axes[2]); c < third.count; ++c)
                    if (a >= 0 || b >= 0 || c >= 0)
                        tryOne(terms, a < 0 ? nullptr : &first.values[a],
                               b < 0 ? nullptr : &second.values[b],
                               c < 0 ? nullptr : &third.values[c]);
    }

private:
    int beginOf(int axis) const noexcept
    {
        Range const& range = m_box.ranges[axis];
        return range.highest > range.lowest ? -1 : 0;
    }

    void tryOne(double const (&terms)[2][2][2], HalfAngle const* first, HalfAngle const* second,
                HalfAngle const* third) noexcept
    {
        Eulerd triple{};
        bool isFree[3] = {true, true, true};
        HalfAngle const* const stops[] = {first, second, third};
        int const axes[] = {m_axes.first, m_axes.second, m_axes.third};
        int free[3], freeCount = 0;
        for (int n = 0; n < 3; ++n) {
            if (stops[n] == nullptr) {
                free[freeCount++] = n;
                continue;
            }
            isFree[axes[n]] = false;
            laneOf(triple, axes[n]) = stops[n]->angle;
        }
        // What the terms come to with the angles that stand still.
        double m[2][2] = {};
        for (int place = 0; place < 8; ++place) {
            int const at[] = {place >> 2, (place >> 1) & 1, place & 1};
            double term = terms[at[0]][at[1]][at[2]];
            for (int n = 0; n < 3; ++n)
                if (stops[n] != nullptr)
                    term *= at[n] == 0 ? stops[n]->cosine : stops[n]->sine;
            m[freeCount > 0 ? at[free[0]] : 0][freeCount > 1 ? at[free[1]] : 0] += term;
        }
        if (freeCount == 2)
            return tryTwo(m, axes[free[0]], axes[free[1]], triple, isFree);
        double closeness = m[0][0];
        if (freeCount == 1) {
            laneOf(triple, axes[free[0]]) = 2 * arctangent2(m[1][0], m[0][0]);
            closeness = squareRoot(m[0][0] * m[0][0] + m[1][0] * m[1][0]);
        }
        m_best.offer(triple, isFree, closeness);
    }

    // Two angles that may move: cosines of half their sum and of half their difference.
    void tryTwo(double const (&m)[2][2], int first, int second, Eulerd triple,
                bool const (&isFree)[3]) noexcept
    {
        double const c = m[0][0] + m[1][1], s = m[0][1] - m[1][0];
        double const d = m[0][0] - m[1][1], t = m[0][1] + m[1][0];
        double const ofDifference = squareRoot(c * c + s * s), ofSum = squareRoot(d * d + t * t);
        double const difference = arctangent2(s, c), sum = arctangent2(t, d);
        double const closeness = 0.5 * (ofDifference + ofSum);
        double& a = laneOf(triple, first);
        double& b = laneOf(triple, second);
        a = sum - difference, b = sum + difference;
        if (std::min(ofDifference, ofSum) > 0x1p-49)
            return m_best.offer(triple, isFree, closeness);

        // Only one of the two matters: b = known - sign a, and a as the ranges let it.
        double const sign = ofSum > ofDifference ? 1 : -1;
        double const known = 2 * (ofSum > ofDifference ? sum : difference);
        Range const &ofA = m_box.ranges[first], &ofB = m_box.ranges[second];
        if (isWhole(ofA) || isWhole(ofB)) {
            double& given = isWhole(ofA) ? b : a;
            given = isWhole(ofA) ? std::clamp(0.0, ofB.lowest, ofB.highest)
                                 : std::clamp(0.0, ofA.lowest, ofA.highest);
            (isWhole(ofA) ? a : b) = isWhole(ofA) ? sign * (known - b) : known - sign * a;
            return m_best.offer(triple, isFree, closeness);
        }
        // a from b's range, and a turn more or less.
        double const end1 = sign * (known - ofB.lowest), end2 = sign * (known - ofB.highest);
        double const low = std::min(end1, end2), high = std::max(end1, end2);
        double const firstTurn = wholeNear((ofA.lowest - high) / kTurn) - 1;
        for (int i = 0; low + (firstTurn + i) * kTurn <= ofA.highest; ++i) {
            double const begin = std::max(ofA.lowest, low + (firstTurn + i) * kTurn);
            double const end = std::min(ofA.highest, high + (firstTurn + i) * kTurn);
            if (begin > end)
                continue;
            a = 0.5 * (begin + end);
            b = known - sign * a;
            m_best.offer(triple, isFree, closeness);
        }
    }

    Box const& m_box;
    AxisOrder m_axes;
    Best& m_best;
};

// Order 12. With both swing angles free the swing is what is left of q when its twist is undone and
// the lane x dropped; with one it moves along a curve.
class TwistSwingSearch {
public:
    TwistSwingSearch(Box const& box, Quatd const& q, Best& best) noexcept
        : m_box(box), m_q(q), m_best(best)
    {
        Range const &ofX = box.ranges[0], &ofY = box.ranges[1], &ofZ = box.ranges[2];
        Stops const x(ofX, 1), y(ofY, 2), z(ofZ, 2);
        bool const mayMove[] = {ofX.highest > ofX.lowest, ofY.highest > ofY.lowest,
                                ofZ.highest > ofZ.lowest};
        for (int i = mayMove[0] ? -1 : 0; i < x.count; ++i) {
            HalfAngle const* const twist = i < 0 ? nullptr : &x.values[i];
            if (twist != nullptr && mayMove[1] && mayMove[2])
                trySwing(*twist);
            for (int j = 0; j < y.count; ++j) {
                if (mayMove[2])
                    tryCurve(twist, y.values[j], 2);
                for (int k = 0; k < z.count; ++k)
                    tryPoint(twist, y.values[j], z.values[k]);
            }
            for (int k = 0; k < z.count && mayMove[1]; ++k)
                tryCurve(twist, z.values[k], 1);
        }
    }

private:
    // The lanes of q with a twist undone; without one the twist is found at the end.
    Quatd untwisted(HalfAngle const* twist) const noexcept
    {
        return twist == nullptr ? m_q : m_q * Quatd{-twist->sine, 0, 0, twist->cosine};
    }

    void offer(HalfAngle const* twist, double y, double z, NearestTwist const& nearest,
               bool const (&isFree)[3]) noexcept
    {
        double const x =
            twist != nullptr ? twist->angle : 2 * arctangent2(nearest.across, nearest.along);
        m_best.offer({x, y, z}, isFree, nearest.closeness);
    }

    void trySwing(HalfAngle const& twist) noexcept
    {
        Quatd const q = untwisted(&twist);
        Quatd const swing{0, q.y, q.z, q.w};
        double const length = squareRoot(q.y * q.y + q.z * q.z + q.w * q.w);
        if (length == 0)
            return;
        bool const isFree[] = {false, true, true};
        forBranches(m_box.order, anglesOf(m_box.order, normalized(swing)), [&](Eulerd triple) {
            triple.x = twist.angle;
            m_best.offer(triple, isFree, length);
        });
    }

    void tryPoint(HalfAngle const* twist, HalfAngle const& y, HalfAngle const& z) noexcept
    {
        CurvePoint const swing{y.sine, z.sine, y.cosine * z.cosine, 0, 0, 0};
        bool const isFree[] = {twist == nullptr, false, false};
        offer(twist, y.angle, z.angle, nearestTwist(untwisted(twist), swing, twist == nullptr),
              isFree);
    }

    // The swing about one axis stands still, that about the other, 1 or 2, moves.
    void tryCurve(HalfAngle const* twist, HalfAngle const& still, int moving) noexcept
    {
        auto const swing = [&](double half) -> CurvePoint {
            auto const [s, c] = sinCos(half);
            double const w = still.cosine * c, wMoves = -still.cosine * s;
            return moving == 2 ? CurvePoint{still.sine, s, w, 0, c, wMoves}
                               : CurvePoint{s, still.sine, w, c, 0, wMoves};
        };
        constexpr int kSamples = 64;
        double samples[kSamples];
        for (int i = 0; i < kSamples; ++i)
            samples[i] = (i + 0.3) * (2 * kPiDouble / kSamples);
        Quatd const q = untwisted(twist);
        forNearestOf(swing, samples, q, twist == nullptr, [&](double half, CurvePoint const& p) {
            bool const isFree[] = {twist == nullptr, moving == 1, moving == 2};
            offer(twist, moving == 1 ? 2 * half : still.angle, moving == 2 ? 2 * half : still.angle,
                  nearestTwist(q, p, twist == nullptr), isFree);
        });
    }

    Box const& m_box;
    Quatd m_q;
    Best& m_best;
};

}  // namespace

bool bringInto(Range const& range, double& angle, double turns) noexcept
{
    double const half = 0.5 * turns * kTurn;
    bool const hasLowest = range.lowest >= -kFarthest, hasHighest = range.highest <= kFarthest;
    double const middle = hasLowest && hasHighest ? 0.5 * (range.lowest + range.highest)
                          : hasLowest             ? range.lowest + half
                          : hasHighest            ? range.highest - half
                                                  : 0;
    angle = wrappedNear(angle, middle, turns);
    return isWhole(range, turns) || (range.lowest <= angle && angle <= range.highest);
}

Eulerd nearestAngles(Box const& box, Quatd const& q) noexcept
{
    bool const isTwistSwing = box.order == rotationOrder::kTwistSwing;
    if (!isTwistSwing && !isSequence(box.order))
        return {};
    Best best(box, q);
    if (best.left() > kInside) {
        if (isTwistSwing)
            TwistSwingSearch(box, q, best);
        else
            SequenceSearch(box, q, best);
    }
    return best.triple();
}

}  // namespace qvr::angleBox
