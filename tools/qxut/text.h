// Converts between UTF-8 (terminal and files) and UTF-16 (the library).
#pragma once

#include <qxut23/base.h>

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace qxut
{

bool IsUtf8(std::string_view text);

// Returns a path in UTF-8, with slashes.
std::string Utf8Path(const std::filesystem::path& path);

// A zero-terminated UTF-16 text for the library.
class WideText
{
public:
    // Invalid UTF-8 becomes U+FFFD.
    explicit WideText(std::string_view utf8);
    operator const QXWCHAR*() const { return _units.data(); }

    // Overwrites the text in memory, for secrets. It is empty afterwards.
    void Erase();

    // The size in memory, with the terminator.
    std::uint32_t Bytes() const { return static_cast<std::uint32_t>(_units.size() * sizeof(QXWCHAR)); }

private:
    void Append(std::uint32_t character);

    std::vector<QXWCHAR> _units;
};

// Converts UTF-16 to UTF-8. Unpaired surrogates become U+FFFD.
std::string Utf8(const QXWCHAR* text);

// Returns a text of one line for display: control characters are shown as \n, \t, \x1B and so on.
std::string Shown(std::string_view utf8);

// Returns a text of several lines for display: like Shown, but line ends and tabs remain.
std::string ShownLines(std::string_view utf8);

// Returns JSON, on one line if `indent` is negative. DEL and the control characters U+0080 to U+009F are escaped too,
// because terminals may obey them. Invalid UTF-8 becomes U+FFFD.
std::string JsonText(const nlohmann::ordered_json& json, int indent = -1);

} // namespace qxut
