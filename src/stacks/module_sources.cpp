#include "stacks/module_sources.h"

#include "module/late_libraries.h"
#include "module/module_paths.h"

#include <iterator>

namespace qx
{
namespace
{

template <class Library>
std::vector<LoadedModule> ReadSnapshot(Library& library)
{
    std::vector<LoadedModule> modules;
    if (!library.p_CreateToolhelp32Snapshot.IsThere() || !library.p_Module32First.IsThere() ||
        !library.p_Module32Next.IsThere())
        return modules;
    const HANDLE snapshot = library.p_CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, GetCurrentProcessId());
    if (snapshot == INVALID_HANDLE_VALUE)
        return modules;
    MODULEENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL isEntry = library.p_Module32First(snapshot, &entry); isEntry;
         isEntry = library.p_Module32Next(snapshot, &entry))
        modules.push_back({reinterpret_cast<std::uint64_t>(entry.modBaseAddr), entry.modBaseSize});
    CloseHandle(snapshot);
    return modules;
}

} // namespace

std::vector<LoadedModule> ModulesOfSnapshot()
{
    std::vector<LoadedModule> modules = ReadSnapshot(TlHelp32());
    return modules.empty() ? ReadSnapshot(Kernel32()) : modules;
}

std::vector<LoadedModule> ModulesOfProcess()
{
    constexpr std::size_t kMostModules = 100'000;
    auto& status = PSAPI();
    if (!status.p_EnumProcessModules.IsThere() || !status.p_GetModuleInformation.IsThere())
        return {};
    const HANDLE process = GetCurrentProcess();
    std::vector<HMODULE> handles(256);
    for (;;)
    {
        DWORD bytes = 0;
        if (!status.p_EnumProcessModules(
                process, handles.data(), static_cast<DWORD>(handles.size() * sizeof(HMODULE)), &bytes))
            return {};
        const std::size_t count = bytes / sizeof(HMODULE);
        const bool isComplete = count <= handles.size();
        if (!isComplete && count > kMostModules)
            return {};
        handles.resize(count);
        if (isComplete)
            break;
    }
    std::vector<LoadedModule> modules;
    for (const HMODULE handle : handles)
    {
        MODULEINFO info{};
        if (status.p_GetModuleInformation(process, handle, &info, sizeof info))
            modules.push_back({reinterpret_cast<std::uint64_t>(info.lpBaseOfDll), info.SizeOfImage});
    }
    return modules;
}

ModuleFacts FactsOfModule(std::uint64_t base)
{
    auto& status = PSAPI();
    const HANDLE process = GetCurrentProcess();
    const auto module = reinterpret_cast<HMODULE>(base);
    ModuleFacts facts;
    MODULEINFO info{};
    if (status.p_GetModuleInformation.IsThere() && status.p_GetModuleInformation(process, module, &info, sizeof info))
        facts.size = info.SizeOfImage;
    wchar_t text[MAX_PATH];
    const auto hasText = [&](auto& function)
    {
        return function.IsThere() && function(process, module, text, static_cast<DWORD>(std::size(text))) != 0;
    };
    if (hasText(status.p_GetModuleBaseName))
        facts.name = String(text);
    facts.path = hasText(status.p_GetModuleFileNameEx) ? String(text) : ModulePath(module);
    return facts;
}

} // namespace qx
