// Converts between UTF-8 (terminal and files) and UTF-16 (the library).
#pragma once

#include <qxut23/base.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qxut
{

bool IsUtf8(std::string_view text);

// A zero-terminated UTF-16 text for the library.
class WideText
{
public:
    // Invalid UTF-8 becomes U+FFFD.
    explicit WideText(std::string_view utf8);
    operator const QXWCHAR*() const { return _units.data(); }

    // The size in memory, with the terminator.
    uint32_t Bytes() const { return static_cast<uint32_t>(_units.size() * sizeof(QXWCHAR)); }

private:
    void Append(std::uint32_t character);

    std::vector<QXWCHAR> _units;
};

// Converts UTF-16 to UTF-8. Unpaired surrogates become U+FFFD.
std::string Utf8(const QXWCHAR* text);

// Returns the text for display: control characters are shown as \n, \t, \x1B and so on.
std::string Shown(std::string_view utf8);

} // namespace qxut
