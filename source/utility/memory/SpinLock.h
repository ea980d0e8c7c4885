#pragma once

#include "source/utility/platform/SingleThread.h"

#include <atomic>
#include <thread>

namespace kst {

/// The chain's critical section. What it guards takes some tens of nanoseconds, so a waiting thread spins, and leaves
/// the processor to others only when the holder seems to have lost it.
class SpinLock {
public:
    constexpr SpinLock() = default;

    void lock() noexcept {
        for (int tries = 0; taken_.exchange(true, std::memory_order_acquire); ++tries) {
            while (taken_.load(std::memory_order_relaxed) && ++tries < most_tries)
                __builtin_ia32_pause();
            if (tries >= most_tries)
                std::this_thread::yield();
        }
    }
    void unlock() noexcept { taken_.store(false, std::memory_order_release); }

private:
    static constexpr int most_tries = 200;
    std::atomic<bool> taken_{false};
};

/// Holds the lock for a scope; leaves it alone while the process has one thread. Nothing in such a scope may start one.
class ChainGuard {
public:
    explicit ChainGuard(SpinLock& lock) noexcept : lock_(process_has_one_thread() ? nullptr : &lock) {
        if (lock_)
            lock_->lock();
    }
    ~ChainGuard() {
        if (lock_)
            lock_->unlock();
    }
    ChainGuard(const ChainGuard&) = delete;
    ChainGuard& operator=(const ChainGuard&) = delete;

private:
    SpinLock* lock_;
};

} // namespace kst
