// A hive: the tree of one predefined key, stored in a file that other processes also read and change.
#pragma once

#include "base/mutex.h"
#include "registry/hive_file.h"
#include "registry/registry_tree.h"

#include <functional>
#include <mutex>

namespace qxplatform
{

class Hive
{
public:
    static Hive& User();    // HKEY_CURRENT_USER
    static Hive& Machine(); // HKEY_LOCAL_MACHINE

    Hive(std::string_view fileName, std::u16string_view rootName, mode_t mode)
        : _fileName(fileName),
          _rootName(rootName),
          _mode(mode)
    {
    }

    // Calls the function with the current contents of the file and returns its result.
    LSTATUS Read(const std::function<LSTATUS(const RegistryKey& root)>& reader);

    // Calls the function with the tree while no other process changes it. If it returns ERROR_SUCCESS, saves the tree.
    // With any other result, or if saving fails, nothing changes.
    LSTATUS Change(const std::function<LSTATUS(RegistryKey& root)>& changer);

    // Returned by a changer if no change is necessary: success without saving.
    static constexpr LSTATUS kUnchanged = -1;

private:
    LSTATUS Refresh(const std::string& folder);
    LSTATUS Save(const std::string& path);

    const std::string _fileName;
    const std::u16string _rootName;
    const mode_t _mode;
    Mutex _mutex;
    HiveFile _file;
    RegistryTree _tree;
    bool _damaged = false;
};

} // namespace qxplatform
