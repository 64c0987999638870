// The system's thread pool.
#pragma once

#include <minwindef.h>
#include <winnt.h>

EXTERN_C_START

PTP_POOL WINAPI CreateThreadpool(PVOID reserved) QXP(CreateThreadpool);
void WINAPI CloseThreadpool(PTP_POOL ptpp) QXP(CloseThreadpool);

PTP_CLEANUP_GROUP WINAPI CreateThreadpoolCleanupGroup(void) QXP(CreateThreadpoolCleanupGroup);
void WINAPI CloseThreadpoolCleanupGroup(PTP_CLEANUP_GROUP ptpcg) QXP(CloseThreadpoolCleanupGroup);
void WINAPI CloseThreadpoolCleanupGroupMembers(PTP_CLEANUP_GROUP ptpcg, BOOL fCancelPendingCallbacks,
    PVOID pvCleanupContext) QXP(CloseThreadpoolCleanupGroupMembers);

PTP_WORK WINAPI CreateThreadpoolWork(PTP_WORK_CALLBACK pfnwk, PVOID pv, PTP_CALLBACK_ENVIRON pcbe)
    QXP(CreateThreadpoolWork);
void WINAPI SubmitThreadpoolWork(PTP_WORK pwk) QXP(SubmitThreadpoolWork);
void WINAPI WaitForThreadpoolWorkCallbacks(PTP_WORK pwk, BOOL fCancelPendingCallbacks)
    QXP(WaitForThreadpoolWorkCallbacks);
void WINAPI CloseThreadpoolWork(PTP_WORK pwk) QXP(CloseThreadpoolWork);

BOOL WINAPI CallbackMayRunLong(PTP_CALLBACK_INSTANCE pci) QXP(CallbackMayRunLong);

EXTERN_C_END
