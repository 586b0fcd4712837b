// Collecting log messages of a block of frames.
#include "nodus/host/frame_log.h"

#include "nodus/runtime/CurrentFrame.h"

#include <algorithm>
#include <cstring>

namespace nodus::host {

void FrameLog::message(char const* text)
{
    std::size_t const size = std::strlen(text);
    m_messages.push_back({runtime::GetCurrentFrame(), m_text.size(), size});
    m_text.append({text, size});
}

void FrameLog::takeLines(TextBuffer& to)
{
    std::ranges::stable_sort(m_messages, {}, &Message::frame);
    for (Message const& message : m_messages) {
        to.append("frame ");
        to.appendNumber(message.frame);
        to.append(": ");
        to.append(m_text.view().substr(message.begin, message.size));
        to.append("\n");
    }
    m_messages.clear();
    m_text.clear();
}

}  // namespace nodus::host
