#include "profile_file.h"

#include "failure.h"
#include "text.h"

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>
#include <vector>

namespace qxut
{

namespace
{

namespace fs = std::filesystem;

// Returns the system's error message for opening the file, because the library's result code has no details.
std::string SystemReason(const fs::path& file, std::ios::openmode mode)
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
    return isFolderMissing ? "no such folder" : "no such file";
}

// Examines the file to find the reason, because the library's result code doesn't state it.
std::string ReasonOfFailedOpen(const std::string& path, std::int32_t error, std::uint32_t source)
{
    if ((source & QXUT_SOURCE_TOO_LARGE) != 0)
        return (source & QXUT_SOURCE_PACKED) != 0 ? "unpacks to more memory than the limit, which is 64 times its size "
                                                    "or 64 MB unless --max-size sets another"
                                                  : "is larger than 2 GB";
    std::error_code ignored;
    const fs::path file = fs::u8path(path);
    if (fs::is_directory(file, ignored))
        return "is a folder";
    if (!fs::exists(file, ignored))
        return ReasonOfMissing(file);
    if (!fs::is_regular_file(file, ignored))
        return "is a pipe or a device, not a file";
    const auto size = fs::file_size(file, ignored);
    if (error == PROF_ERR_LOCKED && !ignored && size < 4)
        return "has only " + std::to_string(size) + (size == 1 ? " byte" : " bytes") + " and is not a profile";
    switch (error)
    {
    case PROF_ERR_MALFORMED:
        return "is not a well-formed profile";
    case PROF_ERR_LOCKED:
        return "locked by another process, or cannot be read";
    case PROF_ERR_CANNOT_WRITE:
        return "cannot open the file for writing" + SystemReason(file, std::ios::in | std::ios::out);
    default:
        return "cannot open the file" + SystemReason(file, std::ios::in);
    }
}

std::string ReasonOfFailedSave(const std::string& path, std::int32_t error)
{
    if (error != PROF_ERR_CANNOT_WRITE)
        return "cannot write the file; is the disk full?";
    std::error_code ignored;
    const fs::file_status status = fs::status(fs::u8path(path), ignored);
    return !fs::exists(status) || fs::is_regular_file(status)
               ? "cannot open the file for writing, or it is locked by another process"
           : fs::is_directory(status) ? "is a folder"
                                      : "is a pipe or a device";
}

HPROFJOB Open(const std::string& path, Sharing sharing, MaxSize maxSize, std::uint32_t flags)
{
    flags |= (sharing == Sharing::NobodyWhoWrites ? QXUT_PROFILE_EXCLUSIVE : 0) |
             (maxSize == std::uint64_t{0} ? QXUT_PROFILE_ANY_SIZE : 0);
    return QxProfJobOpen(WideText(path), flags, maxSize.value_or(0));
}

// Returns what a save in place would lose.
std::string LossOf(std::uint32_t source)
{
    if ((source & QXUT_SOURCE_FOREIGN) != 0 && (source & QXUT_SOURCE_INI) == 0)
        return "everything in it, because it is not a profile";
    std::string loss;
    const auto add = [&](std::uint32_t bits, const char* what)
    {
        if ((source & bits) == bits)
            loss += (loss.empty() ? "" : "; ") + std::string(what);
    };
    add(QXUT_SOURCE_INI, "the name of the first section and the order of sections, because it is an INI file");
    add(QXUT_SOURCE_COMMENTS, "comments");
    add(QXUT_SOURCE_IGNORED, "text that belongs to no entry, or that the form can't represent");
    add(QXUT_SOURCE_FLATTENED, "the nesting of its fields");
    add(QXUT_SOURCE_TRUNCATED, "what was cut off: it ends inside a list");
    add(QXUT_SOURCE_DAMAGED, "what follows the damage in its packed data");
    return loss;
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

} // namespace

ProfileFile::ProfileFile(const std::string& path, Sharing sharing, MaxSize maxSize, std::uint32_t flags)
    : _path(path),
      _job(Open(path, sharing, maxSize, flags))
{
    const std::int32_t error = ProfGetError(_job);
    const std::uint32_t source = QxProfGetSource(_job);
    if (error != PROF_OK)
    {
        ProfJobClose(_job);
        // The library also accepts names that the standard library doesn't (with drives, shares and backslashes), so
        // the standard library is consulted only after a failure.
        std::error_code ignored;
        const bool isMissing = flags == QXUT_PROFILE_EXISTING && !fs::exists(fs::u8path(path), ignored);
        throw Failure(
            isMissing ? kCannotRead : ExitCodeOf(error), path + ": " + ReasonOfFailedOpen(path, error, source));
    }
    if ((source & QXUT_SOURCE_TRUNCATED) != 0)
        std::cerr << "qxut: warning: " << Shown(path) << ": ends inside a list; it may have been cut off\n";
    if ((source & QXUT_SOURCE_DAMAGED) != 0)
        std::cerr << "qxut: warning: " << Shown(path)
                  << ": the packed data are damaged or cut off; only what precedes the damage was read\n";
}

ProfileFile::ProfileFile(const std::string& path, Sharing sharing, MaxSize maxSize)
    : ProfileFile(path, sharing, maxSize, QXUT_PROFILE_EXISTING)
{
}

ProfileFile ProfileFile::OpenOrMake(const std::string& path, MaxSize maxSize)
{
    return ProfileFile(path, Sharing::NobodyWhoWrites, maxSize, 0);
}

void ProfileFile::ExpectProfile(const std::string& remedy) const
{
    const std::uint32_t source = QxProfGetSource(_job);
    if ((source & QXUT_SOURCE_FOREIGN) != 0 && (source & QXUT_SOURCE_INI) == 0)
        throw Failure(kMalformed, _path + ": is neither a profile nor an INI file; " + remedy);
}

void ProfileFile::ExpectNoLoss(const std::string& remedy) const
{
    const std::uint32_t source = QxProfGetSource(_job);
    if ((source & QXUT_SOURCE_LOSSY) != 0)
        throw Failure(
            kCannotWrite, _path + ": not changed, because saving it would lose " + LossOf(source) + "; " + remedy);
}

HPROFLIST ProfileFile::List(const std::string& path) const
{
    if (path.empty() || path == "/")
        return nullptr;
    const HPROFLIST list = ProfGetListW(_job, nullptr, WideText(path));
    if (list == nullptr)
        throw Failure(kNotFound, _path + ": no list '" + Shown(path) + "'");
    return list;
}

void ProfileFile::Save(const std::string& path, std::int32_t flags) const
{
    const WideText name(path);
    const std::int32_t error = ProfSaveW(_job, path.empty() ? nullptr : static_cast<const QXWCHAR*>(name), flags);
    if (error == PROF_OK)
        return;
    const std::string& target = path.empty() ? _path : path;
    throw Failure(ExitCodeOf(error), target + ": " + ReasonOfFailedSave(target, error));
}

bool IsSameFile(const std::string& one, const std::string& other)
{
    std::error_code ignored;
    return one == other || fs::equivalent(fs::u8path(one), fs::u8path(other), ignored);
}

void ExpectReplaceable(const std::string& path, MaxSize maxSize)
{
    std::error_code ignored;
    if (!fs::is_regular_file(fs::u8path(path), ignored))
        return;
    const HPROFJOB job = Open(path, Sharing::Readers, maxSize, QXUT_PROFILE_EXISTING);
    const std::int32_t error = ProfGetError(job);
    const bool isProfile = error != PROF_ERR_MALFORMED && (QxProfGetSource(job) & QXUT_SOURCE_FOREIGN) == 0;
    ProfJobClose(job);
    if (!isProfile)
        throw Failure(kCannotWrite, path + ": not replaced, because it is not a profile; replace it with --force");
}

// Iterative, because a file may nest its lists to any depth.
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
