// A session of the debug-help library: modules, symbols and stack walks of this process.
#pragma once

#include "core/text/string.h"
#include "stacks/debug_help_library.h"
#include "stacks/module_sources.h"
#include "stacks/records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qx
{

// One thread at a time may use a session, and only one session may exist.
class clsDBGHELP : public clsRGDBGHELP
{
public:
    // Bits of the session's mode.
    static constexpr unsigned kSetsSymbolPath = 1;
    static constexpr unsigned kReadsNoVersions = 2; // loads line information instead of versions
    // The mode for describing addresses, which needs line information but no versions. On some systems a session loads
    // line information only in this mode.
    static constexpr unsigned kForTexts = kSetsSymbolPath | kReadsNoVersions;

    // Bits of `detail`: what a record contains.
    static constexpr unsigned kModule = 1;
    static constexpr unsigned kSymbolAndLine = 2;
    static constexpr unsigned kParameters = 4;
    static constexpr unsigned kAllDetail = ~0U;

    explicit clsDBGHELP(unsigned mode) : _mode(mode) {}
    ~clsDBGHELP() override;

    // Loads the library and opens the session. Returns false if there is no library.
    bool SetUp();

    // Returns the modules, which are loaded at the first call and belong to the session.
    clsDBGModuleList& Modules();

    // Walks a stack. The context isn't changed. `maximum` is the largest number of frames.
    StackTraceListPtr Walk(const CONTEXT& context, int maximum, unsigned detail = kAllDetail);

    // Fills a record. `isExact` states that the address isn't a return address. `frameBase` is the base of addresses in
    // the frame, or 0 to read no variables. Returns the parameters whose values aren't known.
    ParameterSet Describe(
        DBGStackTraceItem& item, std::uint64_t address, bool isExact, std::uint64_t frameBase, unsigned detail);

private:
    friend class VariableReader;

    String SymbolPath() const;
    void AddModules();
    std::vector<LoadedModule> EnumerateModules();
    void LoadModule(std::uint64_t base, std::uint32_t size);
    bool FindModuleOf(std::uint64_t address, IMAGEHLP_MODULE64& info);
    bool LoadModuleOf(std::uint64_t address);
    static PVOID CALLBACK TableForWalk(HANDLE process, DWORD64 address);
    static DWORD64 CALLBACK BaseForWalk(HANDLE process, DWORD64 address);
    ParameterSet DescribeSymbol(DBGStackTraceItem& item, std::uint64_t lookedUp, std::uint64_t frameBase);

    static clsDBGHELP* _walking; // for the two callbacks, which have no context argument; only one session exists

    const HANDLE _process = GetCurrentProcess();
    const DWORD _processId = GetCurrentProcessId();
    const HANDLE _thread = GetCurrentThread();
    const DWORD _threadId = GetCurrentThreadId();
    String _symbolPath;
    bool _isOpen = false;
    const unsigned _mode;
    ModuleListPtr _modules{new clsDBGModuleList};
};

// Returns the text of a SYM_TYPE value.
const char* SymbolTypeText(int type);

} // namespace qx
