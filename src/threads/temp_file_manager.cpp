#include "threads/temp_file_manager.h"

#include "core/critical_section.h"
#include "core/forever.h"
#include "files/temp_file_removal.h"
#include "threads/temp_file_remover.h"

#include <memory>
#include <utility>

namespace qx
{
namespace
{

struct Manager
{
    // A manager that its caller didn't close has a thread, which nobody may wait for while the library is unloaded.
    ~Manager() { static_cast<void>(remover.release()); }

    clsCriticalSection lock;
    std::unique_ptr<clsTempFileRemover> remover;
};

// Not destroyed with the static objects: a caller that doesn't close the manager doesn't wait for its thread at the
// process's end.
Manager& TheManager()
{
    static Manager& manager = MakeForever<Manager>();
    return manager;
}

} // namespace

void OpenTempFileManager()
{
    Manager& manager = TheManager();
    const clsCriticalSectionLock lock(manager.lock);
    if (!manager.remover)
        manager.remover = std::make_unique<clsTempFileRemover>();
}

void CloseTempFileManager()
{
    Manager& manager = TheManager();
    const clsCriticalSectionLock lock(manager.lock);
    // Taken out first: while it ends its thread it dispatches window messages, which may come back to here.
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
