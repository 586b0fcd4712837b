// Quaternions and angle triples. With half angles, the quaternion of three rotations about
// coordinate axes is a sum of products of sines and cosines; what belongs to order 12 stands beside
// it.
#include "qvr/rotation.h"

#include "qvr/circular.h"
#include "qvr/error_free.h"
#include "qvr/turns.h"

#include <algorithm>
#include <limits>

namespace qvr {

namespace {
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
}  // namespace

Quatd wideQuaternion(_vec4 q) noexcept
{
    return {laneOf<0>(q), laneOf<1>(q), laneOf<2>(q), laneOf<3>(q)};
}
Eulerd wideAngles(_vec4 angles) noexcept
{
    return {laneOf<0>(angles), laneOf<1>(angles), laneOf<2>(angles)};
}
_vec4 narrow(Quatd const& q) noexcept
{
    return lanes(static_cast<float>(q.x), static_cast<float>(q.y), static_cast<float>(q.z),
                 static_cast<float>(q.w));
}
_vec4 narrow(Eulerd const& angles) noexcept
{
    return lanes(static_cast<float>(angles.x), static_cast<float>(angles.y),
                 static_cast<float>(angles.z), 0);
}

Quatd operator*(Quatd const& a, Quatd const& b) noexcept
{
    return {a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y + a.y * b.w + a.z * b.x - a.x * b.z,
            a.w * b.z + a.z * b.w + a.x * b.y - a.y * b.x,
            a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z};
}
Quatd conjugate(Quatd const& q) noexcept { return {-q.x, -q.y, -q.z, q.w}; }

Quatd normalized(Quatd const& q) noexcept
{
    // By a power of two first, which costs nothing of the digits.
    double const largest =
        std::max({magnitude(q.x), magnitude(q.y), magnitude(q.z), magnitude(q.w)});
    int const size = std::clamp(errorFree::exponentOf(largest), -1022, 1022);
    double const scale = errorFree::powerOfTwo(-size);
    double const x = scale * q.x, y = scale * q.y, z = scale * q.z, w = scale * q.w;
    double const length = squareRoot(x * x + y * y + z * z + w * w);
    if (!(length > 0 && length < std::numeric_limits<double>::infinity()))
        return {kNone, kNone, kNone, kNone};
    return {x / length, y / length, z / length, w / length};
}

Vec3d rotated(Quatd const& q, Vec3d const& v) noexcept
{
    Quatd const turned = q * Quatd{v.x, v.y, v.z, 0} * conjugate(q);
    return {turned.x, turned.y, turned.z};
}

double angleBetween(Quatd const& a, Quatd const& b) noexcept
{
    Quatd const d = conjugate(a) * b;
    return 2 * arctangent2(squareRoot(d.x * d.x + d.y * d.y + d.z * d.z), magnitude(d.w));
}

namespace {

// With half angles a, b and c about the axes i, j and k of an order, e the sign of their
// permutation, the quaternion is
//   w = cos a cos b cos c + e sin a sin b sin c     i: sin a cos b cos c - e cos a sin b sin c
//   j: cos a sin b cos c + e sin a cos b sin c      k: cos a cos b sin c - e sin a sin b cos c
Quatd ofSequence(AxisOrder const& order, Eulerd const& angles) noexcept
{
    double const lanes[] = {angles.x, angles.y, angles.z};
    auto const [sa, ca] = sinCos(0.5 * lanes[order.first]);
    auto const [sb, cb] = sinCos(0.5 * lanes[order.second]);
    auto const [sc, cc] = sinCos(0.5 * lanes[order.third]);
    double q[3];
    q[order.first] = sa * cb * cc - order.sign * (ca * sb * sc);
    q[order.second] = ca * sb * cc + order.sign * (sa * cb * sc);
    q[order.third] = ca * cb * sc - order.sign * (sa * sb * cc);
    return {q[0], q[1], q[2], ca * cb * cc + order.sign * (sa * sb * sc)};
}

// so that the sums and differences w +- j and k +- e i are products of cos b +- sin b with a cosine
// or sine of c +- e a.
struct Sequence {
    double sum, difference;  // of the third angle and e times the first
    double middle;
    double bySum, byDifference;  // how much depends on them: the lengths of what they are read off

