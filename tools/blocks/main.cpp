// Writes what hosts in other languages want to know of a module's blocks, from the catalogue.
// usage: nodus_blocks MODULE FOLDER
// writes blocks.h, blocks.hpp and NAME_blocks.json into the folder.
#include "blocks.h"

#include "files/program.h"
#include "nodus/host/output_file.h"

#include <cstdio>

namespace {

using namespace nodus;

void writeAll(std::string const& modulePath, std::string const& folder)
{
    host::Module const module(modulePath);
    host::Module const* const modules[] = {&module};
    host::Catalogue const catalogue(modules);
    host::writeFile(folder + "/blocks.h", blocks::cHeader(catalogue, module.name()));
    host::writeFile(folder + "/blocks.hpp", blocks::cppHeader(catalogue, module.name()));
    host::writeFile(folder + "/" + module.name() + "_blocks.json",
                    blocks::json(catalogue, module.name()));
}

}  // namespace

int main(int count, char** arguments)
{
    if (count != 3) {
        std::fputs("usage: nodus_blocks MODULE FOLDER\n", stderr);
        return 2;
    }
    return host::statusOf("nodus_blocks", [&] { writeAll(arguments[1], arguments[2]); });
}
