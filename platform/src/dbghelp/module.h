// A module of a session: its symbols and debug information, which are read when they are first needed.
#pragma once

#include "dbghelp/elf_image.h"
#include "dbghelp/functions.h"
#include "dbghelp/symbol_table.h"
#include "dbghelp/types.h"

#include <dbghelp.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <elfutils/libdwfl.h>

namespace qxplatform
{

struct SymbolPlace
{
    std::string name;
    std::uint64_t address = 0;
    std::uint64_t size = 0;
};

struct SourceLine
{
    const char* file = nullptr; // belongs to the module
    unsigned line = 0;
    std::uint64_t address = 0; // of the first instruction of the line
};

class SymbolModule
{
public:
    struct Origin
    {
        std::uint64_t base = 0;
        std::uint64_t size = 0; // 0: as in the headers
        std::string path;
        std::string name;
        bool isInMemory = false; // the kernel's image, which isn't in a file
    };

    // Reads the headers.
    SymbolModule(Origin origin, std::vector<std::string> debugFolders);
    SymbolModule(const SymbolModule&) = delete;
    SymbolModule& operator=(const SymbolModule&) = delete;
    ~SymbolModule();

    bool IsImage() const { return _headers.isImage; }
    std::uint64_t Base() const { return _origin.base; }
    std::uint64_t Size() const { return _origin.size; }
    bool Contains(std::uint64_t address) const { return address - Base() < Size(); }
    const Origin& GetOrigin() const { return _origin; }
    const std::string& DebugPath() const { return _debugPath; }
    unsigned Machine() const { return _headers.machine; }
    SYM_TYPE Type() const { return _type; }
    std::size_t SymbolCount() const { return _symbols.Count(); }

    std::optional<SymbolPlace> FindSymbol(std::uint64_t address);
    std::optional<SourceLine> FindLine(std::uint64_t address);

    // Returns the function that contains an address, if there is debug information.
    std::optional<Dwarf_Die> FindFunction(std::uint64_t address);
    // Converts between addresses of the process and of the debug information.
    std::uint64_t Bias() const { return _bias; }
    // Returns the unwind rules at an address, or null. The caller frees them.
    Dwarf_Frame* FrameRules(std::uint64_t address);

    TypeTable& Types() { return _types; }

private:
    void ReadSymbols();
    void ReadDebugInfo();
    void SetSharedDebugFile();

    static int FindElf(Dwfl_Module* module, void** user, const char* name, Dwarf_Addr base, char** path, Elf** elf);
    static int FindDebugInfo(Dwfl_Module* module, void** user, const char* name, Dwarf_Addr base, const char* path,
        const char* link, GElf_Word checksum, char** found);

    Origin _origin;
    std::vector<std::string> _debugFolders;
    ElfHeaders _headers;
    std::string _debugPath; // the separate file; empty if there is none
    SYM_TYPE _type = SymNone;

    bool _hasSymbols = false;   // the symbols have been read
    bool _hasDebugInfo = false; // the debug information has been read
    Dwfl* _dwfl = nullptr;
    Dwfl_Module* _module = nullptr;
    Dwarf* _dwarf = nullptr;
    Dwarf* _sharedDwarf = nullptr;
    int _sharedFile = -1;
    Dwarf_Addr _bias = 0;
    SymbolTable _symbols;
    CompileUnits _units;
    TypeTable _types;
};

} // namespace qxplatform
