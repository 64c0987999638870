#include "threads/temp_file_manager.h"

#include "core/critical_section.h"
#include "core/forever.h"
#include "files/temp_file_removal.h"

#include <memory>
#include <utility>

namespace qx
{
namespace
{

struct Manager
{
    // Leaks a manager that wasn't closed. Its thread can't be waited for while the library is unloaded.
    ~Manager() { static_cast<void>(remover.release()); }

    clsCriticalSection lock;
    std::unique_ptr<clsTempFileRemover> remover;
};

// Returns the manager. It isn't a static object: if the caller doesn't close the manager, the end of the process must
// not wait for its thread.
Manager& TheManager()
{
    static Manager& manager = MakeForever<Manager>();
    return manager;
}

} // namespace

void OpenTempFileManager(const TempFileClock& clock)
{
    Manager& manager = TheManager();
    const clsCriticalSectionLock lock(manager.lock);
    if (!manager.remover)
        manager.remover = std::make_unique<clsTempFileRemover>(clock);
}

void CloseTempFileManager()
{
    Manager& manager = TheManager();
    const clsCriticalSectionLock lock(manager.lock);
    // Removed from the manager first: ending the thread dispatches window messages, which may call this function again.
    const std::unique_ptr<clsTempFileRemover> ending = std::move(manager.remover);
}

void AddTempFile(const wchar_t* name)
{
    Manager& manager = TheManager();
    const clsCriticalSectionLock lock(manager.lock);
    if (manager.remover)
        manager.remover->Add(name);
    else
        RemoveFile(name);
}

} // namespace qx
