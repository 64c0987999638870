// What kind of session the process runs in, and whether someone is there to answer a question.
#pragma once

#include <windows.h>

#include <cstdint>

namespace qx
{

enum class EnvironmentType : std::int32_t
{
    Unknown = 0,
    Interactive = 1,
    Service = 3,
    WebServer = 4
};

// What the names of the user and of the process (upper case, without extension) tell; unknown if they tell nothing.
EnvironmentType EnvironmentTypeOfNames(const wchar_t* userName, const wchar_t* processBaseName);

// What a token's groups, a TOKEN_GROUPS, tell: interactive if the interactive group is among them.
EnvironmentType EnvironmentTypeOfGroups(const TOKEN_GROUPS& groups);

// Both are found out once.
EnvironmentType GetOSEnvironmentType();
bool GetUIInteractionAllowed();

// Makes the next calls find out again. For tests.
void ForgetEnvironment();

} // namespace qx
