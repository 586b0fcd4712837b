// The runtime's functions for C: each in terms of what C++ has.
#include "nodus/runtime.h"

#include "Evaluation.h"
#include "nodus/String.h"
#include "nodus/runtime/CurrentFrame.h"
#include "nodus/runtime/KernelTable.h"
#include "nodus/runtime/LocalServiceTable.h"

#include <new>

using namespace nodus;
using namespace nodus::runtime;

struct NodusServices final : LogService {
    NodusServices(NodusLog* function, void* with) noexcept : log(function), context(with)
    {
        table.log = this;
    }
    void message(char const* text) override
    {
        if (log != nullptr)
            log(context, text);
    }

    NodusLog* log;
    void* context;
    LocalServiceTable table;
};

namespace {

// What a nodus::String holds. The text of a null one is told here, so that this library takes no
// part in the empty string that modules and hosts share.
using Text = std::shared_ptr<std::string>;
static_assert(sizeof(NodusString) == sizeof(Text) && sizeof(String) == sizeof(Text));
static_assert(alignof(NodusString) == alignof(Text) && alignof(String) == alignof(Text));

Text& asText(NodusString* string) { return *reinterpret_cast<Text*>(string); }
Text const& asText(NodusString const* string) { return *reinterpret_cast<Text const*>(string); }

// The names of records end with a NUL.
NodusKernel asKernel(RegisteredKernel const& kernel)
{
    return {kernel.name.data(), kernel.signature.data(),
            reinterpret_cast<void (*)()>(const_cast<void*>(kernel.entry))};
}

}  // namespace

NodusServices* nodusMakeServices(NodusLog* log, void* context) noexcept
{
    return new (std::nothrow) NodusServices(log, context);
}

void nodusReleaseServices(NodusServices* services) noexcept { delete services; }

void nodusSetEvaluation(std::int32_t frame, NodusServices const* services) noexcept
{
    setEvaluation(frame, services != nullptr ? &services->table : nullptr);
}

std::int32_t nodusCurrentFrame() noexcept { return GetCurrentFrame(); }

int nodusFindKernel(char const* name, NodusKernel* kernel) noexcept
{
    auto const found = findKernel(name);
    if (found)
        *kernel = asKernel(*found);
    return found ? 1 : 0;
}

std::size_t nodusWalkKernels(int (*visit)(void* context, NodusKernel const* kernel),
                             void* context) noexcept
try {
    // A copy: the visitor may look kernels up, or load a module.
    std::size_t visited = 0;
    for (RegisteredKernel const& each : registeredKernels()) {
        NodusKernel const kernel = asKernel(each);
        ++visited;
        if (visit(context, &kernel) != 0)
            break;
    }
    return visited;
} catch (std::bad_alloc const&) {
    return 0;
}

int nodusMakeString(NodusString* string, char const* text, std::size_t length) noexcept
try {
    asText(string) = std::make_shared<std::string>(text, length);
    return 1;
} catch (std::exception const&) {  // no memory, or a length that no text can have
    return 0;
}

void nodusShareString(NodusString* to, NodusString const* from) noexcept
{
    asText(to) = asText(from);
}

void nodusReleaseString(NodusString* string) noexcept { asText(string).reset(); }

char const* nodusTextOf(NodusString const* string, std::size_t* length) noexcept
{
    Text const& text = asText(string);
    if (length != nullptr)
        *length = text ? text->size() : 0;
    return text ? text->c_str() : "";
}
