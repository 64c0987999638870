#include "security/account.h"

#include "base/fork_gate.h"

#include <cerrno>
#include <vector>

#include <grp.h>
#include <pwd.h>

namespace qxplatform
{
namespace
{

// A group's record contains the names of all its members, so its size has no documented limit.
constexpr std::size_t kFirstSize = 4096;
constexpr std::size_t kLargestSize = 16 << 20;

// Calls one of the C library's functions with a growing buffer. Returns true if it found a record.
template <class Record, class Function>
bool Find(Function function, const std::string& name, Record& record, std::vector<char>& buffer)
{
    Record* found = nullptr;
    int error = ERANGE;
    for (std::size_t size = kFirstSize; error == ERANGE && size <= kLargestSize; size *= 4)
    {
        buffer.resize(size);
        error = function(name.c_str(), &record, buffer.data(), buffer.size(), &found);
    }
    return error == 0 && found != nullptr;
}

} // namespace

std::optional<Account> FindAccount(const std::string& name)
{
    const ForkHold hold; // no fork while the C library holds its own locks
    std::vector<char> buffer;
    passwd user{};
    if (Find(getpwnam_r, name, user, buffer))
        return Account{false, user.pw_uid};
    group group{};
    if (Find(getgrnam_r, name, group, buffer))
        return Account{true, group.gr_gid};
    return {};
}

} // namespace qxplatform
