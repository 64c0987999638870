// Libraries that are bound while the program runs, so that one that is missing, or too old, is a normal absence.
#pragma once

#include "core/critical_section.h"
#include "core/text/string.h"

#include <windows.h>

#include <atomic>
#include <cstdint>

namespace qx
{

class CLateLoadBase;

// What is known of a late-bound function.
enum class LateState : std::uint32_t
{
    Unasked = 0, // nobody asked, or its library isn't there
    Missing = 1, // the library is loaded but has no such function
    Valid = 2    // the address may be called
};

// One function of a late-bound library: its address and its state, found at the first question.
//
// `argumentBytes` is what the arguments take on the stack in the decorated names of older systems.
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

    // Resolves the function if that has not been done. Once the answer is known this takes no lock.
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

// The same with a signature. Call it only after IsThere gave true.
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

// A library by name. A derived class has a member for each function that is used.
//
// Other modules' code is compiled against the order of the virtual operations (Load, Log, destructor) and of the
// fields.
class CLateLoadBase
{
public:
    // `skippedCharacters` are taken off the front of function names before they are looked for.
    explicit CLateLoadBase(const wchar_t* moduleName, std::size_t skippedCharacters = 0);
    CLateLoadBase(const CLateLoadBase&) = delete;
    CLateLoadBase& operator=(const CLateLoadBase&) = delete;

    // Loads the library; a failure is kept as the last load error, and then Resolve does not try again.
    virtual bool Load();

    // To the debug output, while SetLateLoadLog is on.
    virtual void Log(const wchar_t* format, ...);

    // Unloads the library unless that was switched off.
    virtual ~CLateLoadBase();

    // Sets the name if there is none yet; whether the library is loaded, `load` trying that first.
    bool EnsureLoaded(const wchar_t* name, bool load);

    // The address of a function, or null. A "p_" in front of the name goes; then the name itself, the name with "W" and
    // the decorated forms of both are tried.
    FARPROC Resolve(const wchar_t* functionName, std::atomic<LateState>& state, int argumentBytes);

    HMODULE Module() const { return _module; }
    DWORD LastLoadError() const { return _lastLoadError; }
    void SetFreeOnDestruction(bool free) { _freeOnDestruction = free; }

protected:
    // Searches the library's own folder instead of the one that is set as DLL folder.
    static HMODULE LoadFromOwnFolder(const wchar_t* fileName);

    // Cuts a name that is too long.
    void SetModuleName(const wchar_t* name);

    // Ends a Load with a module, or with the last error of the attempt.
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

// Two libraries came with later systems only.
bool IsExpectedToBeMissing(const wchar_t* moduleName, unsigned short systemVersion, unsigned short systemGeneration);

// Whether the loaders write to the debug output; off at the start.
void SetLateLoadLog(bool on);

} // namespace qx
