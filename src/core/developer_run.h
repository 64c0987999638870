#pragma once

namespace qx
{

// Returns true if a developer of the library runs this process: the environment variable `user` is "qvx", in any case.
// The result is cached. It determines whether failures that are otherwise silent are logged.
bool UtilIsDeveloperRun();

// Makes the next call read the environment variable again. For tests.
void ForgetDeveloperRun();

} // namespace qx
