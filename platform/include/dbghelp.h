// The debug-help library: symbols, source lines, types of variables, and walks along the stack. It is a library of its
// own, libqxdbghelp, which LoadLibraryW loads by the name "dbghelp". As on the system, it isn't thread-safe.
//
// Texts are in the default code page; paths are byte strings as the file system has them.
#pragma once

#include <libloaderapi.h>
#include <winnt.h>

EXTERN_C_START

#define IMAGE_FILE_MACHINE_AMD64 0x8664
#define IMAGE_FILE_MACHINE_ARM64 0xAA64

// Symbols of modules.

#define SYMOPT_CASE_INSENSITIVE 0x00000001
#define SYMOPT_UNDNAME 0x00000002
#define SYMOPT_DEFERRED_LOADS 0x00000004
#define SYMOPT_LOAD_LINES 0x00000010
#define SYMOPT_OMAP_FIND_NEAREST 0x00000020
#define SYMOPT_LOAD_ANYTHING 0x00000040
#define SYMOPT_FAIL_CRITICAL_ERRORS 0x00000200
#define SYMOPT_AUTO_PUBLICS 0x00010000

#define CBA_SRCSRV_EVENT 0x40000000

typedef enum
{
    SymNone = 0,
    SymCoff,
    SymCv,
    SymPdb,
    SymExport, // dynamic symbols only
    SymDeferred,
    SymSym, // a symbol table without debug information
    SymDia, // DWARF
    SymVirtual,
    NumSymTypes
} SYM_TYPE;

typedef struct _IMAGEHLP_SYMBOL64
{
    DWORD SizeOfStruct;
    DWORD64 Address;
    DWORD Size;
    DWORD Flags;
    DWORD MaxNameLength;
    CHAR Name[1];
} IMAGEHLP_SYMBOL64, *PIMAGEHLP_SYMBOL64;

typedef struct _IMAGEHLP_LINE64
{
    DWORD SizeOfStruct;
    PVOID Key;
    DWORD LineNumber;
    CHAR* FileName; // valid until the module or the session ends
    DWORD64 Address;
} IMAGEHLP_LINE64, *PIMAGEHLP_LINE64;

typedef struct _IMAGEHLP_MODULE64
{
    DWORD SizeOfStruct;
    DWORD64 BaseOfImage;
    DWORD ImageSize;
    DWORD TimeDateStamp;
    DWORD CheckSum;
    DWORD NumSyms;
    SYM_TYPE SymType;
    CHAR ModuleName[32];
    CHAR ImageName[256];
    CHAR LoadedImageName[256];
    CHAR LoadedPdbName[256]; // the separate file with debug information, if there is one
    DWORD CVSig;
    CHAR CVData[MAX_PATH * 3];
    DWORD PdbSig;
    GUID PdbSig70;
    DWORD PdbAge;
    BOOL PdbUnmatched;
    BOOL DbgUnmatched;
    BOOL LineNumbers;
    BOOL GlobalSymbols;
    BOOL TypeInfo;
    BOOL SourceIndexed;
    BOOL Publics;
    DWORD MachineType;
    DWORD Reserved;
} IMAGEHLP_MODULE64, *PIMAGEHLP_MODULE64;

typedef struct _MODLOAD_DATA
{
    DWORD ssize;
    DWORD ssig;
    PVOID data;
    DWORD size;
    DWORD flags;
} MODLOAD_DATA, *PMODLOAD_DATA;

typedef BOOL(CALLBACK* PSYMBOL_REGISTERED_CALLBACK64)(
    HANDLE hProcess, ULONG ActionCode, ULONG64 CallbackData, ULONG64 UserContext);
typedef BOOL(CALLBACK* PENUMLOADED_MODULES_CALLBACK64)(
    PCSTR ModuleName, DWORD64 ModuleBase, ULONG ModuleSize, PVOID UserContext);

// `UserSearchPath` is a list of folders, separated by ';', that may contain separate files with debug information, by
// name or as .build-id/xx/yyyy.debug. Such files are also found where debuggers look for them: beside the module, in
// its folder .debug, and below /usr/lib/debug. No file is fetched from a server.
BOOL WINAPI SymInitialize(HANDLE hProcess, PCSTR UserSearchPath, BOOL fInvadeProcess) QXP(SymInitialize);
BOOL WINAPI SymCleanup(HANDLE hProcess) QXP(SymCleanup);
DWORD WINAPI SymGetOptions(void) QXP(SymGetOptions);
DWORD WINAPI SymSetOptions(DWORD SymOptions) QXP(SymSetOptions);
// The layer has no events to report, so the callback is stored and never called.
BOOL WINAPI SymRegisterCallback64(HANDLE hProcess, PSYMBOL_REGISTERED_CALLBACK64 CallbackFunction, ULONG64 UserContext)
    QXP(SymRegisterCallback64);

