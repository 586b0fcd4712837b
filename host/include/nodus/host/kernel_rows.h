// Tests of a module: kernels by rows of values, and its catalogue held against its functions.
#pragma once

#include "nodus/host/catalogue.h"

#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace nodus::host {

struct RowsReport {
    std::size_t rows = 0, calls = 0;
    std::set<std::string> tried;      // node types that a row names
    std::vector<std::string> faults;  // "scalar.txt:12: Sin_Float ...", a line each
};

// Calls kernels as the rows of a file say and adds to the report. A row that cannot be read is a
// fault, never left out. Throws Fault when the file cannot be read.
void tryRows(Catalogue const& catalogue, std::string const& path, RowsReport& report);

// Where the catalogue and the module's functions do not have the same ports, a line each.
// described: the module's sources compiled with NODUS_DESCRIBE_PORTS, as a library whose entry
// points tell their ports. Throws Fault when it cannot be loaded.
std::vector<std::string> portFaults(Catalogue const& catalogue, std::string const& described);

}  // namespace nodus::host
