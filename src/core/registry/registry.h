// The library's settings in the system's registry.
#pragma once

#include "core/text/string.h"

#include <windows.h>

#include <cstdint>

namespace qx
{

// Returns the root of the user's settings: HKEY_CURRENT_USER or, if the machine's settings say so, the key of the user
// whom the calling thread impersonates. The caller releases it with CloseUserRootKey.
HKEY UtilGetUserRootKey(bool readOnly);
void CloseUserRootKey(HKEY key);

// Makes the next call read the machine's settings again. For tests.
void ForgetUserRootKey();

// Reads text values of one registry key. If the key can't be opened or a value can't be read, the getters return the
// default; the result code says why.
class clsRegistryList
{
public:
    enum Mode : unsigned
    {
        kCreate = 0, // creates the key if it is missing
        kRead = 1
    };

    enum Result : std::int32_t
    {
        kDone = 0,
        kNoValue = -1, // returned only by GetBool
        kNotOpened = -2,
        kNotCreated = -3,
        kNotOpen = -5,
        kUnreadable = -6,
        kSecondReadFailed = -8
    };

    // Only the low two bits of `mode` matter; all values except kCreate open the key read-only. HKEY_CURRENT_USER is
    // replaced by UtilGetUserRootKey. With a null subkey, `root` itself is used.
    clsRegistryList(HKEY root, const wchar_t* subkey, unsigned mode);
    clsRegistryList(const clsRegistryList&) = delete;
    clsRegistryList& operator=(const clsRegistryList&) = delete;
    ~clsRegistryList();

    // Returns the result of the last operation, which may be the constructor.
    std::int32_t LastResult() const { return _result; }

    std::int32_t GetString(const wchar_t* name, String& result, const wchar_t* defaultText);

    // A text that starts with an upper-case T is true. Returns kDone or kNoValue.
    std::int32_t GetBool(const wchar_t* name, bool& result, bool defaultValue);

private:
    void OpenSubkey(HKEY root, const wchar_t* subkey, bool create);
    std::int32_t ReadText(const wchar_t* name, String& result) const;

    HKEY _key = nullptr;
    std::int32_t _result = kDone;
    bool _ownsKey = false;
};

} // namespace qx
