// Libraries of the same product family, whose file names contain their version.
#pragma once

#include "module/late_load.h"

namespace qx
{

// The version of the sibling libraries used by this module.
int SiblingVersion();
void SetSiblingVersion(int version);

class CSiblingLibrary : public CLateLoadBase
{
public:
    // `filePart` is the part of the file name between the prefix and the version.
    CSiblingLibrary(const wchar_t* moduleName, const wchar_t* filePart);

    // Loads the version that matches this library.
    bool Load() override;

    // Returns the version that was loaded, or 0 if none was.
    int FoundVersion() const { return _foundVersion; }

    // Returns true if the library was already in the process when it was loaded.
    bool WasPresent() const { return _wasPresent; }

protected:
    // Tries the versions from `highest` down to `lowest`: first libraries that are already loaded, then the system's
    // search path, then the library's own folder. After success, the module name is empty.
    bool LoadVersioned(const wchar_t* filePart, int highest, int lowest, int& found);

private:
    const wchar_t* _filePart;
    int _foundVersion = 0;
    bool _wasPresent = false;
};

} // namespace qx
