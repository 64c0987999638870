// module_peer: loads the library, uses it, unloads it, and loads it again. Exit code 0 if all of that went well, else
// the number of what didn't.
#include <windows.h>

#include <cstdint>

namespace
{

template <class Function>
Function* Find(HMODULE library, const char* name)
{
    return reinterpret_cast<Function*>(GetProcAddress(library, name));
}

int UseOnce()
{
    const HMODULE library = LoadLibraryW(L"qxUT23.dll");
    if (library == nullptr)
        return 1;
    auto* const version = Find<int32_t(int32_t)>(library, "UtilGetVersion");
    auto* const language = Find<int32_t()>(library, "UtilLanguageGet");
    auto* const setLanguage = Find<int32_t(int32_t)>(library, "UtilLanguageSet");
    auto* const environment = Find<int32_t()>(library, "UtilGetOSEnvironmentType");
    auto* const interaction = Find<int32_t()>(library, "UtilGetUIInteractionAllowed");
    if (!version || version(0) != 0x170002)
        return 2;
    if (!language || language() < 0)
        return 3;
    if (!setLanguage || (setLanguage(0) == 0 && language() < 0))
        return 4;
    if (!environment || environment() < 1 || environment() > 4)
        return 5;
    if (!interaction || interaction() > 1)
        return 6;
    if (!FreeLibrary(library))
        return 7;
    return GetModuleHandleW(L"qxUT23.dll") == nullptr ? 0 : 8;
}

} // namespace

int main()
{
    const int first = UseOnce();
    return first != 0 ? first : UseOnce();
}
