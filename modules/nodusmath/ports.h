// The binary contract: how the ports of a node lie in its blocks, and how a plain function of port
// values becomes a kernel's entry point.
//
// A block is the node's ports in order, each at the next multiple of its alignment. Every block
// starts at a multiple of 16 and ends where its last port ends: what lies between and behind the
// ports belongs to the host and is neither read nor written. Blocks never overlap.
#pragma once

#include "values.h"

#include <array>
#include <cstddef>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

namespace nodusmath {

inline constexpr std::size_t kBlockAlignment = 16;

// The packing rule. The last entry is the extent of the block: where its last port ends.
struct PortShape {
    std::size_t size, alignment;
};

template <std::size_t count>
constexpr std::array<std::size_t, count + 1> packed(std::array<PortShape, count> const& ports)
{
    std::array<std::size_t, count + 1> offsets{};
    std::size_t end = 0;
    for (std::size_t port = 0; port < count; ++port) {
        std::size_t const alignment = ports[port].alignment;
        offsets[port] = (end + alignment - 1) / alignment * alignment;
        end = offsets[port] + ports[port].size;
    }
    offsets[count] = end;
    return offsets;
}

template <typename... Ports>
inline constexpr auto packedOffsets = packed(std::array<PortShape, sizeof...(Ports)>{
    PortShape{sizeof(Ports), alignof(Ports)}...});

template <std::size_t port, typename... Ports>
inline constexpr std::size_t offsetOfPort = packedOffsets<Ports...>[port];

template <typename... Ports>
inline constexpr std::size_t blockExtent = packedOffsets<Ports...>[sizeof...(Ports)];

static_assert(offsetOfPort<1, Float, Float> == 4);
static_assert(offsetOfPort<2, UInt8, UInt8, UInt8> == 2);
static_assert(offsetOfPort<2, Float3, Float3, Float3> == 24);
static_assert(offsetOfPort<1, Float3, Float> == 12);
static_assert(offsetOfPort<1, Float3, Quaternion> == 16);
static_assert(offsetOfPort<1, Float4, Float> == 16);
static_assert(offsetOfPort<2, Matrix4x4, Matrix4x4, Float> == 128);
static_assert(offsetOfPort<2, Int32, Int32, Float4, Float> == 16);
static_assert(offsetOfPort<3, Int32, Int32, Float4, Float> == 32);
static_assert(offsetOfPort<2, Int32, Int32, Color, Float> == 8);
static_assert(offsetOfPort<3, Int32, Int32, Color, Float> == 24);
static_assert(offsetOfPort<3, Int32, Int32, UInt8, Float> == 12);
static_assert(offsetOfPort<1, Bool, String> == 8);
static_assert(offsetOfPort<1, Float3, String> == 16);
static_assert(offsetOfPort<1, TQS, String> == 48);
static_assert(offsetOfPort<1, Float4, TQS> == 16);
static_assert(offsetOfPort<1, Double, Double> == 8);
static_assert(blockExtent<Float3, Quaternion> == 32 && blockExtent<Float4, Float> == 20);

// What a parameter of a kernel's function stands for: a value or a constant reference is an input
// port, a reference to a port type an output port, any other reference the node's workspace.
template <typename Parameter>
inline constexpr bool isInput =
    !std::is_lvalue_reference_v<Parameter> || std::is_const_v<std::remove_reference_t<Parameter>>;
template <typename Parameter>
inline constexpr bool isOutput = !isInput<Parameter> && PortValue<std::remove_cvref_t<Parameter>>;

template <bool isPort, typename Parameter>
inline constexpr PortShape shapeIf = isPort ? PortShape{sizeof(std::remove_reference_t<Parameter>),
                                                        alignof(std::remove_reference_t<Parameter>)}
                                            : PortShape{0, 1};

// The two output ports of a function that returns a structure of two values.
template <typename Result> [[gnu::always_inline]] inline auto twoPorts(Result const& result)
{
    auto const& [first, second] = result;
    return std::pair(first, second);
}

template <typename Port> [[gnu::always_inline]] inline Port& portAt(void* block, std::size_t offset)
{
    // Alignment is told only where it is needed and the type does not tell it: clang++ would fetch
    // a byte port with all the bytes behind it, up to the aligned word.
    if constexpr (std::is_same_v<std::remove_const_t<Port>, Color>)
        block = __builtin_assume_aligned(block, kBlockAlignment);
    return *reinterpret_cast<Port*>(static_cast<std::byte*>(block) + offset);
}

template <typename Function> struct EntryPoint;

template <typename Result, typename... Parameters>
struct EntryPoint<Result (*)(Parameters...) noexcept> {
    static constexpr auto kInputs =
        packed(std::array{PortShape{0, 1}, shapeIf<isInput<Parameters>, Parameters>...});
    static constexpr auto kOutputs =
        packed(std::array{PortShape{0, 1}, shapeIf<isOutput<Parameters>, Parameters>...});

