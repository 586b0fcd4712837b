// Limits of joints: those of angles by the search in angle_box.h, twist and swing by one along the
// edge of the cone.
#include "qvr/rotation_limits.h"

#include "qvr/angle_box.h"
#include "qvr/error_free.h"
#include "qvr/nearest_found.h"
#include "qvr/swing_curve.h"
#include "qvr/turns.h"

#include <algorithm>
#include <limits>

namespace qvr {

namespace {

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();
constexpr Quatd kNowhere{kNothing, kNothing, kNothing, kNothing};
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Of length 1, and as it is where it has that.
Quatd unitOf(Quatd const& q) noexcept
{
    double const square = q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w;
    return magnitude(square - 1) < 0x1p-49 ? q : normalized(q);
}
bool isNumber(Quatd const& q) noexcept { return q.w - q.w == 0; }

// The rotation inside that was found for q, or q itself where that is near enough.
Quatd unlessWithin(Quatd const& q, Quatd const& found) noexcept
{
    return angleBetween(q, found) <= kWithin ? q : found;
}

// How far q is from the nearest rotation inside, which is NaN where there is none.
double distance(Quatd const& q, Quatd const& found) noexcept
{
    if (!isNumber(found))
        return kInfinity;
    double const angle = angleBetween(unitOf(q), found);
    return angle <= kWithin ? 0 : angle;
}

double middleOf(Range const& range) noexcept
{
    double const middle = range.lowest + 0.5 * (range.highest - range.lowest);
    return middle - middle == 0 ? middle : 0;
}

}  // namespace

double softened(double value, Range const& range, double softness) noexcept
{
    if (isEmpty(range))
        return kNothing;
    double const half = 0.5 * (range.highest - range.lowest);
    double const part = half * std::min(softness, 1.0);
    // A NaN is neither below nor above.
    if (!(part > 0) || !(part < kInfinity))
        return value < range.lowest ? range.lowest : value > range.highest ? range.highest : value;
    double const middle = range.lowest + half, from = half - part;
    double const size = magnitude(value - middle), t = (size - from) / part;
    if (!(t > 0))
        return value;
    // Where t t overflows, the end is reached.
    double const gone = from + part * (t < 0x1p500 ? t / squareRoot(1 + t * t) : 1);
    return std::clamp(middle + __builtin_copysign(gone, value - middle), range.lowest,
                      range.highest);
}

namespace {

angleBox::Box boxOf(AngleLimits const& limits) noexcept
{
    using angleBox::withUsableEnds;
    return {limits.order,
            {withUsableEnds(limits.x), withUsableEnds(limits.y), withUsableEnds(limits.z)}};
}
bool isEmpty(AngleLimits const& limits) noexcept
{
    return isEmpty(limits.x) || isEmpty(limits.y) || isEmpty(limits.z);
}

}  // namespace

bool AngleLimits::isInside(Quatd const& q) const noexcept { return outsideBy(q) == 0; }

double AngleLimits::outsideBy(Quatd const& q) const noexcept { return distance(q, nearest(q)); }

Eulerd AngleLimits::nearestAngles(Quatd const& q) const noexcept
{
    Quatd const unit = unitOf(q);
    if (!isNumber(unit) || isEmpty(*this))
        return {kNothing, kNothing, kNothing};
    return angleBox::nearestAngles(boxOf(*this), unit);
}

Quatd AngleLimits::nearest(Quatd const& q) const noexcept
{
    Quatd const unit = unitOf(q);
    Eulerd const angles = nearestAngles(unit);
    if (!(angles.x - angles.x == 0))
        return kNowhere;
    return unlessWithin(unit, rotationOf(order, angles));
}

Quatd AngleLimits::soften(Quatd const& q, double softness) const noexcept
{
    Quatd const unit = unitOf(q);
    if (!isNumber(unit) || isEmpty(*this))
        return kNowhere;
    auto const [ofX, ofY, ofZ] = boxOf(*this).ranges;
    Eulerd const angles = anglesNear(order, unit, {middleOf(ofX), middleOf(ofY), middleOf(ofZ)});
    return rotationOf(order, {softened(angles.x, ofX, softness), softened(angles.y, ofY, softness),
                              softened(angles.z, ofZ, softness)});
}

namespace {

// The swings at the edge of the cone: (0, sy cos t, sz sin t, w) with w^2 = (cy cos t)^2 +
// (cz sin t)^2, which is of length 1.
class Cone {
public:
    explicit Cone(TwistSwingLimits const& limits) noexcept
        : m_y(endOf(limits.swingY)), m_z(endOf(limits.swingZ))
    {
    }
    static constexpr int kSamples = 96;
    using Samples = double[kSamples];
    // Where to look at the edge. An ellipse that reaches far along one axis has sharp bends there,
    // as wide as it is narrow: the tangents of the samples are powers of a number.
    void sample(Samples& samples) const noexcept
    {
        constexpr int kEach = kSamples / 4;
        auto const exponent = [](double v) { return std::max(errorFree::exponentOf(v), -40); };
        double const bend = exponent(m_y.cosine) - exponent(m_z.cosine);
        double const first = std::min(bend, 0.0) - 3, last = std::max(bend, 0.0) + 3;
        for (int i = 0; i < kEach; ++i) {
            double const power = first + (last - first) * (i + 0.5) / kEach;
            int const whole = static_cast<int>(power + 64) - 64;
            double const tangent = errorFree::powerOfTwo(whole) * (1 + (power - whole));
            double const t = arctangent2(tangent, 1);
            samples[i] = t;
            samples[2 * kEach - 1 - i] = kPiDouble - t;
            samples[2 * kEach + i] = kPiDouble + t;
            samples[4 * kEach - 1 - i] = 2 * kPiDouble - t;
        }
    }

