// Access rights, attributes and other core constants; the critical section structure; interlocked operations.
#pragma once

#include <minwindef.h>

typedef DWORD ACCESS_MASK;

EXTERN_C_START

// Access rights.
#define DELETE 0x00010000
#define READ_CONTROL 0x00020000
#define SYNCHRONIZE 0x00100000
#define STANDARD_RIGHTS_REQUIRED 0x000F0000
#define STANDARD_RIGHTS_READ READ_CONTROL
#define STANDARD_RIGHTS_WRITE READ_CONTROL
#define STANDARD_RIGHTS_EXECUTE READ_CONTROL
#define GENERIC_READ 0x80000000
#define GENERIC_WRITE 0x40000000
#define GENERIC_EXECUTE 0x20000000
#define GENERIC_ALL 0x10000000

#define FILE_READ_DATA 0x0001
#define FILE_WRITE_DATA 0x0002
#define FILE_APPEND_DATA 0x0004
#define FILE_READ_EA 0x0008
#define FILE_WRITE_EA 0x0010
#define FILE_EXECUTE 0x0020
#define FILE_READ_ATTRIBUTES 0x0080
#define FILE_WRITE_ATTRIBUTES 0x0100
#define FILE_ALL_ACCESS (STANDARD_RIGHTS_REQUIRED | SYNCHRONIZE | 0x1FF)
#define FILE_GENERIC_READ (STANDARD_RIGHTS_READ | FILE_READ_DATA | FILE_READ_ATTRIBUTES | FILE_READ_EA | SYNCHRONIZE)
#define FILE_GENERIC_WRITE                                                                                             \
    (STANDARD_RIGHTS_WRITE | FILE_WRITE_DATA | FILE_WRITE_ATTRIBUTES | FILE_WRITE_EA | FILE_APPEND_DATA | SYNCHRONIZE)
#define FILE_GENERIC_EXECUTE (STANDARD_RIGHTS_EXECUTE | FILE_READ_ATTRIBUTES | FILE_EXECUTE | SYNCHRONIZE)

#define FILE_SHARE_READ 0x00000001
#define FILE_SHARE_WRITE 0x00000002
#define FILE_SHARE_DELETE 0x00000004

#define FILE_ATTRIBUTE_READONLY 0x00000001
#define FILE_ATTRIBUTE_HIDDEN 0x00000002
#define FILE_ATTRIBUTE_SYSTEM 0x00000004
#define FILE_CASE_SENSITIVE_SEARCH 0x00000001
#define FILE_CASE_PRESERVED_NAMES 0x00000002
#define FILE_UNICODE_ON_DISK 0x00000004
#define FILE_VOLUME_IS_COMPRESSED 0x00008000
#define FILE_ATTRIBUTE_DIRECTORY 0x00000010
#define FILE_ATTRIBUTE_ARCHIVE 0x00000020
#define FILE_ATTRIBUTE_NORMAL 0x00000080
#define FILE_ATTRIBUTE_TEMPORARY 0x00000100
#define FILE_ATTRIBUTE_REPARSE_POINT 0x00000400

#define EVENT_MODIFY_STATE 0x0002
#define SECTION_QUERY 0x0001
#define SECTION_MAP_WRITE 0x0002
#define SECTION_MAP_READ 0x0004
#define SECTION_MAP_EXECUTE 0x0008
#define SECTION_EXTEND_SIZE 0x0010
#define SECTION_ALL_ACCESS                                                                                             \
    (STANDARD_RIGHTS_REQUIRED | SECTION_QUERY | SECTION_MAP_WRITE | SECTION_MAP_READ | SECTION_MAP_EXECUTE |           \
        SECTION_EXTEND_SIZE)
#define IO_COMPLETION_MODIFY_STATE 0x0002
#define THREAD_TERMINATE 0x0001
#define THREAD_SUSPEND_RESUME 0x0002
#define THREAD_GET_CONTEXT 0x0008
#define THREAD_SET_CONTEXT 0x0010

#define DUPLICATE_CLOSE_SOURCE 0x00000001
#define DUPLICATE_SAME_ACCESS 0x00000002

#define PROCESSOR_ARCHITECTURE_AMD64 9
#define PROCESSOR_ARCHITECTURE_ARM64 12

#define VER_PLATFORM_WIN32_NT 2
#define VER_NT_WORKSTATION 0x0000001

