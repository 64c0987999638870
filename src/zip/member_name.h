// The names of members of any archive: what characters they have, and where they lead.
#pragma once

#include "containers/slist.h"
#include "core/text/string.h"

#include <cstdint>
#include <string_view>

namespace qx
{

// The data of the first extra field of this kind (APPNOTE.TXT 4.5), or an empty view.
std::string_view FindExtraField(std::string_view extra, std::uint16_t id);

// In this order: UTF-8 if the flag tells so; the name of the Unicode Path field if it fits the stored one; UTF-8 if the
// archive was made on Unix and its name is that; code page 437.
String MemberName(std::string_view name, std::uint16_t flags, std::uint16_t versionMadeBy, std::string_view extra);

enum class MemberPathError
{
    None,
    LeadsOut,  // of the folder to extract to: absolute, with a drive, or by ".."
    NotAllowed // a name that no file may have on the system
};

// The folders and the name of a member. Both separators separate, "." and empty names go. Names are refused on all
// systems alike, so that no name means one thing here and another elsewhere.
MemberPathError SplitMemberName(const String& name, WCValSList<String>& parts);

} // namespace qx
