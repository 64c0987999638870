// A caller on linux that also uses the layer's own interfaces, with its 16-bit wchar_t.
#include <qxut23/qxut23.h>

#include <windows.h>

#include <cstdio>
#include <cwchar>

int main()
{
    wchar_t text[] = L"Layer";
    SetLastError(ERROR_INVALID_HANDLE);
    UtilLocaleStrupr(text);
    if (std::wcscmp(text, L"LAYER") != 0 || GetLastError() != ERROR_INVALID_HANDLE)
    {
        std::puts("layer_client.cpp: wrong result");
        return 1;
    }
}
