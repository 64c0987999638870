/* The debug output: trace lines of this library and of all programs that load it.

   Lines go to a log file that the settings of the machine name (registry key "software\trelmo" of HKEY_LOCAL_MACHINE,
   read when the library is loaded):

   - Debug.LogFilename: the file. A name without a folder stands for one in the temp folder.
   - Debug.LogFile.Flush: a text that begins with an upper-case T has each line written through to the disk.

   Without that setting nobody takes lines, and the functions below return at once, before they look at any argument.

   A line in the file is UTF-16LE without a byte order mark, ended by CR LF:

       PROF    : 12:34:56.789 00001a2c/03 7 INIT   [Worker] state 1

   It has the module tag, left-justified in 8, a colon and a blank, if there is a tag; the local time; thread id and
   processor in hexadecimal; the last digit of a count of all lines of the process, so that a gap shows; the section
   name and a blank if there is one; as many blanks as the line is nested deep, 50 at most; the thread's name if it has
   one; the message. With the user's setting ForceUsePerfCounters (key "SOFTWARE\trelmo" of HKEY_CURRENT_USER, any text
   that begins with neither F nor 0) the time is 34:56.789 instead: minutes modulo 60, seconds and milliseconds since
   the first line.

   A line has at most 1,024 characters, stamp and all; the rest is cut off. A format is zero-terminated wide text in
   Microsoft's dialect: %s is wide text and %hs 8-bit text, %ld has 32 bits and %I64d 64. If it contains U+25A0 (a black
   square), the text before the first one is the section name and the format begins behind it.

   Any thread may call these at any time. None of them fails, and the last error stays as it was. While another program
   keeps the log file to itself, a line waits for it, with all lines behind it, for a tenth of a second at most; then
   the system beeps and the line is lost. */
#ifndef QXUT23_DEBUG_H
#define QXUT23_DEBUG_H

#include <qxut23/base.h>

#include <stdarg.h>

QXUT_EXTERN_C_BEGIN

/* A line without a module tag. A null format does nothing. */
QXUT_API void UtilDebug(const QXWCHAR* format, ...);

/* A line with a module tag (null or empty for none; at most 8 characters keep the columns straight), that opens or
   closes a level of nesting: above 0 the lines behind it stand one blank deeper, below 0 this line and those behind it
   stand one blank less deep. Only the sign of `indentChange` counts; 0 changes nothing. A null format changes the
   nesting without a line. The nesting is that of the process, whichever thread writes; it changes only while someone
   takes lines.

   By convention the message of a line that opens a level begins with ">", that of its counterpart with "<". */
QXUT_API void UtilDebugExt(const QXWCHAR* moduleTag, int32_t indentChange, const QXWCHAR* format, ...);

/* The same with the list of arguments that the caller got. The list is used up: its value is indeterminate then. */
QXUT_API void UtilDebugExtV(const QXWCHAR* moduleTag, int32_t indentChange, const QXWCHAR* format, va_list arguments);

/* The text as a line, for callers that can't pass variable arguments: signs of percent mean nothing in it. */
QXUT_API void PasDebug(const QXWCHAR* text);

/* The line "\nQV32UTIL['']: error in '%s' (%s): %s\n" of both texts and the system's text for the calling thread's last
   error. */
QXUT_API void UtilError(const QXWCHAR* where, const QXWCHAR* what);

/* 1 while someone takes lines, else 0: whether it is worth preparing what a line would show. */
QXUT_API int32_t UtilGetFlags(void);

QXUT_EXTERN_C_END

#endif
