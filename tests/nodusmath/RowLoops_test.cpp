// Kernels over rows give, row for row, the bits of the kernel called once a row: wherever the ports
// lie, and with the same value in every row.
#include "host/fixtures.h"

#include "checking/digest_inputs.h"
#include "nodus/runtime/CurrentFrame.h"
#include "nodus/runtime/EvaluationScope.h"
#include "nodus/runtime/Rows.h"

#include <dlfcn.h>

#include <cfenv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <new>

using namespace fixtures;
using namespace nodus::runtime;

namespace {

constexpr std::size_t kRows = 1300;  // several tiles, the last one not full
constexpr std::size_t kRoom = 320;   // for any block

struct Log : LogService {
    std::vector<std::string> lines;
    void message(char const* text) override
    {
        lines.push_back(std::to_string(GetCurrentFrame()) + text);
    }
};

// Blocks of one kind, side by side. Strings live in them from the beginning.
class Blocks {
public:
    explicit Blocks(std::vector<Port> const& ports) : m_ports(ports)
    {
        for (std::size_t row = 0; row < kRows; ++row)
            for (Port const& port : ports)
                if (port.type->id == TypeId::String)
                    ::new (at(row) + port.offset) nodus::String();
    }
    ~Blocks()
    {
        for (std::size_t row = 0; row < kRows; ++row)
            for (Port const& port : m_ports)
                if (port.type->id == TypeId::String)
                    text(row, port).~String();
    }
    Blocks(Blocks const&) = delete;
    Blocks& operator=(Blocks const&) = delete;

