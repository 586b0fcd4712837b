// The catalogue cannot drift from the module: names, order, ports and block extents of every kernel
// are held against what was compiled.
#include "values.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <vector>

using namespace nodusmath;
using nlohmann::json;

namespace {

struct Listed {
    std::string name;
    std::size_t pointers;
};
std::vector<Listed> const kListed = {
#define NODUS_KERNEL(name) {#name, 2},
#define NODUS_GENERATOR(name) {#name, 3},
#include "kernels.def"
#undef NODUS_KERNEL
#undef NODUS_GENERATOR
};

struct Shape {
    std::size_t size, alignment;
};
template <typename... Types> std::map<std::string, Shape> shapesOf()
{
    return {{typeName<Types>, {sizeof(Types), alignof(Types)}}...};
}
std::map<std::string, Shape> const kShapes =
    shapesOf<Bool, UInt8, Int32, UInt32, Float, Double, Float2, Float3, Float4, Color, Quaternion,
             Translation, Matrix4x4, Mat44Float, TQS, String>();

// One kernel as the catalogue has it.
struct Described {
    std::string name;
    std::vector<std::string> inputs, outputs;
    std::vector<json> defaults;
    bool hasWorkspace = false;

    std::string ports(bool withOutputs = true) const
    {
        auto const joined = [](std::vector<std::string> const& names) {
            std::string text;
            for (std::string const& port : names)
                text += (text.empty() ? "" : ", ") + port;
            return text;
        };
        return joined(inputs) + " -> " + (withOutputs ? joined(outputs) : "");
    }
};

std::vector<Described> describedKernels(json const& catalogue)
{
    std::vector<Described> kernels;
    for (json const& family : catalogue.at("families")) {
        json const types = family.value("types", json::array({""}));
        for (std::string const type : types) {
            Described kernel;
            std::string const own = type == "Quat" ? "Quaternion" : type;
            auto const portTypes = [&](char const* side, std::vector<std::string>& list) {
                for (json const& port : family.at(side)) {
                    json const notFor = port.value("notFor", json::array());
                    if (std::find(notFor.begin(), notFor.end(), type) != notFor.end())
                        continue;
                    std::string portType = port.at("type");
                    portType = port.value("typeFor", json::object()).value(type, portType);
                    list.push_back(portType == "T" ? own : portType);
                    if (&list == &kernel.inputs)
                        kernel.defaults.push_back(port.value("default", json()));
                }
            };
            portTypes("inputs", kernel.inputs);
            portTypes("outputs", kernel.outputs);
            kernel.hasWorkspace = family.contains("workspace");
            kernel.name = "Nodus" + std::string(family.at("name"));
            if (!type.empty())
                kernel.name += family.value("separator", "_") + type;
            kernel.name += kernel.hasWorkspace ? "_Init" : "_Solve";
            kernels.push_back(kernel);
            if (kernel.hasWorkspace) {
                kernel.name.replace(kernel.name.size() - 4, 4, "Solve");
                kernels.push_back(kernel);
            }
        }
    }
    return kernels;
}

std::vector<std::size_t> offsetsOf(std::vector<std::string> const& ports)
{
    std::vector<std::size_t> offsets;
    std::size_t end = 0;
    for (std::string const& port : ports) {
        Shape const shape = kShapes.at(port);
        offsets.push_back((end + shape.alignment - 1) / shape.alignment * shape.alignment);
        end = offsets.back() + shape.size;
    }
    offsets.push_back(end);
    return offsets;
}

// The bytes of an output block that the kernel writes, found by calling it over two fillings.
std::vector<bool> writtenBytes(Described const& kernel, void* entry, std::size_t blockSize)
{
    alignas(16) std::byte in[512] = {}, workspace[64] = {};
    auto const offsets = offsetsOf(kernel.inputs);
    for (std::size_t port = 0; port < kernel.inputs.size(); ++port) {
        if (!kernel.defaults[port].is_number())
            continue;
        if (kernel.inputs[port] == "Float") {
            float const value = kernel.defaults[port];
            std::memcpy(in + offsets[port], &value, sizeof value);
        } else if (kernel.inputs[port] == "Double") {
            double const value = kernel.defaults[port];
            std::memcpy(in + offsets[port], &value, sizeof value);
        }
    }
    // A String result is assigned over what is there, which must be a valid reference: null.
    std::size_t const stringBytes = kernel.outputs[0] == "String" ? sizeof(String) : 0;
    alignas(16) std::byte out[2][512];
    for (int const filling : {0, 1}) {
        std::memset(out[filling], filling * 0xFF, sizeof out[filling]);
        std::memset(out[filling], 0, stringBytes);
        if (kernel.hasWorkspace)
            reinterpret_cast<void (*)(void const*, void*, void*)>(entry)(in, workspace,
                                                                         out[filling]);
        else
            reinterpret_cast<void (*)(void const*, void*)>(entry)(in, out[filling]);
    }
    std::vector<bool> written(blockSize);
    for (std::size_t byte = 0; byte < blockSize; ++byte)
        written[byte] = out[0][byte] == out[1][byte];
    return written;
}

}  // namespace

