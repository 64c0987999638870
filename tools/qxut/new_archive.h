// An archive that is being created.
#pragma once

#include <qxut23/archives.h>

#include <cstdint>
#include <mutex>
#include <string>

namespace qxut
{

// Returns the library's description of its last failure, or the given text if there is none.
std::string LibraryErrorText(const std::string& otherwise);

// Written under a temporary name next to the final one and renamed when it is complete, so an existing archive stays
// intact until then. An incomplete archive is removed.
class NewArchive
{
public:
    NewArchive(const std::string& path, const std::string& comment);
    NewArchive(const NewArchive&) = delete;
    NewArchive& operator=(const NewArchive&) = delete;
    ~NewArchive();

    // Throws a Failure for a file that can't be read or stored. `flags` are the flags of QxZIPAppend.
    void Append(const std::string& file, const std::string& name, std::uint32_t flags);
    void Close();

    // Removes the unfinished archive. Called on another thread when the program is about to end; the object can't be
    // used afterwards.
    void Abandon();

private:
    std::mutex _ending;
    std::string _path;
    std::string _partPath;
    HZIPFILE _zip = nullptr;
    bool _isWhole = false;
};

} // namespace qxut
