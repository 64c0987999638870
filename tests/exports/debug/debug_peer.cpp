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

#include "support/own_settings.h"
#include "support/run_in_threads.h"

#include <windows.h>

#include <wchar.h>

#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

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

    template <class Function>
    Function* Find(const char* name) const
    {
        if (const FARPROC function = GetProcAddress(_module, name))
            return reinterpret_cast<Function*>(function);
        std::exit(2);
    }

private:
    const HMODULE _module = LoadLibraryW(L"qxUT23.dll");
};

#define FIND(name) library.Find<decltype(name)>(#name)

void WriteByList(const Library& library, const wchar_t* tag, std::int32_t indentChange, const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    FIND(UtilDebugExtV)(tag, indentChange, format, arguments);
    va_end(arguments);
}

int WriteForms(const Library& library)
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

int TryOff(const Library& library)
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

void WriteStacks(const Library& library)
{
    FIND(UtilStackTrace)(0, 300); // too many to skip, so it writes nothing
    FIND(UtilStackTrace)(0, 256); // more than there are
    FIND(UtilStackTrace)(0, 0);
    FIND(UtilListModules)();
}

int ChangeSetting(const Library& library)
{
    constexpr wchar_t kPath[] = L"/folder/other.log";
    wchar_t path[18] = {};
    std::uint32_t flags = 9;
    if (FIND(QxSetLogSetting)(kPath, QXUT_LOG_FLUSH) != 1 || FIND(QxGetLogSetting)(nullptr, 0, nullptr) != 17)
        return 40;
    if (FIND(QxGetLogSetting)(path, 18, &flags) != 17 || wcscmp(path, kPath) != 0 || flags != QXUT_LOG_FLUSH)
        return 41;
    if (FIND(QxGetLogSetting)(path, 17, &flags) != 17 || *path != 0) // too small by the terminator
        return 42;
    if (FIND(QxSetLogSetting)(L"name", 0) != 1 || FIND(QxGetLogSetting)(nullptr, 0, &flags) <= 4 || flags != 0)
        return 43; // the path must begin with the temp folder
    for (int i = 0; i < 2; ++i)
        if (FIND(QxSetLogSetting)(nullptr, 0) != 1 || FIND(QxGetLogSetting)(path, 18, &flags) != 0 || *path != 0)
            return 44;
    return 0;
}

void WriteLines(const Library& library, const char* name)
{
    qxtest::RunInThreads(kWriters,
        [&library, name](unsigned thread)
        {
            for (int line = 0; line < kLinesOfWriter; ++line)
                FIND(UtilDebug)(L"%hs %u %d %0*d.", name, thread, line, 20 + line % 50, 0);
        });
}

[[gnu::noinline]] void LeaveHandle(const Library& library)
{
    FIND(UtilHandleListMgr)(1, 1, reinterpret_cast<const void*>(0x1234));
    asm volatile(""); // keeps the call above from becoming a jump
}

int Run(const char* command, const char* argument)
{
    const Library library;
    if (std::strcmp(command, "forms") == 0)
        return WriteForms(library);
    if (std::strcmp(command, "off") == 0)
        return TryOff(library);
    if (std::strcmp(command, "setting") == 0)
        return ChangeSetting(library);
    if (std::strcmp(command, "stacks") == 0)
        WriteStacks(library);
    if (std::strcmp(command, "lost") == 0)
    {
        LeaveHandle(library);
        if (*argument)
            LoadLibraryW(L"qxUT23.dll");
    }
    if (std::strcmp(command, "lines") == 0)
        WriteLines(library, argument);
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
