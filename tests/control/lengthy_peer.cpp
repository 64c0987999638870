// lengthy_peer: executes lengthy operations by the commands on standard input, one per line, and answers each with a
// line.
#include "diag/lengthy_op.h"

#include <windows.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#ifdef __linux__ // only linux has fork
#include <sys/wait.h>
#include <unistd.h>
#endif

using qx::clsLengthyOp;
using qx::String;

namespace
{

volatile std::sig_atomic_t ownInterrupts = 0;

void CountInterrupt(int)
{
    ownInterrupts = ownInterrupts + 1;
}

String Decoded(const std::string& utf8)
{
    wchar_t buffer[5000] = {};
    MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), -1, buffer, 5000);
    return buffer;
}

// Returns what a child process does with the dialogs of its parent.
int RunInChild([[maybe_unused]] clsLengthyOp& operation)
{
#ifdef __linux__ // see above
    const pid_t child = fork();
    if (child == 0)
    {
        operation.SetText(L"by the child");
        std::raise(SIGINT);
        _exit(operation.CheckAbort() ? 1 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
#else
    return 0;
#endif
}

// Presses the button of the dialog with the given title. Returns false if there is no such window.
bool Cancel(const String& title)
{
    const HMODULE user = GetModuleHandleW(L"user32.dll");
    const auto find = reinterpret_cast<HWND(WINAPI*)(const wchar_t*, const wchar_t*)>(
        user ? GetProcAddress(user, "FindWindowW") : nullptr);
    const auto send = reinterpret_cast<LRESULT(WINAPI*)(HWND, UINT, WPARAM, LPARAM)>(
        user ? GetProcAddress(user, "SendMessageW") : nullptr);
    const HWND window = find && send ? find(nullptr, title.Text()) : nullptr;
    constexpr UINT kCommand = 0x0111;
    return window && (send(window, kCommand, IDCANCEL, 0), true);
}

} // namespace

int main()
{
    std::vector<std::unique_ptr<clsLengthyOp>> operations;
    for (std::string line; std::getline(std::cin, line);)
    {
        if (line.ends_with('\r'))
            line.pop_back();
        const std::string command = line.substr(0, line.find(' '));
        const std::string rest = line.size() > command.size() ? line.substr(command.size() + 1) : std::string();
        const String text = Decoded(rest);
        if (command == "open")
            operations.push_back(std::make_unique<clsLengthyOp>(text, L"working"));
        else if (command == "text")
            operations.back()->SetText(text);
        else if (command == "percent")
            operations.back()->SetProgress(static_cast<std::uint32_t>(std::atoi(rest.c_str())));
        else if (command == "check")
            std::cout << operations.back()->CheckAbort() << ' ';
        else if (command == "end")
            operations.pop_back();
        else if (command == "cancel")
            std::cout << Cancel(text) << ' ';
        else if (command == "own")
            std::signal(SIGINT, CountInterrupt);
        else if (command == "raise")
            std::raise(SIGINT);
        else if (command == "count")
            std::cout << ownInterrupts << ' ';
        else if (command == "fork")
            std::cout << RunInChild(*operations.back()) << ' ';
        std::cout << command << std::endl;
    }
    return 0;
}
