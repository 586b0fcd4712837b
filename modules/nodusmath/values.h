// The value types of ports, as they lie in memory.
#pragma once

#include "nodus/String.h"
#include "qvr/exact.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace nodusmath {

// One byte; 0 is false, any other byte is true. Not bool: a stored 2 is legal here and undefined
// there. Kernels that compute a Bool write 0 or 1, kernels that pass one through copy the byte.
struct Bool {
    std::uint8_t byte;
};

using UInt8 = std::uint8_t;
using Int32 = std::int32_t;
using UInt32 = std::uint32_t;
using Float = float;
using Double = double;
using String = nodus::String;

struct Float2 {
    float x, y;
};

// Twelve bytes; the fourth lane does not exist.
struct Float3 {
    float x, y, z;
};

struct alignas(16) Float4 {
    float x, y, z, w;
};

// Aligned like a float: after two Int32 ports it lies at offset 8.
struct Color {
    float r, g, b, a;
};

// x, y, z the vector part, w the scalar part. A unit quaternion q rotates v as q v q*.
struct alignas(16) Quaternion {
    float x, y, z, w;
};

struct alignas(16) Translation {
    float x, y, z, w;
};

// Row i is the image of axis i, row 3 the translation; points are row vectors on the left.
struct Matrix4x4 {
    Float4 rows[4];
};

// The transpose of a Matrix4x4: translation in lanes 3, 7 and 11.
struct Mat44Float {
    float lanes[16];
};

// Scale, then rotate, then translate.
struct TQS {
    Translation t;
    Quaternion q;
    Float4 s;
};

template <typename T, std::size_t size, std::size_t alignment>
inline constexpr bool liesAs = sizeof(T) == size &&
                               alignof(T) == alignment&& std::is_standard_layout_v<T>;

static_assert(liesAs<Bool, 1, 1> && liesAs<UInt8, 1, 1>);
static_assert(liesAs<Int32, 4, 4> && liesAs<UInt32, 4, 4>);
static_assert(liesAs<Float, 4, 4> && liesAs<Double, 8, 8>);
static_assert(liesAs<Float2, 8, 4> && liesAs<Float3, 12, 4> && liesAs<Float4, 16, 16>);
static_assert(liesAs<Color, 16, 4> && liesAs<Quaternion, 16, 16> && liesAs<Translation, 16, 16>);
static_assert(liesAs<Matrix4x4, 64, 16> && liesAs<Mat44Float, 64, 4> && liesAs<TQS, 48, 16>);
static_assert(liesAs<String, 16, 8>);

// The name of each type, as kernels and the catalogue spell it; empty for all that is no port type.
template <typename T> inline constexpr char const* typeName = "";
template <> inline constexpr char const* typeName<Bool> = "Bool";
template <> inline constexpr char const* typeName<UInt8> = "UInt8";
template <> inline constexpr char const* typeName<Int32> = "Int32";
template <> inline constexpr char const* typeName<UInt32> = "UInt32";
template <> inline constexpr char const* typeName<Float> = "Float";
template <> inline constexpr char const* typeName<Double> = "Double";
template <> inline constexpr char const* typeName<Float2> = "Float2";
template <> inline constexpr char const* typeName<Float3> = "Float3";
template <> inline constexpr char const* typeName<Float4> = "Float4";
template <> inline constexpr char const* typeName<Color> = "Color";
template <> inline constexpr char const* typeName<Quaternion> = "Quaternion";
template <> inline constexpr char const* typeName<Translation> = "Translation";
template <> inline constexpr char const* typeName<Matrix4x4> = "Matrix4x4";
template <> inline constexpr char const* typeName<Mat44Float> = "Mat44Float";
template <> inline constexpr char const* typeName<TQS> = "TQS";
template <> inline constexpr char const* typeName<String> = "String";

template <typename T>
concept PortValue = *typeName<T> != '\0';

// The types that lie in one aligned 16-byte group and are computed four lanes at a time.
template <typename T>
concept FourLaned =
    std::is_same_v<T, Float4> || std::is_same_v<T, Quaternion> || std::is_same_v<T, Translation>;

}  // namespace nodusmath
