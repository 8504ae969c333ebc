#pragma once
#include <VnIfcCore/VnIfcModel.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace VN_SDAI {

/// How many threads serve `blocks` blocks of work best; `wanted` 0 leaves it to the machine.
inline unsigned threadsFor(unsigned wanted, std::size_t blocks) {
    const unsigned available = wanted ? wanted : std::max(1u, std::thread::hardware_concurrency());
    return static_cast<unsigned>(std::clamp<std::size_t>(blocks / (wanted ? 1 : 4), 1, available));
}

/// Calls work(worker, block) for each block, on `threads` threads of which the caller's is number 0, in ascending order
/// as far as each worker goes. The progress callback is called on the caller's thread, at last with 1. False when it,
/// or a piece of work by answering false, stopped. An exception of any worker is raised again here.
template <class Work>
bool shareWork(std::size_t blocks, unsigned threads, const VnIfcProgress& progress, Work work) {
    std::atomic<std::size_t> next{0};
    std::atomic<bool> stop{false};
    std::exception_ptr failure;
    std::mutex failureMutex;
    double reported = 0;
    const auto serve = [&](unsigned worker) {
        try {
            for (std::size_t block; !stop && (block = next.fetch_add(1)) < blocks;) {
                if (!work(worker, block))
                    stop = true;
                if (worker != 0 || !progress)
                    continue;
                reported = static_cast<double>(block + 1) / static_cast<double>(blocks);
                if (!progress(reported))
                    stop = true;
            }
        } catch (...) {
            const std::lock_guard lock(failureMutex);
            failure = std::current_exception();
            stop = true;
        }
    };
    std::vector<std::jthread> helpers;
    for (unsigned worker = 1; worker < threads; ++worker)
        helpers.emplace_back(serve, worker);
    serve(0);
    helpers.clear(); // joins
    if (failure)
        std::rethrow_exception(failure);
    // Others may have done the last block, or all of them.
    if (!stop && progress && blocks > 0 && reported < 1 && !progress(1))
        stop = true;
    return !stop;
}

} // namespace VN_SDAI
