// CSV to CSV by the least program for the formulas of formulas.json: the file in memory, the
// fastest published parsing and formatting of floats, nothing checked.
//
// usage: bench_minimal TABLE RESULTS
#include <fast_float/fast_float.h>
#include <fmt/compile.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>

int main(int argc, char** argv)
try {
    constexpr std::size_t kBuffer = std::size_t{256} * 1024, kLongestLine = 256;
    if (argc != 3)
        return 2;
    int const in = open(argv[1], O_RDONLY);
    int const out = open(argv[2], O_WRONLY | O_CREAT | O_TRUNC, 0666);
    struct stat status {};
    if (in < 0 || out < 0 || fstat(in, &status) != 0)
        return 1;
    auto const size = static_cast<std::size_t>(status.st_size);
    auto const* const text =
        static_cast<char const*>(mmap(nullptr, size, PROT_READ, MAP_PRIVATE, in, 0));
    if (text == MAP_FAILED)
        return 1;
    char const* const end = text + size;
    auto const behind = [end](char const* at, char what) {
        return static_cast<char const*>(std::memchr(at, what, static_cast<std::size_t>(end - at))) +
               1;
    };
    char const* at = behind(text, '\n');
    auto const number = [&] {
        float value = 0;
        at = fast_float::from_chars(at, end, value).ptr + 1;
        return value;
    };
    static char buffer[kBuffer + kLongestLine];
    char* to = fmt::format_to(buffer, FMT_COMPILE("frame,way.result,bend.result,height.result\n"));
    auto const flush = [&] {
        bool const isWritten = write(out, buffer, static_cast<std::size_t>(to - buffer)) >= 0;
        to = buffer;
        return isWritten;
    };
    for (std::int32_t frame = 0; at < end; ++frame) {
        float const x = number(), y = number(), z = number();
        at = behind(behind(behind(at, ','), ','), ',');
        float const arm = number();
        at = behind(behind(at, ','), ',');
        float const forearm = number();
        at = behind(at, '\n');
        to = fmt::format_to(to, FMT_COMPILE("{},{},{},{}\n"), frame, std::sqrt(x * x + z * z),
                            arm - forearm, y * 0.01f);
        if (to > buffer + kBuffer && !flush())
            return 1;
    }
    return flush() ? 0 : 1;
} catch (std::exception const& error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return 1;
}
