// A temp folder of the test program's own, set before anything asks for the user's.
#pragma once

#include "support/temp_folder.h"

namespace qxtest
{

class OwnTempFolder : public TempFolder
{
public:
    OwnTempFolder()
    {
        for (const wchar_t* variable : {L"TMPDIR", L"TMP", L"TEMP"})
            SetEnvironmentVariableW(variable, Path());
    }
    ~OwnTempFolder() { RemoveDirectoryW(Path(L"trelmo")); }
};

// The one of this program.
inline const OwnTempFolder& TempFolderOfTests()
{
    static const OwnTempFolder folder;
    return folder;
}

} // namespace qxtest
