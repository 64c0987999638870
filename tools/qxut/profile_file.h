// A profile opened from a file. Failures are exceptions that name the file and the reason.
#pragma once

#include <qxut23/profile.h>
#include <qxut23/profile_source.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace qxut
{

// What other processes may do with the file while it is open.
enum class Sharing
{
    Readers,         // the job only reads; others may read and write
    NobodyWhoWrites, // the job holds the file in order to save it; others may only read
};

// The largest size in bytes to which a packed file may unpack: 0 for any, nothing for the library's limit.
using MaxSize = std::optional<std::uint64_t>;

// An open profile. If it seems to be truncated or damaged, a warning is written to standard error.
class ProfileFile
{
public:
    // Opens an existing file.
    ProfileFile(const std::string& path, Sharing sharing, MaxSize maxSize);
    // Opens a file. If it is missing, creates it with an empty profile.
    static ProfileFile OpenOrMake(const std::string& path, MaxSize maxSize);

    ProfileFile(const ProfileFile&) = delete;
    ProfileFile& operator=(const ProfileFile&) = delete;
    ~ProfileFile() { ProfJobClose(_job); }

    HPROFJOB Job() const { return _job; }
    // Returns the list with the path, or the root for an empty path. Throws a Failure if the list doesn't exist.
    HPROFLIST List(const std::string& path) const;

    // The form the file had when it was opened (a PROF_FORM_ value).
    std::int32_t Form() const { return static_cast<std::int32_t>(QxProfGetSource(_job) & QXUT_SOURCE_FORM); }

    // Throws a Failure if the file is neither a profile nor an INI file, which leaves the job empty. `remedy` tells the
    // user what to do.
    void ExpectProfile(const std::string& remedy) const;

    // Throws a Failure that names what would be lost if a save in place would lose anything.
    void ExpectNoLoss(const std::string& remedy) const;

    // Saves to `path`, or to the job's own file if it is empty. `flags` are the flags of ProfSave.
    void Save(const std::string& path, std::int32_t flags) const;
    // Saves in the form that the file had, packed if it was packed.
    void Save(const std::string& path) const { Save(path, Form() | PROF_SAVE_PACKED_AS_LOADED); }

private:
    // `flags` are further flags of QxProfJobOpen.
    ProfileFile(const std::string& path, Sharing sharing, MaxSize maxSize, std::uint32_t flags);

    std::string _path;
    HPROFJOB _job;
};

// Returns true if both paths lead to one file, also by different spellings or through links.
bool IsSameFile(const std::string& one, const std::string& other);

// Throws a Failure if the path leads to a file with contents that aren't a profile, so that a mistyped name doesn't
// cost a file. The save itself reports other faults of the path.
void ExpectReplaceable(const std::string& path, MaxSize maxSize);

struct Entry
{
    std::string name;
    std::string value;
    HPROFLIST list; // null for a value
};

// Calls `visit` for each entry of the list in order. After an entry that is a list, visits its entries one level deeper
// and then calls `leave` with the depth of those entries.
using Visitor = std::function<void(const Entry& entry, std::size_t depth)>;
void Walk(HPROFJOB job, HPROFLIST list, const Visitor& visit, const std::function<void(std::size_t depth)>& leave);

// Returns the number of entries in the whole profile.
std::size_t CountEntries(HPROFJOB job);

} // namespace qxut
