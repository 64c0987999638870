// A caller on linux who also uses the layer's own interfaces, with their wchar_t of 16 bits.
#include <qxut23/qxut23.h>

#include <windows.h>

#include <cstdio>
#include <cwchar>

int main()
{
    wchar_t text[16];
    SetLastError(ERROR_INVALID_HANDLE);
    UtilSafeSprintf(text, 16, L"%hs %d", "page", 7);
    if (std::wcscmp(text, L"page 7") != 0 || GetLastError() != ERROR_INVALID_HANDLE)
    {
        std::puts("layer_client.cpp: wrong result");
        return 1;
    }
}
