#include "exports/heaps/heaps_library.h"

#include "support/log_lines.h"
#include "support/own_settings.h"
#include "support/temp_folder.h"

namespace qxtest
{
namespace
{

// The library stays loaded until the process ends. It doesn't free its objects then, so the leak checker must find them
// reachable.
struct LoggedLibrary
{
    HMODULE Load() const
    {
        settings.Set(HKEY_LOCAL_MACHINE, L"Debug.LogFilename", log.Text());
        return LoadLibraryW(L"qxUT23.dll");
    }

    const TempFolder folder;
    const OwnSettings settings;
    const qx::String log = folder.Path(L"heaps.log");
    const HeapsLibrary exports{Load()};
    std::size_t seen = 0;
};

LoggedLibrary& Logged()
{
    static LoggedLibrary library;
    return library;
}

} // namespace

const HeapsLibrary& HeapsLibrary::Get()
{
    return Logged().exports;
}

std::vector<std::string> HeapsLibrary::NewLines()
{
    const std::vector<std::string> lines = LogLines(Logged().log);
    std::vector<std::string> texts;
    for (std::size_t& i = Logged().seen; i < lines.size(); ++i)
    {
        std::string text = Parse(lines[i]).rest;
        if (const std::size_t mark = text.find("        :"); mark != std::string::npos)
            text.erase(0, mark + 9);
        if (text.ends_with('\n'))
            text.pop_back();
        constexpr std::size_t kPointerLength = 18;
        for (std::size_t at = 0; (at = text.find("0X", at)) != std::string::npos;)
            text.replace(at, kPointerLength, "P");
        if (const std::size_t chain = text.find(" [called by "); chain != std::string::npos)
            text = text.substr(0, chain) + " [called by *]";
        if (texts.empty() || texts.back() != text || !text.ends_with(" [called by *]"))
            texts.push_back(text);
    }
    return texts;
}

} // namespace qxtest
