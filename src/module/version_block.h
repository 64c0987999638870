// Reads the texts of version blocks.
#pragma once

#include "core/text/string.h"

namespace qx
{

// The texts of a version block in its first language.
class clsVersionTexts
{
public:
    // The caller keeps ownership of the block, which must outlive this object.
    explicit clsVersionTexts(const void* block);

    // Returns the text of a key, or an empty text if the key is missing.
    String Get(const wchar_t* key) const;

private:
    const void* _block;
    String _path; // path of the texts; empty if there are none
};

// Returns a text from the version block of a file, which need not be loaded. Returns an empty text on any failure.
String GetFileVersionValue(const wchar_t* path, const wchar_t* key);

// Returns the file version, followed by a space and the build if the file specifies one. Stores the file's description
// in `description`, and the name of its company in `company`, unless they are null.
String GetFileVersionText(const wchar_t* path, String* description = nullptr, String* company = nullptr);

} // namespace qx
