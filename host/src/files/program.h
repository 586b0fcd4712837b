// Programs that write files for a build.
#pragma once

#include "nodus/host/diagnostics.h"

#include <cstdio>

namespace nodus::host {

// The exit status of the work: 0, or 2 when something was thrown, which is told on standard error.
template <typename Work> int statusOf(char const* program, Work const& work)
{
    try {
        work();
        return 0;
    } catch (Fault const& fault) {
        for (std::string const& line : fault.lines())
            std::fprintf(stderr, "%s: %s\n", program, line.c_str());
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s: %s\n", program, error.what());
    }
    return 2;
}

}  // namespace nodus::host