typedef struct _OSVERSIONINFOW
{
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    WCHAR szCSDVersion[128];
} OSVERSIONINFOW, *POSVERSIONINFOW, *LPOSVERSIONINFOW;

typedef struct _OSVERSIONINFOEXW
{
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    WCHAR szCSDVersion[128];
    WORD wServicePackMajor;
    WORD wServicePackMinor;
    WORD wSuiteMask;
    BYTE wProductType;
    BYTE wReserved;
} OSVERSIONINFOEXW, *POSVERSIONINFOEXW, *LPOSVERSIONINFOEXW;

// LockCount is 0 if the section is free, and otherwise twice the number of the thread that holds it, plus 1 if other
// threads may be waiting. A zeroed section is free, so static sections can be entered before their constructors have
// run.
typedef struct _RTL_CRITICAL_SECTION
{
    PVOID DebugInfo;
    LONG LockCount;
    LONG RecursionCount;
    HANDLE OwningThread;
    HANDLE LockSemaphore;
    ULONG_PTR SpinCount;
} RTL_CRITICAL_SECTION, *PRTL_CRITICAL_SECTION;

// The registers of a thread. Each flag names a group of fields of CONTEXT.
#if defined(__x86_64__)

#define CONTEXT_AMD64 0x00100000
#define CONTEXT_CONTROL (CONTEXT_AMD64 | 0x1)          // SegCs, SegSs, Rip, Rsp, EFlags
#define CONTEXT_INTEGER (CONTEXT_AMD64 | 0x2)          // the other general registers
#define CONTEXT_SEGMENTS (CONTEXT_AMD64 | 0x4)         // SegDs, SegEs, SegFs, SegGs
#define CONTEXT_FLOATING_POINT (CONTEXT_AMD64 | 0x8)   // MxCsr, FltSave
#define CONTEXT_DEBUG_REGISTERS (CONTEXT_AMD64 | 0x10) // Dr0 to Dr7

typedef struct _M128A
{
    ULONGLONG Low;
    LONGLONG High;
} __attribute__((aligned(16))) M128A, *PM128A;

typedef struct _XSAVE_FORMAT
{
    WORD ControlWord;
    WORD StatusWord;
    BYTE TagWord;
    BYTE Reserved1;
    WORD ErrorOpcode;
    DWORD ErrorOffset;
    WORD ErrorSelector;
    WORD Reserved2;
    DWORD DataOffset;
    WORD DataSelector;
    WORD Reserved3;
    DWORD MxCsr;
    DWORD MxCsr_Mask;
    M128A FloatRegisters[8];
    M128A XmmRegisters[16];
    BYTE Reserved4[96];
} __attribute__((aligned(16))) XSAVE_FORMAT, *PXSAVE_FORMAT, XMM_SAVE_AREA32, *PXMM_SAVE_AREA32;

typedef struct _CONTEXT
{
    DWORD64 P1Home;
    DWORD64 P2Home;
    DWORD64 P3Home;
    DWORD64 P4Home;
    DWORD64 P5Home;
    DWORD64 P6Home;
    DWORD ContextFlags;
    DWORD MxCsr;
    WORD SegCs;
    WORD SegDs;
    WORD SegEs;
    WORD SegFs;
    WORD SegGs;
    WORD SegSs;
    DWORD EFlags;
    DWORD64 Dr0;
    DWORD64 Dr1;
    DWORD64 Dr2;
    DWORD64 Dr3;
    DWORD64 Dr6;
    DWORD64 Dr7;
    DWORD64 Rax;
    DWORD64 Rcx;
    DWORD64 Rdx;
    DWORD64 Rbx;
    DWORD64 Rsp;
    DWORD64 Rbp;
    DWORD64 Rsi;
    DWORD64 Rdi;
    DWORD64 R8;
    DWORD64 R9;
    DWORD64 R10;
    DWORD64 R11;
    DWORD64 R12;
    DWORD64 R13;
    DWORD64 R14;
    DWORD64 R15;
    DWORD64 Rip;
    XMM_SAVE_AREA32 FltSave;
    M128A VectorRegister[26];
    DWORD64 VectorControl;
    DWORD64 DebugControl;
    DWORD64 LastBranchToRip;
    DWORD64 LastBranchFromRip;
    DWORD64 LastExceptionToRip;
    DWORD64 LastExceptionFromRip;
} __attribute__((aligned(16))) CONTEXT, *PCONTEXT, *LPCONTEXT;

