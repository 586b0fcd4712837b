// stb_perlin: the same kind of gradient noise over another lattice.
#include "peer.h"

#define STB_PERLIN_IMPLEMENTATION
#define STBPERLIN_STATIC
#include <stb/stb_perlin.h>

using namespace nodus::bench;

namespace {

struct V2 {
    float x, y;
};
struct V3 {
    float x, y, z;
};

Library const kStbPerlin(
    "stb_perlin",
    {otherwise("Noise2D", [](V2 at) { return stb_perlin_noise3(at.x, at.y, 0, 0, 0, 0); }),
     otherwise("Noise3D", [](V3 at) { return stb_perlin_noise3(at.x, at.y, at.z, 0, 0, 0); })});

}  // namespace
