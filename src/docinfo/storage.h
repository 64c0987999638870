// Opens compound files, the storages of older office documents and of mail messages.
#pragma once

#include "core/text/string.h"
#include "docinfo/document_record.h"
#include "files/auto_release.h"
#include "files/file_window.h"

#include <windows.h>

#include <objbase.h>

namespace qx
{

// Returns true if the file begins like a compound file.
bool HasStorageSignature(FileWindow& file);

// A document's storage. If another program has locked the file, it is a copy, which is deleted with this object.
class DocumentStorage
{
public:
    // `record` receives the messages.
    explicit DocumentStorage(clsDocu& record) : _record(record) {}
    DocumentStorage(const DocumentStorage&) = delete;
    DocumentStorage& operator=(const DocumentStorage&) = delete;
    ~DocumentStorage();

    // Returns 0 or the system's error, which is also logged. Called once.
    HRESULT Open(const String& path);

    // Returns the root storage. Requires an open file.
    IStorage& Root() const { return *_storage; }

private:
    HRESULT OpenOrCopy(const String& path);
    HRESULT OpenCopy(const String& path, HRESULT locked);

    clsDocu& _record;
    clsAutoRelease<IStorage*> _storage;
    String _copy; // path of the copy
};

// Open an element of a storage for reading. Return null if there is none.
clsAutoRelease<IStream*> OpenStream(IStorage& storage, const wchar_t* name);
clsAutoRelease<IStorage*> OpenSubStorage(IStorage& storage, const wchar_t* name);

// Opens a storage: StgOpenStorage, or a function of a test.
using StorageOpening = HRESULT (*)(const wchar_t* path, DWORD mode, IStorage** storage);

// Replaces the opening function, for tests. Null restores the system's.
void SetStorageOpening(StorageOpening opening);

} // namespace qx
