#include "terminal.h"

#include "interruption.h"
#include "text.h"

#include <windows.h>

#include <shellapi.h>

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <cstring>
#include <iostream>
#include <iterator>

namespace qxut
{

// Reads the system's command line: the arguments of main() have been converted to the code page, which lacks some
// characters.
std::vector<std::string> StartTerminal(int, char**)
{
    SetConsoleOutputCP(CP_UTF8);
    std::vector<std::string> arguments;
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 1; wide != nullptr && i < count; ++i)
        arguments.push_back(Utf8(wide[i]));
    LocalFree(wide);
    return arguments;
}

void MakeStandardStreamsBinary()
{
    std::cout.flush();
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
}

bool OutputGoesToTerminal()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != FALSE;
}

bool TerminalHasColours()
{
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return GetEnvironmentVariableW(L"NO_COLOR", nullptr, 0) == 0 && GetConsoleMode(output, &mode) &&
           SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

// Returns false also for a terminal that doesn't support the escape sequence for clearing a line.
bool ErrorsGoToTerminal()
{
    const HANDLE errors = GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(errors, &mode) && SetConsoleMode(errors, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

int ReadByte(int descriptor, char& byte)
{
    _setmode(descriptor, _O_BINARY);
    return _read(descriptor, &byte, 1);
}

Answer AskSecretly(const char* question, SecretLine& line)
{
    const auto open = [](const wchar_t* name)
    {
        return CreateFileW(
            name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    };
    const HANDLE input = open(L"CONIN$");
    const HANDLE output = open(L"CONOUT$");
    const auto closeBoth = [&]
    {
        CloseHandle(input);
        CloseHandle(output);
    };
    DWORD before = 0;
    if (!GetConsoleMode(input, &before))
    {
        closeBoth();
        return Answer::NoTerminal;
    }
    const auto restore = [&]
    {
        SetConsoleMode(input, before);
    };
    Answer answer = Answer::Given;
    wchar_t typed[SecretLine::kMost + 2];
    char utf8[3 * (SecretLine::kMost + 2)];
    {
        const Interruption interruption(restore);
        SetConsoleMode(input, (before | ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT) & ~DWORD{ENABLE_ECHO_INPUT});
        WriteConsoleA(output, question, static_cast<DWORD>(strlen(question)), nullptr, nullptr);
        DWORD count = 0;
        ReadConsoleW(input, typed, static_cast<DWORD>(std::size(typed)), &count, nullptr);
        WriteConsoleA(output, "\n", 1, nullptr, nullptr);
        restore();
        bool isWhole = false;
        for (; count > 0 && (typed[count - 1] == L'\n' || typed[count - 1] == L'\r'); --count)
            isWhole = true;
        const int length = WideCharToMultiByte(
            CP_UTF8, 0, typed, static_cast<int>(count), utf8, static_cast<int>(sizeof utf8), nullptr, nullptr);
        for (int i = 0; i < length; ++i)
            isWhole = line.Append(utf8[i]) && isWhole;
        answer = isWhole ? Answer::Given : Answer::TooLong;
    }
    Erase(typed, sizeof typed);
    Erase(utf8, sizeof utf8);
    closeBoth();
    return answer;
}

} // namespace qxut
