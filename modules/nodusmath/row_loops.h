// The families' functions over rows: what NODUS_ROWS makes of an entry point's body. The function
// is the kernel's own and is called once a row, in order, so that every row has the kernel's bits.
//
// Rows are taken a tile at a time: ports that do not lie side by side are gathered, results
// scattered, and the loop in between runs over plain arrays, of which compilers make vectors.
// Kernels that log, or have a workspace, are called row by row where their ports lie.
#pragma once

#include "ports.h"

#include "nodus/runtime/EvaluationScope.h"
#include "nodus/runtime/KernelTable.h"
#include "nodus/runtime/LocalServiceTable.h"
#include "nodus/runtime/Rows.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>
#include <utility>

namespace nodusmath {

// What an entry point is handed in the place of its input block.
struct RowsCall {
    char const* kernel;
    std::size_t count;
    nodus::runtime::RowsOfPort const* ports;
    std::int32_t const* frames;
};

// Where a loop has its results: as they are stored, or each of four lanes by itself. Compilers make
// vectors of results whose lanes are computed alike as they lie. Of others they would store every
// lane of every row by itself; kept apart, lanes are put together by shuffles.
enum class Lanes { together, apart };

// Room for the workspace of any node; the caller of an entry point has it.
inline constexpr std::size_t kWorkspaceRoom = 64;

template <typename T>
[[gnu::always_inline]] inline T& inRow(nodus::runtime::RowsOfPort const& port, std::size_t row)
{
    return *reinterpret_cast<T*>(static_cast<std::byte*>(port.first) +
                                 static_cast<std::ptrdiff_t>(row) * port.stride);
}

// Rows of one port, and the tile that stands for them where they do not lie side by side.
template <typename T, std::size_t capacity> class TileOfPort {
public:
    [[gnu::always_inline]] explicit TileOfPort(nodus::runtime::RowsOfPort port) : m_port(port) {}

    // The values of rows begin to begin + count, where a loop can read them.
    [[gnu::always_inline]] T* gathered(std::size_t begin, std::size_t count)
    {
        if (isDense())
            return &inRow<T>(m_port, begin);
        if (m_port.stride != 0)
            for (std::size_t i = 0; i < count; ++i)
                m_tile[i] = inRow<T>(m_port, begin + i);
        else if (begin == 0)
            std::fill_n(m_tile, count, inRow<T>(m_port, 0));
        return m_tile;
    }
    // Where results go, before they are scattered to those rows.
    [[gnu::always_inline]] T* place(std::size_t begin)
    {
        return isDense() ? &inRow<T>(m_port, begin) : m_tile;
    }
    [[gnu::always_inline]] void scatter(std::size_t begin, std::size_t count)
    {
        if (!isDense())
            for (std::size_t i = 0; i < count; ++i)
                inRow<T>(m_port, begin + i) = m_tile[i];
    }

private:
    bool isDense() const { return m_port.stride == sizeof(T); }

    nodus::runtime::RowsOfPort m_port;
    alignas(64) T m_tile[capacity];
};

// A function over rows. Its ports are numbered: the inputs, then the outputs that it takes by
// reference, then the one that it returns.
template <typename Function> struct RowLoop;

template <typename Result, typename... Parameters>
struct RowLoop<Result (*)(Parameters...) noexcept> {
    template <typename Parameter> using Value = std::remove_cvref_t<Parameter>;
    static constexpr std::size_t kInputs = (std::size_t{isInput<Parameters>} + ...);
    static constexpr std::size_t kReferences = (std::size_t{isOutput<Parameters>} + ...);
    static constexpr bool hasWorkspace = kInputs + kReferences < sizeof...(Parameters);
    static constexpr bool logs = (std::is_same_v<Value<Parameters>, String> || ...);
    // What a row sees depends on its frame, and on the rows before it.
    static constexpr bool needsFrames = hasWorkspace || logs;
    static constexpr nodus::runtime::RowsOfKernel kNeeds{nullptr, needsFrames, logs};

