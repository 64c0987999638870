// The call chains in reports.
#pragma once

namespace qx
{

class CallChains;
struct scCallChain;

// The memory and the modules that a report has looked up so far. As long as one exists, chains are shown with its
// paths, so each module is looked up once a report.
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

// Writes a heading and a line for each address of the chain. Writes nothing if the pointer refers to no chain.
void ReportChain(const CallChains& chains, const wchar_t* subject, const scCallChain* chain);

} // namespace qx
