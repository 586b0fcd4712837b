// Gradient noise once more, in the plainest form and over tables of its own: what the kernels are
// compared with.
#pragma once

#include <array>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace nodus::test {

class ReferenceNoise {
public:
    // Draws from rand, in the state it is in.
    ReferenceNoise()
    {
        auto const gradient = [] { return static_cast<float>(std::rand() % 512 - 256) / 256.0f; };
        for (int i = 0; i < 256; ++i) {
            auto& [slope, plane, space] = m_gradients[static_cast<std::size_t>(i)];
            m_cells[static_cast<std::size_t>(i)] = i;
            slope = gradient();
            for (float& lane : plane)
                lane = gradient();
            for (float& lane : space)
                lane = gradient();
            float const planeLength = std::sqrt(plane[0] * plane[0] + plane[1] * plane[1]);
            for (float& lane : plane)
                lane /= planeLength;
            float const spaceLength =
                std::sqrt((space[1] * space[1] + space[2] * space[2]) + space[0] * space[0]);
            for (float& lane : space)
                lane /= spaceLength;
        }
        for (std::size_t i = 255; i > 0; --i)
            std::swap(m_cells[i], m_cells[static_cast<std::size_t>(std::rand()) % 256]);
    }

    bool hasZeroVectors() const
    {
        for (Gradients const& entry : m_gradients)
            if (std::isnan(entry.plane[0]) && std::isnan(entry.plane[1]))
                return true;
        return false;
    }

    float at(float x) const
    {
        Place const px(x);
        auto const slope = [&](int corner) { return entry(cell(px.cell + corner)).slope; };
        return blend(px, px.from(0) * slope(0), px.from(1) * slope(1));
    }

    float at(float x, float y) const
    {
        Place const px(x), py(y);
        auto const ramp = [&](int i, int j) {
            auto const& q = entry(cell(cell(px.cell + i) + py.cell + j)).plane;
            return px.from(i) * q[0] + py.from(j) * q[1];
        };
        return blend(py, blend(px, ramp(0, 0), ramp(1, 0)), blend(px, ramp(0, 1), ramp(1, 1)));
    }

    float at(float x, float y, float z) const
    {
        Place const px(x), py(y), pz(z);
        auto const ramp = [&](int i, int j, int k) {
            auto const& q = entry(cell(cell(px.cell + i) + py.cell + j) + pz.cell + k).space;
            return (px.from(i) * q[0] + py.from(j) * q[1]) + pz.from(k) * q[2];
        };
        auto const layer = [&](int k) {
            return blend(py, blend(px, ramp(0, 0, k), ramp(1, 0, k)),
                         blend(px, ramp(0, 1, k), ramp(1, 1, k)));
        };
        return blend(pz, layer(0), layer(1));
    }

private:
    struct Gradients {
        float slope;
        std::array<float, 2> plane;
        std::array<float, 3> space;
    };

    // For coordinates whose whole part is an int.
    struct Place {
        explicit Place(float c)
            : cell(static_cast<int>(c + 4096.0f)), offset((c + 4096.0f) - std::trunc(c + 4096.0f))
        {
        }
        float from(int corner) const { return corner == 0 ? offset : offset - 1.0f; }
        int cell;
        float offset;
    };

    static float blend(Place const& place, float a, float b)
    {
        float const r = place.offset;
        return a + (r * r) * (3.0f - 2.0f * r) * (b - a);
    }

    // Everything repeats after 256; the mask is the remainder of negative places too.
    int cell(int place) const { return m_cells[static_cast<std::size_t>(place & 255)]; }
    Gradients const& entry(int place) const
    {
        return m_gradients[static_cast<std::size_t>(place & 255)];
    }

    std::array<int, 256> m_cells;
    std::array<Gradients, 256> m_gradients;
};

}  // namespace nodus::test