#elif defined(__aarch64__)

#define CONTEXT_ARM64 0x00400000
#define CONTEXT_CONTROL (CONTEXT_ARM64 | 0x1)         // Fp, Lr, Sp, Pc, Cpsr
#define CONTEXT_INTEGER (CONTEXT_ARM64 | 0x2)         // X0 to X28
#define CONTEXT_FLOATING_POINT (CONTEXT_ARM64 | 0x4)  // V, Fpcr, Fpsr
#define CONTEXT_DEBUG_REGISTERS (CONTEXT_ARM64 | 0x8) // Bcr, Bvr, Wcr, Wvr

typedef union _ARM64_NT_NEON128
{
    struct
    {
        ULONGLONG Low;
        LONGLONG High;
    };
    double D[2];
    float S[4];
    WORD H[8];
    BYTE B[16];
} ARM64_NT_NEON128, *PARM64_NT_NEON128;

typedef struct _CONTEXT
{
    DWORD ContextFlags;
    DWORD Cpsr;
    union
    {
        DWORD64 X[31]; // X[29] is Fp and X[30] Lr
        struct
        {
            DWORD64 X0ToX28[29];
            DWORD64 Fp;
            DWORD64 Lr;
        };
    };
    DWORD64 Sp;
    DWORD64 Pc;
    ARM64_NT_NEON128 V[32];
    DWORD Fpcr;
    DWORD Fpsr;
    DWORD Bcr[8];
    DWORD64 Bvr[8];
    DWORD Wcr[2];
    DWORD64 Wvr[2];
} __attribute__((aligned(16))) CONTEXT, *PCONTEXT, *LPCONTEXT;

#else
#error "which registers does this processor have?"
#endif

#define CONTEXT_FULL (CONTEXT_CONTROL | CONTEXT_INTEGER | CONTEXT_FLOATING_POINT)

// Stores the registers with which the caller continues after the call.
void NTAPI RtlCaptureContext(PCONTEXT ContextRecord) QXP(RtlCaptureContext);
// Stores the return addresses of the calling thread, innermost first, and returns their number. The first of them is in
// the caller. `BackTraceHash` receives the sum of the addresses and may be null. Takes no lock and allocates nothing.
WORD NTAPI RtlCaptureStackBackTrace(DWORD FramesToSkip, DWORD FramesToCapture, PVOID* BackTrace, DWORD* BackTraceHash)
    QXP(RtlCaptureStackBackTrace);

// Exceptions.
#define EXCEPTION_NONCONTINUABLE 0x1
#define EXCEPTION_MAXIMUM_PARAMETERS 15
#define EXCEPTION_CONTINUE_SEARCH 0
#define EXCEPTION_EXECUTE_HANDLER 1
#define EXCEPTION_CONTINUE_EXECUTION (-1)

#define EXCEPTION_DATATYPE_MISALIGNMENT 0x80000002u
#define EXCEPTION_BREAKPOINT 0x80000003u
#define EXCEPTION_SINGLE_STEP 0x80000004u // also the hit of a data breakpoint
#define EXCEPTION_ACCESS_VIOLATION 0xC0000005u
#define EXCEPTION_IN_PAGE_ERROR 0xC0000006u
#define EXCEPTION_ILLEGAL_INSTRUCTION 0xC000001Du
#define EXCEPTION_FLT_DIVIDE_BY_ZERO 0xC000008Eu
#define EXCEPTION_FLT_INEXACT_RESULT 0xC000008Fu
#define EXCEPTION_FLT_INVALID_OPERATION 0xC0000090u
#define EXCEPTION_FLT_OVERFLOW 0xC0000091u
#define EXCEPTION_FLT_UNDERFLOW 0xC0000093u
#define EXCEPTION_INT_DIVIDE_BY_ZERO 0xC0000094u
#define EXCEPTION_INT_OVERFLOW 0xC0000095u
#define EXCEPTION_PRIV_INSTRUCTION 0xC0000096u
#define EXCEPTION_STACK_OVERFLOW 0xC00000FDu

