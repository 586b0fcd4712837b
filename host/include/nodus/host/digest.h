// Digests: what the kernels of a family answer to a fixed set of inputs, in one number.
#pragma once

#include "nodus/host/catalogue.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::host {

// 64-bit FNV-1a (Fowler, Noll and Vo): exclusive or with each byte, then a product with the prime.
class Fnv1a {
public:
    void add(void const* bytes, std::size_t count);
    void add(std::string_view text) { add(text.data(), text.size()); }
    std::uint64_t value() const { return m_value; }

private:
    std::uint64_t m_value = 0xCBF29CE484222325u;
};

struct FamilyDigest {
    Family const* family;
    std::string
        group;  // what the bits depend on, "libm" or "estimate" for one; "exact" when on nothing
    std::uint64_t digest;
};

inline constexpr int kDigestCalls = 4096;  // of each kernel

// In the order of the catalogue. Inputs depend on the seed, the name of the kernel and the types of
// its ports alone. Outputs, and the messages of kernels that log, are taken as they are, except
// that one NaN is as good as another, in a message too: the sign and the payload of a computed one
// are not promised.
//
// Calls srand(1) first, so that noise whose tables are not filled yet is that of a fresh process.
std::vector<FamilyDigest> digestFamilies(Catalogue const& catalogue, std::uint32_t seed);

// The same as text: a line for each family, then for each group and for all.
std::string digestReport(Catalogue const& catalogue, std::uint32_t seed);

}  // namespace nodus::host
