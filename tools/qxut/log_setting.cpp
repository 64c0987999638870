#include "log_setting.h"

#include "failure.h"
#include "text.h"

#include <windows.h>

#include <string_view>
#include <vector>

namespace qxut
{
namespace
{

constexpr WCHAR kKey[] = TEXT("software\\trelmo");
constexpr WCHAR kName[] = TEXT("Debug.LogFilename");
constexpr WCHAR kFlush[] = TEXT("Debug.LogFile.Flush");

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
    std::vector<WCHAR> Text(const WCHAR* name) const
    {
        DWORD type = 0;
        DWORD bytes = 0;
        if (_key == nullptr || RegQueryValueExW(_key, name, nullptr, &type, nullptr, &bytes) != ERROR_SUCCESS)
            return {0};
        std::vector<WCHAR> text(bytes / sizeof(WCHAR) + 2);
        bytes = static_cast<DWORD>((text.size() - 1) * sizeof(WCHAR));
        if (RegQueryValueExW(_key, name, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &bytes) !=
                ERROR_SUCCESS ||
            (type != REG_SZ && type != REG_EXPAND_SZ))
            return {0};
        return text;
    }

    // Returns the first character of a value of any type, up to 128 bytes long, or 'F' if it can't be read.
    WCHAR FirstCharacter(const WCHAR* name) const
    {
        WCHAR value[64] = {};
        DWORD bytes = sizeof(value);
        const bool isRead = _key != nullptr && RegQueryValueExW(_key, name, nullptr, nullptr,
                                                   reinterpret_cast<BYTE*>(value), &bytes) == ERROR_SUCCESS;
        return isRead ? value[0] : TEXT('F');
    }

private:
    HKEY _key = nullptr;
};

// Returns the temp folder with a trailing separator.
std::string TempFolder()
{
    std::vector<WCHAR> folder(MAX_PATH + 2);
    GetTempPathW(MAX_PATH + 1, folder.data());
    std::vector<WCHAR> longFolder(32768);
    const DWORD length = GetLongPathNameW(folder.data(), longFolder.data(), static_cast<DWORD>(longFolder.size()));
    return Utf8(length != 0 && length < longFolder.size() ? longFolder.data() : folder.data());
}

void SetText(HKEY key, const WCHAR* name, const WideText& text)
{
    const LSTATUS status = RegSetValueExW(
        key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(static_cast<const WCHAR*>(text)), text.Bytes());
    if (status != ERROR_SUCCESS)
        throw Failure(kCannotWrite, "cannot write the machine's settings (error " + std::to_string(status) + ")");
}

} // namespace

LogSetting ReadLogSetting()
{
    const Key machine(HKEY_LOCAL_MACHINE);
    LogSetting setting;
    setting.path = Utf8(machine.Text(kName).data());
    const bool hasFolder =
        setting.path.find_first_of("\\/") != std::string::npos || (setting.path.size() > 1 && setting.path[1] == ':');
    if (!setting.path.empty() && !hasFolder)
        setting.path = TempFolder() + setting.path;
    setting.isFlushed = machine.Text(kFlush)[0] == TEXT('T');
    const WCHAR force = Key(HKEY_CURRENT_USER).FirstCharacter(TEXT("ForceUsePerfCounters"));
    setting.usesCounter = force != TEXT('F') && force != TEXT('0');
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
            SetText(key, kName, WideText(name));
            SetText(key, kFlush, WideText(isFlushed ? "True" : "False"));
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
