#include "module/language.h"

#include "core/registry/registry.h"
#include "core/system_values.h"

namespace qx
{
namespace
{

constexpr const wchar_t* kSettingsKey = L"Software\\trelmo\\Appearance\\";
constexpr const wchar_t* kSettingName = L"Language";

constexpr std::int32_t kNoCode = 1;

struct Entry
{
    std::uint8_t primary;
    std::uint8_t code;
};

// The codes by primary language, for all sublanguages that are not in the table below.
constexpr Entry kByPrimary[] = {{1, 2}, {2, 6}, {3, 8}, {5, 11}, {6, 12}, {7, 0}, {8, 19}, {10, 37}, {11, 17}, {12, 18},
    {13, 20}, {14, 21}, {15, 22}, {16, 24}, {17, 25}, {18, 26}, {19, 13}, {20, 29}, {21, 30}, {22, 31}, {24, 32},
    {25, 33}, {26, 10}, {27, 34}, {28, 4}, {29, 38}, {30, 39}, {31, 40}, {33, 23}, {34, 41}, {35, 7}, {36, 35},
    {37, 14}, {38, 27}, {39, 28}, {41, 16}, {45, 5}, {54, 3}, {56, 15}};

struct SpecialEntry
{
    std::uint8_t primary;
    std::uint8_t sublanguage;
    std::uint8_t code;
};

// Takes precedence over the table above.
constexpr SpecialEntry kBySublanguage[] = {{4, 2, 9}, {4, 1, 48}, {10, 9, 130}, {22, 1, 129}, {26, 3, 36}, {26, 2, 42}};

// Returns the language code chosen by the user, or 0 if there is none.
std::int32_t ReadChoice()
{
    const HKEY root = UtilGetUserRootKey(true);
    HKEY key = nullptr;
    DWORD choice = 0;
    if (RegOpenKeyExW(root, kSettingsKey, 0, KEY_READ, &key) == ERROR_SUCCESS)
    {
        DWORD type = REG_NONE;
        DWORD size = sizeof choice;
        const LSTATUS status =
            RegQueryValueExW(key, kSettingName, nullptr, &type, reinterpret_cast<BYTE*>(&choice), &size);
        if (status != ERROR_SUCCESS || type != REG_DWORD || size != sizeof choice)
            choice = 0;
        RegCloseKey(key);
    }
    CloseUserRootKey(root);
    return static_cast<std::int32_t>(choice);
}

} // namespace

std::int32_t LanguageCode(LANGID language)
{
    const unsigned primary = language & 0x3FFu;
    const unsigned sublanguage = language >> 10;
    for (const SpecialEntry& entry : kBySublanguage)
        if (entry.primary == primary && entry.sublanguage == sublanguage)
            return entry.code;
    for (const Entry& entry : kByPrimary)
        if (entry.primary == primary)
            return entry.code;
    return kNoCode;
}

std::int32_t GetLanguage()
{
    const std::int32_t choice = ReadChoice();
    return choice != 0 ? choice : LanguageCode(InterfaceLanguage());
}

std::int32_t SetLanguage(std::int32_t code)
{
    const HKEY root = UtilGetUserRootKey(false);
    HKEY key = nullptr;
    LSTATUS status =
        RegCreateKeyExW(root, kSettingsKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_SET_VALUE, nullptr, &key, nullptr);
    if (status == ERROR_SUCCESS)
    {
        const auto value = static_cast<DWORD>(code);
        status = RegSetValueExW(key, kSettingName, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
        RegCloseKey(key);
    }
    CloseUserRootKey(root);
    return static_cast<std::int32_t>(status);
}

} // namespace qx
