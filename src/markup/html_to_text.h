// HTML, or the placeholder markup of TextToHtml, reduced to plain text with carriage returns as line ends. No parser
// and no tree: a few passes over the text, each in place, and in time linear in its length.
#pragma once

#include "core/text/string.h"

#include <cstddef>

namespace qx
{

String HtmlToText(const wchar_t* html, bool placeholders);

// The passes, each on a zero-terminated text that it may only make shorter. They give the new length.

// Takes away all from the start of the first comment to the end of the last.
std::size_t RemoveComments(wchar_t* html, std::size_t length);

// `<a href="target">text</a>` becomes "text [target]", or the target alone if both are the same but for case.
std::size_t ExpandAnchors(wchar_t* html, std::size_t length);

// Leaves what the tags stand for, drops ignored elements, folds white space.
std::size_t RemoveTags(wchar_t* html, std::size_t length, bool placeholders);

// Folds blanks and takes the outermost guillemets away.
std::size_t FoldBlanks(wchar_t* text, std::size_t length);

} // namespace qx
