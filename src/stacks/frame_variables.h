// Reads the parameters and local variables of a stack frame.
#pragma once

#include "stacks/debug_help_session.h"

#include <cstdint>

namespace qx
{

// Adds the variables of the session's selected scope to a record.
class VariableReader
{
public:
    VariableReader(clsDBGHELP& session, DBGStackTraceItem& item, std::uint64_t frameBase)
        : _session(session),
          _item(item),
          _frameBase(frameBase)
    {
    }

    // Adds the parameters first, then the local variables. Returns the parameters that aren't in memory, whose values
    // are therefore unknown.
    ParameterSet Read();

private:
    static BOOL CALLBACK OnSymbol(PSYMBOL_INFO symbol, ULONG size, PVOID self);
    void Add(const SYMBOL_INFO& symbol);
    bool SetValue(DBGParameter& parameter, const SYMBOL_INFO& symbol, std::uint64_t address);
    bool Query(const SYMBOL_INFO& symbol, ULONG type, IMAGEHLP_SYMBOL_TYPE_INFO what, ULONG& result);

    clsDBGHELP& _session;
    DBGStackTraceItem& _item;
    const std::uint64_t _frameBase;
    bool _isLocalPass = false;
    ParameterSet _unknown = 0;
};

// Sets the values of unknown parameters, which are not local variables, from the first words of the frame's arguments.
void AddFrameWords(DBGStackTraceItem& item, ParameterSet unknown, const DWORD64 (&words)[4]);

// Sets kind and value of a parameter from memory. Memory that can't be read counts as zeros.
void DecodeValue(DBGParameter& parameter, std::uint64_t address, std::uint64_t size, unsigned baseType);

// Reads memory of the process without faulting. Returns false if not all of it can be read.
bool ReadMemory(std::uint64_t address, void* target, std::size_t size);

} // namespace qx
