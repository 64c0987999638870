// Mappings of memory that processes share by name.
#include <memoryapi.h>

#include "base/fail.h"
#include "base/forever.h"
#include "base/fork_gate.h"
#include "base/handle_table.h"
#include "base/text.h"
#include "base/user_folder.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <mutex>
#include <new>

using namespace qxplatform;

namespace
{

constexpr char kMappingKind[] = "map";
constexpr DWORD kSectionRights = SECTION_MAP_READ | SECTION_MAP_WRITE;
constexpr ULONGLONG kViewGranularity = 0x10000; // as on the system
constexpr int kMostAttempts = 10'000;

SIZE_T RoundedToPages(ULONGLONG size)
{
    const ULONGLONG page = static_cast<ULONGLONG>(sysconf(_SC_PAGESIZE));
    return (size + page - 1) / page * page;
}

// A mapping of a file that is held open. The file of a named mapping is in the user's folder, and each process that has
// a handle of the mapping holds it with a shared flock. The file of an unnamed one has no name.
class MappingObject : public Object
{
public:
    static constexpr ObjectType kObjectType = ObjectType::Mapping;

    MappingObject(Descriptor file, std::string name)
        : Object(kObjectType),
          _file(std::move(file)),
          _name(std::move(name))
    {
    }

    DWORD MapAccess(DWORD access) const override
    {
        DWORD rights = access & kSectionRights;
        if ((access & (GENERIC_READ | GENERIC_ALL)) != 0)
            rights |= SECTION_MAP_READ;
        if ((access & (GENERIC_WRITE | GENERIC_ALL)) != 0)
            rights |= SECTION_MAP_WRITE;
        return rights;
    }

    int file() const { return _file.Get(); }

private:
    // A forked child shares the parent's hold and must leave the name to it.
    void LastHandleClosed() override
    {
        if (!_name.empty() && _generation == ForkGeneration())
            EndHold(_name, _file.Get());
    }

    const Descriptor _file;
    const std::string _name;
    const unsigned _generation = ForkGeneration();
};

// The sizes of the views, by address.
struct Views
{
    Mutex lock;
    std::map<const void*, SIZE_T> sizes;
};

Views& TheViews()
{
    static constinit Forever<Views> views;
    return views.Get([] { return Views(); });
}

// Creates a file without a name. Its memory is reserved, so that writing to a view can't fail later. Empty with a last
// error on failure.
Descriptor MakeFile(const Descriptor& folder, ULONGLONG size)
{
    if (size == 0)
    {
        Fail(ERROR_INVALID_PARAMETER);
        return Descriptor();
    }
    Descriptor file(folder ? openat(folder.Get(), ".", O_RDWR | O_TMPFILE | O_CLOEXEC, S_IRUSR | S_IWUSR)
                           : memfd_create("mapping", MFD_CLOEXEC));
    if (!file || fchmod(file.Get(), S_IRUSR | S_IWUSR) != 0)
    {
        FailErrno();
        return Descriptor();
    }
    if (const int code = posix_fallocate(file.Get(), 0, static_cast<off_t>(size)); code != 0)
    {
        Fail(ERROR_COMMITMENT_LIMIT);
        return Descriptor();
    }
    return file;
}

// Returns the part of a name behind its namespace. Empty with a last error if the name isn't valid.
std::u16string_view WithoutNamespace(std::u16string_view name)
{
    for (const std::u16string_view prefix : {u"Local\\", u"Global\\"})
        if (name.starts_with(prefix))
        {
            name.remove_prefix(prefix.size());
            break;
        }
    if (name.empty() || name.find(u'\\') != std::u16string_view::npos)
    {
        Fail(name.empty() ? ERROR_INVALID_NAME : ERROR_PATH_NOT_FOUND);
        return {};
    }
    return name;
}

// Opens the file and holds it. Empty with a last error on failure: ERROR_FILE_NOT_FOUND if there is no such mapping.
Descriptor OpenHeld(const Descriptor& folder, const std::string& name, int flags)
{
    for (int attempt = 0; attempt < kMostAttempts; ++attempt)
    {
        Descriptor file = OpenInUserFolder(folder, name, flags);
        if (!file)
        {
            FailErrno();
            return Descriptor();
        }
        switch (HoldIfAlive(folder, name, file.Get()))
        {
        case Liveness::Held:
            return file;
        case Liveness::Removed:
            break;
        case Liveness::Busy:
            sched_yield();
            break;
        }
    }
    Fail(ERROR_BUSY);
    return Descriptor();
}

// Opens the mapping or publishes a new one. The file gets its name when it is complete, so that no process ever sees or
// waits for a mapping that is being created.
Descriptor OpenOrCreate(const Descriptor& folder, const std::string& name, ULONGLONG size, bool& isNew)
{
    Descriptor fresh;
    for (int attempt = 0; attempt < kMostAttempts; ++attempt)
    {
        isNew = false;
        if (Descriptor file = OpenHeld(folder, name, O_RDWR))
            return file;
        if (GetLastError() != ERROR_FILE_NOT_FOUND)
            return Descriptor();
        if (!fresh)
        {
            RemoveDeadFiles(folder, kMappingKind);
            fresh = MakeFile(folder, size);
            if (!fresh)
                return Descriptor();
            Lock(fresh.Get(), LOCK_SH | LOCK_NB);
        }
        const std::string path = "/proc/self/fd/" + std::to_string(fresh.Get());
        isNew = linkat(AT_FDCWD, path.c_str(), folder.Get(), name.c_str(), AT_SYMLINK_FOLLOW) == 0;
        if (isNew)
            return fresh;
        if (errno != EEXIST)
        {
            FailErrno();
            return Descriptor();
        }
    }
    Fail(ERROR_BUSY);
    return Descriptor();
}

HANDLE NewHandle(Descriptor file, const std::string& name, DWORD access)
{
    return AddHandle(MakeObject<MappingObject>(std::move(file), name), access);
}

// Opens the user's folder and determines the file's name in it. Returns false with a last error on failure.
bool Locate(LPCWSTR name, Descriptor& folder, std::string& fileName)
{
    const std::u16string_view plain = WithoutNamespace(View(name));
    if (plain.empty())
        return false;
    fileName = UserFolderName(kMappingKind, plain);
    if (fileName.empty())
        return Fail(ERROR_FILENAME_EXCED_RANGE);
    folder = OpenUserFolder();
    return folder || FailErrno();
}

} // namespace