    Sequence(AxisOrder const& order, Quatd const& q) noexcept
    {
        double const lanes[] = {q.x, q.y, q.z};
        double const i = order.sign * lanes[order.first], j = lanes[order.second];
        double const k = lanes[order.third];
        difference = 2 * arctangent2(k - i, q.w + j);
        sum = 2 * arctangent2(k + i, q.w - j);
        byDifference = squareRoot((k - i) * (k - i) + (q.w + j) * (q.w + j));
        bySum = squareRoot((k + i) * (k + i) + (q.w - j) * (q.w - j));
        middle = 2 * arctangent2(byDifference, bySum) - kPiDouble / 2;
    }
    Eulerd angles(AxisOrder const& order) const noexcept
    {
        double lanes[3] = {};
        lanes[order.first] = wrapped(order.sign * 0.5 * (sum - difference));
        lanes[order.second] = middle;
        lanes[order.third] = wrapped(0.5 * (sum + difference));
        return {lanes[0], lanes[1], lanes[2]};
    }
};

// A swing (0, sin y/2, sin z/2, cos y/2 cos z/2), normalised, after a twist about X.
Quatd ofTwistSwing(Eulerd const& angles) noexcept
{
    auto const [sx, cx] = sinCos(0.5 * angles.x);
    auto const [sy, cy] = sinCos(0.5 * angles.y);
    auto const [sz, cz] = sinCos(0.5 * angles.z);
    double const w = cy * cz, per = 1 / squareRoot(1 + (sy * sy) * (sz * sz));
    return {sx * w * per, (sx * sz + cx * sy) * per, (cx * sz - sx * sy) * per, cx * w * per};
}

// The other way: the twist is what x and w hold, and without it the quaternion is the swing
// (0, y, z, w). With k^2 (y^2 + z^2 + w^2) as the square of what normalised it, k y and k z are the
// sines of the halves; their cosines are found without a difference of what is nearly equal.
Eulerd ofTwistAndSwing(Quatd const& q, double halfTwistSine, double halfTwistCosine) noexcept
{
    double const s = halfTwistSine, c = halfTwistCosine;
    double const y = q.y * c - q.z * s, z = q.z * c + q.y * s, ww = q.x * q.x + q.w * q.w;
    double const d = (z - y) * (z + y), both = ww * (2 - ww), root = squareRoot(both + d * d);
    double const k = squareRoot(2 / (1 + root)), per = 1 / (1 + root);
    double const plus = d < 0 ? both / (root - d) : root + d;
    double const minus = d > 0 ? both / (root + d) : root - d;
    return {2 * arctangent2(s, c), 2 * arctangent2(k * y, squareRoot((ww + plus) * per)),
            2 * arctangent2(k * z, squareRoot((ww + minus) * per))};
}

}  // namespace

Quatd rotationOf(std::int32_t order, Eulerd const& angles) noexcept
{
    if (isSequence(order))
        return ofSequence(axisOrderOf(order), angles);
    return order == rotationOrder::kTwistSwing ? ofTwistSwing(angles) : Quatd{};
}

Eulerd anglesOf(std::int32_t order, Quatd const& q) noexcept
{
    if (isSequence(order))
        return Sequence(axisOrderOf(order), q).angles(axisOrderOf(order));
    if (order != rotationOrder::kTwistSwing)
        return {};
    double const length = squareRoot(q.x * q.x + q.w * q.w);
    if (length == 0)
        return ofTwistAndSwing(q, 0, 1);
    // q and -q are one: the twist's cosine is not negative.
    if (q.w < 0)
        return ofTwistAndSwing({-q.x, -q.y, -q.z, -q.w}, -q.x / length, -q.w / length);
    return ofTwistAndSwing(q, q.x / length, q.w / length);
}

Eulerd anglesNear(std::int32_t order, Quatd const& q, Eulerd const& near, double locked) noexcept
{
    auto const any = [](Eulerd const&) { return true; };
    Eulerd angles = anglesOf(order, q);
    if (isSequence(order)) {
        // The cosine of the middle angle is the product of both lengths, one of them near sqrt(2).
        AxisOrder const axes = axisOrderOf(order);
        Sequence const sequence(axes, q);
        bool const isUp = sequence.bySum < locked * 0.7;
        if (isUp || sequence.byDifference < locked * 0.7) {
            Eulerd wanted = near;
            double& first = laneOf(wanted, axes.first);
            double& third = laneOf(wanted, axes.third);
            double const sign = isUp ? -axes.sign : axes.sign;
            double const known = isUp ? sequence.difference : sequence.sum;
            double const lacking = 0.5 * wrapped(known - (third + sign * first));
            first += sign * lacking, third += lacking;
            laneOf(wanted, axes.second) = sequence.middle;
            return nearestBranch(order, wanted, near, any);
        }
    } else if (order == rotationOrder::kTwistSwing) {
        if (squareRoot(q.x * q.x + q.w * q.w) < 0.5 * locked) {
            auto const [s, c] = sinCos(0.5 * near.x);
            angles = ofTwistAndSwing(q, s, c);
        }
    } else {
        return angles;
    }
    return nearestBranch(order, angles, near, any);
}

}  // namespace qvr
