// The system's thread pool.
#pragma once

#include <minwindef.h>
#include <winnt.h>

EXTERN_C_START

QXPLATFORM_API PTP_POOL WINAPI CreateThreadpool(PVOID reserved);
QXPLATFORM_API void WINAPI CloseThreadpool(PTP_POOL ptpp);

QXPLATFORM_API PTP_CLEANUP_GROUP WINAPI CreateThreadpoolCleanupGroup(void);
QXPLATFORM_API void WINAPI CloseThreadpoolCleanupGroup(PTP_CLEANUP_GROUP ptpcg);
QXPLATFORM_API void WINAPI CloseThreadpoolCleanupGroupMembers(
    PTP_CLEANUP_GROUP ptpcg, BOOL fCancelPendingCallbacks, PVOID pvCleanupContext);

QXPLATFORM_API PTP_WORK WINAPI CreateThreadpoolWork(PTP_WORK_CALLBACK pfnwk, PVOID pv, PTP_CALLBACK_ENVIRON pcbe);
QXPLATFORM_API void WINAPI SubmitThreadpoolWork(PTP_WORK pwk);
QXPLATFORM_API void WINAPI WaitForThreadpoolWorkCallbacks(PTP_WORK pwk, BOOL fCancelPendingCallbacks);
QXPLATFORM_API void WINAPI CloseThreadpoolWork(PTP_WORK pwk);

QXPLATFORM_API BOOL WINAPI CallbackMayRunLong(PTP_CALLBACK_INSTANCE pci);

EXTERN_C_END
