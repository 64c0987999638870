// Reads the properties of a document from the system's property store.
#pragma once

#include "docinfo/document_record.h"

#include <windows.h>

#include <shobjidl.h>

namespace qx
{

// The system's functions, or functions of a test. A missing function is null.
struct ShellIndex
{
    using OpenStore = HRESULT (*)(const wchar_t* path, IPropertyStore** store);
    using ToVariant = HRESULT(WINAPI*)(const PROPVARIANT& value, VARIANT* variant);
    using Clear = HRESULT(WINAPI*)(PROPVARIANT* value);

    OpenStore openByName = nullptr;
    OpenStore openItem = nullptr; // used if openByName finds no texts
    ToVariant toVariant = nullptr;
    Clear clear = nullptr;
};

// Returns true if the system has a property store.
bool HasShellIndex();

// Returns 0 if the store has texts about the file, otherwise -1. The file must be closed. Dates that were found remain
// in the record in both cases.
int ReadShellIndex(clsDocu& record, const String& path);
int ReadShellIndex(clsDocu& record, const String& path, const ShellIndex& index);

} // namespace qx
