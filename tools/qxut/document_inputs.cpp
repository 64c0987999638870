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

// Returns the folders and files in a folder, sorted by name. Links to files count as files, and so do entries that
// can't be examined, such as broken links, and the folder itself if it can't be listed: they are reported as
// unreadable.
std::vector<Member> MembersOf(const fs::path& folder)
{
    std::vector<Member> members;
    std::error_code error;
    fs::directory_iterator at(folder, error);
    for (; !error && at != fs::directory_iterator(); at.increment(error))
    {
        // The folder entry usually contains its type, so these queries don't access the disk.
        std::error_code ignored;
        if (at->is_directory(ignored))
        {
            if (!at->is_symlink(ignored))
                members.push_back({at->path(), true});
        }
        else if (at->is_regular_file(ignored) || !at->exists(ignored))
            members.push_back({at->path(), false});
    }
    if (error)
        members.push_back({folder, false});
    // The paths differ only in their last component. Comparing fs::path objects would split all of them into
    // components.
    std::sort(members.begin(), members.end(),
        [](const Member& a, const Member& b) { return a.path.native() < b.path.native(); });
    return members;
}

} // namespace

// Keeps the folders that are still to be read in a list, because recursion could exhaust the stack.
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