    // The number of each parameter's port; the workspace has none.
    static constexpr auto kPorts = [] {
        std::array<std::size_t, sizeof...(Parameters)> ports{};
        std::size_t input = 0, output = kInputs, i = 0;
        ((ports[i++] = isInput<Parameters> ? input++ : isOutput<Parameters> ? output++ : 0), ...);
        return ports;
    }();
    static constexpr auto kAll = std::index_sequence_for<Parameters...>{};

    template <auto function, Lanes lanes = Lanes::together>
    [[gnu::always_inline]] static void solve(RowsCall const& call, void* workspace) noexcept
    {
        if constexpr (needsFrames)
            rowByRow<function>(call, workspace, kAll);
        else
            tileByTile<function, lanes>(call, kAll);
    }

    // By the module's own kernel, a block a row: for functions of what only the module has.
    template <auto function> static void callKernel(RowsCall const& call) noexcept
    {
        callKernel<function>(call, kAll);
    }

private:
    // A few tiles of the largest type fit the first-level cache.
    using Returned = std::conditional_t<std::is_void_v<Result>, Bool, Result>;
    static constexpr std::size_t kLargest =
        std::max({sizeof(Returned), sizeof(Value<Parameters>)...});
    static constexpr std::size_t kTile = std::min(std::size_t{512}, 4096 / kLargest);

    template <typename Parameter>
    [[gnu::always_inline]] static decltype(auto) argument(RowsCall const& call, std::size_t port,
                                                          std::size_t row, void* workspace)
    {
        if constexpr (isInput<Parameter>)
            return static_cast<Value<Parameter> const&>(
                inRow<Value<Parameter>>(call.ports[port], row));
        else if constexpr (isOutput<Parameter>)
            return inRow<Value<Parameter>>(call.ports[port], row);
        else
            return *static_cast<Value<Parameter>*>(workspace);
    }

    template <auto function, std::size_t... index>
    [[gnu::always_inline]] static void rowByRow(RowsCall const& call, void* workspace,
                                                std::index_sequence<index...>) noexcept
    {
        nodus::runtime::EvaluationScope scope(0, nodus::runtime::GetLocalServiceTable());
        for (std::size_t row = 0; row < call.count; ++row) {
            scope.setFrame(call.frames[row]);
            if constexpr (std::is_void_v<Result>)
                function(argument<Parameters>(call, kPorts[index], row, workspace)...);
            else
                inRow<Result>(call.ports[kInputs + kReferences], row) =
                    function(argument<Parameters>(call, kPorts[index], row, workspace)...);
        }
    }

    template <auto function, Lanes lanes, std::size_t... index>
    [[gnu::always_inline]] static void tileByTile(RowsCall const& call,
                                                  std::index_sequence<index...>) noexcept
    {
        std::tuple<TileOfPort<Value<Parameters>, kTile>...> tiles{call.ports[kPorts[index]]...};
        auto const returned = std::is_void_v<Result> ? nodus::runtime::RowsOfPort{nullptr, 1}
                                                     : call.ports[kInputs + kReferences];
        TileOfPort<Returned, kTile> results{returned};
        for (std::size_t begin = 0; begin < call.count; begin += kTile) {
            std::size_t const count = std::min(kTile, call.count - begin);
            // Outputs that a function takes may keep what they held: they are gathered, too.
            if constexpr (lanes == Lanes::together)
                loop<function>(count, results.place(begin),
                               std::get<index>(tiles).gathered(begin, count)...);
            else
                loopApart<function>(count, results.place(begin),
                                    std::get<index>(tiles).gathered(begin, count)...);
            if constexpr (!std::is_void_v<Result>)
                results.scatter(begin, count);
            ((isOutput<Parameters> ? std::get<index>(tiles).scatter(begin, count) : void()), ...);
        }
    }

    // The ports do not overlap, which is what lets this become vectors.
    template <auto function, typename... Values>
    [[gnu::always_inline]] static void loop(std::size_t count, Returned* __restrict results,
                                            Values* __restrict... ports) noexcept
    {
        for (std::size_t i = 0; i < count; ++i)
            if constexpr (std::is_void_v<Result>)
                function(ports[i]...);
            else
                ::new (results + i) Returned(function(ports[i]...));
    }

