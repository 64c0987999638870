// Shows the progress of a long operation in one line of the terminal. Does nothing if standard error is not a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace qxut
{

class ProgressBar
{
public:
    // `total` is the amount of work in bytes.
    explicit ProgressBar(std::uint64_t total);
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    // Clears the line.
    ~ProgressBar();

    bool IsShown() const { return _isShown; }

    // Updates the amount of work done and the current item. Draws only at intervals, however often it is called.
    void Set(std::uint64_t done, const std::string& what);

private:
    bool _isShown;
    std::uint64_t _total;
    std::chrono::steady_clock::time_point _next; // next time to draw
};

} // namespace qxut
