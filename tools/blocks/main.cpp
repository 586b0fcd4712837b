// Writes what hosts in other languages want to know of a module's blocks, from the catalogue.
// usage: nodus_blocks MODULE FOLDER
// writes blocks.h, blocks.hpp and NAME_blocks.json into the folder.
#include "blocks.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/output_file.h"

#include <cstdio>

namespace {

using namespace nodus;

void write(std::string const& path, std::string const& text)
{
    auto file = host::OutputFile::open(path);
    file.write(text);
    file.commit();
}

void writeAll(std::string const& modulePath, std::string const& folder)
{
    host::Module const module(modulePath);
    host::Module const* const modules[] = {&module};
    host::Catalogue const catalogue(modules);
    write(folder + "/blocks.h", blocks::cHeader(catalogue, module.name()));
    write(folder + "/blocks.hpp", blocks::cppHeader(catalogue, module.name()));
    write(folder + "/" + module.name() + "_blocks.json", blocks::json(catalogue, module.name()));
}

}  // namespace

int main(int count, char** arguments)
{
    if (count != 3) {
        std::fputs("usage: nodus_blocks MODULE FOLDER\n", stderr);
        return 2;
    }
    try {
        writeAll(arguments[1], arguments[2]);
        return 0;
    } catch (host::Fault const& fault) {
        for (std::string const& line : fault.lines())
            std::fprintf(stderr, "nodus_blocks: %s\n", line.c_str());
    } catch (std::exception const& error) {
        std::fprintf(stderr, "nodus_blocks: %s\n", error.what());
    }
    return 2;
}
