// The other process of the tests for locks.
//     file_peer PATH OFFSET LENGTH [MILLISECONDS READY]
// ends with 0 if the range could be locked at the first try. Before that it makes the file READY, and waits.
#include "files/file.h"

#include <cstdlib>

using namespace qx;

namespace
{

String Wide(const char* argument)
{
    String text;
    text.Assign(argument);
    return text;
}

DWORD Number(const char* argument)
{
    return static_cast<DWORD>(atoi(argument));
}

} // namespace

int main(int count, char** arguments)
{
    if (count < 4)
        return 100;
    clsFile file(Wide(arguments[1]), FileAccess::Read, FileDisposition::OpenExisting, FileShare::ReadWrite, kFileData);
    if (!file.IsOpen() || !LockFile(file.GetHandle(), Number(arguments[2]), 0, Number(arguments[3]), 0))
        return 1;
    if (count == 6)
    {
        clsFile(Wide(arguments[5]), FileAccess::Write, FileDisposition::CreateAlways, FileShare::None, kFileData)
            .Close();
        Sleep(Number(arguments[4]));
    }
    return 0;
}
