// Libraries that are bound at run time, so that a missing or outdated library is not an error.
#pragma once

#include "core/critical_section.h"
#include "core/text/string.h"

#include <windows.h>

#include <atomic>
#include <cstdint>

namespace qx
{

class CLateLoadBase;

// The state of a late-bound function.
enum class LateState : std::uint32_t
{
    Unasked = 0, // not resolved yet, or the library isn't available
    Missing = 1, // the library is loaded but lacks the function
    Valid = 2    // the address may be called
};

// A function of a late-bound library: its address and state, resolved at first use.
//
// `argumentBytes` is the size of the arguments on the stack, which is part of the decorated names on older systems.
class LateProcedure
{
public:
    LateProcedure(CLateLoadBase& library, const wchar_t* name, int argumentBytes = 0)
        : _library(library),
          _name(name),
          _argumentBytes(argumentBytes)
    {
    }
    LateProcedure(const LateProcedure&) = delete;
    LateProcedure& operator=(const LateProcedure&) = delete;

    // Returns true if the function is available, resolving it if necessary. Takes no lock once the result is known.
    bool IsThere()
    {
        return _address.load(std::memory_order_acquire) != nullptr || (_state != LateState::Missing && Resolve());
    }

    LateState State() const { return _state; }
    FARPROC Address() const { return _address.load(std::memory_order_acquire); }

private:
    bool Resolve();

    CLateLoadBase& _library;
    const wchar_t* _name;
    int _argumentBytes;
    std::atomic<LateState> _state = LateState::Unasked;
    std::atomic<FARPROC> _address = nullptr;
};

// A late-bound function with a signature. Call it only after IsThere returned true.
template <class Signature>
class LateFunction;

template <class Result, class... Arguments>
class LateFunction<Result(Arguments...)> : public LateProcedure
{
public:
    using LateProcedure::LateProcedure;

    Result operator()(Arguments... arguments) const
    {
        return reinterpret_cast<Result(WINAPI*)(Arguments...)>(Address())(arguments...);
    }
};

// A late-bound library. Derived classes have a member for each function that they use.
//
// Code of other modules is compiled against the order of the virtual functions (Load, Log, destructor) and of the
// fields.
class CLateLoadBase
{
public:
    // `skippedCharacters` is the number of characters to remove from the start of function names before the look-up.
    explicit CLateLoadBase(const wchar_t* moduleName, std::size_t skippedCharacters = 0);
    CLateLoadBase(const CLateLoadBase&) = delete;
    CLateLoadBase& operator=(const CLateLoadBase&) = delete;

    // Loads the library. A failure is stored as the last load error, and Resolve doesn't try again.
    virtual bool Load();

    // Writes to the debug output if SetLateLoadLog is on.
    virtual void Log(const wchar_t* format, ...);

    // Unloads the library unless SetFreeOnDestruction(false) was called.
    virtual ~CLateLoadBase();

    // Sets the module name if there is none yet. Returns true if the library is loaded; with `load`, tries to load it
    // first.
    bool EnsureLoaded(const wchar_t* name, bool load);

    // Returns the address of a function, or null. Removes a leading "p_", then tries the name, the name with "W"
    // appended, and the decorated forms of both.
    FARPROC Resolve(const wchar_t* functionName, std::atomic<LateState>& state, int argumentBytes);

    HMODULE Module() const { return _module; }
    DWORD LastLoadError() const { return _lastLoadError; }
    void SetFreeOnDestruction(bool free) { _freeOnDestruction = free; }

protected:
    // Loads a library with the library's own folder as the DLL folder.
    static HMODULE LoadFromOwnFolder(const wchar_t* fileName);

    // Truncates a name that is too long.
    void SetModuleName(const wchar_t* name);

    // Stores the result of a load attempt: the module, or the error.
    bool FinishLoad(HMODULE module, DWORD error);

    HMODULE _module = nullptr;
    std::uint32_t _lastLoadError = 0;
    std::uint32_t _freeOnDestruction = 1;
    wchar_t _moduleName[260] = {};
    std::size_t _skippedCharacters;
    clsCriticalSection _lock;
    FARPROC(WINAPI* _getProcAddress)(HMODULE, LPCSTR) = GetProcAddress;

private:
    bool IsOwnModule() const;
    FARPROC FindByAnyName(const wchar_t* name, int argumentBytes) const;
};

// Returns true for the two libraries that only later systems have, if the system is older.
bool IsExpectedToBeMissing(const wchar_t* moduleName, unsigned short systemVersion, unsigned short systemGeneration);

// Sets whether loading a library writes messages to the debug output. Initially off.
void SetLateLoadLog(bool on);

} // namespace qx
