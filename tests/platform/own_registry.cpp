#include "platform/own_registry.h"

#include <gtest/gtest.h>

// The system's registry is not a file.
#ifndef _WIN32
#include <filesystem>

#include <stdlib.h>

namespace
{

struct OwnFolder
{
    OwnFolder()
    {
        EXPECT_NE(mkdtemp(path.data()), nullptr);
        setenv("QXPLATFORM_HOME", path.c_str(), 1);
    }
    ~OwnFolder() { std::filesystem::remove_all(path); }

    std::string path = "/tmp/qxplatform-registry-XXXXXX";
};

} // namespace

const std::string& OwnRegistryFolder()
{
    static const OwnFolder folder;
    return folder.path;
}

void ReadRegistryAnew()
{
    // Replaces the file with a copy.
    const std::filesystem::path file = std::filesystem::path(OwnRegistryFolder()) / "user.reg";
    const std::filesystem::path copy = file.string() + ".copy";
    std::filesystem::copy_file(file, copy);
    std::filesystem::rename(copy, file);
}

#else

const std::string& OwnRegistryFolder()
{
    static const std::string none;
    return none;
}

void ReadRegistryAnew() {}

#endif
