// Texts between the terminal and files (UTF-8) and the library (UTF-16).
#pragma once

#include <qxut23/base.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qxut
{

bool IsUtf8(std::string_view text);

// A zero-terminated text for the library.
class WideText
{
public:
    // What is no UTF-8 becomes U+FFFD.
    explicit WideText(std::string_view utf8);
    operator const QXWCHAR*() const { return _units.data(); }

    // The size in memory, with the terminator.
    uint32_t Bytes() const { return static_cast<uint32_t>(_units.size() * sizeof(QXWCHAR)); }

private:
    void Append(std::uint32_t character);

    std::vector<QXWCHAR> _units;
};

// Halves of surrogate pairs become U+FFFD.
std::string Utf8(const QXWCHAR* text);

// For the eyes: characters that would do something to a terminal are shown as \n, \t, \x1B and the like.
std::string Shown(std::string_view utf8);

} // namespace qxut
