// Handles exceptions that must not leave an exported function.
#pragma once

namespace qx
{

// Logs the exception that is being handled, sets the last error according to its kind, and makes its text the calling
// thread's failure text. For use in a catch clause.
void ReportException();

} // namespace qx
