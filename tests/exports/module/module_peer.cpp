// module_peer: loads the library, uses it, unloads it, and loads it again. Exit code: 0 on success, otherwise the
// number of the failed check. With an argument: fails an assertion.
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
    auto* const version = Find<std::int32_t(std::int32_t)>(library, "UtilGetVersion");
    auto* const language = Find<std::int32_t()>(library, "UtilLanguageGet");
    auto* const setLanguage = Find<std::int32_t(std::int32_t)>(library, "UtilLanguageSet");
    auto* const environment = Find<std::int32_t()>(library, "UtilGetOSEnvironmentType");
    auto* const interaction = Find<std::int32_t()>(library, "UtilGetUIInteractionAllowed");
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

int FailAssertion()
{
    const HMODULE library = LoadLibraryW(L"qxUT23.dll");
    auto* const assertion = Find<void(const wchar_t*, const wchar_t*, std::uint32_t)>(library, "UtilAssert");
    if (!assertion)
        return 1;
    assertion(L"a < b", L"file.cpp", 42);
    return 0; // a failed assertion doesn't return
}

} // namespace

int main(int count, char**)
{
    if (count > 1)
        return FailAssertion();
    const int first = UseOnce();
    return first != 0 ? first : UseOnce();
}
