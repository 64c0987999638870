#include "base/home.h"

#include "base/environment.h"
#include "base/fork_gate.h"

#include <pwd.h>
#include <unistd.h>

#include <vector>

namespace qxplatform
{
namespace
{

std::string UserHome()
{
    if (std::string home = EnvironmentValue("HOME"); !home.empty())
        return home;
    const ForkHold hold; // no fork while the C library holds its own locks
    std::vector<char> buffer(4096);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr)
        return {};
    return found->pw_dir;
}

} // namespace

std::string HomeFolder()
{
    if (std::string own = EnvironmentValue("QXPLATFORM_HOME"); !own.empty())
        return own;
    if (const std::string config = EnvironmentValue("XDG_CONFIG_HOME"); !config.empty())
        return config + "/qxplatform";
    const std::string home = UserHome();
    return home.empty() ? home : home + "/.config/qxplatform";
}

} // namespace qxplatform
