// The port types as the catalogue spells them, with the sizes and lanes that the binary contract
// fixes. A table of its own because the benchmarks are built with the compiler's default string ABI
// and cannot include the module's headers; port_shapes.cpp holds the two against each other.
#pragma once

#include <cstddef>
#include <string_view>

namespace nodus::bench {

enum class Lane { byte, int32, uint32, single, doublePrecision, pointer };

struct PortShape {
    std::string_view name;
    std::size_t size, alignment;
    Lane lane;
};

inline constexpr PortShape kPortShapes[] = {
    {"Bool", 1, 1, Lane::byte},           {"UInt8", 1, 1, Lane::byte},
    {"Int32", 4, 4, Lane::int32},         {"UInt32", 4, 4, Lane::uint32},
    {"Float", 4, 4, Lane::single},        {"Double", 8, 8, Lane::doublePrecision},
    {"Float2", 8, 4, Lane::single},       {"Float3", 12, 4, Lane::single},
    {"Float4", 16, 16, Lane::single},     {"Color", 16, 4, Lane::single},
    {"Quaternion", 16, 16, Lane::single}, {"Translation", 16, 16, Lane::single},
    {"Matrix4x4", 64, 16, Lane::single},  {"Mat44Float", 64, 4, Lane::single},
    {"TQS", 48, 16, Lane::single},        {"String", 16, 8, Lane::pointer},
};

}  // namespace nodus::bench
