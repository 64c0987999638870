// debug_peer SETTING... COMMAND: loads the library with private settings, writes lines through its functions, and
// unloads it.
//
// Settings have the form NAME=TEXT and belong to the machine. Commands:
//   forms        writes one line with each function
//   off          calls all functions with arguments that they must not access
//   stacks       writes the callers and the modules
//   twice        loads and unloads the library two times
//   lost [kept]  leaves a handle in the lists; "kept" ends the process without unloading the library
//   setting      changes the settings of the log and reads them back
//   lines NAME   8 threads write numbered lines
//
// Exit code: 0 on success, otherwise the number of the failed check.
#include <qxut23/debug.h>
#include <qxut23/handles.h>
#include <qxut23/log_setting.h>
#include <qxut23/stacks.h>

#include "support/library_function.h"
#include "support/own_settings.h"
#include "support/run_in_threads.h"

#include <windows.h>

#include <wchar.h>

#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

namespace
{

constexpr unsigned kWriters = 8;
constexpr int kLinesOfWriter = 100;

qx::String Wide(std::string_view text)
{
    return qx::String(qx::String::kFormatted, L"%.*hs", static_cast<int>(text.size()), text.data());
}

class Library
{
public:
    Library() = default;
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() { FreeLibrary(_module); }

    operator HMODULE() const { return _module; }

private:
    const HMODULE _module = LoadLibraryW(L"qxUT23.dll");
};

#define FIND(name) QXTEST_FUNCTION(library, name)

void WriteByList(HMODULE library, const wchar_t* tag, std::int32_t indentChange, const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    FIND(UtilDebugExtV)(tag, indentChange, format, arguments);
    va_end(arguments);
}

int WriteForms(HMODULE library, const char*)
{
    if (FIND(UtilGetFlags)() != 1)
        return 10;
    SetLastError(ERROR_FILE_NOT_FOUND);
    int count = 7;
    FIND(UtilDebug)(L"%s%n %hs%hn %I64d%I64n", L"wide", &count, "narrow", &count, 5'000'000'000LL, &count);
    FIND(UtilDebugExt)(L"PROF", 1, L">INIT\u25A0%c", L'x');
    WriteByList(library, L"PROF", 0, L"INIT\u25A0state %d", 1);
    FIND(PasDebug)(L"%s and 100%");
    FIND(UtilError)(L"place", L"thing");
    FIND(UtilDebugExt)(nullptr, -1, L"<%s", L"leave");
    return count != 7 ? 12 : GetLastError() == ERROR_FILE_NOT_FOUND ? 0 : 11;
}

int TryOff(HMODULE library, const char*)
{
    const auto* const nowhere = reinterpret_cast<const wchar_t*>(1);
    if (FIND(UtilGetFlags)() != 0)
        return 20;
    FIND(UtilDebug)(nowhere);
    FIND(UtilDebugExt)(nowhere, 1, nowhere);
    WriteByList(library, nowhere, 1, nowhere);
    FIND(PasDebug)(nowhere);
    FIND(UtilError)(nowhere, nowhere);
    FIND(UtilStackTrace)(0, 0);
    FIND(UtilListModules)();
    return 0;
}

int WriteStacks(HMODULE library, const char*)
{
    FIND(UtilStackTrace)(0, 300); // too many to skip, so it writes nothing
    FIND(UtilStackTrace)(0, 256); // more frames than there are
    FIND(UtilStackTrace)(0, 0);
    FIND(UtilListModules)();
    return 0;
}

int ChangeSetting(HMODULE library, const char*)
{
    constexpr wchar_t kPath[] = L"/folder/other.log";
    wchar_t path[18] = {};
    std::uint32_t flags = 9;
    if (FIND(QxSetLogSetting)(kPath, QXUT_LOG_FLUSH) != 1 || FIND(QxGetLogSetting)(nullptr, 0, nullptr) != 17)
        return 40;
    if (FIND(QxGetLogSetting)(path, 18, &flags) != 17 || wcscmp(path, kPath) != 0 || flags != QXUT_LOG_FLUSH)
        return 41;
    if (FIND(QxGetLogSetting)(path, 17, &flags) != 17 || *path != 0) // one too small for the terminator
        return 42;
    if (FIND(QxSetLogSetting)(L"name", 0) != 1 || FIND(QxGetLogSetting)(nullptr, 0, &flags) <= 4 || flags != 0)
        return 43; // the path must begin with the temp folder
    for (int i = 0; i < 2; ++i)
        if (FIND(QxSetLogSetting)(nullptr, 0) != 1 || FIND(QxGetLogSetting)(path, 18, &flags) != 0 || *path != 0)
            return 44;
    return 0;
}

int WriteLines(HMODULE library, const char* name)
{
    qxtest::RunInThreads(kWriters,
        [&library, name](unsigned thread)
        {
            for (int line = 0; line < kLinesOfWriter; ++line)
                FIND(UtilDebug)(L"%hs %u %d %0*d.", name, thread, line, 20 + line % 50, 0);
        });
    return 0;
}

[[gnu::noinline]] void LeaveHandle(HMODULE library)
{
    FIND(UtilHandleListMgr)(1, 1, reinterpret_cast<const void*>(0x1234));
    asm volatile(""); // keeps the call above from becoming a jump
}

int LoseHandle(HMODULE library, const char* isKept)
{
    LeaveHandle(library);
    if (*isKept)
        LoadLibraryW(L"qxUT23.dll");
    return 0;
}

int Run(std::string_view command, const char* argument)
{
    using Function = int (*)(HMODULE library, const char* argument);
    constexpr std::pair<std::string_view, Function> kCommands[] = {{"forms", WriteForms}, {"off", TryOff},
        {"setting", ChangeSetting}, {"stacks", WriteStacks}, {"lost", LoseHandle}, {"lines", WriteLines}};
    const Library library;
    for (const auto& [name, function] : kCommands)
        if (command == name)
            return function(library, argument);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const qxtest::OwnSettings settings;
    int next = 1;
    for (const char* equals; next < argc && (equals = std::strchr(argv[next], '=')) != nullptr; ++next)
        if (!settings.Set(HKEY_LOCAL_MACHINE, Wide({argv[next], equals}).Text(), Wide(equals + 1).Text()))
            return 1;
    if (next >= argc)
        return 3;
    const char* const command = argv[next];
    const char* const argument = next + 1 < argc ? argv[next + 1] : "";
    const int code = Run(command, argument);
    return code == 0 && std::strcmp(command, "twice") == 0 ? Run(command, argument) : code;
}
