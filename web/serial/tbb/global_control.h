// One thread; see parallel_pipeline.h.
#pragma once

#include <cstddef>

namespace tbb {

struct global_control {
    enum Parameter { max_allowed_parallelism };
    global_control(Parameter, std::size_t) {}
};

}  // namespace tbb
