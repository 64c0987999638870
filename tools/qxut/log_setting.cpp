// Compiled with a 16-bit wchar_t to match the system's interfaces. Don't include headers here that use the public
// headers' character type.
#include "log_setting.h"

#include "failure.h"

#include <windows.h>

#include <string_view>
#include <vector>

namespace qxut
{
namespace
{

constexpr wchar_t kKey[] = L"software\\trelmo";
constexpr wchar_t kName[] = L"Debug.LogFilename";
constexpr wchar_t kFlush[] = L"Debug.LogFile.Flush";

std::string Narrow(const wchar_t* text)
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::vector<char> bytes(size > 0 ? static_cast<std::size_t>(size) : 1);
    WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes.data(), size, nullptr, nullptr);
    return bytes.data();
}

std::vector<wchar_t> Wide(const std::string& text)
{
    const int size = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, nullptr, 0);
    std::vector<wchar_t> wide(size > 0 ? static_cast<std::size_t>(size) : 1);
    MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, wide.data(), size);
    return wide;
}

class Key
{
public:
    explicit Key(HKEY root)
    {
        if (RegOpenKeyExW(root, kKey, 0, KEY_READ, &_key) != ERROR_SUCCESS)
            _key = nullptr;
    }
    ~Key()
    {
        if (_key != nullptr)
            RegCloseKey(_key);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    // Returns a zero-terminated text, or an empty one if the value doesn't exist.
    std::vector<wchar_t> Text(const wchar_t* name) const
    {
        DWORD type = 0;
        DWORD bytes = 0;
        if (_key == nullptr || RegQueryValueExW(_key, name, nullptr, &type, nullptr, &bytes) != ERROR_SUCCESS)
            return {0};
        std::vector<wchar_t> text(bytes / sizeof(wchar_t) + 2);
        bytes = static_cast<DWORD>((text.size() - 1) * sizeof(wchar_t));
        if (RegQueryValueExW(_key, name, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &bytes) !=
                ERROR_SUCCESS ||
            (type != REG_SZ && type != REG_EXPAND_SZ))
            return {0};
        return text;
    }

    // Returns the first character of a value of any type, up to 128 bytes long, or 'F' if it can't be read.
    wchar_t FirstCharacter(const wchar_t* name) const
    {
        wchar_t value[64] = {};
        DWORD bytes = sizeof(value);
        const bool isRead = _key != nullptr && RegQueryValueExW(_key, name, nullptr, nullptr,
                                                   reinterpret_cast<BYTE*>(value), &bytes) == ERROR_SUCCESS;
        return isRead ? value[0] : L'F';
    }

private:
    HKEY _key = nullptr;
};

// Returns the temp folder with a trailing separator.
std::string TempFolder()
{
    std::vector<wchar_t> folder(MAX_PATH + 2);
    GetTempPathW(MAX_PATH + 1, folder.data());
    std::vector<wchar_t> longFolder(32768);
    const DWORD length = GetLongPathNameW(folder.data(), longFolder.data(), static_cast<DWORD>(longFolder.size()));
    return Narrow(length != 0 && length < longFolder.size() ? longFolder.data() : folder.data());
}

void SetText(HKEY key, const wchar_t* name, const std::vector<wchar_t>& text)
{
    const LSTATUS status = RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.data()),
        static_cast<DWORD>(text.size() * sizeof(wchar_t)));
    if (status != ERROR_SUCCESS)
        throw Failure(kCannotWrite, "cannot write the machine's settings (error " + std::to_string(status) + ")");
}

} // namespace

LogSetting ReadLogSetting()
{
    const Key machine(HKEY_LOCAL_MACHINE);
    LogSetting setting;
    setting.path = Narrow(machine.Text(kName).data());
    const bool hasFolder =
        setting.path.find_first_of("\\/") != std::string::npos || (setting.path.size() > 1 && setting.path[1] == ':');
    if (!setting.path.empty() && !hasFolder)
        setting.path = TempFolder() + setting.path;
    setting.isFlushed = machine.Text(kFlush)[0] == L'T';
    const wchar_t force = Key(HKEY_CURRENT_USER).FirstCharacter(L"ForceUsePerfCounters");
    setting.usesCounter = force != L'F' && force != L'0';
    return setting;
}

void WriteLogSetting(const std::string& name, bool isFlushed)
{
    HKEY key = nullptr;
    const LSTATUS status = RegCreateKeyExW(
        HKEY_LOCAL_MACHINE, kKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_SET_VALUE, nullptr, &key, nullptr);
    if (status != ERROR_SUCCESS)
        throw Failure(kCannotWrite, "cannot write the machine's settings (error " + std::to_string(status) + ")");
    try
    {
        if (name.empty())
            RegDeleteValueW(key, kName);
        else
        {
            SetText(key, kName, Wide(name));
            SetText(key, kFlush, Wide(isFlushed ? "True" : "False"));
        }
    }
    catch (...)
    {
        RegCloseKey(key);
        throw;
    }
    RegCloseKey(key);
}

} // namespace qxut
