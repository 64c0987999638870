// Helpers shared by the tests of the profile exports: texts, trees as text, jobs and files.
#pragma once

#include "support/temp_folder.h"

#include <qxut23/profile.h>

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace profiletest
{

class Wide : public qx::String
{
public:
    explicit Wide(std::string_view utf8)
    {
        SetCodePage(CP_UTF8);
        Assign(utf8.data(), 0, utf8.size());
    }
    Wide(std::size_t count, wchar_t character) { Fill(character, count); }
};

inline std::string Utf8(std::wstring_view text)
{
    std::string bytes(3 * text.size(), '\0');
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
        static_cast<int>(bytes.size()), nullptr, nullptr);
    return bytes.substr(0, static_cast<std::size_t>(length));
}

// Returns the text as a UTF-16LE file with a byte order mark.
inline std::string Utf16File(std::wstring_view text)
{
    return "\xFF\xFE" + std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
}

// Returns a list as one line: leaves as "name=value;", lists as "[name]{...}".
inline std::string Tree(HPROFJOB job, HPROFLIST list = nullptr)
{
    std::string text;
    ProfEnumW(
        job, list,
        [](HPROFJOB owner, const wchar_t* name, const wchar_t* value, HPROFLIST child, void* context) -> std::int32_t
        {
            auto& out = *static_cast<std::string*>(context);
            out += child != nullptr ? "[" + Utf8(name) + "]{" + Tree(owner, child) + "}"
                                    : Utf8(name) + "=" + Utf8(value) + ";";
            return 1;
        },
        &text);
    return text;
}

// Returns the value of a leaf, or "(none)".
inline std::string Value(HPROFJOB job, const wchar_t* path, HPROFLIST list = nullptr)
{
    const std::int32_t length = ProfGetStringLengthW(job, list, path);
    if (length < 0)
        return "(none)";
    std::vector<wchar_t> buffer(static_cast<std::size_t>(length) + 1);
    ProfGetStringW(job, list, path, buffer.data(), length + 1, nullptr);
    return Utf8({buffer.data(), static_cast<std::size_t>(length)});
}

class Job
{
public:
    Job() : Job(ProfJobOpenW(nullptr)) {}
    explicit Job(HPROFJOB job) : _job(job) {}
    explicit Job(const std::string& path) : Job(ProfJobOpenW(Wide(path))) {}
    static Job Exclusive(const std::string& path) { return Job(ProfJobOpenExclusiveW(Wide(path))); }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
    ~Job() { ProfJobClose(_job); }

    operator HPROFJOB() const { return _job; }
    std::int32_t Error() const { return ProfGetError(_job); }
    std::int32_t Save(const std::string& path, std::int32_t flags = PROF_FORM_TEXT) const
    {
        return ProfSaveW(_job, Wide(path), flags);
    }

private:
    HPROFJOB _job;
};

inline std::string BytesOf(const std::string& path)
{
    return qxtest::BytesOf(Wide(path));
}

// A folder whose paths are in UTF-8.
class TempFolder : public qxtest::TempFolder
{
public:
    TempFolder() {} // not defaulted, because clang requires a user-provided constructor for const objects
    std::string Path(std::string_view name) const { return (qxtest::NativePath(Path()) / name).string(); }
    std::string Make(std::string_view name, std::string_view bytes) const
    {
        qxtest::MakeFile(Wide(Path(name)), bytes);
        return Path(name);
    }

private:
    using qxtest::TempFolder::Path;
};

} // namespace profiletest
