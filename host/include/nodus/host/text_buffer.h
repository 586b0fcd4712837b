// A growing stretch of text that is filled, written and filled again without giving memory back.
#pragma once

#include "nodus/host/shortest.h"

#include <charconv>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <type_traits>

namespace nodus::host {

// Not for more than one thread at a time.
class TextBuffer {
public:
    void clear() { m_size = 0; }
    std::size_t size() const { return m_size; }
    std::string_view view() const { return {m_text.get(), m_size}; }

    // Makes room for more characters, which appendUnchecked then takes without looking.
    void reserve(std::size_t more)
    {
        if (m_size + more > m_capacity)
            grow(more);
    }

    // Characters that somebody wrote into the room behind the text now belong to it.
    char* room() { return m_text.get() + m_size; }
    void takeIn(std::size_t more) { m_size += more; }
    // Without characters from its beginning.
    void dropFront(std::size_t count)
    {
        m_size -= count;
        if (count != 0 && m_size != 0)
            std::memmove(m_text.get(), m_text.get() + count, m_size);
    }

    void append(std::string_view text)
    {
        // An empty view may have no address at all, which memcpy must not see.
        if (text.empty())
            return;
        reserve(text.size());
        appendUnchecked(text);
    }

    void appendUnchecked(std::string_view text)
    {
        std::memcpy(m_text.get() + m_size, text.data(), text.size());
        m_size += text.size();
    }
    void appendUnchecked(char c) { m_text[m_size++] = c; }

    // An integer, or the shortest digits that read back as the same number.
    template <typename Number> void appendNumberUnchecked(Number number)
    {
        char* const from = m_text.get() + m_size;
        if constexpr (std::is_floating_point_v<Number>)
            m_size += static_cast<std::size_t>(writeShortest(from, number) - from);
        else
            m_size += static_cast<std::size_t>(std::to_chars(from, from + kNumberRoom, number).ptr -
                                               from);
    }
    template <typename Number> void appendNumber(Number number)
    {
        reserve(kNumberRoom);
        appendNumberUnchecked(number);
    }

private:
    void grow(std::size_t more)
    {
        std::size_t const capacity =
            2 * m_capacity > m_size + more ? 2 * m_capacity : m_size + more;
        std::unique_ptr<char[]> text(new char[capacity]);
        if (m_size != 0)
            std::memcpy(text.get(), m_text.get(), m_size);
        m_text = std::move(text);
        m_capacity = capacity;
    }

    std::unique_ptr<char[]> m_text;
    std::size_t m_size = 0, m_capacity = 0;
};

}  // namespace nodus::host
