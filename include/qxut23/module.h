/* The library itself: its version, the user's language, the kind of session it runs in, failed assertions. */
#ifndef QXUT23_MODULE_H
#define QXUT23_MODULE_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Values of `which` for UtilGetVersion. */
#define QXUT_VERSION_ALL 0
#define QXUT_VERSION_MAJOR 1
#define QXUT_VERSION_MINOR 2
#define QXUT_VERSION_PATCH 3

/* Returns the library's version. For QXUT_VERSION_ALL the major number is in the high word and the minor number in the
   low word (0x170002 for 23.2); the other values select one number. Returns -1 for any other `which`. */
QXUT_API int32_t UtilGetVersion(int32_t which);

/* Returns the code of the language in which to address the user: the code stored by UtilLanguageSet, or otherwise the
   code of the language of the system's user interface. English is 1, German is 0. A language without a code returns 1.
 */
QXUT_API int32_t UtilLanguageGet(void);

/* Stores the user's choice of a language code for all programs of this user, as the DWORD "Language" of the registry
   key "Software\trelmo\Appearance". 0 removes the choice, so German can be selected only through the system's language.
   Returns 0, or the error code of the registry function that failed. */
QXUT_API int32_t UtilLanguageSet(int32_t code);

/* Shows a message box with the failed expression, the file and the line, truncated to 80 characters in total, and ends
   the process with exit code -1 whichever button the user chooses. The function returns only if a program has
   replaced MessageBoxW by a function that returns IDOK (1). Null texts count as empty. */
QXUT_API void UtilAssert(const QXWCHAR* expression, const QXWCHAR* file, uint32_t line);

/* Results of UtilGetOSEnvironmentType. */
#define QXUT_ENVIRONMENT_UNKNOWN 0
#define QXUT_ENVIRONMENT_INTERACTIVE 1
#define QXUT_ENVIRONMENT_SERVICE 3
#define QXUT_ENVIRONMENT_WEBSERVER 4

/* Returns the kind of session the process runs in, determined at the first call. */
QXUT_API int32_t UtilGetOSEnvironmentType(void);

/* Returns 1 if a user can be asked a question, otherwise 0. The session must have a visible screen and be interactive,
   and the program (its file name without extension) must not be listed in the registry value "NonInteractiveApps"
   (names separated by semicolons) of the key "Software\trelmo" of HKEY_LOCAL_MACHINE. Determined at the first call. */
QXUT_API int32_t UtilGetUIInteractionAllowed(void);

QXUT_EXTERN_C_END

#endif
