// What loading the module costs: dlopen and dlclose beside those of a library that needs the same
// libraries and holds nothing.
//
// usage: bench_loading MODULE EMPTY_LIBRARY [Google Benchmark's options]
#include "measure.h"

#include <dlfcn.h>

#include <stdexcept>

void nodus::bench::benchmarks(Arguments const& arguments)
{
    auto const load = [](char const* file) {
        return [file] {
            void* const library = dlopen(file, RTLD_NOW);
            if (library == nullptr)
                throw std::runtime_error(dlerror());
            dlclose(library);
        };
    };
    add("loading/module/time", {load(arguments.at(0))}, {.beside = "loading/empty/time"});
    add("loading/empty/time", {load(arguments.at(1))});
    measure();
}
