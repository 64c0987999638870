// An archive that is being created.
#pragma once

#include <qxut23/archives.h>

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>

namespace qxut
{

// Returns true if the file is the temporary file of an unfinished archive with that path.
bool IsPartOf(const std::filesystem::path& file, const std::string& archive);

// Written under a temporary name next to the final one and renamed when it is complete, so an existing archive stays
// intact until then. An incomplete archive is removed. On windows an interruption can't remove it, because the library
// has the file open; the next object for the same archive does.
class NewArchive
{
public:
    // Removes the temporary files that killed processes left. Creates nothing yet, so that the caller can first arrange
    // for Abandon to be called.
    explicit NewArchive(const std::string& path);
    NewArchive(const NewArchive&) = delete;
    NewArchive& operator=(const NewArchive&) = delete;
    ~NewArchive();

    void Create(const std::string& comment);

    // Throws a Failure for a file that can't be read or stored. `flags` are the flags of QxZIPAppend.
    void Append(const std::string& file, const std::string& name, std::uint32_t flags);
    void Close();

    // Removes the archive unless it is complete. The destructor does the same.
    void Discard();

    // Removes the archive unless it is complete. Called on another thread when the program is about to end; the object
    // can't be used afterwards. Doesn't wait for Append or Close.
    void Abandon();

private:
    std::mutex _ending; // held while the file is created, renamed or removed
    std::string _path;
    std::string _partPath;
    HZIPFILE _zip = nullptr;
    bool _isWhole = false;
};

} // namespace qxut
