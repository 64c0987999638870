// What becomes of an exception that no caller may see.
#pragma once

namespace qx
{

// Logs the exception that is being handled, sets the last error according to its kind, and makes its text the calling
// thread's failure text. For use in a catch clause.
void ReportException();

} // namespace qx