    template <auto function, typename... Values>
    [[gnu::always_inline]] static void loopApart(std::size_t count, Returned* __restrict results,
                                                 Values* __restrict... ports) noexcept
    {
        alignas(64) float x[kTile], y[kTile], z[kTile], w[kTile];
        for (std::size_t i = 0; i < count; ++i) {
            Returned const result = function(ports[i]...);
            x[i] = result.x, y[i] = result.y, z[i] = result.z, w[i] = result.w;
        }
        for (std::size_t i = 0; i < count; ++i)
            ::new (results + i) Returned{x[i], y[i], z[i], w[i]};
    }

    // Into a block, in the pieces in which a kernel reads it: larger ones that lie across two lines
    // of the cache would have to arrive there first.
    template <typename T> [[gnu::always_inline]] static void copy(T const& from, std::byte* to)
    {
        if constexpr (alignof(T) == kBlockAlignment) {
            using Group [[gnu::may_alias, gnu::vector_size(16)]] = float;
            for (std::size_t group = 0; group < sizeof(T) / sizeof(Group); ++group)
                reinterpret_cast<Group*>(to)[group] = reinterpret_cast<Group const*>(&from)[group];
        } else {
            *reinterpret_cast<T*>(to) = from;
        }
    }

    template <auto function, std::size_t... index>
    static void callKernel(RowsCall const& call, std::index_sequence<index...>) noexcept
    {
        using Kernel = void (*)(void const*, void*);
        using Point = EntryPoint<Result (*)(Parameters...) noexcept>;
        static auto const kernel = reinterpret_cast<Kernel>(
            const_cast<void*>(nodus::runtime::findKernel(call.kernel)->entry));
        alignas(kBlockAlignment) std::byte in[Point::kInputs.back()];
        alignas(kBlockAlignment) Result out;
        auto const& results = call.ports[kInputs];
        for (std::size_t row = 0; row < call.count; ++row) {
            (copy(inRow<Value<Parameters>>(call.ports[index], row), in + Point::kInputs[index + 1]),
             ...);
            if constexpr (alignof(Result) == kBlockAlignment) {
                kernel(in, &inRow<Result>(results, row));
            } else {
                kernel(in, &out);
                inRow<Result>(results, row) = out;
            }
        }
    }
};

// Without rows an entry point tells what it needs.
template <auto function>
[[gnu::always_inline]] inline void solve(void const* rows, void* workspace, void* needs) noexcept
{
    using Loop = RowLoop<decltype(function)>;
    if (rows == nullptr)
        *static_cast<nodus::runtime::RowsOfKernel*>(needs) = Loop::kNeeds;
    else
        Loop::template solve<function>(*static_cast<RowsCall const*>(rows), workspace);
}
template <auto function>
[[gnu::always_inline]] inline void solve(void const* rows, void* needs) noexcept
{
    solve<function>(rows, nullptr, needs);
}
template <auto function>
[[gnu::always_inline]] inline void solveLanesApart(void const* rows, void* needs) noexcept
{
    using Loop = RowLoop<decltype(function)>;
    if (rows == nullptr)
        *static_cast<nodus::runtime::RowsOfKernel*>(needs) = Loop::kNeeds;
    else
        Loop::template solve<function, Lanes::apart>(*static_cast<RowsCall const*>(rows), nullptr);
}
template <auto function> inline void solveByKernel(void const* rows, void* needs) noexcept
{
    using Loop = RowLoop<decltype(function)>;
    if (rows == nullptr)
        *static_cast<nodus::runtime::RowsOfKernel*>(needs) = Loop::kNeeds;
    else
        Loop::template callKernel<function>(*static_cast<RowsCall const*>(rows));
}
// From the first row.
template <auto function>
[[gnu::always_inline]] inline void initialize(void const* rows, void* workspace) noexcept
{
    RowsCall first = *static_cast<RowsCall const*>(rows);
    first.count = 1;
    RowLoop<decltype(function)>::template solve<function>(first, workspace);
}

}  // namespace nodusmath
