// A host that loads the module: finds kernels by name, and hears what a logging kernel says.
#include <nodus/String.h>
#include <nodus/runtime/EvaluationScope.h>
#include <nodus/runtime/KernelTable.h>

#include <cstdio>
#include <dlfcn.h>

using nodus::String;
using namespace nodus::runtime;

namespace {

class Printer : public LogService {
public:
    void message(char const* text) override { std::puts(text); }
};

}  // namespace

int main(int, char** arguments)
{
    void* const module = dlopen(arguments[1], RTLD_NOW);
    if (module == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    auto const kernel = findKernel("NodusLogValueString_Solve");
    if (!kernel)
        return 1;

    Printer printer;
    LocalServiceTable services;
    services.log = &printer;
    {
        struct alignas(16) Inputs {
            String value, prefix;
        } const in{String("three"), String("value: ")};
        struct alignas(16) Outputs {
            String result;
        } out;
        EvaluationScope const scope(12, &services);
        reinterpret_cast<void (*)(void const*, void*)>(const_cast<void*>(kernel->entry))(&in, &out);
        std::string const& result = out.result;
        std::printf("%s, shared: %s\n", result.c_str(),
                    &result == &static_cast<std::string const&>(in.value) ? "yes" : "no");
    }
    dlclose(module);
    std::printf("kernels left: %zu\n", registeredKernels().size());
}
