/* The text of addresses: module, function, source file and line. */
#ifndef QXUT23_ADDRESSES_H
#define QXUT23_ADDRESSES_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Receives the text of the address with number `index`. The text is valid during the call. */
typedef void (*QxAddressTextProc)(void* user, size_t index, const QXWCHAR* text);

/* Calls `receive` for each address of the process, in order: "module!function + 0x1f (file, line 12)". What isn't known
   is left out: "module!+0x1234", or "0x7ffd0000" outside of all modules.

   - areExact: 0 if the addresses are return addresses, whose function and line are those of the call, as in the stacks
     of UtilDebugHelpGetStackTrace; otherwise 1.
   - user: passed to `receive`.

   Symbols are read during the call, which takes up to about 60 s for large programs. The memory that they use is
   released at the end. Returns 1 on success. Returns 0 if there are no debug-help functions, or if another job (see
   UtilDebugHelpJobOpen) has used them for 5 s; `receive` isn't called then. */
QXUT_API int32_t QxDescribeAddresses(
    const uint64_t* addresses, size_t count, int32_t areExact, QxAddressTextProc receive, void* user);

QXUT_EXTERN_C_END

#endif
