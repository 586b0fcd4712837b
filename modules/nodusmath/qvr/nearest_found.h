// The nearest to a rotation of those that a search has come to.
#pragma once

#include "rotation.h"
#include "scalar.h"

#include <limits>

namespace qvr {

class NearestFound {
public:
    // Of a unit quaternion, which must outlive this.
    explicit NearestFound(Quatd const& q) noexcept : m_q(q) {}

    // Whether a rotation may be nearer, from the cosine of half the angle that it leaves, which
    // cannot tell small angles from each other.
    bool mayBeNearer(double cosine) const noexcept { return !(cosine < m_cosine - 0x1p-45); }

    // Whether a rotation is nearer than those before; then it takes their place.
    bool take(Quatd const& rotation) noexcept
    {
        double const left = angleBetween(m_q, rotation);
        if (!(left < m_left))
            return false;
        m_left = left;
        m_cosine = magnitude(m_q.x * rotation.x + m_q.y * rotation.y + m_q.z * rotation.z +
                             m_q.w * rotation.w);
        return true;
    }
    double left() const noexcept { return m_left; }

private:
    Quatd const& m_q;
    double m_cosine = -1, m_left = std::numeric_limits<double>::infinity();
};

}  // namespace qvr
