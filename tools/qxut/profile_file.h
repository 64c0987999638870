// A profile that was opened from a file, with its failures as exceptions that name the file and the reason.
#pragma once

#include <qxut23/profile.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace qxut
{

// Who else may open the file meanwhile.
enum class Sharing
{
    Readers,         // the job is for reading
    NobodyWhoWrites, // the job holds the file, to save to it
};

class ProfileFile
{
public:
    // The file has to exist.
    ProfileFile(const std::string& path, Sharing sharing);
    // With a missing file the profile is empty, and the file is made.
    static ProfileFile OpenOrMake(const std::string& path);

    ProfileFile(const ProfileFile&) = delete;
    ProfileFile& operator=(const ProfileFile&) = delete;
    ~ProfileFile() { ProfJobClose(_job); }

    HPROFJOB Job() const { return _job; }
    // The root for the empty path. An unknown list is a failure.
    HPROFLIST List(const std::string& path) const;

    // One of PROF_FORM_, that of the file when it was opened.
    std::int32_t Form() const { return _form; }

    // To another file, or to its own for the empty path. `flags` are those of ProfSave.
    void Save(const std::string& path, std::int32_t flags) const;
    // In the form that the file had, and packed if it was.
    void Save(const std::string& path) const { Save(path, _form | PROF_SAVE_PACKED_AS_LOADED); }

private:
    struct MayBeMissing
    {
    };
    ProfileFile(const std::string& path, Sharing sharing, MayBeMissing);

    std::string _path;
    HPROFJOB _job;
    std::int32_t _form;
};

struct Entry
{
    std::string name;
    std::string value;
    HPROFLIST list; // null for a value
};

// Calls `visit` for each entry of the list in order, the entries of a list following it one level deeper, and `leave`
// where a list ends, with the depth of its entries.
using Visitor = std::function<void(const Entry& entry, std::size_t depth)>;
void Walk(HPROFJOB job, HPROFLIST list, const Visitor& visit, const std::function<void(std::size_t depth)>& leave);

// The number of entries in the whole profile.
std::size_t CountEntries(HPROFJOB job);

} // namespace qxut
