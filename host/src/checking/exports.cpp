// Section headers to symbols; whatever the file says of itself is held against its size.
#include "exports.h"

#include <elf.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>

namespace nodus::host {

namespace {

template <typename T> std::optional<T> at(std::string const& file, std::uint64_t offset)
{
    T value;
    if (offset > file.size() || file.size() - offset < sizeof value)
        return std::nullopt;
    std::memcpy(&value, file.data() + offset, sizeof value);
    return value;
}

std::optional<Elf64_Shdr> section(std::string const& file, Elf64_Ehdr const& header,
                                  std::uint64_t index)
{
    return at<Elf64_Shdr>(file, header.e_shoff + index * sizeof(Elf64_Shdr));
}

std::string_view textAt(std::string const& file, std::uint64_t offset)
{
    return offset < file.size() ? std::string_view(file.c_str() + offset) : std::string_view();
}

bool isKernel(std::string_view name)
{
    return name.starts_with("Nodus") && (name.ends_with("_Solve") || name.ends_with("_Init"));
}

}  // namespace

std::vector<std::string> exportedKernels(std::string const& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::string const file(std::istreambuf_iterator<char>(stream), {});
    std::vector<std::string> names;
    auto const header = at<Elf64_Ehdr>(file, 0);
    for (std::uint64_t i = 0; header && i < header->e_shnum; ++i) {
        auto const symbols = section(file, *header, i);
        if (!symbols || symbols->sh_type != SHT_DYNSYM)
            continue;
        auto const strings = section(file, *header, symbols->sh_link);
        for (std::uint64_t offset = 0; strings && offset < symbols->sh_size;
             offset += sizeof(Elf64_Sym)) {
            auto const symbol = at<Elf64_Sym>(file, symbols->sh_offset + offset);
            if (!symbol)
                break;
            std::string_view const name = textAt(file, strings->sh_offset + symbol->st_name);
            if (symbol->st_shndx != SHN_UNDEF && ELF64_ST_TYPE(symbol->st_info) == STT_FUNC &&
                isKernel(name))
                names.emplace_back(name);
        }
    }
    return names;
}

}  // namespace nodus::host
