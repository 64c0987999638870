// Random texts on which a scanner and the patterns that it replaces are compared.
#pragma once

#include "unit/docinfo/document_in_memory.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <span>
#include <string>
#include <string_view>

namespace qxtest
{

constexpr int kTexts = kIsSlow ? 2'000 : 25'000;

constexpr std::size_t kMostPieces = 40;

// Generates texts from random pieces and from repetitions of the text so far. The texts are the same in each run.
class RandomTexts
{
public:
    explicit RandomTexts(std::span<const std::string_view> pieces, std::size_t mostPieces = kMostPieces)
        : _pieces(pieces),
          _mostPieces(mostPieces)
    {
    }

    std::string Next()
    {
        std::string text;
        for (std::size_t count = Number(_mostPieces); count > 0; --count)
            if (Number(12) == 0 && !text.empty())
                text += text.substr(Number(text.size()), Number(30));
            else
                text += _pieces[Number(_pieces.size())];
        return text;
    }

private:
    std::size_t Number(std::size_t below) { return _random() % below; }

    std::span<const std::string_view> _pieces;
    std::size_t _mostPieces;
    std::mt19937 _random{1};
};

using ReadPatterns = void (*)(qx::clsDocu& record, const qx::String& text);

// Expects the reader and the patterns to return the same records for random texts, which replace the "%" in `wrap`.
inline void CompareReaders(Reader reader, ReadPatterns read, std::span<const std::string_view> pieces,
    std::string_view wrap, std::size_t mostPieces = kMostPieces)
{
    RandomTexts texts(pieces, mostPieces);
    int filled = 0;
    for (int i = 0; i < kTexts; ++i)
    {
        std::string text(wrap);
        text.replace(text.find('%'), 1, texts.Next());
        const ReadRecord found(reader, text);
        const auto expected = EmptyRecord();
        read(*expected, Wide(text));
        ASSERT_EQ(found.Summary(), Summary(*expected)) << text;
        filled += Summary(*expected) != "-|-|-|-|-|-|-|-";
    }
    EXPECT_GT(filled, kTexts / 10); // otherwise the texts contain too little to find
}

} // namespace qxtest
