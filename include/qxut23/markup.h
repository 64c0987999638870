/* Text to HTML and back.
 *
 * `result` is an in-out BSTR: a null string is allocated with SysAllocStringLen, any other is replaced with
 * SysReAllocStringLen; the caller frees it. If the address is null, the result is discarded. A null input text produces
 * the empty text. All functions process individual UTF-16 units, in time linear in the length of the text.
 */
#ifndef QXUT23_MARKUP_H
#define QXUT23_MARKUP_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Replaces tabs, quotation marks, ampersands, angle brackets, the unit 128 (the euro sign in code page 1252) and all
   higher units with HTML 4 entities or hexadecimal references. Apostrophes are kept. */
QXUT_API void UtilMaskAllHTMLCharacters(const QXWCHAR* text, QXWCHAR** result);

/* Replaces entities (case-sensitive) and numeric references of at most 8 units; "&euro;" produces the unit 128. An
   unknown named reference is kept. A numeric reference that is malformed or zero loses its ampersand. */
QXUT_API void UtilDemaskAllHTMLCharacters(const QXWCHAR* text, QXWCHAR** result);

/* Masks a text and turns each line (ended by CR LF or a lone CR; a lone LF is kept) into a paragraph. With flags 0 the
   tags are <p> and </p>, and an empty paragraph gets a <br>. With any other value the tags are the placeholders [_[p]_]
   and [_[/p]_], and empty paragraphs stay empty. Guillemets are doubled so that UtilConvertHtml2PlainText restores
   them. */
QXUT_API void UtilConvertText2HTML(const QXWCHAR* text, QXWCHAR** result, uint32_t flags);

/* Reduces HTML (flags 0), or placeholder markup with the brackets "[" and "]" (any other value), to text with carriage
   returns as line ends. Comments and the contents of head, script, iframe, textarea, select and style are dropped.
   Links become "text [target]", list items begin with "- ", white space is folded, and the outermost guillemets are
   removed. */
QXUT_API void UtilConvertHtml2PlainText(const QXWCHAR* html, QXWCHAR** text, uint32_t flags);

QXUT_EXTERN_C_END

#endif
