// One thread; see parallel_pipeline.h.
#pragma once

namespace tbb {

template <typename Index, typename Work>
void parallel_for(Index first, Index last, Work const& work)
{
    for (; first != last; ++first)
        work(first);
}

}  // namespace tbb
