// How far a long operation has come, in one line of the terminal; nothing where nobody looks on.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace qxut
{

class ProgressBar
{
public:
    // The whole work, in bytes.
    explicit ProgressBar(std::uint64_t total);
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    // Leaves an empty line.
    ~ProgressBar();

    bool IsShown() const { return _isShown; }

    // What is done, and what is being worked on. Draws now and then only, however often it is called.
    void Set(std::uint64_t done, const std::string& what);

private:
    bool _isShown;
    std::uint64_t _total;
    std::chrono::steady_clock::time_point _next; // when to draw again
};

} // namespace qxut
