// The entry point that libFuzzer calls, for one of the targets.
#include "targets.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size)
{
    fuzz::NODUS_FUZZ_TARGET({reinterpret_cast<char const*>(bytes), size});
    return 0;
}
