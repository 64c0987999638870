// Numbers, records and 16-bit texts as they are stored in files.
#pragma once

#include <string>
#include <string_view>

namespace qxtest
{

template <class Record>
std::string BytesOfRecord(const Record& record)
{
    return {reinterpret_cast<const char*>(&record), sizeof record};
}

// Returns the text's bytes, followed by a zero character.
inline std::string BytesOfWideText(std::u16string_view text)
{
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * 2) + std::string(2, '\0');
}

} // namespace qxtest
