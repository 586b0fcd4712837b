// What nodus_kernels.wasm has beside the kernels: the frame and the log that they ask for, a place
// for blocks, and the texts of String ports. Calling a kernel takes no memory; making a text does.
#include "nodus/String.h"
#include "nodus/runtime/EvaluationScope.h"

#include <cstdlib>
#include <memory>

namespace {

// The outside's, with the address of a text that ends with NUL.
extern "C" __attribute__((import_module("nodus"), import_name("log"))) void
sendToOutside(char const* text);

class OutsideLog : public nodus::runtime::LogService {
public:
    void message(char const* text) override { sendToOutside(text); }
};

OutsideLog g_log;
nodus::runtime::LocalServiceTable const g_services{{}, &g_log};
nodus::runtime::EvaluationScope g_scope(0, &g_services);

// More than the blocks of any kernel, texts among them.
alignas(16) std::byte g_blocks[64 * 1024];

}  // namespace

extern "C" {

std::byte* nodus_blocks() { return g_blocks; }
std::size_t nodus_blocksSize() { return sizeof g_blocks; }

void nodus_setFrame(std::int32_t frame) { g_scope.setFrame(frame); }

// Which numbers noise draws its tables from, when it is called for the first time.
void nodus_seed(unsigned seed) { std::srand(seed); }

// A String port: from characters that malloc gave, and back. Each that was made is dropped.
void nodus_makeText(nodus::String* port, char const* text, std::size_t size)
{
    ::new (port) nodus::String(std::string(text, size));
}
void nodus_dropText(nodus::String* port) { std::destroy_at(port); }
char const* nodus_textOf(nodus::String const* port)
{
    return static_cast<std::string const&>(*port).c_str();
}
std::size_t nodus_textSize(nodus::String const* port)
{
    return static_cast<std::string const&>(*port).size();
}

}  // extern "C"
