#include "platform/own_registry.h"

#include <gtest/gtest.h>

#include <windows.h>

// The system's registry is not a file.
#ifndef _WIN32
#include <filesystem>
#include <fstream>

#include <stdlib.h>

namespace
{

// Created before the first test and removed after the last one.
class OwnRegistry : public testing::Environment
{
public:
    void SetUp() override
    {
        char name[] = "/tmp/qxplatform-registry-XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        folder = name;
        setenv("QXPLATFORM_HOME", name, 1);
    }
    void TearDown() override
    {
        if (!folder.empty())
            std::filesystem::remove_all(folder);
    }

    std::string folder;
};

OwnRegistry& Instance()
{
    static const auto environment = new OwnRegistry;
    return *environment;
}

const auto kRegistered = testing::AddGlobalTestEnvironment(&Instance());

} // namespace

const std::string& OwnRegistryFolder()
{
    return Instance().folder;
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
