/* Text of HTML pages, and masking of text for HTML, according to the HTML Living Standard (section 13.2.5,
 * tokenization, and 13.5, named character references). Unlike the functions of markup.h, which follow simpler rules,
 * these functions handle pages as browsers do and keep characters above U+FFFF (surrogate pairs) whole.
 *
 * Input texts are zero-terminated; a null pointer is treated as the empty text. Results are in-out BSTRs: a null string
 * is allocated with SysAllocStringLen, any other string is replaced with SysReAllocStringLen, and the caller frees it
 * with SysFreeString. If the address is null, the result is discarded. On failure the string is unchanged. All
 * functions take time and memory linear in the length of the text, whatever the depth of nesting, and are thread-safe.
 */
#ifndef QXUT23_PAGE_TEXT_H
#define QXUT23_PAGE_TEXT_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Result codes. */
#define QXUT_PAGE_OK 0
#define QXUT_PAGE_NO_MEMORY (-1)
#define QXUT_PAGE_BAD_FLAGS (-2) /* a flag that is not defined below */

/* Flag of QxConvertHtml2PlainText: appends the target of each link in brackets to the text of the link. */
#define QXUT_PAGE_LINKS 0x1u

/* Converts a page to the text that a reader sees.
     - Lines are separated by line feeds; the text does not end with one. Blank lines separate paragraphs, headings and
       lists. White space is folded as in browsers; no-break spaces (U+00A0) are kept.
     - Comments, scripts, style sheets, templates and frames are dropped. The alternative content for readers without
       scripts (noscript) is included. The title of the page is the first paragraph.
     - List items begin with "- " or with their number, subject to the attributes start, value and type ("3. ", "c. ",
       "iii. "). Nested lists, definitions and block quotations are indented, by at most 32 columns.
     - Preformatted text keeps its white space and lines and is not indented.
     - Each row of a table is a line; its cells are separated by tabs.
     - Images are replaced by their alternative text, buttons and text fields by their values.
     - With QXUT_PAGE_LINKS, " [target]" follows the text of a link unless the text equals the target or the target
       begins with "#" or "javascript:". Relative targets are not resolved.

   Returns QXUT_PAGE_OK, QXUT_PAGE_NO_MEMORY or QXUT_PAGE_BAD_FLAGS. */
QXUT_API int32_t QxConvertHtml2PlainText(const QXWCHAR* html, QXWCHAR** text, uint32_t flags);

/* Replaces tabs ("&#09;"), quotation marks, ampersands, angle brackets and the characters U+00A0 to U+00FF with the
   named references of HTML 4, and characters above U+00FF with hexadecimal references of at least four digits, one for
   each character: U+1F600 becomes "&#x1f600;". The characters U+0080 to U+009F and unpaired surrogates are copied,
   because HTML has no reference for them. Returns QXUT_PAGE_OK or QXUT_PAGE_NO_MEMORY. */
QXUT_API int32_t QxMaskHtmlCharacters(const QXWCHAR* text, QXWCHAR** result);

/* Resolves all character references: the 2,125 names of HTML (case-sensitive), the names that HTML accepts without a
   semicolon, and decimal and hexadecimal numbers. The numbers 128 to 159 mean the characters of code page 1252; numbers
   that are not characters become U+FFFD. Everything else is copied. Reverses QxMaskHtmlCharacters exactly.
   Returns QXUT_PAGE_OK or QXUT_PAGE_NO_MEMORY. */
QXUT_API int32_t QxDemaskHtmlCharacters(const QXWCHAR* text, QXWCHAR** result);

QXUT_EXTERN_C_END

#endif
