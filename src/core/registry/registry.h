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
        Create = 0, // makes the key if it isn't there
        Read = 1
    };

    enum Result : int32_t
    {
        Done = 0,
        NoValue = -1, // of GetBool
        NotOpened = -2,
        NotCreated = -3,
        NotOpen = -5,
        Unreadable = -6,
        SecondReadFailed = -8
    };

    // The low two bits of `mode` count; all but Create only read. HKEY_CURRENT_USER stands for the user's root. A null
    // subkey adopts `root` itself.
    clsRegistryList(HKEY root, const wchar_t* subkey, unsigned mode);
    clsRegistryList(const clsRegistryList&) = delete;
    clsRegistryList& operator=(const clsRegistryList&) = delete;
    ~clsRegistryList();

    // Of the last operation, the construction included.
    int32_t LastResult() const { return _result; }

    int32_t GetString(const wchar_t* name, String& result, const wchar_t* defaultText);

    // True is a text that begins with an upper-case T. Done or NoValue.
    int32_t GetBool(const wchar_t* name, bool& result, bool defaultValue);

private:
    void OpenSubkey(HKEY root, const wchar_t* subkey, bool create);
    int32_t ReadText(const wchar_t* name, String& result) const;

    HKEY _key = nullptr;
    int32_t _result = Done;
    bool _ownsKey = false;
};

} // namespace qx
