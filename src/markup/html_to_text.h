// Reduces HTML, or the placeholder markup of TextToHtml, to plain text with carriage returns as line ends. There is
// neither a parser nor a tree, only a few passes over the text. Each works in place and takes linear time.
#pragma once

#include "core/text/string.h"

#include <cstddef>

namespace qx
{

String HtmlToText(const wchar_t* html, bool placeholders);

// The passes. Each takes a zero-terminated text, never makes it longer, and returns the new length.

// Removes everything from the start of the first comment to the end of the last one.
std::size_t RemoveComments(wchar_t* html, std::size_t length);

// `<a href="target">text</a>` becomes "text [target]", or just the target if both are equal, ignoring case.
std::size_t ExpandAnchors(wchar_t* html, std::size_t length);

// Replaces tags with the text they represent, drops ignored elements, and folds white space.
std::size_t RemoveTags(wchar_t* html, std::size_t length, bool placeholders);

// Folds blanks and removes the outermost guillemets.
std::size_t FoldBlanks(wchar_t* text, std::size_t length);

} // namespace qx
