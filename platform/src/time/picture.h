// The system's language of pictures (dd.MM.yyyy, h:mm:ss tt) taken apart.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qxplatform
{

struct PicturePiece
{
    char16_t letter = 0; // of a token; 0 for text that stands for itself
    std::size_t count = 0;
    std::u16string text;
};

// Runs of one of the letters are tokens. Text in single quotes, two of which are one inside of them, stands for itself,
// and so does all else; where the second quote is missing, all to the end is quoted.
std::vector<PicturePiece> SplitPicture(std::u16string_view picture, std::u16string_view letters);

} // namespace qxplatform
