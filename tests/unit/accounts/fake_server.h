// A network library whose functions answer from a script.
#pragma once

#include "module/late_libraries.h"

#include <lmerr.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace qxtest
{

class FakeServer : public qx::clsNetAPI32
{
public:
    // One answer of NetFileEnum: its status and the files of its block.
    using Answer = std::pair<NET_API_STATUS, std::vector<FILE_INFO_3>>;

    explicit FakeServer(std::vector<Answer> script) : answers(std::move(script))
    {
        current = this;
        _module = GetModuleHandleW(nullptr);
        _freeOnDestruction = 0;
        _getProcAddress = Find;
    }
    ~FakeServer() override { current = nullptr; }

    std::vector<Answer> answers;
    std::string missing; // the name of a function that the library lacks
    std::size_t calls = 0, freed = 0;
    qx::String server; // of the last call

private:
    static FARPROC WINAPI Find(HMODULE, LPCSTR name)
    {
        if (current->missing == name)
            return nullptr;
        if (std::strcmp(name, "NetFileEnum") == 0)
            return reinterpret_cast<FARPROC>(&Enumerate);
        return std::strcmp(name, "NetApiBufferFree") == 0 ? reinterpret_cast<FARPROC>(&Free) : nullptr;
    }

    static NET_API_STATUS WINAPI Enumerate(const wchar_t* server, const wchar_t* base, const wchar_t* user, DWORD level,
        BYTE** block, DWORD preferred, DWORD* read, DWORD*, ULONG_PTR* resume)
    {
        const bool isAsExpected = !base && !user && level == 3 && preferred == MAX_PREFERRED_LENGTH;
        if (!isAsExpected || *resume != current->calls || current->calls == current->answers.size())
            return ERROR_INVALID_PARAMETER;
        const auto& [status, files] = current->answers[current->calls];
        *resume = ++current->calls;
        current->server = server;
        // A server that fails returns no block.
        if (status == NERR_Success || status == ERROR_MORE_DATA)
            *block = reinterpret_cast<BYTE*>(const_cast<FILE_INFO_3*>(files.data()));
        *read = static_cast<DWORD>(files.size());
        return status;
    }

    static NET_API_STATUS WINAPI Free(void*) { return ++current->freed, NERR_Success; }

    static inline FakeServer* current = nullptr;
};

// The texts must be literals, because the records don't own them.
inline FILE_INFO_3 OpenFile(const wchar_t* path, const wchar_t* user, DWORD permissions)
{
    return {1, permissions, 0, const_cast<wchar_t*>(path), const_cast<wchar_t*>(user)};
}

} // namespace qxtest
