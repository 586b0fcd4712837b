// The table of value types. Sizes and alignments are those of the module's own types.
#include "nodus/host/value_types.h"

#include "values.h"

#include <algorithm>
#include <cstring>

namespace nodus::host {

namespace {

namespace nm = nodusmath;

constexpr std::string_view kScalar[] = {""};
constexpr std::string_view kXyzw[] = {"x", "y", "z", "w"};
constexpr std::string_view kRgba[] = {"r", "g", "b", "a"};
constexpr std::string_view kRows[] = {"m00", "m01", "m02", "m03", "m10", "m11", "m12", "m13",
                                      "m20", "m21", "m22", "m23", "m30", "m31", "m32", "m33"};
constexpr std::string_view kSixteen[] = {"m0", "m1", "m2",  "m3",  "m4",  "m5",  "m6",  "m7",
                                         "m8", "m9", "m10", "m11", "m12", "m13", "m14", "m15"};
constexpr std::string_view kTqs[] = {"t.x", "t.y", "t.z", "t.w", "q.x", "q.y",
                                     "q.z", "q.w", "s.x", "s.y", "s.z", "s.w"};

template <typename T> constexpr ValueType scalar(TypeId id)
{
    return {id, id, nm::typeName<T>, sizeof(T), alignof(T), sizeof(T), kScalar};
}

template <typename T> constexpr ValueType lanes(TypeId id, std::span<std::string_view const> names)
{
    return {id, TypeId::Float, nm::typeName<T>, sizeof(T), alignof(T), sizeof(float), names};
}

constexpr ValueType kTypes[] = {
    scalar<nm::Bool>(TypeId::Bool),
    scalar<nm::UInt8>(TypeId::UInt8),
    scalar<nm::Int32>(TypeId::Int32),
    scalar<nm::UInt32>(TypeId::UInt32),
    scalar<nm::Float>(TypeId::Float),
    scalar<nm::Double>(TypeId::Double),
    lanes<nm::Float2>(TypeId::Float2, std::span(kXyzw).first<2>()),
    lanes<nm::Float3>(TypeId::Float3, std::span(kXyzw).first<3>()),
    lanes<nm::Float4>(TypeId::Float4, kXyzw),
    lanes<nm::Color>(TypeId::Color, kRgba),
    lanes<nm::Quaternion>(TypeId::Quaternion, kXyzw),
    lanes<nm::Translation>(TypeId::Translation, kXyzw),
    lanes<nm::Matrix4x4>(TypeId::Matrix4x4, kRows),
    lanes<nm::Mat44Float>(TypeId::Mat44Float, kSixteen),
    lanes<nm::TQS>(TypeId::TQS, kTqs),
    scalar<nm::String>(TypeId::String),
};

constexpr bool tableFollowsIds()
{
    for (std::size_t i = 0; i < std::size(kTypes); ++i)
        if (static_cast<std::size_t>(kTypes[i].id) != i || kTypes[i].size > sizeof(Value::bytes))
            return false;
    return true;
}
static_assert(tableFollowsIds());

constexpr Part kParts[] = {{"t", TypeId::Translation, offsetof(nm::TQS, t)},
                           {"q", TypeId::Quaternion, offsetof(nm::TQS, q)},
                           {"s", TypeId::Float4, offsetof(nm::TQS, s)}};

}  // namespace

std::span<ValueType const> valueTypes() { return kTypes; }

ValueType const& valueType(TypeId id) { return kTypes[static_cast<std::size_t>(id)]; }

ValueType const* findValueType(std::string_view name)
{
    auto const found = std::ranges::find(kTypes, name, &ValueType::name);
    return found != std::end(kTypes) ? found : nullptr;
}

std::span<Part const> partsOfTqs() { return kParts; }

std::optional<Piece> findPiece(ValueType const& type, std::string_view path)
{
    if (path.empty())
        return Piece{&type, 0};
    if (type.isScalar())
        return std::nullopt;
    for (std::size_t lane = 0; lane < type.laneNames.size(); ++lane)
        if (type.laneNames[lane] == path)
            return Piece{&valueType(type.lane), lane * type.laneSize};
    if (type.id == TypeId::TQS)
        for (Part const& part : kParts)
            if (part.name == path)
                return Piece{&valueType(part.type), part.offset};
    return std::nullopt;
}

std::size_t placePort(ValueType const& type, std::size_t& end)
{
    std::size_t const offset = (end + type.alignment - 1) / type.alignment * type.alignment;
    end = offset + type.size;
    return offset;
}

Value neutralValue(ValueType const& type)
{
    Value value;
    value.type = &type;
    auto const one = [&](std::initializer_list<std::size_t> lanes) {
        constexpr float kOne = 1.0f;
        for (std::size_t const lane : lanes)
            std::memcpy(value.bytes.data() + lane * sizeof kOne, &kOne, sizeof kOne);
    };
    if (type.id == TypeId::Quaternion)
        one({3});
    else if (type.id == TypeId::Matrix4x4)
        one({0, 5, 10, 15});
    else if (type.id == TypeId::TQS)
        one({7, 8, 9, 10, 11});
    return value;
}

}  // namespace nodus::host
