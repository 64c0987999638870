#include "document_inputs.h"

#include "text.h"

#include <algorithm>

namespace qxut
{

namespace
{

namespace fs = std::filesystem;

struct Member
{
    fs::path path;
    bool isFolder;
};

// Returns the folders and files of a folder by name. A link to a file counts as a file, a link to nothing too, so that
// it is reported.
std::vector<Member> MembersOf(const fs::path& folder)
{
    std::vector<Member> members;
    std::error_code error;
    for (fs::directory_iterator at(folder, error); !error && at != fs::directory_iterator(); at.increment(error))
    {
        std::error_code ignored;
        const bool isLink = at->is_symlink(ignored);
        const fs::file_type type = at->status(ignored).type();
        if (type == fs::file_type::directory && !isLink)
            members.push_back({at->path(), true});
        else if (type == fs::file_type::regular || type == fs::file_type::not_found)
            members.push_back({at->path(), false});
    }
    std::sort(members.begin(), members.end(), [](const Member& a, const Member& b) { return a.path < b.path; });
    return members;
}

} // namespace

// Folders that are still to be read wait on a stack, because they may be nested deeper than calls can be.
void ForEachFile(const std::vector<std::string>& names, const std::function<void(const std::string& file)>& receive)
{
    for (const std::string& name : names)
    {
        std::error_code ignored;
        const fs::path path = fs::u8path(name);
        std::vector<Member> waiting = {{path, fs::is_directory(path, ignored)}};
        while (!waiting.empty())
        {
            const Member member = std::move(waiting.back());
            waiting.pop_back();
            if (!member.isFolder)
            {
                receive(Utf8Path(member.path));
                continue;
            }
            std::vector<Member> members = MembersOf(member.path);
            waiting.insert(
                waiting.end(), std::make_move_iterator(members.rbegin()), std::make_move_iterator(members.rend()));
        }
    }
}

} // namespace qxut
