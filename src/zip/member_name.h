// Entry names of any archive: their encoding and the path they lead to.
#pragma once

#include "containers/slist.h"
#include "core/text/string.h"

#include <cstdint>
#include <string_view>

namespace qx
{

// Returns the data of the first extra field with this id (APPNOTE.TXT 4.5), or an empty view.
std::string_view FindExtraField(std::string_view extra, std::uint16_t id);

// Decodes an entry's name. Rules in this order: UTF-8 if the flag says so; the name in the Unicode Path field if the
// field matches the stored name; UTF-8 if the archive was created on Unix and the name is valid UTF-8; code page 437.
String MemberName(std::string_view name, std::uint16_t flags, std::uint16_t versionMadeBy, std::string_view extra);

enum class MemberPathError
{
    None,
    LeadsOut,  // absolute, with a drive, or with ".."
    NotAllowed // contains a name that the system doesn't allow for files
};

// Splits an entry's name into folders and file name. Both separators are accepted; "." and empty components are
// dropped. The checks are the same on all systems, so that a name has the same meaning everywhere.
MemberPathError SplitMemberName(const String& name, WCValSList<String>& parts);

} // namespace qx
