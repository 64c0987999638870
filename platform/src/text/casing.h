// Case mapping of single characters as on the system.
#pragma once

namespace qxplatform
{

// The simple mapping by which file names and registry keys are compared. It contains only pairs that map to each other;
// the dotless i and the long s therefore have no capital letter.
char32_t ToUpper(char32_t character);
char32_t ToLower(char32_t character);

enum class LetterI
{
    Latin,
    Turkic // i is the small form of a capital with a dot, and I the capital of a letter without one
};

// The linguistic mapping: every character that has another case.
char32_t ToUpperLinguistic(char32_t character, LetterI letterI);
char32_t ToLowerLinguistic(char32_t character, LetterI letterI);

} // namespace qxplatform
