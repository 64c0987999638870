// The texts of version blocks.
#pragma once

#include "core/text/string.h"

namespace qx
{

// The texts of one block in its first language.
class clsVersionTexts
{
public:
    // The block stays the caller's.
    explicit clsVersionTexts(const void* block);

    // The text of a key; empty if it isn't there.
    String Get(const wchar_t* key) const;

private:
    const void* _block;
    String _path; // of the texts; empty if there are none
};

// One text of the version block of a file, which need not be loaded; empty for every failure.
String GetFileVersionValue(const wchar_t* path, const wchar_t* key);

// The file's version, and behind a blank its build if it tells one. The file's description goes to `description` unless
// that is null.
String GetFileVersionText(const wchar_t* path, String* description = nullptr);

} // namespace qx
