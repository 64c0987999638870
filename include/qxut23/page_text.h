/* HTML as browsers read it: the text of a page, and text made safe inside HTML.
 *
 * These functions follow the HTML Living Standard (sections 13.2.5, tokenization, and 13.5, named character references)
 * and keep every character, also those of two UTF-16 units. The functions of markup.h, which have similar purposes,
 * work by simpler rules of their own.
 *
 * Texts end with a zero character; a null text is the empty text. Results are in-out BSTRs: a null string is allocated
 * with SysAllocStringLen, any other string is replaced with SysReAllocStringLen, and the caller frees it with
 * SysFreeString. A null address drops the result. On failure the string is left as it was. Time and memory are linear
 * in the length of the text, however deeply elements are nested. All functions may be called by several threads at
 * once.
 */
#ifndef QXUT23_PAGE_TEXT_H
#define QXUT23_PAGE_TEXT_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

#define QXUT_PAGE_OK 0
#define QXUT_PAGE_NO_MEMORY (-1)
#define QXUT_PAGE_BAD_FLAGS (-2) /* flags other than those below */

/* Flag of QxConvertHtml2PlainText: writes the target of each link in brackets behind the link's text. */
#define QXUT_PAGE_LINKS 0x1u

/* Stores the text that a reader of the page sees in `*text`.
     - Lines end with line feeds; there is none at the end of the text. Paragraphs, headings and lists are separated by
       blank lines. White space is folded as browsers fold it; no-break spaces (U+00A0) stay.
     - Comments, scripts, style sheets, templates and frames leave nothing; text for readers without scripts (noscript)
   is shown. The title of the page is the first paragraph.
     - Items of lists begin with "- ", or with their number as `start`, `value` and `type` say ("3. ", "c. ", "iii. ").
       Nested lists, definitions and block quotations are indented, by 32 columns at most.
     - Preformatted text keeps its blanks and lines, without indentation.
     - A row of a table is a line, and a tab separates its cells.
     - Images are replaced by their alternative text, buttons and text fields by their values.
     - Links leave their text. With QXUT_PAGE_LINKS " [target]" follows, unless the text is the target already, or the
       target begins with "#" or "javascript:". Targets are as the page has them, relative ones included.
   Returns QXUT_PAGE_OK, QXUT_PAGE_NO_MEMORY or QXUT_PAGE_BAD_FLAGS. */
QXUT_API int32_t QxConvertHtml2PlainText(const QXWCHAR* html, QXWCHAR** text, uint32_t flags);

/* Replaces tabs, quotation marks, ampersands, angle brackets and the characters U+00A0 to U+00FF by references with the
   names of HTML 4 ("&#09;" for the tab), and characters above U+00FF by hexadecimal references of at least four digits,
   one for each character: U+1F600 gives "&#x1f600;". The characters U+0080 to U+009F and single surrogates stay,
   because HTML has no reference that stands for them. Returns QXUT_PAGE_OK or QXUT_PAGE_NO_MEMORY. */
QXUT_API int32_t QxMaskHtmlCharacters(const QXWCHAR* text, QXWCHAR** result);

/* Replaces every character reference: the 2,125 names of HTML (with case), those names that HTML allows without a
   semicolon, and numbers in decimal or hexadecimal. Numbers from 128 to 159 mean the characters of code page 1252;
   numbers that stand for no character give U+FFFD. All else stays. What QxMaskHtmlCharacters writes comes back exactly.
   Returns QXUT_PAGE_OK or QXUT_PAGE_NO_MEMORY. */
QXUT_API int32_t QxDemaskHtmlCharacters(const QXWCHAR* text, QXWCHAR** result);

QXUT_EXTERN_C_END

#endif
