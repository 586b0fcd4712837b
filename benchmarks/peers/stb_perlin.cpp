// stb_perlin: the same kind of gradient noise over another lattice.
#include "peer.h"

#define STB_PERLIN_IMPLEMENTATION
#define STBPERLIN_STATIC
#include <stb/stb_perlin.h>

namespace nodus::bench {

namespace {
struct Position2 {
    float x, y;
};
struct Position3 {
    float x, y, z;
};
}  // namespace

std::vector<Peer> stbPeers()
{
    return {
        otherwise("stb_perlin", "NodusNoise2D_Solve",
                  [](Position2 const& at) { return stb_perlin_noise3(at.x, at.y, 0, 0, 0, 0); }),
        otherwise("stb_perlin", "NodusNoise3D_Solve",
                  [](Position3 const& at) { return stb_perlin_noise3(at.x, at.y, at.z, 0, 0, 0); }),
    };
}

}  // namespace nodus::bench
