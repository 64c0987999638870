// Reads what the system's property store has about a document.
#pragma once

#include "docinfo/document_record.h"

#include <windows.h>

#include <shobjidl.h>

namespace qx
{

// The system's functions, or those of a test. Null if there is no such function.
struct ShellIndex
{
    using OpenStore = HRESULT (*)(const wchar_t* path, IPropertyStore** store);
    using ToVariant = HRESULT(WINAPI*)(const PROPVARIANT& value, VARIANT* variant);
    using Clear = HRESULT(WINAPI*)(PROPVARIANT* value);

    OpenStore openByName = nullptr;
    OpenStore openItem = nullptr; // the second way
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
