// Prints the sizes and offsets of everything that module and host exchange, a line each.
// usage: layout MODULE
#include "nodus/String.h"
#include "nodus/host/catalogue.h"
#include "nodus/host/diagnostics.h"
#include "nodus/runtime/LocalServiceTable.h"
#include "nodus/runtime/NodusAutoSymbol.h"

#include <cstdio>
#include <cstring>

using namespace nodus;

namespace {

// The place of a virtual function in its table: as a member pointer holds it, plus one.
template <typename Member> std::size_t entryOf(Member member)
{
    std::size_t place;
    std::memcpy(&place, &member, sizeof place);
    return place / sizeof(void*);
}

void printBlock(char const* what, std::vector<host::Port> const& ports, std::size_t extent)
{
    std::printf("%s %zu:", what, extent);
    for (host::Port const& port : ports)
        std::printf(" %zu %s %s", port.offset, port.type->name.data(), port.name.c_str());
}

}  // namespace

int main(int count, char** arguments)
{
    if (count != 2)
        return std::fputs("usage: layout MODULE\n", stderr), 2;
    std::printf("# Objects of the host: size and alignment.\n"
                "NodusAutoSymbol %zu %zu\nLocalServiceTable %zu %zu, log at %zu\n"
                "LogService, message is entry %zu of its table\n",
                sizeof(runtime::NodusAutoSymbol), alignof(runtime::NodusAutoSymbol),
                sizeof(runtime::LocalServiceTable), alignof(runtime::LocalServiceTable),
                offsetof(runtime::LocalServiceTable, log), entryOf(&runtime::LogService::message));

    std::puts("\n# Values: size and alignment, the lanes' size and number.");
    for (host::ValueType const& type : host::valueTypes())
        std::printf("%s %zu %zu, %zu x %zu\n", type.name.data(), type.size, type.alignment,
                    type.laneSize, type.laneNames.size());

    std::puts("\n# Blocks: the extent, then offset, type and name of each port.");
    try {
        host::Module const module(arguments[1]);
        host::Module const* const modules[] = {&module};
        host::Catalogue const catalogue(modules);
        for (host::NodeType const& type : catalogue.nodeTypes()) {
            std::printf("%s, ", type.name.c_str());
            printBlock("in", type.inputs, type.inputExtent);
            if (!type.workspace.empty())
                printBlock(", workspace", type.workspace, type.workspaceExtent);
            printBlock(", out", type.outputs, type.outputExtent);
            std::puts("");
        }
    } catch (host::Fault const& fault) {
        return std::fprintf(stderr, "%s\n", fault.what()), 1;
    }
}
