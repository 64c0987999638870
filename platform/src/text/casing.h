// One character to another in case, as the system maps them.
#pragma once

namespace qxplatform
{

// The plain mapping, which names of files and registry keys are compared by: only pairs that lead to each other. So
// the dotless i and the long s have no capital letter.
char32_t ToUpper(char32_t character);
char32_t ToLower(char32_t character);

enum class LetterI
{
    Latin,
    Turkic // i is the small form of a capital letter with a dot, and I the capital of one without
};

// The mapping by language: every character that has one of another case.
char32_t ToUpperLinguistic(char32_t character, LetterI letterI);
char32_t ToLowerLinguistic(char32_t character, LetterI letterI);

} // namespace qxplatform
