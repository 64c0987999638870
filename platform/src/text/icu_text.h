// Helpers to retrieve texts from ICU.
#pragma once

#include <unicode/udat.h>
#include <unicode/utypes.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>

#include "text/locale.h"

namespace qxplatform
{

struct CloseDateFormat
{
    void operator()(UDateFormat* format) const { udat_close(format); }
};
using DateFormat = std::unique_ptr<UDateFormat, CloseDateFormat>;

// Calls an ICU function with a buffer. Texts that don't fit count as empty, since no text here is that long.
template <class Call>
std::u16string IcuText(Call call)
{
    UChar buffer[256];
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length = call(buffer, static_cast<std::int32_t>(std::size(buffer)), &status);
    if (U_FAILURE(status) || length < 0 || length > static_cast<std::int32_t>(std::size(buffer)))
        return {};
    return {buffer, static_cast<std::size_t>(length)};
}

// Returns ICU's name for the data of a locale.
std::string IcuName(const Locale& locale);

} // namespace qxplatform