// Reads the headers of an image; its symbols are read at the first look-up. If ImageName is null, reads the image that
// is loaded at BaseOfDll. Returns the base, or 0 on failure. If the image is registered already, returns 0 and sets
// ERROR_SUCCESS.
DWORD64 WINAPI SymLoadModuleEx(HANDLE hProcess, HANDLE hFile, PCSTR ImageName, PCSTR ModuleName, DWORD64 BaseOfDll,
    DWORD DllSize, PMODLOAD_DATA Data, DWORD Flags) QXP(SymLoadModuleEx);
DWORD64 WINAPI SymLoadModule64(HANDLE hProcess, HANDLE hFile, PCSTR ImageName, PCSTR ModuleName, DWORD64 BaseOfDll,
    DWORD SizeOfDll) QXP(SymLoadModule64);
DWORD64 WINAPI SymGetModuleBase64(HANDLE hProcess, DWORD64 qwAddr) QXP(SymGetModuleBase64);
BOOL WINAPI SymGetModuleInfo64(HANDLE hProcess, DWORD64 qwAddr, PIMAGEHLP_MODULE64 ModuleInfo) QXP(SymGetModuleInfo64);
// Lists the modules of the calling process: the program, its libraries and the image that the kernel maps (vDSO).
BOOL WINAPI EnumerateLoadedModules64(HANDLE hProcess, PENUMLOADED_MODULES_CALLBACK64 EnumLoadedModulesCallback,
    PVOID UserContext) QXP(EnumerateLoadedModules64);

// Stores the symbol's name as the linker has it (mangled). Fails for an address outside of all symbols.
BOOL WINAPI SymGetSymFromAddr64(HANDLE hProcess, DWORD64 qwAddr, DWORD64* pdwDisplacement, PIMAGEHLP_SYMBOL64 Symbol)
    QXP(SymGetSymFromAddr64);
BOOL WINAPI SymGetLineFromAddr64(HANDLE hProcess, DWORD64 qwAddr, PDWORD pdwDisplacement, PIMAGEHLP_LINE64 Line64)
    QXP(SymGetLineFromAddr64);

// Demangles a name. UNDNAME_NAME_ONLY omits parameters and result. A name that isn't mangled is copied. Returns the
// length, or 0 on failure. Longer names are truncated.
#define UNDNAME_COMPLETE 0x0000
#define UNDNAME_NAME_ONLY 0x1000
DWORD WINAPI UnDecorateSymbolName(PCSTR name, PSTR outputString, DWORD maxStringLength, DWORD flags)
    QXP(UnDecorateSymbolName);

// Parameters, local variables and their types.

#define SYMFLAG_REGREL 0x00000010
#define SYMFLAG_PARAMETER 0x00000040
#define SYMFLAG_LOCAL 0x00000080

enum SymTagEnum
{
    SymTagNull = 0,
    SymTagFunction = 5,
    SymTagData = 7,
    SymTagUDT = 11,
    SymTagEnum = 12,
    SymTagFunctionType = 13,
    SymTagPointerType = 14,
    SymTagArrayType = 15,
    SymTagBaseType = 16,
};

typedef struct _SYMBOL_INFO
{
    ULONG SizeOfStruct;
    ULONG TypeIndex;
    ULONG64 Reserved[2];
    ULONG Index;
    ULONG Size;
    ULONG64 ModBase;
    ULONG Flags;
    ULONG64 Value;
    ULONG64 Address; // with SYMFLAG_REGREL relative to the register; 0 if the variable isn't in memory
    ULONG Register;
    ULONG Scope;
    ULONG Tag;
    ULONG NameLen;
    ULONG MaxNameLen;
    CHAR Name[1];
} SYMBOL_INFO, *PSYMBOL_INFO;

typedef struct _IMAGEHLP_STACK_FRAME
{
    ULONG64 InstructionOffset;
    ULONG64 ReturnOffset;
    ULONG64 FrameOffset;
    ULONG64 StackOffset;
    ULONG64 BackingStoreOffset;
    ULONG64 FuncTableEntry;
    ULONG64 Params[4];
    ULONG64 Reserved[5];
    BOOL Virtual;
    ULONG Reserved2;
} IMAGEHLP_STACK_FRAME, *PIMAGEHLP_STACK_FRAME;

typedef PVOID PIMAGEHLP_CONTEXT;
typedef BOOL(CALLBACK* PSYM_ENUMERATESYMBOLS_CALLBACK)(PSYMBOL_INFO pSymInfo, ULONG SymbolSize, PVOID UserContext);

typedef enum _IMAGEHLP_SYMBOL_TYPE_INFO
{
    TI_GET_SYMTAG = 0,
    TI_GET_LENGTH = 2,
    TI_GET_TYPE = 3,
    TI_GET_BASETYPE = 5,
    TI_GET_COUNT = 12,
} IMAGEHLP_SYMBOL_TYPE_INFO;

// Selects the function, and the scopes inside of it, that contain an instruction.
BOOL WINAPI SymSetContext(HANDLE hProcess, PIMAGEHLP_STACK_FRAME StackFrame, PIMAGEHLP_CONTEXT Context)
    QXP(SymSetContext);
