/* Debug output: trace lines of this library and of all programs that load it.

   Lines are written to a log file named in the machine's settings (registry key "software\trelmo" of
   HKEY_LOCAL_MACHINE, read when the library is loaded):

     - Debug.LogFilename: the file. A name without a folder refers to the temp folder.
     - Debug.LogFile.Flush: if the text begins with an upper-case T, each line is written through to the disk.

   Without a log file, and with no other receiver attached, the functions below return immediately, without looking at
   their arguments.

   The file is UTF-16LE without a byte order mark. Lines end with CR LF:

       PROF    : 12:34:56.789 00001a2c/03 7 INIT   [Worker] state 1

   The columns are: the module tag, left-justified in 8 characters and followed by a colon and a blank, if there is a
   tag; the local time; thread id and processor in hexadecimal; the last digit of a process-wide line counter, which
   makes gaps visible; the section name and a blank, if there is a section; one blank per nesting level, at most 50; the
   thread's name, if it has one; the message. If the user's setting ForceUsePerfCounters (key "SOFTWARE\trelmo" of
   HKEY_CURRENT_USER) is a text that begins with neither F nor 0, the time has the form 34:56.789 instead: minutes
   modulo 60, seconds and milliseconds since the first line.

   A line has at most 1,024 characters, prefix included; the rest is truncated. A format is zero-terminated wide text in
   Microsoft's dialect: %s is wide text, %hs 8-bit text, %ld 32 bits, %I64d 64 bits. If it contains U+25A0 (a black
   square), the text before the first one is the section name and the format starts after it.

   All functions may be called from any thread at any time. None of them fails, and none changes the last error. If
   another program has the log file open exclusively, a line waits for at most a tenth of a second and blocks the
   lines of other threads; then the system beeps and the line is lost. */
#ifndef QXUT23_DEBUG_H
#define QXUT23_DEBUG_H

#include <qxut23/base.h>

#include <stdarg.h>

QXUT_EXTERN_C_BEGIN

/* Writes a line without a module tag. A null format does nothing. */
QXUT_API void UtilDebug(const QXWCHAR* format, ...);

/* Writes a line with a module tag and changes the nesting level. A null or empty `moduleTag` means no tag; tags of at
   most 8 characters keep the columns aligned. If `indentChange` is positive, the following lines are indented by one
   more blank. If it is negative, this line and the following ones are indented by one blank less. Only the sign of
   `indentChange` matters. A null format changes the nesting level without writing a line. There is one nesting level
   for the process, shared by all threads. It changes only while debug output is received.

   By convention the message of a line that opens a level begins with ">", and the message of the line that closes it
   with "<". */
QXUT_API void UtilDebugExt(const QXWCHAR* moduleTag, int32_t indentChange, const QXWCHAR* format, ...);

/* The same with an argument list. The value of `arguments` is indeterminate after the call. */
QXUT_API void UtilDebugExtV(const QXWCHAR* moduleTag, int32_t indentChange, const QXWCHAR* format, va_list arguments);

/* Writes `text` as a line, for callers that can't pass variable arguments. Percent signs in it have no special meaning.
 */
QXUT_API void PasDebug(const QXWCHAR* text);

/* Writes the line "\nQV32UTIL['']: error in '%s' (%s): %s\n" with `where`, `what` and the system's message for the
   calling thread's last error. */
QXUT_API void UtilError(const QXWCHAR* where, const QXWCHAR* what);

/* Returns 1 while debug output is received, otherwise 0. Lets callers skip work that only prepares a line. */
QXUT_API int32_t UtilGetFlags(void);

QXUT_EXTERN_C_END

#endif
