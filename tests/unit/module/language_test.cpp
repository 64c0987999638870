#include "core/language.h"

#include <gtest/gtest.h>

using namespace qx;

TEST(Language, CodesBySublanguageAndByLanguage)
{
    struct
    {
        unsigned primary, sublanguage;
        int code;
    } const cases[] = {{9, 1, 1}, {7, 1, 0}, {7, 2, 0}, {7, 0, 0}, // English, German
        {4, 2, 9}, {4, 1, 48}, {4, 3, 1}, {4, 0, 1},               // Chinese only with two
        {10, 9, 130}, {10, 1, 37}, {22, 1, 129}, {22, 2, 31},      // Spanish, Portuguese
        {26, 3, 36}, {26, 2, 42}, {26, 1, 10}, {26, 0, 10},        // Croatian and Serbian
        {1, 1, 2}, {2, 1, 6}, {3, 1, 8}, {5, 1, 11}, {6, 1, 12}, {8, 1, 19}, {11, 1, 17}, {12, 1, 18}, {13, 1, 20},
        {14, 1, 21}, {15, 1, 22}, {16, 1, 24}, {17, 1, 25}, {18, 1, 26}, {19, 1, 13}, {20, 1, 29}, {21, 1, 30},
        {24, 1, 32}, {25, 1, 33}, {27, 1, 34}, {28, 1, 4}, {29, 1, 38}, {30, 1, 39}, {31, 1, 40}, {33, 1, 23},
        {34, 1, 41}, {35, 1, 7}, {36, 1, 35}, {37, 1, 14}, {38, 1, 27}, {39, 1, 28}, {41, 1, 16}, {45, 1, 5},
        {54, 1, 3}, {56, 1, 15}, {0, 1, 1}, {23, 1, 1}, {32, 1, 1}, {57, 1, 1}, {0x3FF, 0x3F, 1}};
    for (const auto& c : cases)
        EXPECT_EQ(LanguageCode(static_cast<LANGID>(c.sublanguage << 10 | c.primary)), c.code)
            << c.primary << ", " << c.sublanguage;
}
