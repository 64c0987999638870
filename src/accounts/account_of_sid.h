// Looks up the account names of security identifiers.
#pragma once

#include "core/text/string.h"

namespace qx
{

// Returns "domain\name", or ".\name" without a domain, for a security identifier: Base64 of its bytes, or "SID:" and
// the form S-1-... Returns an empty text if the identifier is malformed or the system has no name for it.
String AccountOfSid(const String& sid);

} // namespace qx
