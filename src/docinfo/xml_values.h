// Puts the values of elements into a record.
#pragma once

#include "core/variant/variant.h"

#include <windows.h>

#include <optional>
#include <string_view>

namespace qx
{

// Leaves the field unchanged if there is no value.
void StoreText(clsVariant& field, std::optional<std::wstring_view> value);

// Stores an ISO 8601 date. Leaves the field unchanged if there is none.
void StoreDate(SYSTEMTIME& field, std::optional<std::wstring_view> value);

} // namespace qx
