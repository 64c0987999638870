// Writes call chains to reports.
#pragma once

namespace qx
{

class CallChains;
struct scCallChain;

// Keeps the module paths that a report has looked up. Create one for the duration of a report, so that each module is
// looked up only once.
class ReportedPaths
{
public:
    ReportedPaths();
    ReportedPaths(const ReportedPaths&) = delete;
    ReportedPaths& operator=(const ReportedPaths&) = delete;
    ~ReportedPaths();

private:
    bool _isOutermost;
};

// Writes a heading and a line for each address of the chain. Writes nothing if `chain` isn't a record of `chains`.
void ReportChain(const CallChains& chains, const wchar_t* subject, const scCallChain* chain);

} // namespace qx
