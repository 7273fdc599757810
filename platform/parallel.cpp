#include "platform/parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace curvebank::platform {

int hardware_threads()
{
    return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

void parallel_for(size_t count, int threads, const std::function<void(int worker, size_t index)> &turn)
{
    const int workers = static_cast<int>(std::min<size_t>(count, static_cast<size_t>(std::max(1, threads))));
    if (workers <= 1) {
        for (size_t index = 0; index < count; ++index) turn(0, index);
        return;
    }
    std::atomic<size_t> next{0};
    std::exception_ptr failure;
    std::mutex guard;
    const auto work = [&](int worker) {
        try {
            for (size_t index = next++; index < count; index = next++) turn(worker, index);
        } catch (...) {
            const std::lock_guard lock(guard);
            if (!failure) failure = std::current_exception();
            next = count;
        }
    };
    std::vector<std::thread> others;
    others.reserve(static_cast<size_t>(workers));
    try {
        for (int worker = 1; worker < workers; ++worker) others.emplace_back(work, worker);
    } catch (...) {
        // The system gives no more threads: those that there are do all.
    }
    work(0);
    for (std::thread &other : others) other.join();
    if (failure) std::rethrow_exception(failure);
}

}  // namespace curvebank::platform
