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
// Exit code: 0 on success, otherwise the number of the failed check; 77 if the process can't switch to another user.
#include <qxut23/log_setting.h>

#include "support/own_settings.h"

#include <windows.h>

#include <wchar.h>

#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#if !defined(_WIN32) // to switch to another user
#include <unistd.h>
#endif

namespace
{

constexpr int kWriters = 8;
constexpr int kLinesOfWriter = 100;

qx::String Wide(std::string_view text)
{
    return qx::String(qx::String::kFormatted, L"%.*hs", static_cast<int>(text.size()), text.data());
}

class Library
{
public:
    Library() : _module(LoadLibraryW(L"qxUT23.dll"))
    {
        Find(UtilDebug, "UtilDebug");
        Find(UtilDebugExt, "UtilDebugExt");
        Find(UtilDebugExtV, "UtilDebugExtV");
        Find(PasDebug, "PasDebug");
        Find(UtilError, "UtilError");
        Find(UtilGetFlags, "UtilGetFlags");
        Find(UtilStackTrace, "UtilStackTrace");
        Find(UtilListModules, "UtilListModules");
        Find(UtilHandleListMgr, "UtilHandleListMgr");
        Find(GetLogSetting, "QxGetLogSetting");
        Find(SetLogSetting, "QxSetLogSetting");
    }
    ~Library() { FreeLibrary(_module); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    bool IsComplete() const { return _isComplete; }

    void (*UtilDebug)(const wchar_t* format, ...) = nullptr;
    void (*UtilDebugExt)(const wchar_t* tag, std::int32_t indentChange, const wchar_t* format, ...) = nullptr;
    void (*UtilDebugExtV)(const wchar_t* tag, std::int32_t indentChange, const wchar_t* format, va_list) = nullptr;
    void (*PasDebug)(const wchar_t* text) = nullptr;
    void (*UtilError)(const wchar_t* where, const wchar_t* what) = nullptr;
    std::int32_t (*UtilGetFlags)() = nullptr;
    void (*UtilStackTrace)(std::uint32_t reserved, std::uint32_t skip) = nullptr;
    void (*UtilListModules)() = nullptr;
    std::uint32_t (*UtilHandleListMgr)(std::int32_t kind, std::int32_t operation, const void* handle) = nullptr;
    std::size_t (*GetLogSetting)(wchar_t* path, std::size_t capacity, std::uint32_t* flags) = nullptr;
    std::int32_t (*SetLogSetting)(const wchar_t* name, std::uint32_t flags) = nullptr;

private:
    template <class Function>
    void Find(Function*& function, const char* name)
    {
        function = reinterpret_cast<Function*>(GetProcAddress(_module, name));
        _isComplete = _isComplete && function != nullptr;
    }

    const HMODULE _module;
    bool _isComplete = true;
};

void WriteByList(const Library& library, const wchar_t* tag, std::int32_t indentChange, const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    library.UtilDebugExtV(tag, indentChange, format, arguments);
    va_end(arguments);
}

int WriteForms(const Library& library)
{
    if (library.UtilGetFlags() != 1)
        return 10;
    SetLastError(ERROR_FILE_NOT_FOUND);
    library.UtilDebug(L"%s %hs %I64d", L"wide", "narrow", 5'000'000'000LL);
    library.UtilDebugExt(L"PROF", 1, L">INIT\u25A0%c", L'x');
    WriteByList(library, L"PROF", 0, L"INIT\u25A0state %d", 1);
    library.UtilDebugExt(nullptr, 3, nullptr);
    library.PasDebug(L"%s and 100%");
    library.UtilError(L"place", L"thing");
    library.UtilDebugExt(L"", -2, L"<%s", L"leave");
    library.UtilDebugExt(nullptr, -1, L"<");
    return GetLastError() == ERROR_FILE_NOT_FOUND ? 0 : 11;
}

int TryOff(const Library& library)
{
    const auto* const nowhere = reinterpret_cast<const wchar_t*>(1);
    if (library.UtilGetFlags() != 0)
        return 20;
    library.UtilDebug(nowhere);
    library.UtilDebugExt(nowhere, 1, nowhere);
    WriteByList(library, nowhere, 1, nowhere);
    library.PasDebug(nowhere);
    library.UtilError(nowhere, nowhere);
    library.UtilStackTrace(0, 0);
    library.UtilListModules();
    return 0;
}

void WriteStacks(const Library& library)
{
    library.UtilStackTrace(0, 300); // too many to skip, so it writes nothing
    library.UtilStackTrace(0, 256); // more than there are
    library.UtilStackTrace(0, 0);
    library.UtilListModules();
}

int ChangeSetting(const Library& library)
{
    constexpr wchar_t kPath[] = L"/folder/other.log";
    wchar_t path[18] = {};
    std::uint32_t flags = 9;
    if (library.SetLogSetting(kPath, QXUT_LOG_FLUSH) != 1 || library.GetLogSetting(nullptr, 0, nullptr) != 17)
        return 40;
    if (library.GetLogSetting(path, 18, &flags) != 17 || wcscmp(path, kPath) != 0 || flags != QXUT_LOG_FLUSH)
        return 41;
    if (library.GetLogSetting(path, 17, &flags) != 17 || *path != 0) // too small by the terminator
        return 42;
    if (library.SetLogSetting(L"name", 0) != 1 || library.GetLogSetting(nullptr, 0, &flags) <= 4 || flags != 0)
        return 43; // the path must begin with the temp folder
    for (int i = 0; i < 2; ++i)
        if (library.SetLogSetting(nullptr, 0) != 1 || library.GetLogSetting(path, 18, &flags) != 0 || *path != 0)
            return 44;
    return 0;
}

void WriteLines(const Library& library, const char* name)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kWriters; ++thread)
        threads.emplace_back(
            [&library, name, thread]
            {
                for (int line = 0; line < kLinesOfWriter; ++line)
                    library.UtilDebug(L"%hs %d %d %0*d.", name, thread, line, 20 + line % 50, 0);
            });
    for (std::thread& thread : threads)
        thread.join();
}

[[gnu::noinline]] void LeaveHandle(const Library& library)
{
    library.UtilHandleListMgr(1, 1, reinterpret_cast<const void*>(0x1234));
    asm volatile(""); // keeps the call above from becoming a jump
}

int Run(const char* command, const char* argument)
{
    const Library library;
    if (!library.IsComplete())
        return 2;
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

#if !defined(_WIN32) // each system has its own functions for switching users
int RunAsNobody(const char* command, const char* argument)
{
    constexpr uid_t kNobody = 65534;
    constexpr int kNoWay = 77;
    const uid_t self = geteuid();
    if (self != 0 || seteuid(kNobody) != 0)
        return kNoWay;
    // The other user may have no access to the source tree.
    const int code = eaccess("/proc/self/exe", R_OK) == 0 ? Run(command, argument) : kNoWay;
    return seteuid(self) == 0 ? code : 30;
}
#else
int RunAsNobody(const char*, const char*)
{
    return 77;
}
#endif

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
    if (std::strcmp(command, "nobody") == 0)
        return RunAsNobody(command, argument);
    const int code = Run(command, argument);
    return code == 0 && std::strcmp(command, "twice") == 0 ? Run(command, argument) : code;
}
