// The patterns of finds.
#pragma once

#include <string>
#include <string_view>

namespace qxplatform
{

// `*` and `?` by the system's rules, without regard to case. Before a dot or at the end of the name, `?` may also match
// the empty text. "*." matches names without extension, "*.*" all names.
class Wildcard
{
public:
    explicit Wildcard(std::u16string_view pattern);

    static bool IsIn(std::u16string_view pattern) { return pattern.find_first_of(u"*?") != pattern.npos; }

    bool Matches(std::u16string_view name) const;

private:
    std::u16string _pattern;
};

} // namespace qxplatform
