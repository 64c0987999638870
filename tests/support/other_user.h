// Runs a part of a test as a user for whom the system checks the permissions of files.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <initializer_list>

#include <sys/prctl.h>
#include <unistd.h>

namespace qxtest
{

// If the process runs as root, it becomes another user while this object exists.
class OtherUser
{
public:
    // The user becomes the owner of the files and folders in `owned`. The folders above the first one, up to the
    // system's temp folder, become accessible to the user.
    explicit OtherUser(std::initializer_list<std::filesystem::path> owned)
    {
        if (_self != 0)
            return;
        for (const std::filesystem::path& path : owned)
            if (chown(path.c_str(), kNobody, static_cast<gid_t>(-1)) != 0)
                abort();
        for (std::filesystem::path above = owned.begin()->parent_path(); above.filename().string().starts_with("qxut-");
             above = above.parent_path())
            permissions(above, std::filesystem::perms{0711});
        Become(kNobody);
    }
    OtherUser(const OtherUser&) = delete;
    OtherUser& operator=(const OtherUser&) = delete;
    ~OtherUser() { Become(_self); }

private:
    static constexpr uid_t kNobody = 65534;

    static void Become(uid_t user)
    {
        if (seteuid(user) != 0)
            abort();
        prctl(PR_SET_DUMPABLE, 1); // otherwise the process can't use its own descriptors by path after the change
    }

    const uid_t _self = geteuid();
};

} // namespace qxtest
