// The sessions of the debug-help library.
#pragma once

#include "dbghelp/module.h"
#include "dbghelp/variables.h"

#include <minwindef.h>

#include <memory>
#include <string>
#include <vector>

namespace qxplatform
{

class SymbolSession
{
public:
    explicit SymbolSession(std::vector<std::string> debugFolders) : _debugFolders(std::move(debugFolders)) {}

    // Returns null with ERROR_MOD_NOT_FOUND if no module contains the address.
    SymbolModule* FindModule(std::uint64_t address);
    // Returns null if the file isn't an image, or overlaps a known module; the last error is set.
    SymbolModule* Load(const char* path, const char* name, std::uint64_t base, std::uint64_t size);

    // The variables that SymEnumSymbols lists, and the module of their types.
    struct Scope
    {
        SymbolModule* module = nullptr;
        std::uint64_t address = 0;
        std::vector<Variable> variables;
    };
    Scope scope;

private:
    std::vector<std::string> _debugFolders;
    std::vector<std::unique_ptr<SymbolModule>> _modules;
};

// Return false, or null, with ERROR_INVALID_HANDLE or ERROR_INVALID_PARAMETER set.
bool OpenSession(HANDLE process, const char* searchPath);
bool CloseSession(HANDLE process);
SymbolSession* FindSession(HANDLE process);

} // namespace qxplatform
