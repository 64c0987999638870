// A private temp folder for the test program, set before the user's folder is queried.
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
};

// Returns the temp folder of this program.
inline const OwnTempFolder& TempFolderOfTests()
{
    static const OwnTempFolder folder;
    return folder;
}

} // namespace qxtest
