// The operation of String that needs regular expressions. It is defined here because regular expressions are built on
// String.
#include "core/pattern/regex.h"

namespace qx
{

WCValSList<String> String::Split(const String& pattern) const
{
    return clsRegEx(pattern, 0).Split(*this);
}

} // namespace qx
