/* Diagnostics of document information: which reader was chosen, and why it failed. */
#ifndef QXUT23_DOCINFO_EXPLAIN_H
#define QXUT23_DOCINFO_EXPLAIN_H

#include <qxut23/docinfo.h>

QXUT_EXTERN_C_BEGIN

/* Stores the name of the reader that was chosen for the document, such as "TIFF", in `reader`, and the first message
   that this reader wrote to the debug output in `remark`; both refer to the most recent read. Each is empty if there is
   none. Both are BSTRs that the call reallocates, or allocates if they are null; the caller frees them. Either pointer
   may be null. Returns what UtilDocInfoGet returns; the texts are stored even if the reader refused the document. If
   the list or the path is null, nothing is stored. */
QXUT_API int32_t QxDocInfoExplain(
    HUTDOCINFO list, const QXWCHAR* path, uint32_t waitSeconds, QXWCHAR** reader, QXWCHAR** remark);

QXUT_EXTERN_C_END

#endif
