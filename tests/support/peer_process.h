// A second process of a test: a program in the folder of the test program.
#pragma once

#include "core/text/string.h"
#include "files/paths.h"

#include <windows.h>

namespace qxtest
{

class PeerProcess
{
public:
    // `arguments` is in command line syntax.
    PeerProcess(const wchar_t* program, const qx::String& arguments)
    {
        wchar_t own[MAX_PATH] = {};
        GetModuleFileNameW(nullptr, own, MAX_PATH);
        qx::String command =
            L"\"" + qx::GetPathDirectory(own) + program + qx::GetPathExtension(own) + L"\" " + arguments;
        STARTUPINFOW start = {};
        start.cb = sizeof start;
        _started = CreateProcessW(nullptr, command.GetBuffer(command.Length() + 1), nullptr, nullptr, FALSE, 0, nullptr,
                       nullptr, &start, &_process) != FALSE;
    }
    ~PeerProcess()
    {
        if (_started)
        {
            Wait();
            CloseHandle(_process.hThread);
            CloseHandle(_process.hProcess);
        }
    }
    PeerProcess(const PeerProcess&) = delete;
    PeerProcess& operator=(const PeerProcess&) = delete;

    // Returns the exit code, or -1 if the process didn't start.
    int Wait()
    {
        DWORD code = static_cast<DWORD>(-1);
        if (_started)
        {
            WaitForSingleObject(_process.hProcess, INFINITE);
            GetExitCodeProcess(_process.hProcess, &code);
        }
        return static_cast<int>(code);
    }

private:
    bool _started = false;
    PROCESS_INFORMATION _process = {};
};

} // namespace qxtest
