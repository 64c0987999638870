// A private registry for the test program.
#pragma once

#include "platform/system_support.h"

// Returns the folder with the registry's files, created by the first call, which must precede any use of the registry.
// If the registry isn't stored in files, the folder stays empty; tests then use a key of their own.
inline std::string OwnRegistryFolder()
{
    struct OwnFolder : qxtest::Folder
    {
        OwnFolder() { SetEnvironmentVariableW(L"QXPLATFORM_HOME", path()); }
    };
    static const OwnFolder folder;
    return folder.path().Narrow();
}