HANDLE WINAPI CreateFileMappingW(HANDLE hFile, LPSECURITY_ATTRIBUTES, DWORD flProtect, DWORD dwMaximumSizeHigh,
    DWORD dwMaximumSizeLow, LPCWSTR lpName)
try
{
    const DWORD protection = flProtect & ~DWORD{SEC_COMMIT};
    if (hFile != INVALID_HANDLE_VALUE || (protection != PAGE_READWRITE && protection != PAGE_READONLY))
    {
        Fail(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    const ULONGLONG size = ULONGLONG{dwMaximumSizeHigh} << 32 | dwMaximumSizeLow;
    if (size > INT64_MAX - kViewGranularity)
    {
        Fail(ERROR_COMMITMENT_LIMIT);
        return nullptr;
    }
    Descriptor folder;
    std::string name;
    bool isNew = true;
    Descriptor file;
    if (lpName == nullptr || *lpName == 0)
        file = MakeFile(folder, RoundedToPages(size));
    else if (Locate(lpName, folder, name))
        file = OpenOrCreate(folder, name, RoundedToPages(size), isNew);
    if (!file)
        return nullptr;
    const HANDLE handle =
        NewHandle(std::move(file), name, protection == PAGE_READWRITE ? kSectionRights : DWORD{SECTION_MAP_READ});
    if (handle != nullptr)
        SetLastError(isNew ? ERROR_SUCCESS : ERROR_ALREADY_EXISTS);
    return handle;
}
catch (const std::bad_alloc&)
{
    Fail(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

HANDLE WINAPI OpenFileMappingW(DWORD dwDesiredAccess, BOOL, LPCWSTR lpName)
try
{
    Descriptor folder;
    std::string name;
    if (lpName == nullptr || !Locate(lpName, folder, name))
    {
        if (lpName == nullptr)
            Fail(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const DWORD access = dwDesiredAccess & kSectionRights;
    Descriptor file = OpenHeld(folder, name, (access & SECTION_MAP_WRITE) != 0 ? O_RDWR : O_RDONLY);
    return file ? NewHandle(std::move(file), name, access) : nullptr;
}
catch (const std::bad_alloc&)
{
    Fail(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

LPVOID WINAPI MapViewOfFile(HANDLE hFileMappingObject, DWORD dwDesiredAccess, DWORD dwFileOffsetHigh,
    DWORD dwFileOffsetLow, SIZE_T dwNumberOfBytesToMap)
try
{
    const bool writes = (dwDesiredAccess & FILE_MAP_WRITE) != 0;
    const Pinned<MappingObject> mapping(
        hFileMappingObject, writes ? DWORD{SECTION_MAP_WRITE} : DWORD{SECTION_MAP_READ});
    if (!mapping)
        return nullptr;
    struct stat info
    {
    };
    if (fstat(mapping->file(), &info) != 0)
    {
        FailErrno();
        return nullptr;
    }
    const ULONGLONG total = static_cast<ULONGLONG>(info.st_size);
    const ULONGLONG offset = ULONGLONG{dwFileOffsetHigh} << 32 | dwFileOffsetLow;
    if (offset % kViewGranularity != 0 || offset >= total || dwNumberOfBytesToMap > total - offset)
    {
        Fail(offset % kViewGranularity != 0 ? ERROR_MAPPED_ALIGNMENT : ERROR_ACCESS_DENIED);
        return nullptr;
    }
    const SIZE_T size = dwNumberOfBytesToMap == 0 ? total - offset : dwNumberOfBytesToMap;
    Views& views = TheViews();
    const std::lock_guard guard(views.lock);
    void* const view = mmap(nullptr, size, writes ? PROT_READ | PROT_WRITE : PROT_READ, MAP_SHARED, mapping->file(),
        static_cast<off_t>(offset));
    if (view == MAP_FAILED)
    {
        FailErrno();
        return nullptr;
    }
    try
    {
        views.sizes[view] = size;
    }
    catch (...)
    {
        munmap(view, size);
        throw;
    }
    return view;
}
catch (const std::bad_alloc&)
{
    Fail(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

BOOL WINAPI UnmapViewOfFile(LPCVOID lpBaseAddress)
{
    Views& views = TheViews();
    const std::lock_guard guard(views.lock);
    const auto found = views.sizes.find(lpBaseAddress);
    if (found == views.sizes.end())
        return Fail(ERROR_INVALID_ADDRESS);
    munmap(const_cast<void*>(lpBaseAddress), found->second);
    views.sizes.erase(found);
    return TRUE;
}
