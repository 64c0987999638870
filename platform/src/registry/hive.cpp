#include "registry/hive.h"

#include "base/fail.h"
#include "base/forever.h"
#include "base/home.h"
#include "registry/reg_text.h"

#include <winerror.h>

#include <sys/stat.h>

#include <cerrno>

namespace qxplatform
{

namespace
{

bool MakeFolder(const std::string& folder)
{
    return mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST;
}

// Creates the folder and its missing parents, accessible only to the owner. Returns false and sets errno on failure.
bool MakeFolders(const std::string& folder)
{
    for (std::size_t end = folder.find('/', 1); end != std::string::npos; end = folder.find('/', end + 1))
    {
        // An existing parent may be inaccessible and still lead to the folder.
        if (!MakeFolder(folder.substr(0, end)) && errno != EACCES && errno != EROFS)
            return false;
    }
    return MakeFolder(folder);
}

} // namespace

Hive& Hive::User()
{
    static constinit Forever<Hive> hive;
    return hive.Get([] { return Hive("user.reg", u"HKEY_CURRENT_USER", 0600); });
}

Hive& Hive::Machine()
{
    static constinit Forever<Hive> hive;
    return hive.Get([] { return Hive("machine.reg", u"HKEY_LOCAL_MACHINE", 0644); });
}

LSTATUS Hive::Read(const std::function<LSTATUS(const RegistryKey&)>& reader)
{
    std::lock_guard lock(_mutex);
    const LSTATUS status = Refresh(HomeFolder());
    return status == ERROR_SUCCESS ? reader(_tree.root) : status;
}

LSTATUS Hive::Change(const std::function<LSTATUS(RegistryKey&)>& changer)
{
    std::lock_guard lock(_mutex);
    const std::string folder = HomeFolder();
    if (folder.empty())
        return ERROR_CANTWRITE;
    if (!MakeFolders(folder))
        return static_cast<LSTATUS>(ErrorFromErrno(errno));
    const std::string path = folder + '/' + _fileName;
    const HiveLock fileLock(path + ".lock");
    LSTATUS status = fileLock.Status();
    if (status == ERROR_SUCCESS)
        status = Refresh(folder);
    if (status != ERROR_SUCCESS)
        return status;
    // The tree lacks the part that couldn't be read; saving it would lose that part.
    if (_damaged)
        return ERROR_REGISTRY_CORRUPT;
    status = changer(_tree.root);
    if (status == kUnchanged)
        return ERROR_SUCCESS;
    if (status == ERROR_SUCCESS)
        status = Save(path);
    if (status != ERROR_SUCCESS)
        _file.Forget(); // the tree may differ from the file
    return status;
}

LSTATUS Hive::Refresh(const std::string& folder)
{
    const std::string path = folder.empty() ? folder : folder + '/' + _fileName;
    if (_file.IsCurrent(path))
        return ERROR_SUCCESS;
    std::string bytes;
    const LSTATUS status = _file.Load(path, bytes);
    if (status != ERROR_SUCCESS)
        return status;
    RegistryText text = ReadRegistryText(bytes, _rootName);
    _tree = std::move(text.tree);
    _damaged = text.damaged;
    return ERROR_SUCCESS;
}

LSTATUS Hive::Save(const std::string& path)
{
    const std::string bytes = WriteRegistryText(_tree, _rootName);
    // A file of this size couldn't be read back.
    if (bytes.size() > kMaxRegistryFile)
        return ERROR_NO_SYSTEM_RESOURCES;
    return _file.Replace(path, bytes, _mode);
}

} // namespace qxplatform
