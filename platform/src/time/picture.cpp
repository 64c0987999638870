#include "time/picture.h"

namespace qxplatform
{

namespace
{

// Returns the position after the quoted text whose first quote is at `begin`.
std::size_t TakeQuoted(std::u16string_view picture, std::size_t begin, std::u16string& text)
{
    std::size_t i = begin + 1;
    while (i < picture.size())
    {
        if (picture[i] == u'\'')
        {
            if (i + 1 == picture.size() || picture[i + 1] != u'\'')
                return i + 1;
            ++i;
        }
        text += picture[i++];
    }
    return i;
}

std::u16string& TextAtEnd(std::vector<PicturePiece>& pieces)
{
    if (pieces.empty() || pieces.back().letter != 0)
        pieces.emplace_back();
    return pieces.back().text;
}

} // namespace

std::vector<PicturePiece> SplitPicture(std::u16string_view picture, std::u16string_view letters)
{
    std::vector<PicturePiece> pieces;
    for (std::size_t i = 0; i < picture.size();)
    {
        const char16_t unit = picture[i];
        if (unit == u'\'')
        {
            i = TakeQuoted(picture, i, TextAtEnd(pieces));
        }
        else if (letters.find(unit) == letters.npos)
        {
            TextAtEnd(pieces) += unit;
            ++i;
        }
        else
        {
            const std::size_t end = std::min(picture.find_first_not_of(unit, i), picture.size());
            pieces.push_back({unit, end - i, {}});
            i = end;
        }
    }
    return pieces;
}

} // namespace qxplatform
