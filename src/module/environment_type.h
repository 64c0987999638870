// Determines the kind of session that the process runs in, and whether a user is present to answer questions.
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

// Determines the type from the names of the user and of the process (upper case, without extension). Returns Unknown if
// the names don't determine it.
EnvironmentType EnvironmentTypeOfNames(const wchar_t* userName, const wchar_t* processBaseName);

// Determines the type from the groups of a token: Interactive if the interactive group is among them, otherwise
// Service.
EnvironmentType EnvironmentTypeOfGroups(const TOKEN_GROUPS& groups);

// Both results are determined once and cached.
EnvironmentType GetOSEnvironmentType();
bool GetUIInteractionAllowed();

// Makes the next calls determine the results again. For tests.
void ForgetEnvironment();

} // namespace qx