    template <typename Parameter>
    [[gnu::always_inline]] static decltype(auto) argument(std::size_t index, void const* in,
                                                          void* workspace, void* out)
    {
        using Value = std::remove_cvref_t<Parameter>;
        if constexpr (isInput<Parameter>)
            return static_cast<Value const&>(
                portAt<Value const>(const_cast<void*>(in), kInputs[index]));
        else if constexpr (isOutput<Parameter>)
            return portAt<Value>(out, kOutputs[index]);
        else
            return *static_cast<Value*>(workspace);
    }

    template <auto function>
    [[gnu::always_inline]] static void solve(void const* in, void* workspace, void* out) noexcept
    {
        [&]<std::size_t... index>(std::index_sequence<index...>) __attribute__((always_inline))
        {
            if constexpr (std::is_void_v<Result>) {
                function(argument<Parameters>(index + 1, in, workspace, out)...);
            } else if constexpr (PortValue<Result>) {
                // In place: the result is never built elsewhere and copied.
                ::new (__builtin_assume_aligned(out, kBlockAlignment))
                    Result(function(argument<Parameters>(index + 1, in, workspace, out)...));
            } else {
                auto const [first, second] =
                    twoPorts(function(argument<Parameters>(index + 1, in, workspace, out)...));
                using First = std::remove_cv_t<decltype(first)>;
                using Second = std::remove_cv_t<decltype(second)>;
                portAt<First>(out, 0) = first;
                portAt<Second>(out, offsetOfPort<1, First, Second>) = second;
            }
        }
        (std::index_sequence_for<Parameters...>{});
    }

    // The ports in words: "Float3, Quaternion -> Float3".
    static std::string describe()
    {
        std::string inputs, outputs;
        auto const list = [](std::string& names, std::string const& name) {
            names += (names.empty() ? "" : ", ") + name;
        };
        (list(isInput<Parameters> ? inputs : outputs, typeName<std::remove_cvref_t<Parameters>>),
         ...);
        if constexpr (PortValue<Result>) {
            list(outputs, typeName<Result>);
        } else if constexpr (!std::is_void_v<Result>) {
            using Two = decltype(twoPorts(std::declval<Result>()));
            list(outputs, typeName<typename Two::first_type>);
            list(outputs, typeName<typename Two::second_type>);
        }
        return inputs + " -> " + outputs;
    }
};

// The body of a kernel: calls function with the ports of its blocks. The function's parameters are
// the ports in block order; its result is the output port, a structure of two the two output ports.
// A function that may leave outputs untouched, or assigns shared ones, takes them by reference.
#if !defined(NODUS_DESCRIBE_PORTS) && !defined(NODUS_ROWS)
template <auto function>
[[gnu::always_inline]] inline void solve(void const* in, void* out) noexcept
{
    EntryPoint<decltype(function)>::template solve<function>(in, nullptr, out);
}
template <auto function>
[[gnu::always_inline]] inline void solve(void const* in, void* workspace, void* out) noexcept
{
    EntryPoint<decltype(function)>::template solve<function>(in, workspace, out);
}
template <auto function>
[[gnu::always_inline]] inline void initialize(void const* in, void* workspace) noexcept
{
    EntryPoint<decltype(function)>::template solve<function>(in, workspace, nullptr);
}
#elif defined(NODUS_DESCRIBE_PORTS)
// The same sources, built once more so that the catalogue can be held against the functions
// themselves: every entry point writes its ports in words to a std::string.
template <auto function> void solve(void const*, void* text)
{
    *static_cast<std::string*>(text) = EntryPoint<decltype(function)>::describe();
}
template <auto function> void solve(void const*, void*, void* text)
{
    *static_cast<std::string*>(text) = EntryPoint<decltype(function)>::describe();
}
template <auto function> void initialize(void const*, void* text)
{
    *static_cast<std::string*>(text) = EntryPoint<decltype(function)>::describe();
}
#endif

#ifndef NODUS_ROWS
// For functions of which loops over rows make no vectors, since rows go different ways or are too
// large, or of what only the module has: over rows, its kernel serves as well.
template <auto function>
[[gnu::always_inline]] inline void solveByKernel(void const* in, void* out) noexcept
{
    solve<function>(in, out);
}
// For functions that do not compute all of their result's four lanes alike: over rows, each lane
// has an array of its own until the end.
template <auto function>
[[gnu::always_inline]] inline void solveLanesApart(void const* in, void* out) noexcept
{
    solve<function>(in, out);
}
#endif

}  // namespace nodusmath

// And once more for kernels over rows.
#ifdef NODUS_ROWS
#include "row_loops.h"
#endif
