// Holds the benchmarks' table of port types against the module's value types. Nothing runs.
#include "port_shapes.h"

#include "values.h"

namespace {

template <typename... Types> constexpr bool tableAgrees()
{
    constexpr nodus::bench::PortShape kTypes[] = {
        {nodusmath::typeName<Types>, sizeof(Types), alignof(Types), nodus::bench::Lane::byte}...};
    if (std::size(kTypes) != std::size(nodus::bench::kPortShapes))
        return false;
    for (std::size_t i = 0; i < std::size(kTypes); ++i) {
        auto const& listed = nodus::bench::kPortShapes[i];
        if (listed.name != kTypes[i].name || listed.size != kTypes[i].size ||
            listed.alignment != kTypes[i].alignment)
            return false;
    }
    return true;
}

using namespace nodusmath;
static_assert(tableAgrees<Bool, UInt8, Int32, UInt32, Float, Double, Float2, Float3, Float4, Color,
                          Quaternion, Translation, Matrix4x4, Mat44Float, TQS, String>());

}  // namespace
