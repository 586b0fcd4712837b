// One thread; see parallel_pipeline.h.
#pragma once

#include <functional>
#include <optional>
#include <utility>

namespace tbb {

template <typename T> class enumerable_thread_specific {
public:
    template <typename Make>
    explicit enumerable_thread_specific(Make make) : m_make(std::move(make))
    {
    }
    T& local()
    {
        if (!m_value)
            m_value = m_make();
        return *m_value;
    }

private:
    std::function<T()> m_make;
    std::optional<T> m_value;
};

}  // namespace tbb
