// What the tests of the profile exports share: texts, trees as text, jobs and files.
#pragma once

#include <qxut23/profile.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace profiletest
{

// A zero-terminated wide text that is put together at run time.
class Wide
{
public:
    explicit Wide(std::string_view utf8);
    Wide(size_t count, wchar_t character) : _text(count, character) { _text.push_back(0); }

    Wide& operator+=(std::wstring_view text);
    const wchar_t* Text() const { return _text.data(); }
    operator const wchar_t*() const { return Text(); }
    std::wstring_view View() const { return {_text.data(), _text.size() - 1}; }

private:
    std::vector<wchar_t> _text;
};

std::string Utf8(std::wstring_view text);

// UTF-16 in the byte order of a file, with the mark.
std::string Utf16File(std::wstring_view text, bool isBigEndian = false);

// A list in one line: leaves as "name=value;", lists as "[name]{...}".
std::string Tree(HPROFJOB job, HPROFLIST list = nullptr);

// The value of a leaf, or "(none)".
std::string Value(HPROFJOB job, const wchar_t* path, HPROFLIST list = nullptr);

class Job
{
public:
    Job() : Job(ProfJobOpenW(nullptr)) {}
    explicit Job(HPROFJOB job) : _job(job) {}
    explicit Job(const std::string& path) : Job(ProfJobOpenW(Wide(path))) {}
    static Job Exclusive(const std::string& path) { return Job(ProfJobOpenExclusiveW(Wide(path))); }
    Job(Job&& other) noexcept : _job(other._job) { other._job = nullptr; }
    Job& operator=(Job&&) = delete;
    ~Job() { ProfJobClose(_job); }

    operator HPROFJOB() const { return _job; }
    int32_t Error() const { return ProfGetError(_job); }
    int32_t Save(const std::string& path, int32_t flags = PROF_FORM_TEXT) const
    {
        return ProfSaveW(_job, Wide(path), flags);
    }

private:
    HPROFJOB _job;
};

// A folder that goes with all its files.
class TempFolder
{
public:
    TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder();

    std::string Path(std::string_view name) const;
    std::string Make(std::string_view name, std::string_view bytes) const;

private:
    std::filesystem::path _folder;
};

std::string BytesOf(const std::string& path);

} // namespace profiletest
