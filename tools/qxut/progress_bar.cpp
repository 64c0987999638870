#include "progress_bar.h"

#include "terminal.h"
#include "text.h"

#include <algorithm>
#include <cstdint>
#include <iostream>

namespace qxut
{

namespace
{

constexpr std::uint64_t kWidth = 30;
constexpr std::size_t kLongestName = 35; // in bytes, so that the line fits into 80 columns
constexpr auto kTimeBetweenDrawings = std::chrono::milliseconds(50);

// To the terminal's end of the line.
constexpr char kBeginOfLine[] = "\r\x1B[K";

// The end of a long name, from the start of a character on.
std::string Tail(const std::string& name)
{
    if (name.size() <= kLongestName)
        return name;
    std::size_t start = name.size() - kLongestName + 3;
    while (start < name.size() && (static_cast<unsigned char>(name[start]) & 0xC0) == 0x80)
        ++start;
    return "..." + name.substr(start);
}

} // namespace

ProgressBar::ProgressBar(std::uint64_t total) : _isShown(ErrorsGoToTerminal()), _total(total) {}

ProgressBar::~ProgressBar()
{
    if (_isShown)
        std::cerr << kBeginOfLine << std::flush;
}

void ProgressBar::Set(std::uint64_t done, const std::string& what)
{
    const auto now = std::chrono::steady_clock::now();
    if (!_isShown || (now < _next && done < _total))
        return;
    _next = now + kTimeBetweenDrawings;
    const double share = _total == 0 ? 1.0 : std::min(1.0, static_cast<double>(done) / static_cast<double>(_total));
    const auto filled = static_cast<std::size_t>(share * kWidth);
    const std::string percent = std::to_string(static_cast<int>(share * 100));
    std::cerr << kBeginOfLine << '[' << std::string(filled, '=') << std::string(kWidth - filled, ' ') << "] "
              << std::string(3 - percent.size(), ' ') << percent << "%  " << Tail(Shown(what)) << std::flush;
}

} // namespace qxut
