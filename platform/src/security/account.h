// Users and groups by name.
#pragma once

#include <optional>
#include <string>

#include <sys/types.h>

namespace qxplatform
{

struct Account
{
    bool isGroup = false;
    id_t id = 0;
};

// Returns the user of that name or, if there is none, the group. Returns nothing if there is neither.
std::optional<Account> FindAccount(const std::string& name);

} // namespace qxplatform
