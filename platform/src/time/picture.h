// Parses the system's picture language (dd.MM.yyyy, h:mm:ss tt).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qxplatform
{

struct PicturePiece
{
    char16_t letter = 0; // of a token; 0 for literal text
    std::size_t count = 0;
    std::u16string text;
};

// Runs of one of the letters are tokens. Everything else is literal, as is text in single quotes, in which two quotes
// mean one. If the closing quote is missing, the rest is quoted.
std::vector<PicturePiece> SplitPicture(std::u16string_view picture, std::u16string_view letters);

} // namespace qxplatform