    // Where every swing is inside, there is no edge.
    bool isWhole() const noexcept { return m_y.cosine == 0 && m_z.cosine == 0; }

    CurvePoint operator()(double t) const noexcept
    {
        auto const [sine, cosine] = sinCos(t);
        double const a = m_y.cosine * cosine, b = m_z.cosine * sine, w = squareRoot(a * a + b * b);
        double const moves = sine * cosine * (m_z.cosine * m_z.cosine - m_y.cosine * m_y.cosine);
        return {m_y.sine * cosine, m_z.sine * sine,   w,
                -m_y.sine * sine,  m_z.sine * cosine, w > 0 ? moves / w : 0};
    }

    // Of a swing (0, y, z, w) of any length, w >= 0. The last comparison says it all unless a sine
    // is 0.
    bool isInside(double y, double z, double w) const noexcept
    {
        double const ofY = magnitude(y) * m_y.cosine, ofZ = magnitude(z) * m_z.cosine;
        double const a = ofY * m_z.sine, b = ofZ * m_y.sine, c = w * m_y.sine * m_z.sine;
        return ofY <= w * m_y.sine && ofZ <= w * m_z.sine && a * a + b * b <= c * c;
    }

    // Without the lanes in which a flat cone does not reach anywhere.
    void flatten(double& y, double& z) const noexcept
    {
        y = m_y.sine == 0 ? 0 : y;
        z = m_z.sine == 0 ? 0 : z;
    }

    // How far it may swing about an axis (0, y, z), flattened and not 0.
    double angleAlong(double y, double z) const noexcept
    {
        // Where a sine is 0, so is that lane, and any other number serves.
        double const sineY = m_y.sine == 0 ? 1 : m_y.sine, sineZ = m_z.sine == 0 ? 1 : m_z.sine;
        double const a = y * m_y.cosine * sineZ, b = z * m_z.cosine * sineY;
        return 2 *
               arctangent2(squareRoot(y * y + z * z) * sineY * sineZ, squareRoot(a * a + b * b));
    }

private:
    // Sine and cosine of half an angle; half a turn has a cosine of exactly 0.
    static SineAndCosine endOf(double swing) noexcept
    {
        return swing >= kPiDouble ? SineAndCosine{1, 0} : sinCos(0.5 * swing);
    }

    SineAndCosine m_y, m_z;
};

bool isEmpty(TwistSwingLimits const& limits) noexcept
{
    return isEmpty(limits.twist) || !(limits.swingY >= 0) || !(limits.swingZ >= 0);
}

// Twist in half angles and swing, of a unit quaternion; the antipode has no twist.
struct Parts {
    double sine = 0, cosine = 1, w;
    double y, z;

