/* Text to HTML and back.
 *
 * `result` is an in-out BSTR: a null string is allocated with SysAllocStringLen, any other is replaced with
 * SysReAllocStringLen; the caller frees it. A null address drops the result. A null input text gives the empty text.
 * All functions work on single UTF-16 units and in time linear in the length of the text.
 */
#ifndef QXUT23_MARKUP_H
#define QXUT23_MARKUP_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Replaces tabs, quotation marks, ampersands, angle brackets, the unit 128 (the euro sign of code page 1252) and
   everything above it by entities of HTML 4 or by hexadecimal references. Apostrophes stay. */
QXUT_API void UtilMaskAllHTMLCharacters(const QXWCHAR* text, QXWCHAR** result);

/* Replaces entities (with case) and numeric references of at most 8 units; "&euro;" gives the unit 128. A named
   reference that isn't known stays; a numeric one that can't be read, or is zero, loses its ampersand. */
QXUT_API void UtilDemaskAllHTMLCharacters(const QXWCHAR* text, QXWCHAR** result);

/* Masks a text and makes a paragraph of each line (CR LF, or CR alone; a lone LF stays). With flags 0 the tags are
   <p> and </p>, and an empty paragraph gets a <br>; with any other value they are the placeholders [_[p]_] and
   [_[/p]_], without the filler. Guillemets are doubled, so that UtilConvertHtml2PlainText gives them back. */
QXUT_API void UtilConvertText2HTML(const QXWCHAR* text, QXWCHAR** result, uint32_t flags);

/* Reduces HTML (flags 0) or the placeholder markup (any other value, brackets "[" and "]") to text with carriage
   returns as line ends. Comments and the contents of head, script, iframe, textarea, select and style are dropped,
   links become "text [target]", list items begin with "- ", white space is folded, the outermost guillemets go. */
QXUT_API void UtilConvertHtml2PlainText(const QXWCHAR* html, QXWCHAR** text, uint32_t flags);

QXUT_EXTERN_C_END

#endif
