// The clipboard: shared by all processes of the session, opened by one thread at a time.
#include "base/fail.h"
#include "base/forever.h"
#include "base/text.h"
#include "clipboard/clipboard_files.h"

#include <processthreadsapi.h>
#include <winbase.h>
#include <winuser.h>

#include <cstring>
#include <map>
#include <mutex>
#include <new>

namespace qxplatform
{

namespace
{

// The clipboard while this process has it open. It owns the blocks that were stored or returned; closing it frees them.
class OpenedClipboard
{
public:
    static OpenedClipboard& Instance()
    {
        static constinit Forever<OpenedClipboard> opened;
        return opened.Get();
    }

    BOOL Open(HWND window)
    {
        const std::lock_guard lock(_mutex);
        if (_file)
            return IsMine() && window == _window ? TRUE : Fail(ERROR_ACCESS_DENIED);
        _file = LockClipboard();
        if (!_file)
            return FALSE;
        _thread = GetCurrentThreadId();
        _window = window;
        return TRUE;
    }

    BOOL Close()
    {
        const std::lock_guard lock(_mutex);
        if (!IsMine())
            return Fail(ERROR_CLIPBOARD_NOT_OPEN);
        ReleaseBlocks();
        _file = Descriptor();
        return TRUE;
    }

    BOOL Empty()
    {
        const std::lock_guard lock(_mutex);
        if (!IsMine())
            return Fail(ERROR_CLIPBOARD_NOT_OPEN);
        ReleaseBlocks();
        return RemoveClipboardData();
    }

    HANDLE Set(UINT format, HGLOBAL block)
    {
        const std::lock_guard lock(_mutex);
        if (!IsMine())
            return Null(ERROR_CLIPBOARD_NOT_OPEN);
        if (format == 0)
            return Null(ERROR_INVALID_PARAMETER);
        if (block == nullptr) // requests delayed rendering
            return Null(ERROR_NOT_SUPPORTED);
        const void* const bytes = GlobalLock(block);
        if (bytes == nullptr)
            return nullptr;
        const BOOL isStored = StoreClipboardData(format, {static_cast<const char*>(bytes), GlobalSize(block)});
        const DWORD error = GetLastError();
        GlobalUnlock(block);
        if (!isStored)
            return Null(error);
        Keep(format, block);
        return block;
    }

    HANDLE Get(UINT format)
    {
        const std::lock_guard lock(_mutex);
        if (!IsMine())
            return Null(ERROR_CLIPBOARD_NOT_OPEN);
        if (const auto known = _blocks.find(format); known != _blocks.end())
            return known->second;
        std::string bytes;
        if (!ReadClipboardData(format, bytes))
            return nullptr;
        const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
        if (block == nullptr)
            return nullptr;
        if (void* const target = GlobalLock(block))
        {
            memcpy(target, bytes.data(), bytes.size());
            GlobalUnlock(block);
        }
        Keep(format, block);
        return block;
    }

private:
    static HANDLE Null(DWORD error)
    {
        SetLastError(error);
        return nullptr;
    }

    bool IsMine() const { return _file && _thread == GetCurrentThreadId(); }

    void Keep(UINT format, HGLOBAL block)
    {
        HGLOBAL& place = _blocks[format];
        if (place != nullptr && place != block)
            GlobalFree(place);
        place = block;
    }

    void ReleaseBlocks()
    {
        for (const auto& [format, block] : _blocks)
            GlobalFree(block);
        _blocks.clear();
    }

    Mutex _mutex;
    Descriptor _file; // holds the lock while the clipboard is open
    DWORD _thread = 0;
    HWND _window = nullptr;
    std::map<UINT, HGLOBAL> _blocks;
};

// Returns the result of the work. If memory runs out, returns `failure` with ERROR_NOT_ENOUGH_MEMORY.
template <class Result, class Work>
Result WithoutExceptions(Result failure, Work work)
{
    try
    {
        return work();
    }
    catch (const std::bad_alloc&)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return failure;
    }
}

} // namespace

} // namespace qxplatform

using namespace qxplatform;

BOOL WINAPI OpenClipboard(HWND hWndNewOwner)
{
    return WithoutExceptions(FALSE, [&] { return OpenedClipboard::Instance().Open(hWndNewOwner); });
}

BOOL WINAPI CloseClipboard(void)
{
    return OpenedClipboard::Instance().Close();
}

BOOL WINAPI EmptyClipboard(void)
{
    return WithoutExceptions(FALSE, [&] { return OpenedClipboard::Instance().Empty(); });
}

HANDLE WINAPI SetClipboardData(UINT uFormat, HANDLE hMem)
{
    return WithoutExceptions(HANDLE{}, [&] { return OpenedClipboard::Instance().Set(uFormat, hMem); });
}

HANDLE WINAPI GetClipboardData(UINT uFormat)
{
    return WithoutExceptions(HANDLE{}, [&] { return OpenedClipboard::Instance().Get(uFormat); });
}

BOOL WINAPI IsClipboardFormatAvailable(UINT format)
{
    return WithoutExceptions(FALSE, [&] { return format != 0 && HasClipboardData(format) ? TRUE : FALSE; });
}

UINT WINAPI RegisterClipboardFormatW(LPCWSTR lpszFormat)
{
    if (lpszFormat == nullptr)
        return static_cast<UINT>(Fail(ERROR_INVALID_PARAMETER));
    return WithoutExceptions(0u, [&] { return ClipboardFormatNumber(View(lpszFormat)); });
}