    explicit Parts(Quatd const& q) noexcept : w(squareRoot(q.x * q.x + q.w * q.w))
    {
        if (w > 0)
            sine = q.x / w, cosine = q.w / w;
        y = q.y * cosine - q.z * sine, z = q.z * cosine + q.y * sine;
    }
    double twist() const noexcept { return 2 * arctangent2(sine, cosine); }
};

// A swing of any length after a twist.
Quatd together(double twist, double y, double z, double w) noexcept
{
    auto const [s, c] = sinCos(0.5 * twist);
    return normalized({s * w, c * y + s * z, c * z - s * y, c * w});
}

// The rotations that are tried, and the nearest of them.
class NearestInside {
public:
    NearestInside(TwistSwingLimits const& limits, Cone const& cone, Quatd const& q) noexcept
        : m_twist(angleBox::withUsableEnds(limits.twist)), m_nearest(q)
    {
        // Twist and swing clamped: the nearest or next to it where q is hardly outside.
        take(limits.soften(q, 0));
        if (m_nearest.left() <= kWithin)
            return;
        Cone::Samples samples;
        cone.sample(samples);
        // Any twist with a swing on the edge.
        if (!cone.isWhole())
            forNearestOf(cone, samples, q, true, [&](double, CurvePoint const& p) {
                NearestTwist const nearest = nearestTwist(q, p, true);
                offer(2 * arctangent2(nearest.across, nearest.along), p.y, p.z, p.w,
                      nearest.closeness);
            });
        if (angleBox::isWhole(m_twist))
            return;
        // Twists at an end, with the swing that is then nearest, or one on the edge.
        for (double const end : {m_twist.lowest, m_twist.highest}) {
            if (!(magnitude(end) <= angleBox::kFarthest))
                continue;
            auto const [s, c] = sinCos(0.5 * end);
            Quatd const untwisted = q * Quatd{-s, 0, 0, c};
            double const y = untwisted.y, z = untwisted.z, w = untwisted.w;
            double const side = w < 0 ? -1 : 1;
            if (cone.isInside(y, z, magnitude(w)))
                offer(end, side * y, side * z, side * w, squareRoot(y * y + z * z + w * w));
            if (!cone.isWhole())
                forNearestOf(cone, samples, untwisted, false, [&](double, CurvePoint const& p) {
                    offer(end, p.y, p.z, p.w, nearestTwist(untwisted, p, false).closeness);
                });
        }
    }
    Quatd const& rotation() const noexcept { return m_best; }

private:
    // closeness is the cosine of half the angle that is left.
    void offer(double twist, double y, double z, double w, double closeness) noexcept
    {
        if (m_nearest.mayBeNearer(closeness) && angleBox::bringInto(m_twist, twist))
            take(together(twist, y, z, w));
    }
    void take(Quatd const& rotation) noexcept
    {
        if (m_nearest.take(rotation))
            m_best = rotation;
    }

    Range m_twist;
    NearestFound m_nearest;
    Quatd m_best = kNowhere;
};

}  // namespace

bool TwistSwingLimits::isInside(Quatd const& q) const noexcept { return outsideBy(q) == 0; }

double TwistSwingLimits::outsideBy(Quatd const& q) const noexcept
{
    return distance(q, nearest(q));
}

Quatd TwistSwingLimits::nearest(Quatd const& q) const noexcept
{
    Quatd const unit = unitOf(q);
    if (!isNumber(unit) || isEmpty(*this))
        return kNowhere;
    Cone const cone(*this);
    Parts const parts(unit);
    double angle = parts.twist();
    if (cone.isInside(parts.y, parts.z, parts.w) &&
        angleBox::bringInto(angleBox::withUsableEnds(twist), angle))
        return unit;
    return unlessWithin(unit, NearestInside(*this, cone, unit).rotation());
}

Quatd TwistSwingLimits::soften(Quatd const& q, double softness) const noexcept
{
    Quatd const unit = unitOf(q);
    if (!isNumber(unit) || isEmpty(*this))
        return kNowhere;
    Cone const cone(*this);
    Parts parts(unit);
    cone.flatten(parts.y, parts.z);
    Range const usable = angleBox::withUsableEnds(twist);
    double const angle = wrappedNear(parts.twist(), middleOf(usable));
    double const slowTwist = softened(angle, usable, softness);
    double const sine = squareRoot(parts.y * parts.y + parts.z * parts.z);
    if (sine == 0)
        return together(slowTwist, 0, 0, 1);
    double const most = cone.isWhole() ? kInfinity : cone.angleAlong(parts.y, parts.z);
    double const swing = softened(2 * arctangent2(sine, parts.w), {-most, most}, softness);
    auto const [s, c] = sinCos(0.5 * swing);
    return together(slowTwist, parts.y / sine * s, parts.z / sine * s, c);
}

}  // namespace qvr
