#include <winnt.h>

void NTAPI RtlCaptureContext(PCONTEXT ContextRecord)
{
    *ContextRecord = {};
}

WORD NTAPI RtlCaptureStackBackTrace(DWORD, DWORD, PVOID*, DWORD*)
{
    return 0;
}
