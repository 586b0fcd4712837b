// One thread; see parallel_pipeline.h.
#pragma once

namespace tbb {

struct task_arena {
    explicit task_arena(int) {}
    template <typename Work> void execute(Work work) { work(); }
};

}  // namespace tbb
