// A caller on linux that also uses the layer's interfaces, with their 16-bit wchar_t.
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
