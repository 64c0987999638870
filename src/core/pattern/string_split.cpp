// The operation of String that needs patterns. It lives here because patterns are built on text.
#include "core/pattern/regex.h"

namespace qx
{

WCValSList<String> String::Split(const String& pattern) const
{
    return clsRegEx(pattern, 0).Split(*this);
}

} // namespace qx
