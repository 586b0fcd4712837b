// The catalogue cannot drift from the module: the ports of every kernel are held against what was
// compiled.
#include "host/fixtures.h"

#include "nodus/host/kernel_rows.h"

using namespace fixtures;

// The module's sources, built once more so that each entry point tells its ports.
TEST(Catalogue, PortTypesAreThoseOfTheCompiledFunctions)
{
    EXPECT_EQ(joined(portFaults(catalogue(), DESCRIBED_FILE)), "");
}
