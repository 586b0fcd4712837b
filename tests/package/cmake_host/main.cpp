// A host that links the module: packs two ports and calls a kernel by its exported name.
#include <nodusmath/kernels.h>
#include <nodusmath/ports.h>

#include <cstdio>
#include <cstring>
#include <filesystem>

using namespace nodusmath;

int main()
{
    alignas(kBlockAlignment) std::byte in[blockExtent<Float3, Quaternion>] = {}, out[16] = {};
    Float3 const vector{1, 2, 3};
    Float3 const other{10, 20, 30};
    std::memcpy(in, &vector, sizeof vector);
    std::memcpy(in + offsetOfPort<1, Float3, Float3>, &other, sizeof other);
    NodusAdd_Float3_Solve(in, out);
    Float3 sum;
    std::memcpy(&sum, out, sizeof sum);
    std::printf("%g %g %g, catalogue %s\n", double{sum.x}, double{sum.y}, double{sum.z},
                std::filesystem::exists(CATALOGUE) ? "found" : "missing");
}
