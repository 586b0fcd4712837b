// The process's number of threads, and what a fork leaves of it.
#include "threads.h"

#include <atomic>
#include <pthread.h>

namespace nodus::python {

namespace {

std::atomic<std::size_t> s_threads = 1;
std::atomic<bool> s_hasUsedThreads = false, s_hasLostThreads = false;

}  // namespace

void setThreads(std::size_t threads) { s_threads = threads; }

std::size_t threadsSet() { return s_threads; }

std::size_t threadsToUse(std::size_t wanted)
{
    static int const watched =
        ::pthread_atfork(nullptr, nullptr, [] { s_hasLostThreads = s_hasUsedThreads.load(); });
    if (wanted <= 1 || watched != 0 || s_hasLostThreads)
        return 1;
    s_hasUsedThreads = true;
    return wanted;
}

}  // namespace nodus::python
