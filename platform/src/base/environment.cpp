#include "base/environment.h"

#include <processenv.h>

#include "base/fail.h"
#include "base/mutex.h"
#include "base/text.h"

#include <cstdlib>
#include <mutex>
#include <optional>

extern "C" char** environ;

namespace qxplatform
{
namespace
{

// Returns the lock that serialises the layer's calls. The variables belong to the C library, so that other libraries
// of the process see the same values; a concurrent setenv elsewhere is as unsafe as always.
Mutex& Lock()
{
    static constinit Mutex lock;
    return lock;
}

struct Variable
{
    std::string_view name;
    std::string_view value;
};

Variable Split(std::string_view entry)
{
    const std::size_t equals = entry.find('=', 1);
    if (equals == entry.npos)
        return {entry, {}};
    return {entry.substr(0, equals), entry.substr(equals + 1)};
}

// Names are compared without regard to case, but an exact match comes first: Linux has both http_proxy and HTTP_PROXY.
std::optional<Variable> Find(std::u16string_view name)
{
    const std::string exact = ToBytes(name);
    std::optional<Variable> found;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry)
    {
        const Variable variable = Split(*entry);
        if (variable.name == exact)
            return variable;
        if (!found && variable.name.size() == exact.size() && EqualWithoutCase(ToWide(variable.name), name))
            found = variable;
    }
    return found;
}

std::optional<std::u16string> ValueOf(std::u16string_view name)
{
    const std::lock_guard guard(Lock());
    const std::optional<Variable> variable = Find(name);
    if (!variable)
        return std::nullopt;
    return ToWide(variable->value);
}

// Replaces each %name% of an existing variable. The text between two percent signs is always treated as a name; unknown
// names are kept with both signs.
std::u16string Expand(std::u16string_view text)
{
    std::u16string result;
    while (!text.empty())
    {
        const bool isSign = text[0] == u'%';
        const std::size_t sign = text.find(u'%', 1);
        const std::size_t taken = std::min(isSign && sign != text.npos ? sign + 1 : sign, text.size());
        const std::optional<std::u16string> value =
            isSign && sign != text.npos ? ValueOf(text.substr(1, sign - 1)) : std::nullopt;
        result += value ? *value : text.substr(0, taken);
        text.remove_prefix(taken);
    }
    return result;
}

} // namespace

std::string EnvironmentValue(std::string_view name)
{
    const std::lock_guard guard(Lock());
    const char* const value = std::getenv(std::string(name).c_str());
    return value == nullptr ? std::string() : value;
}

std::vector<std::string> EnvironmentEntries()
{
    const std::lock_guard guard(Lock());
    std::vector<std::string> entries;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry)
        entries.emplace_back(*entry);
    return entries;
}

} // namespace qxplatform

using namespace qxplatform;

DWORD WINAPI GetEnvironmentVariableW(LPCWSTR lpName, LPWSTR lpBuffer, DWORD nSize)
{
    if (lpName == nullptr)
        return Fail(ERROR_ENVVAR_NOT_FOUND);
    const std::optional<std::u16string> value = ValueOf(View(lpName));
    if (!value)
        return Fail(ERROR_ENVVAR_NOT_FOUND);
    // Returns 0 for an empty value as for a missing variable; the last error distinguishes the two.
    SetLastError(ERROR_SUCCESS);
    return CopyOut(*value, lpBuffer, nSize);
}

BOOL WINAPI SetEnvironmentVariableW(LPCWSTR lpName, LPCWSTR lpValue)
{
    if (lpName == nullptr || *lpName == 0 || View(lpName).find(u'=') != std::u16string_view::npos)
        return Fail(ERROR_INVALID_PARAMETER);
    const std::unique_lock guard(Lock());
    const std::optional<Variable> present = Find(View(lpName));
    const std::string name = present ? std::string(present->name) : ToBytes(View(lpName));
    if (lpValue == nullptr)
    {
        unsetenv(name.c_str());
        return present ? TRUE : Fail(ERROR_ENVVAR_NOT_FOUND);
    }
    return setenv(name.c_str(), ToBytes(View(lpValue)).c_str(), 1) == 0 || FailErrno();
}

DWORD WINAPI ExpandEnvironmentStringsW(LPCWSTR lpSrc, LPWSTR lpDst, DWORD nSize)
{
    const std::u16string text = Expand(View(lpSrc));
    const DWORD needed = static_cast<DWORD>(text.size()) + 1;
    if (lpDst != nullptr && nSize >= needed)
        CopyOut(text, lpDst, nSize);
    return needed;
}
