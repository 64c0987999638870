// What the environment says of locales: names such as de_DE.UTF-8@euro.
#pragma once

#include <string>
#include <string_view>

namespace qxplatform
{

// The value for a category (LC_CTYPE, LC_TIME, LC_MESSAGES): that of the first variable of LC_ALL, the category's own
// and LANG that is set and not empty; else an empty text.
std::string PosixLocaleOf(std::string_view category);

// The encoding's part of a name, as written; empty if there is none.
std::string_view EncodingOfPosixLocale(std::string_view posixName);

// As ICU names it: de_DE, sr_Latn_RS. Empty for "C", "POSIX" and an empty name.
std::string IcuNameOfPosixLocale(std::string_view posixName);

} // namespace qxplatform
