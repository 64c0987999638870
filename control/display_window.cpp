#include "display.h"

#include "dialog_parts.h"
#include "timed_lock.h"

#include <windows.h>
// Needs <windows.h>.
#include <commctrl.h>

#include <atomic>
#include <cstdio>

namespace qxcontrol
{
namespace
{

// How long the caller waits for the thread of a dialog, which can't start or end while another thread holds the
// loader's lock.
constexpr DWORD kPatienceMs = 2000;

constexpr UINT kShowContent = WM_APP;
constexpr UINT kEndDialog = WM_APP + 1;

enum class Phase
{
    None,  // no thread uses the dialog
    Start, // its thread is creating the window
    Up,
    Abandoned // the caller didn't wait for the window
};

// A dialog's window, which belongs to a thread of its own.
struct Window
{
    std::atomic<Phase> phase = Phase::None;
    std::atomic<bool> isAborted = false;
    std::atomic<HWND> handle = nullptr;
    HANDLE thread = nullptr;
    TimedLock lock; // guards the contents; the thread may be suspended while it holds the lock
    Content content{};
};

constinit Window windows[kMaxDialogs];

void ShowContent(HWND handle, Window& window)
{
    Content content;
    {
        const TimedGuard guard(window.lock);
        if (!guard)
            return;
        content = window.content;
    }
    SetWindowTextW(handle, content.title);
    SetDlgItemTextW(handle, DIALOG_TEXT, content.text);
    SendDlgItemMessageW(handle, DIALOG_BAR, PBM_SETPOS, static_cast<WPARAM>(content.percent), 0);
}

INT_PTR CALLBACK DialogProcedure(HWND handle, UINT message, WPARAM parameter, LPARAM value)
{
    if (message == WM_INITDIALOG)
    {
        SetWindowLongPtrW(handle, DWLP_USER, value);
        return TRUE;
    }
    const auto window = reinterpret_cast<Window*>(GetWindowLongPtrW(handle, DWLP_USER));
    if (!window)
        return FALSE;
    if (message == WM_COMMAND && LOWORD(parameter) == IDCANCEL) // the button, Esc, and the window's close box
    {
        window->isAborted = true;
        EnableWindow(GetDlgItem(handle, IDCANCEL), FALSE);
    }
    else if (message == kShowContent)
        ShowContent(handle, *window);
    else if (message == kEndDialog)
        DestroyWindow(handle);
    else if (message == WM_DESTROY)
        PostQuitMessage(0);
    else
        return FALSE;
    return TRUE;
}

HMODULE OwnModule()
{
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<const wchar_t*>(&windows), &module);
    return module;
}

void RunDialog(Window& window)
{
    const INITCOMMONCONTROLSEX bar = {sizeof bar, ICC_PROGRESS_CLASS};
    InitCommonControlsEx(&bar);
    const HWND handle = CreateDialogParamW(
        OwnModule(), MAKEINTRESOURCEW(DIALOG_PROGRESS), nullptr, DialogProcedure, reinterpret_cast<LPARAM>(&window));
    if (!handle)
        return;
    ShowContent(handle, window);
    ShowWindow(handle, SW_SHOW);
    window.handle = handle;
    Phase phase = Phase::Start;
    if (!window.phase.compare_exchange_strong(phase, Phase::Up))
    {
        DestroyWindow(handle);
        return;
    }
    for (MSG message; GetMessageW(&message, nullptr, 0, 0) > 0;)
    {
        if (IsDialogMessageW(handle, &message))
            continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

// The thread holds a reference to the library, so that its code stays loaded until the thread has ended.
DWORD WINAPI DialogThread(void* parameter)
{
    Window& window = *static_cast<Window*>(parameter);
    RunDialog(window);
    window.handle = nullptr;
    window.phase = Phase::None;
    FreeLibraryAndExitThread(OwnModule(), 0);
}

bool IsScreenVisible()
{
    USEROBJECTFLAGS flags{};
    return GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags, nullptr) &&
           (flags.dwFlags & WSF_VISIBLE) != 0;
}

void EndThread(Window& window)
{
    WaitForSingleObject(window.thread, kPatienceMs);
    CloseHandle(window.thread);
    window.thread = nullptr;
}

} // namespace

bool OpenDisplay(std::size_t dialog, const Content& content)
{
    Window& window = windows[dialog];
    HMODULE reference = nullptr;
    // The thread of the previous dialog may still exist.
    if (window.phase != Phase::None || !IsScreenVisible() ||
        !GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<const wchar_t*>(&windows), &reference))
        return false;
    window.content = content;
    window.isAborted = false;
    window.phase = Phase::Start;
    window.thread = CreateThread(nullptr, 0, DialogThread, &window, 0, nullptr);
    if (!window.thread)
    {
        window.phase = Phase::None;
        FreeLibrary(reference);
        return false;
    }
    for (DWORD waited = 0; window.phase == Phase::Start && waited < kPatienceMs; waited += 10)
        WaitForSingleObject(window.thread, 10); // ends early if there can't be a window
    Phase phase = Phase::Start;
    if (window.phase.compare_exchange_strong(phase, Phase::Abandoned) || phase != Phase::Up)
    {
        CloseHandle(window.thread);
        window.thread = nullptr;
        return false;
    }
    return true;
}

void UpdateDisplay(std::size_t dialog, const Content& content)
{
    Window& window = windows[dialog];
    {
        const TimedGuard guard(window.lock);
        if (!guard)
            return;
        window.content = content;
    }
    PostMessageW(window.handle, kShowContent, 0, 0);
}

void CloseDisplay(std::size_t dialog)
{
    Window& window = windows[dialog];
    PostMessageW(window.handle, kEndDialog, 0, 0);
    EndThread(window);
}

bool IsAborted(std::size_t dialog)
{
    return windows[dialog].isAborted;
}

void* WindowOf(std::size_t dialog)
{
    return windows[dialog].handle;
}

void WriteLine(const wchar_t* text, std::size_t length)
{
    const HANDLE file = GetStdHandle(STD_ERROR_HANDLE);
    char line[2048]; // three bytes for each of up to 500 characters
    DWORD mode = 0, written = 0;
    if (GetConsoleMode(file, &mode))
    {
        WriteConsoleW(file, text, static_cast<DWORD>(length), &written, nullptr);
        WriteConsoleW(file, L"\r\n", 2, &written, nullptr);
        return;
    }
    int size = WideCharToMultiByte(
        CP_UTF8, 0, text, static_cast<int>(length), line, static_cast<int>(sizeof line) - 2, nullptr, nullptr);
    line[size++] = '\r';
    line[size++] = '\n';
    WriteFile(file, line, static_cast<DWORD>(size), &written, nullptr);
}

std::uint32_t ProcessNumber()
{
    return GetCurrentProcessId();
}

// There is no fork.
void ForgetDisplays() {}

} // namespace qxcontrol