class Catalogue : public testing::Test {
protected:
    Catalogue() : m_json(json::parse(std::ifstream(CATALOGUE_FILE))) {}
    json m_json;
};

TEST_F(Catalogue, NamesEveryKernelInTheOrderOfTheList)
{
    std::vector<std::string> listed, described;
    for (Listed const& kernel : kListed)
        listed.push_back(kernel.name);
    for (Described const& kernel : describedKernels(m_json))
        described.push_back(kernel.name);
    EXPECT_EQ(described, listed);
    EXPECT_EQ(m_json.at("module"), "nodusmath");
}

// The module's sources, built once more so that each entry point tells its ports.
TEST_F(Catalogue, PortTypesAreThoseOfTheCompiledFunctions)
{
    void* const library = dlopen(DESCRIBED_FILE, RTLD_NOW);
    ASSERT_NE(library, nullptr) << dlerror();
    for (Described const& kernel : describedKernels(m_json)) {
        void* const entry = dlsym(library, kernel.name.c_str());
        ASSERT_NE(entry, nullptr) << kernel.name;
        std::string ports;
        bool const isInit = kernel.name.ends_with("_Init");
        if (kernel.hasWorkspace && !isInit)
            reinterpret_cast<void (*)(void const*, void*, void*)>(entry)(nullptr, nullptr, &ports);
        else
            reinterpret_cast<void (*)(void const*, void*)>(entry)(nullptr, &ports);
        EXPECT_EQ(kernel.ports(!isInit), ports) << kernel.name;
    }
    dlclose(library);
}

TEST_F(Catalogue, OutputBlocksEndWhereTheModuleStopsWriting)
{
    void* const library = dlopen(NODUSMATH_FILE, RTLD_NOW);
    ASSERT_NE(library, nullptr) << dlerror();
    for (Described const& kernel : describedKernels(m_json)) {
        if (kernel.name.ends_with("_Init"))
            continue;
        auto const offsets = offsetsOf(kernel.outputs);
        std::size_t const blockSize = offsets.back() + 64;
        std::vector<bool> expected(blockSize, false);
        for (std::size_t port = 0; port < kernel.outputs.size(); ++port)
            for (std::size_t byte = 0; byte < kShapes.at(kernel.outputs[port]).size; ++byte)
                expected[offsets[port] + byte] = true;
        EXPECT_EQ(writtenBytes(kernel, dlsym(library, kernel.name.c_str()), blockSize), expected)
            << kernel.name;
    }
    dlclose(library);
}

TEST_F(Catalogue, EveryFamilyIsDocumented)
{
    for (json const& family : m_json.at("families")) {
        std::string const name = family.at("name");
        EXPECT_GT(family.value("doc", "").size(), 4u) << name;
        EXPECT_FALSE(family.value("group", "").empty()) << name;
        for (json const& port : family.at("inputs")) {
            bool const isAngle = std::string(port.at("name")).starts_with("angle");
            EXPECT_TRUE(!isAngle || port.value("unit", "") == "rad") << name;
        }
    }
}