typedef struct _EXCEPTION_RECORD
{
    DWORD ExceptionCode;
    DWORD ExceptionFlags;
    struct _EXCEPTION_RECORD* ExceptionRecord;
    PVOID ExceptionAddress;
    DWORD NumberParameters;
    ULONG_PTR ExceptionInformation[EXCEPTION_MAXIMUM_PARAMETERS];
} EXCEPTION_RECORD, *PEXCEPTION_RECORD;

typedef struct _EXCEPTION_POINTERS
{
    PEXCEPTION_RECORD ExceptionRecord;
    PCONTEXT ContextRecord;
} EXCEPTION_POINTERS, *PEXCEPTION_POINTERS, *LPEXCEPTION_POINTERS;

typedef LONG(NTAPI* PVECTORED_EXCEPTION_HANDLER)(PEXCEPTION_POINTERS ExceptionInfo);
typedef LONG(WINAPI* PTOP_LEVEL_EXCEPTION_FILTER)(PEXCEPTION_POINTERS ExceptionInfo);
typedef PTOP_LEVEL_EXCEPTION_FILTER LPTOP_LEVEL_EXCEPTION_FILTER;

typedef void(NTAPI* PAPCFUNC)(ULONG_PTR Parameter);

EXTERN_C_END

// For loops that spin until another processor makes progress.
static inline void YieldProcessor(void)
{
#if defined(__x86_64__)
    __builtin_ia32_pause();
#endif
}

// Token information about the process's user, privileges, and identifiers of accounts. The layer has neither tokens
// nor such identifiers; these are for late binding.
#define TOKEN_QUERY 0x0008
#define TOKEN_ADJUST_PRIVILEGES 0x0020
#define SE_PRIVILEGE_ENABLED 0x00000002

typedef struct _LUID
{
    DWORD LowPart;
    LONG HighPart;
} LUID, *PLUID;

typedef struct _LUID_AND_ATTRIBUTES
{
    LUID Luid;
    DWORD Attributes;
} LUID_AND_ATTRIBUTES, *PLUID_AND_ATTRIBUTES;

typedef struct _TOKEN_PRIVILEGES
{
    DWORD PrivilegeCount;
    LUID_AND_ATTRIBUTES Privileges[1];
} TOKEN_PRIVILEGES, *PTOKEN_PRIVILEGES;

typedef PVOID PSID;

typedef struct _SID_AND_ATTRIBUTES
{
    PSID Sid;
    DWORD Attributes;
} SID_AND_ATTRIBUTES, *PSID_AND_ATTRIBUTES;

typedef struct _TOKEN_GROUPS
{
    DWORD GroupCount;
    SID_AND_ATTRIBUTES Groups[1];
} TOKEN_GROUPS, *PTOKEN_GROUPS;

typedef enum _SID_NAME_USE
{
    SidTypeUser = 1
} SID_NAME_USE,
    *PSID_NAME_USE;

typedef enum _TOKEN_INFORMATION_CLASS
{
    TokenUser = 1,
    TokenGroups
} TOKEN_INFORMATION_CLASS;

// Access lists. In the layer, private data instead of access control entries follows this header.
typedef struct _ACL
{
    BYTE AclRevision;
    BYTE Sbz1;
    WORD AclSize;
    WORD AceCount;
    WORD Sbz2;
} ACL, *PACL;

typedef PVOID PSECURITY_DESCRIPTOR;
typedef WORD SECURITY_DESCRIPTOR_CONTROL;
typedef struct _SECURITY_DESCRIPTOR
{
    BYTE Revision;
    BYTE Sbz1;
    SECURITY_DESCRIPTOR_CONTROL Control;
    PSID Owner;
    PSID Group;
    PACL Sacl;
    PACL Dacl;
} SECURITY_DESCRIPTOR;
#define SECURITY_DESCRIPTOR_REVISION 1
#define SE_DACL_PRESENT 0x0004
typedef DWORD SECURITY_INFORMATION;

#define DACL_SECURITY_INFORMATION 0x00000004

// Reasons for a call of DllMain.
#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1

