// The messages of logging nodes, brought into the order of the frames.
#pragma once

#include "nodus/host/text_buffer.h"
#include "nodus/runtime/LocalServiceTable.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace nodus::host {

// The log service of one evaluator; for one thread at a time.
class FrameLog : public runtime::LogService {
public:
    void message(char const* text) override;

    // Appends what came since the last call as lines "frame 12: text": by frame, and within a frame
    // in the order in which the messages came. Forgets them.
    void takeLines(TextBuffer& to);

private:
    struct Message {
        std::int32_t frame;
        std::size_t begin, size;
    };
    TextBuffer m_text;
    std::vector<Message> m_messages;
};

}  // namespace nodus::host
