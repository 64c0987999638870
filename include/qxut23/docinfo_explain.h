/* Diagnostics of document information: which reader was chosen, and why it failed. */
#ifndef QXUT23_DOCINFO_EXPLAIN_H
#define QXUT23_DOCINFO_EXPLAIN_H

#include <qxut23/docinfo.h>

QXUT_EXTERN_C_BEGIN

/* Stores the name of the reader that took the document, such as "TIFF", in `reader`, and the first message that it
   wrote to the debug output in `remark`; both are those of the last reading. Either is empty if there is none. Both are
   BSTRs that the call reallocates, or allocates if they are null; the caller frees them. Either pointer may be null.
   Returns what UtilDocInfoGet returns; the texts are stored for a document that the reader refused, too. With a null
   list or path nothing is stored. */
QXUT_API int32_t QxDocInfoExplain(
    HUTDOCINFO list, const QXWCHAR* path, uint32_t waitSeconds, QXWCHAR** reader, QXWCHAR** remark);

QXUT_EXTERN_C_END

#endif
