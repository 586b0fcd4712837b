// The pipeline of the host's run.cpp on the one thread that there is: each stage after the other,
// in order, under the names of the library that shares it out elsewhere. What the first stage gives
// as it stops goes through the others as well, which find nothing in it to do.
#pragma once

#include <cstddef>
#include <utility>

namespace tbb {

enum class filter_mode { serial_in_order, parallel };

class flow_control {
public:
    void stop() { m_isStopped = true; }
    bool isStopped() const { return m_isStopped; }

private:
    bool m_isStopped = false;
};

template <typename Stage> struct Filter {
    Stage stage;
};
template <typename In, typename Out, typename Stage> Filter<Stage> make_filter(filter_mode, Stage s)
{
    return {std::move(s)};
}
template <typename First, typename Second>
auto operator&(Filter<First> first, Filter<Second> second)
{
    auto both = [first, second](auto& from) { return second.stage(first.stage(from)); };
    return Filter<decltype(both)>{std::move(both)};
}

template <typename Stages> void parallel_pipeline(std::size_t, Stages const& stages)
{
    flow_control control;
    while (!control.isStopped())
        stages.stage(control);
}

}  // namespace tbb
