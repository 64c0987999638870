/* Stack traces and lists of modules, written to the debug output (see debug.h). The functions do nothing while no debug
   output is received. They may be called from any thread and don't change the stack, the program or its modules. */
#ifndef QXUT23_STACKS_H
#define QXUT23_STACKS_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Writes the modules whose code is being executed by the calling thread, innermost first: a line " [called by PATH]"
   for each return address of the stack, and an empty line at the end. At most 20 lines are written.

   - reserved: ignored.
   - skip: the number of return addresses to leave out. The first address is in this library. A value above 256 writes
     nothing at all.

   Addresses outside of all modules, for example in generated code, are left out. */
QXUT_API void UtilStackTrace(uint32_t reserved, uint32_t skip);

/* Writes the modules of the process in the order of their addresses, as a block with the heading "Memory image
   addresses of modules:" and a line "0xFIRST-0xLAST: PATH" for each. The addresses are hexadecimal and those of the
   first region of the module: the pages at its base that have the same protection. */
QXUT_API void UtilListModules(void);

QXUT_EXTERN_C_END

#endif
