/* Plays the role of the control library: reports each call to a function of the test, whose address is in the
   environment. */
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

#if defined(_WIN32) /* the way to export a function differs, and the C library has a copy of the environment */
#include <windows.h>
#define EXPORTED __declspec(dllexport)
#else
#define EXPORTED __attribute__((visibility("default")))
#endif

typedef int64_t (*Sink)(const char* name, int64_t number, const void* first, const void* second, int32_t last);

static int64_t Report(const char* name, int64_t number, const void* first, const void* second, int32_t last)
{
    void* address = NULL;
#if defined(_WIN32) /* see above */
    char value[32] = "";
    const char* const text = GetEnvironmentVariableA("QXUT_CONTROL_SINK", value, sizeof value) ? value : NULL;
#else
    const char* const text = getenv("QXUT_CONTROL_SINK");
#endif
    if (!text || sscanf(text, "%p", &address) != 1)
        return 0;
    return ((Sink)(uintptr_t)address)(name, number, first, second, last);
}

EXPORTED int64_t CtlJobOpenEx(void)
{
    return Report("CtlJobOpenEx", 0, NULL, NULL, 0);
}

EXPORTED void CtlJobCloseEx(int64_t job)
{
    Report("CtlJobCloseEx", job, NULL, NULL, 0);
}

EXPORTED void CtlJobOpen(void)
{
    Report("CtlJobOpen", 0, NULL, NULL, 0);
}

EXPORTED void CtlJobClose(void)
{
    Report("CtlJobClose", 0, NULL, NULL, 0);
}

EXPORTED int64_t CtlAbortDlgStart(void* parent, const void* first, const void* second, int32_t parts)
{
    return Report("CtlAbortDlgStart", (int64_t)(intptr_t)parent, first, second, parts);
}

EXPORTED void CtlAbortDlgEnd(int64_t dialog)
{
    Report("CtlAbortDlgEnd", dialog, NULL, NULL, 0);
}

EXPORTED void CtlAbortDlgSetText(int64_t dialog, const void* text, int32_t number)
{
    Report("CtlAbortDlgSetText", dialog, text, NULL, number);
}

EXPORTED int32_t CtlAbortDlgCheckAbort(int64_t dialog)
{
    return (int32_t)Report("CtlAbortDlgCheckAbort", dialog, NULL, NULL, 0);
}

EXPORTED void* CtlAbortDlgHWnd(int64_t dialog)
{
    return (void*)(intptr_t)Report("CtlAbortDlgHWnd", dialog, NULL, NULL, 0);
}
