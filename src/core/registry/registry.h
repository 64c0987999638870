// The settings of the library in the system's registry.
#pragma once

#include "core/text/string.h"

#include <windows.h>

#include <cstdint>

namespace qx
{

// The root of the user's settings: HKEY_CURRENT_USER, or where the machine's settings ask for it, the key of the user
// that the calling thread impersonates. CloseUserRootKey gives it back.
HKEY UtilGetUserRootKey(bool readOnly);
void CloseUserRootKey(HKEY key);

// Makes the next call ask the machine's settings again. For tests.
void ForgetUserRootKey();

// Reads text values of one key. That a key can't be opened or a value can't be read is no failure for the caller: the
// default stands, and the codes tell.
class clsRegistryList
{
public:
    enum Mode : unsigned
    {
        kCreate = 0, // makes the key if it isn't there
        kRead = 1
    };

    enum Result : std::int32_t
    {
        kDone = 0,
        kNoValue = -1, // of GetBool
        kNotOpened = -2,
        kNotCreated = -3,
        kNotOpen = -5,
        kUnreadable = -6,
        kSecondReadFailed = -8
    };

    // The low two bits of `mode` count; all but Create only read. HKEY_CURRENT_USER stands for the user's root. A null
    // subkey adopts `root` itself.
    clsRegistryList(HKEY root, const wchar_t* subkey, unsigned mode);
    clsRegistryList(const clsRegistryList&) = delete;
    clsRegistryList& operator=(const clsRegistryList&) = delete;
    ~clsRegistryList();

    // Of the last operation, the construction included.
    std::int32_t LastResult() const { return _result; }

    std::int32_t GetString(const wchar_t* name, String& result, const wchar_t* defaultText);

    // True is a text that begins with an upper-case T. Done or NoValue.
    std::int32_t GetBool(const wchar_t* name, bool& result, bool defaultValue);

private:
    void OpenSubkey(HKEY root, const wchar_t* subkey, bool create);
    std::int32_t ReadText(const wchar_t* name, String& result) const;

    HKEY _key = nullptr;
    std::int32_t _result = kDone;
    bool _ownsKey = false;
};

} // namespace qx
