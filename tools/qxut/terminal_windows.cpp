#include "terminal.h"

#include "text.h"

#include <windows.h>

#include <shellapi.h>

namespace qxut
{

// What main() gets went through the code page, which has not all characters.
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

} // namespace qxut
