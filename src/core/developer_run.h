#pragma once

namespace qx
{

// Whether a developer of the library runs this process: the environment variable `user` holds exactly "qvx", in
// whatever case. Read once and kept. Decides whether failures that are otherwise silent are logged.
bool UtilIsDeveloperRun();

// Makes the next call read the environment again. For tests.
void ForgetDeveloperRun();

} // namespace qx
