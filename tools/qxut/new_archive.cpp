#include "new_archive.h"

#include "failure.h"
#include "processes.h"
#include "text.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <system_error>
#include <utility>

namespace qxut
{

namespace
{

namespace fs = std::filesystem;

constexpr char kPartExtension[] = ".part";

std::string Utf8Name(const fs::path& path)
{
    const auto text = path.filename().generic_u8string();
    return {text.begin(), text.end()};
}

// Returns the process id in a name of the form ARCHIVE.PROCESS-RANDOM.part, or 0 for any other name.
unsigned long ProcessOfPart(const std::string& name, const std::string& archive)
{
    if (name.rfind(archive + '.', 0) != 0 || !name.ends_with(kPartExtension))
        return 0;
    const std::string middle =
        name.substr(archive.size() + 1, name.size() - archive.size() - 1 - (sizeof kPartExtension - 1));
    const std::size_t dash = middle.find('-');
    if (dash == std::string::npos || middle.find_first_not_of("0123456789-") != std::string::npos)
        return 0;
    return std::strtoul(middle.c_str(), nullptr, 10);
}

fs::path FolderOf(const fs::path& archive)
{
    return archive.has_parent_path() ? archive.parent_path() : fs::path(".");
}

// Returns true if no process is writing the file any more. The process id alone proves nothing: the process may run in
// another container, or the id may have a new owner.
bool IsStale(const fs::path& part, unsigned long process)
{
    constexpr std::chrono::seconds kToOpen(10); // a process that has just created the file may not have locked it yet
    std::error_code error;
    if (!fs::is_regular_file(fs::symlink_status(part, error)) || IsInUse(part.string()))
        return false;
    const auto written = fs::last_write_time(part, error);
    return !IsProcessAlive(process) || (!error && written + kToOpen < fs::file_time_type::clock::now());
}

// Removes the temporary files of processes that were killed.
void RemoveStaleParts(const fs::path& archive)
{
    const std::string name = Utf8Name(archive);
    std::error_code error;
    for (fs::directory_iterator entry(FolderOf(archive), error), end; !error && entry != end; entry.increment(error))
    {
        const unsigned long process = ProcessOfPart(Utf8Name(entry->path()), name);
        std::error_code ignored;
        if (process != 0 && IsStale(entry->path(), process))
            fs::remove(entry->path(), ignored);
    }
}

std::string NewPartPath(const std::string& archive)
{
    RemoveStaleParts(fs::u8path(archive));
    std::random_device random;
    for (;;)
    {
        std::string path =
            archive + '.' + std::to_string(ProcessId()) + '-' + std::to_string(random()) + kPartExtension;
        std::error_code error;
        if (!fs::exists(fs::symlink_status(fs::u8path(path), error)))
            return path;
    }
}

} // namespace

bool IsPartOf(const fs::path& file, const std::string& archive)
{
    const fs::path path = fs::u8path(archive);
    std::error_code error;
    return ProcessOfPart(Utf8Name(file), Utf8Name(path)) != 0 && fs::equivalent(FolderOf(file), FolderOf(path), error);
}

NewArchive::NewArchive(const std::string& path) : _path(path), _partPath(NewPartPath(path))
{
    std::error_code error;
    const fs::file_status status = fs::status(fs::u8path(path), error);
    if (fs::exists(status) && !fs::is_regular_file(status)) // it would be replaced, even /dev/null
        throw Failure(kCannotWrite, path + ": is not a file");
}

NewArchive::~NewArchive()
{
    Discard();
}

void NewArchive::Create(const std::string& comment)
{
    const std::lock_guard guard(_ending);
    _zip = UtilZIPCreate(WideText(LibraryPath(_partPath)), WideText(comment));
    if (_zip == nullptr)
        throw Failure(kCannotWrite, _path + ": cannot create the archive");
}

void NewArchive::Append(const std::string& file, const std::string& name, std::uint32_t flags)
{
    const std::int32_t result =
        QxZIPAppend(_zip, WideText(LibraryPath(file)), nullptr, WideText(LibraryPath(name)), flags);
    if (result != QXUT_ZIP_OK)
        throw Failure(kCannotRead,
            file + (result == QXUT_ZIP_CANNOT_OPEN ? ": cannot open the file (" : ": cannot store the file (") +
                LibraryErrorText("") + ")");
}

void NewArchive::Close()
{
    const std::int32_t result = UtilZIPClose(std::exchange(_zip, nullptr));
    const std::lock_guard guard(_ending);
    std::error_code error;
    if (result == QXUT_ZIP_OK)
        fs::rename(fs::u8path(_partPath), fs::u8path(_path), error);
    _isWhole = result == QXUT_ZIP_OK && !error;
    if (!_isWhole)
        throw Failure(kCannotWrite, _path + ": cannot write the archive, or it has too many entries or is too large");
}

void NewArchive::Discard()
{
    UtilZIPClose(std::exchange(_zip, nullptr));
    const std::lock_guard guard(_ending);
    std::error_code ignored;
    if (!_isWhole)
        fs::remove(fs::u8path(_partPath), ignored);
}

void NewArchive::Abandon()
{
    _ending.lock(); // never unlocked, because the program ends
    std::error_code ignored;
    if (!_isWhole)
        fs::remove(fs::u8path(_partPath), ignored);
}

} // namespace qxut
