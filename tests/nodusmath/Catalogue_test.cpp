// The catalogue cannot drift from the module: the ports of every kernel are held against what was
// compiled.
#include "host/fixtures.h"

#include <dlfcn.h>

using namespace fixtures;

namespace {

std::string typesOf(std::vector<Port> const& ports)
{
    std::string text;
    for (Port const& port : ports)
        text += (text.empty() ? "" : ", ") + std::string(port.type->name);
    return text;
}

}  // namespace

// The module's sources, built once more so that each entry point tells its ports.
TEST(Catalogue, PortTypesAreThoseOfTheCompiledFunctions)
{
    void* const library = dlopen(DESCRIBED_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    for (NodeType const& type : catalogue().nodeTypes()) {
        auto const told = [&](char const* suffix, auto function, auto... unused) {
            std::string ports;
            void* const entry = dlsym(library, ("Nodus" + type.name + suffix).c_str());
            EXPECT_NE(entry, nullptr) << type.name;
            if (entry != nullptr)
                reinterpret_cast<decltype(function)>(entry)(nullptr, unused..., &ports);
            return ports;
        };
        std::string const inputs = typesOf(type.inputs) + " -> ", outputs = typesOf(type.outputs);
        if (type.init == nullptr) {
            EXPECT_EQ(told("_Solve", type.solve), inputs + outputs) << type.name;
        } else {
            EXPECT_EQ(told("_Init", type.init), inputs) << type.name;
            EXPECT_EQ(told("_Solve", type.solveWithWorkspace, nullptr), inputs + outputs)
                << type.name;
        }
    }
    dlclose(library);
}
