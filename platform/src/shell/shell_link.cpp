#include "shell/shell_link.h"

#include "base/text.h"
#include "com/counted_object.h"
#include "files/path.h"
#include "shell/link_file.h"

#include <windows.h>

#include <objbase.h>
#include <shobjidl.h>

#include <algorithm>
#include <new>
#include <vector>

namespace qxplatform
{

namespace
{

DWORD ShareOfLinkMode(DWORD mode)
{
    constexpr DWORD kShareMask = 0x70;
    switch (mode & kShareMask)
    {
    case STGM_SHARE_EXCLUSIVE:
        return 0;
    case STGM_SHARE_DENY_WRITE:
        return FILE_SHARE_READ;
    case STGM_SHARE_DENY_READ:
        return FILE_SHARE_WRITE;
    default:
        return FILE_SHARE_READ | FILE_SHARE_WRITE;
    }
}

// Reads the beginning of a file. Returns S_OK or the error. Throws std::bad_alloc.
HRESULT ReadBeginning(LPCWSTR path, DWORD share, std::vector<std::uint8_t>& bytes)
{
    const HANDLE file = CreateFileW(path, GENERIC_READ, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return HRESULT_FROM_WIN32(GetLastError());
    HRESULT result = S_OK;
    try
    {
        LARGE_INTEGER size = {};
        DWORD read = 0;
        if (GetFileSizeEx(file, &size))
            bytes.resize(static_cast<std::size_t>(std::min<LONGLONG>(size.QuadPart, kMostLinkBytes)));
        if (!ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr))
            result = HRESULT_FROM_WIN32(GetLastError());
        bytes.resize(read);
    }
    catch (const std::bad_alloc&)
    {
        result = E_OUTOFMEMORY;
    }
    CloseHandle(file);
    return result;
}

// Paths on drive Z: get the form that all paths of the layer have.
void ConvertToCallersForm(std::u16string& path)
{
    if (!path.empty())
        path = CallersForm(Wide(path), false);
}

class ShellLink final : public CountedObject<IShellLinkW, IPersistFile>
{
public:
    // Returns S_FALSE if there is no path. A path that is too long is truncated.
    HRESULT GetPath(LPWSTR path, int size, WIN32_FIND_DATAW* data, DWORD flags) override
    {
        if (path == nullptr || size <= 0 || data != nullptr)
            return E_INVALIDARG;
        const bool isShare = _target.local.empty() || ((flags & SLGP_UNCPRIORITY) != 0 && !_target.share.empty());
        const std::u16string& source = isShare ? _target.share : _target.local;
        const std::size_t length = std::min(source.size(), static_cast<std::size_t>(size) - 1);
        std::copy_n(source.begin(), length, reinterpret_cast<char16_t*>(path));
        path[length] = L'\0';
        return source.empty() ? S_FALSE : S_OK;
    }

    // Doesn't check whether the target exists, because a server might not respond.
    HRESULT Resolve(HWND, DWORD) override { return S_OK; }

    HRESULT GetClassID(CLSID* clsid) override
    {
        if (clsid == nullptr)
            return E_POINTER;
        *clsid = CLSID_ShellLink;
        return S_OK;
    }

    HRESULT IsDirty() override { return S_FALSE; }

    HRESULT Load(LPCOLESTR path, DWORD mode) override
    try
    {
        std::vector<std::uint8_t> bytes;
        if (const HRESULT result = ReadBeginning(path, ShareOfLinkMode(mode), bytes); FAILED(result))
            return result;
        std::optional<LinkTarget> target = ParseLink(bytes);
        if (!target)
            return E_FAIL;
        ConvertToCallersForm(target->local);
        ConvertToCallersForm(target->share);
        _target = std::move(*target);
        return S_OK;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }

    // Shortcuts aren't written, and nothing but their paths is read.
    HRESULT Save(LPCOLESTR, BOOL) override { return E_NOTIMPL; }
    HRESULT SaveCompleted(LPCOLESTR) override { return E_NOTIMPL; }
    HRESULT GetCurFile(LPOLESTR*) override { return E_NOTIMPL; }
    HRESULT GetIDList(ITEMIDLIST**) override { return E_NOTIMPL; }
    HRESULT SetIDList(const ITEMIDLIST*) override { return E_NOTIMPL; }
    HRESULT GetDescription(LPWSTR, int) override { return E_NOTIMPL; }
    HRESULT SetDescription(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT GetWorkingDirectory(LPWSTR, int) override { return E_NOTIMPL; }
    HRESULT SetWorkingDirectory(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT GetArguments(LPWSTR, int) override { return E_NOTIMPL; }
    HRESULT SetArguments(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT GetHotkey(WORD*) override { return E_NOTIMPL; }
    HRESULT SetHotkey(WORD) override { return E_NOTIMPL; }
    HRESULT GetShowCmd(int*) override { return E_NOTIMPL; }
    HRESULT SetShowCmd(int) override { return E_NOTIMPL; }
    HRESULT GetIconLocation(LPWSTR, int, int*) override { return E_NOTIMPL; }
    HRESULT SetIconLocation(LPCWSTR, int) override { return E_NOTIMPL; }
    HRESULT SetRelativePath(LPCWSTR, DWORD) override { return E_NOTIMPL; }
    HRESULT SetPath(LPCWSTR) override { return E_NOTIMPL; }

private:
    void* FindInterface(REFIID riid) override
    {
        if (riid == IID_IUnknown || riid == IID_IShellLinkW)
            return static_cast<IShellLinkW*>(this);
        if (riid == IID_IPersist || riid == IID_IPersistFile)
            return static_cast<IPersistFile*>(this);
        return nullptr;
    }

    LinkTarget _target;
};

} // namespace

IUnknown* MakeShellLink()
{
    return static_cast<IShellLinkW*>(new ShellLink);
}

} // namespace qxplatform
