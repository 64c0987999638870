#include "profile_file.h"

#include "failure.h"
#include "profile_form.h"
#include "text.h"

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

namespace qxut
{

namespace
{

namespace fs = std::filesystem;

// What the system says to the attempt, which the code of the library doesn't tell.
std::string ReasonOfFailedOpen(const fs::path& file, std::ios::openmode mode)
{
    errno = 0;
    if (std::fstream(file, mode) || errno == 0)
        return "";
    return " (" + std::generic_category().message(errno) + ")";
}

std::string ReasonOfMissing(const fs::path& file)
{
    std::error_code ignored;
    const bool isFolderMissing = file.has_parent_path() && !fs::exists(file.parent_path(), ignored);
    return isFolderMissing ? "there is no such folder" : "there is no such file";
}

// Looks at the file itself for what the code leaves open.
std::string ReasonOfFailedRead(const std::string& path, std::int32_t error)
{
    std::error_code ignored;
    const fs::path file = fs::u8path(path);
    if (fs::is_directory(file, ignored))
        return "it is a folder";
    if (!fs::exists(file, ignored))
        return ReasonOfMissing(file);
    const auto size = fs::file_size(file, ignored);
    if (error == PROF_ERR_LOCKED && !ignored && size < 4)
        return "it has only " + std::to_string(size) + (size == 1 ? " byte" : " bytes") + ", which is no profile";
    switch (error)
    {
    case PROF_ERR_MALFORMED:
        return "it is not a well-formed profile";
    case PROF_ERR_LOCKED:
        return "another process keeps it, or its content can't be read";
    case PROF_ERR_CANNOT_WRITE:
        return "it can't be opened for writing" + ReasonOfFailedOpen(file, std::ios::in | std::ios::out);
    default:
        return "it can't be opened" + ReasonOfFailedOpen(file, std::ios::in);
    }
}

ExitCode ExitCodeOf(std::int32_t error)
{
    switch (error)
    {
    case PROF_ERR_MALFORMED:
        return kMalformed;
    case PROF_ERR_LOCKED:
        return kLocked;
    case PROF_ERR_CANNOT_WRITE:
    case PROF_ERR_WRITE_FAILED:
        return kCannotWrite;
    default:
        return kCannotRead;
    }
}

// A pipe would hold up whoever opens it, as long as nobody writes to it.
const std::string& WithoutPipes(const std::string& path)
{
    std::error_code ignored;
    if (fs::is_fifo(fs::u8path(path), ignored))
        throw Failure(kCannotRead, path + ": it is a pipe");
    return path;
}

std::vector<Entry> EntriesOf(HPROFJOB job, HPROFLIST list)
{
    std::vector<Entry> entries;
    ProfEnumW(
        job, list,
        [](HPROFJOB, const QXWCHAR* name, const QXWCHAR* value, HPROFLIST child, void* context) -> std::int32_t
        {
            static_cast<std::vector<Entry>*>(context)->push_back({Utf8(name), Utf8(value), child});
            return 1;
        },
        &entries);
    return entries;
}

// The library also takes names that this system doesn't know, with drives, shares and backslashes, so it has the last
// word.
bool IsMissing(const std::string& path)
{
    std::error_code ignored;
    if (fs::exists(fs::u8path(path), ignored))
        return false;
    const HPROFJOB job = ProfJobOpenW(WideText(path));
    const std::int32_t error = ProfGetError(job);
    ProfJobClose(job);
    return error != PROF_OK && error != PROF_ERR_LOCKED && error != PROF_ERR_MALFORMED;
}

} // namespace

ProfileFile::ProfileFile(const std::string& path, Sharing sharing, MayBeMissing)
    : _path(WithoutPipes(path)),
      _job(sharing == Sharing::Readers ? ProfJobOpenW(WideText(path)) : ProfJobOpenExclusiveW(WideText(path))),
      _form(FormOfFile(path))
{
    const std::int32_t error = ProfGetError(_job);
    if (error == PROF_OK)
        return;
    ProfJobClose(_job);
    throw Failure(ExitCodeOf(error), path + ": " + ReasonOfFailedRead(path, error));
}

ProfileFile::ProfileFile(const std::string& path, Sharing sharing)
    : ProfileFile(
          [&]() -> const std::string&
          {
              if (IsMissing(path))
                  throw Failure(kCannotRead, path + ": " + ReasonOfMissing(fs::u8path(path)));
              return path;
          }(),
          sharing, MayBeMissing{})
{
}

ProfileFile ProfileFile::OpenOrMake(const std::string& path)
{
    return ProfileFile(path, Sharing::NobodyWhoWrites, MayBeMissing{});
}

HPROFLIST ProfileFile::List(const std::string& path) const
{
    if (path.empty() || path == "/")
        return nullptr;
    const HPROFLIST list = ProfGetListW(_job, nullptr, WideText(path));
    if (list == nullptr)
        throw Failure(kNotFound, _path + ": there is no list '" + Shown(path) + "'");
    return list;
}

void ProfileFile::Save(const std::string& path, std::int32_t flags) const
{
    const WideText name(path);
    const std::int32_t error = ProfSaveW(_job, path.empty() ? nullptr : static_cast<const QXWCHAR*>(name), flags);
    if (error == PROF_OK)
        return;
    const std::string reason = error == PROF_ERR_CANNOT_WRITE
                                   ? "it can't be opened for writing, or another process keeps it"
                                   : "writing failed; is its disk full?";
    throw Failure(ExitCodeOf(error), (path.empty() ? _path : path) + ": " + reason);
}

// Without recursion: a file may nest its lists as deeply as it likes.
void Walk(HPROFJOB job, HPROFLIST list, const Visitor& visit, const std::function<void(std::size_t depth)>& leave)
{
    struct Level
    {
        std::vector<Entry> entries;
        std::size_t next;
    };
    std::vector<Level> levels;
    levels.push_back({EntriesOf(job, list), 0});
    while (!levels.empty())
    {
        Level& level = levels.back();
        if (level.next == level.entries.size())
        {
            leave(levels.size() - 1);
            levels.pop_back();
            continue;
        }
        const Entry& entry = level.entries[level.next++];
        visit(entry, levels.size() - 1);
        if (entry.list != nullptr)
            levels.push_back({EntriesOf(job, entry.list), 0});
    }
}

std::size_t CountEntries(HPROFJOB job)
{
    std::size_t count = 0;
    Walk(
        job, nullptr, [&](const Entry&, std::size_t) { ++count; }, [](std::size_t) {});
    return count;
}

} // namespace qxut
