// The other process of the tests for sharing and locks.
//     file_peer open PATH ACCESS DISPOSITION SHARE           ends with the error kind, 0 if the file could be opened
//     file_peer lock PATH OFFSET LENGTH                      ends with 0 if the range could be locked at the first try
//     file_peer hold PATH OFFSET LENGTH MILLISECONDS READY   locks, makes the file READY, and waits; 0 if it could lock
#include "files/file.h"

#include <cstdlib>
#include <cstring>

using namespace qx;

namespace
{

String Wide(const char* argument)
{
    String text;
    text.Assign(argument);
    return text;
}

int Open(char** arguments)
{
    clsFile file(Wide(arguments[0]), static_cast<FileAccess>(atoi(arguments[1])),
        static_cast<FileDisposition>(atoi(arguments[2])), static_cast<FileShare>(atoi(arguments[3])), kFileData);
    return file.IsOpen() ? 0 : static_cast<int>(file.GetErrorKind());
}

bool TryLock(clsFile& file, const char* offset, const char* length)
{
    return LockFile(file.GetHandle(), static_cast<DWORD>(atoi(offset)), 0, static_cast<DWORD>(atoi(length)), 0) !=
           FALSE;
}

int Lock(char** arguments)
{
    clsFile file(Wide(arguments[0]), FileAccess::Read, FileDisposition::OpenExisting, FileShare::ReadWrite, kFileData);
    return file.IsOpen() && TryLock(file, arguments[1], arguments[2]) ? 0 : 1;
}

int Hold(char** arguments)
{
    clsFile file(Wide(arguments[0]), FileAccess::Read, FileDisposition::OpenExisting, FileShare::ReadWrite, kFileData);
    if (!file.IsOpen() || !TryLock(file, arguments[1], arguments[2]))
    {
        return 1;
    }
    clsFile ready(Wide(arguments[4]), FileAccess::Write, FileDisposition::CreateAlways, FileShare::None, kFileData);
    ready.Close();
    Sleep(static_cast<DWORD>(atoi(arguments[3])));
    return 0;
}

} // namespace

int main(int count, char** arguments)
{
    if (count == 6 && strcmp(arguments[1], "open") == 0)
    {
        return Open(arguments + 2);
    }
    if (count == 5 && strcmp(arguments[1], "lock") == 0)
    {
        return Lock(arguments + 2);
    }
    if (count == 7 && strcmp(arguments[1], "hold") == 0)
    {
        return Hold(arguments + 2);
    }
    return 100;
}
