// A caller's pass phrase for packed text.
#pragma once

#include "core/text/string.h"

namespace qx
{

// Returns true if the 8-bit form of the text, which is the cipher's key, represents each of its characters. Otherwise
// substitutes replace some characters, and texts that differ only in these characters are the same key.
bool IsExactPassPhrase(const String& text);

// A pass phrase for the duration of one call. The destructor erases the text and its 8-bit form, so keep no copies.
class clsPassPhrase
{
public:
    // Null is the empty text, which means no encryption. Logs a warning if the key isn't exact.
    explicit clsPassPhrase(const wchar_t* text);
    clsPassPhrase(const clsPassPhrase&) = delete;
    clsPassPhrase& operator=(const clsPassPhrase&) = delete;
    ~clsPassPhrase() { _text.Wipe(); }

    const String& Text() const { return _text; }

private:
    String _text;
};

} // namespace qx