// Languages and locales.
#define LANG_NEUTRAL 0x00
#define LANG_ENGLISH 0x09
#define LANG_GERMAN 0x07
#define SUBLANG_NEUTRAL 0x00
#define SUBLANG_DEFAULT 0x01
#define SUBLANG_SYS_DEFAULT 0x02
#define SUBLANG_ENGLISH_US 0x01
#define SORT_DEFAULT 0x0
#define MAKELANGID(primary, sub) ((LANGID)((WORD)(sub) << 10 | (WORD)(primary)))
#define PRIMARYLANGID(langid) ((WORD)(langid)&0x3ff)
#define SUBLANGID(langid) ((WORD)(langid) >> 10)
#define MAKELCID(langid, sortid) ((LCID)((DWORD)(WORD)(sortid) << 16 | (DWORD)(WORD)(langid)))
#define LANGIDFROMLCID(lcid) ((WORD)(lcid))
#define SORTIDFROMLCID(lcid) ((WORD)((DWORD)(lcid) >> 16 & 0xf))
#define LANG_SYSTEM_DEFAULT (MAKELANGID(LANG_NEUTRAL, SUBLANG_SYS_DEFAULT))
#define LANG_USER_DEFAULT (MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT))
#define LOCALE_NEUTRAL (MAKELCID(MAKELANGID(LANG_NEUTRAL, SUBLANG_NEUTRAL), SORT_DEFAULT))
#define LOCALE_USER_DEFAULT (MAKELCID(LANG_USER_DEFAULT, SORT_DEFAULT))
#define LOCALE_SYSTEM_DEFAULT (MAKELCID(LANG_SYSTEM_DEFAULT, SORT_DEFAULT))
#define LOCALE_CUSTOM_DEFAULT 0x0c00
#define LOCALE_CUSTOM_UNSPECIFIED 0x1000
#define LOCALE_CUSTOM_UI_DEFAULT 0x1400
#define LOCALE_INVARIANT 0x007f
#define LOCALE_NAME_MAX_LENGTH 85

// Pages of memory.
#define PAGE_NOACCESS 0x01
#define PAGE_READONLY 0x02
#define PAGE_READWRITE 0x04
#define PAGE_WRITECOPY 0x08
#define PAGE_EXECUTE 0x10
#define PAGE_EXECUTE_READ 0x20
#define PAGE_EXECUTE_READWRITE 0x40
#define PAGE_EXECUTE_WRITECOPY 0x80
#define SEC_COMMIT 0x08000000
#define MEM_COMMIT 0x00001000
#define MEM_RESERVE 0x00002000
#define MEM_FREE 0x00010000
#define MEM_PRIVATE 0x00020000
#define MEM_MAPPED 0x00040000
#define MEM_IMAGE 0x01000000

typedef struct _MEMORY_BASIC_INFORMATION
{
    PVOID BaseAddress;
    PVOID AllocationBase;
    DWORD AllocationProtect;
    WORD PartitionId;
    SIZE_T RegionSize;
    DWORD State;
    DWORD Protect;
    DWORD Type;
} MEMORY_BASIC_INFORMATION, *PMEMORY_BASIC_INFORMATION;

#ifdef __cplusplus
static_assert(sizeof(MEMORY_BASIC_INFORMATION) == 48 && offsetof(MEMORY_BASIC_INFORMATION, RegionSize) == 24);
#if defined(__x86_64__)
static_assert(sizeof(CONTEXT) == 0x4D0 && sizeof(XSAVE_FORMAT) == 512);
static_assert(offsetof(CONTEXT, ContextFlags) == 0x30 && offsetof(CONTEXT, SegCs) == 0x38);
static_assert(offsetof(CONTEXT, EFlags) == 0x44 && offsetof(CONTEXT, Dr0) == 0x48 && offsetof(CONTEXT, Rax) == 0x78);
static_assert(offsetof(CONTEXT, Rsp) == 0x98 && offsetof(CONTEXT, Rbp) == 0xA0 && offsetof(CONTEXT, R15) == 0xF0);
static_assert(offsetof(CONTEXT, Rip) == 0xF8 && offsetof(CONTEXT, FltSave) == 0x100);
static_assert(offsetof(CONTEXT, VectorRegister) == 0x300 && offsetof(CONTEXT, DebugControl) == 0x4A8);
#elif defined(__aarch64__)
static_assert(sizeof(CONTEXT) == 0x390 && offsetof(CONTEXT, Fp) == 0xF0 && offsetof(CONTEXT, Sp) == 0x100);
static_assert(offsetof(CONTEXT, V) == 0x110 && offsetof(CONTEXT, Bcr) == 0x318 && offsetof(CONTEXT, Wvr) == 0x380);
#endif
#endif
