// Copies profiles to and from the clipboard. They have a clipboard format of their own: the image of a profile file
// followed by a zero byte. Both directions use a temporary file.
#include "prof/clipboard.h"

#include "files/global_lock.h"
#include "files/temp_files.h"
#include "prof/job.h"
#include "prof/output.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

namespace qx
{

namespace
{

constexpr wchar_t kTempPrefix[] = L"Prf";
// Shown by programs that can only paste text.
constexpr std::string_view kNotice = "PROF data available";

// Returns the format of profiles, which is registered at first use. The number never changes, and processes that don't
// use the clipboard never register it.
UINT ProfileFormat()
{
    static const UINT format = RegisterClipboardFormatW(L"QvxProfCBFormat");
    return format;
}

class clsOpenClipboard
{
public:
    explicit clsOpenClipboard(HWND window) : _isOpen(::OpenClipboard(window) != FALSE) {}
    clsOpenClipboard(const clsOpenClipboard&) = delete;
    clsOpenClipboard& operator=(const clsOpenClipboard&) = delete;
    ~clsOpenClipboard()
    {
        if (_isOpen)
            CloseClipboard();
    }

    explicit operator bool() const { return _isOpen; }

private:
    bool _isOpen;
};

// A new memory block for the clipboard. A zero byte follows the requested size.
class clsNewBlock
{
public:
    explicit clsNewBlock(std::size_t size) : _lock(GMEM_MOVEABLE | GMEM_ZEROINIT | GMEM_DDESHARE, size + 1) {}

    bool IsThere() const { return _lock.IsLocked(); }
    void* Bytes() const { return _lock.Get(); }

    // Unlocks the block and passes it to the clipboard, which owns it if the call succeeds.
    bool HandOver(UINT format)
    {
        const HGLOBAL block = _lock.Release();
        if (SetClipboardData(format, block) != nullptr)
            return true;
        GlobalFree(block);
        return false;
    }

private:
    clsGlobalLock _lock;
};

// Leaves other formats on the clipboard untouched.
ProfError CopyToClipboard(HWND window, clsFile& image)
{
    const clsOpenClipboard clipboard(window);
    if (!clipboard)
        return kProfCannotWrite;

    const std::int64_t size = image.GetSize();
    if (size < 0 || size > std::numeric_limits<std::uint32_t>::max())
        return kProfStopped;
    clsNewBlock profile(static_cast<std::size_t>(size));
    if (!profile.IsThere())
        return kProfStopped;
    image.Seek(std::int64_t{0});
    const auto count = static_cast<std::uint32_t>(size);
    if (image.Read(profile.Bytes(), count) != count || !profile.HandOver(ProfileFormat()))
        return kProfWriteFailed;

    clsNewBlock notice(kNotice.size());
    if (!notice.IsThere())
        return kProfStopped;
    memcpy(notice.Bytes(), kNotice.data(), kNotice.size());
    return notice.HandOver(CF_TEXT) ? kProfOk : kProfWriteFailed;
}

bool PasteFromClipboard(HWND window, clsFile& image)
{
    const clsOpenClipboard clipboard(window);
    if (!clipboard || !IsProfileOnClipboard())
        return false;
    const clsGlobalLock block(GetClipboardData(ProfileFormat()), false);
    if (!block.IsLocked())
        return false;
    const std::size_t size = GlobalSize(block.Memory());
    return image.Write(block.Get(), size) == static_cast<std::int64_t>(size);
}

} // namespace

bool IsProfileOnClipboard()
{
    return IsClipboardFormatAvailable(ProfileFormat()) != FALSE;
}

ProfError clsProfJob::SaveToClipboard(HWND window, unsigned flags) const
{
    clsFileRWTemp file(kTempPrefix);
    if (!file.IsOpen())
        return kProfCannotWrite;
    {
        clsProfOutput image;
        if (!WriteForm(image, FormOf(flags)) || !image.WriteTo(file))
            return kProfWriteFailed;
    }
    return CopyToClipboard(window, file);
}

void clsProfJob::OpenFromClipboard(HWND window)
{
    clsFileRWTemp file(kTempPrefix);
    if (!file.IsOpen() || !PasteFromClipboard(window, file))
    {
        _error = kProfCannotRead;
        return;
    }
    Load(file);
}

} // namespace qx
