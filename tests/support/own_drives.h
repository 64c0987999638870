// A private folder of drives and shares for a test on linux.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include <unistd.h>

namespace qxtest
{

class OwnDrives
{
public:
    OwnDrives()
    {
        if (const char* const former = std::getenv("QXPLATFORM_HOME"))
            _formerHome = former;
        std::string name = (std::filesystem::temp_directory_path() / "qx-drives-XXXXXX").string();
        _home = mkdtemp(name.data()) == nullptr ? std::filesystem::path() : std::filesystem::path(name);
        std::filesystem::create_directories(_home / "dosdevices/unc");
        setenv("QXPLATFORM_HOME", _home.c_str(), 1);
    }
    OwnDrives(const OwnDrives&) = delete;
    OwnDrives& operator=(const OwnDrives&) = delete;
    ~OwnDrives()
    {
        if (_formerHome.empty())
            unsetenv("QXPLATFORM_HOME");
        else
            setenv("QXPLATFORM_HOME", _formerHome.c_str(), 1);
        if (!_home.empty())
            std::filesystem::remove_all(_home);
    }

    const std::filesystem::path& Home() const { return _home; }

    // Makes the link of a drive (`q:`).
    void Link(const char* drive, const std::filesystem::path& target) const
    {
        std::filesystem::create_symlink(target, _home / "dosdevices" / drive);
    }

    // Makes an empty share and returns its folder.
    std::filesystem::path MakeShare(const std::string& server, const std::string& share) const
    {
        std::filesystem::path folder = _home / "shares" / server / share;
        std::filesystem::create_directories(folder);
        std::filesystem::create_directories(_home / "dosdevices/unc" / server);
        std::filesystem::create_symlink(folder, _home / "dosdevices/unc" / server / share);
        return folder;
    }

private:
    std::string _formerHome;
    std::filesystem::path _home;
};

} // namespace qxtest
