/* The library itself: its version, the user's language, what kind of session it runs in, failed assertions. */
#ifndef QXUT23_MODULE_H
#define QXUT23_MODULE_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* What UtilGetVersion is asked for. */
#define QXUT_VERSION_ALL 0
#define QXUT_VERSION_MAJOR 1
#define QXUT_VERSION_MINOR 2
#define QXUT_VERSION_PATCH 3

/* The library's version: for QXUT_VERSION_ALL the major number in the high word and the minor number in the low one
   (0x170002 for 23.2), for the others the one number. -1 for another `which`. */
QXUT_API int32_t UtilGetVersion(int32_t which);

/* The code of the language in which to speak to the user: the one that was stored by UtilLanguageSet, or else that of
   the system's user interface. English is 1, German is 0; a language without a code gives 1. */
QXUT_API int32_t UtilLanguageGet(void);

/* Stores the user's choice of a language code for all programs of this user: the DWORD "Language" of the registry key
   "Software\trelmo\Appearance". 0 takes the choice back, so German is chosen by the system only. 0, or the error code
   of the registry function that failed. */
QXUT_API int32_t UtilLanguageSet(int32_t code);

/* Shows a box that names the failed expression, the file and the line, cut to 80 characters in all, and ends the
   process with exit code -1, whatever the user answers: the call returns only if the box was replaced by one that
   answers with OK (1). Null texts count as empty. */
QXUT_API void UtilAssert(const QXWCHAR* expression, const QXWCHAR* file, uint32_t line);

/* Results of UtilGetOSEnvironmentType. */
#define QXUT_ENVIRONMENT_UNKNOWN 0
#define QXUT_ENVIRONMENT_INTERACTIVE 1
#define QXUT_ENVIRONMENT_SERVICE 3
#define QXUT_ENVIRONMENT_WEBSERVER 4

/* What kind of session the process runs in; found out at the first call. */
QXUT_API int32_t UtilGetOSEnvironmentType(void);

/* 1 if someone is there to answer a question, else 0: the session has a screen and is interactive, and the registry
   does not list the program (its file's name without extension, between semicolons) in the value "NonInteractiveApps"
   of the key "Software\trelmo" of HKEY_LOCAL_MACHINE. Found out at the first call. */
QXUT_API int32_t UtilGetUIInteractionAllowed(void);

QXUT_EXTERN_C_END

#endif
