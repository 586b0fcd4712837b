// The rotation nearest to a given one among a curve of swings, each of them after a twist about X
// that is free or was undone before.
#pragma once

#include "circular.h"
#include "rotation.h"
#include "scalar.h"

namespace qvr {

// A swing (0, y, z, w) of any length, and how it moves along a curve.
struct CurvePoint {
    double y, z, w;
    double yMoves, zMoves, wMoves;
};

// Of the twist that is then nearest to q: along and across are proportional to cosine and sine of
// its half, closeness is the cosine of half the angle that is left, and slope has the sign of the
// closeness' derivative along the curve.
struct NearestTwist {
    double along, across, closeness, slope;
};
inline NearestTwist nearestTwist(Quatd const& q, CurvePoint const& p, bool isTwistFree) noexcept
{
    double const along = q.y * p.y + q.z * p.z + q.w * p.w;
    double const alongMoves = q.y * p.yMoves + q.z * p.zMoves + q.w * p.wMoves;
    double const across = isTwistFree ? q.x * p.w + q.y * p.z - q.z * p.y : 0;
    double const acrossMoves = isTwistFree ? q.x * p.wMoves + q.y * p.zMoves - q.z * p.yMoves : 0;
    double const square = p.y * p.y + p.z * p.z + p.w * p.w;
    double const squareMoves = p.y * p.yMoves + p.z * p.zMoves + p.w * p.wMoves;
    double const both = along * along + across * across;
    return {along, across, squareRoot(both / square),
            (along * alongMoves + across * acrossMoves) * square - both * squareMoves};
}

// Where a slope falls through 0 between low and high, by the Illinois variant of regula falsi
// (M. Dowell, P. Jarratt, 1971).
template <typename Slope>
double rootBetween(double low, double ofLow, double high, double ofHigh, Slope slope) noexcept
{
    for (int i = 0, side = 0; i < 60 && high - low > 0x1p-52; ++i) {
        double x = low + (high - low) * (ofLow / (ofLow - ofHigh));
        // Also where the quotient is NaN.
        if (!(low < x && x < high))
            x = 0.5 * (low + high);
        double const value = slope(x);
        if (value == 0)
            return x;
        if (value > 0) {
            low = x, ofLow = value;
            ofHigh *= side > 0 ? 0.5 : 1;
            side = 1;
        } else {
            high = x, ofHigh = value;
            ofLow *= side < 0 ? 0.5 : 1;
            side = -1;
        }
    }
    return 0.5 * (low + high);
}

// Calls visit(t, point) where a curve, closed after a turn of t, comes nearest to q: at each
// maximum of the closeness that shows among samples, which ascend by a turn less a step, and at the
// best of these. Curves are symmetric: 0 and the quarter turns had better be between samples.
template <int sampleCount, typename Curve, typename Visit>
void forNearestOf(Curve const& curve, double const (&samples)[sampleCount], Quatd const& q,
                  bool isTwistFree, Visit visit)
{
    auto const at = [&](double t) { return nearestTwist(q, curve(t), isTwistFree); };
    auto const slopeAt = [&](double t) { return at(t).slope; };
    double low = samples[sampleCount - 1] - 2 * kPiDouble, ofLow = slopeAt(low);
    double best = low, closest = -1;
    for (double const high : samples) {
        auto const [along, across, closeness, ofHigh] = at(high);
        if (ofLow > 0 && ofHigh <= 0) {
            double const t = rootBetween(low, ofLow, high, ofHigh, slopeAt);
            visit(t, curve(t));
        }
        if (closeness > closest)
            closest = closeness, best = high;
        low = high, ofLow = ofHigh;
    }
    visit(best, curve(best));
}

}  // namespace qvr