    std::byte* at(std::size_t row) { return m_bytes.data() + row * kRoom; }
    nodus::String& text(std::size_t row, Port const& port)
    {
        return *std::launder(reinterpret_cast<nodus::String*>(at(row) + port.offset));
    }
    // The value of a port in one row, as bytes; one NaN is as good as another.
    std::string value(std::size_t row, Port const& port)
    {
        if (port.type->id == TypeId::String)
            return static_cast<std::string const&>(text(row, port));
        std::byte* const begin = at(row) + port.offset;
        auto const unify = [&]<typename Real>(Real) {
            for (std::size_t lane = 0; lane < port.type->size; lane += sizeof(Real)) {
                Real number;
                std::memcpy(&number, begin + lane, sizeof number);
                if (std::isnan(number))
                    std::memset(begin + lane, 0xFF, sizeof number);
            }
        };
        if (port.type->lane == TypeId::Float)
            unify(0.0f);
        else if (port.type->lane == TypeId::Double)
            unify(0.0);
        return {reinterpret_cast<char const*>(begin), port.type->size};
    }

private:
    struct alignas(16) Aligned {
        std::byte bytes[16];
    };
    std::vector<Port> const& m_ports;
    std::vector<Aligned> m_memory = std::vector<Aligned>(kRows * kRoom / sizeof(Aligned));
    std::span<std::byte> m_bytes = std::as_writable_bytes(std::span(m_memory));
};

void callRowByRow(NodeType const& type, Blocks& in, Blocks& out, std::int32_t const* frames,
                  LocalServiceTable const& services)
{
    alignas(16) std::byte workspace[kRoom] = {};
    EvaluationScope scope(frames[0], &services);
    if (type.init != nullptr)
        type.init(in.at(0), workspace);
    for (std::size_t row = 0; row < kRows; ++row) {
        scope.setFrame(frames[row]);
        if (type.solve != nullptr)
            type.solve(in.at(row), out.at(row));
        else
            type.solveWithWorkspace(in.at(row), workspace, out.at(row));
    }
}

FindRows library()
{
    catalogue();  // the kernels of which there are rows
    static void* const opened = dlopen(NODUS_TEST_ROWS, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(opened, nullptr) << dlerror();
    return reinterpret_cast<FindRows>(dlsym(opened, "nodusRowsOf"));
}

}  // namespace

TEST(RowLoops, EveryKernelHasItsBitsInEveryRow)
{
    FindRows const rowsOf = library();
    ASSERT_NE(rowsOf, nullptr);
    EXPECT_EQ(rowsOf("NodusAdd_Solve").solve, nullptr);

    for (NodeType const& type : catalogue().nodeTypes()) {
        auto const rows = rowsOf(("Nodus" + type.name + "_Solve").c_str());
        ASSERT_NE(rows.solve, nullptr) << type.name;
        // First the ports as they lie in blocks; then each input in turn with one value in all
        // rows, and in the last round, ports of one lane side by side in arrays of their own.
        for (std::size_t round = 0; round <= type.inputs.size() + 1; ++round) {
            std::size_t const constant = round - 1;
            bool const isDense = round == type.inputs.size() + 1;
            nodus::host::DigestInputs inputs(7, type);
            Blocks in(type.inputs), expected(type.outputs), out(type.outputs);
            std::vector<std::int32_t> frames;
            for (std::size_t row = 0; row < kRows; ++row) {
                inputs.fill(static_cast<int>(row), in.at(row));
                frames.push_back(row % 3 == 0 ? inputs.frame() : static_cast<std::int32_t>(row));
                if (constant < type.inputs.size() && row > 0) {
                    Port const& port = type.inputs[constant];
                    if (port.type->id == TypeId::String)
                        in.text(row, port) = in.text(0, port);
                    else
                        std::memcpy(in.at(row) + port.offset, in.at(0) + port.offset,
                                    port.type->size);
                }
            }

            std::vector<RowsOfPort> ports;
            std::vector<std::vector<std::uint64_t>> dense;
            auto const place = [&](Blocks& blocks, Port const& port) {
                std::size_t const size = port.type->size;
                if (!isDense || !port.type->isScalar() || port.type->id == TypeId::String)
                    return RowsOfPort{blocks.at(0) + port.offset, kRoom};
                auto* const array = reinterpret_cast<std::byte*>(dense.emplace_back(kRows).data());
                for (std::size_t row = 0; row < kRows; ++row)
                    std::memcpy(array + row * size, blocks.at(row) + port.offset, size);
                return RowsOfPort{array, static_cast<std::ptrdiff_t>(size)};
            };
            for (Port const& port : type.inputs)
                ports.push_back(place(in, port));
            if (constant < type.inputs.size())
                ports[constant].stride = 0;
            for (Port const& port : type.outputs)
                ports.push_back(place(out, port));

            Log log, expectedLog;
            LocalServiceTable services, expectedServices;
            services.log = &log;
            expectedServices.log = &expectedLog;
            callRowByRow(type, in, expected, frames.data(), expectedServices);
            {
                EvaluationScope const scope(0, &services);
                rows.solve(kRows, ports.data(), rows.needsFrames ? frames.data() : nullptr);
            }
            EXPECT_EQ(log.lines, expectedLog.lines) << type.name;
            for (std::size_t i = 0; i < type.outputs.size(); ++i) {
                Port const& port = type.outputs[i];
                RowsOfPort const& result = ports[type.inputs.size() + i];
                for (std::size_t row = 0; row < kRows; ++row) {
                    if (result.stride != kRoom)
                        std::memcpy(out.at(row) + port.offset,
                                    static_cast<std::byte*>(result.first) +
                                        static_cast<std::ptrdiff_t>(row) * result.stride,
                                    port.type->size);
                    ASSERT_EQ(out.value(row, port), expected.value(row, port))
                        << type.name << '.' << port.name << " in row " << row << ", round "
                        << round;
                }
            }
        }
    }
}

TEST(RowLoops, TheWayThatARowDoesNotTakeRaisesNoException)
{
    struct Quad {
        float x, y, z, w;
    };
    // By turns on the arc, and on the chord of long ones: no cosine, and a sine of too many turns.
    alignas(16) Quad a[64], b[64], slerped[64];
    float t[64];
    for (std::size_t row = 0; row < 64; ++row) {
        a[row] = row % 2 == 0 ? Quad{1, 0, 0, 0} : Quad{1, 2, 3, 4};
        b[row] = row % 2 == 0 ? Quad{0, 1, 0, 0} : Quad{1, 2, 4, 3};
        t[row] = row % 2 == 0 ? 0.25f : 1e12f;
    }
    RowsOfPort const ports[] = {{a, sizeof *a}, {b, sizeof *b}, {t, sizeof *t}, {slerped, 16}};
    FindRows const rowsOf = library();
    ASSERT_NE(rowsOf, nullptr);
    std::feclearexcept(FE_ALL_EXCEPT);
    rowsOf("NodusSlerp_Quat_Solve").solve(std::size(a), ports, nullptr);
    EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW), 0);
    EXPECT_NEAR(slerped[0].y, 0.3827f, 1e-4f);
    EXPECT_NEAR(slerped[1].w, -0.7071f, 1e-4f);
}
