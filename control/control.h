/* The control library: shows the progress of a lengthy operation and lets the user abort it. The utility library binds
   these functions at run time and works without them.

   They may be called while the process crashes: they allocate no memory, use no standard streams, and never wait
   longer than a few seconds for another thread. */
#ifndef QXCT23_CONTROL_H
#define QXCT23_CONTROL_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Opens a job of the library. A job is a count: the end of the last one ends the dialogs that are still open.
   CtlJobOpenEx returns a handle for CtlJobCloseEx and never fails; what CtlJobOpen opens is closed by CtlJobClose. */
QXUT_API int64_t CtlJobOpenEx(void);
QXUT_API void CtlJobCloseEx(int64_t job);
QXUT_API void CtlJobOpen(void);
QXUT_API void CtlJobClose(void);

/* Opens a dialog and returns its handle, or 0 if too many are open; the other functions then do nothing.

   The dialog is a window where there is a screen for windows, and otherwise a few lines on the terminal that standard
   error leads to, where Ctrl+C aborts. If there is neither, each new text becomes a line on standard error, and nobody
   can abort.

   parent  not used: the dialog must work while the parent's thread hangs
   title   what the operation is
   text    what it does at the moment; line feeds separate lines
   parts   6 for both texts, a bar and a way to abort; other values show the same

   Both texts may be null and are copied; what exceeds 250 or 500 characters is cut off. */
QXUT_API int64_t CtlAbortDlgStart(void* parent, const QXWCHAR* title, const QXWCHAR* text, int32_t parts);

/* Closes the dialog. */
QXUT_API void CtlAbortDlgEnd(int64_t dialog);

/* Replaces the text if there is one, and sets the progress in percent unless it is negative. */
QXUT_API void CtlAbortDlgSetText(int64_t dialog, const QXWCHAR* text, int32_t percent);

/* Returns -1 if the user asked to abort, otherwise 0. */
QXUT_API int32_t CtlAbortDlgCheckAbort(int64_t dialog);

/* Returns the window of the dialog, or null if it isn't a window. */
QXUT_API void* CtlAbortDlgHWnd(int64_t dialog);

QXUT_EXTERN_C_END

#endif
