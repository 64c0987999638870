// Files relative to the handle of a folder: the part of the native interface that the library calls.
#pragma once

#include <minwindef.h>
#include <winnt.h>

EXTERN_C_START

typedef LONG NTSTATUS;

#define NT_SUCCESS(status) ((NTSTATUS)(status) >= 0)

typedef struct _UNICODE_STRING
{
    USHORT Length; // in bytes
    USHORT MaximumLength;
    PWSTR Buffer;
} UNICODE_STRING, *PUNICODE_STRING;

typedef struct _OBJECT_ATTRIBUTES
{
    ULONG Length;
    HANDLE RootDirectory;
    PUNICODE_STRING ObjectName;
    ULONG Attributes;
    PVOID SecurityDescriptor;
    PVOID SecurityQualityOfService;
} OBJECT_ATTRIBUTES, *POBJECT_ATTRIBUTES;

typedef struct _IO_STATUS_BLOCK
{
    union
    {
        NTSTATUS Status;
        PVOID Pointer;
    };
    ULONG_PTR Information;
} IO_STATUS_BLOCK, *PIO_STATUS_BLOCK;

typedef struct _FILE_FULL_EA_INFORMATION
{
    ULONG NextEntryOffset;
    UCHAR Flags;
    UCHAR EaNameLength;
    USHORT EaValueLength;
    CHAR EaName[1]; // its terminator and the value follow
} FILE_FULL_EA_INFORMATION, *PFILE_FULL_EA_INFORMATION;

typedef enum _FILE_INFORMATION_CLASS
{
    FileDirectoryInformation = 1,
    FileMaximumInformation = 127
} FILE_INFORMATION_CLASS;

#define OBJ_CASE_INSENSITIVE 0x00000040L

// Dispositions.
#define FILE_OPEN 0x00000001
#define FILE_CREATE 0x00000002
#define FILE_OPEN_IF 0x00000003

// Options.
#define FILE_DIRECTORY_FILE 0x00000001
#define FILE_SEQUENTIAL_ONLY 0x00000004
#define FILE_SYNCHRONOUS_IO_NONALERT 0x00000020
#define FILE_NON_DIRECTORY_FILE 0x00000040
#define FILE_DELETE_ON_CLOSE 0x00001000
#define FILE_OPEN_REPARSE_POINT 0x00200000

// Values of IO_STATUS_BLOCK::Information after a successful open.
#define FILE_OPENED 0x00000001
#define FILE_CREATED 0x00000002

// Opens or creates an entry of the folder RootDirectory. The name is a single component, and the entry itself is opened
// even if it is a link, so FILE_OPEN_REPARSE_POINT is required. The extended attribute $LXMOD (4 bytes) is the mode of
// a new file or folder, as in the Windows Subsystem for Linux; the process's mask applies. Other names, options and
// attributes fail with the status of ERROR_NOT_SUPPORTED. Failures are NTSTATUS_FROM_WIN32 codes.
NTSTATUS NTAPI NtCreateFile(PHANDLE FileHandle, ACCESS_MASK DesiredAccess, POBJECT_ATTRIBUTES ObjectAttributes,
    PIO_STATUS_BLOCK IoStatusBlock, PLARGE_INTEGER AllocationSize, ULONG FileAttributes, ULONG ShareAccess,
    ULONG CreateDisposition, ULONG CreateOptions, PVOID EaBuffer, ULONG EaLength) QXP(NtCreateFile);

// Supports only class 70 (FileStatLxInformation).
NTSTATUS NTAPI NtQueryInformationFile(HANDLE FileHandle, PIO_STATUS_BLOCK IoStatusBlock, PVOID FileInformation,
    ULONG Length, FILE_INFORMATION_CLASS FileInformationClass) QXP(NtQueryInformationFile);

// Sets the mode of a file or folder: the buffer contains the attribute $LXMOD, as for NtCreateFile. Requires the right
// FILE_WRITE_EA.
NTSTATUS NTAPI NtSetEaFile(HANDLE FileHandle, PIO_STATUS_BLOCK IoStatusBlock, PVOID Buffer, ULONG Length)
    QXP(NtSetEaFile);

// Supports only the codes that this layer returns.
ULONG NTAPI RtlNtStatusToDosError(NTSTATUS Status) QXP(RtlNtStatusToDosError);

EXTERN_C_END

#ifdef __cplusplus
static_assert(sizeof(OBJECT_ATTRIBUTES) == 48 && sizeof(UNICODE_STRING) == 16 && sizeof(IO_STATUS_BLOCK) == 16);
#endif
