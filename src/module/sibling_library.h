// Libraries of the same maker, which bear their version in their file names.
#pragma once

#include "module/late_load.h"

namespace qx
{

// The version of the sibling libraries that the module works with.
int SiblingVersion();
void SetSiblingVersion(int version);

class CSiblingLibrary : public CLateLoadBase
{
public:
    // `filePart` stands between the prefix and the version in the name of the file.
    CSiblingLibrary(const wchar_t* moduleName, const wchar_t* filePart);

    // Looks for a version that fits this library.
    bool Load() override;

    // The version that was loaded; 0 before.
    int FoundVersion() const { return _foundVersion; }

protected:
    // Looks for the versions from `highest` down to `lowest`: first for one that the process has already, then where
    // the system looks, then in the library's own folder. Once one is loaded, the module has no name any more.
    bool LoadVersioned(const wchar_t* filePart, int highest, int lowest, int& found);

private:
    const wchar_t* _filePart;
    int _foundVersion = 0;
};

} // namespace qx
