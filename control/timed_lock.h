// A lock with a short time-out, because the thread that holds it may be suspended or, after a fork, not exist.
#pragma once

#include <atomic>
#include <chrono>
#include <thread>

namespace qxcontrol
{

class TimedLock
{
public:
    // Returns false if the lock isn't released within a fifth of a second.
    bool Take()
    {
        constexpr int kTries = 200;
        for (int tries = 0; _isTaken.exchange(true, std::memory_order_acquire); ++tries)
        {
            if (tries == kTries)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }
    void Release() { _isTaken.store(false, std::memory_order_release); }

private:
    std::atomic<bool> _isTaken = false;
};

class TimedGuard
{
public:
    explicit TimedGuard(TimedLock& lock) : _lock(lock), _isMine(lock.Take()) {}
    ~TimedGuard()
    {
        if (_isMine)
            _lock.Release();
    }
    TimedGuard(const TimedGuard&) = delete;
    TimedGuard& operator=(const TimedGuard&) = delete;

    explicit operator bool() const { return _isMine; }

private:
    TimedLock& _lock;
    const bool _isMine;
};

} // namespace qxcontrol
