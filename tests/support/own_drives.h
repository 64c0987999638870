// A private folder of drives and shares for a test on linux.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include <unistd.h>

namespace qxtest
{

// The layer's settings stay redirected afterwards, so that no test touches the user's own.
class OwnDrives
{
public:
    OwnDrives()
    {
        std::filesystem::create_directories(_drives);
        setenv("QXPLATFORM_HOME", _drives.parent_path().c_str(), 1);
    }
    OwnDrives(const OwnDrives&) = delete;
    OwnDrives& operator=(const OwnDrives&) = delete;
    ~OwnDrives() { std::filesystem::remove_all(_drives.parent_path()); }

    // Creates the link of a drive, for example `q:`.
    void Link(const char* drive, const std::filesystem::path& target) const
    {
        std::filesystem::create_symlink(target, _drives / drive);
    }

    // Creates an empty share and returns its folder.
    std::filesystem::path MakeShare(const std::string& server, const std::string& share) const
    {
        std::filesystem::path folder = _drives / "unc" / server / share;
        std::filesystem::create_directories(folder);
        return folder;
    }

private:
    const std::filesystem::path _drives =
        std::filesystem::temp_directory_path() / ("qx-drives-" + std::to_string(getpid())) / "dosdevices";
};

} // namespace qxtest
