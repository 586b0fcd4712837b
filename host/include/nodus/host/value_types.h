// The value types of ports as a host sees them: sizes, lanes and the names of lanes and parts.
// Everything here is constant data; any thread may call.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace nodus::host {

enum class TypeId : std::uint8_t {
    Bool,
    UInt8,
    Int32,
    UInt32,
    Float,
    Double,
    Float2,
    Float3,
    Float4,
    Color,
    Quaternion,
    Translation,
    Matrix4x4,
    Mat44Float,
    TQS,
    String,
};

inline bool isReal(TypeId type) { return type == TypeId::Float || type == TypeId::Double; }

struct ValueType {
    TypeId id, lane;  // its own and that of each lane; a scalar is its own only lane
    std::string_view name;
    std::size_t size, alignment, laneSize;
    std::span<std::string_view const> laneNames;  // one empty name for a scalar

    bool isScalar() const { return lane == id; }
    // Whether its lanes are numbers that have a meaning each: not those of a rotation or a matrix.
    bool isOfNumbers() const
    {
        return lane != TypeId::Bool && lane != TypeId::String && id != TypeId::Quaternion &&
               id != TypeId::TQS && id != TypeId::Matrix4x4 && id != TypeId::Mat44Float;
    }
};

std::span<ValueType const> valueTypes();
ValueType const& valueType(TypeId id);

// The type of that name, or null.
ValueType const* findValueType(std::string_view name);

// A value inside another one: the whole (empty path), a lane ("x", "m30", "q.x") or a part of a TQS
// ("t", "q", "s"). Nothing when the type has no such piece.
struct Piece {
    ValueType const* type;
    std::size_t offset;
};
std::optional<Piece> findPiece(ValueType const& type, std::string_view path);

// The three parts of a TQS, in memory order.
struct Part {
    std::string_view name;
    TypeId type;
    std::size_t offset;
};
std::span<Part const> partsOfTqs();

// Where the next port of a block goes: at the first multiple of its alignment. Returns its offset
// and moves end behind it.
std::size_t placePort(ValueType const& type, std::size_t& end);

// A value outside of any block. A String is its text, which keeps nothing alive.
struct Value {
    ValueType const* type = nullptr;
    alignas(16) std::array<std::byte, 64> bytes{};
    std::string text;
};

// Zero, or the identity for Quaternion, Matrix4x4 and TQS.
Value neutralValue(ValueType const& type);

}  // namespace nodus::host
