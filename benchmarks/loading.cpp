// What loading the module costs: dlopen and dlclose beside those of a library that needs the same
// libraries and holds nothing, and the relocations that the loader has to make.
//
// usage: nodusmath_loading MODULE EMPTY_LIBRARY [Google Benchmark's options]
#include <benchmark/benchmark.h>

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <cstdio>
#include <string>

namespace {

struct Relocations {
    double relative = 0, symbolic = 0;
};

Relocations relocationsOf(std::string const& file)
{
    Relocations result;
    void* const library = dlopen(file.c_str(), RTLD_NOW);
    link_map* map = nullptr;
    if (library == nullptr || dlinfo(library, RTLD_DI_LINKMAP, &map) != 0)
        return result;
    double all = 0;
    for (ElfW(Dyn) const* entry = map->l_ld; entry->d_tag != DT_NULL; ++entry) {
        if (entry->d_tag == DT_RELASZ || entry->d_tag == DT_PLTRELSZ)
            all += static_cast<double>(entry->d_un.d_val / sizeof(ElfW(Rela)));
        if (entry->d_tag == DT_RELACOUNT)
            result.relative = static_cast<double>(entry->d_un.d_val);
    }
    result.symbolic = all - result.relative;
    dlclose(library);
    return result;
}

void load(benchmark::State& state, std::string const& file)
{
    for (auto _ : state) {
        void* const library = dlopen(file.c_str(), RTLD_NOW);
        if (library == nullptr) {
            state.SkipWithError(dlerror());
            return;
        }
        dlclose(library);
    }
}

void registerLoading(char const* name, std::string const& file)
{
    Relocations const relocations = relocationsOf(file);
    benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
        load(state, file);
        state.counters["calls"] = 1;
        state.counters["relative_relocations"] = relocations.relative;
        state.counters["symbolic_relocations"] = relocations.symbolic;
    })->Unit(benchmark::kMicrosecond);
}

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: nodusmath_loading MODULE EMPTY_LIBRARY [--benchmark_...]\n");
        return 2;
    }
    registerLoading("loading/module", argv[1]);
    registerLoading("loading/empty", argv[2]);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
