// nodus::String: the value of a String port, a shared reference to an immutable host string.
#pragma once

#include "nodus/Export.h"
#include "nodus/StringAbi.h"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

namespace nodus {

// Two words: the string, and the record that shares its ownership. Copying shares the string and
// never its characters; the counts are the GNU library's, so copies may be made on any thread as
// long as each thread writes a String of its own. The string may not be changed once it is shared.
class NODUS_API String {
public:
    // The null reference; reads as the empty string.
    String() = default;
    explicit String(std::shared_ptr<std::string> text) noexcept : m_text(std::move(text)) {}
    explicit String(std::string text) : m_text(std::make_shared<std::string>(std::move(text))) {}

    // The text; lives as long as some String refers to it. Any thread may call this.
    operator std::string const&() const
    {
        if (m_text)
            return *m_text;
        // Inline and of default visibility: every library that reads a null String meets this one.
        static std::string s_Empty;
        return s_Empty;
    }

private:
    // As large where addresses are smaller: ports lie alike everywhere.
    template <std::size_t size, typename = void> struct Rest {
        unsigned char bytes[size];
    };
    template <typename Any> struct Rest<0, Any> {
    };

    alignas(8) std::shared_ptr<std::string> m_text;
    [[no_unique_address, maybe_unused]] Rest<16 - sizeof(std::shared_ptr<std::string>)> m_rest;
};

static_assert(sizeof(String) == 16 && alignof(String) == 8);

}  // namespace nodus