// Lists the parameters of the selected function in the order of their declaration, and then its local variables,
// innermost scope first. Addresses are relative to register 22, whose value is STACKFRAME64.AddrFrame. BaseOfDll must
// be 0 and Mask null or "*" (ERROR_NOT_SUPPORTED).
BOOL WINAPI SymEnumSymbols(HANDLE hProcess, ULONG64 BaseOfDll, PCSTR Mask,
    PSYM_ENUMERATESYMBOLS_CALLBACK EnumSymbolsCallback, PVOID UserContext) QXP(SymEnumSymbols);
// Qualifiers and typedefs are skipped: the result describes the type behind them.
BOOL WINAPI SymGetTypeInfo(
    HANDLE hProcess, DWORD64 ModBase, ULONG TypeId, IMAGEHLP_SYMBOL_TYPE_INFO GetType, PVOID pInfo) QXP(SymGetTypeInfo);

// Stack walks.

typedef enum
{
    AddrMode1616,
    AddrMode1632,
    AddrModeReal,
    AddrModeFlat
} ADDRESS_MODE;

typedef struct _tagADDRESS64
{
    DWORD64 Offset;
    WORD Segment;
    ADDRESS_MODE Mode;
} ADDRESS64, *LPADDRESS64;

typedef struct _KDHELP64
{
    DWORD64 Thread;
    DWORD ThCallbackStack;
    DWORD ThCallbackBStore;
    DWORD NextCallback;
    DWORD FramePointer;
    DWORD64 KiCallUserMode;
    DWORD64 KeUserCallbackDispatcher;
    DWORD64 SystemRangeStart;
    DWORD64 KiUserExceptionDispatcher;
    DWORD64 StackBase;
    DWORD64 StackLimit;
    DWORD BuildVersion;
    DWORD Reserved0;
    DWORD64 Reserved1[4];
} KDHELP64, *PKDHELP64;

typedef struct _tagSTACKFRAME64
{
    ADDRESS64 AddrPC;
    ADDRESS64 AddrReturn;
    ADDRESS64 AddrFrame; // 16 bytes below the caller's stack pointer, where functions with a frame pointer save it
    ADDRESS64 AddrStack;
    ADDRESS64 AddrBStore; // Offset is 1 if a signal interrupted the frame, so that AddrPC is no return address, else 0
    PVOID FuncTableEntry;
    DWORD64 Params[4]; // always 0
    BOOL Far;
    BOOL Virtual;
    DWORD64 Reserved[3];
    KDHELP64 KdHelp;
} STACKFRAME64, *LPSTACKFRAME64;

typedef BOOL(WINAPI* PREAD_PROCESS_MEMORY_ROUTINE64)(
    HANDLE hProcess, DWORD64 qwBaseAddress, PVOID lpBuffer, DWORD nSize, PDWORD lpNumberOfBytesRead);
typedef PVOID(WINAPI* PFUNCTION_TABLE_ACCESS_ROUTINE64)(HANDLE hProcess, DWORD64 AddrBase);
typedef DWORD64(WINAPI* PGET_MODULE_BASE_ROUTINE64)(HANDLE hProcess, DWORD64 Address);
typedef DWORD64(WINAPI* PTRANSLATE_ADDRESS_ROUTINE64)(HANDLE hProcess, HANDLE hThread, LPADDRESS64 lpaddr);

// Stores the frame of the context at the first call, for which `StackFrame` must be zeroed except for AddrPC, and the
// caller's frame at each further call. Changes the context. The routines aren't called, because the unwinder has its
// own.
BOOL WINAPI StackWalk64(DWORD MachineType, HANDLE hProcess, HANDLE hThread, LPSTACKFRAME64 StackFrame,
    PVOID ContextRecord, PREAD_PROCESS_MEMORY_ROUTINE64 ReadMemoryRoutine,
    PFUNCTION_TABLE_ACCESS_ROUTINE64 FunctionTableAccessRoutine, PGET_MODULE_BASE_ROUTINE64 GetModuleBaseRoutine,
    PTRANSLATE_ADDRESS_ROUTINE64 TranslateAddress) QXP(StackWalk64);
// Always returns null with ERROR_NOT_SUPPORTED, because unwind tables have another form here.
PVOID WINAPI SymFunctionTableAccess64(HANDLE hProcess, DWORD64 AddrBase) QXP(SymFunctionTableAccess64);

EXTERN_C_END

#ifdef __cplusplus
static_assert(sizeof(IMAGEHLP_SYMBOL64) == 32 && offsetof(IMAGEHLP_SYMBOL64, Name) == 28);
static_assert(sizeof(IMAGEHLP_LINE64) == 40 && sizeof(IMAGEHLP_MODULE64) == 1680);
static_assert(sizeof(SYMBOL_INFO) == 88 && offsetof(SYMBOL_INFO, Name) == 84);
static_assert(sizeof(IMAGEHLP_STACK_FRAME) == 128 && sizeof(STACKFRAME64) == 264);
#endif
