// Locales in the environment: names such as de_DE.UTF-8@euro.
#pragma once

#include <string>
#include <string_view>

namespace qxplatform
{

// Returns the value for a category (LC_CTYPE, LC_TIME, LC_MESSAGES): the first nonempty variable of LC_ALL, the
// category's own and LANG. Returns an empty text if there is none, and for a name of more than 156 characters.
std::string PosixLocaleOf(std::string_view category);

// Returns the encoding in a name as written, or an empty text.
std::string_view EncodingOfPosixLocale(std::string_view posixName);

// Returns ICU's name: de_DE, sr_Latn_RS. Empty for "C", "POSIX" and an empty name.
std::string IcuNameOfPosixLocale(std::string_view posixName);

} // namespace qxplatform
